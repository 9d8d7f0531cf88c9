#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Log {

class Trace;

// Which trace handles are enabled at which levels, and the registry of live handles.
//
// The configuration is a text of comma-separated items:
//   Name/levels   enables `levels` of every handle named Name;
//   levels        (an item that starts with a digit) adds levels to the name of the item before;
//   Name          alone enables all ten levels of Name;
// where `levels` is a level (0 to 9) or a range "a-b" (a <= b), and the name "*" stands for every
// handle. Items add up. Example: "MplsSm/0-9,MplsDecapSm/5,LFibSm/1,3-4" enables MplsSm fully,
// MplsDecapSm at 5 and LFibSm at 1, 3 and 4. Blanks around items are ignored; the empty text
// enables nothing.
//
// At first use the configuration is read from the environment variable MPLSFWD_TRACE; a text that
// does not parse there is reported on standard error once and ignored (nothing enabled). configIs
// replaces the configuration and throws Kor::ParseError on a bad text, leaving the old one in
// force. Every change recomputes the cached level mask of each live handle.
class TraceConfig {
 public:
   static constexpr const char* environmentVariable = "MPLSFWD_TRACE";

   // Replaces the configuration; throws Kor::ParseError and changes nothing if `text` is bad.
   static void configIs(std::string_view text);
   static std::string config();
   // Re-reads MPLSFWD_TRACE (tests that change the environment call it).
   static void reloadFromEnvironment();

   // The level mask that the current configuration gives to a handle named `name`.
   static std::uint32_t enabledMask(std::string_view name);

   // Parses a configuration text into (name, mask) items; throws Kor::ParseError.
   struct Item {
      std::string name;
      std::uint32_t mask = 0;
   };
   static std::vector<Item> parse(std::string_view text);

   // Called by Trace's constructor and destructor.
   static void traceAdd(Trace* trace);
   static void traceDel(Trace* trace);
   static std::size_t traces();
};

}  // namespace Log
