#include "LogFacility.h"

#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <chrono>
#include <cstring>

#include "LogSink.h"
#include "RateLimiter.h"

namespace Log {

namespace {

struct MessageState {
   RateLimiter limiter;
   std::uint64_t emitted = 0;
   std::uint64_t suppressed = 0;
};

struct State {
   LogFacility::TimeFunction time;
   Kor::HashMap<std::string, MessageState> messages;
};

State& state() {
   static State* s = new State;
   return *s;
}

double monotonicNow() {
   using namespace std::chrono;
   return duration<double>(steady_clock::now().time_since_epoch()).count();
}

MessageState* find(std::string_view name) {
   auto& messages = state().messages;
   auto it = messages.find(std::string(name));
   return it == messages.end() ? nullptr : &it->second;
}

MessageState& stateOf(const MessageDef& def) {
   auto& messages = state().messages;
   auto it = messages.find(def.name());
   if (it == messages.end()) {
      it = messages.emplace(def.name(), MessageState{RateLimiter(def.minInterval(), def.burst())})
               .first;
   }
   return it->second;
}

bool isConversionModifier(char c) {
   return std::strchr("-+ #0123456789.*hlLqjzt'", c) != nullptr;
}

bool isLetter(char c) {
   return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

void LogFacility::timeFunctionIs(TimeFunction fn) {
   state().time = std::move(fn);
}

void LogFacility::timeSourceIs(const Kor::TimeSource* source) {
   if (source == nullptr) {
      timeFunctionIs(nullptr);
      return;
   }
   timeFunctionIs([source] { return source->now(); });
}

double LogFacility::now() {
   const auto& fn = state().time;
   return fn ? fn() : monotonicNow();
}

bool LogFacility::rateCheck(const MessageDef& def, double now) {
   MessageState& s = stateOf(def);
   bool pass = s.limiter.allow(now);
   ++(pass ? s.emitted : s.suppressed);
   return pass;
}

void LogFacility::reset() {
   state().messages.clear();
}

std::uint64_t LogFacility::emitted(std::string_view name) {
   const MessageState* s = find(name);
   return s ? s->emitted : 0;
}

std::uint64_t LogFacility::suppressed(std::string_view name) {
   const MessageState* s = find(name);
   return s ? s->suppressed : 0;
}

bool LogFacility::emitFormatted(const MessageDef& def, double now,
                                const std::vector<std::string>& args) {
   if (!rateCheck(def, now)) {
      return false;
   }
   LogRecord record;
   record.name = def.name();
   record.severity = def.severity();
   record.text = format(def.format(), args);
   record.time = now;
   LogSink::current().onMessage(record);
   return true;
}

std::string LogFacility::format(std::string_view fmt, const std::vector<std::string>& args) {
   std::string out;
   out.reserve(fmt.size());
   std::size_t next = 0;
   std::size_t i = 0;
   while (i < fmt.size()) {
      char c = fmt[i];
      if (c != '%') {
         out.push_back(c);
         ++i;
         continue;
      }
      if (i + 1 < fmt.size() && fmt[i + 1] == '%') {
         out.push_back('%');
         i += 2;
         continue;
      }
      std::size_t j = i + 1;
      while (j < fmt.size() && isConversionModifier(fmt[j])) {
         ++j;
      }
      if (j >= fmt.size() || !isLetter(fmt[j])) {
         // Not a conversion: a lone percent sign is kept as text.
         out.push_back('%');
         ++i;
         continue;
      }
      if (next < args.size()) {
         out.append(args[next++]);
      } else {
         out.append(fmt.substr(i, j + 1 - i));
      }
      i = j + 1;
   }
   return out;
}

}  // namespace Log
