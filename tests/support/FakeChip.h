#pragma once

#include <cstdint>
#include <memory>

#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/Task.h>

namespace TestSupport {

// A small in-memory forwarding chip for tests: it watches the hardware configuration and answers
// in the hardware status one loop step later, as a platform does, with finite route and L2
// adjacency tables, refusals on demand, and an interface that is not ready.
class FakeChip {
 public:
   FakeChip(Kor::Ptr<Loom::EventLoop> loop, Kor::Ptr<Fal::MplsHwConfig> config,
            Kor::Ptr<Fal::MplsHwStatus> status);
   ~FakeChip();

   void routeCapacityIs(std::size_t n) { routeCapacity_ = n; }
   void adjacencyCapacityIs(std::size_t n) { adjCapacity_ = n; }
   // The next n route programmings fail with `reason`.
   void refuseNextRoutesIs(std::size_t n, Fal::UnprogrammedReason reason) {
      refuseRoutes_ = n;
      refuseReason_ = reason;
   }
   // Re-examines every configured route and adjacency (after a capacity change, say).
   void reprogramAll();
   // Whether the chip follows the configuration's MPLS routing flag (off: never confirms).
   // Turning it on answers the flag as it stands at the next step.
   void confirmRoutingIs(bool v);

   // Successful route and adjacency programmings, and every route programming tried.
   std::uint64_t routeWrites() const { return routeWrites_; }
   std::uint64_t adjacencyWrites() const { return adjWrites_; }
   std::uint64_t routeAttempts() const { return routeAttempts_; }

 private:
   class ConfigReactor;
   class VrfReactor;
   void vrfConfigChanged(Fal::VrfId vrfId);
   void dirty();
   void run();
   void programAdjacency(Fal::MplsHwVrfConfig& config, Fal::MplsHwVrfStatus& status,
                         const Fal::L2AdjacencyPtr& adj);
   void programRoute(Fal::MplsHwVrfConfig& config, Fal::MplsHwVrfStatus& status,
                     const Mpls::RouteKey& key);

   Kor::Ptr<Fal::MplsHwConfig> config_;
   Kor::Ptr<Fal::MplsHwStatus> status_;
   std::unique_ptr<ConfigReactor> configReactor_;
   Kor::HashMap<Fal::VrfId, std::unique_ptr<VrfReactor>> vrfReactors_;
   Kor::Ptr<Loom::Task> task_;
   struct Dirty {
      bool routing = false;
      Kor::HashSet<Mpls::RouteKey> routes;
      Kor::HashSet<Fal::L2AdjacencyPtr> adjs;
   };
   Kor::HashMap<Fal::VrfId, Dirty> dirty_;
   std::size_t routeCapacity_ = SIZE_MAX;
   std::size_t adjCapacity_ = SIZE_MAX;
   std::size_t refuseRoutes_ = 0;
   Fal::UnprogrammedReason refuseReason_ = Fal::UnprogrammedReason::RouteFull;
   bool confirmRouting_ = true;
   std::uint64_t routeWrites_ = 0;
   std::uint64_t adjWrites_ = 0;
   std::uint64_t routeAttempts_ = 0;
};

}  // namespace TestSupport
