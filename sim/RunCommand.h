#pragma once

#include <ostream>
#include <string>

namespace sim {

// Exit codes of `mplsfwd-sim run`.
inline constexpr int exitPassed = 0;
inline constexpr int exitExpectationFailed = 1;
inline constexpr int exitBadScenario = 2;
// A library or runtime error while the steps ran (an exception out of a step).
inline constexpr int exitRunError = 3;

// `mplsfwd-sim run FILE [--json] [--timeline CSV]`: loads and checks the scenario, runs it, writes
// the report (text or one JSON document) to `out` and the failures or the scenario error to `err`;
// with a timeline path, also the counts of the hardware at every change (Timeline.h). Answers the
// exit code.
int runScenarioCommand(const std::string& file, bool json, std::ostream& out, std::ostream& err,
                       const std::string& timeline = "");

}  // namespace sim
