#pragma once

#include <string>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/loom/TaskScheduler.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>

#include "DecapExplanation.h"
#include "MplsDecapHelper.h"

namespace Mpls {
class LfibTrackingSm;
}

namespace Fal {

class MplsDecapSm;

// Everything the decap state machine reads and writes, by name. The agent owns every table and
// the helper; the machine holds references.
struct DecapTables {
   // The platform's decap helper: every label mapping goes through it (see MplsDecapHelper.h).
   Kor::Ptr<FalHelper::MplsDecapHelper> mplsDecapHelper;
   // Written by the control plane, read by the machine.
   Kor::Ptr<const Mpls::LfibStatus> lfibStatus;
   // The agent's task scheduler: the machine's review tasks run from it.
   Kor::Ptr<Loom::TaskScheduler> scheduler;
   // Written by the machine: the routes the helper refused, with their reason.
   Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus;

   // Seconds between retries of refused routes; negative keeps the machine's own.
   double unprogrammedRetryInterval = -1.0;
   // Name of the LFIB tracking that feeds the machine, in traces.
   std::string trackingName = "DecapTracking";
};

// One decap state machine with the LFIB tracking that feeds it: the machine learns of route
// changes only through a tracking status's route-key backlog, which an Mpls::LfibTrackingSm over
// the LFIB fills. Both are built here, the tracking first (it puts every route already in the
// LFIB on the backlog), and taken down in the opposite order.
class DecapMachine {
 public:
   // Throws std::invalid_argument naming the first missing table.
   explicit DecapMachine(const DecapTables& tables);
   ~DecapMachine();
   DecapMachine(const DecapMachine&) = delete;
   DecapMachine& operator=(const DecapMachine&) = delete;

   // Where one route stands and what holds it back, read without changing anything.
   DecapExplanation explainRoute(const Mpls::RouteKey& routeKey) const;
   // The machine itself (its class is the library's own, not installed).
   const Kor::Ptr<MplsDecapSm>& sm() const { return sm_; }
   const Kor::Ptr<Mpls::LfibTrackingStatus>& trackingStatus() const { return trackingStatus_; }

 private:
   Kor::Ptr<Mpls::LfibTrackingStatus> trackingStatus_;
   Kor::Ptr<Mpls::LfibTrackingSm> trackingSm_;
   Kor::Ptr<MplsDecapSm> sm_;
};

}  // namespace Fal
