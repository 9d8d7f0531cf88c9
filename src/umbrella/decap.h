#pragma once

// The decap state machine's entry points: the machine with its factory, its tables and assembly
// (with the LFIB tracking it needs) and the helper interfaces a platform implements.

#include <mplsfwd/runtime.h>

#include <mplsfwd/decap/DecapMachine.h>
#include <mplsfwd/decap/FalMplsDecapSm.h>
#include <mplsfwd/decap/MplsDecapHelper.h>
#include <mplsfwd/decap/MplsDecapHelperStub.h>
#include <mplsfwd/decap/MplsDecapHelperWithDot1qMap.h>
#include <mplsfwd/decap/MplsForwardingHelper.h>
