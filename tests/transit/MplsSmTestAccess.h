#pragma once

#include <mplsfwd/transit/FalMplsSm.h>

namespace Fal {

// The work methods that tests drive directly, past the machine's public surface.
struct MplsSmTestAccess {
   static void doForceRouteReprogramming(MplsSm& sm) { sm.doForceRouteReprogramming(); }
   static Memtab::Fib::FecId getOrAllocateMplsV4FecId(MplsSm& sm, const Mpls::LfibViaSetKey& key,
                                                      VrfMplsState& vrf) {
      return sm.getOrAllocateMplsV4FecId(key, vrf);
   }
   static L3AdjPlan classifyL3Adj(const MplsSm& sm, const VrfMplsState& vrf,
                                  const L3Adjacency& l3Adj) {
      return sm.classifyL3Adj(vrf, l3Adj);
   }
   static void freeMplsV4FecId(MplsSm& sm, Memtab::Fib::FecId fecId, VrfMplsState& vrf) {
      sm.freeMplsV4FecId(fecId, vrf);
   }
};

}  // namespace Fal
