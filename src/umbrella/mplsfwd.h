#pragma once

// mplsfwd's entry points: the three state machines and their assembly, the helper interfaces a
// platform implements, the hardware and FEC tables, the LFIB records and the runtime basics.
// The machines' internals are not included: see docs/embedding.md for what each header offers.

#include <mplsfwd/decap.h>
#include <mplsfwd/pseudowire.h>
#include <mplsfwd/runtime.h>
#include <mplsfwd/transit.h>
