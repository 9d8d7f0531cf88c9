#include "MplsSmHelper.h"

#include <mplsfwd/log/NoopAgent.h>

namespace FalHelper {

namespace {
constexpr const char* kMustImplement = "This function must be implemented by derived class";
}

Mpls::LfibHwProgrammingReturnCode MplsSmHelper::updateRoute(const Mpls::RouteKey&,
                                                            Wire::MplsLabelAction,
                                                            Mpls::PayloadType, const std::uint64_t&,
                                                            Wire::AddressingMethod) {
   if (Log::noopAgent()) {
      return Mpls::lfibHwProgrammingSuccess_;
   }
   falAssert(kMustImplement);
}

void MplsSmHelper::deleteRoute(const Mpls::RouteKey&) {
   if (Log::noopAgent()) {
      return;
   }
   falAssert(kMustImplement);
}

std::vector<Mpls::RouteKey> MplsSmHelper::routeKeys() const {
   return {};
}

}  // namespace FalHelper
