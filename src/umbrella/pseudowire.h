#pragma once

// The pseudowire decap state machine's entry points: the machine, its tables and assembly.

#include <mplsfwd/runtime.h>

#include <mplsfwd/pseudowire/FalLFibSm.h>
#include <mplsfwd/pseudowire/PseudowireMachine.h>
