#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/Fal/MplsSmHelper.h>
#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/EntityManager.h>
#include <mplsfwd/l3/L3Status.h>
#include <mplsfwd/l3/MonitoredNexthopSm.h>
#include <mplsfwd/l3/Route6ReactorConfig.h>
#include <mplsfwd/l3/RouteReactorConfig.h>
#include <mplsfwd/l3/RouteStatus.h>
#include <mplsfwd/l3/VrfName.h>
#include <mplsfwd/loom/AttrLogSm.h>
#include <mplsfwd/loom/NumAllocator.h>
#include <mplsfwd/mpls/FibFec.h>
#include <mplsfwd/mpls/HardwareStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingSm.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/RoutingInfo.h>

#include "AdjacencyObjects.h"
#include "CachedLFibMplsViaColl.h"
#include "L3AdjLFibAdjType.h"
#include "L3AdjPlan.h"
#include "RouteExplanation.h"
#include "VrfMplsState.h"

namespace Fal {

// The transit MPLS state machine. It follows the LFIB's transit routes (via types MPLS-IP and
// external FEC) in the default VRF, turns their via sets into L3 adjacencies, resolves their next
// hops into shared L2 adjacencies (or forwards them into FIB FECs), writes the per-VRF hardware
// configuration and follows the platform's answers, retrying what the hardware could not take.
//
// The agent constructs one and keeps it for its lifetime. Handlers (the nested reactors' onX)
// only queue work on the VRF state and ask for a review; the review runs from the clock in passes
// of at most reviewQuanta seconds and does all the work, including every write to the hardware
// configuration. Routes live in the default VRF only.
//
// Invariants kept between passes (checked by the tests after every quiescent step): adjacency
// links are mutual (an L3 adjacency is in its L2 adjacency's set, in its next hops' sets, in its
// FEC record's dependents, in its backup's primaries); lFibViaSetToL3Adj maps exactly the via sets
// that have an L3 adjacency; adjacency indices only grow; an unused L2 adjacency is either deleted
// or on the pending-delete list.
class MplsSm : public Kor::Entity {
 public:
   MplsSm(Kor::Ptr<const Mpls::Status> mplsStatus,
          Kor::Ptr<const Mpls::RoutingInfo> mplsRoutingInfo,
          Kor::Ptr<const Mpls::LfibStatus> transitLfib,
          Kor::Ptr<const Routing::Hardware::RouteStatus> routingHwRouteStatus,
          Kor::Ptr<Mpls::Hardware::Status> routingHwMplsStatus,
          Kor::Ptr<RouteReactorConfig> routeReactorConfig,
          Kor::Ptr<Route6ReactorConfig> route6ReactorConfig, Kor::Ptr<MplsHwConfig> mplsHwConfig,
          Kor::Ptr<MplsHwStatus> mplsHwStatus, Kor::Ptr<const L3Status> falL3Status,
          Kor::Ptr<MonitoredNexthopSm> monitoredNhSm, Kor::Ptr<Regdb::EntityManager> entityManager,
          Kor::Ptr<Loom::AttrLogSm> attrLogSm, Kor::Ptr<Kor::Clock> clock);
   ~MplsSm() override;

   // Inputs and outputs.
   const Kor::Ptr<const Mpls::Status>& mplsStatus() const { return mplsStatus_; }
   const Kor::Ptr<const Mpls::RoutingInfo>& mplsRoutingInfo() const { return mplsRoutingInfo_; }
   const Kor::Ptr<const Mpls::LfibStatus>& transitLfib() const { return transitLfib_; }
   const Kor::Ptr<Mpls::Hardware::Status>& routingHwMplsStatus() const {
      return routingHwMplsStatus_;
   }
   const Kor::Ptr<MplsHwConfig>& mplsHwConfig() const { return mplsHwConfig_; }
   const Kor::Ptr<MplsHwStatus>& mplsHwStatus() const { return mplsHwStatus_; }
   const Kor::Ptr<const L3Status>& falL3Status() const { return falL3Status_; }
   const Kor::Ptr<MonitoredNexthopSm>& monitoredNhSm() const { return monitoredNhSm_; }
   const Kor::Ptr<Kor::Clock>& clock() const { return clock_; }
   const Kor::Ptr<Mpls::LfibTrackingStatus>& lfibTrackingStatus() const {
      return lfibTrackingStatus_;
   }
   const Kor::Ptr<FecIdToHwFecIdRequest>& hwFecIdRequest() const { return hwFecIdRequest_; }
   // Also withdraws what an earlier incarnation left in the table and this one does not use.
   void hwFecIdRequestIs(Kor::Ptr<FecIdToHwFecIdRequest> t);
   const Kor::Ptr<const FecIdToHwFecIdResponse>& hwFecIdResponse() const {
      return hwFecIdResponse_;
   }
   void hwFecIdResponseIs(Kor::Ptr<const FecIdToHwFecIdResponse> t);
   const Kor::Ptr<FalHelper::MplsSmHelper>& mplsSmHelper() const { return mplsSmHelper_; }
   // Also notes the routes the helper holds from an earlier incarnation, until reconciled.
   void mplsSmHelperIs(Kor::Ptr<FalHelper::MplsSmHelper> h);

   // Settings and counters.
   double reviewInterval() const { return reviewInterval_; }
   void reviewIntervalIs(double v) { reviewInterval_ = v; }
   double reviewQuanta() const { return reviewQuanta_; }
   void reviewQuantaIs(double v) { reviewQuanta_ = v; }
   double currentReviewInterval() const { return currentReviewInterval_; }
   double defaultUnprogrammedRetryInterval() const { return defaultUnprogrammedRetryInterval_; }
   void defaultUnprogrammedRetryIntervalIs(double v) { defaultUnprogrammedRetryInterval_ = v; }
   std::uint64_t reviewCount() const { return reviewCount_; }
   double reviewEndTime() const { return reviewEndTime_; }
   std::uint64_t adjacencyIndex() const { return adjacencyIndex_; }
   bool initialized() const { return initialized_; }
   // Longest review pass so far, in seconds of the clock's time source.
   double longestReviewPass() const { return longestReviewPass_; }

   // Per-VRF state.
   Kor::Ptr<VrfMplsState> mplsState(const L3::VrfName& vrf) const;
   Kor::Ptr<VrfMplsState> mplsStateIs(const L3::VrfName& vrf);
   void mplsStateDel(const L3::VrfName& vrf);
   void mplsStateDelAll();
   bool vrfForReview(const L3::VrfName& vrf) const { return vrfForReview_.contains(vrf); }
   bool mplsIpRouteKey(const Mpls::RouteKey& k) const { return mplsIpRouteKey_.contains(k); }
   std::size_t mplsIpRouteKeys() const { return mplsIpRouteKey_.size(); }
   const Kor::HashMap<Mpls::Hardware::L2ViaSet, Kor::Ptr<Mpls::Hardware::L2Adjacency>>&
   viaSetToHwL2AdjMap() const {
      return viaSetToHwL2Adj_;
   }
   const Kor::HashMap<NextHopKey, VrfId>& currArpVrfIdMap() const { return currArpVrfId_; }
   const Kor::Ptr<Loom::NumAllocator>& numAllocator() const { return numAllocator_; }

   // Accessors by VRF name; the name maps to a VRF id through the L3 status.
   Kor::Ptr<MplsHwVrfConfig> falMplsHwVrfConfig(const L3::VrfName& vrf);
   Kor::Ptr<const MplsHwVrfStatus> falMplsHwVrfStatus(const L3::VrfName& vrf) const;
   Kor::Ptr<MplsHwVrfStatus> falMplsHwVrfStatusNonConst(const L3::VrfName& vrf);

   // Whether the platform forwards into FIB FECs (both FEC tables given).
   bool forwardingIntoExternalFecsSupported() const { return hwFecIdRequest_ && hwFecIdResponse_; }
   // Whether L2 adjacencies are updated in place (the "InPlaceMplsAdjacencyUpdate" toggle).
   bool inPlaceAdjacencyUpdateSupported();

   // Where one route stands and what holds it back, read from the state without changing it
   // (FalMplsSmExplain.cpp). Nothing is kept for it between calls.
   TransitExplanation explainRoute(const Mpls::RouteKey& routeKey) const;

 private:
   // The tests' one way to the work methods below.
   friend struct MplsSmTestAccess;

   // Start-up, routing switches, VRF names.
   void handleInitialized();
   void handleMplsRouting(bool routing);
   void handleHwRoutingEnabled(VrfId vrfId, bool routing);
   void handleVrfName(VrfId vrfId);
   void mplsHwVrfStatusIs(const Kor::Ptr<MplsHwVrfStatus>& status);
   void mplsHwVrfStatusDel(VrfId vrfId);
   void mplsHwVrfStatusDelAll();

   // Routes.
   void handleLFibRoute(const Mpls::RouteKey& routeKey);
   void handleLFibRoute();
   bool routeSupported(const Mpls::LfibRoute& lfibRoute) const;
   bool foreignRouteUntouched(const Mpls::RouteKey& routeKey,
                              const Mpls::LfibRoute& lfibRoute) const;
   bool foreignViaSetUnused(const Mpls::LfibViaSetKey& key) const;
   void processRouteKey(VrfMplsState& vrf, const Mpls::RouteKey& routeKey);
   void publishRouteKey(VrfMplsState& vrf, const Mpls::RouteKey& routeKey);
   void doPublishRouteKeys(VrfMplsState& vrf);
   void unprogramRouteKey(VrfMplsState& vrf, const Mpls::RouteKey& routeKey);
   void deleteRouteKeyAndRoute(VrfMplsState& vrf, const Mpls::RouteKey& routeKey);
   void clearRouteMappings(VrfMplsState& vrf, const Mpls::RouteKey& routeKey);

   // Review.
   void doMaybeScheduleReview(const L3::VrfName& vrf);
   void doReviewVrfs();
   void doReviewVrf(const L3::VrfName& vrf);
   bool reviewYield() const;
   void doReviewUnprogrammedRoute(VrfMplsState& vrf);
   void doMaybeScheduleReviewOrDeleteVrfState(const L3::VrfName& vrf);
   void doForceRouteReprogramming();
   void handleProgrammedRoute(VrfId vrfId, const Mpls::RouteKey& routeKey);
   void handleUnprogrammedRoute(VrfId vrfId, const Mpls::RouteKey& routeKey);
   void handleUnprogrammedAdj(VrfId vrfId, const L2AdjacencyPtr& l2Adjacency);
   // Once the review has nothing left to do after start-up: deletes every route of the route
   // helper that this incarnation does not program into a FEC (every one without VRF state).
   void reconcileRouteHelper(const VrfMplsState* vrf);
   // Reconciles at once (and logs an owed NORMAL) when no VRF state will form to do it: no route
   // of ours in the LFIB once it has been walked, or MPLS routing off in the control plane.
   void maybeReconcileRouteHelperWithoutState();
   // Logs the NORMAL owed to a FULL that an earlier incarnation raised, once nothing is
   // unprogrammed or waiting for review.
   void maybeLogOwedResourceNormal();
   // Whether the route helper held a route of this adjacency when this incarnation took it up
   // (and has not been reconciled yet).
   bool helperHeldRouteOf(const VrfMplsState& vrf, const L3Adjacency& l3Adj) const;
   // One route (or L2 adjacency) more (1) or fewer (-1) among the VRF's unprogrammed ones, with
   // the FULL/NORMAL logs and traces of the total's passage through zero.
   void unprogrammedCountChanged(VrfMplsState& vrf, int delta, const MplsHwVrfStatus* status,
                                 bool adjacency);

   // Via sets and L3 adjacencies.
   void handleLFibViaSet();
   void handleLFibViaSet(const Mpls::LfibViaSetKey& key);
   void handleLFibViaSetHelper(const Mpls::LfibViaSetKey& key, bool delFromBacklog);
   L3AdjacencyPtr newL3Adjacency(VrfMplsState& vrf);
   void processL3Adj(VrfMplsState& vrf, std::uint64_t index);
   // The review of an adjacency that only neighbour changes queued, when what they changed can be
   // patched into its hardware adjacency and its L2 adjacency as the full review would rewrite
   // them (FalMplsSmNeighbourPatch.cpp); false, with nothing changed, when the full review must
   // run.
   bool patchMovedNeighbours(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj);
   // The review of one L3 adjacency in two steps: what to do, read from the state without
   // changing it (each rule traced where it fires), then doing it; true when programmed.
   L3AdjPlan classifyL3Adj(const VrfMplsState& vrf, const L3Adjacency& l3Adj) const;
   // False, with the reason, for a via set that the hardware layer cannot carry.
   bool validateMplsIpL3Adj(const VrfMplsState& vrf, const Mpls::LfibViaSet* lFibViaSet,
                            const Mpls::LfibViaSetKey& key,
                            const Kor::Ptr<const CachedLFibMplsViaColl>& lFibVias,
                            L3AdjPlan::Skip& why) const;
   // The backup rules: their verdict and what the apply step does about the backup go in `plan`.
   void validateBackupAdjInfo(const VrfMplsState& vrf, const Mpls::LfibViaSet& lFibViaSet,
                              L3AdjPlan& plan) const;
   bool applyL3AdjPlan(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj, const L3AdjPlan& plan);
   // The backup half of a plan: links, creates, lets go of or waits for the backup adjacency.
   void maybeUpdateBackupAdjInfo(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                 const L3AdjPlan& plan, const Mpls::LfibViaSet* lFibViaSet);
   Kor::Ptr<const CachedLFibMplsViaColl> getSaneMplsIpLFibVias(
       const Mpls::LfibViaSet& lFibViaSet) const;
   bool isLFibViaSetSane(const Mpls::LfibViaSet& lFibViaSet) const;
   // The same, asked once per review pass of the via set's L3 adjacency `l3Adj` (may be null).
   bool isLFibViaSetSane(const Mpls::LfibViaSet& lFibViaSet, L3Adjacency* l3Adj) const;
   static L3AdjLFibAdjType findL3AdjLFibAdjType(const CachedLFibMplsViaColl* lFibVias);
   static bool hasNHGAdj(const CachedLFibMplsViaColl& lFibVias);
   static bool hasDynamicTunnelAdj(const CachedLFibMplsViaColl& lFibVias);
   bool shouldProcessAdjAsExtFec(const Mpls::LfibViaSetKey& key,
                                 const CachedLFibMplsViaColl& lFibVias) const;
   // Whether regular via sets of the key's source go the FEC way where FECs are forwarded into.
   static bool fecForwardedSource(const Mpls::LfibViaSetKey& key);
   Mpls::LfibExtFecVia getAndValidateExtFecVia(const VrfMplsState& vrf,
                                               const Mpls::LfibViaSetKey& key) const;
   MplsL2AdjacencyPtr processMplsIpL3Adj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                         const Mpls::LfibViaSet& lFibViaSet,
                                         const CachedLFibMplsViaColl& lFibVias);
   // `withBackup` false publishes the FEC without its backup: a primary that keeps forwarding
   // while its backup's FEC is not there yet.
   bool processMplsIpL3AdjAsExtFec(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                   const Mpls::LfibViaSet& lFibViaSet,
                                   const Kor::Ptr<const CachedLFibMplsViaColl>& lFibVias,
                                   bool withBackup = true);
   void processExtFecL3Adj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                           const Mpls::LfibViaSetKey& key, const Mpls::LfibExtFecVia& extFecVia);
   // Makes `backupAdj` the backup of `l3Adj`; a backup it replaces is let go and reviewed, so
   // that it goes (with its FEC) once nothing else uses it.
   void linkBackupAdj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                      const L3AdjacencyPtr& backupAdj);
   void setHwAdjacencyVias(Mpls::Hardware::Adjacency& hwL3Adj,
                           const CachedLFibMplsViaColl& lFibVias);

   // Next hops and L2 adjacencies.
   // Each adds the via's resolution to `l2ViaSet` and `hwAdj` and returns true when the next
   // hop resolves; either way the adjacency counts among the next hop's users.
   bool resolveNextHop(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj, const Mpls::LfibMplsVia& via,
                       std::size_t nVias, Mpls::Hardware::L2ViaSet& l2ViaSet,
                       Mpls::Hardware::Adjacency& hwAdj);
   bool resolveNextHopWithMNHSM(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                const Mpls::LfibMplsVia& via, std::size_t nVias,
                                Mpls::Hardware::L2ViaSet& l2ViaSet,
                                Mpls::Hardware::Adjacency& hwAdj);
   bool resolveNextHopWithRR(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                             const Mpls::LfibMplsVia& via, std::size_t nVias,
                             Mpls::Hardware::L2ViaSet& l2ViaSet, Mpls::Hardware::Adjacency& hwAdj);
   // Lets go of the next hops that the adjacency no longer resolves through.
   void dropUnusedNextHops(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                           const CachedLFibMplsViaColl& vias);
   MplsL2AdjacencyPtr newL2Adjacency(VrfMplsState& vrf);
   void progHwL2Adj(const L3::VrfName& vrf, const L2AdjacencyPtr& hwL2Adjacency);
   void processL2Adj(VrfMplsState& vrf, std::uint64_t index);
   void viaSetToHwL2AdjIs(const Mpls::Hardware::L2ViaSet& viaSet, const L2AdjacencyPtr& hwL2Adj);
   void viaSetToHwL2AdjDel(const Mpls::Hardware::L2ViaSet& viaSet);
   void handleNextHop(const NextHopKey& key);
   void handleResolvedV4Nexthop(const VrfAndIpAddr& vrfAndIpAddr);
   void handleResolvedV6Nexthop(const VrfAndIpGenAddr& vrfAndIpGenAddr);
   void handleResolvedNexthop(const VrfAndIpGenAddr& vrfAndIpGenAddr);
   void handleNexthopResolutionAllowDefaultRoute();

   // FECs.
   Memtab::Fib::FecId getOrAllocateMplsV4FecId(const Mpls::LfibViaSetKey& key, VrfMplsState& vrf);
   Memtab::Fib::Fec createMplsV4Fec(Memtab::Fib::FecId fecId, const CachedLFibMplsViaColl& lFibVias,
                                    Memtab::Fib::FecId backupFecId) const;
   void requestHwFecIdAndUpdateDependencyMaps(Memtab::Fib::FecId fecId, const Memtab::Fib::Fec& fec,
                                              VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                              const Mpls::LfibViaSetKey& key);
   void freeMplsV4FecId(Memtab::Fib::FecId fecId, VrfMplsState& vrf);
   void handleHwFecIdResponse(Memtab::Fib::FecId fecId);
   void processHwFecIdResponse(Memtab::Fib::FecId fecId, VrfMplsState& vrf);

   // Bookkeeping and deletion.
   void addRouteKeyToL2Adj(VrfMplsState& vrf, MplsRoute& route, const MplsL2AdjacencyPtr& l2Adj);
   void deleteRouteKeyFromL2Adj(VrfMplsState& vrf, MplsRoute& route,
                                const MplsL2AdjacencyPtr& l2Adj);
   void addRouteKeyToExtFecInfo(const Mpls::RouteKey& key, const ExternalFecInfoPtr& extFecInfo);
   void deleteRouteKeyFromExtFecInfo(VrfMplsState& vrf, const Mpls::RouteKey& key,
                                     const ExternalFecInfoPtr& extFecInfo);
   void maybeDeleteExtFecInfo(VrfMplsState& vrf, Memtab::Fib::FecId fecId);
   void deleteL3AdjRefs(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj);
   void cleanupL3AdjInfo(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj, bool cleanupNormalAdjInfo,
                         bool cleanupExtFecAdjInfo);
   void deleteL3Adj(VrfMplsState& vrf, std::uint64_t index);
   void maybeDeleteL2Adj(VrfMplsState& vrf, std::uint64_t index);
   void processL2AdjPendingDelete(VrfMplsState& vrf, std::uint64_t index);
   void doDeleteL2Adj(VrfMplsState& vrf, std::uint64_t index);

   class MplsStatusReactor;
   class RoutingInfoReactor;
   class LfibReactor;
   class TrackingStatusReactor;
   class HwStatusReactor;
   class HwVrfStatusReactor;
   class L3StatusReactor;
   class HwFecIdResponseReactor;
   class ClockReactor;

   VrfId vrfIdOf(const L3::VrfName& vrf) const;
   bool platformRoutingEnabled(const L3::VrfName& vrf) const;
   bool controlPlaneRouting() const { return mplsRoutingInfo_ && mplsRoutingInfo_->mplsRouting(); }
   bool isAdjPendingForReview(const VrfMplsState& vrf, const L3Adjacency& l3Adj) const {
      return vrf.l3AdjForReview(l3Adj.index());
   }
   void l3AdjRoutesForReview(VrfMplsState& vrf, const L3Adjacency& l3Adj);
   void l3AdjForReview(VrfMplsState& vrf, std::uint64_t index);
   void l2AdjForReview(VrfMplsState& vrf, std::uint64_t index);
   void watchNextHop(VrfMplsState& vrf, const IpAddrIntfId& nh, const L3AdjacencyPtr& l3Adj,
                     bool byRouteResolver);
   void unwatchNextHopIfUnused(VrfMplsState& vrf, const IpAddrIntfId& nh);
   void unlinkL2Adj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj);
   bool l2AdjReferencedByConfig(VrfMplsState& vrf, const MplsL2Adjacency& l2Adj);
   Mpls::Hardware::Route hwRouteOf(const MplsRoute& route) const;
   MplsL2AdjacencyPtr tryInPlaceUpdate(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                       const Mpls::Hardware::L2ViaSet& l2ViaSet);
   void reviewPassEnded(double start);
   void refreshDefaultVrfId();
   void acceptRoute(VrfMplsState& vrf, const Mpls::RouteKey& routeKey);
   bool vrfKnown(const L3::VrfName& vrf) const;
   bool checkMplsIpLFibVias(const Mpls::LfibViaSet& viaSet, CachedLFibMplsViaColl* cache,
                            ViaSetRule* rule = nullptr) const;
   Mpls::LfibExtFecVia checkExtFecVia(const Mpls::LfibViaSetKey& key, ViaSetRule* rule) const;
   void explainVias(TransitExplanation& e, const Mpls::LfibViaSet& viaSet) const;
   ViaSetRule explainViaSetRule(const Mpls::LfibViaSet& viaSet) const;
   void explainHardware(TransitExplanation& e, const VrfMplsState& vrf,
                        const MplsRoute& route) const;

   Kor::Ptr<const Mpls::Status> mplsStatus_;
   Kor::Ptr<const Mpls::RoutingInfo> mplsRoutingInfo_;
   Kor::Ptr<const Mpls::LfibStatus> transitLfib_;
   Kor::Ptr<const Routing::Hardware::RouteStatus> routingHwRouteStatus_;
   Kor::Ptr<Mpls::Hardware::Status> routingHwMplsStatus_;
   Kor::Ptr<RouteReactorConfig> routeReactorConfig_;
   Kor::Ptr<Route6ReactorConfig> route6ReactorConfig_;
   Kor::Ptr<MplsHwConfig> mplsHwConfig_;
   Kor::Ptr<MplsHwStatus> mplsHwStatus_;
   Kor::Ptr<const L3Status> falL3Status_;
   Kor::Ptr<MonitoredNexthopSm> monitoredNhSm_;
   Kor::Ptr<Regdb::EntityManager> entityManager_;
   Kor::Ptr<Loom::AttrLogSm> attrLogSm_;
   Kor::Ptr<Kor::Clock> clock_;
   Kor::HashMap<NextHopKey, VrfId> currArpVrfId_;
   Kor::Ptr<FecIdToHwFecIdRequest> hwFecIdRequest_;
   Kor::Ptr<const FecIdToHwFecIdResponse> hwFecIdResponse_;
   Kor::Ptr<FalHelper::MplsSmHelper> mplsSmHelper_;
   // Set once the route helper's entries left by an earlier incarnation have been reconciled.
   bool routeHelperReconciled_ = false;
   // Set once the review first had nothing left to do (or no VRF state formed) after start-up.
   bool settledOnce_ = false;
   // FULL was logged by an earlier incarnation and this one took the episode over.
   bool inheritedFull_ = false;
   // Set while this machine takes a route off the unprogrammed list itself, so that the
   // notification is not taken for the platform clearing it.
   bool unlistingOwn_ = false;
   // The routes the helper held when this incarnation took it up, until reconciled.
   std::set<Mpls::RouteKey> helperHeldRoutes_;
   Kor::Ptr<Mpls::LfibTrackingStatus> lfibTrackingStatus_;
   Kor::Ptr<Mpls::LfibTrackingSm> lfibTrackingSm_;
   double reviewInterval_ = 0.001;
   double reviewQuanta_ = 0.025;
   double currentReviewInterval_ = 0.001;
   Kor::OrderedSet<L3::VrfName> vrfForReview_;
   std::uint64_t reviewCount_ = 0;
   // The pass under way (reviewCount_ then), 0 outside a pass.
   std::uint64_t passUnderWay_ = 0;
   double reviewEndTime_ = 0.0;
   std::uint64_t adjacencyIndex_ = 0;
   Kor::HashMap<Mpls::Hardware::L2ViaSet, Kor::Ptr<Mpls::Hardware::L2Adjacency>> viaSetToHwL2Adj_;
   // The L2 via set that patchMovedNeighbours builds, kept so that its storage is reused.
   Mpls::Hardware::L2ViaSet patchedL2ViaSet_;
   Kor::HashMap<L3::VrfName, Kor::Ptr<VrfMplsState>> mplsState_;
   Kor::Ptr<Loom::NumAllocatorConfig> numAllocatorConfig_;
   Kor::Ptr<Loom::NumAllocatorStatus> numAllocatorStatus_;
   Kor::Ptr<Loom::NumAllocator> numAllocator_;
   bool initialized_ = false;
   Mpls::DenseRouteKeySet mplsIpRouteKey_;
   Kor::HashMap<VrfId, std::unique_ptr<HwVrfStatusReactor>> mplsHwVrfStatus_;
   double defaultUnprogrammedRetryInterval_ = 10.0;
   // A route-resolver next hop resolves through a gateway whose neighbour entry may change on its
   // own; this index finds the next hops to review when it does.
   Kor::HashMap<NextHopKey, Kor::HashSet<IpAddrIntfId>> rrGatewayUsers_;
   double longestReviewPass_ = 0.0;
   // Caches of what every route asks for: the default VRF's state, id and configuration.
   Kor::Ptr<VrfMplsState> defaultState_;
   VrfId defaultVrfId_;
   bool defaultVrfKnown_ = false;
   Kor::Ptr<MplsHwVrfConfig> lastVrfConfig_;
   unsigned inPlaceToggleWord_ = 0;

   std::unique_ptr<MplsStatusReactor> mplsStatusReactor_;
   std::unique_ptr<RoutingInfoReactor> routingInfoReactor_;
   std::unique_ptr<LfibReactor> lfibReactor_;
   std::unique_ptr<TrackingStatusReactor> trackingStatusReactor_;
   std::unique_ptr<HwStatusReactor> hwStatusReactor_;
   std::unique_ptr<L3StatusReactor> l3StatusReactor_;
   std::unique_ptr<HwFecIdResponseReactor> hwFecIdResponseReactor_;
   std::unique_ptr<ClockReactor> clockReactor_;
};

Kor::Ptr<MplsSm> MplsSmIs(Kor::Ptr<const Mpls::Status> mplsStatus,
                          Kor::Ptr<const Mpls::RoutingInfo> mplsRoutingInfo,
                          Kor::Ptr<const Mpls::LfibStatus> transitLfib,
                          Kor::Ptr<const Routing::Hardware::RouteStatus> routingHwRouteStatus,
                          Kor::Ptr<Mpls::Hardware::Status> routingHwMplsStatus,
                          Kor::Ptr<RouteReactorConfig> routeReactorConfig,
                          Kor::Ptr<Route6ReactorConfig> route6ReactorConfig,
                          Kor::Ptr<MplsHwConfig> mplsHwConfig, Kor::Ptr<MplsHwStatus> mplsHwStatus,
                          Kor::Ptr<const L3Status> falL3Status,
                          Kor::Ptr<MonitoredNexthopSm> monitoredNhSm,
                          Kor::Ptr<Regdb::EntityManager> entityManager,
                          Kor::Ptr<Loom::AttrLogSm> attrLogSm, Kor::Ptr<Kor::Clock> clock);

}  // namespace Fal
