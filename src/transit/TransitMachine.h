#pragma once

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/Fal/MplsSmHelper.h>
#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/EntityManager.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/l3/L3Status.h>
#include <mplsfwd/l3/MonitoredNexthopSm.h>
#include <mplsfwd/l3/Route6ReactorConfig.h>
#include <mplsfwd/l3/RouteReactorConfig.h>
#include <mplsfwd/l3/RouteStatus.h>
#include <mplsfwd/loom/AttrLogSm.h>
#include <mplsfwd/mpls/HardwareStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/RoutingInfo.h>

#include "RouteExplanation.h"

namespace Fal {

class MplsSm;

// Everything the transit state machine reads and writes, by name. The agent owns every table;
// the machine holds references and never deletes one.
struct TransitTables {
   // Written by the control plane, read by the machine.
   Kor::Ptr<const Mpls::Status> mplsStatus;
   Kor::Ptr<const Mpls::RoutingInfo> mplsRoutingInfo;
   Kor::Ptr<const Mpls::LfibStatus> transitLfib;
   Kor::Ptr<const L3Status> falL3Status;
   Kor::Ptr<const Routing::Hardware::RouteStatus> routingHwRouteStatus;
   // Next-hop resolution: written by the machine, followed by the agent's L3 side.
   Kor::Ptr<RouteReactorConfig> routeReactorConfig;
   Kor::Ptr<Route6ReactorConfig> route6ReactorConfig;
   Kor::Ptr<MonitoredNexthopSm> monitoredNhSm;
   // Written by the machine: the shared MPLS hardware status (cleared at start).
   Kor::Ptr<Mpls::Hardware::Status> routingHwMplsStatus;
   // The hardware configuration the machine writes and the status the platform answers in.
   Kor::Ptr<MplsHwConfig> mplsHwConfig;
   Kor::Ptr<MplsHwStatus> mplsHwStatus;
   // The runtime: the entity manager, the attribute log (its clog check throttles the review) and
   // the clock the review wakes up from.
   Kor::Ptr<Regdb::EntityManager> entityManager;
   Kor::Ptr<Loom::AttrLogSm> attrLogSm;
   Kor::Ptr<Kor::Clock> clock;

   // Forwarding through FIB FECs (all three or none): the request table the machine writes, the
   // response table the platform's FEC id service answers in, and the platform's route helper.
   Kor::Ptr<FecIdToHwFecIdRequest> hwFecIdRequest;
   Kor::Ptr<const FecIdToHwFecIdResponse> hwFecIdResponse;
   Kor::Ptr<FalHelper::MplsSmHelper> mplsSmHelper;

   // Seconds between retries of the routes the hardware refused; negative keeps the machine's own.
   double unprogrammedRetryInterval = -1.0;
};

// One transit state machine, built from its tables, kept for as long as this object lives.
// Destroying it (or building a new one over the same tables) is an agent restart: the tables keep
// what the old machine left, and the new one cleans it up.
class TransitMachine {
 public:
   // Throws std::invalid_argument naming the first missing table.
   explicit TransitMachine(const TransitTables& tables);
   ~TransitMachine();
   TransitMachine(const TransitMachine&) = delete;
   TransitMachine& operator=(const TransitMachine&) = delete;

   // Where one route stands and what holds it back, read without changing anything.
   TransitExplanation explainRoute(const Mpls::RouteKey& routeKey) const;
   // The machine itself (its class is the library's own, not installed).
   const Kor::Ptr<MplsSm>& sm() const { return sm_; }

 private:
   Kor::Ptr<MplsSm> sm_;
};

}  // namespace Fal
