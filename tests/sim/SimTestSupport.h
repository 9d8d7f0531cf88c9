#pragma once

#include <cstdint>
#include <string>

#include <mplsfwd/sim/Agent.h>
#include <mplsfwd/sim/ControlPlane.h>
#include <mplsfwd/sim/State.h>

namespace SimTest {

inline Wire::MplsLabel label(std::uint32_t v) {
   return Wire::MplsLabel(v);
}
inline Mpls::RouteKey key(std::uint32_t v) {
   return Mpls::RouteKey(Wire::MplsLabel(v));
}
inline Wire::IpGenAddr ip(const char* text) {
   return Wire::IpGenAddr::parse(text);
}
inline Wire::EthAddr mac(const char* text) {
   return Wire::EthAddr::parse(text);
}
inline Mpls::LfibViaSetKey mplsSet(std::uint32_t index) {
   return Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, index, Mpls::lfibSourceStatic_);
}

// An agent with its control plane, plus the builders of a small transit topology: next hops
// 10.0.0.N on EthernetN with MAC 00:00:00:00:00:0N.
struct Bed {
   explicit Bed(sim::AgentOptions options = sim::AgentOptions()) : agent(options), cp(agent) {}

   void neighbor(std::uint32_t n) {
      cp.neighbor(nh(n), Wire::IntfId::ethernet(n), nhMac(n), Bridging::VlanId(10),
                  Wire::IntfId::ethernet(n));
   }
   static Wire::IpGenAddr nh(std::uint32_t n) {
      return ip(("10.0.0." + std::to_string(n)).c_str());
   }
   static Wire::EthAddr nhMac(std::uint32_t n) {
      return mac(("00:00:00:00:00:0" + std::to_string(n)).c_str());
   }
   // A via set `set` of one via per next hop, and a route `routeLabel` over it.
   void transitRoute(std::uint32_t routeLabel, std::uint32_t set,
                     std::initializer_list<std::uint32_t> nextHops, std::uint32_t outLabel = 1000) {
      std::vector<Mpls::LfibViaKey> vias;
      for (auto n : nextHops) {
         vias.push_back(cp.mplsVia(set * 100 + n, nh(n), Wire::IntfId::ethernet(n),
                                   Wire::MplsLabelOperation{label(outLabel)}));
      }
      cp.viaSet(mplsSet(set), vias);
      cp.route(label(routeLabel), mplsSet(set));
   }
   sim::RouteView route(std::uint32_t l) const { return sim::routeView(agent, key(l)); }
   void settle(double seconds = 1.0) { agent.advance(seconds); }

   sim::Agent agent;
   sim::ControlPlane cp;
};

}  // namespace SimTest
