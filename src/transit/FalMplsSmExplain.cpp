// Where one transit route stands: the answer to "why is this label not in hardware", read from the
// machine's state on demand. It changes nothing, traces nothing and keeps nothing: the route's way
// is walked again, in the order the machine takes it, up to the first thing that holds it back.
#include <array>

#include "FalMplsSm.h"

namespace Fal {

namespace {

const L3::VrfName& defaultVrf() {
   static const L3::VrfName name = L3::VrfName::defaultVrf();
   return name;
}

template <class E, std::size_t N>
std::string_view nameOf(const std::array<std::string_view, N>& names, E value) {
   auto i = static_cast<std::size_t>(value);
   return i < N ? names[i] : std::string_view("unknown");
}

constexpr std::array<std::string_view, 16> kCauseNames = {
    "programmed",
    "notInLfib",
    "notTransit",
    "vrfNameMissing",
    "mplsRoutingDisabled",
    "platformRoutingDisabled",
    "viaSetMissing",
    "viaSetRejected",
    "pendingReview",
    "nextHopUnresolved",
    "defaultRouteNotAllowed",
    "l2AdjacencyRefused",
    "hwFecIdPending",
    "routeHelperRefused",
    "routeRefused",
    "awaitingPlatform",
};

constexpr std::array<std::string_view, 20> kRuleNames = {
    "none",
    "viaNotMplsIp",
    "viaNotFound",
    "moreThanOneLabel",
    "mixOfDynamicTunnelAndNhg",
    "mixOfTunnelAndNonTunnel",
    "moreThanOneNhg",
    "tunnelLabelActionsDiffer",
    "tunnelPayloadTypesDiffer",
    "viaSetDeleted",
    "noVias",
    "backupMissing",
    "backupHasBackup",
    "backupWithoutFec",
    "needsFecForwarding",
    "extFecNotSupported",
    "extFecViaCount",
    "extFecViaNotExtFec",
    "extFecViaNotFound",
    "extFecIdInvalid",
};

constexpr std::array<std::string_view, 4> kResolutionNames = {
    "byNeighbour", "byRouteResolver", "unresolved", "defaultRouteNotAllowed"};

}  // namespace

std::string_view transitCauseName(TransitCause cause) {
   return nameOf(kCauseNames, cause);
}

std::optional<TransitCause> parseTransitCause(std::string_view name) {
   for (std::size_t i = 0; i <= static_cast<std::size_t>(TransitCause::awaitingPlatform); ++i) {
      if (kCauseNames[i] == name) {
         return static_cast<TransitCause>(i);
      }
   }
   return std::nullopt;
}

std::string_view viaSetRuleName(ViaSetRule rule) {
   return nameOf(kRuleNames, rule);
}

std::string_view nextHopResolutionName(NextHopResolution resolution) {
   return nameOf(kResolutionNames, resolution);
}

ViaSetRule MplsSm::explainViaSetRule(const Mpls::LfibViaSet& viaSet) const {
   ViaSetRule rule = ViaSetRule::none;
   const Mpls::LfibViaSetKey& key = viaSet.key();
   if (key.viaType() == Mpls::viaTypeExternalFec_) {
      checkExtFecVia(key, &rule);
      return rule;
   }
   if (!checkMplsIpLFibVias(viaSet, nullptr, &rule)) {
      return rule;
   }
   if (viaSet.vias() == 0) {
      return ViaSetRule::noVias;
   }
   // The review's further rules, in its order.
   bool inBackupRelation = viaSet.hasBackup();
   if (viaSet.hasBackup()) {
      const Mpls::LfibViaSet* backup = transitLfib_->viaSetPtr(viaSet.backupViaSetKey());
      if (!backup) {
         return ViaSetRule::backupMissing;
      }
      if (backup->hasBackup()) {
         return ViaSetRule::backupHasBackup;
      }
   }
   auto state = mplsState(defaultVrf());
   if (state && state->lFibViaSetToL3AdjHas(key)) {
      if (auto l3Adj = state->l3Adjacency(state->lFibViaSetToL3Adj(key))) {
         inBackupRelation = inBackupRelation || l3Adj->primaryAdjs() > 0;
      }
   }
   if (!forwardingIntoExternalFecsSupported()) {
      CachedLFibMplsViaColl vias;
      checkMplsIpLFibVias(viaSet, &vias, &rule);
      if (inBackupRelation || findL3AdjLFibAdjType(&vias) != adjTypeRegular_) {
         return ViaSetRule::needsFecForwarding;
      }
   }
   if (viaSet.hasBackup() && !(state && state->lFibViaSetToFecIdHas(viaSet.backupViaSetKey()))) {
      return ViaSetRule::backupWithoutFec;
   }
   return ViaSetRule::none;
}

void MplsSm::explainVias(TransitExplanation& e, const Mpls::LfibViaSet& viaSet) const {
   if (viaSet.key().viaType() != Mpls::viaTypeMplsIp_) {
      return;
   }
   const bool allowDefault = mplsStatus_ && mplsStatus_->nexthopResolutionAllowDefaultRoute();
   for (std::uint32_t position = 0; position < viaSet.vias(); ++position) {
      const Mpls::LfibViaKey& viaKey = viaSet.via(Mpls::LfibViaIndexRange(position));
      const Mpls::LfibMplsVia* via = transitLfib_->mplsViaPtr(viaKey);
      if (!via) {
         continue;
      }
      ViaExplanation v;
      v.position = position;
      v.nextHop = via->nextHop();
      v.interface = via->intf();
      v.labels = via->labelStack().stringValue();
      v.action = Wire::stringValue(via->labelAction());
      NextHopInfo info;
      if (!(via->intf() == Wire::IntfId())) {
         info = falL3Status_->nextHopInfo(NextHopKey(via->nextHop(), via->intf()));
         v.resolution =
             info.resolved() ? NextHopResolution::byNeighbour : NextHopResolution::unresolved;
      } else {
         const Wire::IpGenAddr& nh = via->nextHop();
         ResolvedNexthop r =
             nh.af() == Wire::ipv4()
                 ? falL3Status_->resolvedV4(VrfAndIpAddr(defaultVrfId_, nh.v4Addr()))
                 : falL3Status_->resolvedV6(VrfAndIpGenAddr(defaultVrfId_, nh));
         v.resolution = NextHopResolution::unresolved;
         if (r.resolved() && r.hasNexthop()) {
            v.gateway = r.nexthop();
            if (r.viaDefaultRoute() && !allowDefault) {
               v.resolution = NextHopResolution::defaultRouteNotAllowed;
            } else {
               info = falL3Status_->nextHopInfo(NextHopKey(r.nexthop(), r.l3Intf()));
               if (info.resolved()) {
                  v.resolution = NextHopResolution::byRouteResolver;
               }
            }
         }
      }
      if (v.resolution == NextHopResolution::byNeighbour ||
          v.resolution == NextHopResolution::byRouteResolver) {
         v.mac = info.macAddr();
         v.vlan = info.vlanId().value();
         v.l2Interface = info.l2Intf();
      }
      e.vias.push_back(v);
   }
}

void MplsSm::explainHardware(TransitExplanation& e, const VrfMplsState& vrf,
                             const MplsRoute& route) const {
   auto status = falMplsHwVrfStatus(vrf.vrfName());
   const L3AdjacencyPtr& l3Adj = route.l3Adj();
   if (l3Adj) {
      e.l3Adjacency = l3Adj->index();
      e.l3AdjacencyUnprogrammed = l3Adj->unprogrammed();
      if (const auto& l2Adj = l3Adj->l2Adjacency()) {
         e.l2Adjacency = l2Adj->index();
         auto hwL2 = routingHwMplsStatus_->l2Adjacency(l2Adj->index());
         e.l2AdjacencyRefused = status && hwL2 && status->unprogrammedAdjacencyHas(hwL2);
         e.l2AdjacencyProgrammed =
             status && hwL2 && status->l2AdjacencyHas(hwL2) && !e.l2AdjacencyRefused;
      }
      if (const auto& fec = l3Adj->extFecInfo()) {
         e.fecId = fec->fecId().value();
         e.hwFecIdRequested =
             hwFecIdRequest_ && hwFecIdRequest_->hwFecIdRequest(fec->fecId()) != HwFecIdRequest();
         e.hwFecId = fec->hwId();
      }
   }
   e.path = route.extFecInfo() || (l3Adj && l3Adj->extFecInfo())
                ? "fec"
                : (route.l2Adj() || (l3Adj && l3Adj->l2Adjacency()) ? "adjacency" : "");
   e.listedUnprogrammed = status && status->unprogrammedRouteHas(route.routeKey());
   if (e.listedUnprogrammed) {
      e.reason = status->unprogrammedReason();
      double last = vrf.lastUnprogrammedReview();
      e.nextRetry = last == Kor::Clock::never()
                        ? clock_->timeMin() + vrf.unprogrammedRetryInterval()
                        : last + vrf.unprogrammedRetryInterval();
   }
   if (e.path == "fec") {
      e.routeHelperRefused = e.listedUnprogrammed;
      e.configured = route.extFecInfo() != nullptr;
      return;
   }
   if (mplsHwConfig_) {
      if (auto config = mplsHwConfig_->vrfConfig(vrfIdOf(vrf.vrfName()))) {
         MplsHwRoute written = config->route(route.routeKey());
         e.configured = config->routeHas(route.routeKey());
         e.versionWritten = written.version();
      }
   }
   if (status && status->routeHas(route.routeKey())) {
      e.versionAnswered = status->route(route.routeKey()).version();
   }
}

TransitExplanation MplsSm::explainRoute(const Mpls::RouteKey& routeKey) const {
   TransitExplanation e;
   e.routeKey = routeKey;
   const L3::VrfName& vrfName = defaultVrf();
   const Mpls::LfibRoute* lfibRoute = transitLfib_ ? transitLfib_->lfibRoutePtr(routeKey) : nullptr;
   e.inLfib = lfibRoute != nullptr;
   e.vrfNamed = vrfKnown(vrfName);
   e.controlPlaneRouting = controlPlaneRouting();
   e.platformRouting = platformRoutingEnabled(vrfName);
   e.tracked = mplsIpRouteKey_.contains(routeKey);
   auto state = mplsState(vrfName);
   Kor::Ptr<MplsRoute> route = state ? state->route(routeKey) : nullptr;
   if (state) {
      e.pendingReview = state->routeKeyForReview(routeKey) || state->routeKeyForPublish(routeKey) ||
                        (route && route->l3Adj() && state->l3AdjForReview(route->l3Adj()->index()));
   }
   const Mpls::LfibViaSet* viaSet = nullptr;
   if (lfibRoute) {
      e.viaSetKey = lfibRoute->viaSetKey();
      viaSet = transitLfib_->viaSetPtr(e.viaSetKey);
      e.viaSetPresent = viaSet != nullptr;
      if (viaSet) {
         e.rule = explainViaSetRule(*viaSet);
         explainVias(e, *viaSet);
      }
   }
   if (state && route) {
      explainHardware(e, *state, *route);
   }

   // The first thing on the route's way that holds it back.
   auto type = e.viaSetKey.viaType();
   auto cause = [&]() {
      if (!lfibRoute) {
         return TransitCause::notInLfib;
      }
      if (type != Mpls::viaTypeMplsIp_ && type != Mpls::viaTypeExternalFec_) {
         return TransitCause::notTransit;
      }
      if (!e.vrfNamed) {
         return TransitCause::vrfNameMissing;
      }
      if (!e.controlPlaneRouting) {
         return TransitCause::mplsRoutingDisabled;
      }
      if (!e.platformRouting) {
         return TransitCause::platformRoutingDisabled;
      }
      if (!viaSet) {
         return TransitCause::viaSetMissing;
      }
      if (e.rule != ViaSetRule::none) {
         return TransitCause::viaSetRejected;
      }
      if (!route || e.pendingReview) {
         return TransitCause::pendingReview;
      }
      if (e.path.empty()) {
         bool anyDefault = false;
         for (const auto& v : e.vias) {
            anyDefault |= v.resolution == NextHopResolution::defaultRouteNotAllowed;
         }
         return anyDefault ? TransitCause::defaultRouteNotAllowed : TransitCause::nextHopUnresolved;
      }
      if (e.path == "fec") {
         if (e.routeHelperRefused) {
            return TransitCause::routeHelperRefused;
         }
         // The helper may already hold the route; it forwards nothing until the FEC is in
         // hardware.
         if (e.hwFecId == 0) {
            return TransitCause::hwFecIdPending;
         }
         return e.configured ? TransitCause::programmed : TransitCause::pendingReview;
      }
      if (e.l2AdjacencyRefused) {
         return TransitCause::l2AdjacencyRefused;
      }
      if (e.listedUnprogrammed) {
         return TransitCause::routeRefused;
      }
      if (!e.configured) {
         return TransitCause::pendingReview;
      }
      if (e.versionAnswered != e.versionWritten) {
         return TransitCause::awaitingPlatform;
      }
      return TransitCause::programmed;
   };
   e.cause = cause();
   return e;
}

}  // namespace Fal
