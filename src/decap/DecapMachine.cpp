#include "DecapMachine.h"

#include <stdexcept>

#include <mplsfwd/Fal/RequireTable.h>
#include <mplsfwd/mpls/LfibTrackingSm.h>

#include "FalMplsDecapSm.h"

namespace Fal {

DecapMachine::DecapMachine(const DecapTables& t) {
   requireTable(t.mplsDecapHelper, "decap", "mplsDecapHelper");
   requireTable(t.lfibStatus, "decap", "lfibStatus");
   requireTable(t.scheduler, "decap", "scheduler");
   requireTable(t.lfibHwStatus, "decap", "lfibHwStatus");
   trackingStatus_ = Kor::make<Mpls::LfibTrackingStatus>("decapTrackingStatus");
   trackingSm_ = Kor::make<Mpls::LfibTrackingSm>(t.lfibStatus, trackingStatus_,
                                                 Mpls::lfibTrackingRoutes_, t.trackingName);
   sm_ = mplsDecapSmFactory(t.mplsDecapHelper, t.lfibStatus, t.scheduler, trackingStatus_,
                            t.lfibHwStatus);
   if (t.unprogrammedRetryInterval >= 0) {
      sm_->defaultUnprogrammedRetryIntervalIs(t.unprogrammedRetryInterval);
   }
}

DecapMachine::~DecapMachine() {
   sm_ = nullptr;
   trackingSm_ = nullptr;
}

DecapExplanation DecapMachine::explainRoute(const Mpls::RouteKey& routeKey) const {
   return sm_->explainRoute(routeKey);
}

}  // namespace Fal
