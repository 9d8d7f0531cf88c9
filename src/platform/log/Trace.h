#pragma once

#include <cstdint>
#include <sstream>
#include <string>

#include "FastLog.h"

namespace Log {

// A named trace handle with levels 0 to 9 ("MplsSm", "MplsDecapSm", "LFibSm", ...). Each handle
// caches the set of its enabled levels as a bit mask, which the trace configuration (TraceConfig)
// recomputes for every live handle whenever it changes; so the check made at each trace point is
// one load and one test, and a disabled trace point evaluates none of its arguments.
//
// Handles are usually objects of static storage duration, one per component; several handles may
// share a name and are then configured together. A handle registers itself with the
// configuration when constructed and leaves it when destroyed. One thread only.
class Trace {
 public:
   static constexpr int minLevel = 0;
   static constexpr int maxLevel = 9;
   static constexpr int levels = 10;

   explicit Trace(std::string name);
   ~Trace();
   Trace(const Trace&) = delete;
   Trace& operator=(const Trace&) = delete;

   const std::string& name() const { return name_; }
   // Bit n set: level n is enabled.
   std::uint32_t enabledMask() const { return mask_; }
   bool enabled(int level) const {
      return static_cast<unsigned>(level) < static_cast<unsigned>(levels) &&
             ((mask_ >> level) & 1u) != 0;
   }

   // Sends one line to the current trace sink, whatever the enabled levels; the macros below call
   // it only after the level check. `function` may be empty.
   void write(int level, const char* function, const std::string& text) const;

   // Called by the configuration only.
   void enabledMaskIs(std::uint32_t mask) { mask_ = mask; }

 private:
   std::string name_;
   std::uint32_t mask_ = 0;
};

// Collects the streamed text of one enabled trace point and hands it to its handle at the end of
// the statement.
class TraceLine {
 public:
   TraceLine(const Trace& trace, int level, const char* function)
       : trace_(trace), level_(level), function_(function) {}
   ~TraceLine() { trace_.write(level_, function_, stream_.str()); }
   TraceLine(const TraceLine&) = delete;
   TraceLine& operator=(const TraceLine&) = delete;
   std::ostringstream& stream() { return stream_; }

 private:
   const Trace& trace_;
   int level_;
   const char* function_;
   std::ostringstream stream_;
};

}  // namespace Log

// MPLSFWD_TRACE(handle, level, a << b << ...): traces the streamed expression at `level` of
// `handle`, with the calling function's full signature. The level is tested before anything else:
// when it is disabled, the stream expression is not evaluated at all. `handle` and `level` are
// named twice, so pass a plain object and a constant, not expressions with side effects.
#define MPLSFWD_TRACE(handle, level, expr)                                           \
   do {                                                                              \
      if ((handle).enabled(level)) [[unlikely]] {                                    \
         ::Log::TraceLine mplsfwdTraceLine_((handle), (level), __PRETTY_FUNCTION__); \
         mplsfwdTraceLine_.stream() << expr;                                         \
      }                                                                              \
   } while (false)

#define TRACE0(handle, expr) MPLSFWD_TRACE(handle, 0, expr)
#define TRACE1(handle, expr) MPLSFWD_TRACE(handle, 1, expr)
#define TRACE2(handle, expr) MPLSFWD_TRACE(handle, 2, expr)
#define TRACE3(handle, expr) MPLSFWD_TRACE(handle, 3, expr)
#define TRACE4(handle, expr) MPLSFWD_TRACE(handle, 4, expr)
#define TRACE5(handle, expr) MPLSFWD_TRACE(handle, 5, expr)
#define TRACE6(handle, expr) MPLSFWD_TRACE(handle, 6, expr)
#define TRACE7(handle, expr) MPLSFWD_TRACE(handle, 7, expr)
#define TRACE8(handle, expr) MPLSFWD_TRACE(handle, 8, expr)
#define TRACE9(handle, expr) MPLSFWD_TRACE(handle, 9, expr)

// MPLSFWD_TRACE_FAST(handle, level, a << b << ...): one decision text for both trace streams: the
// handle's numbered level (with the function signature) and the process FastLog ring, each when
// enabled. The text is built once, and not at all when neither is enabled.
#define MPLSFWD_TRACE_FAST(handle, level, expr)                         \
   do {                                                                 \
      const bool mplsfwdTraceOn_ = (handle).enabled(level);             \
      ::Log::FastLog& mplsfwdFastLog_ = ::Log::FastLog::instance();     \
      if (mplsfwdTraceOn_ || mplsfwdFastLog_.enabled()) [[unlikely]] {  \
         std::ostringstream mplsfwdTraceText_;                          \
         mplsfwdTraceText_ << expr;                                     \
         const std::string mplsfwdText_ = mplsfwdTraceText_.str();      \
         if (mplsfwdTraceOn_) {                                         \
            (handle).write((level), __PRETTY_FUNCTION__, mplsfwdText_); \
         }                                                              \
         if (mplsfwdFastLog_.enabled()) {                               \
            mplsfwdFastLog_.add(mplsfwdText_);                          \
         }                                                              \
      }                                                                 \
   } while (false)
