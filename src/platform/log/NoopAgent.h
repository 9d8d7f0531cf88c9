#pragma once

namespace Log {

// The environment variable that makes this process a no-op agent: helper operations that a
// platform did not implement then return quietly instead of aborting.
inline constexpr const char* noopAgentVariable = "FAL_NOOP_AGENT";

// True when FAL_NOOP_AGENT is set, whatever its value (the empty value included). The environment
// is read at every call: the question is asked only on paths that are about to abort, and tests
// set and unset the variable between cases.
bool noopAgent();

}  // namespace Log
