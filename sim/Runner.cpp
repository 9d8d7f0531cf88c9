#include "Runner.h"

#include "PseudowireInvariants.h"

#include <cstdio>
#include <sstream>

#include <mplsfwd/log/FastLog.h>
#include <mplsfwd/log/ToggleService.h>
#include <mplsfwd/log/TraceConfig.h>

namespace sim {

// Keeps every enabled trace line for the expectations, stamped with the simulated time, and
// echoes it with its time to standard error when asked.
class Runner::TeeTraceSink : public Log::TraceSink {
 public:
   TeeTraceSink(Runner& runner, bool echo) : runner_(runner), echo_(echo) {}
   void onTrace(const Log::TraceRecord& record) override {
      runner_.traces_.onTrace(record);
      double t = runner_.now();
      runner_.timed_.push_back({t, std::string(record.handle) + "/" + std::to_string(record.level),
                                std::string(record.text)});
      if (echo_) {
         std::fprintf(stderr, "[%.6f] %s\n", t, Log::StderrTraceSink::lineText(record).c_str());
      }
   }

 private:
   Runner& runner_;
   bool echo_;
};

double Runner::now() const {
   return agent_ ? agent_->now() : 0.0;
}

Runner::Runner(const Scenario& scenario) : scenario_(scenario) {
   const ScenarioConfig& c = scenario_.config;
   for (const auto& [name, on] : c.toggles) {
      Log::ToggleService::toggleIs(name, on);
   }
   // A scenario without trace settings leaves the environment's (MPLSFWD_TRACE) in force, and
   // those lines are for the user's eyes: they go to standard error as usual.
   if (!c.trace.empty()) {
      Log::TraceConfig::configIs(c.trace);
   }
   tee_ = std::make_unique<TeeTraceSink>(*this, c.traceToStderr || c.trace.empty());
   traceScope_ = std::make_unique<Log::TraceSinkScope>(*tee_);
   Log::FastLog::instance().clear();
   Log::FastLog::instance().enabledIs(c.fastLog);
   Log::FastLog::instance().listenerIs([this](std::string_view text) {
      timed_.push_back({now(), "FastLog", std::string(text)});
   });

   agent_ = std::make_unique<Agent>(c.agent);
   controlPlane_ = std::make_unique<ControlPlane>(*agent_);
   Chip& chip = agent_->chip();
   if (c.routeCapacity) {
      chip.routeCapacityIs(*c.routeCapacity);
   }
   if (c.l2AdjacencyCapacity) {
      chip.l2AdjacencyCapacityIs(*c.l2AdjacencyCapacity);
   }
   if (c.fecCapacity) {
      agent_->fecIdService().capacityIs(*c.fecCapacity);
   }
   if (c.decapCapacity) {
      agent_->decapHelper()->capacityIs(*c.decapCapacity);
   }
   chip.answerDelayIs(c.chipAnswerDelay);
   agent_->fecIdService().answerDelayIs(c.fecAnswerDelay);
}

Runner::~Runner() {
   controlPlane_.reset();
   agent_.reset();
   traceScope_.reset();
   if (!scenario_.config.trace.empty()) {
      Log::TraceConfig::reloadFromEnvironment();
   }
   Log::FastLog::instance().enabledIs(false);
   Log::FastLog::instance().listenerIs(nullptr);
   Log::FastLog::instance().clear();
   for (const auto& [name, on] : scenario_.config.toggles) {
      Log::ToggleService::toggleDel(name);
   }
}

void Runner::run(std::size_t lastStep) {
   const double budget = scenario_.simulatedTimeBudget();
   for (const auto& step : scenario_.steps) {
      if (step.number > lastStep) {
         break;
      }
      current_ = &step;
      if (step.seconds > 0 && agent_->now() + step.seconds > budget) {
         std::ostringstream os;
         os << "work budget: this step would take simulated time to "
            << agent_->now() + step.seconds << " s, past " << budget << " s (" << kMaxRetryPasses
            << " times the shortest retry interval, " << scenario_.shortestRetryInterval() << " s)";
         throw BudgetExceeded(os.str());
      }
      if (step.expectation) {
         ++expectations_;
      }
      step.run(*this);
      if (invariantChecks_ && step.op == "runUntilIdle") {
         if (scenario_.config.transitInvariants) {
            checkTransitInvariants();
         }
         if (scenario_.config.pseudowireInvariants) {
            checkPseudowireInvariants();
         }
      }
   }
   current_ = nullptr;
}

void Runner::checkTransitInvariants() {
   for (auto& line : transitInvariantViolations(transitParts(*agent_, transitHistory_))) {
      check(false, "transit invariant", "holds", line);
   }
}

void Runner::checkPseudowireInvariants() {
   for (auto& line : pseudowireInvariantViolations(pseudowireParts(*agent_))) {
      check(false, "pseudowire invariant", "holds", line);
   }
}

void Runner::check(bool ok, const std::string& what, const std::string& expected,
                   const std::string& found) {
   ++checks_;
   if (ok) {
      return;
   }
   Failure f;
   const Step* step = current_.load();
   f.step = step ? step->number : 0;
   f.stepText = step ? step->text : "";
   f.what = what;
   f.expected = expected;
   f.found = found;
   failures_.push_back(std::move(f));
}

bool Runner::traceSeen(const std::string& text) const {
   if (traces_.contains(text)) {
      return true;
   }
   bool seen = false;
   Log::FastLog::instance().forEach([&](const std::string& t) {
      if (!seen && t.find(text) != std::string::npos) {
         seen = true;
      }
   });
   return seen;
}

}  // namespace sim
