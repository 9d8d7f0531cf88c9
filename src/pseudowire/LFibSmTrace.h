#pragma once

#include <mplsfwd/log/FastLog.h>
#include <mplsfwd/log/Trace.h>

namespace Fal {

// The pseudowire machine's trace handle ("LFibSm"), shared by its source files.
extern Log::Trace lfibSmTrace;

}  // namespace Fal

// Decision texts go to both trace streams; the rest to the numbered levels only.
#define SM_TRACE(level, expr) MPLSFWD_TRACE(::Fal::lfibSmTrace, level, expr)
#define SM_DECISION(level, expr) MPLSFWD_TRACE_FAST(::Fal::lfibSmTrace, level, expr)
