#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <mplsfwd/log/TraceConfig.h>
#include <mplsfwd/log/TraceSink.h>

namespace TestSupport {

// Captures the numbered-level trace lines of a test: enables the given handles and levels and
// collects every line in memory for the life of the object, then puts the previous trace
// configuration and sink back.
class TraceCapture {
 public:
   explicit TraceCapture(std::string_view config = "MplsSm/0-9")
       : scope_(sink), previous_(Log::TraceConfig::config()) {
      Log::TraceConfig::configIs(config);
   }
   ~TraceCapture() { Log::TraceConfig::configIs(previous_); }
   TraceCapture(const TraceCapture&) = delete;
   TraceCapture& operator=(const TraceCapture&) = delete;

   // Lines whose text contains `fragment`.
   std::size_t count(std::string_view fragment) const { return sink.count(fragment); }
   bool contains(std::string_view fragment) const { return sink.contains(fragment); }
   void clear() { sink.clear(); }

   Log::MemoryTraceSink sink;

 private:
   Log::TraceSinkScope scope_;
   std::string previous_;
};

}  // namespace TestSupport
