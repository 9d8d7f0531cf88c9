#pragma once

// The helper interfaces that a platform implements for the MPLS forwarding layers: the decap
// helper with its dot1q-map variant and its hardware-free stub, the forwarding helper and the
// transit state machine's route helper.
#include "MplsDecapHelper.h"
#include "MplsDecapHelperStub.h"
#include "MplsDecapHelperWithDot1qMap.h"
#include "MplsForwardingHelper.h"

#include <mplsfwd/Fal/MplsSmHelper.h>
