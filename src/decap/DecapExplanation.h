#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/mpls/RouteKey.h>

namespace Fal {

// Why a decap route's mapping is not (yet) held by the helper; `programmed` when it is.
enum class DecapCause {
   programmed,
   notInLfib,                // no LFIB route for the label
   viaSetMissing,            // the route names a via set the LFIB does not hold
   viaMissing,               // the via set's first via is not in its table
   notDecap,                 // a via type the decap machine does not program (transit, ...)
   skipped,                  // EVPN ethernet segment: skipped on purpose
   pendingBacklog,           // the change waits in the route-key backlog
   helperRefused,            // listed as unprogrammed with the helper's return code; retried
   helperRefusedNotRetried,  // not programmed, not listed: the helper answered above 3
   dot1qCollectionMissing,   // VLAN-aware: the dot1q collection is not in the LFIB yet
   dot1qTagsMissing,         // VLAN-aware: some tags are not programmed
};

std::string_view decapCauseName(DecapCause cause);
std::optional<DecapCause> parseDecapCause(std::string_view name);

// One dot1q tag of a VLAN-aware route: the VLAN the collection asks for and the one programmed.
struct Dot1qTagExplanation {
   std::uint16_t tag = 0;
   std::string vlanWanted;
   std::string vlanProgrammed;  // "" when the tag is not programmed
};

// Where one decap route stands, computed from the machine's state on demand.
struct DecapExplanation {
   Mpls::RouteKey routeKey;
   DecapCause cause = DecapCause::notInLfib;
   bool inLfib = false;
   bool viaSetPresent = false;
   bool viaPresent = false;
   Mpls::LfibViaType viaType = Mpls::viaTypeInvalid_;
   std::string mapping;      // what the helper is asked for, in words ("vrf red payload ipv4")
   bool programmed = false;  // the machine holds it as programmed
   Mpls::LfibViaType programmedViaType = Mpls::viaTypeInvalid_;
   bool inBacklog = false;
   bool listedUnprogrammed = false;
   std::uint32_t returnCode = 0;
   double nextRetry = 0.0;  // seconds; positive infinity when no review is pending
   bool dot1qCollectionPresent = false;
   std::vector<Dot1qTagExplanation> tags;
};

}  // namespace Fal
