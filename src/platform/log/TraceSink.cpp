#include "TraceSink.h"

#include <cstdio>

namespace Log {

namespace {

TraceSink* installed = nullptr;

}  // namespace

TraceSink& TraceSink::standardError() {
   static StderrTraceSink sink;
   return sink;
}

TraceSink& TraceSink::current() {
   return installed ? *installed : standardError();
}

void TraceSink::currentIs(TraceSink* sink) {
   installed = sink;
}

std::string StderrTraceSink::lineText(const TraceRecord& record) {
   std::string line;
   line.reserve(record.handle.size() + record.function.size() + record.text.size() + 8);
   line.append(record.handle);
   line.push_back('/');
   line.append(std::to_string(record.level));
   line.push_back(' ');
   if (!record.function.empty()) {
      line.append(record.function);
      line.append(": ");
   }
   line.append(record.text);
   return line;
}

void StderrTraceSink::onTrace(const TraceRecord& record) {
   std::string line = lineText(record);
   line.push_back('\n');
   std::fwrite(line.data(), 1, line.size(), stderr);
}

void MemoryTraceSink::onTrace(const TraceRecord& record) {
   lines_.push_back(Line{std::string(record.handle), record.level, std::string(record.function),
                         std::string(record.text)});
}

std::size_t MemoryTraceSink::count(std::string_view fragment) const {
   std::size_t n = 0;
   for (const auto& line : lines_) {
      n += line.text.find(fragment) != std::string::npos;
   }
   return n;
}

std::vector<std::string> MemoryTraceSink::texts() const {
   std::vector<std::string> out;
   out.reserve(lines_.size());
   for (const auto& line : lines_) {
      out.push_back(line.text);
   }
   return out;
}

TraceSinkScope::TraceSinkScope(TraceSink& sink) : previous_(installed) {
   installed = &sink;
}

TraceSinkScope::~TraceSinkScope() {
   installed = previous_;
}

}  // namespace Log
