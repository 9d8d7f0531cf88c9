#pragma once

#include <mplsfwd/transit/FalMplsSm.h>

namespace Fal {

// The work methods that tests drive directly, past the machine's public surface.
struct MplsSmTestAccess {
   static void doForceRouteReprogramming(MplsSm& sm) { sm.doForceRouteReprogramming(); }
   static L3AdjPlan classifyL3Adj(const MplsSm& sm, const VrfMplsState& vrf,
                                  const L3Adjacency& l3Adj) {
      return sm.classifyL3Adj(vrf, l3Adj);
   }
};

}  // namespace Fal
