#include "ScaleHarness.h"

#include "Timeline.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

#include <mplsfwd/log/ToggleService.h>

namespace sim {

namespace {

constexpr std::uint32_t kFirstLabel = 16;
constexpr std::size_t kLabels = Wire::MplsLabel::kMax + 1 - kFirstLabel;

double since(std::chrono::steady_clock::time_point start) {
   return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Processor time of this thread: the agent runs on it, and it does not advance while the loop
// sleeps.
double threadCpuSeconds() {
   timespec ts{};
   clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
   return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

Wire::IpGenAddr nextHopAddr(std::size_t n) {
   std::uint32_t v = (10u << 24) | static_cast<std::uint32_t>(n + 1);
   return Wire::IpGenAddr(Wire::IpAddr(v));
}

Wire::EthAddr nextHopMac(std::size_t n, std::uint8_t generation) {
   return Wire::EthAddr(Wire::EthAddr::Bytes{0x02, generation, static_cast<std::uint8_t>(n >> 16),
                                             static_cast<std::uint8_t>(n >> 8),
                                             static_cast<std::uint8_t>(n), 0x01});
}

Wire::IntfId nextHopIntf(std::size_t n) {
   return Wire::IntfId::ethernet(static_cast<std::uint32_t>(1 + n % 48));
}

}  // namespace

nlohmann::json ScaleResult::json() const {
   return nlohmann::json{{"routes", routes},
                         {"decapRoutes", decapRoutes},
                         {"viaSets", viaSets},
                         {"nextHops", nextHops},
                         {"inPlaceUpdate", inPlaceUpdate},
                         {"converged", converged},
                         {"publishSeconds", publishSeconds},
                         {"convergeSeconds", convergeSeconds},
                         {"publishCpuSeconds", publishCpuSeconds},
                         {"convergeCpuSeconds", convergeCpuSeconds},
                         {"routesPerSecond", routesPerSecond},
                         {"bytesPerRoute", bytesPerRoute},
                         {"longestPassMs", longestPassMs},
                         {"longestPassCpuMs", longestPassCpuMs},
                         {"decapSeconds", decapSeconds},
                         {"decapCpuSeconds", decapCpuSeconds},
                         {"decapRoutesPerSecond", decapRoutesPerSecond},
                         {"decapLongestRunMs", decapLongestRunMs},
                         {"decapLongestRunCpuMs", decapLongestRunCpuMs},
                         {"decapDrainSeconds", decapDrainSeconds},
                         {"decapDrainCpuSeconds", decapDrainCpuSeconds},
                         {"decapDrainRoutesPerSecond", decapDrainRoutesPerSecond},
                         {"reviewPasses", reviewPasses},
                         {"l2Adjacencies", l2Adjacencies},
                         {"macChangeMs", macChangeMs},
                         {"macChangeWorkMs", macChangeWorkMs},
                         {"macChangeConverged", macChangeConverged},
                         {"macChangeRouteWrites", macChangeRouteWrites},
                         {"macChangeAdjacencyWrites", macChangeAdjacencyWrites},
                         {"forwardedPackets", forwardedPackets},
                         {"packetsPerSecond", packetsPerSecond},
                         {"restarted", restarted},
                         {"restartConverged", restartConverged},
                         {"restartSeconds", restartSeconds},
                         {"restartCpuSeconds", restartCpuSeconds},
                         {"restartChipWrites", restartChipWrites},
                         {"restartRouteWrites", restartRouteWrites},
                         {"restartRouteDeletes", restartRouteDeletes},
                         {"restartAdjacencyWrites", restartAdjacencyWrites},
                         {"restartAdjacencyDeletes", restartAdjacencyDeletes},
                         {"timeMode", "monotonic"}};
}

std::string ScaleResult::text() const {
   std::ostringstream os;
   os << "routes " << routes << " transit + " << decapRoutes << " decap, via sets " << viaSets
      << ", next hops " << nextHops << ", in-place update " << (inPlaceUpdate ? "on" : "off")
      << "\n";
   os << "converged          " << (converged ? "yes" : "NO (timed out)") << "\n";
   os << "publish            " << publishSeconds << " s (" << publishCpuSeconds
      << " s processor time)\n";
   os << "converge           " << convergeSeconds << " s real time (" << convergeCpuSeconds
      << " s processor time)\n";
   os << "routes per second  " << static_cast<std::uint64_t>(routesPerSecond) << "\n";
   os << "bytes per route    " << static_cast<std::uint64_t>(bytesPerRoute) << "\n";
   os << "longest pass       " << longestPassMs << " ms (" << longestPassCpuMs
      << " ms processor time) over " << reviewPasses << " passes\n";
   if (decapRoutes > 0) {
      os << "decap              " << decapSeconds << " s (" << decapCpuSeconds
         << " s processor time), " << static_cast<std::uint64_t>(decapRoutesPerSecond)
         << " routes/s, longest task run " << decapLongestRunMs << " ms (" << decapLongestRunCpuMs
         << " ms processor time)\n";
      os << "decap backlog task " << decapDrainSeconds << " s (" << decapDrainCpuSeconds
         << " s processor time), " << static_cast<std::uint64_t>(decapDrainRoutesPerSecond)
         << " routes/s\n";
   }
   os << "L2 adjacencies     " << l2Adjacencies << "\n";
   if (routes > 0) {
      os << "MAC change         " << macChangeMs << " ms (" << macChangeWorkMs << " ms of work)"
         << (macChangeConverged ? "" : " (NOT converged)") << ", " << macChangeRouteWrites
         << " route writes, " << macChangeAdjacencyWrites << " adjacency writes\n";
   }
   os << "forwarding         " << static_cast<std::uint64_t>(packetsPerSecond)
      << " packets per second (model, " << forwardedPackets << " frames)\n";
   if (restarted) {
      os << "restart            " << restartSeconds << " s (" << restartCpuSeconds
         << " s processor time)" << (restartConverged ? "" : " (NOT converged)") << ", "
         << restartChipWrites << " chip operations: routes " << restartRouteWrites << " written, "
         << restartRouteDeletes << " deleted; adjacencies " << restartAdjacencyWrites
         << " written, " << restartAdjacencyDeletes << " deleted\n";
   }
   return os.str();
}

ScaleHarness::ScaleHarness(ScaleOptions options) : options_(options) {
   validate(options_);
}

ScaleHarness::~ScaleHarness() {
   cp_.reset();
   agent_.reset();
   Log::ToggleService::toggleDel("InPlaceMplsAdjacencyUpdate");
}

void ScaleHarness::validate(const ScaleOptions& o) {
   if (o.routes + o.decapRoutes > kLabels) {
      throw std::invalid_argument("routes + decap routes must be at most " +
                                  std::to_string(kLabels) + " (labels 16..1048575)");
   }
   if (o.routes > 0 && o.viaSets == 0) {
      throw std::invalid_argument("via sets must be at least 1");
   }
   if (o.nextHops == 0 || o.nextHops > 0xffffff) {
      throw std::invalid_argument("next hops must be 1..16777215");
   }
   if (o.width == 0 || o.width > 128) {
      throw std::invalid_argument("ECMP width must be 1..128");
   }
}

std::size_t ScaleHarness::residentBytes() {
   std::FILE* f = std::fopen("/proc/self/statm", "r");
   if (!f) {
      return 0;
   }
   unsigned long size = 0;
   unsigned long resident = 0;
   int n = std::fscanf(f, "%lu %lu", &size, &resident);
   std::fclose(f);
   if (n != 2) {
      return 0;
   }
   return static_cast<std::size_t>(resident) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void ScaleHarness::publishNeighbors() {
   for (std::size_t n = 0; n < options_.nextHops; ++n) {
      cp_->neighbor(nextHopAddr(n), nextHopIntf(n), nextHopMac(n, 0),
                    Bridging::VlanId(static_cast<std::uint16_t>(10 + n % 4000)), nextHopIntf(n));
   }
}

void ScaleHarness::publishLfib(const Progress& progress) {
   const std::size_t width = std::min(options_.width, options_.nextHops);
   for (std::size_t s = 0; s < options_.viaSets && options_.routes > 0; ++s) {
      std::vector<Mpls::LfibViaKey> vias;
      for (std::size_t j = 0; j < width; ++j) {
         std::size_t n = (s * width + j) % options_.nextHops;
         auto index = static_cast<std::uint32_t>(s * width + j);
         Wire::MplsLabelOperation labels{
             Wire::MplsLabel(static_cast<std::uint32_t>(1000 + s % 100000))};
         vias.push_back(cp_->mplsVia(index, nextHopAddr(n), nextHopIntf(n), labels));
      }
      cp_->viaSet(Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, static_cast<std::uint32_t>(s),
                                      Mpls::lfibSourceStatic_),
                  vias);
   }
   const std::size_t total = options_.routes + options_.decapRoutes;
   const std::size_t step = std::max<std::size_t>(1, total / 100);
   for (std::size_t i = 0; i < options_.routes; ++i) {
      Mpls::LfibViaSetKey set(Mpls::viaTypeMplsIp_,
                              static_cast<std::uint32_t>(i % options_.viaSets),
                              Mpls::lfibSourceStatic_);
      cp_->route(Wire::MplsLabel(static_cast<std::uint32_t>(kFirstLabel + i)), set);
      if (progress && i % step == 0) {
         progress(0.5 * static_cast<double>(i) / static_cast<double>(total), "publishing");
      }
   }
   // One via per decap set, in a list reused from route to route: the writer's own allocations
   // are not the LFIB's cost.
   std::vector<Mpls::LfibViaKey> via(1);
   const L3::VrfName red("red");
   for (std::size_t i = 0; i < options_.decapRoutes; ++i) {
      auto index = static_cast<std::uint32_t>(i);
      Mpls::LfibViaSetKey set;
      if (i % 2 == 0) {
         set = Mpls::LfibViaSetKey(Mpls::viaTypeIpLookup_, index, Mpls::lfibSourceStatic_);
         via[0] = cp_->ipLookupVia(index, red);
      } else {
         set = Mpls::LfibViaSetKey(Mpls::viaTypeVlan_, index, Mpls::lfibSourceEvpn_);
         via[0] = cp_->vlanVia(index, Bridging::VlanId(static_cast<std::uint16_t>(100 + i % 3000)));
      }
      cp_->viaSet(set, via);
      cp_->route(Wire::MplsLabel(static_cast<std::uint32_t>(kFirstLabel + options_.routes + i)),
                 set);
      if (progress && (options_.routes + i) % step == 0) {
         progress(0.5 * static_cast<double>(options_.routes + i) / static_cast<double>(total),
                  "publishing");
      }
   }
}

// Every route is in the chip and its confirmation published: the shared status holds every route
// and the transit machine has nothing left to review or publish. Counting the chip alone would
// stop the clock while most confirmations still wait to be published.
bool ScaleHarness::transitConverged() const {
   auto status = agent_->defaultVrfStatus();
   std::size_t programmed = status ? status->routes() : 0;
   if (programmed != options_.routes ||
       agent_->hwMplsStatus()->routeMap().size() != options_.routes) {
      return false;
   }
   auto state = agent_->mplsSm()->mplsState(L3::VrfName::defaultVrf());
   return !state || (state->routeKeyForReviewSet().empty() &&
                     state->routeKeyForPublishSet().empty() && state->numUnprogrammedRoute() == 0);
}

bool ScaleHarness::decapConverged() const {
   return agent_->decapHelper()->mappings() == options_.decapRoutes &&
          agent_->decapTracking()->routeKeyBacklogSet().empty();
}

bool ScaleHarness::settled() const {
   if (agent_->chip().busy()) {
      return false;
   }
   auto state = agent_->mplsSm()->mplsState(L3::VrfName::defaultVrf());
   if (state && state->needReview()) {
      return false;
   }
   return !agent_->decapSm() || decapConverged();
}

bool ScaleHarness::macChangeDone(const Wire::EthAddr& oldMac) const {
   if (agent_->chip().busy()) {
      return false;
   }
   auto config = agent_->defaultVrfConfig();
   auto status = agent_->defaultVrfStatus();
   if (!config || !status || status->routes() != options_.routes ||
       status->l2Adjacencies() != config->l2Adjacencies()) {
      return false;
   }
   auto carriesOld = [&](const Fal::L2AdjacencyPtr& adj) {
      for (const auto& via : adj->l2ViaSet()) {
         if (via.macAddr() == oldMac) {
            return true;
         }
      }
      return false;
   };
   for (const auto& [adj, count] : config->l2AdjacencyMap()) {
      if (carriesOld(adj) || status->l2Adjacency(adj) != count) {
         return false;
      }
   }
   // Every programmed route must point at an adjacency that no longer carries the old MAC.
   for (const auto& [key, route] : status->routeMap()) {
      if (!route.l2Adjacency() || carriesOld(route.l2Adjacency())) {
         return false;
      }
   }
   return true;
}

void ScaleHarness::settle() {
   Loom::EventLoop& loop = *agent_->loop();
   loop.runFor(0.01);
   const auto settleStart = std::chrono::steady_clock::now();
   while (!settled() && since(settleStart) < options_.timeout) {
      loop.runFor(0.005);
   }
}

void ScaleHarness::measureMacChange(ScaleResult& r) {
   Loom::EventLoop& loop = *agent_->loop();
   // One neighbour moves to a new MAC; every adjacency through it must follow.
   const Wire::EthAddr oldMac = nextHopMac(0, 0);
   const std::uint64_t routeWrites = agent_->chip().routeWrites();
   const std::uint64_t adjWrites = agent_->chip().adjacencyWrites();
   const auto macStart = std::chrono::steady_clock::now();
   const double cpuStart = threadCpuSeconds();
   // The harness's own checks walk the tables (every route, at the end): their time is taken
   // out of the measurement.
   double checking = 0.0;
   double checkingCpu = 0.0;
   cp_->neighbor(nextHopAddr(0), nextHopIntf(0), nextHopMac(0, 1), Bridging::VlanId(10),
                 nextHopIntf(0));
   for (;;) {
      loop.runUntilIdle();
      const double elapsed = since(macStart) - checking;
      const double work = threadCpuSeconds() - cpuStart - checkingCpu;
      const auto checkStart = std::chrono::steady_clock::now();
      const double checkCpuStart = threadCpuSeconds();
      const bool done = macChangeDone(oldMac);
      checking += since(checkStart);
      checkingCpu += threadCpuSeconds() - checkCpuStart;
      if (done || elapsed > options_.timeout) {
         r.macChangeConverged = done;
         r.macChangeMs = elapsed * 1000.0;
         r.macChangeWorkMs = work * 1000.0;
         break;
      }
      // Sleep until the next wake-up and no longer, so that the end is seen when it happens
      // rather than at the next poll; nothing armed (which should not happen before the end)
      // falls back to a short poll.
      const double next = loop.nextWakeUp();
      loop.runFor(std::isfinite(next) ? std::max(0.0, next - loop.now()) : 0.0005);
   }
   r.macChangeRouteWrites = agent_->chip().routeWrites() - routeWrites;
   r.macChangeAdjacencyWrites = agent_->chip().adjacencyWrites() - adjWrites;
}

void ScaleHarness::measureRestart(ScaleResult& r) {
   Loom::EventLoop& loop = *agent_->loop();
   settle();
   const Chip& chip = agent_->chip();
   const std::uint64_t routeWrites = chip.routeWrites();
   const std::uint64_t routeDeletes = chip.routeDeletes();
   const std::uint64_t adjWrites = chip.adjacencyWrites();
   const std::uint64_t adjDeletes = chip.adjacencyDeletes();
   const auto start = std::chrono::steady_clock::now();
   const double cpuStart = threadCpuSeconds();
   // The platform keeps the hardware through the restart and sweeps what the new incarnation
   // did not take back once it has converged.
   agent_->chip().agentRestarting();
   agent_->restart();
   r.restarted = true;
   for (;;) {
      loop.runFor(0.005);
      const bool done = transitConverged() && settled();
      const double elapsed = since(start);
      if (done || elapsed > options_.timeout) {
         r.restartConverged = done;
         r.restartSeconds = elapsed;
         r.restartCpuSeconds = threadCpuSeconds() - cpuStart;
         break;
      }
   }
   agent_->chip().agentReconciled();
   r.restartRouteWrites = chip.routeWrites() - routeWrites;
   r.restartRouteDeletes = chip.routeDeletes() - routeDeletes;
   r.restartAdjacencyWrites = chip.adjacencyWrites() - adjWrites;
   r.restartAdjacencyDeletes = chip.adjacencyDeletes() - adjDeletes;
   r.restartChipWrites = r.restartRouteWrites + r.restartRouteDeletes + r.restartAdjacencyWrites +
                         r.restartAdjacencyDeletes;
}

ScaleResult ScaleHarness::run(const Progress& progress) {
   Log::ToggleService::toggleIs("InPlaceMplsAdjacencyUpdate", options_.inPlaceUpdate);
   AgentOptions agentOptions;
   agentOptions.timeMode = Loom::EventLoop::TimeMode::monotonic;
   agentOptions.pseudowire = false;
   agentOptions.decap = options_.decapRoutes > 0;
   agent_ = std::make_unique<Agent>(agentOptions);
   cp_ = std::make_unique<ControlPlane>(*agent_);
   Loom::EventLoop& loop = *agent_->loop();

   ScaleResult r;
   r.routes = options_.routes;
   r.decapRoutes = options_.decapRoutes;
   r.viaSets = options_.viaSets;
   r.nextHops = options_.nextHops;
   r.inPlaceUpdate = options_.inPlaceUpdate;

   // The platform confirms MPLS routing and the neighbours are known before the LFIB arrives.
   publishNeighbors();
   loop.runFor(0.01);

   // Rows at most every millisecond: the counts are read after every pass.
   std::unique_ptr<Timeline> timeline;
   if (!options_.timeline.empty()) {
      timeline = std::make_unique<Timeline>(*agent_, 0.001);
   }
   const std::size_t memBefore = residentBytes();
   const auto start = std::chrono::steady_clock::now();
   const double cpuStart = threadCpuSeconds();
   publishLfib(progress);
   r.publishSeconds = since(start);
   r.publishCpuSeconds = threadCpuSeconds() - cpuStart;

   const std::size_t total = options_.routes + options_.decapRoutes;
   double lastReport = 0.0;
   for (;;) {
      loop.runFor(0.005);
      bool transit = transitConverged();
      bool decap = !agent_->decapSm() || decapConverged();
      double elapsed = since(start);
      if (decap && options_.decapRoutes > 0 && r.decapSeconds == 0.0) {
         r.decapSeconds = elapsed;
         r.decapCpuSeconds = threadCpuSeconds() - cpuStart;
      }
      if (transit && decap) {
         r.converged = true;
         r.convergeSeconds = elapsed;
         r.convergeCpuSeconds = threadCpuSeconds() - cpuStart;
         break;
      }
      if (elapsed > options_.timeout) {
         r.convergeSeconds = elapsed;
         break;
      }
      if (progress && elapsed - lastReport > 0.1) {
         lastReport = elapsed;
         auto status = agent_->defaultVrfStatus();
         std::size_t done = (status ? status->routes() : 0) +
                            (agent_->decapSm() ? agent_->decapHelper()->mappings() : 0);
         progress(0.5 + 0.5 * static_cast<double>(done) /
                            static_cast<double>(std::max<std::size_t>(1, total)),
                  "programming");
      }
   }
   if (timeline) {
      timeline->sample();
      r.timelineWritten = timeline->writeFile(options_.timeline);
      timeline.reset();
   }
   const std::size_t memAfter = residentBytes();
   if (total > 0 && memAfter > memBefore) {
      r.bytesPerRoute = static_cast<double>(memAfter - memBefore) / static_cast<double>(total);
   }
   if (r.convergeSeconds > 0) {
      r.routesPerSecond = static_cast<double>(total) / r.convergeSeconds;
   }
   r.longestPassMs = agent_->mplsSm()->longestReviewPass() * 1000.0;
   r.longestPassCpuMs = loop.longestFire(*agent_->clock()).cpu * 1000.0;
   r.reviewPasses = agent_->mplsSm()->reviewCount();
   if (r.decapSeconds > 0) {
      r.decapRoutesPerSecond = static_cast<double>(options_.decapRoutes) / r.decapSeconds;
   }
   if (agent_->decapSm()) {
      const Loom::Task& task = *agent_->decapSm()->reviewRouteKeyBacklog();
      r.decapLongestRunMs = task.longestRun() * 1000.0;
      r.decapLongestRunCpuMs = task.longestRunCpu() * 1000.0;
      r.decapDrainSeconds = task.totalRun();
      r.decapDrainCpuSeconds = task.totalRunCpu();
      if (r.decapDrainSeconds > 0) {
         r.decapDrainRoutesPerSecond =
             static_cast<double>(options_.decapRoutes) / r.decapDrainSeconds;
      }
   }
   if (auto config = agent_->defaultVrfConfig()) {
      r.l2Adjacencies = config->l2Adjacencies();
   }

   if (r.converged && options_.routes > 0) {
      // Every route is in hardware, yet the transit machine goes on publishing the confirmations
      // to the shared status for a while (at a million routes, most of them). A change made now
      // would wait behind a whole review pass of that work and be timed with it: let the agent
      // settle first, outside the measurement (so that a profile of measureMacChange holds the
      // change alone).
      settle();
      measureMacChange(r);
   }
   if (r.converged && options_.restart) {
      measureRestart(r);
   }
   if (r.converged) {
      measureForwarding(r, 200000);
   }
   if (progress) {
      progress(1.0, "done");
   }
   return r;
}

}  // namespace sim
