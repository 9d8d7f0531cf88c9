#pragma once

#include <mplsfwd/log/MessageDef.h>

namespace Fal {

// The operator messages about MPLS hardware resources, defined once at load.
const Log::MessageDef& routingMplsResourceFull();
const Log::MessageDef& routingMplsResourceNormal();

// Process-wide: FULL was raised and NORMAL is still owed.
bool resourceFullLogged();
void resourceFullLoggedIs(bool v);

}  // namespace Fal
