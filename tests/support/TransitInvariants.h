#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "TransitAgent.h"

namespace TestSupport {

// The whole-state checks of the transit state machine, meant to be run whenever the agent is
// quiet (after a settle): links between the adjacency objects hold both ways, the via-set map is
// exact, counters agree with the platform's lists, adjacency indices are never reused within a
// run, unused objects are gone or pending deletion, what the hardware configuration and the
// shared hardware status hold is backed by the machine's state, and exactly the machine's next
// hops are watched. Checks that only hold once the review has nothing left to do are made only
// then.
//
// Returns one line per violation (empty when everything holds). Remembers the adjacency indices
// it saw in agent.indexHistory, so call it on the same agent across a test.
std::vector<std::string> transitInvariantViolations(TransitAgent& agent);

// What the checks read of an agent, whichever harness assembled it.
struct TransitParts {
   Kor::Ptr<Fal::MplsSm> sm;
   std::uint64_t generation = 0;  // one value per run of the machine (a restart changes it)
   AdjacencyIndexHistory* indexHistory = nullptr;
   Kor::Ptr<Mpls::Hardware::Status> hwMplsStatus;
   Kor::Ptr<Fal::MplsHwVrfConfig> vrfConfig;
   Kor::Ptr<Fal::MplsHwVrfStatus> vrfStatus;
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> fecRequest;
   bool helper = false;                                   // a route helper is given
   std::map<Mpls::RouteKey, std::uint64_t> helperRoutes;  // its routes and their FEC ids
   Kor::Ptr<Fal::MonitoredNexthopSm> monitoredNhSm;
   Kor::Ptr<Fal::RouteReactorConfig> routeReactorConfig;
   Kor::Ptr<Fal::Route6ReactorConfig> route6ReactorConfig;
};
TransitParts transitParts(TransitAgent& agent);
std::vector<std::string> transitInvariantViolations(const TransitParts& parts);

// Reports each violation as a test failure.
void checkTransitInvariants(TransitAgent& agent);

// Runs the loop for `seconds` of simulated time, then checks the invariants.
void settleAndCheck(TransitAgent& agent, double seconds = 1.0);

}  // namespace TestSupport
