#pragma once

#include <cstdint>

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
};

}  // namespace FalHelper
