#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <mplsfwd/sim/Agent.h>
#include <mplsfwd/sim/TransitInvariants.h>

namespace TestSupport {

// A transit-only sim::Agent (no decap, no pseudowire machine) with the builders that keep each
// transit test to a few lines, and shortcuts to the tables the tests read.
class TransitAgent {
 public:
   struct Options {
      bool fecForwarding = false;  // FEC request and response tables and the route helper
      bool mplsRouting = true;     // the control plane's switch
      bool vrfNameKnown = true;    // the L3 status names VRF 0 "default"
   };

   TransitAgent() : TransitAgent(Options()) {}
   explicit TransitAgent(Options options);

   // Takes the state machine down and builds it anew over the same tables: an agent restart.
   void stop() { agent.stop(); }
   void start();
   // Runs the loop for `seconds` of simulated time.
   void settle(double seconds = 1.0) { agent.advance(seconds); }

   // LFIB builders. Next hops are IPv4 text; intf empty means "resolve through the route resolver".
   Mpls::LfibViaKey mplsVia(std::uint32_t index, const std::string& nextHop,
                            Wire::IntfId intf = Wire::IntfId(), std::uint32_t outLabel = 1000,
                            Wire::MplsLabelAction action = Wire::MplsLabelAction::swap);
   // A via with any label stack, label action and payload type.
   Mpls::LfibViaKey mplsViaWith(std::uint32_t index, const std::string& nextHop, Wire::IntfId intf,
                                const std::vector<std::uint32_t>& labels,
                                Wire::MplsLabelAction action = Wire::MplsLabelAction::swap,
                                Mpls::PayloadType payload = Mpls::payloadTypeMpls_);
   Mpls::LfibViaSetKey viaSet(std::uint32_t index, const std::vector<Mpls::LfibViaKey>& vias,
                              Mpls::LfibViaSetKey backup = Mpls::LfibViaSetKey(),
                              Mpls::LfibSource source = Mpls::lfibSourceStatic_);
   Mpls::LfibViaSetKey extFecViaSet(std::uint32_t index, Memtab::Fib::FecId fecId);
   void viaSetDel(const Mpls::LfibViaSetKey& key) { lfib->viaSetDel(key); }
   Mpls::RouteKey route(std::uint32_t label, Mpls::LfibViaSetKey viaSet);
   void routeDel(std::uint32_t label) { lfib->lfibRouteDel(key(label)); }
   static Mpls::RouteKey key(std::uint32_t label) { return Mpls::RouteKey(Wire::MplsLabel(label)); }

   // L3 builders: a neighbour on an interface, and IP routes for the resolver.
   void neighbor(const std::string& addr, Wire::IntfId intf, const std::string& mac,
                 std::uint16_t vlan = 10, Wire::IntfId l2Intf = Wire::IntfId::ethernet(1));
   void neighborDel(const std::string& addr, Wire::IntfId intf);
   void ipRoute(const std::string& prefix, std::uint8_t length, const std::string& gateway,
                Wire::IntfId intf);
   void connectedRoute(const std::string& prefix, std::uint8_t length, Wire::IntfId intf);

   // The FEC id service answers (on) or lets requests wait (off).
   void fecAnswersIs(bool on);

   // What the machine and the hardware hold.
   const Kor::Ptr<Fal::MplsSm>& sm() const { return agent.mplsSm(); }
   Kor::Ptr<Fal::MplsHwVrfConfig> vrfConfig() const { return agent.defaultVrfConfig(); }
   Kor::Ptr<Fal::MplsHwVrfStatus> vrfStatus() const { return agent.defaultVrfStatus(); }
   Fal::MplsHwRoute configRoute(std::uint32_t label) const;
   bool programmed(std::uint32_t label) const;
   Kor::Ptr<Fal::VrfMplsState> state() const {
      return sm() ? sm()->mplsState(L3::VrfName::defaultVrf()) : nullptr;
   }
   std::uint64_t logged(const std::string& name) const { return agent.logSink().count(name); }
   // The machine's records of one route and of the L3 adjacency of one via set (null if none).
   Kor::Ptr<Fal::MplsRoute> stateRoute(std::uint32_t label) const;
   Fal::L3AdjacencyPtr l3Adj(const Mpls::LfibViaSetKey& viaSet) const;
   // Route programmings the chip tried: written or refused.
   std::uint64_t routeAttempts() const { return chip.routeWrites() + chip.refusals(); }

   sim::Agent agent;
   sim::AdjacencyIndexHistory indexHistory;
   sim::Chip& chip;
   const Kor::Ptr<sim::RouteHelper>& helper;
   const Kor::Ptr<Loom::EventLoop>& loop;
   const Kor::Ptr<Mpls::RoutingInfo>& routingInfo;
   const Kor::Ptr<Mpls::LfibStatus>& lfib;
   const Kor::Ptr<Mpls::Hardware::Status>& hwMplsStatus;
   const Kor::Ptr<Fal::RouteReactorConfig>& routeReactorConfig;
   const Kor::Ptr<Fal::L3Status>& l3Status;
   const Kor::Ptr<Fal::MonitoredNexthopSm>& monitoredNhSm;
   const Kor::Ptr<Fal::FecIdToHwFecIdRequest>& fecRequest;
};

}  // namespace TestSupport
