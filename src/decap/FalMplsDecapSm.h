#pragma once

#include <cstddef>
#include <memory>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/loom/Task.h>
#include <mplsfwd/loom/TaskScheduler.h>
#include <mplsfwd/loom/TimerTask.h>
#include <mplsfwd/mpls/LfibDecapVias.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibKeys.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>
#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "DecapExplanation.h"
#include "MplsDecapHelper.h"
#include "VlanAwareRouteSets.h"

namespace Fal {

// Programs the decapsulating LFIB routes (pop the label, then look the payload up in a VRF, bridge
// it into a VLAN, flood it in a VLAN, or bridge it by its dot1q tag through an EVPN VLAN-aware
// collection) through the platform's decap helper, and reports the routes that the helper refused
// in the LFIB hardware status. Transit routes (MPLS vias) are not its business: it skips them.
//
// Driven by the agent's event loop. Route changes arrive only through the tracking status's
// route-key backlog: a change schedules the "reviewRouteKeyBacklog" task, which drains the backlog
// in time-boxed slices, handling each key delete-first, then create. Refused routes (return codes
// 1 to 3) are retried from scratch by the "reviewUnprogrammed" timer task every
// defaultUnprogrammedRetryInterval seconds while any is listed. Changes of a dot1q-tag-to-VLAN
// collection reach the VLAN-aware routes that use it through one reactor per collection.
//
// Invariants: a key is in routeViaType exactly when its creation was accepted (VLAN-aware routes:
// as soon as they are processed, accepted or not), and then exactly the per-type via map of that
// type holds it; no via map holds a key that routeViaType lacks. A VLAN-aware route's programmed
// set holds exactly the tags the helper accepted for it. The destructor calls no helper
// operation: hardware mappings outlive the machine, and a successor starts with empty bookkeeping.
class MplsDecapSm : public Kor::Entity {
 public:
   // Label-indexed: a million decap routes are the whole label space.
   using RouteViaTypeMap = Mpls::DenseRouteMap<Mpls::LfibViaType>;
   template <class Via>
   using RouteViaMap = Mpls::DenseRouteMap<Via>;

   static constexpr int reviewTaskPriority = 2;
   static constexpr double defaultRetryInterval = 5.0;

   MplsDecapSm(Kor::Ptr<FalHelper::MplsDecapHelper> mplsDecapHelper,
               Kor::Ptr<const Mpls::LfibStatus> lfibStatus, Kor::Ptr<Loom::TaskScheduler> scheduler,
               Kor::Ptr<Mpls::LfibTrackingStatus> lfibTrackingStatus,
               Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus);
   ~MplsDecapSm() override;

   // Inputs and outputs.
   const Kor::Ptr<FalHelper::MplsDecapHelper>& mplsDecapHelper() const { return mplsDecapHelper_; }
   const Kor::Ptr<const Mpls::LfibStatus>& lfibStatus() const { return lfibStatus_; }
   const Kor::Ptr<Loom::TaskScheduler>& scheduler() const { return scheduler_; }
   const Kor::Ptr<Mpls::LfibTrackingStatus>& lfibTrackingStatus() const {
      return lfibTrackingStatus_;
   }
   const Kor::Ptr<Mpls::LfibHwStatus>& lfibHwStatus() const { return lfibHwStatus_; }

   bool initialized() const { return initialized_; }
   double defaultUnprogrammedRetryInterval() const { return defaultUnprogrammedRetryInterval_; }
   void defaultUnprogrammedRetryIntervalIs(double seconds) {
      defaultUnprogrammedRetryInterval_ = seconds;
   }
   const Kor::Ptr<Loom::Task>& reviewRouteKeyBacklog() const { return reviewRouteKeyBacklog_; }
   const Kor::Ptr<Loom::TimerTask>& reviewUnprogrammed() const { return reviewUnprogrammed_; }

   void handleInitialized();

   // Backlog.
   void handleRouteKeyBacklog();
   void doReviewRouteKeyBacklog();
   void processRouteKeyBacklog(const Mpls::RouteKey& routeKey);
   void processRouteKey(const Mpls::RouteKey& routeKey);
   void deleteRoute(const Mpls::RouteKey& routeKey);

   // Per via type.
   void processIpLookupVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey);
   void processVlanVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey);
   void processEvpnVlanFloodVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey);
   void processEvpnVlanAwareVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey);
   void processEvpnVlanAwareFloodVia(const Mpls::RouteKey& routeKey,
                                     const Mpls::LfibViaKey& viaKey);
   void createIpLookupVia(const Mpls::RouteKey& routeKey, const Mpls::LfibIpLookupVia& via);
   void createVlanVia(const Mpls::RouteKey& routeKey, const Mpls::LfibVlanVia& via);
   void createEvpnVlanFloodVia(const Mpls::RouteKey& routeKey,
                               const Mpls::LfibEvpnVlanFloodVia& via);
   void createEvpnVlanAwareVia(const Mpls::RouteKey& routeKey,
                               const Mpls::LfibEvpnVlanAwareVia& via);
   void createEvpnVlanAwareFloodVia(const Mpls::RouteKey& routeKey,
                                    const Mpls::LfibEvpnVlanAwareFloodVia& via);
   void deleteIpLookupVia(const Mpls::RouteKey& routeKey);
   void deleteVlanVia(const Mpls::RouteKey& routeKey);
   void deleteEvpnVlanFloodVia(const Mpls::RouteKey& routeKey);
   void deleteEvpnVlanAwareVia(const Mpls::RouteKey& routeKey);
   void deleteEvpnVlanAwareFloodVia(const Mpls::RouteKey& routeKey);

   // Dot1q-tag-to-VLAN collections.
   // The LFIB added or removed the collection `key`.
   void handleLfibDot1qTagToVlanColl(const Mpls::LfibDot1qTagToVlanKey& key);
   // The whole collection changed (or its reactor was just created): delete-all, then create-all.
   void handleDot1qTagToVlanColl(const Mpls::LfibDot1qTagToVlanKey& key);
   // One tag of the collection was added, changed or removed.
   void handleDot1qTagToVlan(const Mpls::LfibDot1qTagToVlanKey& key, Bridging::VlanId dot1qTag);
   void processDot1qTagToVlan(const Mpls::LfibDot1qTagToVlanKey& key, bool create);

   // Unprogrammed routes.
   void addRouteToUnprogrammed(const Mpls::RouteKey& routeKey,
                               Mpls::LfibHwProgrammingReturnCode rc);
   void deleteRouteFromUnprogrammed(const Mpls::RouteKey& routeKey);
   void maybeScheduleUnprogrammedReview();
   void doReviewUnprogrammed();

   // Once the first backlog after start-up is drained: deletes every mapping of the helper that
   // this machine does not program, and leaves the others as they are.
   void reconcileHelper();
   bool helperReconciled() const { return helperReconciled_; }
   // Where one route stands and what holds it back, read from the state without changing it
   // (FalMplsDecapSmExplain.cpp).
   DecapExplanation explainRoute(const Mpls::RouteKey& routeKey) const;

   // What is programmed, per route.
   Mpls::LfibViaType routeViaType(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(routeViaType_, k, Mpls::viaTypeInvalid_);
   }
   bool routeViaTypeHas(const Mpls::RouteKey& k) const { return routeViaType_.contains(k); }
   void routeViaTypeIs(const Mpls::RouteKey& k, Mpls::LfibViaType t) { routeViaType_[k] = t; }
   void routeViaTypeDel(const Mpls::RouteKey& k) { routeViaType_.erase(k); }
   const RouteViaTypeMap& routeViaTypeMap() const { return routeViaType_; }

   Mpls::LfibIpLookupVia routeIpLookupVia(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(routeIpLookupVia_, k);
   }
   bool routeIpLookupViaHas(const Mpls::RouteKey& k) const { return routeIpLookupVia_.contains(k); }
   void routeIpLookupViaIs(const Mpls::RouteKey& k, const Mpls::LfibIpLookupVia& v) {
      routeIpLookupVia_[k] = v;
   }
   void routeIpLookupViaDel(const Mpls::RouteKey& k) { routeIpLookupVia_.erase(k); }
   const RouteViaMap<Mpls::LfibIpLookupVia>& routeIpLookupViaMap() const {
      return routeIpLookupVia_;
   }

   Mpls::LfibVlanVia routeVlanVia(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(routeVlanVia_, k);
   }
   bool routeVlanViaHas(const Mpls::RouteKey& k) const { return routeVlanVia_.contains(k); }
   void routeVlanViaIs(const Mpls::RouteKey& k, const Mpls::LfibVlanVia& v) {
      routeVlanVia_[k] = v;
   }
   void routeVlanViaDel(const Mpls::RouteKey& k) { routeVlanVia_.erase(k); }
   const RouteViaMap<Mpls::LfibVlanVia>& routeVlanViaMap() const { return routeVlanVia_; }

   Mpls::LfibEvpnVlanFloodVia routeEvpnVlanFloodVia(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(routeEvpnVlanFloodVia_, k);
   }
   bool routeEvpnVlanFloodViaHas(const Mpls::RouteKey& k) const {
      return routeEvpnVlanFloodVia_.contains(k);
   }
   void routeEvpnVlanFloodViaIs(const Mpls::RouteKey& k, const Mpls::LfibEvpnVlanFloodVia& v) {
      routeEvpnVlanFloodVia_[k] = v;
   }
   void routeEvpnVlanFloodViaDel(const Mpls::RouteKey& k) { routeEvpnVlanFloodVia_.erase(k); }
   const RouteViaMap<Mpls::LfibEvpnVlanFloodVia>& routeEvpnVlanFloodViaMap() const {
      return routeEvpnVlanFloodVia_;
   }

   Mpls::LfibEvpnVlanAwareVia routeEvpnVlanAwareVia(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(routeEvpnVlanAwareVia_, k);
   }
   bool routeEvpnVlanAwareViaHas(const Mpls::RouteKey& k) const {
      return routeEvpnVlanAwareVia_.contains(k);
   }
   void routeEvpnVlanAwareViaIs(const Mpls::RouteKey& k, const Mpls::LfibEvpnVlanAwareVia& v) {
      routeEvpnVlanAwareVia_[k] = v;
   }
   void routeEvpnVlanAwareViaDel(const Mpls::RouteKey& k) { routeEvpnVlanAwareVia_.erase(k); }
   const RouteViaMap<Mpls::LfibEvpnVlanAwareVia>& routeEvpnVlanAwareViaMap() const {
      return routeEvpnVlanAwareVia_;
   }

   Mpls::LfibEvpnVlanAwareFloodVia routeEvpnVlanAwareFloodVia(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(routeEvpnVlanAwareFloodVia_, k);
   }
   bool routeEvpnVlanAwareFloodViaHas(const Mpls::RouteKey& k) const {
      return routeEvpnVlanAwareFloodVia_.contains(k);
   }
   void routeEvpnVlanAwareFloodViaIs(const Mpls::RouteKey& k,
                                     const Mpls::LfibEvpnVlanAwareFloodVia& v) {
      routeEvpnVlanAwareFloodVia_[k] = v;
   }
   void routeEvpnVlanAwareFloodViaDel(const Mpls::RouteKey& k) {
      routeEvpnVlanAwareFloodVia_.erase(k);
   }
   const RouteViaMap<Mpls::LfibEvpnVlanAwareFloodVia>& routeEvpnVlanAwareFloodViaMap() const {
      return routeEvpnVlanAwareFloodVia_;
   }

   // VLAN-aware bookkeeping.
   Mpls::LfibDot1qTagToVlanKey vlanAwareRouteKeyToDot1qTagVlanKey(const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(vlanAwareRouteKeyToDot1qTagVlanKey_, k);
   }
   bool vlanAwareRouteKeyToDot1qTagVlanKeyHas(const Mpls::RouteKey& k) const {
      return vlanAwareRouteKeyToDot1qTagVlanKey_.contains(k);
   }
   void vlanAwareRouteKeyToDot1qTagVlanKeyIs(const Mpls::RouteKey& k,
                                             const Mpls::LfibDot1qTagToVlanKey& v) {
      vlanAwareRouteKeyToDot1qTagVlanKey_[k] = v;
   }
   void vlanAwareRouteKeyToDot1qTagVlanKeyDel(const Mpls::RouteKey& k) {
      vlanAwareRouteKeyToDot1qTagVlanKey_.erase(k);
   }
   std::size_t vlanAwareRouteKeyToDot1qTagVlanKeys() const {
      return vlanAwareRouteKeyToDot1qTagVlanKey_.size();
   }

   // Null when no route ever named the collection.
   Kor::Ptr<VlanAwareDot1qTagVlanRouteKeySet> vlanAwareDot1qTagVlanToRouteKeySet(
       const Mpls::LfibDot1qTagToVlanKey& k) const {
      return Kor::mapValueOr(vlanAwareDot1qTagVlanToRouteKeySet_, k);
   }
   // Get or create.
   Kor::Ptr<VlanAwareDot1qTagVlanRouteKeySet> vlanAwareDot1qTagVlanToRouteKeySetIs(
       const Mpls::LfibDot1qTagToVlanKey& k);
   void vlanAwareDot1qTagVlanToRouteKeySetDel(const Mpls::LfibDot1qTagToVlanKey& k) {
      vlanAwareDot1qTagVlanToRouteKeySet_.erase(k);
   }
   std::size_t vlanAwareDot1qTagVlanToRouteKeySets() const {
      return vlanAwareDot1qTagVlanToRouteKeySet_.size();
   }

   // Null when the route has no programmed set.
   Kor::Ptr<VlanAwareProgrammedRouteSet> vlanAwareRouteKeyToDot1qTagVlanProgrammed(
       const Mpls::RouteKey& k) const {
      return Kor::mapValueOr(vlanAwareRouteKeyToDot1qTagVlanProgrammed_, k);
   }
   // Get or create.
   Kor::Ptr<VlanAwareProgrammedRouteSet> vlanAwareRouteKeyToDot1qTagVlanProgrammedIs(
       const Mpls::RouteKey& k);
   void vlanAwareRouteKeyToDot1qTagVlanProgrammedDel(const Mpls::RouteKey& k) {
      vlanAwareRouteKeyToDot1qTagVlanProgrammed_.erase(k);
   }
   std::size_t vlanAwareRouteKeyToDot1qTagVlanProgrammeds() const {
      return vlanAwareRouteKeyToDot1qTagVlanProgrammed_.size();
   }

   // One reactor per dot1q collection present in the LFIB.
   bool dot1qTagToVlanCollHas(const Mpls::LfibDot1qTagToVlanKey& k) const {
      return dot1qTagToVlanColl_.contains(k);
   }
   // Get or create; a reactor created here first handles the entire collection.
   void dot1qTagToVlanCollIs(const Mpls::LfibDot1qTagToVlanKey& k);
   // Drops the reactor; calls no helper operation.
   void dot1qTagToVlanCollDel(const Mpls::LfibDot1qTagToVlanKey& k);
   std::size_t dot1qTagToVlanColls() const { return dot1qTagToVlanColl_.size(); }

 private:
   class LfibStatusReactor;
   class LfibTrackingStatusReactor;
   class Dot1qTagToVlanCollReactor;

   void createVlanAwareMappings(const Mpls::RouteKey& routeKey,
                                const Mpls::LfibDot1qTagToVlanKey& collKey, bool flood,
                                const char* function);
   void deleteVlanAwareMappings(const Mpls::RouteKey& routeKey, bool flood);
   bool vlanAwareFlood(const Mpls::RouteKey& routeKey) const;

   Kor::Ptr<FalHelper::MplsDecapHelper> mplsDecapHelper_;
   Kor::Ptr<const Mpls::LfibStatus> lfibStatus_;
   Kor::Ptr<Loom::TaskScheduler> scheduler_;
   Kor::Ptr<Mpls::LfibTrackingStatus> lfibTrackingStatus_;
   Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus_;

   bool initialized_ = false;
   bool helperReconciled_ = false;
   double defaultUnprogrammedRetryInterval_ = 0.0;
   Kor::Ptr<Loom::Task> reviewRouteKeyBacklog_;
   Kor::Ptr<Loom::TimerTask> reviewUnprogrammed_;

   RouteViaTypeMap routeViaType_;
   RouteViaMap<Mpls::LfibIpLookupVia> routeIpLookupVia_;
   RouteViaMap<Mpls::LfibVlanVia> routeVlanVia_;
   RouteViaMap<Mpls::LfibEvpnVlanFloodVia> routeEvpnVlanFloodVia_;
   RouteViaMap<Mpls::LfibEvpnVlanAwareVia> routeEvpnVlanAwareVia_;
   RouteViaMap<Mpls::LfibEvpnVlanAwareFloodVia> routeEvpnVlanAwareFloodVia_;

   Kor::HashMap<Mpls::RouteKey, Mpls::LfibDot1qTagToVlanKey> vlanAwareRouteKeyToDot1qTagVlanKey_;
   Kor::HashMap<Mpls::LfibDot1qTagToVlanKey, Kor::Ptr<VlanAwareDot1qTagVlanRouteKeySet>>
       vlanAwareDot1qTagVlanToRouteKeySet_;
   Kor::HashMap<Mpls::RouteKey, Kor::Ptr<VlanAwareProgrammedRouteSet>>
       vlanAwareRouteKeyToDot1qTagVlanProgrammed_;
   Kor::HashMap<Mpls::LfibDot1qTagToVlanKey, std::unique_ptr<Dot1qTagToVlanCollReactor>>
       dot1qTagToVlanColl_;

   std::unique_ptr<LfibStatusReactor> lfibStatusReactor_;
   std::unique_ptr<LfibTrackingStatusReactor> lfibTrackingStatusReactor_;
};

Kor::Ptr<MplsDecapSm> mplsDecapSmFactory(Kor::Ptr<FalHelper::MplsDecapHelper> mplsDecapHelper,
                                         Kor::Ptr<const Mpls::LfibStatus> lfibStatus,
                                         Kor::Ptr<Loom::TaskScheduler> scheduler,
                                         Kor::Ptr<Mpls::LfibTrackingStatus> lfibTrackingStatus,
                                         Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus);

}  // namespace Fal
