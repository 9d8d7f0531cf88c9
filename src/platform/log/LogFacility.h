#pragma once

#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "MessageDef.h"

namespace Kor {
class TimeSource;
}

namespace Log {

// The operator log: emits messages defined by a MessageDef through the message's rate check to
// the current LogSink. Each message name has one RateLimiter, made from its definition's two
// parameters at its first emission; the facility counts, per name, the emissions that passed and
// those the rate check suppressed.
//
// Time comes from the facility's time function: by default a monotonic clock; the agent installs
// its event loop's time source, and tests install simulated time or pass the time to emitAt.
// Nothing here reads the wall clock. One thread only.
class LogFacility {
 public:
   using TimeFunction = std::function<double()>;

   // Null restores the default monotonic clock.
   static void timeFunctionIs(TimeFunction fn);
   // Reads `source` (not owned; null restores the default).
   static void timeSourceIs(const Kor::TimeSource* source);
   static double now();

   // Runs the rate check of `def` at `now`; true when the emission may go out.
   static bool rateCheck(const MessageDef& def, double now);
   // Forgets every rate check state and counter (tests; an agent restart).
   static void reset();
   static std::uint64_t emitted(std::string_view name);
   static std::uint64_t suppressed(std::string_view name);

   // Emits `def` at `now` with already formatted arguments; true when it passed the rate check.
   static bool emitFormatted(const MessageDef& def, double now,
                             const std::vector<std::string>& args);

   // Fills the format's conversions with the arguments in order. A conversion is '%', optional
   // flags, width, precision and length characters, and a letter; each takes the next argument's
   // text whatever its letter ("%s", "%d", "%5.2f" all do). "%%" is a percent sign. A conversion
   // with no argument left stays as written; arguments left over are ignored.
   static std::string format(std::string_view fmt, const std::vector<std::string>& args);
};

namespace detail {
template <class... A>
std::vector<std::string> argTexts(const A&... args) {
   std::vector<std::string> texts;
   texts.reserve(sizeof...(args));
   (
       [&] {
          std::ostringstream os;
          os << args;
          texts.push_back(os.str());
       }(),
       ...);
   return texts;
}
}  // namespace detail

// Emits a message at the facility's current time; each argument is streamed with operator<< and
// fills the next conversion. Returns whether the rate check let it through.
template <class... A>
bool emit(const MessageDef& def, const A&... args) {
   return LogFacility::emitFormatted(def, LogFacility::now(), detail::argTexts(args...));
}

// The same at a time given by the caller.
template <class... A>
bool emitAt(double now, const MessageDef& def, const A&... args) {
   return LogFacility::emitFormatted(def, now, detail::argTexts(args...));
}

}  // namespace Log
