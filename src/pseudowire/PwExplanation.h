#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/wire/IntfId.h>

namespace Fal {

// Why a pseudowire route's decap record is not (yet) in the decap info table; `programmed` when
// it is.
enum class PwCause {
   programmed,
   notInLfib,         // no route for the label in the MPLS status
   notPseudowire,     // the route's adjacency is not a pseudowire adjacency
   adjacencyMissing,  // the pseudowire adjacency does not exist yet
   notDecapped,       // no decap label, not a pseudowire interface, or no FEC tables
   hwFecIdPending,    // VLAN pseudowire: the decap FEC waits for its hardware FEC id
   connectorMissing,  // VLAN pseudowire: the interface has no local connector
};

std::string_view pwCauseName(PwCause cause);
std::optional<PwCause> parsePwCause(std::string_view name);

// Where one pseudowire decap route stands, computed from the machine's state on demand.
struct PwExplanation {
   Mpls::RouteKey routeKey;
   PwCause cause = PwCause::notInLfib;
   bool inLfib = false;
   bool pseudowireAdjacency = false;
   std::uint64_t adjacencyIndex = 0;
   bool adjacencyPresent = false;
   Wire::IntfId pwInterface;
   bool portPseudowire = false;
   bool decapState = false;   // the machine holds decap state for the label
   bool decapRecord = false;  // the decap info table holds the label's record
   bool connectorPresent = false;
   std::uint16_t internalVlan = 0;
   std::uint64_t fecId = 0;  // the decap FEC, VLAN pseudowires only
   bool hwFecIdRequested = false;
   bool hwFecIdAnswered = false;
};

}  // namespace Fal
