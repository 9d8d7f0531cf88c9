#pragma once

#include <mplsfwd/log/Assert.h>
#include <mplsfwd/log/FastLog.h>
#include <mplsfwd/log/Trace.h>

namespace Fal {

// The transit machine's trace handle ("MplsSm"), shared by its source files.
extern Log::Trace mplsSmTrace;

}  // namespace Fal

// Decision texts go to both trace streams; the rest to the numbered levels only.
#define SM_TRACE(level, expr) MPLSFWD_TRACE(::Fal::mplsSmTrace, level, expr)
#define SM_DECISION(level, expr) MPLSFWD_TRACE_FAST(::Fal::mplsSmTrace, level, expr)
// True while any of the machine's traces is read (a level of the handle, or the FastLog ring).
#define SM_TRACING() (::Fal::mplsSmTrace.enabledMask() != 0 || ::Log::FastLog::instance().enabled())
