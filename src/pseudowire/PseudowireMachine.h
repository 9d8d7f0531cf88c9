#pragma once

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/PseudowireStatus.h>

#include "PwExplanation.h"

namespace Fal {

class LFibSm;

// Everything the pseudowire decap state machine reads and writes, by name. The agent owns every
// table; the machine holds references.
struct PseudowireTables {
   // Written by the control plane, read by the machine.
   Kor::Ptr<const Mpls::Status> mplsStatus;
   Kor::Ptr<const Pseudowire::Status> pwStatus;
   // Written by the machine: the writable copy of the MPLS status and the decap records.
   Kor::Ptr<Mpls::Status> mplsIpStatus;
   Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable;
   // The decap FECs' hardware FEC id requests (written by the machine) and the platform's answers.
   Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest;
   Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse;
   // The agent's timer wheel.
   Kor::Ptr<Loom::TimerWheel> timerWheel;
};

// One pseudowire decap state machine, built from its tables, kept for as long as this object lives.
class PseudowireMachine {
 public:
   // Throws std::invalid_argument naming the first missing table.
   explicit PseudowireMachine(const PseudowireTables& tables);
   ~PseudowireMachine();
   PseudowireMachine(const PseudowireMachine&) = delete;
   PseudowireMachine& operator=(const PseudowireMachine&) = delete;

   // Where one route stands and what holds it back, read without changing anything.
   PwExplanation explainRoute(const Mpls::RouteKey& routeKey) const;
   // The machine itself (its class is the library's own, not installed).
   const Kor::Ptr<LFibSm>& sm() const { return sm_; }

 private:
   Kor::Ptr<LFibSm> sm_;
};

}  // namespace Fal
