#include "TransitInvariants.h"

#include <gtest/gtest.h>

namespace TestSupport {

std::vector<std::string> transitInvariantViolations(TransitAgent& agent) {
   return sim::transitInvariantViolations(sim::transitParts(agent.agent, agent.indexHistory));
}

void checkTransitInvariants(TransitAgent& agent) {
   for (const auto& line : transitInvariantViolations(agent)) {
      ADD_FAILURE() << "transit invariant: " << line;
   }
}

void settleAndCheck(TransitAgent& agent, double seconds) {
   agent.settle(seconds);
   checkTransitInvariants(agent);
}

}  // namespace TestSupport
