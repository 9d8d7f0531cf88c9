#include "RunCommand.h"

#include "Report.h"
#include "Runner.h"
#include "Scenario.h"
#include "Timeline.h"

#include <memory>

namespace sim {

int runScenarioCommand(const std::string& file, bool json, std::ostream& out, std::ostream& err,
                       const std::string& timeline) {
   Scenario scenario;
   try {
      scenario = Scenario::load(file);
   } catch (const ScenarioError& e) {
      err << "mplsfwd-sim: bad scenario: " << e.what() << "\n";
      return exitBadScenario;
   }
   Runner runner(scenario);
   std::unique_ptr<Timeline> recorder;
   if (!timeline.empty()) {
      recorder = std::make_unique<Timeline>(runner.agent());
   }
   try {
      runner.run();
   } catch (const std::exception& e) {
      err << "mplsfwd-sim: " << file << ": error while running: " << e.what() << "\n";
      return exitRunError;
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
