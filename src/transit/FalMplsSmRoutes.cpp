// LFIB route processing: accepting routes, binding them to adjacencies, programming and
// publishing them.
#include "FalMplsSm.h"

#include <algorithm>

#include "MplsSmTrace.h"

namespace Fal {

namespace {
const L3::VrfName& defaultVrf() {
   static const L3::VrfName name = L3::VrfName::defaultVrf();
   return name;
}
}  // namespace

bool MplsSm::routeSupported(const Mpls::LfibRoute& lfibRoute) const {
   FAL_ASSERT(!(lfibRoute == Mpls::LfibRoute()), "!!route");
   auto type = lfibRoute.viaSetKey().viaType();
   if (type == Mpls::viaTypeMplsIp_ || type == Mpls::viaTypeExternalFec_) {
      return true;
   }
   SM_DECISION(5, "Ignoring non mpls-ip and extFec LfibRoute");
   return false;
}

// A route of a kind that this machine does not program (a decap route) and that it never took
// up: handling it would only trace that it is ignored. It is skipped before the VRF's lookups by
// name, which a million decap routes would otherwise pay for nothing. While any trace of the
// machine is read, the full handling runs, so that the traces say what they always said.
bool MplsSm::foreignRouteUntouched(const Mpls::RouteKey& routeKey,
                                   const Mpls::LfibRoute& lfibRoute) const {
   const auto type = lfibRoute.viaSetKey().viaType();
   if (type == Mpls::viaTypeMplsIp_ || type == Mpls::viaTypeExternalFec_ ||
       mplsIpRouteKey_.contains(routeKey) ||
       (defaultState_ &&
        (defaultState_->route(routeKey) || defaultState_->routeKeyForReview(routeKey)))) {
      return false;
   }
   return !SM_TRACING();
}

void MplsSm::handleLFibRoute(const Mpls::RouteKey& routeKey) {
   // Nothing below changes the LFIB: the record stays where it is.
   const Mpls::LfibRoute* lfibRoute = transitLfib_->lfibRoutePtr(routeKey);
   if (lfibRoute && foreignRouteUntouched(routeKey, *lfibRoute)) {
      return;
   }
   const L3::VrfName& vrf = defaultVrf();
   if (!vrfKnown(vrf)) {
      SM_TRACE(5, "Vrf name has not been added yet");
      return;
   }
   if (!platformRoutingEnabled(vrf)) {
      SM_TRACE(5, "mplsRouting disable in vrf " << vrf);
      return;
   }
   bool program = false;
   if (!lfibRoute) {
      if (!mplsIpRouteKey_.contains(routeKey)) {
         SM_TRACE(5, "Ignoring LFIB route " << routeKey);
         return;
      }
      SM_TRACE(5, "delete LFIB route " << routeKey);
      mplsIpRouteKey_.erase(routeKey);
   } else if (routeSupported(*lfibRoute)) {
      mplsIpRouteKey_.insert(routeKey);
      SM_TRACE(5, "add/update LFIB route " << routeKey);
      program = true;
   } else {
      mplsIpRouteKey_.erase(routeKey);
   }
   auto state = mplsState(vrf);
   if (!program && !(state && state->route(routeKey))) {
      // Nothing of ours to program or to take down.
      if (state && state->routeKeyForReview(routeKey)) {
         SM_TRACE(5, "removing routeKey " << routeKey << " from review");
         state->routeKeyForReviewIs(routeKey, false);
      }
      return;
   }
   state = mplsStateIs(vrf);
   acceptRoute(*state, routeKey);
   state->routeKeyForReviewIs(routeKey, true);
   SM_TRACE(8, "routeKey for review");
   doMaybeScheduleReview(vrf);
}

void MplsSm::acceptRoute(VrfMplsState& vrf, const Mpls::RouteKey& routeKey) {
   if (vrf.route(routeKey)) {
      return;
   }
   Kor::Ptr<MplsRoute> route = vrf.routeIs(routeKey);
   // The platform may list the route as unprogrammed from before this state knew it (after a
   // restart, say): count it, so that its removal from the list balances.
   auto status = falMplsHwVrfStatus(vrf.vrfName());
   if (status && status->unprogrammedRouteHas(routeKey)) {
      route->countedUnprogrammedIs(true);
      vrf.numUnprogrammedRouteInc();
   }
}

void MplsSm::handleLFibRoute() {
   // Copy the keys: handling a route can schedule work but never changes the LFIB, still the walk
   // must not depend on that.
   std::vector<Mpls::RouteKey> keys;
   keys.reserve(transitLfib_->lfibRoutes());
   for (const auto& [key, route] : transitLfib_->lfibRouteMap()) {
      keys.push_back(key);
   }
   for (const auto& key : keys) {
      handleLFibRoute(key);
   }
   // Routing has just become available. What the state already holds is looked at again too:
   // the changes that came while it was unavailable were not taken up, so a route deleted
   // meanwhile would stay programmed and a changed via set would keep its old next hops.
   const L3::VrfName& vrf = defaultVrf();
   if (Kor::Ptr<VrfMplsState> state = mplsState(vrf)) {
      for (const auto& [key, route] : state->routeMap()) {
         state->routeKeyForReviewIs(key, true);
      }
      for (const auto& [index, l3Adj] : state->l3AdjacencyMap()) {
         state->l3AdjForReviewIs(index, true);
      }
      doMaybeScheduleReview(vrf);
   }
}

void MplsSm::processRouteKey(VrfMplsState& vrf, const Mpls::RouteKey& routeKey) {
   SM_TRACE(8, "process routeKey " << routeKey);
   vrf.routeKeyForPublishIs(routeKey, true);
   Kor::Ptr<MplsRoute> route = vrf.route(routeKey);
   if (!route) {
      SM_TRACE(5, "routeKey " << routeKey << " not in vrf " << vrf.vrfName());
      return;
   }
   if (!controlPlaneRouting()) {
      SM_TRACE(5, "mplsRouting disabled in vrf " << vrf.vrfName());
      deleteRouteKeyAndRoute(vrf, routeKey);
      return;
   }
   const Mpls::LfibRoute* lfibRoute = transitLfib_->lfibRoutePtr(routeKey);
   const Mpls::LfibViaSet* viaSet =
       lfibRoute ? transitLfib_->viaSetPtr(lfibRoute->viaSetKey()) : nullptr;
   // The adjacency of the route's via set: the route's own while its via set stays, else the
   // one the via set already has (null if none). It also keeps the sanity check's answer for the
   // rest of the pass.
   L3AdjacencyPtr ofViaSet;
   if (lfibRoute) {
      const L3AdjacencyPtr& current = route->l3Adj();
      ofViaSet = current && current->lFibViaSetKey() == lfibRoute->viaSetKey()
                     ? current
                     : vrf.l3AdjacencyOfViaSet(lfibRoute->viaSetKey());
   }
   if (!lfibRoute || (viaSet && !isLFibViaSetSane(*viaSet, ofViaSet.ptr())) ||
       !(lfibRoute->viaSetKey().viaType() == Mpls::viaTypeMplsIp_ ||
         lfibRoute->viaSetKey().viaType() == Mpls::viaTypeExternalFec_)) {
      SM_DECISION(5, "route (" << routeKey << ") does not exist in system LFIB or via not sane ");
      deleteRouteKeyAndRoute(vrf, routeKey);
      return;
   }
   if (!viaSet) {
      SM_DECISION(5, "via set for route (" << routeKey
                                           << ") does not exist in system LFIB, delay processing");
      return;
   }

   const Mpls::LfibViaSetKey& viaSetKey = lfibRoute->viaSetKey();
   L3AdjacencyPtr oldAdj;
   L3AdjacencyPtr l3Adj = route->l3Adj();
   if (!l3Adj || !(l3Adj->lFibViaSetKey() == viaSetKey)) {
      oldAdj = l3Adj;
      SM_TRACE(5, "adj changed");
      SM_TRACE(5, "viaSetKey changed to " << viaSetKey);
      l3Adj = ofViaSet;
      if (!l3Adj) {
         l3Adj = newL3Adjacency(vrf);
         l3Adj->lFibViaSetKeyIs(viaSetKey);
         SM_TRACE(5, "add new adj " << l3Adj->index() << " for review");
         vrf.l3AdjForReviewIs(l3Adj->index(), true);
         vrf.lFibViaSetToL3AdjIs(viaSetKey, l3Adj->index());
      }
      // A route is in one adjacency's list at a time: it leaves the old one here, and the old
      // adjacency is reviewed once the route has moved (below).
      if (oldAdj) {
         vrf.routeUnlink(*oldAdj, *route);
      }
      vrf.routeLinkIs(*l3Adj, *route);
      SM_TRACE(5, "L3 adj index " << l3Adj->index());
      route->l3AdjIs(l3Adj);
   }
   route->metricIs(static_cast<std::int32_t>(lfibRoute->metric()));
   SM_TRACE(5, "routeKey " << routeKey << " adj " << l3Adj->index());

   if (route->unprogramRequired()) {
      unprogramRouteKey(vrf, routeKey);
      route->unprogrammedIs(true);
      route->unprogramRequiredIs(false);
   }

   const MplsL2AdjacencyPtr& l2Adj = l3Adj->l2Adjacency();
   const ExternalFecInfoPtr& extFec = l3Adj->extFecInfo();
   if (l2Adj && l3Adj->lFibViaSetKey().viaType() == Mpls::viaTypeMplsIp_ && !extFec) {
      Kor::Ptr<Mpls::Hardware::L2Adjacency> hwL2 =
          routingHwMplsStatus_->l2Adjacency(l2Adj->index());
      route->versionInc(1);
      falMplsHwVrfConfig(vrf.vrfName())->routeIs(MplsHwRoute(routeKey, hwL2, route->version()));
      auto status = falMplsHwVrfStatus(vrf.vrfName());
      bool unprogrammed =
          (hwL2 && hwL2->unprogrammed()) || (status && status->unprogrammedRouteHas(routeKey));
      route->unprogrammedIs(unprogrammed);
      SM_TRACE(5, "prog routeKey " << routeKey << " l2 adj " << l2Adj->index() << " unprogrammed "
                                   << unprogrammed);
      if (route->l2Adj() != l2Adj || route->extFecInfo()) {
         if (route->extFecInfo() && mplsSmHelper_) {
            // Forwarded into a FEC until now: the helper lets go of the route.
            mplsSmHelper_->deleteRoute(routeKey);
         }
         clearRouteMappings(vrf, routeKey);
         route->l2AdjIs(l2Adj);
         addRouteKeyToL2Adj(vrf, *route, l2Adj);
      }
   } else if (forwardingIntoExternalFecsSupported() && extFec && extFec->fecId().isValid() &&
              mplsSmHelper_) {
      if (route->l2Adj()) {
         // Programmed through an L2 adjacency until now. Delete first, create after: the hardware
         // configuration lets go of the route in this pass (else it would keep pointing at an
         // adjacency that goes once unused) and the helper takes it in the next, once the
         // platform has cleared its status entries of the configured route; that clean-up would
         // otherwise erase the unprogrammed entry recording a refusal of the helper.
         SM_TRACE(5, "unprog routeKey " << routeKey << " before forwarding it into a FEC");
         falMplsHwVrfConfig(vrf.vrfName())->routeDel(routeKey);
         clearRouteMappings(vrf, routeKey);
         route->unprogrammedIs(true);
         vrf.routeKeyForReviewIs(routeKey, true);
      } else {
         std::uint64_t fecId = extFec->fecId().value();
         auto rc = mplsSmHelper_->updateRoute(routeKey, l3Adj->labelAction(), l3Adj->payloadType(),
                                              fecId, Wire::AddressingMethod::indirect);
         auto status = falMplsHwVrfStatusNonConst(vrf.vrfName());
         if (rc == Mpls::lfibHwProgrammingSuccess_) {
            // Programmed before the listing goes: leaving the list on its own means a retry.
            route->unprogrammedIs(false);
            if (status) {
               status->unprogrammedRouteDel(routeKey);
            }
         } else {
            SM_DECISION(1, "adding route " << routeKey << " to unprogrammed list, reason "
                                           << UnprogrammedReason::RouteFull);
            if (status) {
               // The reason first: the entry's own notification reads it.
               status->unprogrammedReasonIs(UnprogrammedReason::RouteFull);
               status->unprogrammedRouteIs(routeKey, true);
            }
            route->unprogrammedIs(true);
         }
         if (route->extFecInfo() != extFec) {
            clearRouteMappings(vrf, routeKey);
            route->extFecInfoIs(extFec);
            addRouteKeyToExtFecInfo(routeKey, extFec);
         }
      }
   } else if (isAdjPendingForReview(vrf, *l3Adj)) {
      // The adjacency's review puts its routes up for review again whenever what they would be
      // programmed through changes, and after a review that could not program it; queueing the
      // route here too would only process it once more for nothing.
      SM_TRACE(5, "not removing routeKey "
                      << routeKey
                      << " because adj review is pending. Add routeKey for review again");
   } else {
      SM_TRACE(5, "unprog routeKey " << routeKey);
      unprogramRouteKey(vrf, routeKey);
      route->unprogrammedIs(true);
      // Not programmed through anything any more: let go of the old L2 adjacency and FEC so that
      // they can be deleted once unused.
      clearRouteMappings(vrf, routeKey);
   }

   if (oldAdj && oldAdj != l3Adj) {
      SM_TRACE(5, "remove routeKey " << routeKey << " from l3Adj index " << oldAdj->index());
      vrf.l3AdjForReviewIs(oldAdj->index(), true);
   }
}

void MplsSm::doPublishRouteKeys(VrfMplsState& vrf) {
   // Publishing never queues more publishing, so the queue can be taken until it is empty.
   auto& queue = vrf.routeKeyForPublishSet();
   Mpls::RouteKey key;
   while (!queue.empty() && !reviewYield()) {
      if (queue.takeFront(key)) {
         publishRouteKey(vrf, key);
      }
   }
}

Mpls::Hardware::Route MplsSm::hwRouteOf(const MplsRoute& route) const {
   // The shared status names adjacencies by index so that readers need no object references.
   Mpls::Hardware::Route hw(route.routeKey());
   hw.adjacencyIndexIs(route.l3Adj() ? route.l3Adj()->index() : 0);
   hw.l2AdjacencyIndexIs(route.l2Adj() ? route.l2Adj()->index() : 0);
   hw.metricIs(static_cast<std::uint32_t>(route.metric()));
   hw.versionIs(route.version());
   hw.unprogrammedIs(route.unprogrammed());
   return hw;
}

void MplsSm::publishRouteKey(VrfMplsState& vrf, const Mpls::RouteKey& routeKey) {
   SM_TRACE(8, "publish routeKey " << routeKey);
   if (vrf.routeKeyForReview(routeKey)) {
      SM_DECISION(8, "not publishing routeKey " << routeKey << " since review is pending");
      return;
   }
   vrf.routeKeyPublishedInc();
   Kor::Ptr<MplsRoute> route = vrf.route(routeKey);
   if (route && route->l3Adj()) {
      SM_TRACE(8, "publish routeKey " << routeKey << " adj " << route->l3Adj()->index()
                                      << " unprogrammed " << route->unprogrammed());
      routingHwMplsStatus_->routeIs(hwRouteOf(*route));
      return;
   }
   if (route) {
      SM_TRACE(8, "not publishing routeKey " << routeKey << " since l3 adjacency doesn't exist");
   }
   SM_TRACE(8, "unpublish routeKey " << routeKey);
   routingHwMplsStatus_->routeDel(routeKey);
}

void MplsSm::unprogramRouteKey(VrfMplsState& vrf, const Mpls::RouteKey& routeKey) {
   SM_TRACE(8, "unprogram routeKey " << routeKey);
   falMplsHwVrfConfig(vrf.vrfName())->routeDel(routeKey);
   if (auto status = falMplsHwVrfStatusNonConst(vrf.vrfName())) {
      unlistingOwn_ = true;
      status->unprogrammedRouteDel(routeKey);
      unlistingOwn_ = false;
   }
   if (forwardingIntoExternalFecsSupported() && mplsSmHelper_) {
      mplsSmHelper_->deleteRoute(routeKey);
   }
}

void MplsSm::deleteRouteKeyAndRoute(VrfMplsState& vrf, const Mpls::RouteKey& routeKey) {
   SM_TRACE(5, "delete routeKey " << routeKey);
   unprogramRouteKey(vrf, routeKey);
   Kor::Ptr<MplsRoute> route = vrf.route(routeKey);
   if (route) {
      clearRouteMappings(vrf, routeKey);
      if (const auto& l3Adj = route->l3Adj()) {
         vrf.routeUnlink(*l3Adj, *route);
         vrf.l3AdjForReviewIs(l3Adj->index(), true);
         route->l3AdjIs(nullptr);
      }
      if (route->countedUnprogrammed()) {
         // Still listed (by a status this machine does not write): it leaves the count with
         // the route, else the count would never come back to zero.
         route->countedUnprogrammedIs(false);
         unprogrammedCountChanged(vrf, -1, nullptr, false);
      }
   }
   vrf.routeDel(routeKey);
}

void MplsSm::clearRouteMappings(VrfMplsState& vrf, const Mpls::RouteKey& routeKey) {
   SM_TRACE(8, "clear route mappings");
   Kor::Ptr<MplsRoute> route = vrf.route(routeKey);
   if (!route) {
      return;
   }
   if (route->l2Adj()) {
      MplsL2AdjacencyPtr l2Adj = route->l2Adj();
      deleteRouteKeyFromL2Adj(vrf, *route, l2Adj);
      route->l2AdjIs(nullptr);
   }
   if (route->extFecInfo()) {
      ExternalFecInfoPtr extFec = route->extFecInfo();
      route->extFecInfoIs(nullptr);
      deleteRouteKeyFromExtFecInfo(vrf, routeKey, extFec);
   }
}

}  // namespace Fal
