#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/l3/MonitoredNexthopSm.h>
#include <mplsfwd/l3/Route6ReactorConfig.h>
#include <mplsfwd/l3/RouteReactorConfig.h>
#include <mplsfwd/mpls/HardwareStatus.h>
#include <mplsfwd/transit/FalMplsSm.h>

namespace sim {

class Agent;

// What the invariant check remembers between its calls about one run of the transit machine:
// every adjacency index it has seen, with its kind and the object last seen under it, and the
// indices that have gone. A restart begins a new run (the machine numbers afresh).
struct AdjacencyIndexHistory {
   enum class Kind : std::uint8_t { l3, l2 };
   struct Seen {
      Kind kind;
      const void* object;
   };
   std::uint64_t generation = 0;
   Kor::HashMap<std::uint64_t, Seen> alive;
   Kor::HashSet<std::uint64_t> gone;
};

// What the checks read of an agent.
struct TransitParts {
   Kor::Ptr<Fal::MplsSm> sm;
   std::uint64_t generation = 0;  // one value per run of the machine (a restart changes it)
   AdjacencyIndexHistory* indexHistory = nullptr;
   Kor::Ptr<Mpls::Hardware::Status> hwMplsStatus;
   Kor::Ptr<Fal::MplsHwVrfConfig> vrfConfig;
   Kor::Ptr<Fal::MplsHwVrfStatus> vrfStatus;
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> fecRequest;
   bool helper = false;                                   // a route helper is given
   std::map<Mpls::RouteKey, std::uint64_t> helperRoutes;  // its routes and their FEC ids
   Kor::Ptr<Fal::MonitoredNexthopSm> monitoredNhSm;
   Kor::Ptr<Fal::RouteReactorConfig> routeReactorConfig;
   Kor::Ptr<Fal::Route6ReactorConfig> route6ReactorConfig;
};
TransitParts transitParts(const Agent& agent, AdjacencyIndexHistory& history);

// The whole-state checks of the transit state machine, meant to be run whenever the agent is
// quiet (after the loop has run what was due): links between the adjacency objects hold both
// ways, the via-set map is exact, counters agree with the platform's lists, adjacency indices are
// never reused within a run, unused objects are gone or pending deletion, what the hardware
// configuration and the shared hardware status hold is backed by the machine's state, and exactly
// the machine's next hops are watched. Checks that only hold once the review has nothing left to
// do are made only then.
//
// Returns one line per violation (empty when everything holds). Remembers the adjacency indices
// it saw in the parts' history, so give it the same history across one agent's life.
std::vector<std::string> transitInvariantViolations(const TransitParts& parts);

}  // namespace sim
