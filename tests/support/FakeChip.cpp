#include "FakeChip.h"

namespace TestSupport {

class FakeChip::ConfigReactor : public Fal::MplsHwConfig::NotifieeConst {
 public:
   ConfigReactor(Kor::Ptr<const Fal::MplsHwConfig> c, FakeChip& chip)
       : Fal::MplsHwConfig::NotifieeConst(std::move(c)), chip_(chip) {}
   void onVrfConfig(Fal::VrfId id) override { chip_.vrfConfigChanged(id); }

 private:
   FakeChip& chip_;
};

class FakeChip::VrfReactor : public Fal::MplsHwVrfConfig::NotifieeConst {
 public:
   VrfReactor(Kor::Ptr<const Fal::MplsHwVrfConfig> c, FakeChip& chip)
       : Fal::MplsHwVrfConfig::NotifieeConst(std::move(c)), chip_(chip) {}
   void onMplsRouting() override {
      chip_.dirty_[notifier()->vrfId()].routing = true;
      chip_.dirty();
   }
   void onRoute(const Mpls::RouteKey& k) override {
      chip_.dirty_[notifier()->vrfId()].routes.insert(k);
      chip_.dirty();
   }
   void onL2Adjacency(const Fal::L2AdjacencyPtr& a) override {
      chip_.dirty_[notifier()->vrfId()].adjs.insert(a);
      chip_.dirty();
   }

 private:
   FakeChip& chip_;
};

FakeChip::FakeChip(Kor::Ptr<Loom::EventLoop> loop, Kor::Ptr<Fal::MplsHwConfig> config,
                   Kor::Ptr<Fal::MplsHwStatus> status)
    : config_(std::move(config)), status_(std::move(status)) {
   task_ = Kor::make<Loom::Task>(loop->scheduler(), "fakeChip", 5, [this] { run(); });
   configReactor_ = std::make_unique<ConfigReactor>(config_, *this);
   for (const auto& [id, vrf] : config_->vrfConfigMap()) {
      vrfConfigChanged(id);
   }
}

FakeChip::~FakeChip() {
   task_->unschedule();
}

void FakeChip::vrfConfigChanged(Fal::VrfId id) {
   auto vrf = config_->vrfConfig(id);
   if (!vrf) {
      vrfReactors_.erase(id);
      return;
   }
   vrfReactors_[id] = std::make_unique<VrfReactor>(vrf, *this);
   auto& d = dirty_[id];
   d.routing = true;
   for (const auto& [key, r] : vrf->routeMap()) {
      d.routes.insert(key);
   }
   for (const auto& [adj, n] : vrf->l2AdjacencyMap()) {
      d.adjs.insert(adj);
   }
   dirty();
}

void FakeChip::dirty() {
   task_->schedule();
}

void FakeChip::confirmRoutingIs(bool v) {
   confirmRouting_ = v;
   if (v) {
      for (const auto& [id, vrf] : config_->vrfConfigMap()) {
         dirty_[id].routing = true;
      }
      dirty();
   }
}

void FakeChip::reprogramAll() {
   for (const auto& [id, vrf] : config_->vrfConfigMap()) {
      auto& d = dirty_[id];
      for (const auto& [key, r] : vrf->routeMap()) {
         d.routes.insert(key);
      }
      for (const auto& [adj, n] : vrf->l2AdjacencyMap()) {
         d.adjs.insert(adj);
      }
      auto status = status_->vrfStatus(id);
      if (status) {
         for (const auto& [key, flag] : status->unprogrammedRouteMap()) {
            d.routes.insert(key);
         }
      }
   }
   dirty();
}

void FakeChip::run() {
   auto work = std::move(dirty_);
   dirty_.clear();
   for (auto& [id, d] : work) {
      auto config = config_->vrfConfig(id);
      if (!config) {
         continue;
      }
      auto status = status_->vrfStatusIs(id);
      if (d.routing && confirmRouting_) {
         status->mplsRoutingIs(config->mplsRouting());
      }
      for (const auto& adj : d.adjs) {
         programAdjacency(*config, *status, adj);
      }
      for (const auto& key : d.routes) {
         programRoute(*config, *status, key);
      }
   }
}

void FakeChip::programAdjacency(Fal::MplsHwVrfConfig& config, Fal::MplsHwVrfStatus& status,
                                const Fal::L2AdjacencyPtr& adj) {
   std::uint32_t count = config.l2Adjacency(adj);
   if (count == 0) {
      status.l2AdjacencyDel(adj);
      status.unprogrammedAdjacencyDel(adj);
      return;
   }
   bool fits = status.l2AdjacencyHas(adj) || status.l2Adjacencies() < adjCapacity_;
   if (!fits) {
      status.unprogrammedReasonIs(Fal::UnprogrammedReason::AdjacencyFull);
      status.unprogrammedAdjacencyIs(adj, true);
      return;
   }
   ++adjWrites_;
   status.l2AdjacencyIs(adj, count);
   status.unprogrammedAdjacencyDel(adj);
}

void FakeChip::programRoute(Fal::MplsHwVrfConfig& config, Fal::MplsHwVrfStatus& status,
                            const Mpls::RouteKey& key) {
   Fal::MplsHwRoute route = config.route(key);
   if (!route) {
      status.routeDel(key);
      status.unprogrammedRouteDel(key);
      return;
   }
   ++routeAttempts_;
   bool adjOk = route.l2Adjacency() && status.l2AdjacencyHas(route.l2Adjacency());
   bool fits = status.routeHas(key) || status.routes() < routeCapacity_;
   if (refuseRoutes_ > 0 || !fits || !adjOk) {
      Fal::UnprogrammedReason reason = refuseRoutes_ > 0 ? refuseReason_
                                       : !adjOk          ? Fal::UnprogrammedReason::AdjacencyFull
                                                         : Fal::UnprogrammedReason::RouteFull;
      if (refuseRoutes_ > 0) {
         --refuseRoutes_;
      }
      status.routeDel(key);
      status.unprogrammedReasonIs(reason);
      status.unprogrammedRouteIs(key, true);
      return;
   }
   ++routeWrites_;
   status.routeIs(route);
   status.unprogrammedRouteDel(key);
}

}  // namespace TestSupport
