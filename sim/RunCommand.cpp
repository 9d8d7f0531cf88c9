#include "RunCommand.h"

#include "Report.h"
#include "Runner.h"
#include "Scenario.h"

namespace sim {

int runScenarioCommand(const std::string& file, bool json, std::ostream& out, std::ostream& err) {
   Scenario scenario;
   try {
      scenario = Scenario::load(file);
   } catch (const ScenarioError& e) {
      err << "mplsfwd-sim: bad scenario: " << e.what() << "\n";
      return exitBadScenario;
   }
   Runner runner(scenario);
   try {
      runner.run();
   } catch (const std::exception& e) {
      err << "mplsfwd-sim: " << file << ": error while running: " << e.what() << "\n";
      return exitRunError;
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
