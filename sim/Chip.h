#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/Fal/UnprogrammedReason.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerTask.h>
#include <mplsfwd/wire/IntfId.h>

namespace sim {

// Which chip operations a refusal applies to.
enum class RefuseTarget { routes, adjacencies };

// The simulated forwarding chip: the platform side of the per-VRF hardware tables. It watches
// Fal::MplsHwConfig and answers in Fal::MplsHwStatus the way a platform must: it confirms
// mplsRouting per VRF, programs L2 adjacencies and routes into finite tables, mirrors what it
// programmed (routes exactly as configured, version included; adjacencies with their counts), and
// reports what it could not program in unprogrammedRoute / unprogrammedAdjacency with the reason
// in unprogrammedReason. It also keeps the reason of every refused route and adjacency, which the
// status tree cannot carry per entry, for reports.
//
// Driven by the configuration's notifications: a change only marks its key dirty and arms the
// chip's task; the task answers one loop step later, or answerDelay seconds later when a delay is
// set (changes that arrive within the window are answered together). Deletions are answered
// before creations, so a freed slot is reused in the same answer.
//
// Platform knobs: capacities (a change re-examines every configured entry, as a platform does
// when room appears), refusal of the next N operations of a kind with a chosen reason, interfaces
// that are not ready (routes whose adjacency egresses through one are refused with
// InterfaceNotReady and re-examined when it becomes ready), and whether MPLS routing is confirmed.
//
// Invariants: status.route and status.unprogrammedRoute never both hold a key; the routes in
// hardware never exceed routeCapacity (counting the routes that other route helpers hold through
// externalRoutesIs), nor the adjacencies l2AdjacencyCapacity; a route is programmed only while its
// adjacency is programmed.
class Chip {
 public:
   static constexpr std::size_t unlimited() { return std::numeric_limits<std::size_t>::max(); }

   Chip(Kor::Ptr<Loom::EventLoop> loop, Kor::Ptr<const Fal::MplsHwConfig> config,
        Kor::Ptr<Fal::MplsHwStatus> status);
   ~Chip();
   Chip(const Chip&) = delete;
   Chip& operator=(const Chip&) = delete;

   const Kor::Ptr<const Fal::MplsHwConfig>& config() const { return config_; }
   const Kor::Ptr<Fal::MplsHwStatus>& status() const { return status_; }

   // Capacities; a change re-examines every configured route and adjacency.
   std::size_t routeCapacity() const { return routeCapacity_; }
   void routeCapacityIs(std::size_t n);
   std::size_t l2AdjacencyCapacity() const { return adjCapacity_; }
   void l2AdjacencyCapacityIs(std::size_t n);

   // Seconds between a configuration change and the answer; 0 answers one loop step later.
   double answerDelay() const { return answerDelay_; }
   void answerDelayIs(double seconds) { answerDelay_ = seconds < 0 ? 0 : seconds; }

   // The next n programmings (creations or updates, not deletions) of `target` fail with `reason`.
   void refuseNextIs(RefuseTarget target, std::size_t n, Fal::UnprogrammedReason reason);
   std::size_t refusalsLeft(RefuseTarget target) const;

   // An interface that is not ready refuses the routes that egress through it.
   void interfaceReadyIs(Wire::IntfId intf, bool ready);
   bool interfaceReady(Wire::IntfId intf) const { return !notReady_.contains(intf); }
   const Kor::OrderedSet<Wire::IntfId>& interfacesNotReady() const { return notReady_; }

   // Answers out of order: a route configured more than once since its last answer (or
   // configured and deleted) is first answered with the oldest of those values, a late answer
   // for an older version or for a route since deleted, and with what is configured now one
   // loop step later.
   bool outOfOrder() const { return outOfOrder_; }
   void outOfOrderIs(bool v);
   std::uint64_t lateAnswers() const { return lateAnswers_; }

   // Whether the chip confirms the configuration's mplsRouting (off: never answers it).
   bool confirmRouting() const { return confirmRouting_; }
   void confirmRoutingIs(bool v);

   // Looks at every configured route and adjacency again, and at every unprogrammed one.
   void reexamine();

   // Routes that another programming path (a route helper) holds in the same route table.
   std::size_t externalRoutes() const { return externalRoutes_; }
   void externalRoutesIs(std::size_t n) { externalRoutes_ = n; }

   // What is in hardware, all VRFs together.
   std::size_t routesInHardware() const { return routesInHw_; }
   std::size_t l2AdjacenciesInHardware() const { return adjsInHw_; }
   bool routeRoom() const { return routesInHw_ + externalRoutes_ < routeCapacity_; }

   // The reason the chip gave for a refused route or adjacency; Success when it is not refused.
   Fal::UnprogrammedReason routeReason(Fal::VrfId vrf, const Mpls::RouteKey& key) const;
   Fal::UnprogrammedReason adjacencyReason(Fal::VrfId vrf, const Fal::L2AdjacencyPtr& adj) const;

   // True while configuration changes wait for their answer.
   bool busy() const { return task_->pending(); }

   // An agent restart as the platform sees it. From agentRestarting() until agentReconciled(), an
   // entry that the agent's configuration drops stays in hardware, marked stale, and an entry
   // written again with the same forwarding (a route's label to an adjacency with the same next
   // hops, MACs, VLANs, interfaces and labels; an adjacency with the same via set as a stale one)
   // takes the stale entry back without a hardware write. agentReconciled() deletes what is still
   // stale. Only the hardware operations (the counters) follow this: the status the agent reads
   // is answered as always, and the forwarding model reads that status.
   void agentRestarting();
   void agentReconciled();
   bool reconciling() const { return reconciling_; }

   // Counters of the operations carried out.
   std::uint64_t routeWrites() const { return routeWrites_; }
   std::uint64_t routeDeletes() const { return routeDeletes_; }
   std::uint64_t adjacencyWrites() const { return adjWrites_; }
   std::uint64_t adjacencyDeletes() const { return adjDeletes_; }
   std::uint64_t refusals() const { return refusals_; }

 private:
   class ConfigReactor;
   class VrfReactor;
   // What changed in one VRF since the last answer. Kept from one run to the next, so that the
   // bit per label of its routes is allocated once, not at every run.
   struct Dirty {
      bool routing = false;
      Mpls::DenseRouteKeySet routes;
      Kor::HashSet<Fal::L2AdjacencyPtr> adjs;
      bool empty() const { return !routing && routes.empty() && adjs.empty(); }
   };
   // What one run answers for one VRF, taken out of its Dirty: routes in label order.
   struct Answer {
      bool routing = false;
      std::vector<Mpls::RouteKey> routes;
      std::vector<Fal::L2AdjacencyPtr> adjs;
   };
   struct VrfState {
      std::unique_ptr<VrfReactor> reactor;
      Mpls::DenseRouteMap<Fal::UnprogrammedReason> routeReason;
      Kor::HashMap<Fal::L2AdjacencyPtr, Fal::UnprogrammedReason> adjReason;
      // Out of order: the values configured for a route since its last answer, oldest first.
      Kor::HashMap<Mpls::RouteKey, std::vector<Fal::MplsHwRoute>> unanswered;
   };

   void vrfConfigChanged(Fal::VrfId vrfId);
   void routeConfigured(Fal::VrfId vrfId, const Mpls::RouteKey& key);
   // Out of order: answers `key` late with an older value when one is waiting; true if it did.
   bool answerLate(Fal::VrfId vrfId, const Fal::MplsHwVrfConfig& config,
                   Fal::MplsHwVrfStatus& status, const Mpls::RouteKey& key);
   void markAll(Fal::VrfId vrfId);
   void arm();
   void run();
   void answerVrf(Fal::VrfId vrfId, Answer& a);
   void removeVrf(Fal::VrfId vrfId);
   void programAdjacency(Fal::VrfId vrfId, const Fal::MplsHwVrfConfig& config,
                         Fal::MplsHwVrfStatus& status, const Fal::L2AdjacencyPtr& adj);
   void programRoute(Fal::VrfId vrfId, const Fal::MplsHwVrfConfig& config,
                     Fal::MplsHwVrfStatus& status, const Mpls::RouteKey& key);
   void refuseRoute(VrfState& vrf, Fal::MplsHwVrfStatus& status, const Mpls::RouteKey& key,
                    Fal::UnprogrammedReason reason);
   bool egressReady(const Fal::L2AdjacencyPtr& adj) const;
   bool takeRefusal(RefuseTarget target, Fal::UnprogrammedReason& reason);

   Kor::Ptr<Loom::EventLoop> loop_;
   Kor::Ptr<const Fal::MplsHwConfig> config_;
   Kor::Ptr<Fal::MplsHwStatus> status_;
   std::unique_ptr<ConfigReactor> configReactor_;
   Kor::HashMap<Fal::VrfId, VrfState> vrf_;
   Kor::OrderedMap<Fal::VrfId, Dirty> dirty_;
   Kor::Ptr<Loom::TimerTask> task_;
   std::size_t routeCapacity_ = unlimited();
   std::size_t adjCapacity_ = unlimited();
   std::size_t routesInHw_ = 0;
   std::size_t adjsInHw_ = 0;
   std::size_t externalRoutes_ = 0;
   double answerDelay_ = 0.0;
   std::size_t refuseRoutes_ = 0;
   Fal::UnprogrammedReason refuseRouteReason_ = Fal::UnprogrammedReason::RouteFull;
   std::size_t refuseAdjs_ = 0;
   Fal::UnprogrammedReason refuseAdjReason_ = Fal::UnprogrammedReason::AdjacencyFull;
   Kor::OrderedSet<Wire::IntfId> notReady_;
   bool confirmRouting_ = true;
   bool outOfOrder_ = false;
   std::uint64_t lateAnswers_ = 0;
   std::uint64_t routeWrites_ = 0;
   std::uint64_t routeDeletes_ = 0;
   // What agentRestarting() found in hardware, per VRF, until agentReconciled().
   struct Stale {
      // The forwarding of each stale route, as an index into viaSets.
      Mpls::DenseRouteMap<std::uint32_t> routes;
      std::vector<Mpls::Hardware::L2ViaSet> viaSets;
      Kor::HashMap<Mpls::Hardware::L2ViaSet, std::uint32_t> viaSetIndex;
      // Stale adjacencies by via set: how many are left to take back.
      Kor::HashMap<Mpls::Hardware::L2ViaSet, std::size_t> adjs;
      Kor::HashSet<Fal::L2AdjacencyPtr> adjPtrs;
      // Adjacencies written since the restart, with the via set written: a later write of the
      // same via set (a new version of the same thing) changes no hardware.
      Kor::HashMap<Fal::L2AdjacencyPtr, Mpls::Hardware::L2ViaSet> takenBack;
   };
   // True when the write of `key` to `adj` takes a stale entry back; drops the stale mark.
   // The VRF's entries left by the earlier incarnation, while a restart is being reconciled.
   Stale* staleOf(Fal::VrfId id);
   bool takeStaleRoute(Fal::VrfId id, const Mpls::RouteKey& key, const Fal::L2AdjacencyPtr& adj);
   // True when the write of `adj` takes a stale adjacency back, or (`present`) writes again the
   // via set written since the restart.
   bool takeStaleAdjacency(Fal::VrfId id, const Fal::L2AdjacencyPtr& adj, bool present);
   bool reconciling_ = false;
   Kor::OrderedMap<Fal::VrfId, Stale> stale_;

   std::uint64_t adjWrites_ = 0;
   std::uint64_t adjDeletes_ = 0;
   std::uint64_t refusals_ = 0;
};

}  // namespace sim
