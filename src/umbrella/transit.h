#pragma once

// The transit state machine's entry points: the machine, its tables and assembly, the route
// helper interface a platform implements for FIB FEC forwarding, and the per-process resource log
// state.

#include <mplsfwd/runtime.h>

#include <mplsfwd/Fal/MplsSmHelper.h>
#include <mplsfwd/transit/FalMplsSm.h>
#include <mplsfwd/transit/MplsResourceLog.h>
#include <mplsfwd/transit/TransitMachine.h>
