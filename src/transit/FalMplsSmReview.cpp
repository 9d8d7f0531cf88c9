// The review: scheduling, time-boxed passes, hardware feedback, the retry of unprogrammed routes
// and the resource log messages.
#include "FalMplsSm.h"

#include <limits>
#include <vector>

#include <mplsfwd/log/LogFacility.h>

#include "MplsResourceLog.h"
#include "MplsSmTrace.h"

namespace Fal {

namespace {

// Takes the work present when the step starts and processes it until done or told to yield. Work
// queued while the step runs (a route put back for review, say) waits for the next pass instead of
// spinning in this one; what the step did not reach goes back on the set.
template <class Set, class Yield, class Work>
void drainOnce(Set& live, Set& batch, Yield&& yield, Work&& work) {
   batch.swap(live);
   // Erase as we go through the iterator the erase returns: asking for begin() again after each
   // erase would rescan the emptied front of an open-addressing table every time.
   auto it = batch.begin();
   while (it != batch.end() && !yield()) {
      auto key = *it;
      it = batch.erase(it);
      work(key);
   }
   // Hand back what was not reached: by swapping when nothing new was queued (the usual case of
   // a pass that yields), so that a large backlog costs nothing to put back.
   if (live.size() < batch.size()) {
      live.swap(batch);
   }
   for (const auto& key : batch) {
      live.insert(key);
   }
   batch.clear();
}

// The same for a route queue: the keys listed when the step starts are worked on in order; keys
// queued during the step are listed behind them and wait for the next pass.
template <class Yield, class Work>
void drainOnce(Mpls::RouteKeyQueue& queue, Yield&& yield, Work&& work) {
   std::size_t listed = queue.entriesListed();
   Mpls::RouteKey key;
   for (; listed != 0 && !yield(); --listed) {
      if (queue.takeFront(key)) {
         work(key);
      }
   }
}

}  // namespace

void MplsSm::doMaybeScheduleReview(const L3::VrfName& vrf) {
   if (!initialized_) {
      return;
   }
   auto state = mplsState(vrf);
   if (!state) {
      return;
   }
   if (!state->needReview() && !state->hasUnprogrammed()) {
      SM_TRACE(8, "nothing to review in vrf " << vrf);
      return;
   }
   vrfForReview_.insert(vrf);
   double delay;
   if (state->needReviewForUnprogrammedOnly()) {
      delay = state->unprogrammedRetryInterval();
      SM_TRACE(8, ": Only unprogrammed routes need review in vrf "
                      << vrf << ". The review interval is " << delay << " seconds.");
   } else {
      delay = reviewInterval_;
      SM_TRACE(8, " Review interval for vrf " << vrf << " is " << delay << " seconds.");
   }
   // Armed earlier with a delay no longer than this one, the clock wakes up no later than this
   // request needs: nothing to move, and no need to read the time (a handler that runs once per
   // route of a million-route LFIB would otherwise read it once per route).
   if (clock_->armed() && currentReviewInterval_ <= delay) {
      return;
   }
   double wakeUp = clock_->now() + delay;
   if (clock_->timeMin() > wakeUp) {
      clock_->timeMinIs(wakeUp);
      currentReviewInterval_ = delay;
   }
}

void MplsSm::doReviewVrfs() {
   clock_->timeMinIs(Kor::Clock::never());
   ++reviewCount_;
   passUnderWay_ = reviewCount_;
   double start = clock_->now();
   reviewEndTime_ = start + reviewQuanta_;
   // The VRFs asking for review when the pass starts; one that asks again during its own review
   // (it has work left) waits for the wake-up that its request armed.
   std::vector<L3::VrfName> vrfs(vrfForReview_.begin(), vrfForReview_.end());
   for (const auto& vrf : vrfs) {
      if (!vrfForReview_.erase(vrf)) {
         continue;
      }
      SM_TRACE(5, "review vrf " << vrf);
      doReviewVrf(vrf);
      if (reviewYield()) {
         SM_DECISION(5, "vrf review yielding");
         break;
      }
   }
   passUnderWay_ = 0;
   reviewPassEnded(start);
}

void MplsSm::reviewPassEnded(double start) {
   double length = clock_->now() - start;
   if (length > longestReviewPass_) {
      longestReviewPass_ = length;
   }
}

bool MplsSm::reviewYield() const {
   if (reviewEndTime_ >= std::numeric_limits<double>::max()) {
      return true;
   }
   if (clock_->now() > reviewEndTime_) {
      return true;
   }
   return attrLogSm_ && attrLogSm_->isAttrLogOutClogged();
}

void MplsSm::doReviewVrf(const L3::VrfName& vrfName) {
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf || (!vrf->needReview() && !vrf->hasUnprogrammed())) {
      SM_TRACE(5, "nothing to be reviewed for vrf " << vrfName);
      return;
   }
   vrf->vrfReviewCountInc();
   auto yield = [this] { return reviewYield(); };

   SM_TRACE(5, "review l3 adj in vrf " << vrfName);
   drainOnce(vrf->l3AdjForReviewSet(), vrf->l3AdjInReviewBatch(), yield, [&](std::uint64_t i) {
      processL3Adj(*vrf, i);
      vrf->l3AdjReviewedInc();
   });

   SM_TRACE(5, "review routeKey in vrf " << vrfName);
   drainOnce(vrf->routeKeyForReviewSet(), yield, [&](const Mpls::RouteKey& k) {
      processRouteKey(*vrf, k);
      vrf->routeKeyReviewedInc();
   });

   SM_TRACE(5, "review l2 adj in vrf " << vrfName);
   VrfMplsState::Set<std::uint64_t> l2Batch;
   drainOnce(vrf->l2AdjForReviewSet(), l2Batch, yield, [&](std::uint64_t i) {
      processL2Adj(*vrf, i);
      vrf->l2AdjReviewedInc();
   });

   SM_TRACE(5, "review l2 adj pending for deletion in vrf " << vrfName);
   // Copy: a pending adjacency that is deleted leaves the set as it is processed.
   std::vector<std::uint64_t> pending(vrf->l2AdjPendingForDeleteSet().begin(),
                                      vrf->l2AdjPendingForDeleteSet().end());
   for (std::uint64_t i : pending) {
      if (reviewYield()) {
         break;
      }
      processL2AdjPendingDelete(*vrf, i);
   }

   SM_TRACE(5, "review unprogrammed routeKey and adj in vrf " << vrfName);
   if (!reviewYield() && vrf->hasUnprogrammed()) {
      doReviewUnprogrammedRoute(*vrf);
   }

   SM_TRACE(5, "publish routeKey in vrf " << vrfName);
   if (!reviewYield() && !vrf->routeKeyForPublishSet().empty()) {
      doPublishRouteKeys(*vrf);
   }

   if (!vrf->needReview()) {
      settledOnce_ = true;
      if (!routeHelperReconciled_) {
         reconcileRouteHelper(vrf.ptr());
      }
   }

   doMaybeScheduleReviewOrDeleteVrfState(vrfName);
}

void MplsSm::doReviewUnprogrammedRoute(VrfMplsState& vrf) {
   double now = clock_->now();
   if (!vrf.hasUnprogrammed()) {
      vrf.lastUnprogrammedReviewIs(Kor::Clock::never());
      SM_TRACE(5, "no unprogrammed route to review");
      return;
   }
   if (vrf.lastUnprogrammedReview() == Kor::Clock::never()) {
      vrf.lastUnprogrammedReviewIs(now);
      SM_TRACE(5, "schedule review for unprogrammed routes");
      return;
   }
   if (vrf.lastUnprogrammedReview() + vrf.unprogrammedRetryInterval() > now) {
      SM_TRACE(5, "schedule review for unprogrammed routes");
      return;
   }
   SM_TRACE(5, "Set unprogrammedRetryInterval to default: " << defaultUnprogrammedRetryInterval_);
   vrf.unprogrammedRetryIntervalIs(defaultUnprogrammedRetryInterval_);
   SM_TRACE(5, "review unprogrammed routes");
   vrf.lastUnprogrammedReviewIs(now);

   auto status = falMplsHwVrfStatus(vrf.vrfName());
   if (!status) {
      return;
   }
   // Copies: retrying changes both lists under us.
   std::vector<L2AdjacencyPtr> adjs;
   for (const auto& [adj, flag] : status->unprogrammedAdjacencyMap()) {
      adjs.push_back(adj);
   }
   for (const auto& adj : adjs) {
      if (reviewYield()) {
         return;
      }
      if (!vrf.l2Adjacency(adj->index()) ||
          routingHwMplsStatus_->l2Adjacency(adj->index()) != adj) {
         // Deleted earlier in this pass; the platform has not answered the deletion yet.
         continue;
      }
      SM_TRACE(5, "retry unprogrammed adj " << adj->index());
      progHwL2Adj(vrf.vrfName(), adj);
      vrf.unprogAdjRetriedInc();
   }
   std::vector<Mpls::RouteKey> keys;
   keys.reserve(status->unprogrammedRoutes());
   for (const auto& [key, flag] : status->unprogrammedRouteMap()) {
      keys.push_back(key);
   }
   for (const auto& key : keys) {
      if (reviewYield()) {
         return;
      }
      SM_TRACE(5, "retry unprogrammed routeKey " << key);
      processRouteKey(vrf, key);
      vrf.unprogRouteRetriedInc();
   }
}

void MplsSm::reconcileRouteHelper(const VrfMplsState* vrf) {
   routeHelperReconciled_ = true;
   helperHeldRoutes_.clear();
   if (!mplsSmHelper_ || !forwardingIntoExternalFecsSupported()) {
      return;
   }
   for (const auto& key : mplsSmHelper_->routeKeys()) {
      Kor::Ptr<MplsRoute> route = vrf ? vrf->route(key) : nullptr;
      if (route && route->extFecInfo()) {
         continue;
      }
      SM_DECISION(1,
                  "route helper holds routeKey " << key << " that is not programmed; deleting it");
      mplsSmHelper_->deleteRoute(key);
   }
}

void MplsSm::maybeReconcileRouteHelperWithoutState() {
   const L3::VrfName vrf = L3::VrfName::defaultVrf();
   if (!initialized_ || mplsState(vrf)) {
      return;
   }
   // With routing on in the control plane the routes are taken up once the platform confirms it
   // for a named VRF; until then a state may still form and do this itself.
   if (controlPlaneRouting() && !platformRoutingEnabled(vrf)) {
      return;
   }
   settledOnce_ = true;
   if (!routeHelperReconciled_ && mplsSmHelper_) {
      SM_DECISION(1, "no vrf state after start-up; reconciling the route helper");
      reconcileRouteHelper(nullptr);
   }
   maybeLogOwedResourceNormal();
}

void MplsSm::maybeLogOwedResourceNormal() {
   Kor::Ptr<VrfMplsState> vrf = mplsState(L3::VrfName::defaultVrf());
   if (!resourceFullLogged() || (vrf && (vrf->hasUnprogrammed() || vrf->needReview()))) {
      return;
   }
   SM_DECISION(1, "Resource-Normal after start-up");
   Log::emit(routingMplsResourceNormal());
   resourceFullLoggedIs(false);
   falMplsHwVrfConfig(L3::VrfName::defaultVrf())->resourceFullLoggedIs(false);
   if (auto writable = falMplsHwVrfStatusNonConst(L3::VrfName::defaultVrf())) {
      writable->unprogrammedReasonIs(UnprogrammedReason::Success);
   }
}

bool MplsSm::helperHeldRouteOf(const VrfMplsState& vrf, const L3Adjacency& l3Adj) const {
   if (routeHelperReconciled_) {
      return false;
   }
   bool held = false;
   vrf.forEachRoute(l3Adj, [&](const Mpls::RouteKey& key, const MplsRoute&) {
      held = held || helperHeldRoutes_.contains(key);
   });
   return held;
}

void MplsSm::doMaybeScheduleReviewOrDeleteVrfState(const L3::VrfName& vrfName) {
   FAL_ASSERT(vrfName == L3::VrfName::defaultVrf(), "vrf == L3::VrfName::defaultVrf()");
   if (!initialized_) {
      return;
   }
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf) {
      return;
   }
   if (!vrf->needReview() && !vrf->hasUnprogrammed()) {
      maybeLogOwedResourceNormal();
      if (!controlPlaneRouting()) {
         SM_DECISION(1, "disable mplsRouting in vrf " << vrfName);
         falMplsHwVrfConfig(vrfName)->mplsRoutingIs(false);
      }
      if (vrf->empty()) {
         SM_DECISION(1, "delete state for vrf " << vrfName);
         mplsStateDel(vrfName);
      }
      return;
   }
   doMaybeScheduleReview(vrfName);
}

void MplsSm::doForceRouteReprogramming() {
   for (const auto& [name, vrf] : mplsState_) {
      for (const auto& [key, route] : vrf->routeMap()) {
         vrf->routeKeyForReviewIs(key, true);
      }
      doMaybeScheduleReview(name);
   }
}

void MplsSm::handleProgrammedRoute(VrfId vrfId, const Mpls::RouteKey& routeKey) {
   L3::VrfName vrfName = falL3Status_ ? falL3Status_->vrfName(vrfId) : L3::VrfName();
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf || !vrf->route(routeKey)) {
      SM_TRACE(8, "no vrf state or routeKey");
      return;
   }
   FAL_ASSERT(vrfName == L3::VrfName::defaultVrf(), "vrf == L3::VrfName::defaultVrf()");
   auto status = mplsHwStatus_->vrfStatus(vrfId);
   if (status && status->routeHas(routeKey)) {
      Kor::Ptr<MplsRoute> route = vrf->route(routeKey);
      // Only the answer for what was written last programs the route: a late answer for an
      // older version (or one left from the adjacency way of a route now forwarded into a FEC)
      // says nothing about what forwards now.
      std::uint64_t answered = status->route(routeKey).version();
      if (answered != route->version() || route->extFecInfo()) {
         SM_TRACE(5, "routeKey " << routeKey << " answered for version " << answered
                                 << ", last written " << route->version() << "; ignored");
         return;
      }
      SM_TRACE(8, "routeKey " << routeKey << " programmed in vrf " << vrfName);
      route->unprogrammedIs(false);
      SM_TRACE(8, "add routeKey " << routeKey << " for review");
      vrf->routeKeyForPublishIs(routeKey, true);
      doMaybeScheduleReview(vrfName);
      if (vrf->hasUnprogrammed()) {
         // Something got in: the rest may fit now too, so retry soon rather than in 10 s.
         vrf->unprogrammedRetryIntervalIs(reviewInterval_);
         SM_TRACE(5, "vrf " << vrfName << " unprogrammedRetryIntervalIs " << reviewInterval_);
      }
   } else {
      SM_TRACE(8, "routeKey " << routeKey << " unprogrammed from vrf " << vrfName);
   }
}

void MplsSm::handleUnprogrammedRoute(VrfId vrfId, const Mpls::RouteKey& routeKey) {
   L3::VrfName vrfName = falL3Status_ ? falL3Status_->vrfName(vrfId) : L3::VrfName();
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf || !vrf->route(routeKey)) {
      SM_TRACE(8, "no vrf state or routeKey");
      return;
   }
   FAL_ASSERT(vrfName == L3::VrfName::defaultVrf(), "vrf == L3::VrfName::defaultVrf()");
   auto status = mplsHwStatus_->vrfStatus(vrfId);
   int delta;
   if (status && status->unprogrammedRouteHas(routeKey)) {
      SM_TRACE(5, "routeKey " << routeKey << " not programmed in vrf " << vrfName);
      delta = 1;
      vrf->unprogrammedRetryIntervalIs(defaultUnprogrammedRetryInterval_);
   } else {
      SM_TRACE(5, "routeKey " << routeKey << " removed from unprog collection in vrf " << vrfName);
      delta = -1;
   }
   Kor::Ptr<MplsRoute> route = vrf->route(routeKey);
   if (delta == 1) {
      route->unprogrammedIs(true);
   } else if (route->extFecInfo()) {
      // On the FEC way the list records refusals of the route helper, and this machine marks the
      // route programmed itself when the helper takes it. A refused route whose listing someone
      // else cleared (the platform cleaning up late after the route's adjacency-way programming)
      // is tried again: the helper takes it, or it is listed again.
      if (route->unprogrammed() && !unlistingOwn_) {
         SM_TRACE(5, "refused routeKey " << routeKey << " unlisted by the platform; retry it");
         vrf->routeKeyForReviewIs(routeKey, true);
      }
   } else if (status && status->routeHas(routeKey) &&
              status->route(routeKey).version() == route->version()) {
      // Leaving the list programs the route only together with an answer for the version
      // written last.
      route->unprogrammedIs(false);
   }
   vrf->routeKeyForPublishIs(routeKey, true);
   // The count follows the routes this machine counted: a notification that repeats what it
   // already knows (the route listed again with another reason, or leaving a list that it was
   // never counted in, as a status left by an earlier incarnation is cleared) changes nothing.
   if (route->countedUnprogrammed() != (delta == 1)) {
      route->countedUnprogrammedIs(delta == 1);
      unprogrammedCountChanged(*vrf, delta, status.ptr(), false);
   }
   doMaybeScheduleReview(vrfName);
}

void MplsSm::unprogrammedCountChanged(VrfMplsState& vrf, int delta, const MplsHwVrfStatus* status,
                                      bool adjacency) {
   const L3::VrfName& vrfName = vrf.vrfName();
   std::uint64_t preUnprogrammed = vrf.numUnprogrammedRoute();
   if (adjacency) {
      if (delta == -1 && vrf.numUnprogrammedAdj() == 0) {
         return;
      }
      vrf.numUnprogrammedAdjInc(delta == 1 ? 1 : std::uint64_t(-1));
   } else {
      FAL_ASSERT(!(preUnprogrammed == 0 && delta == -1),
                 "! (preUnprogrammed == 0 && delta == -1 )");
      vrf.numUnprogrammedRouteIs(preUnprogrammed + delta);
   }
   // One FULL/NORMAL episode covers the refused routes and the refused adjacencies together.
   std::uint64_t after = vrf.numUnprogrammedRoute() + vrf.numUnprogrammedAdj();
   if (after == 1 && delta == 1) {
      UnprogrammedReason reason =
          status ? status->unprogrammedReason() : UnprogrammedReason::RouteFull;
      // FULL raised by an earlier incarnation and never closed is not raised again.
      if (isResourceReason(reason) && !resourceFullLogged()) {
         Log::emit(routingMplsResourceFull());
         resourceFullLoggedIs(true);
         falMplsHwVrfConfig(vrfName)->resourceFullLoggedIs(true);
      }
      SM_DECISION(1, "Schedule review for unprog routes, reason " << reason);
   }
   if (after == 0 && delta == -1) {
      if (resourceFullLogged() && inheritedFull_ && !settledOnce_) {
         // Listings cleared with the configuration of the earlier incarnation say nothing yet:
         // the inherited episode closes once the start-up review has settled.
         SM_DECISION(1, "Resource-Normal deferred until the start-up review settles");
      } else if (resourceFullLogged()) {
         Log::emit(routingMplsResourceNormal());
         resourceFullLoggedIs(false);
         falMplsHwVrfConfig(vrfName)->resourceFullLoggedIs(false);
      }
      if (auto writable = falMplsHwVrfStatusNonConst(vrfName)) {
         writable->unprogrammedReasonIs(UnprogrammedReason::Success);
      }
      SM_DECISION(1, "Resource-Normal");
   }
}

void MplsSm::handleUnprogrammedAdj(VrfId vrfId, const L2AdjacencyPtr& l2Adjacency) {
   L3::VrfName vrfName = falL3Status_ ? falL3Status_->vrfName(vrfId) : L3::VrfName();
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf) {
      SM_TRACE(5, "no vrf state for vrf " << vrfName);
      return;
   }
   FAL_ASSERT(vrfName == L3::VrfName::defaultVrf(), "vrf == L3::VrfName::defaultVrf()");
   SM_TRACE(5, "add l2 adj " << l2Adjacency->index() << " for review");
   vrf->l2AdjForReviewIs(l2Adjacency->index(), true);
   auto status = mplsHwStatus_->vrfStatus(vrfId);
   bool unprogrammed = status && status->unprogrammedAdjacencyHas(l2Adjacency);
   // The flag on the hardware record says whether the adjacency is counted: it is set only here.
   const bool counted = l2Adjacency->unprogrammed();
   // Routes read the flag on the hardware record when they are programmed through it.
   l2Adjacency->unprogrammedIs(unprogrammed);
   if (unprogrammed != counted) {
      unprogrammedCountChanged(*vrf, unprogrammed ? 1 : -1, status.ptr(), true);
   }
   if (unprogrammed) {
      SM_TRACE(5, "l2 adj " << l2Adjacency->index() << " not programmed");
      vrf->unprogrammedRetryIntervalIs(defaultUnprogrammedRetryInterval_);
   } else {
      SM_TRACE(5, "l2 adj " << l2Adjacency->index() << " removed from unprogrammedAdj");
      vrf->unprogrammedRetryIntervalIs(reviewInterval_);
      SM_TRACE(5, "vrf " << vrfName << " unprogrammedRetryIntervalIs " << reviewInterval_);
   }
   doMaybeScheduleReview(vrfName);
}

}  // namespace Fal
