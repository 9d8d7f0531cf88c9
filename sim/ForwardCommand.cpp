#include "ForwardCommand.h"

#include <fstream>

#include "Forwarder.h"
#include "Pcap.h"
#include "Report.h"
#include "RunCommand.h"
#include "Runner.h"
#include "Scenario.h"

namespace sim {

int forwardCommand(const ForwardCommandOptions& o, std::ostream& out, std::ostream& err) {
   Scenario scenario;
   Wire::IntfId ingress;
   try {
      scenario = Scenario::load(o.scenario);
      ingress = Wire::IntfId::parse(o.ingress);
   } catch (const std::exception& e) {
      err << "mplsfwd-sim forward: bad input: " << e.what() << "\n";
      return exitBadScenario;
   }
   Runner runner(scenario);
   try {
      runner.run();
   } catch (const std::exception& e) {
      err << "mplsfwd-sim: " << o.scenario << ": error while running: " << e.what() << "\n";
      return exitRunError;
   }
   int rc = runner.failures().empty() ? exitPassed : exitExpectationFailed;
   if (rc != exitPassed) {
      Report(runner, snapshot(runner.agent())).writeFailures(err);
   }
   std::ofstream reportFile;
   if (!o.report.empty()) {
      reportFile.open(o.report);
      if (!reportFile) {
         err << "mplsfwd-sim forward: " << o.report << ": cannot be written\n";
         return exitBadScenario;
      }
   }
   std::ostream& report = o.report.empty() ? out : reportFile;
   Forwarder forwarder(runner.agent(), scenario.config.forwarder);
   std::size_t sent = 0;
   std::size_t dropped = 0;
   try {
      PcapWriter writer(o.out);
      readPcapFile(o.in, [&](std::size_t number, std::span<const std::uint8_t> bytes) {
         ForwardResult r = forwarder.forwardBytes(bytes, ingress);
         report << "frame " << number << ": " << r.text() << "\n";
         if (r.dropped()) {
            ++dropped;
         } else {
            writer.write(r.frame.bytes());
            ++sent;
         }
      });
   } catch (const PcapError& e) {
      err << "mplsfwd-sim forward: " << e.what() << "\n";
      return exitBadScenario;
   }
   err << "mplsfwd-sim forward: " << sent << " frames written to " << o.out << ", " << dropped
       << " dropped\n";
   return rc;
}

}  // namespace sim
