#pragma once

#include <cstdint>
#include <vector>

#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/wire/MplsLabelAction.h>

#include "FalCommon.h"

namespace FalHelper {

// What the transit state machine asks of a platform that forwards MPLS routes into FIB FECs:
// program or remove one route. A platform derives from it and overrides both; the default bodies
// say so and abort, unless FAL_NOOP_AGENT is set, where updateRoute quietly answers success (0).
class MplsSmHelper : public Fal::FalBaseHelper {
 public:
   explicit MplsSmHelper(const Kor::Name& name) : Fal::FalBaseHelper(name) {}

   virtual Mpls::LfibHwProgrammingReturnCode updateRoute(const Mpls::RouteKey& routeKey,
                                                         Wire::MplsLabelAction labelAction,
                                                         Mpls::PayloadType payloadType,
                                                         const std::uint64_t& fecId,
                                                         Wire::AddressingMethod addressingMethod);
   virtual void deleteRoute(const Mpls::RouteKey& routeKey);
   // Every route the platform holds, whoever programmed it. The helper's routes outlive an agent
   // restart: once the new incarnation has converged it deletes those it does not program, so
   // that none keeps forwarding into a FEC number that has since been handed to another via set.
   // The default lists nothing (a platform that cannot list its routes is not reconciled).
   virtual std::vector<Mpls::RouteKey> routeKeys() const;
};

}  // namespace FalHelper
