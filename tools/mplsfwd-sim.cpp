// mplsfwd-sim: runs scenarios against the MPLS forwarding library on a simulated platform, and
// measures it at scale. Argument parsing only; the work is done in sim/.
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include <mplsfwd/sim/RunCommand.h>
#include <mplsfwd/sim/ScaleHarness.h>

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

   std::string file;
   bool runJson = false;
   auto* run =
       app.add_subcommand("run", "Run a JSON scenario and report what the library programmed");
   run->add_option("FILE", file, "Scenario file (see docs/scenario-format.md)")->required();
   run->add_flag("--json", runJson, "Print the final state as one JSON document");

   sim::ScaleOptions scale;
   bool benchJson = false;
   auto* bench =
       app.add_subcommand("bench", "Measure the library on a synthetic LFIB in real time");
   auto* routesOption =
       bench->add_option("--routes", scale.routes, "Transit routes")->capture_default_str();
   bench->add_option("--via-sets", scale.viaSets, "ECMP via sets the routes share")
       ->capture_default_str();
   bench->add_option("--next-hops", scale.nextHops, "Resolved next hops")->capture_default_str();
   bench->add_option("--width", scale.width, "Vias per via set")->capture_default_str();
   auto* decapOption =
       bench
           ->add_option("--decap-routes", scale.decapRoutes,
                        "Decap routes (VRF and VLAN); alone, no transit routes unless --routes")
           ->capture_default_str();
   bench->add_flag("--in-place-update", scale.inPlaceUpdate,
                   "Turn the InPlaceMplsAdjacencyUpdate toggle on");
   bench->add_option("--timeout", scale.timeout, "Give up after this many seconds")
       ->capture_default_str();
   bench->add_flag("--restart", scale.restart,
                   "Once converged, restart the agent and measure its way back");
   bench->add_flag("--json", benchJson, "Print one JSON object");

   try {
      app.parse(argc, argv);
   } catch (const CLI::ParseError& e) {
      int rc = app.exit(e);
      return rc == 0 ? 0 : sim::exitBadScenario;
   }

   if (*run) {
      return sim::runScenarioCommand(file, runJson, std::cout, std::cerr);
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
   if (benchJson) {
      std::cout << result.json().dump() << "\n";
   } else {
      std::cout << result.text();
   }
   return result.converged ? 0 : 1;
}
