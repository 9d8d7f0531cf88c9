#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Log {

// The bits of a toggle answer word.
// toggleStateBit: the toggle's state (on when set).
// toggleValidBit: the state was found in the configuration. When it is missing the toggle is not
// configured and the state bit is just the default the caller passed in.
inline constexpr std::uint32_t toggleStateBit = 1;
inline constexpr std::uint32_t toggleValidBit = 2;

// Answers feature-toggle questions from the process's toggle configuration. A configured toggle
// answers toggleValidBit | (state ? toggleStateBit : 0); an unconfigured one answers
// (dflt ? toggleStateBit : 0), so a caller that asked with default off can tell "off" from "not
// known" and ask again with another default.
std::uint32_t getToggleState(std::string_view name, bool dflt);

// The toggle configuration: names with on/off states. At first use it is read from the environment
// variable MPLSFWD_TOGGLES, a text of comma-separated items "Name=value" where value is one of
// on/off, true/false, yes/no, enabled/disabled, 1/0 (a bare "Name" means on), e.g.
// "InPlaceMplsAdjacencyUpdate=on,Other=off". A text that does not parse there is reported on
// standard error once and ignored. The agent assembly and scenarios set toggles through toggleIs.
// Changing a toggle does not reach callers that cached an earlier answer. One thread only.
class ToggleService {
 public:
   static constexpr const char* environmentVariable = "MPLSFWD_TOGGLES";

   static void toggleIs(std::string_view name, bool on);
   static void toggleDel(std::string_view name);
   static void toggleDelAll();
   // The configured state, or nothing when the toggle is not configured.
   static std::optional<bool> toggle(std::string_view name);
   // The configured toggles, by name.
   static std::vector<std::pair<std::string, bool>> toggles();

   // Replaces the whole configuration with `text` (format above); throws Kor::ParseError and
   // changes nothing when it does not parse.
   static void configIs(std::string_view text);
   // Replaces the configuration with MPLSFWD_TOGGLES as it is now (tests that change the
   // environment call it).
   static void reloadFromEnvironment();

   static std::vector<std::pair<std::string, bool>> parse(std::string_view text);
};

}  // namespace Log
