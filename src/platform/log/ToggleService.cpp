#include "ToggleService.h"

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/kor/TextScan.h>
#include <cstdio>
#include <cstdlib>

namespace Log {

namespace {

using Toggles = Kor::OrderedMap<std::string, bool, std::less<>>;

[[noreturn]] void fail(std::string_view text, const std::string& why) {
   throw Kor::ParseError(Kor::concat({"toggle configuration '", text, "': ", why}));
}

bool parseState(std::string_view whole, std::string_view v) {
   for (const char* on : {"on", "true", "yes", "enabled", "1"}) {
      if (v == on) {
         return true;
      }
   }
   for (const char* off : {"off", "false", "no", "disabled", "0"}) {
      if (v == off) {
         return false;
      }
   }
   fail(whole, Kor::concat({"'", v, "' is not a toggle state"}));
}

void installFromEnvironment(Toggles& toggles) {
   toggles.clear();
   const char* env = std::getenv(ToggleService::environmentVariable);
   if (env == nullptr) {
      return;
   }
   try {
      for (auto& [name, on] : ToggleService::parse(env)) {
         toggles[name] = on;
      }
   } catch (const Kor::ParseError& e) {
      std::fprintf(stderr, "%s ignored: %s\n", ToggleService::environmentVariable, e.what());
   }
}

Toggles& configured() {
   static Toggles* t = [] {
      auto* fresh = new Toggles;
      installFromEnvironment(*fresh);
      return fresh;
   }();
   return *t;
}

}  // namespace

std::uint32_t getToggleState(std::string_view name, bool dflt) {
   auto state = ToggleService::toggle(name);
   if (!state) {
      return dflt ? toggleStateBit : 0;
   }
   return toggleValidBit | (*state ? toggleStateBit : 0);
}

void ToggleService::toggleIs(std::string_view name, bool on) {
   auto& t = configured();
   auto it = t.find(name);
   if (it == t.end()) {
      t.emplace(std::string(name), on);
   } else {
      it->second = on;
   }
}

void ToggleService::toggleDel(std::string_view name) {
   auto& t = configured();
   auto it = t.find(name);
   if (it != t.end()) {
      t.erase(it);
   }
}

void ToggleService::toggleDelAll() {
   configured().clear();
}

std::optional<bool> ToggleService::toggle(std::string_view name) {
   const auto& t = configured();
   auto it = t.find(name);
   if (it == t.end()) {
      return std::nullopt;
   }
   return it->second;
}

std::vector<std::pair<std::string, bool>> ToggleService::toggles() {
   const auto& t = configured();
   return {t.begin(), t.end()};
}

void ToggleService::configIs(std::string_view text) {
   auto items = parse(text);
   auto& t = configured();
   t.clear();
   for (auto& [name, on] : items) {
      t[name] = on;
   }
}

void ToggleService::reloadFromEnvironment() {
   installFromEnvironment(configured());
}

std::vector<std::pair<std::string, bool>> ToggleService::parse(std::string_view text) {
   std::vector<std::pair<std::string, bool>> items;
   if (Kor::trimBlanks(text).empty()) {
      return items;
   }
   std::string_view rest = text;
   while (true) {
      auto comma = rest.find(',');
      std::string_view part = Kor::trimBlanks(rest.substr(0, comma));
      if (part.empty()) {
         fail(text, "empty item");
      }
      auto eq = part.find('=');
      std::string_view name = Kor::trimBlanks(part.substr(0, eq));
      if (name.empty()) {
         fail(text, Kor::concat({"item '", part, "' has no toggle name"}));
      }
      bool on = eq == std::string_view::npos
                    ? true
                    : parseState(text, Kor::trimBlanks(part.substr(eq + 1)));
      items.emplace_back(std::string(name), on);
      if (comma == std::string_view::npos) {
         break;
      }
      rest = rest.substr(comma + 1);
   }
   return items;
}

}  // namespace Log
