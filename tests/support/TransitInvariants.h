#pragma once

#include <mplsfwd/sim/TransitInvariants.h>

#include "TransitAgent.h"

namespace TestSupport {

using sim::AdjacencyIndexHistory;
using sim::transitInvariantViolations;
using sim::TransitParts;

// The violations of the transit invariants on this agent, one line each.
std::vector<std::string> transitInvariantViolations(TransitAgent& agent);

// Reports each violation of the transit invariants as a test failure.
void checkTransitInvariants(TransitAgent& agent);

// Runs the loop for `seconds` of simulated time, then checks the invariants.
void settleAndCheck(TransitAgent& agent, double seconds = 1.0);

}  // namespace TestSupport
