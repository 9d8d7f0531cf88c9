#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <mplsfwd/mpls/HardwareL2Via.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "Agent.h"

namespace sim {

// Where a transit route stands in hardware.
// programmed: the chip holds it (through an L2 adjacency) or the route helper does (into a FEC);
// unprogrammed: the platform refused it and says so in the unprogrammed routes;
// pending: it is configured and the platform has not answered yet;
// absent: nothing of it is configured or in hardware.
enum class RouteState { programmed, unprogrammed, pending, absent };
std::string_view routeStateName(RouteState state);
std::optional<RouteState> parseRouteState(std::string_view text);

// One transit route as the hardware sees it.
struct RouteView {
   Mpls::RouteKey key;
   RouteState state = RouteState::absent;
   // The refusal's reason: an unprogrammed reason's name, or "returnCode N" for the route helper.
   std::string reason;
   // "adjacency" (programmed through an L2 adjacency), "fec" (through the route helper), or "".
   std::string path;
   // The L2 adjacency the route is (or would be) programmed with.
   std::optional<std::uint64_t> l2Adjacency;
   std::vector<Mpls::Hardware::L2Via> vias;
   std::uint64_t version = 0;
   // The version last configured, and the version the platform's answer carries (none while the
   // status does not hold the route).
   std::uint64_t configuredVersion = 0;
   std::optional<std::uint64_t> answeredVersion;
   std::uint64_t fecId = 0;
};

// One L2 adjacency of the default VRF's configuration or status.
struct AdjacencyView {
   std::uint64_t index = 0;
   std::uint32_t count = 0;  // programming count in the configuration (0: not configured)
   bool programmed = false;
   std::uint32_t programmedCount = 0;  // the programming count the platform answered
   std::string reason;                 // when refused
   std::vector<Mpls::Hardware::L2Via> vias;
   std::size_t routes = 0;  // configured routes that use it
};

// One label decapsulation mapping in the decap helper's tables.
struct DecapView {
   std::string kind;  // "vrf", "vlan" or "dot1q"
   Wire::MplsLabel label;
   L3::VrfName vrf;
   Mpls::PayloadType payloadType = Mpls::payloadTypeAutoDecide_;
   Bridging::VlanIdOrNone vlan;
   Bridging::VlanId dot1qTag;
   bool flood = false;
};

// A FEC with its hardware FEC id request.
struct FecRequestView {
   std::string table;  // "transit" or "pseudowire"
   Memtab::Fib::FecId fecId;
   bool fec = false;  // the FEC record itself is published
   std::size_t vias = 0;
   Memtab::Fib::FecId backupFecId;  // the FEC's backup, when it has one
   Fal::HwFecId hwFecId = 0;        // 0: not answered
};

// Everything a report shows, taken from an agent at one moment.
struct State {
   double time = 0.0;
   std::uint64_t restarts = 0;
   std::vector<RouteView> routes;
   std::vector<AdjacencyView> adjacencies;
   std::vector<DecapView> decaps;
   // Decap routes the helper refused, with the return code it gave.
   std::vector<std::pair<Mpls::RouteKey, std::uint32_t>> decapUnprogrammed;
   std::vector<FalPw::PwDecapInfo> pwDecaps;
   std::vector<FecRequestView> fecRequests;
   std::map<std::string, std::size_t> logs;
   std::vector<std::string> decapMismatches;
   std::size_t lfibRoutes = 0;

   std::size_t routesIn(RouteState state) const;
};

RouteView routeView(const Agent& agent, const Mpls::RouteKey& key);
std::vector<AdjacencyView> adjacencyViews(const Agent& agent);
std::vector<DecapView> decapViews(const Agent& agent);
std::vector<FecRequestView> fecRequestViews(const Agent& agent);
State snapshot(const Agent& agent);

}  // namespace sim
