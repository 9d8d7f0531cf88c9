#include "LFibSmFixture.h"

#include <mplsfwd/sim/PseudowireInvariants.h>

namespace PwTest {

void LFibSmTest::expectConsistent() const {
   ASSERT_TRUE(sm);
   for (const auto& line :
        sim::pseudowireInvariantViolations({sm, lfib, ipStatus, decap, req, resp})) {
      ADD_FAILURE() << line;
   }
}

}  // namespace PwTest
