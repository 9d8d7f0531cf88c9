// A platform agent's smallest use of the installed library: include the umbrella header, watch a
// per-VRF hardware configuration, and see one notification per real change.
#include <mplsfwd/mplsfwd.h>

#include <iostream>

namespace {

class RouteCounter : public Fal::MplsHwVrfConfig::NotifieeConst {
 public:
   using Fal::MplsHwVrfConfig::NotifieeConst::NotifieeConst;
   void onRoute(const Mpls::RouteKey&) override { ++changes; }
   int changes = 0;
};

}  // namespace

int main() {
   auto config = Fal::mplsHwConfigFactory("consumer");
   auto vrf = config->vrfConfigIs(Fal::VrfId(0));
   RouteCounter counter(vrf);
   auto adj = Kor::make<Mpls::Hardware::L2Adjacency>(1);
   Mpls::RouteKey key(Wire::MplsLabel(16));
   vrf->routeIs(Fal::MplsHwRoute(key, adj, 1));
   vrf->routeIs(Fal::MplsHwRoute(key, adj, 1));  // no change, no notification
   if (counter.changes != 1) {
      std::cerr << "consumer: expected one notification, saw " << counter.changes << "\n";
      return 1;
   }
   std::cout << "consumer ok: " << vrf->route(key) << "\n";
   return 0;
}
