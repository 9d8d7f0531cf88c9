// Fal::MplsDecapSm: construction, the route-key backlog, and the single-mapping vias (IP lookup,
// VLAN, EVPN VLAN flood).
#include "FalMplsDecapSm.h"

#include <sstream>
#include <string>

#include <mplsfwd/kor/SmReactor.h>
#include <mplsfwd/log/Assert.h>

#include "DecapKinds.h"
#include "MplsDecapSmTrace.h"

namespace Fal {

Log::Trace mplsDecapSmTrace("MplsDecapSm");

namespace {

unsigned rcValue(Mpls::LfibHwProgrammingReturnCode rc) {
   return static_cast<unsigned>(rc);
}

bool retriable(Mpls::LfibHwProgrammingReturnCode rc) {
   return rc >= Mpls::lfibHwProgrammingResourceFull_ && rc <= Mpls::lfibHwProgrammingNotReady_;
}

}  // namespace

namespace {
template <class Notifiee>
using SmReactor = Kor::SmReactor<Notifiee, MplsDecapSm>;
}  // namespace

// Only the dot1q-tag-to-VLAN collections of the LFIB matter here: route changes arrive through
// the backlog.
class MplsDecapSm::LfibStatusReactor : public SmReactor<Mpls::LfibStatus::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onDot1qTagToVlanColl(const Mpls::LfibDot1qTagToVlanKey& key) override {
      sm_.handleLfibDot1qTagToVlanColl(key);
   }
};

class MplsDecapSm::LfibTrackingStatusReactor
    : public SmReactor<Mpls::LfibTrackingStatus::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onRouteKeyBacklog(const Mpls::RouteKey& routeKey) override {
      // A key leaving the backlog is work done (mostly by this machine), not work to do.
      if (!notifier()->routeKeyBacklog(routeKey)) {
         return;
      }
      sm_.handleRouteKeyBacklog();
   }
};

class MplsDecapSm::Dot1qTagToVlanCollReactor
    : public SmReactor<Mpls::LfibDot1qTagToVlan::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onDot1qTagToVlanId(Bridging::VlanId dot1qTag) override {
      sm_.handleDot1qTagToVlan(notifier()->key(), dot1qTag);
   }
   void onDot1qTagToVlanColl() override { sm_.handleDot1qTagToVlanColl(notifier()->key()); }
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
   Kor::attachReactor(lfibStatusReactor_, lfibStatus_, *this);
   Kor::attachReactor(lfibTrackingStatusReactor_, lfibTrackingStatus_, *this);
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
   Kor::silence(lfibStatusReactor_, lfibTrackingStatusReactor_);
   for (auto& [key, reactor] : dot1qTagToVlanColl_) {
      Kor::silence(reactor);
   }
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
   SM_TRACE(8, "handleInitialized");
   FAL_ASSERT(scheduler());
   FAL_ASSERT(lfibStatus());
   FAL_ASSERT(lfibTrackingStatus());
   FAL_ASSERT(lfibHwStatus());
   FAL_ASSERT(mplsDecapHelper());
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
   Kor::attachReactor(reactor, coll, *this);
   handleDot1qTagToVlanColl(key);
}

void MplsDecapSm::dot1qTagToVlanCollDel(const Mpls::LfibDot1qTagToVlanKey& key) {
   dot1qTagToVlanColl_.erase(key);
}

// ---------------------------------------------------------------------------------------------
// Backlog.

void MplsDecapSm::handleRouteKeyBacklog() {
   FAL_ASSERT(initialized());
   reviewRouteKeyBacklog_->schedule();
}

void MplsDecapSm::doReviewRouteKeyBacklog() {
   FAL_ASSERT(initialized());
   FAL_ASSERT(reviewRouteKeyBacklog_, "task");
   SM_TRACE(8,
            "doReviewRouteKeyBacklog backlog " << lfibTrackingStatus_->routeKeyBacklogSet().size());
   const auto& backlog = lfibTrackingStatus_->routeKeyBacklogSet();
   auto it = backlog.begin();
   while (it != backlog.end()) {
      if (reviewRouteKeyBacklog_->taskShouldYield()) {
         SM_TRACE(8, "yielding with " << backlog.size() << " keys left");
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
      SM_TRACE(5, "helper mapping of label " << m.label << " is not programmed; deleting it");
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
   FAL_ASSERT(initialized());
   FAL_ASSERT(lfibTrackingStatus_->routeKeyBacklog(routeKey), "backlogIter.isMemberOf( routeKey )");
   processRouteKey(routeKey);
   // The key leaves the backlog whatever the helper said: a refusal is remembered in the
   // unprogrammed list instead.
   lfibTrackingStatus_->routeKeyBacklogDel(routeKey);
}

void MplsDecapSm::processRouteKey(const Mpls::RouteKey& routeKey) {
   SM_TRACE(8, "processRouteKey"
                   << " route " << routeKey << " label " << routeKey.topLabel());
   FAL_ASSERT(initialized());
   deleteRoute(routeKey);

   const Mpls::LfibRoute* route = lfibStatus_->lfibRoutePtr(routeKey);
   if (!route) {
      SM_DECISION(5, "route was deleted"
                         << " route " << routeKey);
      return;
   }
   const Mpls::LfibViaSet* viaSet = lfibStatus_->viaSetPtr(route->viaSetKey());
   if (!viaSet || (viaSet->vias() == 0 && *viaSet == Mpls::LfibViaSet(route->viaSetKey()))) {
      SM_DECISION(5, "via set was deleted"
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
         SM_DECISION(5, "Skipping viaType EvpnEthernetSegment");
         break;
      default:
         SM_DECISION(5, "Skipping unsupported via type " << viaKey.viaType());
         break;
   }
}

void MplsDecapSm::deleteRoute(const Mpls::RouteKey& routeKey) {
   SM_TRACE(8, "deleteRoute"
                   << " route " << routeKey);
   FAL_ASSERT(initialized());
   const Mpls::LfibViaType* viaType = routeViaType_.find(routeKey);
   if (!viaType) {
      SM_DECISION(8, "route was not programmed"
                         << " route " << routeKey);
      // A route that was only waiting for a retry stops waiting.
      deleteRouteFromUnprogrammed(routeKey);
      return;
   }
   switch (*viaType) {
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
         SM_DECISION(5, "Skipping viaType EvpnEthernetSegment");
         break;
      default:
         SM_DECISION(0, "Internal error: Invalid via type");
         FAL_ASSERT(false, "!\"Internal Error: Invalid via type\"");
   }
}

// ---------------------------------------------------------------------------------------------
// Single-mapping vias. Process: read the via; create unless it is what is already programmed
// (after the delete that precedes every create, only an absent via is). Create: call the helper
// and record success as programmed, a refusal with reason 1 to 3 as unprogrammed, anything
// above as neither. Delete: undo with the values that were programmed and drop the bookkeeping.

namespace {

// The VLAN kinds differ only in the flood flag that they hand the helper.
template <class Kind, class Via>
Mpls::LfibHwProgrammingReturnCode createMapping(FalHelper::MplsDecapHelper& helper,
                                                Wire::MplsLabel label, const Via& via) {
   if constexpr (requires { Kind::create(helper, label, via); }) {
      return Kind::create(helper, label, via);
   } else {
      return helper.createLabelToVlanMapping(label, via.vlanId(), Kind::flood);
   }
}

template <class Kind, class Via>
void removeMapping(FalHelper::MplsDecapHelper& helper, Wire::MplsLabel label, const Via& via) {
   if constexpr (requires { Kind::remove(helper, label, via); }) {
      Kind::remove(helper, label, via);
   } else {
      helper.deleteLabelToVlanMapping(label, via.vlanId(), Kind::flood);
   }
}

template <class Kind, class Via>
auto mappingText(const Via& via) {
   if constexpr (requires { Kind::text(via); }) {
      return Kind::text(via);
   } else {
      return via.vlanId();
   }
}

}  // namespace

// Every kind: read the via; create it unless it is what is already programmed (after the delete
// that precedes every create, only an absent via is).
template <class Kind>
void MplsDecapSm::processVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey) {
   using Via = typename Kind::Via;
   SM_TRACE(8, Kind::processName << " route " << routeKey << " via " << viaKey);
   FAL_ASSERT(initialized());
   FAL_ASSERT(viaKey.viaType() == Kind::viaType, Kind::viaTypeText);
   const Via via = Kind::read(*lfibStatus_, viaKey);
   if (via == (this->*Kind::programmed)(routeKey)) {
      SM_DECISION(5, "no via to program"
                         << " route " << routeKey);
      return;
   }
   (this->*Kind::createVia)(routeKey, via);
}

template <class Via>
void MplsDecapSm::createSingleMapping(const Mpls::RouteKey& routeKey, const Via& via) {
   using Kind = SingleMapping<Via>;
   SM_TRACE(8, Kind::createName << " route " << routeKey << " via " << via);
   FAL_ASSERT(initialized());
   FAL_ASSERT(!routeViaTypeHas(routeKey), "!routeViaTypeHas( routeKey )");
   const Wire::MplsLabel label = routeKey.topLabel();
   const Mpls::LfibHwProgrammingReturnCode rc = createMapping<Kind>(*mplsDecapHelper_, label, via);
   SM_TRACE(5, "create " << label << "/" << mappingText<Kind>(via) << " rc: " << rcValue(rc));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      routeViaTypeIs(routeKey, Kind::viaType);
      (this->*Kind::programmed).is(routeKey, via);
      deleteRouteFromUnprogrammed(routeKey);
   } else if (retriable(rc)) {
      addRouteToUnprogrammed(routeKey, rc);
   }
}

template <class Via>
void MplsDecapSm::deleteSingleMapping(const Mpls::RouteKey& routeKey) {
   using Kind = SingleMapping<Via>;
   SM_TRACE(8, Kind::deleteName << " route " << routeKey);
   FAL_ASSERT(initialized());
   const Via via = (this->*Kind::programmed)(routeKey);
   FAL_ASSERT(!(via == Via()), "!!via");
   const Wire::MplsLabel label = routeKey.topLabel();
   SM_TRACE(5, "deleting " << label << "/" << mappingText<Kind>(via));
   removeMapping<Kind>(*mplsDecapHelper_, label, via);
   routeViaTypeDel(routeKey);
   (this->*Kind::programmed).del(routeKey);
}

void MplsDecapSm::processIpLookupVia(const Mpls::RouteKey& routeKey,
                                     const Mpls::LfibViaKey& viaKey) {
   processVia<SingleMapping<Mpls::LfibIpLookupVia>>(routeKey, viaKey);
}
void MplsDecapSm::processVlanVia(const Mpls::RouteKey& routeKey, const Mpls::LfibViaKey& viaKey) {
   processVia<SingleMapping<Mpls::LfibVlanVia>>(routeKey, viaKey);
}
void MplsDecapSm::processEvpnVlanFloodVia(const Mpls::RouteKey& routeKey,
                                          const Mpls::LfibViaKey& viaKey) {
   processVia<SingleMapping<Mpls::LfibEvpnVlanFloodVia>>(routeKey, viaKey);
}
void MplsDecapSm::processEvpnVlanAwareVia(const Mpls::RouteKey& routeKey,
                                          const Mpls::LfibViaKey& viaKey) {
   processVia<VlanAwareKind<Mpls::LfibEvpnVlanAwareVia>>(routeKey, viaKey);
}
void MplsDecapSm::processEvpnVlanAwareFloodVia(const Mpls::RouteKey& routeKey,
                                               const Mpls::LfibViaKey& viaKey) {
   processVia<VlanAwareKind<Mpls::LfibEvpnVlanAwareFloodVia>>(routeKey, viaKey);
}
void MplsDecapSm::createIpLookupVia(const Mpls::RouteKey& routeKey,
                                    const Mpls::LfibIpLookupVia& via) {
   createSingleMapping(routeKey, via);
}
void MplsDecapSm::createVlanVia(const Mpls::RouteKey& routeKey, const Mpls::LfibVlanVia& via) {
   createSingleMapping(routeKey, via);
}
void MplsDecapSm::createEvpnVlanFloodVia(const Mpls::RouteKey& routeKey,
                                         const Mpls::LfibEvpnVlanFloodVia& via) {
   createSingleMapping(routeKey, via);
}
void MplsDecapSm::deleteIpLookupVia(const Mpls::RouteKey& routeKey) {
   deleteSingleMapping<Mpls::LfibIpLookupVia>(routeKey);
}
void MplsDecapSm::deleteVlanVia(const Mpls::RouteKey& routeKey) {
   deleteSingleMapping<Mpls::LfibVlanVia>(routeKey);
}
void MplsDecapSm::deleteEvpnVlanFloodVia(const Mpls::RouteKey& routeKey) {
   deleteSingleMapping<Mpls::LfibEvpnVlanFloodVia>(routeKey);
}

}  // namespace Fal
