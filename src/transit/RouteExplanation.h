#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <mplsfwd/Fal/UnprogrammedReason.h>
#include <mplsfwd/mpls/LfibKeys.h>
#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>

namespace Fal {

// Why a transit route is not (yet) in hardware, the first thing on its way that holds it back.
// `programmed` when nothing does.
enum class TransitCause {
   programmed,
   notInLfib,                // no LFIB route for the label
   notTransit,               // its via set is neither MPLS-IP nor external FEC
   vrfNameMissing,           // the L3 status does not name the default VRF yet
   mplsRoutingDisabled,      // the control plane's switch is off
   platformRoutingDisabled,  // the platform has not confirmed MPLS routing for the VRF
   viaSetMissing,            // the route names a via set the LFIB does not hold
   viaSetRejected,           // a rejection rule fired, see TransitExplanation::rule
   pendingReview,            // queued; the next review pass takes it up
   nextHopUnresolved,        // no via resolved to a neighbour
   defaultRouteNotAllowed,   // the next hops resolve only through the default route
   l2AdjacencyRefused,       // the chip did not take the route's L2 adjacency
   hwFecIdPending,           // the FEC way: the platform has not answered the hardware FEC id
   routeHelperRefused,       // the FEC way: the route helper refused the route
   routeRefused,             // the chip listed the route as unprogrammed
   awaitingPlatform,         // written; the platform has not answered this version yet
};

// The rejection rule that keeps a via set from being programmed; `none` for a sane set.
enum class ViaSetRule {
   none,
   viaNotMplsIp,
   viaNotFound,
   moreThanOneLabel,
   mixOfDynamicTunnelAndNhg,
   mixOfTunnelAndNonTunnel,
   moreThanOneNhg,
   tunnelLabelActionsDiffer,
   tunnelPayloadTypesDiffer,
   viaSetDeleted,
   noVias,
   backupMissing,
   backupHasBackup,
   backupWithoutFec,
   needsFecForwarding,
   extFecNotSupported,
   extFecViaCount,
   extFecViaNotExtFec,
   extFecViaNotFound,
   extFecIdInvalid,
};

std::string_view transitCauseName(TransitCause cause);
std::optional<TransitCause> parseTransitCause(std::string_view name);
std::string_view viaSetRuleName(ViaSetRule rule);

// How one via's next hop stands.
enum class NextHopResolution {
   byNeighbour,             // the via names an interface; the neighbour table resolves it
   byRouteResolver,         // no interface; a route and its gateway's neighbour entry resolve it
   unresolved,              // no neighbour entry (or no route) for it
   defaultRouteNotAllowed,  // only the default route covers it and that is not allowed
};
std::string_view nextHopResolutionName(NextHopResolution resolution);

struct ViaExplanation {
   std::uint32_t position = 0;
   Wire::IpGenAddr nextHop;
   Wire::IntfId interface;
   std::string labels;  // the label stack as text
   std::string action;  // swap, push, pop...
   NextHopResolution resolution = NextHopResolution::unresolved;
   Wire::IpGenAddr gateway;  // through the route resolver
   Wire::EthAddr mac;
   std::uint16_t vlan = 0;
   Wire::IntfId l2Interface;
};

// Where one transit route stands, computed from the machine's state on demand.
struct TransitExplanation {
   Mpls::RouteKey routeKey;
   TransitCause cause = TransitCause::notInLfib;
   ViaSetRule rule = ViaSetRule::none;

   bool inLfib = false;
   Mpls::LfibViaSetKey viaSetKey;
   bool viaSetPresent = false;
   bool vrfNamed = false;
   bool controlPlaneRouting = false;
   bool platformRouting = false;
   bool tracked = false;  // the machine follows the route (MplsRoute exists)
   bool pendingReview = false;

   std::uint64_t l3Adjacency = 0;  // 0: none
   bool l3AdjacencyUnprogrammed = false;
   std::string path;  // "adjacency", "fec" or ""
   std::vector<ViaExplanation> vias;

   std::uint64_t l2Adjacency = 0;  // 0: none
   bool l2AdjacencyProgrammed = false;
   bool l2AdjacencyRefused = false;

   std::uint64_t fecId = 0;  // the FEC way
   bool hwFecIdRequested = false;
   std::uint64_t hwFecId = 0;  // 0: not answered
   bool routeHelperRefused = false;

   bool configured = false;
   std::uint64_t versionWritten = 0;
   std::uint64_t versionAnswered = 0;  // 0: no answer
   bool listedUnprogrammed = false;
   UnprogrammedReason reason = UnprogrammedReason::Success;  // the VRF's last refusal reason
   double nextRetry = 0.0;                                   // seconds of the machine's clock
};

}  // namespace Fal
