#pragma once

#include <mplsfwd/log/FastLog.h>
#include <mplsfwd/log/Trace.h>

namespace Fal {

// The decap machine's trace handle ("MplsDecapSm"), shared by its source files.
extern Log::Trace mplsDecapSmTrace;

}  // namespace Fal

// Decision texts go to both trace streams; the rest to the numbered levels only.
#define SM_TRACE(level, expr) MPLSFWD_TRACE(::Fal::mplsDecapSmTrace, level, expr)
#define SM_DECISION(level, expr) MPLSFWD_TRACE_FAST(::Fal::mplsDecapSmTrace, level, expr)
