#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <mplsfwd/l3/RouteResolver.h>
#include <mplsfwd/log/LogSink.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/transit/FalMplsSm.h>

#include "FakeChip.h"
#include "FakeFecPlatform.h"

namespace TestSupport {

// What the invariant checker remembers between its calls about one run of the state machine:
// every adjacency index it has seen, with its kind and the object last seen under it, and the
// indices that have gone. A restart begins a new run (the machine numbers afresh).
struct AdjacencyIndexHistory {
   enum class Kind : std::uint8_t { l3, l2 };
   struct Seen {
      Kind kind;
      const void* object;
   };
   std::uint64_t generation = 0;
   Kor::HashMap<std::uint64_t, Seen> alive;
   Kor::HashSet<std::uint64_t> gone;
};

// Everything a transit state machine needs, assembled the way an agent does it, over simulated
// time and a fake chip; plus builders that keep each test to a few lines.
class TransitAgent {
 public:
   struct Options {
      bool fecForwarding = false;  // give the machine the FEC request and response tables
      bool mplsRouting = true;     // the control plane's switch
      bool vrfNameKnown = true;    // the L3 status names VRF 0 "default"
      bool helper = true;          // with fecForwarding: give the machine a route helper
   };

   TransitAgent() : TransitAgent(Options()) {}
   explicit TransitAgent(Options options);
   ~TransitAgent();

   // (Re)creates the state machine over the current tables, as after an agent restart.
   void start();
   void stop();
   // Incremented by every start(): one run of the state machine.
   std::uint64_t generation() const { return generation_; }

   // Runs the loop until nothing is due within `seconds` of simulated time.
   void settle(double seconds = 1.0) { loop->advance(seconds); }

   // LFIB builders. Next hops are IPv4 text; intf empty means "resolve through the route resolver".
   Mpls::LfibViaKey mplsVia(std::uint32_t index, const std::string& nextHop,
                            Wire::IntfId intf = Wire::IntfId(), std::uint32_t outLabel = 1000,
                            Wire::MplsLabelAction action = Wire::MplsLabelAction::swap);
   Mpls::LfibViaSetKey viaSet(std::uint32_t index, const std::vector<Mpls::LfibViaKey>& vias,
                              Mpls::LfibViaSetKey backup = Mpls::LfibViaSetKey(),
                              Mpls::LfibSource source = Mpls::lfibSourceStatic_);
   // A via with any label stack, label action and payload type (tunnels, next-hop groups, label
   // stacks the transit layer refuses).
   Mpls::LfibViaKey mplsViaWith(std::uint32_t index, const std::string& nextHop, Wire::IntfId intf,
                                const std::vector<std::uint32_t>& labels,
                                Wire::MplsLabelAction action = Wire::MplsLabelAction::swap,
                                Mpls::PayloadType payload = Mpls::payloadTypeMpls_);
   Mpls::LfibViaSetKey extFecViaSet(std::uint32_t index, Memtab::Fib::FecId fecId);
   void viaSetDel(const Mpls::LfibViaSetKey& key) { lfib->viaSetDel(key); }
   Mpls::RouteKey route(std::uint32_t label, Mpls::LfibViaSetKey viaSet);
   void routeDel(std::uint32_t label);
   static Mpls::RouteKey key(std::uint32_t label) { return Mpls::RouteKey(Wire::MplsLabel(label)); }

   // L3 builders: a neighbour on an interface, and an IP route for the resolver.
   void neighbor(const std::string& addr, Wire::IntfId intf, const std::string& mac,
                 std::uint16_t vlan = 10, Wire::IntfId l2Intf = Wire::IntfId::ethernet(1));
   void neighborDel(const std::string& addr, Wire::IntfId intf);
   void ipRoute(const std::string& prefix, std::uint8_t length, const std::string& gateway,
                Wire::IntfId intf);
   void connectedRoute(const std::string& prefix, std::uint8_t length, Wire::IntfId intf);

   // What the hardware sees.
   Kor::Ptr<Fal::MplsHwVrfConfig> vrfConfig() const { return hwConfig->vrfConfig(Fal::VrfId(0)); }
   Kor::Ptr<Fal::MplsHwVrfStatus> vrfStatus() const { return hwStatus->vrfStatus(Fal::VrfId(0)); }
   Fal::MplsHwRoute configRoute(std::uint32_t label) const;
   bool programmed(std::uint32_t label) const;
   Kor::Ptr<Fal::VrfMplsState> state() const {
      return sm ? sm->mplsState(L3::VrfName::defaultVrf()) : nullptr;
   }
   std::uint64_t logged(const std::string& name) const { return logSink.count(name); }
   // The machine's records of one route and of the L3 adjacency of one via set (null if none).
   Kor::Ptr<Fal::MplsRoute> stateRoute(std::uint32_t label) const;
   Fal::L3AdjacencyPtr l3Adj(const Mpls::LfibViaSetKey& viaSet) const;

   Options options;
   Kor::Ptr<Loom::EventLoop> loop;
   Kor::Ptr<Kor::Clock> clock;
   Kor::Ptr<Mpls::Status> mplsStatus;
   Kor::Ptr<Mpls::RoutingInfo> routingInfo;
   Kor::Ptr<Mpls::LfibStatus> lfib;
   Kor::Ptr<Routing::Hardware::RouteStatus> ipRoutes;
   Kor::Ptr<Mpls::Hardware::Status> hwMplsStatus;
   Kor::Ptr<Fal::RouteReactorConfig> routeReactorConfig;
   Kor::Ptr<Fal::Route6ReactorConfig> route6ReactorConfig;
   Kor::Ptr<Fal::MplsHwConfig> hwConfig;
   Kor::Ptr<Fal::MplsHwStatus> hwStatus;
   Kor::Ptr<Fal::L3Status> l3Status;
   Kor::Ptr<Fal::MonitoredNexthopSm> monitoredNhSm;
   Kor::Ptr<Regdb::EntityManager> entityManager;
   Kor::Ptr<Loom::AttrLogSm> attrLogSm;
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> fecRequest;
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> fecResponse;
   Kor::Ptr<Fal::RouteResolver> resolver;
   std::unique_ptr<FakeChip> chip;
   std::unique_ptr<FakeFecIdService> fecService;
   Kor::Ptr<FakeMplsSmHelper> helper;
   Kor::Ptr<Fal::MplsSm> sm;
   Log::MemoryLogSink logSink;
   AdjacencyIndexHistory indexHistory;

 private:
   std::unique_ptr<Log::LogSinkScope> logScope_;
   std::uint64_t generation_ = 0;
};

}  // namespace TestSupport
