#include "TransitMachine.h"

#include <stdexcept>

#include <mplsfwd/Fal/RequireTable.h>
#include "FalMplsSm.h"

namespace Fal {

TransitMachine::TransitMachine(const TransitTables& t) {
   requireTable(t.mplsStatus, "transit", "mplsStatus");
   requireTable(t.mplsRoutingInfo, "transit", "mplsRoutingInfo");
   requireTable(t.transitLfib, "transit", "transitLfib");
   requireTable(t.falL3Status, "transit", "falL3Status");
   requireTable(t.routingHwRouteStatus, "transit", "routingHwRouteStatus");
   requireTable(t.routeReactorConfig, "transit", "routeReactorConfig");
   requireTable(t.route6ReactorConfig, "transit", "route6ReactorConfig");
   requireTable(t.monitoredNhSm, "transit", "monitoredNhSm");
   requireTable(t.routingHwMplsStatus, "transit", "routingHwMplsStatus");
   requireTable(t.mplsHwConfig, "transit", "mplsHwConfig");
   requireTable(t.mplsHwStatus, "transit", "mplsHwStatus");
   requireTable(t.entityManager, "transit", "entityManager");
   requireTable(t.attrLogSm, "transit", "attrLogSm");
   requireTable(t.clock, "transit", "clock");
   const int fecParts = !!t.hwFecIdRequest + !!t.hwFecIdResponse + !!t.mplsSmHelper;
   if (fecParts != 0 && fecParts != 3) {
      throw std::invalid_argument(
          "transit machine: hwFecIdRequest, hwFecIdResponse and mplsSmHelper go together");
   }
   sm_ = MplsSmIs(t.mplsStatus, t.mplsRoutingInfo, t.transitLfib, t.routingHwRouteStatus,
                  t.routingHwMplsStatus, t.routeReactorConfig, t.route6ReactorConfig,
                  t.mplsHwConfig, t.mplsHwStatus, t.falL3Status, t.monitoredNhSm, t.entityManager,
                  t.attrLogSm, t.clock);
   if (t.unprogrammedRetryInterval >= 0) {
      sm_->defaultUnprogrammedRetryIntervalIs(t.unprogrammedRetryInterval);
   }
   if (fecParts == 3) {
      sm_->hwFecIdRequestIs(t.hwFecIdRequest);
      sm_->hwFecIdResponseIs(t.hwFecIdResponse);
      sm_->mplsSmHelperIs(t.mplsSmHelper);
   }
}

TransitMachine::~TransitMachine() = default;

TransitExplanation TransitMachine::explainRoute(const Mpls::RouteKey& routeKey) const {
   return sm_->explainRoute(routeKey);
}

}  // namespace Fal
