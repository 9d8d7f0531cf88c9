#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Agent.h"
#include "Forwarder.h"

namespace sim {

class Runner;

// A scenario that cannot run: not valid JSON, an unknown operation or field, a value of the wrong
// type or out of range. The text names the file, the step (or the config), the field and what was
// expected, e.g. "x.json: step 4 (route): field 'label': expected a label 0..1048575, found
// 1048576".
class ScenarioError : public std::runtime_error {
 public:
   explicit ScenarioError(const std::string& what) : std::runtime_error(what) {}
};

// Everything a scenario's "config" sets up before the agent is built.
struct ScenarioConfig {
   AgentOptions agent;
   std::optional<std::size_t> routeCapacity;
   std::optional<std::size_t> l2AdjacencyCapacity;
   std::optional<std::size_t> fecCapacity;
   std::optional<std::size_t> decapCapacity;
   double chipAnswerDelay = 0.0;
   double fecAnswerDelay = 0.0;
   std::vector<std::pair<std::string, bool>> toggles;
   // Trace handles and levels to enable ("MplsSm/0-9,MplsDecapSm/5"), and whether enabled lines
   // are also written to standard error.
   std::string trace;
   bool traceToStderr = false;
   bool fastLog = false;
   // The longest stretch of simulated time one runUntilIdle step may cover.
   double idleLimit = 60.0;
   // Whether `mplsfwd-sim run` checks the transit invariants after each runUntilIdle step.
   bool transitInvariants = true;
   // The same for the pseudowire decap machine's invariants.
   bool pseudowireInvariants = true;
   // The router MAC and TTL mode of the packet steps' forwarding model.
   ForwarderOptions forwarder;
};

// One step of a scenario, validated and ready to run.
struct Step {
   std::size_t number = 0;  // 1-based position in "steps"
   std::string op;
   std::string text;  // the step as one line, for reports
   bool expectation = false;
   // The most simulated time the step may move (advance, runUntilIdle), in seconds.
   double seconds = 0.0;
   std::function<void(Runner&)> run;
};

// The work budget of a run: a scenario may cover at most this many of its shortest retry interval
// in simulated time, so that a tiny interval over a long stretch cannot keep the run going for
// hours (each retry pass costs real time).
inline constexpr double kMaxRetryPasses = 100000;

// Scenario files nest objects and arrays at most this deep.
inline constexpr std::size_t kMaxJsonDepth = 64;

// A parsed scenario. Parsing validates every step before anything runs, so a bad scenario never
// runs half-way.
struct Scenario {
   std::string file;
   std::string name;
   std::string description;
   ScenarioConfig config;
   std::vector<Step> steps;

   // The shortest retry interval the agent will use (the configured ones or the library's), and
   // the simulated time the scenario may cover: kMaxRetryPasses of that interval.
   double shortestRetryInterval() const;
   double simulatedTimeBudget() const { return kMaxRetryPasses * shortestRetryInterval(); }

   // Throws ScenarioError.
   static Scenario parse(const std::string& text, const std::string& file);
   static Scenario load(const std::string& path);
};

// The operation names a scenario may use, for help texts.
std::vector<std::string> scenarioOperations();

}  // namespace sim
