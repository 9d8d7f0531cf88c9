#pragma once

#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

#include "Runner.h"
#include "State.h"

namespace sim {

// The outcome of a scenario run, as a reader wants it: the final state of the hardware (routes
// with their state and adjacency, adjacencies, decap mappings, pseudowire decap records, FEC
// requests, unprogrammed routes with their reasons), the operator log messages, the expectations
// that failed, and a one-line summary. Text for people, JSON for programs; both show the same
// state.
class Report {
 public:
   Report(const Runner& runner, State state) : runner_(runner), state_(std::move(state)) {}

   bool passed() const { return runner_.failures().empty(); }
   std::string summary() const;
   void writeText(std::ostream& os) const;
   nlohmann::json json() const;

   // The failures alone, one block each, for standard error.
   void writeFailures(std::ostream& os) const;

 private:
   std::size_t failedSteps() const;

   const Runner& runner_;
   State state_;
};

// JSON forms shared with other outputs.
nlohmann::json toJson(const Mpls::Hardware::L2Via& via);
nlohmann::json toJson(const State& state);

}  // namespace sim
