// Where one decap route stands: read from the machine's bookkeeping, the LFIB and the LFIB
// hardware status on demand; nothing is changed, traced or kept.
#include <array>
#include <limits>
#include <sstream>

#include "FalMplsDecapSm.h"

namespace Fal {

namespace {

constexpr std::array<std::string_view, 11> kCauseNames = {"programmed",
                                                          "notInLfib",
                                                          "viaSetMissing",
                                                          "viaMissing",
                                                          "notDecap",
                                                          "skipped",
                                                          "pendingBacklog",
                                                          "helperRefused",
                                                          "helperRefusedNotRetried",
                                                          "dot1qCollectionMissing",
                                                          "dot1qTagsMissing"};

bool vlanAware(Mpls::LfibViaType t) {
   return t == Mpls::viaTypeEvpnVlanAware_ || t == Mpls::viaTypeEvpnVlanAwareFlood_;
}

}  // namespace

std::string_view decapCauseName(DecapCause cause) {
   auto i = static_cast<std::size_t>(cause);
   return i < kCauseNames.size() ? kCauseNames[i] : std::string_view("unknown");
}

std::optional<DecapCause> parseDecapCause(std::string_view name) {
   for (std::size_t i = 0; i < kCauseNames.size(); ++i) {
      if (kCauseNames[i] == name) {
         return static_cast<DecapCause>(i);
      }
   }
   return std::nullopt;
}

DecapExplanation MplsDecapSm::explainRoute(const Mpls::RouteKey& routeKey) const {
   DecapExplanation e;
   e.routeKey = routeKey;
   e.programmed = routeViaTypeHas(routeKey);
   e.programmedViaType = routeViaType(routeKey);
   e.inBacklog = lfibTrackingStatus_ && lfibTrackingStatus_->routeKeyBacklog(routeKey);
   e.listedUnprogrammed = lfibHwStatus_ && lfibHwStatus_->unprogrammedRouteHas(routeKey);
   e.nextRetry = std::numeric_limits<double>::infinity();
   if (e.listedUnprogrammed) {
      e.returnCode =
          static_cast<std::uint32_t>(lfibHwStatus_->unprogrammedRoute(routeKey).reason());
      if (reviewUnprogrammed_ && reviewUnprogrammed_->armed()) {
         e.nextRetry = reviewUnprogrammed_->time();
      }
   }
   const Mpls::LfibRoute* route = lfibStatus_->lfibRoutePtr(routeKey);
   e.inLfib = route != nullptr;
   const Mpls::LfibViaSet* viaSet = route ? lfibStatus_->viaSetPtr(route->viaSetKey()) : nullptr;
   e.viaSetPresent = viaSet != nullptr;
   std::ostringstream mapping;
   Mpls::LfibDot1qTagToVlanKey collKey;
   if (viaSet && viaSet->vias() > 0) {
      const Mpls::LfibViaKey& viaKey = viaSet->via(Mpls::LfibViaIndexRange(0));
      e.viaType = viaKey.viaType();
      switch (e.viaType) {
         case Mpls::viaTypeIpLookup_: {
            auto via = lfibStatus_->ipLookupVia(viaKey);
            e.viaPresent = !(via == Mpls::LfibIpLookupVia());
            mapping << "vrf " << via.vrfName() << " payload " << via.payloadType();
            break;
         }
         case Mpls::viaTypeVlan_: {
            auto via = lfibStatus_->vlanVia(viaKey);
            e.viaPresent = !(via == Mpls::LfibVlanVia());
            mapping << "vlan " << via.vlanId() << " flood false";
            break;
         }
         case Mpls::viaTypeEvpnVlanFlood_: {
            auto via = lfibStatus_->evpnVlanFloodVia(viaKey);
            e.viaPresent = !(via == Mpls::LfibEvpnVlanFloodVia());
            mapping << "vlan " << via.vlanId() << " flood true";
            break;
         }
         case Mpls::viaTypeEvpnVlanAware_: {
            auto via = lfibStatus_->evpnVlanAwareVia(viaKey);
            e.viaPresent = !(via == Mpls::LfibEvpnVlanAwareVia());
            collKey = via.dot1qTagToVlanKey();
            mapping << "dot1q collection " << collKey.index() << " flood false";
            break;
         }
         case Mpls::viaTypeEvpnVlanAwareFlood_: {
            auto via = lfibStatus_->evpnVlanAwareFloodVia(viaKey);
            e.viaPresent = !(via == Mpls::LfibEvpnVlanAwareFloodVia());
            collKey = via.dot1qTagToVlanKey();
            mapping << "dot1q collection " << collKey.index() << " flood true";
            break;
         }
         default:
            e.viaPresent = true;
            break;
      }
   }
   e.mapping = mapping.str();
   if (vlanAware(e.viaType) && e.viaPresent) {
      auto coll = lfibStatus_->dot1qTagToVlanColl(collKey);
      e.dot1qCollectionPresent = coll != nullptr;
      auto programmed = vlanAwareRouteKeyToDot1qTagVlanProgrammed(routeKey);
      if (coll) {
         for (const auto& [tag, vlan] : coll->dot1qTagToVlanIdMap()) {
            Dot1qTagExplanation t;
            t.tag = tag.value();
            t.vlanWanted = Bridging::VlanIdOrNone(vlan).stringValue();
            if (programmed && programmed->dot1qTagToVlanIdHas(tag)) {
               t.vlanProgrammed = programmed->dot1qTagToVlanId(tag).stringValue();
            }
            e.tags.push_back(t);
         }
      }
   }

   auto cause = [&]() {
      if (e.inBacklog) {
         return DecapCause::pendingBacklog;
      }
      if (!route) {
         return DecapCause::notInLfib;
      }
      if (!viaSet || viaSet->vias() == 0) {
         return DecapCause::viaSetMissing;
      }
      if (e.viaType == Mpls::viaTypeEvpnEthernetSegment_) {
         return DecapCause::skipped;
      }
      if (e.mapping.empty()) {
         return DecapCause::notDecap;
      }
      if (!e.viaPresent) {
         return DecapCause::viaMissing;
      }
      if (e.listedUnprogrammed) {
         return DecapCause::helperRefused;
      }
      if (vlanAware(e.viaType)) {
         if (!e.dot1qCollectionPresent) {
            return DecapCause::dot1qCollectionMissing;
         }
         for (const auto& t : e.tags) {
            if (t.vlanProgrammed != t.vlanWanted) {
               return e.programmed ? DecapCause::dot1qTagsMissing
                                   : DecapCause::helperRefusedNotRetried;
            }
         }
      }
      return e.programmed ? DecapCause::programmed : DecapCause::helperRefusedNotRetried;
   };
   e.cause = cause();
   return e;
}

}  // namespace Fal
