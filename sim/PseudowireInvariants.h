#pragma once

#include <string>
#include <vector>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/pseudowire/FalLFibSm.h>

namespace sim {

class Agent;

// What the checks read of a pseudowire decap machine and the tables around it.
struct PseudowireParts {
   Kor::Ptr<Fal::LFibSm> sm;
   Kor::Ptr<const Mpls::Status> lfib;      // the routes the machine reads
   Kor::Ptr<const Mpls::Status> ipStatus;  // the status it writes back
   Kor::Ptr<const FalPw::DecapInfoTable> decap;
   Kor::Ptr<const Fal::FecIdToHwFecIdRequest> fecRequest;
   Kor::Ptr<const Fal::FecIdToHwFecIdResponse> fecResponse;
};
PseudowireParts pseudowireParts(const Agent& agent);

// The whole-state checks of the pseudowire decap machine, meant for a quiet agent (the FEC id
// service has answered what it will): every allocated FEC index is a FEC the machine knows and
// the other way round; each label's current FEC is requested once, recorded for its interface,
// and decapsulated exactly when the platform has answered it; every decap record belongs to a
// label with decap state for the interface that state names; the written-back status holds
// copies of LFIB routes only. Returns one line per violation (empty when everything holds).
std::vector<std::string> pseudowireInvariantViolations(const PseudowireParts& parts);

}  // namespace sim
