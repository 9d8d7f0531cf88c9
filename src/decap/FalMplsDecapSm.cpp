// Fal::MplsDecapSm: construction, the route-key backlog, and the single-mapping vias (IP lookup,
// VLAN, EVPN VLAN flood).
#include "FalMplsDecapSm.h"

#include <mplsfwd/log/Assert.h>
#include <mplsfwd/log/Trace.h>

namespace Fal {

namespace {

Log::Trace decapTrace("MplsDecapSm");

unsigned rcValue(Mpls::LfibHwProgrammingReturnCode rc) {
   return static_cast<unsigned>(rc);
}

bool retriable(Mpls::LfibHwProgrammingReturnCode rc) {
   return rc >= Mpls::lfibHwProgrammingResourceFull_ && rc <= Mpls::lfibHwProgrammingNotReady_;
}

}  // namespace

// Only the dot1q-tag-to-VLAN collections of the LFIB matter here: route changes arrive through
// the backlog.
class MplsDecapSm::LfibStatusReactor : public Mpls::LfibStatus::NotifieeConst {
 public:
   LfibStatusReactor(Kor::Ptr<const Mpls::LfibStatus> lfibStatus, MplsDecapSm& sm)
       : Mpls::LfibStatus::NotifieeConst(std::move(lfibStatus)), sm_(sm) {
      ownerIs(&sm);
   }
   void onDot1qTagToVlanColl(const Mpls::LfibDot1qTagToVlanKey& key) override {
      sm_.handleLfibDot1qTagToVlanColl(key);
   }

 private:
   MplsDecapSm& sm_;
};

class MplsDecapSm::LfibTrackingStatusReactor : public Mpls::LfibTrackingStatus::NotifieeConst {
 public:
   LfibTrackingStatusReactor(Kor::Ptr<Mpls::LfibTrackingStatus> status, MplsDecapSm& sm)
       : Mpls::LfibTrackingStatus::NotifieeConst(std::move(status)), sm_(sm) {
      ownerIs(&sm);
   }
   void onRouteKeyBacklog(const Mpls::RouteKey& routeKey) override {
      // A key leaving the backlog is work done (mostly by this machine), not work to do.
      if (!notifier()->routeKeyBacklog(routeKey)) {
         return;
      }
      sm_.handleRouteKeyBacklog();
   }

 private:
   MplsDecapSm& sm_;
};

class MplsDecapSm::Dot1qTagToVlanCollReactor : public Mpls::LfibDot1qTagToVlan::NotifieeConst {
 public:
   Dot1qTagToVlanCollReactor(Kor::Ptr<const Mpls::LfibDot1qTagToVlan> coll, MplsDecapSm& sm)
       : Mpls::LfibDot1qTagToVlan::NotifieeConst(std::move(coll)), sm_(sm) {
      ownerIs(&sm);
   }
   void onDot1qTagToVlanId(Bridging::VlanId dot1qTag) override {
      sm_.handleDot1qTagToVlan(notifier()->key(), dot1qTag);
   }
   void onDot1qTagToVlanColl() override { sm_.handleDot1qTagToVlanColl(notifier()->key()); }

 private:
   MplsDecapSm& sm_;
};

MplsDecapSm::MplsDecapSm(Kor::Ptr<FalHelper::MplsDecapHelper> mplsDecapHelper,
                         Kor::Ptr<const Mpls::LfibStatus> lfibStatus,
                         Kor::Ptr<Loom::TaskScheduler> scheduler,
                         Kor::Ptr<Mpls::LfibTrackingStatus> lfibTrackingStatus,
                         Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus)
    : Kor::Entity("MplsDecapSm"),
      mplsDecapHelper_(std::move(mplsDecapHelper)),
      lfibStatus_(std::move(lfibStatus)),
      scheduler_(std::move(scheduler)),
      lfibTrackingStatus_(std::move(lfibTrackingStatus)),
      lfibHwStatus_(std::move(lfibHwStatus)) {
   lfibStatusReactor_ = std::make_unique<LfibStatusReactor>(lfibStatus_, *this);
   lfibTrackingStatusReactor_ =
       std::make_unique<LfibTrackingStatusReactor>(lfibTrackingStatus_, *this);
   defaultUnprogrammedRetryInterval_ = defaultRetryInterval;
   handleInitialized();
   if (lfibStatus_) {
      // Collections that were there before this machine: take them up as if they had just come.
      Kor::OrderedSet<Mpls::LfibDot1qTagToVlanKey> present;
      for (const auto& [key, coll] : lfibStatus_->dot1qTagToVlanCollMap()) {
         present.insert(key);
      }
      for (const auto& key : present) {
         dot1qTagToVlanCollIs(key);
      }
   }
}

// Reactors go first so that nothing reaches the machine while its collections are emptied; no
// helper operation is called, the hardware keeps its mappings.
MplsDecapSm::~MplsDecapSm() {
   lfibStatusReactor_.reset();
   lfibTrackingStatusReactor_.reset();
   dot1qTagToVlanColl_.clear();
   reviewRouteKeyBacklog_ = nullptr;
   reviewUnprogrammed_ = nullptr;
   vlanAwareRouteKeyToDot1qTagVlanProgrammed_.clear();
   vlanAwareDot1qTagVlanToRouteKeySet_.clear();
   vlanAwareRouteKeyToDot1qTagVlanKey_.clear();
   routeEvpnVlanAwareFloodVia_.clear();
   routeEvpnVlanAwareVia_.clear();
   routeEvpnVlanFloodVia_.clear();
   routeVlanVia_.clear();
   routeIpLookupVia_.clear();
   routeViaType_.clear();
}

void MplsDecapSm::handleInitialized() {
   TRACE8(decapTrace, "handleInitialized");
   FAL_ASSERT(scheduler(), "scheduler()");
   FAL_ASSERT(lfibStatus(), "lfibStatus()");
   FAL_ASSERT(lfibTrackingStatus(), "lfibTrackingStatus()");
   FAL_ASSERT(lfibHwStatus(), "lfibHwStatus()");
   FAL_ASSERT(mplsDecapHelper(), "mplsDecapHelper()");
   reviewRouteKeyBacklog_ =
       Kor::make<Loom::Task>(scheduler_, "reviewRouteKeyBacklog", reviewTaskPriority,
                             [this] { doReviewRouteKeyBacklog(); });
   reviewUnprogrammed_ = Kor::make<Loom::TimerTask>(
       scheduler_, "reviewUnprogrammed", reviewTaskPriority, [this] { doReviewUnprogrammed(); });
   initialized_ = true;
   // Whatever the backlog holds already is taken up at the first run.
   reviewRouteKeyBacklog_->schedule();
}

Kor::Ptr<MplsDecapSm> mplsDecapSmFactory(Kor::Ptr<FalHelper::MplsDecapHelper> mplsDecapHelper,
                                         Kor::Ptr<const Mpls::LfibStatus> lfibStatus,
                                         Kor::Ptr<Loom::TaskScheduler> scheduler,
                                         Kor::Ptr<Mpls::LfibTrackingStatus> lfibTrackingStatus,
                                         Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus) {
   return Kor::make<MplsDecapSm>(std::move(mplsDecapHelper), std::move(lfibStatus),
                                 std::move(scheduler), std::move(lfibTrackingStatus),
                                 std::move(lfibHwStatus));
}

void MplsDecapSm::dot1qTagToVlanCollIs(const Mpls::LfibDot1qTagToVlanKey& key) {
   Kor::Ptr<const Mpls::LfibDot1qTagToVlan> coll = lfibStatus_->dot1qTagToVlanColl(key);
   if (!coll) {
      return;
   }
   auto& reactor = dot1qTagToVlanColl_[key];
   if (reactor && reactor->notifier() == coll) {
      return;
   }
   reactor = std::make_unique<Dot1qTagToVlanCollReactor>(coll, *this);
   handleDot1qTagToVlanColl(key);
}

void MplsDecapSm::dot1qTagToVlanCollDel(const Mpls::LfibDot1qTagToVlanKey& key) {
   dot1qTagToVlanColl_.erase(key);
}

// ---------------------------------------------------------------------------------------------
// Backlog.

void MplsDecapSm::handleRouteKeyBacklog() {
   FAL_ASSERT(initialized(), "initialized()");
   reviewRouteKeyBacklog_->schedule();
}

void MplsDecapSm::doReviewRouteKeyBacklog() {
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(reviewRouteKeyBacklog_, "task");
   TRACE8(decapTrace,
          "doReviewRouteKeyBacklog backlog " << lfibTrackingStatus_->routeKeyBacklogSet().size());
   const auto& backlog = lfibTrackingStatus_->routeKeyBacklogSet();
   auto it = backlog.begin();
   while (it != backlog.end()) {
      if (reviewRouteKeyBacklog_->taskShouldYield()) {
         TRACE8(decapTrace, "yielding with " << backlog.size() << " keys left");
         reviewRouteKeyBacklog_->schedule();
         break;
      }
      const Mpls::RouteKey routeKey = *it;
      processRouteKeyBacklog(routeKey);
      reviewRouteKeyBacklog_->taskWorkCountInc(1);
      // By key: the processed key is gone from the backlog, and others may have come meanwhile.
      it = backlog.upper_bound(routeKey);
   }
   if (!helperReconciled_ && backlog.empty()) {
      reconcileHelper();
   }
   maybeScheduleUnprogrammedReview();
}

void MplsDecapSm::reconcileHelper() {
   helperReconciled_ = true;
   using Kind = FalHelper::MplsDecapHelper::Mapping::Kind;
   for (const auto& m : mplsDecapHelper_->listMappings()) {
      const Mpls::RouteKey routeKey(m.label);
      const Mpls::LfibViaType type = routeViaType(routeKey);
      bool ours = false;
      switch (m.kind) {
         case Kind::vrf:
            ours = type == Mpls::viaTypeIpLookup_;
            break;
         case Kind::vlan:
            ours = type == (m.flood ? Mpls::viaTypeEvpnVlanFlood_ : Mpls::viaTypeVlan_);
            break;
         case Kind::dot1q: {
            auto programmed = vlanAwareRouteKeyToDot1qTagVlanProgrammed(routeKey);
            ours = type ==
                       (m.flood ? Mpls::viaTypeEvpnVlanAwareFlood_ : Mpls::viaTypeEvpnVlanAware_) &&
                   programmed && programmed->dot1qTagToVlanIdHas(m.dot1qTag);
            break;
         }
      }
      if (ours) {
         continue;
      }
      TRACE5(decapTrace,
             "helper mapping of label " << m.label << " is not programmed; deleting it");
      switch (m.kind) {
         case Kind::vrf:
            mplsDecapHelper_->deleteLabelToVrfMapping(m.label, m.vrfName, m.payloadType);
            break;
         case Kind::vlan:
            mplsDecapHelper_->deleteLabelToVlanMapping(m.label, m.vlanId, m.flood);
            break;
         case Kind::dot1q:
            mplsDecapHelper_->deleteLabelDot1qToVlanMapping(m.label, m.dot1qTag, m.flood);
            break;
      }
   }
}

void MplsDecapSm::processRouteKeyBacklog(const Mpls::RouteKey& routeKey) {
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(lfibTrackingStatus_->routeKeyBacklog(routeKey), "backlogIter.isMemberOf( routeKey )");
   processRouteKey(routeKey);
   // The key leaves the backlog whatever the helper said: a refusal is remembered in the
   // unprogrammed list instead.
   lfibTrackingStatus_->routeKeyBacklogDel(routeKey);
}

void MplsDecapSm::processRouteKey(const Mpls::RouteKey& routeKey) {
   TRACE8(decapTrace, "processRouteKey"
                          << " route " << routeKey << " label " << routeKey.topLabel());
   FAL_ASSERT(initialized(), "initialized()");
   deleteRoute(routeKey);

   const Mpls::LfibRoute* route = lfibStatus_->lfibRoutePtr(routeKey);
   if (!route) {
      MPLSFWD_TRACE_FAST(decapTrace, 5,
                         "route was deleted"
                             << " route " << routeKey);
      return;
   }
   const Mpls::LfibViaSet* viaSet = lfibStatus_->viaSetPtr(route->viaSetKey());
   if (!viaSet || (viaSet->vias() == 0 && *viaSet == Mpls::LfibViaSet(route->viaSetKey()))) {
      MPLSFWD_TRACE_FAST(decapTrace, 5,
                         "via set was deleted"
                             << " route " << routeKey << " viaSet " << route->viaSetKey());
      return;
   }
   // Only the first via is programmed; a set without vias has none.
   const Mpls::LfibViaKey viaKey =
       viaSet->vias() > 0 ? viaSet->via(Mpls::LfibViaIndexRange(0)) : Mpls::LfibViaKey();
   switch (viaKey.viaType()) {
      case Mpls::viaTypeIpLookup_:
         processIpLookupVia(routeKey, viaKey);
         break;
      case Mpls::viaTypeVlan_:
         processVlanVia(routeKey, viaKey);
         break;
      case Mpls::viaTypeEvpnVlanAware_:
         processEvpnVlanAwareVia(routeKey, viaKey);
         break;
      case Mpls::viaTypeEvpnVlanFlood_:
         processEvpnVlanFloodVia(routeKey, viaKey);
         break;
      case Mpls::viaTypeEvpnVlanAwareFlood_:
         processEvpnVlanAwareFloodVia(routeKey, viaKey);
         break;
      case Mpls::viaTypeEvpnEthernetSegment_:
         MPLSFWD_TRACE_FAST(decapTrace, 5, "Skipping viaType EvpnEthernetSegment");
         break;
      default:
         MPLSFWD_TRACE_FAST(decapTrace, 5, "Skipping unsupported via type " << viaKey.viaType());
         break;
   }
}

void MplsDecapSm::deleteRoute(const Mpls::RouteKey& routeKey) {
   TRACE8(decapTrace, "deleteRoute"
                          << " route " << routeKey);
   FAL_ASSERT(initialized(), "initialized()");
   auto it = routeViaType_.find(routeKey);
   if (it == routeViaType_.end()) {
      MPLSFWD_TRACE_FAST(decapTrace, 8,
                         "route was not programmed"
                             << " route " << routeKey);
      // A route that was only waiting for a retry stops waiting.
      deleteRouteFromUnprogrammed(routeKey);
      return;
   }
   switch (it->second) {
      case Mpls::viaTypeIpLookup_:
         deleteIpLookupVia(routeKey);
         break;
      case Mpls::viaTypeVlan_:
         deleteVlanVia(routeKey);
         break;
      case Mpls::viaTypeEvpnVlanAware_:
         deleteEvpnVlanAwareVia(routeKey);
         break;
      case Mpls::viaTypeEvpnVlanFlood_:
         deleteEvpnVlanFloodVia(routeKey);
         break;
      case Mpls::viaTypeEvpnVlanAwareFlood_:
         deleteEvpnVlanAwareFloodVia(routeKey);
         break;
      case Mpls::viaTypeEvpnEthernetSegment_:
         MPLSFWD_TRACE_FAST(decapTrace, 5, "Skipping viaType EvpnEthernetSegment");
         break;
      default:
         MPLSFWD_TRACE_FAST(decapTrace, 0, "Internal error: Invalid via type");
         FAL_ASSERT(false, "!\"Internal Error: Invalid via type\"");
   }
}

// ---------------------------------------------------------------------------------------------
// Single-mapping vias. Process: read the via; create unless it is what is already programmed
// (after the delete that precedes every create, only an absent via is). Create: call the helper
// and record success as programmed, a refusal with reason 1 to 3 as unprogrammed, anything
// above as neither. Delete: undo with the values that were programmed and drop the bookkeeping.

void MplsDecapSm::processIpLookupVia(const Mpls::RouteKey& routeKey,
                                     const Mpls::LfibViaKey& viaKey) {
   TRACE8(decapTrace, "processIpLookupVia"
                          << " route " << routeKey << " via " << viaKey);
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(viaKey.viaType() == Mpls::viaTypeIpLookup_,
              "viaKey.viaType() == Mpls::viaTypeIpLookup()");
   const Mpls::LfibIpLookupVia via = lfibStatus_->ipLookupVia(viaKey);
   if (via == routeIpLookupVia(routeKey)) {
      MPLSFWD_TRACE_FAST(decapTrace, 5,
                         "no via to program"
                             << " route " << routeKey);
      return;
   }
   createIpLookupVia(routeKey, via);
}

void MplsDecapSm::processVlanVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey) {
   TRACE8(decapTrace, "processVlanVia"
                          << " route " << routeKey << " via " << viaKey);
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(viaKey.viaType() == Mpls::viaTypeVlan_, "viaKey.viaType() == Mpls::viaTypeVlan()");
   const Mpls::LfibVlanVia via = lfibStatus_->vlanVia(viaKey);
   if (via == routeVlanVia(routeKey)) {
      MPLSFWD_TRACE_FAST(decapTrace, 5,
                         "no via to program"
                             << " route " << routeKey);
      return;
   }
   createVlanVia(routeKey, via);
}

void MplsDecapSm::processEvpnVlanFloodVia(const Mpls::RouteKey& routeKey,
                                          const Mpls::LfibViaKey& viaKey) {
   TRACE8(decapTrace, "processEvpnVlanFloodVia"
                          << " route " << routeKey << " via " << viaKey);
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(viaKey.viaType() == Mpls::viaTypeEvpnVlanFlood_,
              "viaKey.viaType() == Mpls::viaTypeEvpnVlanFlood()");
   const Mpls::LfibEvpnVlanFloodVia via = lfibStatus_->evpnVlanFloodVia(viaKey);
   if (via == routeEvpnVlanFloodVia(routeKey)) {
      MPLSFWD_TRACE_FAST(decapTrace, 5,
                         "no via to program"
                             << " route " << routeKey);
      return;
   }
   createEvpnVlanFloodVia(routeKey, via);
}

void MplsDecapSm::createIpLookupVia(const Mpls::RouteKey& routeKey,
                                    const Mpls::LfibIpLookupVia& via) {
   TRACE8(decapTrace, "createIpLookupVia"
                          << " route " << routeKey << " via " << via);
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(!routeViaTypeHas(routeKey), "!routeViaTypeHas( routeKey )");
   const Wire::MplsLabel label = routeKey.topLabel();
   const Mpls::LfibHwProgrammingReturnCode rc =
       mplsDecapHelper_->createLabelToVrfMapping(label, via.vrfName(), via.payloadType());
   TRACE5(decapTrace, "create " << label << "/" << via.vrfName() << "/" << via.payloadType()
                                << " rc: " << rcValue(rc));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      routeViaTypeIs(routeKey, Mpls::viaTypeIpLookup_);
      routeIpLookupViaIs(routeKey, via);
      deleteRouteFromUnprogrammed(routeKey);
   } else if (retriable(rc)) {
      addRouteToUnprogrammed(routeKey, rc);
   }
}

void MplsDecapSm::createVlanVia(const Mpls::RouteKey& routeKey, const Mpls::LfibVlanVia& via) {
   TRACE8(decapTrace, "createVlanVia"
                          << " route " << routeKey << " via " << via);
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(!routeViaTypeHas(routeKey), "!routeViaTypeHas( routeKey )");
   const Wire::MplsLabel label = routeKey.topLabel();
   const Mpls::LfibHwProgrammingReturnCode rc =
       mplsDecapHelper_->createLabelToVlanMapping(label, via.vlanId(), false);
   TRACE5(decapTrace, "create " << label << "/" << via.vlanId() << " rc: " << rcValue(rc));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      routeViaTypeIs(routeKey, Mpls::viaTypeVlan_);
      routeVlanViaIs(routeKey, via);
      deleteRouteFromUnprogrammed(routeKey);
   } else if (retriable(rc)) {
      addRouteToUnprogrammed(routeKey, rc);
   }
}

void MplsDecapSm::createEvpnVlanFloodVia(const Mpls::RouteKey& routeKey,
                                         const Mpls::LfibEvpnVlanFloodVia& via) {
   TRACE8(decapTrace, "createEvpnVlanFloodVia"
                          << " route " << routeKey << " via " << via);
   FAL_ASSERT(initialized(), "initialized()");
   FAL_ASSERT(!routeViaTypeHas(routeKey), "!routeViaTypeHas( routeKey )");
   const Wire::MplsLabel label = routeKey.topLabel();
   const Mpls::LfibHwProgrammingReturnCode rc =
       mplsDecapHelper_->createLabelToVlanMapping(label, via.vlanId(), true);
   TRACE5(decapTrace, "create " << label << "/" << via.vlanId() << " rc: " << rcValue(rc));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      routeViaTypeIs(routeKey, Mpls::viaTypeEvpnVlanFlood_);
      routeEvpnVlanFloodViaIs(routeKey, via);
      deleteRouteFromUnprogrammed(routeKey);
   } else if (retriable(rc)) {
      addRouteToUnprogrammed(routeKey, rc);
   }
}

void MplsDecapSm::deleteIpLookupVia(const Mpls::RouteKey& routeKey) {
   TRACE8(decapTrace, "deleteIpLookupVia"
                          << " route " << routeKey);
   FAL_ASSERT(initialized(), "initialized()");
   const Mpls::LfibIpLookupVia via = routeIpLookupVia(routeKey);
   FAL_ASSERT(!(via == Mpls::LfibIpLookupVia()), "!!via");
   const Wire::MplsLabel label = routeKey.topLabel();
   TRACE5(decapTrace, "deleting " << label << "/" << via.vrfName() << "/" << via.payloadType());
   mplsDecapHelper_->deleteLabelToVrfMapping(label, via.vrfName(), via.payloadType());
   routeViaTypeDel(routeKey);
   routeIpLookupViaDel(routeKey);
}

void MplsDecapSm::deleteVlanVia(const Mpls::RouteKey& routeKey) {
   TRACE8(decapTrace, "deleteVlanVia"
                          << " route " << routeKey);
   FAL_ASSERT(initialized(), "initialized()");
   const Mpls::LfibVlanVia via = routeVlanVia(routeKey);
   FAL_ASSERT(!(via == Mpls::LfibVlanVia()), "!!via");
   const Wire::MplsLabel label = routeKey.topLabel();
   TRACE5(decapTrace, "deleting " << label << "/" << via.vlanId());
   mplsDecapHelper_->deleteLabelToVlanMapping(label, via.vlanId(), false);
   routeViaTypeDel(routeKey);
   routeVlanViaDel(routeKey);
}

void MplsDecapSm::deleteEvpnVlanFloodVia(const Mpls::RouteKey& routeKey) {
   TRACE8(decapTrace, "deleteEvpnVlanFloodVia"
                          << " route " << routeKey);
   FAL_ASSERT(initialized(), "initialized()");
   const Mpls::LfibEvpnVlanFloodVia via = routeEvpnVlanFloodVia(routeKey);
   FAL_ASSERT(!(via == Mpls::LfibEvpnVlanFloodVia()), "!!via");
   const Wire::MplsLabel label = routeKey.topLabel();
   TRACE5(decapTrace, "deleting " << label << "/" << via.vlanId());
   mplsDecapHelper_->deleteLabelToVlanMapping(label, via.vlanId(), true);
   routeViaTypeDel(routeKey);
   routeEvpnVlanFloodViaDel(routeKey);
}

}  // namespace Fal
