#pragma once

#include <ostream>
#include <string>

namespace sim {

// Exit codes of `mplsfwd-sim run`.
inline constexpr int exitPassed = 0;
inline constexpr int exitExpectationFailed = 1;
inline constexpr int exitBadScenario = 2;
// The run stopped: a library or runtime error while the steps ran (an exception out of a step), or
// the work budget (simulated time past Scenario::simulatedTimeBudget(), or wall time past
// maxWallSeconds).
inline constexpr int exitRunError = 3;
inline constexpr double kDefaultMaxWallSeconds = 60.0;

// `mplsfwd-sim run FILE [--json] [--timeline CSV] [--max-wall SECONDS]`: loads and checks the
// scenario, runs it with the transit invariants checked after every runUntilIdle, writes the report
// (text or one JSON document) to `out` and the failures or the error to `err` (with --json, an
// error is also one JSON object {"error", "exitCode"} on `out`); with a timeline path, also the
// counts of the hardware at every change (Timeline.h). Answers the exit code. A run that takes more
// than maxWallSeconds of wall time ends the process with exitRunError.
int runScenarioCommand(const std::string& file, bool json, std::ostream& out, std::ostream& err,
                       const std::string& timeline = "",
                       double maxWallSeconds = kDefaultMaxWallSeconds);

}  // namespace sim
