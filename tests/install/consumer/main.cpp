// A platform agent's smallest use of the installed library: include the umbrella header, build a
// table, watch it, and see one notification per real change.
#include <mplsfwd/mplsfwd.h>

#include <iostream>

namespace {

class Counter : public Kor::Clock::NotifieeConst {
public:
   using Kor::Clock::NotifieeConst::NotifieeConst;
   void onTimeMin() override { ++fired; }
   int fired = 0;
};

}  // namespace

int main() {
   auto clock = Kor::make<Kor::Clock>("consumer", nullptr);
   Counter counter(clock);
   clock->fire();
   if (counter.fired != 1) {
      std::cerr << "consumer: expected one notification\n";
      return 1;
   }
   std::cout << "consumer ok\n";
   return 0;
}
