// Where one pseudowire decap route stands: read from the machine's state, the MPLS status, the
// pseudowire status and the FEC tables on demand; nothing is changed, traced or kept.
#include <array>

#include "FalLFibSm.h"

namespace Fal {

namespace {
constexpr std::array<std::string_view, 7> kCauseNames = {
    "programmed",  "notInLfib",      "notPseudowire",   "adjacencyMissing",
    "notDecapped", "hwFecIdPending", "connectorMissing"};
}  // namespace

std::string_view pwCauseName(PwCause cause) {
   auto i = static_cast<std::size_t>(cause);
   return i < kCauseNames.size() ? kCauseNames[i] : std::string_view("unknown");
}

std::optional<PwCause> parsePwCause(std::string_view name) {
   for (std::size_t i = 0; i < kCauseNames.size(); ++i) {
      if (kCauseNames[i] == name) {
         return static_cast<PwCause>(i);
      }
   }
   return std::nullopt;
}

PwExplanation LFibSm::explainRoute(const Mpls::RouteKey& routeKey) const {
   PwExplanation e;
   e.routeKey = routeKey;
   const Wire::MplsLabel label = routeKey.topLabel();
   e.inLfib = mplsStatus_->lfibRouteHas(routeKey);
   e.decapState = labelToDecapInfo(label);
   e.decapRecord = decapInfoTable_ && decapInfoTable_->labelToPwDecapInfoHas(label);
   if (!e.inLfib) {
      e.cause = PwCause::notInLfib;
      return e;
   }
   const Mpls::LfibRoute route = mplsStatus_->lfibRoute(routeKey);
   const Mpls::AdjacencyKey& adjKey = route.adjacencyKey();
   e.pseudowireAdjacency = adjKey.adjType() == Mpls::adjacencyTypePseudowire_;
   e.adjacencyIndex = adjKey.index();
   if (!e.pseudowireAdjacency) {
      e.cause = PwCause::notPseudowire;
      return e;
   }
   e.adjacencyPresent = mplsStatus_->lfibPwAdjacencyHas(adjKey.index());
   if (!e.adjacencyPresent) {
      e.cause = PwCause::adjacencyMissing;
      return e;
   }
   e.pwInterface = mplsStatus_->getPwAdjacency(adjKey).pwIntfId();
   e.portPseudowire = Wire::PseudowireIntfId::isPortPseudowireIntfId(e.pwInterface);
   if (pwStatus_ && !pwStatus_->localConnectorInfoCorrupt(e.pwInterface)) {
      auto connector = pwStatus_->localConnectorInfo(e.pwInterface);
      e.connectorPresent = !(connector == Pseudowire::LocalConnectorInfo());
      e.internalVlan = connector.internalVlan().value();
   }
   Memtab::Fib::FecId fecId = dstPortFecRequested(label);
   if (fecId.isValid()) {
      e.fecId = fecId.value();
      e.hwFecIdRequested = hwFecIdRequested(fecId);
      e.hwFecIdAnswered = hwFecIdAnswered(fecId);
   }
   if (e.decapRecord) {
      e.cause = PwCause::programmed;
   } else if (!e.decapState) {
      e.cause = PwCause::notDecapped;
   } else if (!e.portPseudowire && !e.connectorPresent) {
      e.cause = PwCause::connectorMissing;
   } else {
      e.cause = PwCause::hwFecIdPending;
   }
   return e;
}

}  // namespace Fal
