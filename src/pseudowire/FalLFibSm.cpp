#include "FalLFibSm.h"

#include <ostream>
#include <utility>
#include <vector>

#include <mplsfwd/kor/SmReactor.h>
#include <mplsfwd/log/Assert.h>
#include <mplsfwd/loom/Range.h>
#include <mplsfwd/mpls/FibVia.h>
#include <mplsfwd/wire/MplsLabelAction.h>
#include <mplsfwd/wire/MplsLabelOperation.h>

#include "LFibSmTrace.h"

namespace Fal {

Log::Trace lfibSmTrace("LFibSm");

namespace {

constexpr std::uint64_t kDecapFecIndexFirst = 0;
constexpr std::uint64_t kDecapFecIndexLast = 4294967295ULL;
// A released decap FEC index is held back this long, so that the platform has forgotten the old
// FEC before the index names a new one.
constexpr double kDecapFecIndexExpiry = 10.0;

struct ConnectorText {
   const Pseudowire::LocalConnectorInfo& c;
};

std::ostream& operator<<(std::ostream& os, const ConnectorText& t) {
   return os << "decapConnector(parent=" << t.c.parentIntfId() << ", dot1q=" << t.c.dot1qTag()
             << ", intVlan=" << t.c.internalVlan() << ")";
}

template <class Map>
std::vector<typename Map::key_type> sortedKeys(const Map& map) {
   Kor::OrderedSet<typename Map::key_type> keys;
   for (const auto& [key, value] : map) {
      keys.insert(key);
   }
   return {keys.begin(), keys.end()};
}

// The keys of `stale` that `current` lacks, in order: what an earlier incarnation copied and the
// LFIB no longer holds.
template <class Map>
std::vector<typename Map::key_type> staleKeys(const Map& stale, const Map& current) {
   std::vector<typename Map::key_type> keys;
   for (const auto& key : sortedKeys(stale)) {
      if (!current.contains(key)) {
         keys.push_back(key);
      }
   }
   return keys;
}

}  // namespace

// ---- reactors ----

namespace {
template <class Notifiee>
using SmReactor = Kor::SmReactor<Notifiee, LFibSm>;
}  // namespace

class LFibSm::MplsStatusReactor : public SmReactor<Mpls::Status::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onLfibRoute(const Mpls::RouteKey& routeKey) override { sm_.handleLFibRoute(routeKey); }
   void onLfibAdjacency(std::uint64_t index) override { sm_.handleLFibAdjacency(index); }
   void onLfibPwAdjacency(std::uint64_t index) override { sm_.handleLFibPwAdjacency(index); }
   void onLfibExtFecAdjacency(std::uint64_t index) override {
      sm_.handleLFibExtFecAdjacency(index);
   }
   void onNexthopResolutionAllowDefaultRoute() override {
      sm_.handleNexthopResolutionAllowDefaultRoute();
   }
};

class LFibSm::PwStatusReactor : public SmReactor<Pseudowire::Status::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onLocalConnectorInfo(Wire::IntfId pwIntfId) override {
      sm_.handleConnectorChange(pwIntfId);
   }
};

class LFibSm::HwFecIdResponseReactor : public SmReactor<FecIdToHwFecIdResponse::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onHwFecId(Memtab::Fib::FecId fecId) override { sm_.handleHwFecIdResponse(fecId); }
};

// ---- construction ----

LFibSm::LFibSm(Kor::Ptr<const Mpls::Status> mplsStatus, Kor::Ptr<Mpls::Status> mplsIpStatus,
               Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable,
               Kor::Ptr<const Pseudowire::Status> pwStatus,
               Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest,
               Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse,
               Kor::Ptr<Loom::TimerWheel> timerWheel)
    : mplsStatus_(std::move(mplsStatus)),
      mplsIpStatus_(std::move(mplsIpStatus)),
      decapInfoTable_(std::move(decapInfoTable)),
      pwStatus_(std::move(pwStatus)),
      dstPortToHwFecIdRequest_(std::move(dstPortToHwFecIdRequest)),
      dstPortToHwFecIdResponse_(std::move(dstPortToHwFecIdResponse)),
      timerWheel_(std::move(timerWheel)) {
   Kor::attachReactor(mplsStatusReactor_, mplsStatus_, *this);
   Kor::attachReactor(pwStatusReactor_, pwStatus_, *this);
   Kor::attachReactor(hwFecIdResponseReactor_, dstPortToHwFecIdResponse_, *this);
   handleInitialized();
}

LFibSm::~LFibSm() {
   Kor::silence(mplsStatusReactor_, pwStatusReactor_, hwFecIdResponseReactor_);
}

void LFibSm::numAllocatorIs(Kor::Ptr<const Loom::NumAllocatorConfig> config,
                            Kor::Ptr<Loom::NumAllocatorStatus> status, Kor::Ptr<Kor::Clock> clock) {
   numAllocatorConfig_ = std::move(config);
   numAllocatorStatus_ = std::move(status);
   numAllocator_ =
       Kor::make<Loom::NumAllocator>(numAllocatorConfig_, numAllocatorStatus_, std::move(clock));
}

// ---- own state ----

FalPw::PwDecapInfo LFibSm::fecIdToDecapInfo(Memtab::Fib::FecId fecId) const {
   return Kor::mapValueOr(fecIdToDecapInfo_, fecId);
}

Memtab::Fib::FecId LFibSm::dstPortFecRequested(Wire::MplsLabel label) const {
   return Kor::mapValueOr(dstPortFecRequested_, label);
}

Wire::IntfId LFibSm::decapLabelToPwIntfId(Wire::MplsLabel label) const {
   return Kor::mapValueOr(decapLabelToPwIntfId_, label);
}

Kor::Ptr<PwIntfIdToFecIdCollection> LFibSm::pwIntfIdToFecId(Wire::IntfId pwIntfId) const {
   return Kor::mapValueOr(pwIntfIdToFecId_, pwIntfId);
}

LFibSm::RouteKeySet LFibSm::pwNonExistingAdj(std::uint64_t index) const {
   return Kor::mapValueOr(pwNonExistingAdj_, index);
}

Kor::Ptr<PwIntfIdToFecIdCollection> LFibSm::pwIntfIdToFecIdIs(Wire::IntfId pwIntfId) {
   auto& col = pwIntfIdToFecId_[pwIntfId];
   if (!col) {
      col = Kor::make<PwIntfIdToFecIdCollection>(pwIntfId);
   }
   return col;
}

void LFibSm::pwIntfIdToFecIdDel(Wire::IntfId pwIntfId, Memtab::Fib::FecId fecId) {
   auto it = pwIntfIdToFecId_.find(pwIntfId);
   if (it == pwIntfIdToFecId_.end()) {
      return;
   }
   it->second->fecIdDel(fecId);
   if (it->second->empty()) {
      pwIntfIdToFecId_.erase(it);
   }
}

void LFibSm::pwAdjUseIs(const Mpls::RouteKey& routeKey, std::uint64_t index) {
   routeKeyToPwAdj_[routeKey] = index;
   pwAdjToRouteKeys_[index].insert(routeKey);
}

void LFibSm::pwAdjUseDel(const Mpls::RouteKey& routeKey) {
   auto it = routeKeyToPwAdj_.find(routeKey);
   if (it == routeKeyToPwAdj_.end()) {
      return;
   }
   const std::uint64_t index = it->second;
   routeKeyToPwAdj_.erase(it);
   for (auto* map : {&pwAdjToRouteKeys_, &pwNonExistingAdj_}) {
      auto entry = map->find(index);
      if (entry == map->end()) {
         continue;
      }
      entry->second.erase(routeKey);
      if (entry->second.empty()) {
         map->erase(entry);
      }
   }
}

bool LFibSm::hwFecIdRequested(Memtab::Fib::FecId fecId) const {
   return dstPortToHwFecIdRequest_ &&
          dstPortToHwFecIdRequest_->hwFecIdRequest(fecId) != HwFecIdRequest();
}

bool LFibSm::hwFecIdAnswered(Memtab::Fib::FecId fecId) const {
   return dstPortToHwFecIdResponse_ && dstPortToHwFecIdResponse_->hwFecId(fecId) != FecToHwFecId();
}

// ---- start-up ----

void LFibSm::handleInitialized() {
   FAL_ASSERT(mplsStatus());
   FAL_ASSERT(mplsIpStatus());
   FAL_ASSERT(decapInfoTable());
   SM_DECISION(5, "handleInitialized");

   // Nothing an earlier incarnation left is trusted: its decap records may name FECs whose
   // indices the new allocator hands out again, and its requests would hold FEC ids that nothing
   // frees. Both are rebuilt from the LFIB below. Answers that the platform withdraws meanwhile
   // find no decap state and are ignored.
   decapInfoTable_->labelToPwDecapInfoDelAll();
   if (dstPortToHwFecIdRequest_) {
      dstPortToHwFecIdRequest_->hwFecIdRequestDelAll();
      dstPortToHwFecIdRequest_->fecDelAll();
   }

   numAllocatorIs(Kor::make<Loom::NumAllocatorConfig>(
                      Loom::Range(kDecapFecIndexFirst, kDecapFecIndexLast), kDecapFecIndexExpiry),
                  Kor::make<Loom::NumAllocatorStatus>(),
                  timerWheel_ ? timerWheel_->clock() : Kor::Ptr<Kor::Clock>());
   initialized_ = true;

   handleNexthopResolutionAllowDefaultRoute();

   // Replay in a fixed order (routes, adjacencies, external-FEC adjacencies, each by key) so that
   // a restart allocates the same decap FEC indices for the same LFIB. Entries that only the
   // writable status still holds are stale copies and are replayed as deletions.
   for (const auto& routeKey : sortedKeys(mplsStatus_->lfibRouteMap())) {
      handleLFibRoute(routeKey);
   }
   for (const auto& routeKey :
        staleKeys(mplsIpStatus_->lfibRouteMap(), mplsStatus_->lfibRouteMap())) {
      handleLFibRoute(routeKey);
   }
   for (auto index : sortedKeys(mplsStatus_->lfibAdjacencyMap())) {
      handleLFibAdjacency(index);
   }
   for (auto index :
        staleKeys(mplsIpStatus_->lfibAdjacencyMap(), mplsStatus_->lfibAdjacencyMap())) {
      handleLFibAdjacency(index);
   }
   for (auto index : sortedKeys(mplsStatus_->lfibExtFecAdjacencyMap())) {
      handleLFibExtFecAdjacency(index);
   }
   for (auto index :
        staleKeys(mplsIpStatus_->lfibExtFecAdjacencyMap(), mplsStatus_->lfibExtFecAdjacencyMap())) {
      handleLFibExtFecAdjacency(index);
   }
}

// ---- copies into the writable status ----

void LFibSm::handleLFibAdjacency(std::uint64_t index) {
   if (mplsStatus_->lfibAdjacencyHas(index)) {
      SM_DECISION(6, "Adding adjacency " << index);
      mplsIpStatus_->lfibAdjacencyIs(index, mplsStatus_->lfibAdjacency(index));
   } else {
      SM_DECISION(6, "Deleting adjacency " << index);
      mplsIpStatus_->lfibAdjacencyDel(index);
   }
}

void LFibSm::handleLFibExtFecAdjacency(std::uint64_t index) {
   if (mplsStatus_->lfibExtFecAdjacencyHas(index)) {
      const Mpls::ExtFecAdjacency adj = mplsStatus_->lfibExtFecAdjacency(index);
      SM_DECISION(6, "Adding or updating external fec adjacency " << adj);
      mplsIpStatus_->lfibExtFecAdjacencyIs(index, adj.fecId(), adj.labelAction());
   } else {
      SM_DECISION(6, "Deleting external fec adjacency " << index);
      mplsIpStatus_->lfibExtFecAdjacencyDel(index);
   }
}

void LFibSm::handleNexthopResolutionAllowDefaultRoute() {
   const bool allow = mplsStatus_->nexthopResolutionAllowDefaultRoute();
   SM_DECISION(6, "handleNexthopResolutionAllowDefaultRoute: " << allow);
   mplsIpStatus_->nexthopResolutionAllowDefaultRouteIs(allow);
}

// ---- routes ----

void LFibSm::handleLFibRoute(const Mpls::RouteKey& routeKey) {
   const Wire::MplsLabel label = routeKey.topLabel();
   // Every pass starts from the route as it stands now; the adjacency it names may have changed.
   pwAdjUseDel(routeKey);

   if (!mplsStatus_->lfibRouteHas(routeKey)) {
      SM_DECISION(5, "Deleting route " << routeKey);
      doRemoveDecapState(label);
      mplsIpStatus_->lfibRouteDel(routeKey);
      return;
   }

   const Mpls::LfibRoute route = mplsStatus_->lfibRoute(routeKey);
   const Mpls::AdjacencyKey& adjKey = route.adjacencyKey();
   // The adjacency that the route was published against decides: only a pseudowire adjacency
   // ends a pseudowire. The via set's type is not consulted, as a pseudowire route's vias are
   // the adjacency's business.
   if (adjKey.adjType() != Mpls::adjacencyTypePseudowire_) {
      doRemoveDecapState(label);
      SM_DECISION(6, "Adding route " << route);
      mplsIpStatus_->lfibRouteIs(route);
      return;
   }

   pwAdjUseIs(routeKey, adjKey.index());
   if (!mplsStatus_->lfibPwAdjacencyHas(adjKey.index())) {
      // Changes are delete-first: whatever the route installed for another adjacency goes, and
      // the route reaches the writable status only once its adjacency exists.
      doRemoveDecapState(label);
      mplsIpStatus_->lfibRouteDel(routeKey);
      pwNonExistingAdj_[adjKey.index()].insert(routeKey);
      SM_DECISION(3, "handleLFibRoute: route " << routeKey << ": adjacency " << adjKey
                                               << " doesn't exist in Regdb");
      return;
   }

   const Mpls::PwAdjacency pwAdj = mplsStatus_->getPwAdjacency(adjKey);
   const Wire::IntfId pwIntfId = pwAdj.pwIntfId();
   SM_DECISION(
       5, "handleLFibRoute: decapLabel:" << label << ": mplsPseudowire adj, pwIntfId:" << pwIntfId);

   if (labelToDecapInfo(label) && decapLabelToPwIntfId(label) != pwIntfId) {
      doRemoveDecapState(label);
   }

   if (!label.isValid()) {
      SM_DECISION(1, "handleLFibRoute: route " << routeKey << ": no decap label, decap skipped");
   } else if (Wire::PseudowireIntfId::isPortPseudowireIntfId(pwIntfId)) {
      doInstallPortPwDecap(label, pwIntfId);
   } else if (!Wire::PseudowireIntfId::isVlanPseudowireIntfId(pwIntfId)) {
      SM_DECISION(1, "handleLFibRoute: decapLabel:" << label << ": pwIntfId:" << pwIntfId
                                                    << " is not a pseudowire, decap skipped");
   } else if (!vlanPwDecapSupported()) {
      SM_DECISION(1, "handleLFibRoute: decapLabel:"
                         << label << ": vlan pw without FEC request and response tables, "
                         << "decap skipped");
   } else {
      doInstallVlanPwDecap(label, pwIntfId);
   }

   SM_DECISION(6, "Adding route " << route);
   mplsIpStatus_->lfibRouteIs(route);
}

void LFibSm::doInstallPortPwDecap(Wire::MplsLabel label, Wire::IntfId pwIntfId) {
   SM_DECISION(5, "handleLFibRoute: decapLabel:" << label << ": port pw");
   decapLabelToPwIntfId_[label] = pwIntfId;
   labelToDecapInfo_.insert(label);
   decapInfoTable_->labelToPwDecapInfoIs(label, FalPw::PwDecapInfo(label, pwIntfId));
}

void LFibSm::doInstallVlanPwDecap(Wire::MplsLabel label, Wire::IntfId pwIntfId) {
   const Memtab::Fib::FecId fecId = getOrAllocateDecapFecId(label);
   // A connector that cannot be read is taken as not known yet: the FEC goes out without an
   // internal VLAN and is rewritten in place when the connector is next written.
   const Pseudowire::LocalConnectorInfo connector =
       readConnector(pwIntfId).value_or(Pseudowire::LocalConnectorInfo());
   SM_DECISION(5,
               "handleLFibRoute: decapLabel:" << label << ": vlan pw " << ConnectorText{connector});
   const FalPw::PwDecapInfo di(label, pwIntfId);

   // The bookkeeping comes before the request, so that a platform that answers from inside the
   // request finds the decap record waiting.
   fecIdToDecapInfo_[fecId] = di;
   decapLabelToPwIntfId_[label] = pwIntfId;
   labelToDecapInfo_.insert(label);
   pwIntfIdToFecIdIs(pwIntfId)->fecIdIs(fecId);
   SM_DECISION(7, "handleLFibRoute: intfIdToFecIdCol->fecIdIs, pwIntfId:"
                      << pwIntfId << ", labelFecId:" << fecId);

   dstPortToHwFecIdRequest_->fecIs(decapFec(fecId, connector));
   dstPortToHwFecIdRequest_->hwFecIdRequestIs(HwFecIdRequest(fecId));

   // An answer that is already there (the FEC was requested before) raises no notification.
   if (hwFecIdAnswered(fecId) && dstPortFecRequested(label) == fecId) {
      decapInfoTable_->labelToPwDecapInfoIs(label, di);
   }
}

void LFibSm::doRemoveDecapState(Wire::MplsLabel label) {
   if (labelToDecapInfo_.erase(label)) {
      decapInfoTable_->labelToPwDecapInfoDel(label);
   }
   const Wire::IntfId pwIntfId = decapLabelToPwIntfId(label);
   decapLabelToPwIntfId_.erase(label);

   auto requested = dstPortFecRequested_.find(label);
   if (requested == dstPortFecRequested_.end()) {
      return;
   }
   const Memtab::Fib::FecId fecId = requested->second;
   dstPortFecRequested_.erase(requested);
   pwIntfIdToFecIdDel(pwIntfId, fecId);

   if (hwFecIdRequested(fecId)) {
      SM_DECISION(
          5, "doRemoveDecapState: decapLabel:" << label << ": deleting hw fec request:" << fecId);
      dstPortToHwFecIdRequest_->fecDel(fecId);
      dstPortToHwFecIdRequest_->hwFecIdRequestDel(fecId);
   }
   // A platform that withdraws its answer from inside the deletion has had the id freed already.
   if (fecIdToDecapInfo_.contains(fecId) && !hwFecIdAnswered(fecId)) {
      SM_DECISION(5, "doRemoveDecapState: immediate delete of decap label:"
                         << label << ": immediate free of labelFecId " << fecId);
      fecIdToDecapInfo_.erase(fecId);
      freeDecapFecId(fecId);
   }
}

// ---- decap FEC ids ----

Memtab::Fib::FecId LFibSm::getOrAllocateDecapFecId(Wire::MplsLabel label) {
   const Memtab::Fib::FecId cached = dstPortFecRequested(label);
   if (cached.isValid()) {
      SM_DECISION(8, "getOrAllocateDecapFecId: decapLabel:" << label << ": cachedFecId:" << cached);
      return cached;
   }
   const std::uint64_t index = numAllocator()->getNumber();
   FAL_ASSERT(
       index != numAllocator()->invalidNumber(),
       "index != numAllocator()->invalidNumber() && \"FecId range exhausted, Not possible\"");
   // The range is configured below 2^63; an index that reads negative as a signed number means
   // the allocator was built on a wrong configuration.
   FAL_ASSERT(static_cast<std::int64_t>(index) >= 0, "index >= 0");
   const Memtab::Fib::FecId fecId =
       Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::pwDecapAdj_, index);
   dstPortFecRequested_[label] = fecId;
   SM_DECISION(8, "getOrAllocateDecapFecId: decapLabel:" << label << ": index:" << index
                                                         << ", fecId:" << fecId);
   return fecId;
}

void LFibSm::freeDecapFecId(Memtab::Fib::FecId fecId) {
   SM_DECISION(8, "freeDecapFecId: fecId:" << fecId);
   FAL_ASSERT(!hwFecIdRequested(fecId),
              "dstPortToHwFecIdRequest()->hwFecIdRequest( fecId ) == Fal::HwFecIdRequest()");
   FAL_ASSERT(!hwFecIdAnswered(fecId),
              "dstPortToHwFecIdResponse()->hwFecId( fecId ) == Fal::FecToHwFecId()");
   FAL_ASSERT(fecId.adjType() == Memtab::Fib::AdjType::pwDecapAdj_);
   const std::uint64_t index = fecId.index();
   FAL_ASSERT(numAllocator()->releaseNumber(index));
}

// ---- hardware FEC ids ----

void LFibSm::handleHwFecIdResponse(Memtab::Fib::FecId fecId) {
   const FecToHwFecId answer = dstPortToHwFecIdResponse_->hwFecId(fecId);
   const FalPw::PwDecapInfo di = fecIdToDecapInfo(fecId);
   SM_DECISION(5, "handleHwFecIdResponse: fecId " << fecId << ", hwFec:" << answer.hwFecId()
                                                  << ", di( label=" << di.label()
                                                  << ", pwIntfId=" << di.pwIntfId() << " )");
   const bool requested = hwFecIdRequested(fecId);
   if (di == FalPw::PwDecapInfo()) {
      // Every request this machine publishes has its decap record; an answer without either
      // belongs to a request that is gone (an earlier incarnation's, or withdrawn before the
      // platform saw it) and is not ours to act on.
      if (initialized()) {
         FAL_ASSERT(!requested || di != FalPw::PwDecapInfo(), "di != FalPw::PwDecapInfo()");
      }
      SM_DECISION(5, "handleHwFecIdResponse: no request for fecId " << fecId);
      return;
   }

   const Wire::MplsLabel label = di.label();
   const bool current = dstPortFecRequested(label) == fecId;
   if (answer != FecToHwFecId()) {
      if (requested && current) {
         decapInfoTable_->labelToPwDecapInfoIs(label, di);
      } else {
         SM_DECISION(
             5, "handleHwFecIdResponse: fecId " << fecId << ": request withdrawn, answer ignored");
      }
      return;
   }

   if (requested) {
      // The platform dropped the answer to a FEC that is still wanted: the label cannot be
      // decapsulated until a new answer comes.
      SM_DECISION(
          3, "handleHwFecIdResponse: fecId " << fecId << ": answer lost, waiting for a new one");
      if (current) {
         decapInfoTable_->labelToPwDecapInfoDel(label);
      }
      return;
   }

   SM_DECISION(5, "handleHwFecIdResponse: fecId " << fecId << ": deleting from decapInfoTable");
   // The label may have decap state of its own again by now (a new FEC or a port pseudowire):
   // its record is then not this FEC's to delete.
   if (!labelToDecapInfo(label)) {
      decapInfoTable_->labelToPwDecapInfoDel(label);
   }
   fecIdToDecapInfo_.erase(fecId);
   freeDecapFecId(fecId);
}

// ---- pseudowire adjacencies and connectors ----

void LFibSm::handleLFibPwAdjacency(std::uint64_t index) {
   auto waiting = pwNonExistingAdj_.find(index);
   if (waiting != pwNonExistingAdj_.end()) {
      SM_DECISION(5, "handleLFibPwAdjacency: index found in pwNonExistingAdj " << index);
      pwNonExistingAdj_.erase(waiting);
   }
   // Every route that names the adjacency is taken up again: a waiting route is installed, an
   // installed one follows a changed pseudowire interface, or waits again if it went.
   auto users = pwAdjToRouteKeys_.find(index);
   if (users == pwAdjToRouteKeys_.end()) {
      return;
   }
   const RouteKeySet routeKeys = users->second;
   for (const auto& routeKey : routeKeys) {
      handleLFibRoute(routeKey);
   }
}

std::optional<Pseudowire::LocalConnectorInfo> LFibSm::readConnector(Wire::IntfId pwIntfId) const {
   if (!pwStatus_) {
      return Pseudowire::LocalConnectorInfo();
   }
   try {
      return pwStatus_->localConnectorInfo(pwIntfId);
   } catch (const Pseudowire::CorruptionError& e) {
      SM_DECISION(
          0, "readConnector: pwIntfId:" << pwIntfId << ": corrupt decap connector: " << e.what());
      pwStatus_->corruptionDetected(e.what());
      return std::nullopt;
   }
}

Memtab::Fib::Fec LFibSm::decapFec(Memtab::Fib::FecId fecId,
                                  const Pseudowire::LocalConnectorInfo& connector) const {
   // The decap FEC only hands the payload to the connector's internal VLAN; the parent interface
   // and the dot1q tag are what the platform bridges that VLAN to, so a change of them leaves the
   // FEC as it is.
   Memtab::Fib::Via via;
   via.labelStackIs(Wire::MplsLabelOperation());
   via.labelActionIs(Wire::MplsLabelAction::none);
   via.vlanIdIs(connector.internalVlan());
   Memtab::Fib::Fec fec(fecId);
   fec.viaIs(0, via);
   return fec;
}

void LFibSm::handleConnectorChange(Wire::IntfId pwIntfId) {
   const std::optional<Pseudowire::LocalConnectorInfo> read = readConnector(pwIntfId);
   if (!read) {
      // The FECs keep the last connector that could be read; the writer's repair notifies again.
      return;
   }
   const Pseudowire::LocalConnectorInfo& connector = *read;
   SM_DECISION(5,
               "handleConnectorChange: pwIntfId:" << pwIntfId << ": " << ConnectorText{connector});
   const Kor::Ptr<PwIntfIdToFecIdCollection> col = pwIntfIdToFecId(pwIntfId);
   if (col) {
      // A copy: the platform may react to a rewritten FEC from inside the write.
      const PwIntfIdToFecIdCollection::FecIdSet fecIds = col->fecIds();
      for (const Memtab::Fib::FecId fecId : fecIds) {
         const Memtab::Fib::Fec requestedFec = dstPortToHwFecIdRequest_->fec(fecId);
         FAL_ASSERT(requestedFec != Memtab::Fib::Fec());
         const Memtab::Fib::Fec fec = decapFec(fecId, connector);
         if (fec != requestedFec) {
            SM_DECISION(5, "handleConnectorChange: in place fec update: " << fec);
            dstPortToHwFecIdRequest_->fecIs(fec);
         }
      }
   }
   if (!connector) {
      SM_DECISION(5,
                  "handleConnectorChange: pwIntfId:" << pwIntfId << ": decap connector went away");
   } else {
      SM_DECISION(5,
                  "handleConnectorChange: pwIntfId:" << pwIntfId << ": updating decap connector");
   }
}

// ---- entry points ----

Kor::Ptr<LFibSm> LFibSmIs(Kor::Ptr<const Mpls::Status> mplsStatus,
                          Kor::Ptr<Mpls::Status> mplsIpStatus,
                          Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable,
                          Kor::Ptr<const Pseudowire::Status> pwStatus,
                          Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest,
                          Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse,
                          Kor::Ptr<Loom::TimerWheel> timerWheel) {
   return Kor::make<LFibSm>(std::move(mplsStatus), std::move(mplsIpStatus),
                            std::move(decapInfoTable), std::move(pwStatus),
                            std::move(dstPortToHwFecIdRequest), std::move(dstPortToHwFecIdResponse),
                            std::move(timerWheel));
}

Kor::Ptr<LFibSm> lFibSmFactory(Kor::Ptr<const Mpls::Status> mplsStatus,
                               Kor::Ptr<Mpls::Status> mplsIpStatus,
                               Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable,
                               Kor::Ptr<const Pseudowire::Status> pwStatus,
                               Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest,
                               Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse,
                               Kor::Ptr<Loom::TimerWheel> timerWheel) {
   return LFibSmIs(std::move(mplsStatus), std::move(mplsIpStatus), std::move(decapInfoTable),
                   std::move(pwStatus), std::move(dstPortToHwFecIdRequest),
                   std::move(dstPortToHwFecIdResponse), std::move(timerWheel));
}

}  // namespace Fal
