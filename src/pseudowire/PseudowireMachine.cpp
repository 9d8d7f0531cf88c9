#include "PseudowireMachine.h"

#include <stdexcept>

#include <mplsfwd/Fal/RequireTable.h>
#include "FalLFibSm.h"

namespace Fal {

PseudowireMachine::PseudowireMachine(const PseudowireTables& t) {
   requireTable(t.mplsStatus, "pseudowire", "mplsStatus");
   requireTable(t.pwStatus, "pseudowire", "pwStatus");
   requireTable(t.mplsIpStatus, "pseudowire", "mplsIpStatus");
   requireTable(t.decapInfoTable, "pseudowire", "decapInfoTable");
   requireTable(t.dstPortToHwFecIdRequest, "pseudowire", "dstPortToHwFecIdRequest");
   requireTable(t.dstPortToHwFecIdResponse, "pseudowire", "dstPortToHwFecIdResponse");
   requireTable(t.timerWheel, "pseudowire", "timerWheel");
   sm_ = lFibSmFactory(t.mplsStatus, t.mplsIpStatus, t.decapInfoTable, t.pwStatus,
                       t.dstPortToHwFecIdRequest, t.dstPortToHwFecIdResponse, t.timerWheel);
}

PseudowireMachine::~PseudowireMachine() = default;

PwExplanation PseudowireMachine::explainRoute(const Mpls::RouteKey& routeKey) const {
   return sm_->explainRoute(routeKey);
}

}  // namespace Fal
