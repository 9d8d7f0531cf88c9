#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Log {

// One line of the numbered-level trace stream as it reaches a sink. The views are valid only for
// the duration of the sink call; a sink that keeps lines copies them.
struct TraceRecord {
   std::string_view handle;
   int level = 0;
   // The full signature of the function that traced (empty when the caller gave none).
   std::string_view function;
   std::string_view text;
};

// Where enabled trace lines go. Exactly one sink is current at a time: standard error unless a
// test, the simulator or the agent installs another. Sinks are called synchronously on the
// agent's one thread and must not trace themselves.
class TraceSink {
 public:
   virtual ~TraceSink() = default;
   virtual void onTrace(const TraceRecord& record) = 0;

   // The current sink; never null.
   static TraceSink& current();
   // Installs `sink` (not owned; it must outlive its installation); null restores standard error.
   static void currentIs(TraceSink* sink);
   // The standard-error sink, the default.
   static TraceSink& standardError();
};

// Writes each line as "<handle>/<level> <function>: <text>" (without the function part when there
// is none) to standard error.
class StderrTraceSink : public TraceSink {
 public:
   void onTrace(const TraceRecord& record) override;
   static std::string lineText(const TraceRecord& record);
};

// Keeps every line in memory, in arrival order. Tests and the simulator use it to look for the
// texts that mark decisions.
class MemoryTraceSink : public TraceSink {
 public:
   struct Line {
      std::string handle;
      int level = 0;
      std::string function;
      std::string text;
   };

   void onTrace(const TraceRecord& record) override;

   const std::vector<Line>& lines() const { return lines_; }
   std::size_t size() const { return lines_.size(); }
   void clear() { lines_.clear(); }
   // Number of lines whose text contains `fragment`.
   std::size_t count(std::string_view fragment) const;
   bool contains(std::string_view fragment) const { return count(fragment) != 0; }
   // The texts alone, in order.
   std::vector<std::string> texts() const;

 private:
   std::vector<Line> lines_;
};

// Installs a sink for the lifetime of the scope and restores the one it replaced.
class TraceSinkScope {
 public:
   explicit TraceSinkScope(TraceSink& sink);
   ~TraceSinkScope();
   TraceSinkScope(const TraceSinkScope&) = delete;
   TraceSinkScope& operator=(const TraceSinkScope&) = delete;

 private:
   TraceSink* previous_;
};

}  // namespace Log
