#pragma once

// The pseudowire decap state machine's entry points: its tables and assembly.
// Include <mplsfwd/pseudowire/FalLFibSm.h> only to look inside the machine.

#include <mplsfwd/runtime.h>

#include <mplsfwd/pseudowire/PseudowireMachine.h>
