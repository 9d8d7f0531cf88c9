#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "Agent.h"
#include "ControlPlane.h"

namespace sim {

// What the scale harness builds: a synthetic LFIB of `routes` transit routes spread over
// `viaSets` ECMP via sets of up to `width` vias each, over `nextHops` resolved neighbours, plus
// `decapRoutes` decap routes (half label-to-VRF, half label-to-VLAN).
struct ScaleOptions {
   std::size_t routes = 100000;
   std::size_t viaSets = 1000;
   std::size_t nextHops = 64;
   std::size_t width = 4;
   std::size_t decapRoutes = 0;
   // The "InPlaceMplsAdjacencyUpdate" toggle.
   bool inPlaceUpdate = false;
   // Once converged (and after the MAC change), restart the agent's state machines over the
   // surviving tables and measure the new incarnation's way back.
   bool restart = false;
   // Give up when convergence takes longer than this, in seconds of real time.
   double timeout = 900.0;
   // Where to write the timeline of the convergence (Timeline.h, real time); "" for none.
   std::string timeline;
};

// What one run measured. Times are real (monotonic) time.
struct ScaleResult {
   std::size_t routes = 0;
   std::size_t decapRoutes = 0;
   std::size_t viaSets = 0;
   std::size_t nextHops = 0;
   bool inPlaceUpdate = false;
   bool converged = false;
   // Writing the LFIB into the tables, with the state machines' handlers that it triggers.
   double publishSeconds = 0.0;
   // From the first LFIB write until every route is in hardware.
   double convergeSeconds = 0.0;
   // The processor time of the agent's thread over the same two windows: on a busy machine the
   // real times above include the time other processes held the processor.
   double publishCpuSeconds = 0.0;
   double convergeCpuSeconds = 0.0;
   double routesPerSecond = 0.0;
   // Resident memory growth from before the LFIB was written until convergence, per route.
   double bytesPerRoute = 0.0;
   // The transit machine's longest review pass, and the processor time of the longest run of its
   // wake-up (the same pass, timed by the event loop): a pass much longer than its processor
   // time was preempted by a busy machine, not overrunning its time box.
   double longestPassMs = 0.0;
   double longestPassCpuMs = 0.0;
   // Decap routes programmed per second, from the first LFIB write until the decap helper holds
   // every mapping, and the longest run of the decap machine's backlog task (its slice is the
   // scheduler's quantum) with that run's processor time.
   double decapSeconds = 0.0;
   double decapCpuSeconds = 0.0;
   double decapRoutesPerSecond = 0.0;
   double decapLongestRunMs = 0.0;
   double decapLongestRunCpuMs = 0.0;
   // The backlog task alone: its runs added up (real and processor time), and the decap routes
   // it programmed per second of them. The LFIB writes that fill the backlog are not in it.
   double decapDrainSeconds = 0.0;
   double decapDrainCpuSeconds = 0.0;
   double decapDrainRoutesPerSecond = 0.0;
   std::uint64_t reviewPasses = 0;
   // From one next hop's MAC change, made once the agent has settled after convergence, until
   // every adjacency and route through it carries the new MAC. It includes the transit machine's
   // review interval (the delay before a pass, 1 ms by default) and leaves out the harness's own
   // checks.
   double macChangeMs = 0.0;
   // The processor time the agent spent on it in that window: the wall time less the waits (the
   // transit machine's review interval, the loop's sleeps) and the harness's own checks.
   double macChangeWorkMs = 0.0;
   bool macChangeConverged = false;
   // What the chip wrote for the MAC change: with the in-place update, one adjacency write per
   // adjacency through the next hop and no route.
   std::uint64_t macChangeRouteWrites = 0;
   std::uint64_t macChangeAdjacencyWrites = 0;
   std::size_t l2Adjacencies = 0;
   bool timelineWritten = false;
   // The forwarding model's throughput over the converged tables: frames of the transit labels,
   // one after another, in wall time (parsing and building the frame bytes included).
   std::size_t forwardedPackets = 0;
   double packetsPerSecond = 0.0;
   // The restart, when asked for: from the restart until the new incarnation has every route
   // programmed and published again and nothing is left to clean up, and the chip operations
   // (route and adjacency writes and deletes) it caused.
   bool restarted = false;
   bool restartConverged = false;
   double restartSeconds = 0.0;
   double restartCpuSeconds = 0.0;
   std::uint64_t restartChipWrites = 0;
   std::uint64_t restartRouteWrites = 0;
   std::uint64_t restartRouteDeletes = 0;
   std::uint64_t restartAdjacencyWrites = 0;
   std::uint64_t restartAdjacencyDeletes = 0;

   nlohmann::json json() const;
   std::string text() const;
};

// The scale harness behind `mplsfwd-sim bench` (and reusable by a Google Benchmark): builds an
// agent on a real-time (monotonic) event loop, so that the transit machine's time-boxed review
// passes, its review interval and the decap task's slices are real time, as in an agent; writes
// the synthetic LFIB, runs the loop until every route is programmed, lets the agent settle, then
// changes the MAC of one next hop and measures how long the change takes to reach the hardware.
//
// The simulated chip answers one loop step after each change; its work counts in the
// convergence time as a fast platform's would. Progress, when asked for, is reported through a
// callback with the fraction done and a short text.
class ScaleHarness {
 public:
   using Progress = std::function<void(double fraction, const std::string& text)>;

   explicit ScaleHarness(ScaleOptions options);
   ~ScaleHarness();

   // Checks the options: throws std::invalid_argument with a readable text.
   static void validate(const ScaleOptions& options);

   ScaleResult run(const Progress& progress = {});
   // Forwards `packets` frames over the transit routes and stores the rate in `r`.
   void measureForwarding(ScaleResult& r, std::size_t packets) const;

   const ScaleOptions& options() const { return options_; }
   Agent& agent() { return *agent_; }

   // Resident memory of this process, in bytes, from /proc/self/statm (0 when unreadable).
   static std::size_t residentBytes();

 private:
   void publishNeighbors();
   void publishLfib(const Progress& progress);
   bool transitConverged() const;
   bool decapConverged() const;
   // Nothing left to do: no review work queued in the transit machine, the chip has answered
   // every change, the decap side is done.
   bool settled() const;
   bool macChangeDone(const Wire::EthAddr& oldMac) const;
   void measureMacChange(ScaleResult& r);
   void measureRestart(ScaleResult& r);
   // Runs the loop until the agent has settled (or the timeout).
   void settle();

   ScaleOptions options_;
   std::unique_ptr<Agent> agent_;
   std::unique_ptr<ControlPlane> cp_;
};

}  // namespace sim
