// Construction, start-up, the routing switches, VRF names and destruction of the transit machine.
#include "FalMplsSm.h"

#include <limits>

#include <mplsfwd/kor/SmReactor.h>
#include <mplsfwd/log/ToggleService.h>

#include "MplsResourceLog.h"
#include "MplsSmTrace.h"

namespace Fal {

Log::Trace mplsSmTrace("MplsSm");

namespace {
const L3::VrfName& defaultVrf() {
   static const L3::VrfName name = L3::VrfName::defaultVrf();
   return name;
}
}  // namespace

// ---- Reactors: each forwards one input's changes to a handler, and only while it is live.

namespace {
template <class Notifiee>
using SmReactor = Kor::SmReactor<Notifiee, MplsSm>;
}  // namespace

class MplsSm::MplsStatusReactor : public SmReactor<Mpls::Status::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onNexthopResolutionAllowDefaultRoute() override {
      sm_.handleNexthopResolutionAllowDefaultRoute();
   }
};

class MplsSm::RoutingInfoReactor : public SmReactor<Mpls::RoutingInfo::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onMplsRouting() override { sm_.handleMplsRouting(notifier()->mplsRouting()); }
};

class MplsSm::LfibReactor : public SmReactor<Mpls::LfibStatus::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onLfibRoute(const Mpls::RouteKey& k) override { sm_.handleLFibRoute(k); }
};

class MplsSm::TrackingStatusReactor : public SmReactor<Mpls::LfibTrackingStatus::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onViaSetKeyBacklog(const Mpls::LfibViaSetKey& k) override { sm_.handleLFibViaSet(k); }
};

class MplsSm::HwStatusReactor : public SmReactor<MplsHwStatus::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onVrfStatus(VrfId vrfId) override {
      auto status = sm_.mplsHwStatus()->vrfStatus(vrfId);
      if (status) {
         sm_.mplsHwVrfStatusIs(status);
      } else {
         sm_.mplsHwVrfStatusDel(vrfId);
      }
   }
};

class MplsSm::HwVrfStatusReactor : public SmReactor<MplsHwVrfStatus::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onMplsRouting() override {
      sm_.handleHwRoutingEnabled(notifier()->vrfId(), notifier()->mplsRouting());
   }
   void onRoute(const Mpls::RouteKey& k) override {
      sm_.handleProgrammedRoute(notifier()->vrfId(), k);
   }
   void onUnprogrammedRoute(const Mpls::RouteKey& k) override {
      sm_.handleUnprogrammedRoute(notifier()->vrfId(), k);
   }
   void onUnprogrammedAdjacency(const L2AdjacencyPtr& a) override {
      sm_.handleUnprogrammedAdj(notifier()->vrfId(), a);
   }
};

class MplsSm::L3StatusReactor : public SmReactor<L3Status::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onNextHopInfo(const NextHopKey& k) override { sm_.handleNextHop(k); }
   void onResolvedV4(const VrfAndIpAddr& k) override { sm_.handleResolvedV4Nexthop(k); }
   void onResolvedV6(const VrfAndIpGenAddr& k) override { sm_.handleResolvedV6Nexthop(k); }
   void onVrfName(VrfId vrfId) override { sm_.handleVrfName(vrfId); }
};

class MplsSm::HwFecIdResponseReactor : public SmReactor<FecIdToHwFecIdResponse::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onHwFecId(Memtab::Fib::FecId fecId) override { sm_.handleHwFecIdResponse(fecId); }
};

class MplsSm::ClockReactor : public SmReactor<Kor::Clock::NotifieeConst> {
 public:
   using SmReactor::SmReactor;
   void onTimeMin() override { sm_.doReviewVrfs(); }
};

// ---- Construction and destruction.

MplsSm::MplsSm(Kor::Ptr<const Mpls::Status> mplsStatus,
               Kor::Ptr<const Mpls::RoutingInfo> mplsRoutingInfo,
               Kor::Ptr<const Mpls::LfibStatus> transitLfib,
               Kor::Ptr<const Routing::Hardware::RouteStatus> routingHwRouteStatus,
               Kor::Ptr<Mpls::Hardware::Status> routingHwMplsStatus,
               Kor::Ptr<RouteReactorConfig> routeReactorConfig,
               Kor::Ptr<Route6ReactorConfig> route6ReactorConfig,
               Kor::Ptr<MplsHwConfig> mplsHwConfig, Kor::Ptr<MplsHwStatus> mplsHwStatus,
               Kor::Ptr<const L3Status> falL3Status, Kor::Ptr<MonitoredNexthopSm> monitoredNhSm,
               Kor::Ptr<Regdb::EntityManager> entityManager, Kor::Ptr<Loom::AttrLogSm> attrLogSm,
               Kor::Ptr<Kor::Clock> clock)
    : Kor::Entity("MplsSm"),
      mplsStatus_(std::move(mplsStatus)),
      mplsRoutingInfo_(std::move(mplsRoutingInfo)),
      transitLfib_(std::move(transitLfib)),
      routingHwRouteStatus_(std::move(routingHwRouteStatus)),
      routingHwMplsStatus_(std::move(routingHwMplsStatus)),
      routeReactorConfig_(std::move(routeReactorConfig)),
      route6ReactorConfig_(std::move(route6ReactorConfig)),
      mplsHwConfig_(std::move(mplsHwConfig)),
      mplsHwStatus_(std::move(mplsHwStatus)),
      falL3Status_(std::move(falL3Status)),
      monitoredNhSm_(std::move(monitoredNhSm)),
      entityManager_(std::move(entityManager)),
      attrLogSm_(std::move(attrLogSm)),
      clock_(std::move(clock)) {
   lfibTrackingStatus_ = Kor::make<Mpls::LfibTrackingStatus>("MplsSm-trackingStatus");
   refreshDefaultVrfId();
   // The toggle is read once at load with default off; inPlaceAdjacencyUpdateSupported asks again
   // if that first answer was not a configured one.
   inPlaceToggleWord_ = Log::getToggleState("InPlaceMplsAdjacencyUpdate", false);

   Kor::attachReactor(mplsStatusReactor_, mplsStatus_, *this);
   Kor::attachReactor(routingInfoReactor_, mplsRoutingInfo_, *this);
   Kor::attachReactor(lfibReactor_, transitLfib_, *this);
   Kor::attachReactor(trackingStatusReactor_, lfibTrackingStatus_, *this);
   Kor::attachReactor(hwStatusReactor_, mplsHwStatus_, *this);
   Kor::attachReactor(l3StatusReactor_, falL3Status_, *this);
   Kor::attachReactor(clockReactor_, clock_, *this);
   if (mplsHwStatus_) {
      // Copy: creating a reactor may call back into handlers that touch the collection.
      auto statuses = mplsHwStatus_->vrfStatusMap();
      for (const auto& [vrfId, status] : statuses) {
         mplsHwVrfStatusIs(status);
      }
   }
   handleInitialized();
}

MplsSm::~MplsSm() {
   Kor::silence(mplsStatusReactor_, routingInfoReactor_, lfibReactor_, trackingStatusReactor_,
                hwStatusReactor_, l3StatusReactor_, hwFecIdResponseReactor_, clockReactor_);
   for (auto& [vrfId, reactor] : mplsHwVrfStatus_) {
      Kor::silence(reactor);
   }
   initialized_ = false;
   mplsStateDelAll();
   numAllocator_ = nullptr;
   if (lfibTrackingSm_) {
      lfibTrackingSm_->viaSetSkipIs({});
   }
   lfibTrackingSm_ = nullptr;
   lfibTrackingStatus_ = nullptr;
   numAllocatorConfig_ = nullptr;
   numAllocatorStatus_ = nullptr;
}

Kor::Ptr<MplsSm> MplsSmIs(Kor::Ptr<const Mpls::Status> mplsStatus,
                          Kor::Ptr<const Mpls::RoutingInfo> mplsRoutingInfo,
                          Kor::Ptr<const Mpls::LfibStatus> transitLfib,
                          Kor::Ptr<const Routing::Hardware::RouteStatus> routingHwRouteStatus,
                          Kor::Ptr<Mpls::Hardware::Status> routingHwMplsStatus,
                          Kor::Ptr<RouteReactorConfig> routeReactorConfig,
                          Kor::Ptr<Route6ReactorConfig> route6ReactorConfig,
                          Kor::Ptr<MplsHwConfig> mplsHwConfig, Kor::Ptr<MplsHwStatus> mplsHwStatus,
                          Kor::Ptr<const L3Status> falL3Status,
                          Kor::Ptr<MonitoredNexthopSm> monitoredNhSm,
                          Kor::Ptr<Regdb::EntityManager> entityManager,
                          Kor::Ptr<Loom::AttrLogSm> attrLogSm, Kor::Ptr<Kor::Clock> clock) {
   return Kor::make<MplsSm>(
       std::move(mplsStatus), std::move(mplsRoutingInfo), std::move(transitLfib),
       std::move(routingHwRouteStatus), std::move(routingHwMplsStatus),
       std::move(routeReactorConfig), std::move(route6ReactorConfig), std::move(mplsHwConfig),
       std::move(mplsHwStatus), std::move(falL3Status), std::move(monitoredNhSm),
       std::move(entityManager), std::move(attrLogSm), std::move(clock));
}

void MplsSm::mplsSmHelperIs(Kor::Ptr<FalHelper::MplsSmHelper> h) {
   mplsSmHelper_ = std::move(h);
   helperHeldRoutes_.clear();
   if (mplsSmHelper_ && !routeHelperReconciled_) {
      for (const auto& key : mplsSmHelper_->routeKeys()) {
         helperHeldRoutes_.insert(key);
      }
   }
   maybeReconcileRouteHelperWithoutState();
}

void MplsSm::hwFecIdResponseIs(Kor::Ptr<const FecIdToHwFecIdResponse> t) {
   hwFecIdResponse_ = std::move(t);
   Kor::attachReactor(hwFecIdResponseReactor_, hwFecIdResponse_, *this);
}

// ---- Start-up.

void MplsSm::handleInitialized() {
   SM_TRACE(8, "handleInitialized");
   FAL_ASSERT(clock_);
   clock_->timeMinIs(Kor::Clock::never());
   FAL_ASSERT(monitoredNhSm());

   // Whatever an earlier incarnation programmed is not ours to trust: clear it before anything.
   if (mplsHwConfig_) {
      auto configs = mplsHwConfig_->vrfConfigMap();
      for (const auto& [vrfId, config] : configs) {
         config->l2AdjacencyDelAll();
         config->routeDelAll();
      }
   }
   if (routingHwMplsStatus_) {
      routingHwMplsStatus_->l2AdjacencyDelAll();
      routingHwMplsStatus_->adjacencyDelAll();
      routingHwMplsStatus_->routeDelAll();
   }

   // An earlier incarnation that logged FULL and never NORMAL left its mark in the configuration:
   // this one owes the NORMAL, and does not log FULL again meanwhile.
   if (mplsHwConfig_ && falMplsHwVrfConfig(defaultVrf())->resourceFullLogged()) {
      resourceFullLoggedIs(true);
      inheritedFull_ = true;
   }

   FAL_ASSERT(mplsStatus() && transitLfib() && mplsRoutingInfo() && mplsHwConfig(),
              "mplsStatus() && transitLfib() && mplsRoutingInfo() && mplsHwConfig()");
   handleMplsRouting(mplsRoutingInfo_->mplsRouting());
   handleNexthopResolutionAllowDefaultRoute();

   numAllocatorConfig_ = Kor::make<Loom::NumAllocatorConfig>(Loom::Range(0, 4294967295u), 10.0);
   numAllocatorStatus_ = Kor::make<Loom::NumAllocatorStatus>();
   numAllocator_ = Kor::make<Loom::NumAllocator>(numAllocatorConfig_, numAllocatorStatus_, clock_);

   lfibTrackingSm_ = Kor::make<Mpls::LfibTrackingSm>(
       transitLfib_, lfibTrackingStatus_, Mpls::lfibTrackingViaSets_, "MplsSm-TrackingSm");
   // The backlog is drained as each key arrives (handleLFibViaSet), so a set whose handling would
   // change nothing need not go through it: at a million decap routes that is a million ordered
   // insertions and erasures, each with two notifications.
   lfibTrackingSm_->viaSetSkipIs(
       [this](const Mpls::LfibViaSetKey& key) { return initialized_ && foreignViaSetUnused(key); });
   initialized_ = true;
   handleLFibViaSet();
   maybeReconcileRouteHelperWithoutState();
}

// ---- Per-VRF state and accessors.

Kor::Ptr<VrfMplsState> MplsSm::mplsStateIs(const L3::VrfName& vrf) {
   if (defaultState_ && vrf == defaultVrf()) {
      return defaultState_;
   }
   auto [it, inserted] = mplsState_.try_emplace(vrf);
   if (inserted) {
      SM_TRACE(5, "create state for vrf " << vrf);
      it->second = Kor::make<VrfMplsState>(vrf);
   }
   if (vrf == defaultVrf()) {
      defaultState_ = it->second;
   }
   return it->second;
}

Kor::Ptr<VrfMplsState> MplsSm::mplsState(const L3::VrfName& vrf) const {
   if (vrf == defaultVrf()) {
      return defaultState_;
   }
   return Kor::mapValueOr(mplsState_, vrf);
}

void MplsSm::mplsStateDel(const L3::VrfName& name) {
   const L3::VrfName vrf = name;  // `name` may be the very key that goes below
   auto it = mplsState_.find(vrf);
   if (it == mplsState_.end()) {
      return;
   }
   // Hand the next-hop watches back before the state goes, so nothing is left watched.
   Kor::Ptr<VrfMplsState> state = it->second;
   auto nextHops = state->mplsNextHopMap();
   for (const auto& [nh, mplsNextHop] : nextHops) {
      for (const auto& l3Adj : std::vector<L3AdjacencyPtr>(mplsNextHop->resolvedByRRSet().begin(),
                                                           mplsNextHop->resolvedByRRSet().end())) {
         mplsNextHop->resolvedByRRDel(l3Adj);
      }
      for (const auto& l3Adj : std::vector<L3AdjacencyPtr>(mplsNextHop->resolvedByMNHSet().begin(),
                                                           mplsNextHop->resolvedByMNHSet().end())) {
         mplsNextHop->resolvedByMNHDel(l3Adj);
      }
      unwatchNextHopIfUnused(*state, nh);
   }
   mplsState_.erase(it);
   if (vrf == defaultVrf()) {
      defaultState_ = nullptr;
   }
   vrfForReview_.erase(vrf);
}

void MplsSm::mplsStateDelAll() {
   while (!mplsState_.empty()) {
      mplsStateDel(mplsState_.begin()->first);
   }
}

VrfId MplsSm::vrfIdOf(const L3::VrfName& vrf) const {
   // Every route of every pass asks for the default VRF's id: answer it from the cache that
   // handleVrfName keeps, not from a lookup by name.
   if (vrf == defaultVrf()) {
      return defaultVrfId_;
   }
   if (falL3Status_) {
      if (auto id = falL3Status_->vrfIdOf(vrf)) {
         return *id;
      }
   }
   // The default VRF is id 0 on every platform, known name or not.
   return VrfId(0);
}

Kor::Ptr<MplsHwVrfConfig> MplsSm::falMplsHwVrfConfig(const L3::VrfName& vrf) {
   VrfId id = vrfIdOf(vrf);
   // This machine never deletes a per-VRF configuration, so the one it created last stays valid.
   if (lastVrfConfig_ && lastVrfConfig_->vrfId() == id) {
      return lastVrfConfig_;
   }
   lastVrfConfig_ = mplsHwConfig_->vrfConfigIs(id);
   return lastVrfConfig_;
}

void MplsSm::refreshDefaultVrfId() {
   defaultVrfId_ = VrfId(0);
   defaultVrfKnown_ = false;
   if (falL3Status_) {
      if (auto id = falL3Status_->vrfIdOf(defaultVrf())) {
         defaultVrfId_ = *id;
         defaultVrfKnown_ = true;
      }
   }
}

Kor::Ptr<const MplsHwVrfStatus> MplsSm::falMplsHwVrfStatus(const L3::VrfName& vrf) const {
   // A status is found only through a known VRF name: until the L3 status names the VRF, the
   // platform's answers for its id cannot be told to be ours.
   if (!mplsHwStatus_ || !vrfKnown(vrf)) {
      return nullptr;
   }
   return mplsHwStatus_->vrfStatus(vrfIdOf(vrf));
}

Kor::Ptr<MplsHwVrfStatus> MplsSm::falMplsHwVrfStatusNonConst(const L3::VrfName& vrf) {
   if (!mplsHwStatus_ || !vrfKnown(vrf)) {
      return nullptr;
   }
   return mplsHwStatus_->vrfStatus(vrfIdOf(vrf));
}

bool MplsSm::vrfKnown(const L3::VrfName& vrf) const {
   if (vrf == defaultVrf()) {
      return defaultVrfKnown_;
   }
   return falL3Status_ && falL3Status_->vrfIdOf(vrf).has_value();
}

bool MplsSm::platformRoutingEnabled(const L3::VrfName& vrf) const {
   auto status = falMplsHwVrfStatus(vrf);
   return status && status->mplsRouting();
}

// ---- Routing switches and VRF names.

void MplsSm::handleMplsRouting(bool routing) {
   const L3::VrfName& vrf = defaultVrf();
   if (routing) {
      SM_DECISION(1, "mplsRouting enabled in vrf " << vrf);
      falMplsHwVrfConfig(vrf)->mplsRoutingIs(true);
      // Back on before the platform saw it off (the routes were still draining): no confirmation
      // will come to bring the routes back, so they are taken up now.
      if (initialized_ && platformRoutingEnabled(vrf)) {
         handleLFibRoute();
      }
      return;
   }
   SM_DECISION(1, "mplsRouting disabled in vrf " << vrf);
   auto state = mplsState(vrf);
   if (!state || state->routes() == 0) {
      falMplsHwVrfConfig(vrf)->mplsRoutingIs(false);
      maybeReconcileRouteHelperWithoutState();
      return;
   }
   // Withdraw the routes first; the hardware flag goes once the VRF is empty.
   for (const auto& [key, route] : state->routeMap()) {
      state->routeKeyForReviewIs(key, true);
   }
   doMaybeScheduleReview(vrf);
}

void MplsSm::handleHwRoutingEnabled(VrfId vrfId, bool routing) {
   if (!falL3Status_ || !falL3Status_->vrfNameHas(vrfId)) {
      SM_DECISION(1, "Vrf name has not been added yet");
      return;
   }
   L3::VrfName vrfName = falL3Status_->vrfName(vrfId);
   if (!(vrfName == L3::VrfName::defaultVrf())) {
      // Only the default VRF carries MPLS routes; a platform status for another VRF is not ours.
      SM_DECISION(1, "Vrf: " << vrfName << " is not default. skip.");
      return;
   }
   if (routing) {
      SM_DECISION(1, "platform enabled mplsRouting in vrf " << vrfName);
      handleLFibRoute();
      maybeReconcileRouteHelperWithoutState();
   } else {
      SM_DECISION(1, "platform disnabled mplsRouting in vrf " << vrfName);
   }
}

void MplsSm::handleVrfName(VrfId vrfId) {
   refreshDefaultVrfId();
   L3::VrfName name = falL3Status_->vrfName(vrfId);
   if (!(name == L3::VrfName::defaultVrf())) {
      SM_DECISION(1, "Vrf: " << name << " is not default. skip.");
      return;
   }
   auto status = mplsHwStatus_ ? mplsHwStatus_->vrfStatus(vrfId) : nullptr;
   if (status && status->mplsRouting()) {
      SM_DECISION(1, "platform enabled mplsRouting in vrf: " << name);
      handleLFibRoute();
      maybeReconcileRouteHelperWithoutState();
   } else {
      SM_DECISION(1, "platform disabled mplsRouting in vrf: " << name);
   }
}

void MplsSm::mplsHwVrfStatusIs(const Kor::Ptr<MplsHwVrfStatus>& status) {
   auto& reactor = mplsHwVrfStatus_[status->vrfId()];
   if (reactor && reactor->notifier() == status) {
      return;
   }
   Kor::attachReactor(reactor, status, *this);
   // A new reactor sees the state the status already has.
   handleHwRoutingEnabled(status->vrfId(), status->mplsRouting());
}

void MplsSm::mplsHwVrfStatusDel(VrfId vrfId) {
   mplsHwVrfStatus_.erase(vrfId);
}

void MplsSm::mplsHwVrfStatusDelAll() {
   mplsHwVrfStatus_.clear();
}

}  // namespace Fal
