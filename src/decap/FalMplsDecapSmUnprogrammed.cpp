// Fal::MplsDecapSm: the routes that the helper refused, listed in the LFIB hardware status for
// operators and other agents, and retried from scratch every retry interval while any is listed.
#include <mplsfwd/log/Assert.h>

#include "FalMplsDecapSm.h"
#include "MplsDecapSmTrace.h"

namespace Fal {

void MplsDecapSm::addRouteToUnprogrammed(const Mpls::RouteKey& routeKey,
                                         Mpls::LfibHwProgrammingReturnCode rc) {
   FAL_ASSERT(initialized());
   SM_TRACE(8, "addRouteToUnprogrammed"
                   << " route " << routeKey << " reason " << static_cast<unsigned>(rc));
   // The newest reason replaces an older one. The review is scheduled by whoever ran this.
   lfibHwStatus_->unprogrammedRouteIs(Mpls::RouteInfo(routeKey, rc));
}

void MplsDecapSm::deleteRouteFromUnprogrammed(const Mpls::RouteKey& routeKey) {
   FAL_ASSERT(initialized());
   if (lfibHwStatus_->unprogrammedRouteMap().empty()) {
      SM_TRACE(9, "No unprogrammed routes, nothing to delete");
      return;
   }
   lfibHwStatus_->unprogrammedRouteDel(routeKey);
}

// A pending review is never pushed back: new failures wait for the review already planned.
void MplsDecapSm::maybeScheduleUnprogrammedReview() {
   SM_TRACE(8, "maybeScheduleUnprogrammedReview");
   FAL_ASSERT(initialized());
   if (lfibHwStatus_->unprogrammedRouteMap().empty()) {
      SM_TRACE(8, "no unprogrammed routes, nothing to review");
      return;
   }
   if (reviewUnprogrammed_->pending()) {
      SM_TRACE(8, "unprogrammed review already scheduled");
      return;
   }
   reviewUnprogrammed_->scheduleAfter(defaultUnprogrammedRetryInterval_);
   SM_DECISION(5, "next unprogrammed review at " << reviewUnprogrammed_->time());
}

void MplsDecapSm::doReviewUnprogrammed() {
   SM_TRACE(8, "doReviewUnprogrammed");
   FAL_ASSERT(initialized());
   FAL_ASSERT(reviewUnprogrammed_, "task");
   const auto& unprogrammed = lfibHwStatus_->unprogrammedRouteMap();
   auto it = unprogrammed.begin();
   while (it != unprogrammed.end()) {
      const Mpls::RouteKey routeKey = it->first;
      // Deletes whatever is programmed (which also takes the key off the list), then tries
      // again; a new refusal puts the key back with the newest reason.
      processRouteKey(routeKey);
      reviewUnprogrammed_->taskWorkCountInc(1);
      // By key, so that the key's own removal and re-insertion do not disturb the walk.
      it = unprogrammed.upper_bound(routeKey);
      if (it == unprogrammed.end()) {
         maybeScheduleUnprogrammedReview();
         return;
      }
      if (reviewUnprogrammed_->taskShouldYield()) {
         // The next run starts again from the first listed key.
         SM_TRACE(8, "doReviewUnprogrammed yielding");
         reviewUnprogrammed_->scheduleAfter(defaultUnprogrammedRetryInterval_);
         return;
      }
   }
}

}  // namespace Fal
