#include "MplsResourceLog.h"

namespace Fal {

namespace {

const Log::MessageDef fullDef(
    "ROUTING_MPLS_RESOURCE_FULL", 3,
    "Hardware resources are insufficient to program all MPLS routes",
    "The switch is unable to program all routes due to insufficient hardware resources. When the "
    "switch is unable to program routes due to insufficient hardware resources, it may drop "
    "certain packets. ",
    "To solve this issue, reconfigure the network to reduce the size of the routing table or the "
    "number of MPLS routes. When the hardware resources is available, the switch automatically "
    "programs any unprogrammed routes in hardware. ",
    0.0, 1.0);

const Log::MessageDef normalDef(
    "ROUTING_MPLS_RESOURCE_NORMAL", 3, "All MPLS routes are programmed in hardware.",
    "The switch was able to program all the MPLS routes in the hardware and normal hardware "
    "routing has resumed.",
    "", 0.0, 1.0);

bool fullLogged = false;

}  // namespace

const Log::MessageDef& routingMplsResourceFull() {
   return fullDef;
}
const Log::MessageDef& routingMplsResourceNormal() {
   return normalDef;
}
bool resourceFullLogged() {
   return fullLogged;
}
void resourceFullLoggedIs(bool v) {
   fullLogged = v;
}

}  // namespace Fal
