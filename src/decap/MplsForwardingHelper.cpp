#include "MplsForwardingHelper.h"

#include <mplsfwd/log/NoopAgent.h>

namespace FalHelper {

MplsForwardingHelper::MplsForwardingHelper(const Kor::Name& name) : Fal::FalBaseHelper(name) {}

MplsForwardingHelper::~MplsForwardingHelper() = default;

Mpls::LfibHwProgrammingReturnCode MplsForwardingHelper::createOrUpdateMplsRoute(
    Wire::MplsLabel, const std::uint64_t&) {
   const Kor::String message = "Unimplemented createOrUpdateMplsRoute";
   if (Log::noopAgent()) {
      return Mpls::lfibHwProgrammingFailed_;
   }
   falAssert(message);
}

void MplsForwardingHelper::deleteMplsRoute(Wire::MplsLabel) {
   const Kor::String message = "Unimplemented deleteMplsRoute";
   if (Log::noopAgent()) {
      return;
   }
   falAssert(message);
}

}  // namespace FalHelper
