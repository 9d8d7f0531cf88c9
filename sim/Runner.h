#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <mplsfwd/log/TraceSink.h>

#include "Agent.h"
#include "ControlPlane.h"
#include "Forwarder.h"
#include "Scenario.h"
#include "TransitInvariants.h"

namespace sim {

// A run stopped by its work budget before a step that would take simulated time past it.
class BudgetExceeded : public std::runtime_error {
 public:
   explicit BudgetExceeded(const std::string& what) : std::runtime_error(what) {}
};

// One expectation that did not hold.
struct Failure {
   std::size_t step = 0;
   std::string stepText;
   std::string what;
   std::string expected;
   std::string found;
};

// Runs a parsed scenario: applies its config (toggles, trace settings) to the process, builds the
// agent, runs every step in order and records each expectation that fails; it goes on after a
// failure so that one run reports them all. On demand (invariantChecksIs), whenever a step has let
// the loop run until idle, it also checks the transit machine's whole-state invariants and records
// each violation as a failure of that step ("transit invariant"). The trace configuration, the
// toggles and the FastLog state are process-wide; the runner puts the trace configuration back to
// the environment's, and takes its toggles and the FastLog state back, when it goes.
class Runner {
 public:
   explicit Runner(const Scenario& scenario);
   ~Runner();
   Runner(const Runner&) = delete;
   Runner& operator=(const Runner&) = delete;

   // Runs the steps in order, up to and including step `lastStep` (1-based; all by default); throws
   // BudgetExceeded before a step that would move simulated time past the scenario's budget, and
   // lets a step's own exception through.
   void run(std::size_t lastStep = static_cast<std::size_t>(-1));
   // Whether runUntilIdle steps are followed by the transit invariant check (off by default).
   void invariantChecksIs(bool on) { invariantChecks_ = on; }

   // The step running now (null before and after the run); safe to read from another thread.
   const Step* currentStep() const { return current_.load(); }

   const Scenario& scenario() const { return scenario_; }
   Agent& agent() { return *agent_; }
   const Agent& agent() const { return *agent_; }
   ControlPlane& controlPlane() { return *controlPlane_; }

   // Called by expectation steps: records a failure of the current step unless `ok`.
   void check(bool ok, const std::string& what, const std::string& expected,
              const std::string& found);
   const std::vector<Failure>& failures() const { return failures_; }
   std::size_t checks() const { return checks_; }
   std::size_t expectations() const { return expectations_; }

   // The result of the latest `packet` step.
   ForwardResult& lastPacket() { return lastPacket_; }

   // Whether a trace line or a FastLog text so far contains `text`.
   bool traceSeen(const std::string& text) const;
   std::size_t traceLines() const { return traces_.size(); }

   // Every trace line and FastLog text of the run, in order, with the simulated time it was
   // written at; `source` is the handle and level ("MplsSm/5") or "FastLog".
   struct TimedLine {
      double time = 0.0;
      std::string source;
      std::string text;
   };
   const std::vector<TimedLine>& timedLines() const { return timed_; }

 private:
   class TeeTraceSink;

   const Scenario& scenario_;
   std::unique_ptr<Agent> agent_;
   std::unique_ptr<ControlPlane> controlPlane_;
   double now() const;
   void checkTransitInvariants();
   void checkPseudowireInvariants();

   Log::MemoryTraceSink traces_;
   std::vector<TimedLine> timed_;
   std::unique_ptr<TeeTraceSink> tee_;
   std::unique_ptr<Log::TraceSinkScope> traceScope_;
   std::atomic<const Step*> current_ = nullptr;
   std::vector<Failure> failures_;
   std::size_t checks_ = 0;
   std::size_t expectations_ = 0;
   ForwardResult lastPacket_;
   bool invariantChecks_ = false;
   AdjacencyIndexHistory transitHistory_;
};

}  // namespace sim
