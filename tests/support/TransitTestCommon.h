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

// Neighbours 10.0.0.2 on VLAN 10 and 10.0.1.2 on VLAN 20; routes 100 and 101 through via set 1
// to the first, settled. Answers the via set.
inline Mpls::LfibViaSetKey twoRoutes(TransitAgent& a) {
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
   auto set = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   a.route(100, set);
   a.route(101, set);
   settleAndCheck(a);
   return set;
}

// Sets the "InPlaceMplsAdjacencyUpdate" toggle and leaves the toggle configuration as it found it.
struct ToggleScope {
   explicit ToggleScope(bool on) { Log::ToggleService::toggleIs(kInPlace, on); }
   ~ToggleScope() { Log::ToggleService::toggleDel(kInPlace); }
   ToggleScope(const ToggleScope&) = delete;
   ToggleScope& operator=(const ToggleScope&) = delete;
};

}  // namespace TestSupport
