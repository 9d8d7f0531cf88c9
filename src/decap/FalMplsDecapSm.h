#pragma once

#include <cstddef>
#include <memory>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/KeyedAttr.h>
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

   bool helperReconciled() const { return helperReconciled_; }
   // Where one route stands and what holds it back, read from the state without changing it
   // (FalMplsDecapSmExplain.cpp).
   DecapExplanation explainRoute(const Mpls::RouteKey& routeKey) const;

   // What is programmed, per route.
   MPLSFWD_KEYED_ATTR(routeViaType, routeViaTypes, Mpls::RouteKey, Kor::Unobserved{})
   MPLSFWD_KEYED_ATTR(routeIpLookupVia, routeIpLookupVias, Mpls::RouteKey, Kor::Unobserved{})
   MPLSFWD_KEYED_ATTR(routeVlanVia, routeVlanVias, Mpls::RouteKey, Kor::Unobserved{})
   MPLSFWD_KEYED_ATTR(routeEvpnVlanFloodVia, routeEvpnVlanFloodVias, Mpls::RouteKey,
                      Kor::Unobserved{})
   MPLSFWD_KEYED_ATTR(routeEvpnVlanAwareVia, routeEvpnVlanAwareVias, Mpls::RouteKey,
                      Kor::Unobserved{})
   MPLSFWD_KEYED_ATTR(routeEvpnVlanAwareFloodVia, routeEvpnVlanAwareFloodVias, Mpls::RouteKey,
                      Kor::Unobserved{})

   // VLAN-aware bookkeeping.
   MPLSFWD_KEYED_ATTR(vlanAwareRouteKeyToDot1qTagVlanKey, vlanAwareRouteKeyToDot1qTagVlanKeys,
                      Mpls::RouteKey, Kor::Unobserved{})

   // Per collection, the VLAN-aware routes that name it (null when none ever did); per route,
   // the tags programmed for it (null when none). xIs(k) gets or creates.
   MPLSFWD_OWNED_ATTR(vlanAwareDot1qTagVlanToRouteKeySet, vlanAwareDot1qTagVlanToRouteKeySets,
                      Mpls::LfibDot1qTagToVlanKey, Kor::Unobserved{})
   MPLSFWD_OWNED_ATTR(vlanAwareRouteKeyToDot1qTagVlanProgrammed,
                      vlanAwareRouteKeyToDot1qTagVlanProgrammeds, Mpls::RouteKey, Kor::Unobserved{})

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
   // The tests' one way to the work methods below.
   friend struct MplsDecapSmTestAccess;

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

   class LfibStatusReactor;
   class LfibTrackingStatusReactor;
   class Dot1qTagToVlanCollReactor;

   // Every via kind (rows in DecapKinds.h): read the via, create it unless already programmed.
   template <class Kind>
   void processVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey);
   // The IP-lookup, VLAN and EVPN VLAN flood vias: each one mapping of the label.
   template <class Via>
   struct SingleMapping;
   template <class Via>
   void createSingleMapping(const Mpls::RouteKey& routeKey, const Via& via);
   template <class Via>
   void deleteSingleMapping(const Mpls::RouteKey& routeKey);
   // The VLAN-aware vias, plain or flooding: one mapping per dot1q tag of a collection.
   template <class Via>
   struct VlanAwareKind;
   template <class Via>
   void createVlanAware(const Mpls::RouteKey& routeKey, const Via& via);
   template <class Via>
   void deleteVlanAware(const Mpls::RouteKey& routeKey);

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

   Kor::KeyedAttr<RouteViaTypeMap> routeViaType_;
   Kor::KeyedAttr<RouteViaMap<Mpls::LfibIpLookupVia>> routeIpLookupVia_;
   Kor::KeyedAttr<RouteViaMap<Mpls::LfibVlanVia>> routeVlanVia_;
   Kor::KeyedAttr<RouteViaMap<Mpls::LfibEvpnVlanFloodVia>> routeEvpnVlanFloodVia_;
   Kor::KeyedAttr<RouteViaMap<Mpls::LfibEvpnVlanAwareVia>> routeEvpnVlanAwareVia_;
   Kor::KeyedAttr<RouteViaMap<Mpls::LfibEvpnVlanAwareFloodVia>> routeEvpnVlanAwareFloodVia_;

   Kor::KeyedAttr<Kor::HashMap<Mpls::RouteKey, Mpls::LfibDot1qTagToVlanKey>>
       vlanAwareRouteKeyToDot1qTagVlanKey_;
   Kor::KeyedAttr<
       Kor::HashMap<Mpls::LfibDot1qTagToVlanKey, Kor::Ptr<VlanAwareDot1qTagVlanRouteKeySet>>>
       vlanAwareDot1qTagVlanToRouteKeySet_;
   Kor::KeyedAttr<Kor::HashMap<Mpls::RouteKey, Kor::Ptr<VlanAwareProgrammedRouteSet>>>
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
