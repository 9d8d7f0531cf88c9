// mplsfwd-sim: runs scenarios against the MPLS forwarding library on a simulated platform, and
// measures it at scale. Argument parsing only; the work is done in sim/.
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include <mplsfwd/sim/Explain.h>
#include <mplsfwd/sim/ForwardCommand.h>
#include <mplsfwd/sim/RunCommand.h>
#include <mplsfwd/sim/ScaleHarness.h>
#include <mplsfwd/version.h>

namespace {

// A one-line progress bar on standard error, redrawn in place.
void drawProgress(double fraction, const std::string& text) {
   constexpr int width = 40;
   int filled = static_cast<int>(fraction * width + 0.5);
   std::string bar(static_cast<std::size_t>(filled), '#');
   bar.resize(width, '.');
   std::fprintf(stderr, "\r[%s] %3d%% %-12s", bar.c_str(), static_cast<int>(fraction * 100 + 0.5),
                text.c_str());
   if (fraction >= 1.0) {
      std::fprintf(stderr, "\n");
   }
   std::fflush(stderr);
}

}  // namespace

int main(int argc, char** argv) {
   CLI::App app{"mplsfwd-sim: the MPLS forwarding library on a simulated platform"};
   app.require_subcommand(1);
   app.set_version_flag("--version", "mplsfwd-sim " MPLSFWD_VERSION_STRING);

   std::string file;
   bool runJson = false;
   auto* run =
       app.add_subcommand("run", "Run a JSON scenario and report what the library programmed");
   run->add_option("FILE", file, "Scenario file (see docs/scenario-format.md)")->required();
   run->add_flag("--json", runJson, "Print the final state as one JSON document");
   std::string runTimeline;
   run->add_option("--timeline", runTimeline,
                   "Write the counts of the hardware at every change to this CSV file");

   std::string explainFile;
   std::uint64_t explainLabel = 0;
   std::optional<std::size_t> afterStep;
   bool explainJson = false;
   auto* explain = app.add_subcommand(
       "explain", "Run a scenario and say where one label stands and what holds it back");
   explain->add_option("FILE", explainFile, "Scenario file")->required();
   explain->add_option("--label", explainLabel, "The route's label (0..1048575)")->required();
   explain->add_option("--after-step", afterStep, "Stop after this step (1-based)");
   explain->add_flag("--json", explainJson, "Print the answer as one JSON document");

   sim::ForwardCommandOptions fwd;
   auto* forward = app.add_subcommand(
       "forward", "Replay a scenario, then forward the frames of a pcap through the chip");
   forward->add_option("FILE", fwd.scenario, "Scenario file")->required();
   forward->add_option("--in", fwd.in, "Input pcap (Ethernet frames)")->required();
   forward->add_option("--out", fwd.out, "Output pcap: the frames that leave, in input order")
       ->required();
   forward->add_option("--report", fwd.report,
                       "Per-frame report file, drops with their reasons (default: stdout)");
   forward->add_option("--ingress", fwd.ingress, "Ingress port of every frame")
       ->capture_default_str();

   double maxWall = sim::kDefaultMaxWallSeconds;
   run->add_option("--max-wall", maxWall, "Stop with exit code 3 after this many seconds")
       ->check(CLI::PositiveNumber)
       ->capture_default_str();

   // Counts are unsigned: "-5" would wrap around instead of being refused.
   CLI::Validator nonNegative(
       [](std::string& text) {
          return text.find('-') == std::string::npos ? std::string()
                                                     : "a count or time 0 or more, found " + text;
       },
       "NON-NEGATIVE");
   sim::ScaleOptions scale;
   bool benchJson = false;
   auto* bench =
       app.add_subcommand("bench", "Measure the library on a synthetic LFIB in real time");
   auto* routesOption = bench->add_option("--routes", scale.routes, "Transit routes")
                            ->check(nonNegative)
                            ->capture_default_str();
   bench->add_option("--via-sets", scale.viaSets, "ECMP via sets the routes share")
       ->check(nonNegative)
       ->capture_default_str();
   bench->add_option("--next-hops", scale.nextHops, "Resolved next hops")
       ->check(nonNegative)
       ->capture_default_str();
   bench->add_option("--width", scale.width, "Vias per via set")
       ->check(nonNegative)
       ->capture_default_str();
   auto* decapOption =
       bench
           ->add_option("--decap-routes", scale.decapRoutes,
                        "Decap routes (VRF and VLAN); alone, no transit routes unless --routes")
           ->check(nonNegative)
           ->capture_default_str();
   bench->add_flag("--in-place-update", scale.inPlaceUpdate,
                   "Turn the InPlaceMplsAdjacencyUpdate toggle on");
   bench->add_option("--timeout", scale.timeout, "Give up after this many seconds")
       ->check(nonNegative)
       ->capture_default_str();
   bench->add_flag("--restart", scale.restart,
                   "Once converged, restart the agent and measure its way back");
   bench->add_flag("--json", benchJson, "Print one JSON object");
   bench->add_option("--timeline", scale.timeline,
                     "Write the convergence timeline (real time) to this CSV file");

   // A first word that is no option and no command: name the commands there are.
   if (argc > 1 && argv[1][0] != '-') {
      std::string known;
      bool found = false;
      for (const CLI::App* command : {run, explain, forward, bench}) {
         found = found || command->get_name() == argv[1];
         known += (known.empty() ? "" : ", ") + command->get_name();
      }
      if (!found) {
         std::cerr << "mplsfwd-sim: unknown command '" << argv[1] << "'; known commands: " << known
                   << "\n";
         return sim::exitBadScenario;
      }
   }

   try {
      app.parse(argc, argv);
   } catch (const CLI::ParseError& e) {
      int rc = app.exit(e);
      return rc == 0 ? 0 : sim::exitBadScenario;
   }

   if (*forward) {
      return sim::forwardCommand(fwd, std::cout, std::cerr);
   }
   if (*run) {
      return sim::runScenarioCommand(file, runJson, std::cout, std::cerr, runTimeline, maxWall);
   }
   if (*explain) {
      return sim::explainCommand(explainFile, explainLabel, afterStep, explainJson, std::cout,
                                 std::cerr);
   }
   if (decapOption->count() > 0 && routesOption->count() == 0) {
      scale.routes = 0;
   }
   try {
      sim::ScaleHarness::validate(scale);
   } catch (const std::exception& e) {
      std::cerr << "mplsfwd-sim bench: " << e.what() << "\n";
      return sim::exitBadScenario;
   }
   sim::ScaleHarness harness(scale);
   sim::ScaleHarness::Progress progress;
   if (isatty(STDERR_FILENO)) {
      progress = drawProgress;
   }
   sim::ScaleResult result = harness.run(progress);
   if (!scale.timeline.empty() && !result.timelineWritten) {
      std::cerr << "mplsfwd-sim bench: cannot write the timeline to " << scale.timeline << "\n";
   }
   if (benchJson) {
      std::cout << result.json().dump() << "\n";
   } else {
      std::cout << result.text();
   }
   return result.converged ? 0 : 1;
}
