#pragma once

#include <cstdint>

#include <mplsfwd/Fal/FalCommon.h>
#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/wire/MplsLabel.h>

namespace FalHelper {

// A platform's per-label MPLS route programming. Every operation has a default body that aborts
// with "Unimplemented <operation>", or in a no-op agent (FAL_NOOP_AGENT set) quietly answers
// failure (2) for the create and returns for the delete.
class MplsForwardingHelper : public Fal::FalBaseHelper {
 public:
   explicit MplsForwardingHelper(const Kor::Name& name);
   ~MplsForwardingHelper() override;

   virtual Mpls::LfibHwProgrammingReturnCode createOrUpdateMplsRoute(Wire::MplsLabel label,
                                                                     const std::uint64_t& value);
   virtual void deleteMplsRoute(Wire::MplsLabel label);
};

}  // namespace FalHelper
