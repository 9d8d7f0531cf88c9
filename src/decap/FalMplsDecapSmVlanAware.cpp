// Fal::MplsDecapSm: VLAN-aware EVPN routes, whose label is mapped once per dot1q tag of an LFIB
// collection that many routes may share and that changes tag by tag on its own.
#include <tuple>
#include <vector>

#include <mplsfwd/log/Assert.h>

#include "DecapKinds.h"
#include "FalMplsDecapSm.h"
#include "MplsDecapSmTrace.h"

namespace Fal {

namespace {

unsigned rcValue(Mpls::LfibHwProgrammingReturnCode rc) {
   return static_cast<unsigned>(rc);
}

}  // namespace

bool MplsDecapSm::vlanAwareFlood(const Mpls::RouteKey& routeKey) const {
   return routeViaType(routeKey) == Mpls::viaTypeEvpnVlanAwareFlood_;
}

// The route is recorded before any helper call, whatever the helper answers, so that the next
// processing of the key first deletes the tags that did get programmed.
template <class Via>
void MplsDecapSm::createVlanAware(const Mpls::RouteKey& routeKey, const Via& via) {
   using Kind = VlanAwareKind<Via>;
   SM_TRACE(8, Kind::createName << " route " << routeKey << " via " << via);
   FAL_ASSERT(initialized());
   routeViaTypeIs(routeKey, Kind::viaType);
   if (const auto* programmed = (this->*Kind::programmed).find(routeKey)) {
      FAL_ASSERT(*programmed == via, Kind::sameViaText);
   } else {
      (this->*Kind::programmed).is(routeKey, via);
   }
   createVlanAwareMappings(routeKey, via.dot1qTagToVlanKey(), Kind::flood, Kind::createName);
}

template <class Via>
void MplsDecapSm::deleteVlanAware(const Mpls::RouteKey& routeKey) {
   using Kind = VlanAwareKind<Via>;
   SM_TRACE(8, Kind::deleteName << " route " << routeKey);
   FAL_ASSERT(initialized());
   FAL_ASSERT(!((this->*Kind::programmed)(routeKey) == Via()), "!!via");
   deleteVlanAwareMappings(routeKey, Kind::flood);
   routeViaTypeDel(routeKey);
   (this->*Kind::programmed).del(routeKey);
}

void MplsDecapSm::createEvpnVlanAwareVia(const Mpls::RouteKey& routeKey,
                                         const Mpls::LfibEvpnVlanAwareVia& via) {
   createVlanAware(routeKey, via);
}
void MplsDecapSm::createEvpnVlanAwareFloodVia(const Mpls::RouteKey& routeKey,
                                              const Mpls::LfibEvpnVlanAwareFloodVia& via) {
   createVlanAware(routeKey, via);
}
void MplsDecapSm::deleteEvpnVlanAwareVia(const Mpls::RouteKey& routeKey) {
   deleteVlanAware<Mpls::LfibEvpnVlanAwareVia>(routeKey);
}
void MplsDecapSm::deleteEvpnVlanAwareFloodVia(const Mpls::RouteKey& routeKey) {
   deleteVlanAware<Mpls::LfibEvpnVlanAwareFloodVia>(routeKey);
}

// Programs what is missing or changed for the route, tag by tag in the collection's order; the
// first refusal stops the walk, leaving the tags before it programmed.
void MplsDecapSm::createVlanAwareMappings(const Mpls::RouteKey& routeKey,
                                          const Mpls::LfibDot1qTagToVlanKey& collKey, bool flood,
                                          const char* function) {
   vlanAwareDot1qTagVlanToRouteKeySetIs(collKey)->routeKeySetIs(routeKey);
   vlanAwareRouteKeyToDot1qTagVlanKeyIs(routeKey, collKey);

   Kor::Ptr<const Mpls::LfibDot1qTagToVlan> coll = lfibStatus_->dot1qTagToVlanColl(collKey);
   if (!coll) {
      // Programmed when the collection arrives.
      SM_DECISION(5, function << " route " << routeKey << " dot1qTagToVlanKey " << collKey
                              << " : collection not present");
      return;
   }
   Kor::Ptr<VlanAwareProgrammedRouteSet> programmed =
       vlanAwareRouteKeyToDot1qTagVlanProgrammedIs(routeKey);
   const Wire::MplsLabel label = routeKey.topLabel();
   Mpls::LfibHwProgrammingReturnCode rc = Mpls::lfibHwProgrammingSuccess_;
   for (const auto& [dot1qTag, vlanId] : coll->dot1qTagToVlanIdMap()) {
      if (auto it = programmed->dot1qTagToVlanIdMap().find(dot1qTag);
          it != programmed->dot1qTagToVlanIdMap().end()) {
         const Bridging::VlanIdOrNone old = it->second;
         if (old == vlanId) {
            SM_DECISION(8, function << " route " << routeKey << " dot1qTag " << dot1qTag
                                    << " vlanId " << vlanId << " : Already Programmed ");
            continue;
         }
         SM_DECISION(5, function << " route " << routeKey << " dot1qTag " << dot1qTag
                                 << " changing vlanId from " << old << " to " << vlanId);
         mplsDecapHelper_->deleteLabelDot1qToVlanMapping(label, dot1qTag, flood);
         programmed->dot1qTagToVlanIdDel(dot1qTag);
      }
      rc = mplsDecapHelper_->createLabelDot1qToVlanMapping(label, dot1qTag, vlanId, flood);
      SM_TRACE(5, "create " << label << "/" << dot1qTag << "/" << vlanId << " rc: " << rcValue(rc));
      if (rc != Mpls::lfibHwProgrammingSuccess_) {
         break;
      }
      programmed->dot1qTagToVlanIdIs(dot1qTag, vlanId);
   }
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      deleteRouteFromUnprogrammed(routeKey);
   } else if (rc <= Mpls::lfibHwProgrammingNotReady_) {
      addRouteToUnprogrammed(routeKey, rc);
   }
}

// Undoes every tag programmed for the route and forgets the route's VLAN-aware bookkeeping; the
// collection's route-key set stays, even when empty.
void MplsDecapSm::deleteVlanAwareMappings(const Mpls::RouteKey& routeKey, bool flood) {
   const Wire::MplsLabel label = routeKey.topLabel();
   if (Kor::Ptr<VlanAwareProgrammedRouteSet> programmed =
           vlanAwareRouteKeyToDot1qTagVlanProgrammed(routeKey)) {
      for (const auto& [dot1qTag, vlanId] : programmed->dot1qTagToVlanIdMap()) {
         SM_TRACE(5, "deleting " << label << "/" << dot1qTag);
         mplsDecapHelper_->deleteLabelDot1qToVlanMapping(label, dot1qTag, flood);
      }
   }
   if (const auto* collKey = vlanAwareRouteKeyToDot1qTagVlanKey_.find(routeKey)) {
      if (auto set = vlanAwareDot1qTagVlanToRouteKeySet(*collKey)) {
         set->routeKeySetDel(routeKey);
      }
   }
   vlanAwareRouteKeyToDot1qTagVlanKeyDel(routeKey);
   vlanAwareRouteKeyToDot1qTagVlanProgrammedDel(routeKey);
}

// ---------------------------------------------------------------------------------------------
// Collection side.

void MplsDecapSm::handleLfibDot1qTagToVlanColl(const Mpls::LfibDot1qTagToVlanKey& key) {
   SM_TRACE(8, "handleLfibDot1qTagToVlanColl"
                   << " dot1qTagToVlanKey " << key);
   FAL_ASSERT(initialized());
   if (lfibStatus_->dot1qTagToVlanColl(key)) {
      dot1qTagToVlanCollIs(key);
   } else {
      dot1qTagToVlanCollDel(key);
   }
}

void MplsDecapSm::handleDot1qTagToVlanColl(const Mpls::LfibDot1qTagToVlanKey& key) {
   SM_DECISION(5, "handleDot1qTagToVlanColl"
                      << " dot1qTagToVlanKey " << key << " handling the entire collection");
   FAL_ASSERT(initialized());
   // The delete pass forgets the routes along with their tags, so the create pass works from
   // what the routes were before it.
   std::vector<std::tuple<Mpls::RouteKey, Mpls::LfibViaType, Mpls::LfibEvpnVlanAwareVia,
                          Mpls::LfibEvpnVlanAwareFloodVia>>
       routes;
   if (auto set = vlanAwareDot1qTagVlanToRouteKeySet(key)) {
      routes.reserve(set->routeKeys());
      for (const auto& routeKey : set->routeKeySetSet()) {
         routes.emplace_back(routeKey, routeViaType(routeKey), routeEvpnVlanAwareVia(routeKey),
                             routeEvpnVlanAwareFloodVia(routeKey));
      }
   }
   processDot1qTagToVlan(key, false);
   for (const auto& [routeKey, viaType, awareVia, awareFloodVia] : routes) {
      if (viaType == Mpls::viaTypeEvpnVlanAware_) {
         createEvpnVlanAwareVia(routeKey, awareVia);
      } else if (viaType == Mpls::viaTypeEvpnVlanAwareFlood_) {
         createEvpnVlanAwareFloodVia(routeKey, awareFloodVia);
      }
   }
   // Refusals met here have no backlog run behind them to schedule their retry.
   maybeScheduleUnprogrammedReview();
}

void MplsDecapSm::handleDot1qTagToVlan(const Mpls::LfibDot1qTagToVlanKey& key,
                                       Bridging::VlanId dot1qTag) {
   SM_DECISION(5, "handleDot1qTagToVlan"
                      << " dot1qTagToVlanKey " << key << " dot1qTag " << dot1qTag);
   FAL_ASSERT(initialized());
   Kor::Ptr<const Mpls::LfibDot1qTagToVlan> map = lfibStatus_->dot1qTagToVlanColl(key);
   FAL_ASSERT(map);
   if (map->dot1qTagToVlanIdHas(dot1qTag)) {
      processDot1qTagToVlan(key, true);
   } else if (auto set = vlanAwareDot1qTagVlanToRouteKeySet(key)) {
      // The tag went: only its own mappings go with it.
      for (const auto& routeKey : set->routeKeySetSet()) {
         auto programmed = vlanAwareRouteKeyToDot1qTagVlanProgrammed(routeKey);
         if (!programmed || !programmed->dot1qTagToVlanIdHas(dot1qTag)) {
            continue;
         }
         const Wire::MplsLabel label = routeKey.topLabel();
         SM_TRACE(5, "deleting " << label << "/" << dot1qTag);
         mplsDecapHelper_->deleteLabelDot1qToVlanMapping(label, dot1qTag, vlanAwareFlood(routeKey));
         programmed->dot1qTagToVlanIdDel(dot1qTag);
      }
   }
   maybeScheduleUnprogrammedReview();
}

void MplsDecapSm::processDot1qTagToVlan(const Mpls::LfibDot1qTagToVlanKey& key, bool create) {
   SM_TRACE(8, "processDot1qTagToVlan"
                   << " dot1qTagToVlanKey " << key << " create " << create);
   FAL_ASSERT(initialized());
   auto set = vlanAwareDot1qTagVlanToRouteKeySet(key);
   if (!set) {
      return;
   }
   // A copy: deleting a route takes it out of the set.
   const std::vector<Mpls::RouteKey> routeKeys(set->routeKeySetSet().begin(),
                                               set->routeKeySetSet().end());
   for (const auto& routeKey : routeKeys) {
      switch (routeViaType(routeKey)) {
         case Mpls::viaTypeEvpnVlanAware_:
            if (create) {
               createEvpnVlanAwareVia(routeKey, routeEvpnVlanAwareVia(routeKey));
            } else {
               deleteEvpnVlanAwareVia(routeKey);
            }
            break;
         case Mpls::viaTypeEvpnVlanAwareFlood_:
            if (create) {
               createEvpnVlanAwareFloodVia(routeKey, routeEvpnVlanAwareFloodVia(routeKey));
            } else {
               deleteEvpnVlanAwareFloodVia(routeKey);
            }
            break;
         default:
            SM_TRACE(0, "route " << routeKey << " of dot1qTagToVlanKey " << key << " has via type "
                                 << routeViaType(routeKey));
            break;
      }
   }
}

}  // namespace Fal
