#include "TraceConfig.h"

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/kor/TextScan.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Trace.h"

namespace Log {

namespace {

constexpr std::uint32_t allLevels = (1u << Trace::levels) - 1;

struct State {
   std::string text;
   std::vector<TraceConfig::Item> items;
   std::vector<Trace*> traces;
};

[[noreturn]] void fail(std::string_view text, const std::string& why) {
   throw Kor::ParseError(Kor::concat({"trace configuration '", text, "': ", why}));
}

int parseLevel(std::string_view whole, std::string_view s) {
   if (s.size() != 1 || s[0] < '0' || s[0] > '9') {
      fail(whole, Kor::concat({"'", s, "' is not a level from 0 to 9"}));
   }
   return s[0] - '0';
}

std::uint32_t parseLevels(std::string_view whole, std::string_view s) {
   s = Kor::trimBlanks(s);
   auto dash = s.find('-');
   if (dash == std::string_view::npos) {
      return 1u << parseLevel(whole, s);
   }
   int first = parseLevel(whole, Kor::trimBlanks(s.substr(0, dash)));
   int last = parseLevel(whole, Kor::trimBlanks(s.substr(dash + 1)));
   if (first > last) {
      fail(whole, Kor::concat({"range '", s, "' runs backwards"}));
   }
   std::uint32_t mask = 0;
   for (int l = first; l <= last; ++l) {
      mask |= 1u << l;
   }
   return mask;
}

void applyTo(const State& state, Trace* trace) {
   std::uint32_t mask = 0;
   for (const auto& item : state.items) {
      if (item.name == "*" || item.name == trace->name()) {
         mask |= item.mask;
      }
   }
   trace->enabledMaskIs(mask);
}

void installFromEnvironment(State& state) {
   state.text.clear();
   state.items.clear();
   const char* env = std::getenv(TraceConfig::environmentVariable);
   if (env == nullptr) {
      return;
   }
   try {
      state.items = TraceConfig::parse(env);
      state.text = env;
   } catch (const Kor::ParseError& e) {
      std::fprintf(stderr, "%s ignored: %s\n", TraceConfig::environmentVariable, e.what());
   }
}

// Never destroyed, so that handles of static storage duration may leave it in any order at exit.
State& state() {
   static State* s = [] {
      auto* fresh = new State;
      installFromEnvironment(*fresh);
      return fresh;
   }();
   return *s;
}

void applyToAll(State& s) {
   for (Trace* t : s.traces) {
      applyTo(s, t);
   }
}

}  // namespace

std::vector<TraceConfig::Item> TraceConfig::parse(std::string_view text) {
   std::vector<Item> items;
   std::string_view rest = text;
   while (!Kor::trimBlanks(rest).empty()) {
      auto comma = rest.find(',');
      std::string_view part = Kor::trimBlanks(rest.substr(0, comma));
      rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
      if (part.empty()) {
         fail(text, "empty item");
      }
      if (part[0] >= '0' && part[0] <= '9') {
         if (items.empty()) {
            fail(text, Kor::concat({"levels '", part, "' without a handle name before them"}));
         }
         items.back().mask |= parseLevels(text, part);
         continue;
      }
      auto slash = part.find('/');
      Item item;
      item.name = std::string(Kor::trimBlanks(part.substr(0, slash)));
      if (item.name.empty()) {
         fail(text, Kor::concat({"item '", part, "' has no handle name"}));
      }
      item.mask =
          slash == std::string_view::npos ? allLevels : parseLevels(text, part.substr(slash + 1));
      items.push_back(std::move(item));
   }
   if (!Kor::trimBlanks(text).empty() && Kor::trimBlanks(text).back() == ',') {
      fail(text, "empty item");
   }
   return items;
}

void TraceConfig::configIs(std::string_view text) {
   auto items = parse(text);
   State& s = state();
   s.items = std::move(items);
   s.text = std::string(text);
   applyToAll(s);
}

std::string TraceConfig::config() {
   return state().text;
}

void TraceConfig::reloadFromEnvironment() {
   State& s = state();
   installFromEnvironment(s);
   applyToAll(s);
}

std::uint32_t TraceConfig::enabledMask(std::string_view name) {
   std::uint32_t mask = 0;
   for (const auto& item : state().items) {
      if (item.name == "*" || item.name == name) {
         mask |= item.mask;
      }
   }
   return mask;
}

void TraceConfig::traceAdd(Trace* trace) {
   State& s = state();
   s.traces.push_back(trace);
   applyTo(s, trace);
}

void TraceConfig::traceDel(Trace* trace) {
   auto& traces = state().traces;
   auto it = std::find(traces.begin(), traces.end(), trace);
   if (it != traces.end()) {
      traces.erase(it);
   }
}

std::size_t TraceConfig::traces() {
   return state().traces.size();
}

}  // namespace Log
