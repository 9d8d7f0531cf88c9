#pragma once

// What the transit tests share: the in-memory agent, settling with the invariant check, trace
// capture, the two VLAN interfaces most tests route through and the in-place update toggle.

#include <cstdint>

#include <mplsfwd/log/ToggleService.h>

#include "TraceCapture.h"
#include "TransitAgent.h"
#include "TransitInvariants.h"

namespace TestSupport {

inline const Wire::IntfId kVlan10 = Wire::IntfId::vlan(10);
inline const Wire::IntfId kVlan20 = Wire::IntfId::vlan(20);
inline constexpr const char* kInPlace = "InPlaceMplsAdjacencyUpdate";

// Sets the "InPlaceMplsAdjacencyUpdate" toggle and leaves the toggle configuration as it found it.
struct ToggleScope {
   explicit ToggleScope(bool on) { Log::ToggleService::toggleIs(kInPlace, on); }
   ~ToggleScope() { Log::ToggleService::toggleDel(kInPlace); }
   ToggleScope(const ToggleScope&) = delete;
   ToggleScope& operator=(const ToggleScope&) = delete;
};

}  // namespace TestSupport
