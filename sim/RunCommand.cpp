#include "RunCommand.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#include <nlohmann/json.hpp>

#include "Report.h"
#include "Runner.h"
#include "Scenario.h"
#include "Timeline.h"

#include <memory>

namespace sim {

namespace {

// Prints an error: its text on `err`, and with --json one JSON object on `out` as well, so that a
// caller reading standard output always finds a document.
int failWith(int code, const std::string& text, bool json, std::ostream& out, std::ostream& err) {
   err << "mplsfwd-sim: " << text << "\n";
   if (json) {
      out << nlohmann::json{{"error", text}, {"exitCode", code}}.dump(2) << "\n";
   }
   out.flush();
   err.flush();
   return code;
}

std::string stepName(const std::string& file, const Step* step) {
   return step ? file + ": step " + std::to_string(step->number) + " (" + step->op + ")" : file;
}

// Ends the process with exitRunError once the run has taken `seconds` of wall time, naming the step
// it was in; a run that finishes first stops it.
class WallClockLimit {
 public:
   WallClockLimit(double seconds, const Runner& runner, bool json, std::ostream& out,
                  std::ostream& err)
       : thread_([=, this, &runner, &out, &err] {
            std::unique_lock lock(mutex_);
            auto limit = std::chrono::duration<double>(seconds);
            if (cv_.wait_for(lock, limit, [this] { return done_; })) {
               return;
            }
            failWith(exitRunError,
                     stepName(runner.scenario().file, runner.currentStep()) +
                         ": stopped: the run took more than " + nlohmann::json(seconds).dump() +
                         " s of wall time (--max-wall)",
                     json, out, err);
            std::_Exit(exitRunError);
         }) {}
   ~WallClockLimit() {
      {
         std::lock_guard lock(mutex_);
         done_ = true;
      }
      cv_.notify_one();
      thread_.join();
   }

 private:
   std::mutex mutex_;
   std::condition_variable cv_;
   bool done_ = false;
   std::thread thread_;
};

}  // namespace

int runScenarioCommand(const std::string& file, bool json, std::ostream& out, std::ostream& err,
                       const std::string& timeline, double maxWallSeconds) {
   Scenario scenario;
   try {
      scenario = Scenario::load(file);
   } catch (const ScenarioError& e) {
      return failWith(exitBadScenario, std::string("bad scenario: ") + e.what(), json, out, err);
   }
   Runner runner(scenario);
   runner.invariantChecksIs(true);
   std::unique_ptr<Timeline> recorder;
   if (!timeline.empty()) {
      recorder = std::make_unique<Timeline>(runner.agent());
   }
   try {
      WallClockLimit limit(maxWallSeconds, runner, json, out, err);
      runner.run();
   } catch (const BudgetExceeded& e) {
      return failWith(exitRunError, stepName(file, runner.currentStep()) + ": stopped: " + e.what(),
                      json, out, err);
   } catch (const std::exception& e) {
      return failWith(exitRunError,
                      stepName(file, runner.currentStep()) + ": error while running: " + e.what(),
                      json, out, err);
   }
   if (recorder) {
      recorder->sample();
      if (!recorder->writeFile(timeline)) {
         err << "mplsfwd-sim: cannot write the timeline to " << timeline << "\n";
         return exitBadScenario;
      }
   }
   Report report(runner, snapshot(runner.agent()));
   if (json) {
      out << report.json().dump(2) << "\n";
   } else {
      report.writeText(out);
   }
   report.writeFailures(err);
   return report.passed() ? exitPassed : exitExpectationFailed;
}

}  // namespace sim
