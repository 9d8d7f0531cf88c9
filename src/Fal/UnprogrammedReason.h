#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include <mplsfwd/kor/EnumRegistry.h>

namespace Fal {

// Why the hardware could not take a route or an adjacency; reported by the platform in the
// per-VRF hardware status.
enum class UnprogrammedReason : std::uint32_t {
   Success = 0,
   AdjacencyFull = 1,
   RouteFull = 2,
   InterfaceNotReady = 3,
};

const Kor::EnumRegistry<UnprogrammedReason>& unprogrammedReasonRegistry();

// Conversions through the registry; an unknown number or name throws Kor::EnumError.
UnprogrammedReason UnprogrammedReasonInstance(unsigned value);
UnprogrammedReason UnprogrammedReasonInstance(std::string_view name);

std::string stringValue(UnprogrammedReason reason);
std::ostream& operator<<(std::ostream& os, UnprogrammedReason reason);

// The two reasons that mean the hardware ran out of room (as opposed to an interface not ready).
constexpr bool isResourceReason(UnprogrammedReason r) {
   return r == UnprogrammedReason::AdjacencyFull || r == UnprogrammedReason::RouteFull;
}

}  // namespace Fal
