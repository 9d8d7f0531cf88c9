#pragma once

#include <mplsfwd/decap/FalMplsDecapSm.h>

namespace Fal {

// The work methods that tests drive directly, past the machine's public surface.
struct MplsDecapSmTestAccess {
   static void deleteRoute(MplsDecapSm& sm, const Mpls::RouteKey& k) { sm.deleteRoute(k); }
   static void createVlanVia(MplsDecapSm& sm, const Mpls::RouteKey& k,
                             const Mpls::LfibVlanVia& via) {
      sm.createVlanVia(k, via);
   }
   static void createEvpnVlanAwareVia(MplsDecapSm& sm, const Mpls::RouteKey& k,
                                      const Mpls::LfibEvpnVlanAwareVia& via) {
      sm.createEvpnVlanAwareVia(k, via);
   }
   static void processRouteKeyBacklog(MplsDecapSm& sm, const Mpls::RouteKey& k) {
      sm.processRouteKeyBacklog(k);
   }
   static void maybeScheduleUnprogrammedReview(MplsDecapSm& sm) {
      sm.maybeScheduleUnprogrammedReview();
   }
};

}  // namespace Fal
