#include "LogSink.h"

#include <cstdio>

namespace Log {

namespace {

LogSink* installed = nullptr;

}  // namespace

LogSink& LogSink::standardError() {
   static StderrLogSink sink;
   return sink;
}

LogSink& LogSink::current() {
   return installed ? *installed : standardError();
}

void LogSink::currentIs(LogSink* sink) {
   installed = sink;
}

std::string StderrLogSink::lineText(const LogRecord& record) {
   return "%" + record.name + "-" + std::to_string(record.severity) + ": " + record.text;
}

void StderrLogSink::onMessage(const LogRecord& record) {
   std::string line = lineText(record);
   line.push_back('\n');
   std::fwrite(line.data(), 1, line.size(), stderr);
}

std::size_t MemoryLogSink::count(std::string_view name) const {
   std::size_t n = 0;
   for (const auto& r : records_) {
      n += r.name == name;
   }
   return n;
}

LogSinkScope::LogSinkScope(LogSink& sink) : previous_(installed) {
   installed = &sink;
}

LogSinkScope::~LogSinkScope() {
   installed = previous_;
}

}  // namespace Log
