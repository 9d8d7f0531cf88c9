#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Log {

// One emitted operator log message.
struct LogRecord {
   std::string name;
   int severity = 0;
   // The format with its arguments filled in.
   std::string text;
   // The log facility's time of the emission, in seconds.
   double time = 0.0;
};

// Where emitted log messages go (after their rate check passed). One sink is current at a time:
// standard error unless the agent, the simulator or a test installs another. Called synchronously
// on the agent's one thread.
class LogSink {
 public:
   virtual ~LogSink() = default;
   virtual void onMessage(const LogRecord& record) = 0;

   // The current sink; never null.
   static LogSink& current();
   // Installs `sink` (not owned; it must outlive its installation); null restores standard error.
   static void currentIs(LogSink* sink);
   static LogSink& standardError();
};

// Writes "%<name>-<severity>: <text>" and an end of line to standard error.
class StderrLogSink : public LogSink {
 public:
   void onMessage(const LogRecord& record) override;
   static std::string lineText(const LogRecord& record);
};

// Keeps every emitted message in memory, in order; the simulator and tests count them by name.
class MemoryLogSink : public LogSink {
 public:
   void onMessage(const LogRecord& record) override { records_.push_back(record); }

   const std::vector<LogRecord>& records() const { return records_; }
   std::size_t size() const { return records_.size(); }
   std::size_t count(std::string_view name) const;
   void clear() { records_.clear(); }

 private:
   std::vector<LogRecord> records_;
};

// Installs a sink for the lifetime of the scope and restores the one it replaced.
class LogSinkScope {
 public:
   explicit LogSinkScope(LogSink& sink);
   ~LogSinkScope();
   LogSinkScope(const LogSinkScope&) = delete;
   LogSinkScope& operator=(const LogSinkScope&) = delete;

 private:
   LogSink* previous_;
};

}  // namespace Log
