// The scenario reader on arbitrary bytes: it either accepts the text or throws ScenarioError;
// anything else (another exception, a crash, unbounded recursion) is a fault.
#include <cstddef>
#include <cstdint>
#include <string>

#include <mplsfwd/sim/Scenario.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
   std::string text(reinterpret_cast<const char*>(data), size);
   try {
      sim::Scenario s = sim::Scenario::parse(text, "fuzz.json");
      // An accepted scenario has a step for every element of "steps", each numbered in order.
      for (std::size_t i = 0; i < s.steps.size(); ++i) {
         if (s.steps[i].number != i + 1 || !s.steps[i].run) {
            __builtin_trap();
         }
      }
   } catch (const sim::ScenarioError&) {
   }
   return 0;
}
