#include "Trace.h"

#include "TraceConfig.h"
#include "TraceSink.h"

namespace Log {

Trace::Trace(std::string name) : name_(std::move(name)) {
   TraceConfig::traceAdd(this);
}

Trace::~Trace() {
   TraceConfig::traceDel(this);
}

void Trace::write(int level, const char* function, const std::string& text) const {
   TraceRecord record;
   record.handle = name_;
   record.level = level;
   record.function = function ? std::string_view(function) : std::string_view();
   record.text = text;
   TraceSink::current().onTrace(record);
}

}  // namespace Log
