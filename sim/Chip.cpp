#include "Chip.h"

#include <algorithm>
#include <vector>

namespace sim {

class Chip::ConfigReactor : public Fal::MplsHwConfig::NotifieeConst {
 public:
   ConfigReactor(Kor::Ptr<const Fal::MplsHwConfig> c, Chip& chip)
       : Fal::MplsHwConfig::NotifieeConst(std::move(c)), chip_(chip) {}
   void onVrfConfig(Fal::VrfId id) override { chip_.vrfConfigChanged(id); }

 private:
   Chip& chip_;
};

class Chip::VrfReactor : public Fal::MplsHwVrfConfig::NotifieeConst {
 public:
   VrfReactor(Kor::Ptr<const Fal::MplsHwVrfConfig> c, Chip& chip)
       : Fal::MplsHwVrfConfig::NotifieeConst(std::move(c)), chip_(chip) {}
   void onMplsRouting() override {
      chip_.dirty_[notifier()->vrfId()].routing = true;
      chip_.arm();
   }
   void onRoute(const Mpls::RouteKey& k) override {
      chip_.routeConfigured(notifier()->vrfId(), k);
      chip_.dirty_[notifier()->vrfId()].routes.insert(k);
      chip_.arm();
   }
   void onL2Adjacency(const Fal::L2AdjacencyPtr& a) override {
      chip_.dirty_[notifier()->vrfId()].adjs.insert(a);
      chip_.arm();
   }

 private:
   Chip& chip_;
};

Chip::Chip(Kor::Ptr<Loom::EventLoop> loop, Kor::Ptr<const Fal::MplsHwConfig> config,
           Kor::Ptr<Fal::MplsHwStatus> status)
    : loop_(std::move(loop)), config_(std::move(config)), status_(std::move(status)) {
   task_ = Kor::make<Loom::TimerTask>(loop_->scheduler(), "simChip", 5, [this] { run(); });
   configReactor_ = std::make_unique<ConfigReactor>(config_, *this);
   for (const auto& [id, vrf] : config_->vrfConfigMap()) {
      vrfConfigChanged(id);
   }
}

Chip::~Chip() {
   task_->cancel();
   configReactor_.reset();
   vrf_.clear();
}

void Chip::routeCapacityIs(std::size_t n) {
   routeCapacity_ = n;
   reexamine();
}

void Chip::l2AdjacencyCapacityIs(std::size_t n) {
   adjCapacity_ = n;
   reexamine();
}

void Chip::refuseNextIs(RefuseTarget target, std::size_t n, Fal::UnprogrammedReason reason) {
   if (target == RefuseTarget::routes) {
      refuseRoutes_ = n;
      refuseRouteReason_ = reason;
   } else {
      refuseAdjs_ = n;
      refuseAdjReason_ = reason;
   }
}

std::size_t Chip::refusalsLeft(RefuseTarget target) const {
   return target == RefuseTarget::routes ? refuseRoutes_ : refuseAdjs_;
}

void Chip::interfaceReadyIs(Wire::IntfId intf, bool ready) {
   bool changed = ready ? notReady_.erase(intf) != 0 : notReady_.insert(intf).second;
   if (changed) {
      reexamine();
   }
}

void Chip::confirmRoutingIs(bool v) {
   confirmRouting_ = v;
   for (const auto& [id, vrf] : config_->vrfConfigMap()) {
      dirty_[id].routing = true;
   }
   arm();
}

void Chip::outOfOrderIs(bool v) {
   outOfOrder_ = v;
   if (!v) {
      for (auto& [id, vrf] : vrf_) {
         vrf.unanswered.clear();
      }
   }
}

void Chip::routeConfigured(Fal::VrfId id, const Mpls::RouteKey& key) {
   if (!outOfOrder_) {
      return;
   }
   auto config = config_->vrfConfig(id);
   Fal::MplsHwRoute route = config ? config->route(key) : Fal::MplsHwRoute();
   if (!route) {
      return;
   }
   auto& values = vrf_[id].unanswered[key];
   if (values.empty() || !(values.back() == route)) {
      values.push_back(route);
   }
}

bool Chip::answerLate(Fal::VrfId id, const Fal::MplsHwVrfConfig& config,
                      Fal::MplsHwVrfStatus& status, const Mpls::RouteKey& key) {
   VrfState& vrf = vrf_[id];
   auto it = vrf.unanswered.find(key);
   if (it == vrf.unanswered.end()) {
      return false;
   }
   std::vector<Fal::MplsHwRoute> values = std::move(it->second);
   vrf.unanswered.erase(it);
   if (values.empty() || values.front() == config.route(key)) {
      return false;
   }
   // The oldest value goes into the status as if it had been programmed just now; the current
   // configuration is answered at the next run.
   if (!status.routeHas(key)) {
      ++routesInHw_;
   }
   ++lateAnswers_;
   status.unprogrammedRouteDel(key);
   status.routeIs(values.front());
   dirty_[id].routes.insert(key);
   arm();
   return true;
}

void Chip::vrfConfigChanged(Fal::VrfId id) {
   auto vrf = config_->vrfConfig(id);
   if (!vrf) {
      removeVrf(id);
      return;
   }
   vrf_[id].reactor = std::make_unique<VrfReactor>(vrf, *this);
   markAll(id);
   arm();
}

void Chip::markAll(Fal::VrfId id) {
   auto& d = dirty_[id];
   d.routing = true;
   if (auto vrf = config_->vrfConfig(id)) {
      for (const auto& [key, r] : vrf->routeMap()) {
         d.routes.insert(key);
      }
      for (const auto& [adj, n] : vrf->l2AdjacencyMap()) {
         d.adjs.insert(adj);
      }
   }
   // What the status holds without configuration behind it is stale and must go.
   if (auto status = status_->vrfStatus(id)) {
      for (const auto& [key, r] : status->routeMap()) {
         d.routes.insert(key);
      }
      for (const auto& [key, flag] : status->unprogrammedRouteMap()) {
         d.routes.insert(key);
      }
      for (const auto& [adj, n] : status->l2AdjacencyMap()) {
         d.adjs.insert(adj);
      }
      for (const auto& [adj, flag] : status->unprogrammedAdjacencyMap()) {
         d.adjs.insert(adj);
      }
   }
}

void Chip::reexamine() {
   for (const auto& [id, vrf] : config_->vrfConfigMap()) {
      markAll(id);
   }
   arm();
}

void Chip::arm() {
   if (task_->pending()) {
      return;
   }
   if (answerDelay_ > 0) {
      task_->scheduleAfter(answerDelay_);
   } else {
      task_->schedule();
   }
}

void Chip::removeVrf(Fal::VrfId id) {
   dirty_.erase(id);
   vrf_.erase(id);
   auto status = status_->vrfStatus(id);
   if (!status) {
      return;
   }
   routesInHw_ -= std::min(routesInHw_, status->routes());
   adjsInHw_ -= std::min(adjsInHw_, status->l2Adjacencies());
   status->routeDelAll();
   status->unprogrammedRouteDelAll();
   status->l2AdjacencyDelAll();
   status->unprogrammedAdjacencyDelAll();
   status_->vrfStatusDel(id);
}

void Chip::run() {
   // Answer in VRF order; work that arrives while answering waits for the next run. The keys are
   // taken out bit by bit, which leaves each VRF's bitmap allocated for the next run.
   std::vector<std::pair<Fal::VrfId, Answer>> work;
   for (auto& [id, d] : dirty_) {
      if (d.empty()) {
         continue;
      }
      Answer a;
      a.routing = d.routing;
      d.routing = false;
      a.adjs.assign(d.adjs.begin(), d.adjs.end());
      d.adjs.clear();
      if (!d.routes.empty()) {
         a.routes.reserve(d.routes.size());
         for (const auto& key : d.routes) {
            a.routes.push_back(key);
         }
         for (const auto& key : a.routes) {
            d.routes.erase(key);
         }
      }
      work.emplace_back(id, std::move(a));
   }
   for (auto& [id, a] : work) {
      answerVrf(id, a);
   }
}

void Chip::answerVrf(Fal::VrfId id, Answer& d) {
   auto config = config_->vrfConfig(id);
   if (!config) {
      return;
   }
   auto status = status_->vrfStatusIs(id);
   if (d.routing && confirmRouting_) {
      status->mplsRoutingIs(config->mplsRouting());
   }
   // Deterministic order whatever the hash tables did: adjacencies by index, routes by label.
   std::vector<Fal::L2AdjacencyPtr>& adjs = d.adjs;
   std::sort(adjs.begin(), adjs.end(),
             [](const auto& a, const auto& b) { return a->index() < b->index(); });
   std::vector<Mpls::RouteKey>& routes = d.routes;
   // Deletions first, so that what they free serves the creations of the same answer.
   if (outOfOrder_) {
      std::erase_if(
          routes, [&](const Mpls::RouteKey& key) { return answerLate(id, *config, *status, key); });
   }
   for (const auto& key : routes) {
      if (!config->routeHas(key)) {
         programRoute(id, *config, *status, key);
      }
   }
   for (const auto& adj : adjs) {
      if (!config->l2AdjacencyHas(adj)) {
         programAdjacency(id, *config, *status, adj);
      }
   }
   for (const auto& adj : adjs) {
      if (config->l2AdjacencyHas(adj)) {
         programAdjacency(id, *config, *status, adj);
      }
   }
   // An adjacency rewritten onto an interface that is not ready takes its programmed routes out
   // with it, although the routes themselves did not change.
   if (!notReady_.empty()) {
      for (const auto& adj : adjs) {
         if (config->l2AdjacencyHas(adj) && !egressReady(adj)) {
            for (const auto& [key, route] : config->routeMap()) {
               if (route.l2Adjacency() == adj && status->routeHas(key)) {
                  routes.push_back(key);
               }
            }
         }
      }
   }
   for (const auto& key : routes) {
      if (config->routeHas(key)) {
         programRoute(id, *config, *status, key);
      }
   }
}

void Chip::agentRestarting() {
   stale_.clear();
   reconciling_ = true;
   for (const auto& [id, status] : status_->vrfStatusMap()) {
      Stale& stale = stale_[id];
      // The via set of each adjacency, found once per adjacency rather than once per route.
      Kor::HashMap<Fal::L2AdjacencyPtr, std::uint32_t> viaSetOf;
      auto indexOf = [&](const Fal::L2AdjacencyPtr& adj) {
         auto [known, fresh] = viaSetOf.try_emplace(adj, 0);
         if (fresh) {
            auto [it, added] = stale.viaSetIndex.try_emplace(
                adj->l2ViaSet(), static_cast<std::uint32_t>(stale.viaSets.size()));
            if (added) {
               stale.viaSets.push_back(adj->l2ViaSet());
            }
            known->second = it->second;
         }
         return known->second;
      };
      for (const auto& [adj, n] : status->l2AdjacencyMap()) {
         ++stale.adjs[adj->l2ViaSet()];
         stale.adjPtrs.insert(adj);
      }
      for (const auto& [key, route] : status->routeMap()) {
         if (const Fal::L2AdjacencyPtr& adj = route.l2Adjacency()) {
            stale.routes[key] = indexOf(adj);
         }
      }
   }
}

void Chip::agentReconciled() {
   // What is still stale goes, except what the new incarnation never took out of the
   // configuration: it is programmed as it was.
   for (auto& [id, stale] : stale_) {
      auto status = status_->vrfStatus(id);
      for (const auto& adj : stale.adjPtrs) {
         if (status && status->l2AdjacencyHas(adj)) {
            auto it = stale.adjs.find(adj->l2ViaSet());
            if (it != stale.adjs.end() && it->second > 0) {
               --it->second;
            }
         }
      }
      for (const auto& [key, index] : stale.routes) {
         if (!status || !status->routeHas(key)) {
            ++routeDeletes_;
         }
      }
      for (const auto& [viaSet, n] : stale.adjs) {
         adjDeletes_ += n;
      }
   }
   stale_.clear();
   reconciling_ = false;
}

Chip::Stale* Chip::staleOf(Fal::VrfId id) {
   if (!reconciling_) {
      return nullptr;
   }
   auto vrf = stale_.find(id);
   return vrf == stale_.end() ? nullptr : &vrf->second;
}

bool Chip::takeStaleRoute(Fal::VrfId id, const Mpls::RouteKey& key,
                          const Fal::L2AdjacencyPtr& adj) {
   Stale* stale = staleOf(id);
   if (!stale) {
      return false;
   }
   auto it = stale->routes.find(key);
   if (it == stale->routes.end()) {
      return false;
   }
   const bool same = adj && stale->viaSets[it->second] == adj->l2ViaSet();
   stale->routes.erase(it);
   // A stale route rewritten with other forwarding is a write; its stale entry is gone with it.
   return same;
}

bool Chip::takeStaleAdjacency(Fal::VrfId id, const Fal::L2AdjacencyPtr& adj, bool present) {
   Stale* found = staleOf(id);
   if (!found) {
      return false;
   }
   Stale& stale = *found;
   if (present) {
      auto taken = stale.takenBack.find(adj);
      return taken != stale.takenBack.end() && taken->second == adj->l2ViaSet();
   }
   stale.takenBack[adj] = adj->l2ViaSet();
   auto it = stale.adjs.find(adj->l2ViaSet());
   if (it == stale.adjs.end()) {
      return false;
   }
   if (--it->second == 0) {
      stale.adjs.erase(it);
   }
   return true;
}

bool Chip::takeRefusal(RefuseTarget target, Fal::UnprogrammedReason& reason) {
   std::size_t& left = target == RefuseTarget::routes ? refuseRoutes_ : refuseAdjs_;
   if (left == 0) {
      return false;
   }
   --left;
   reason = target == RefuseTarget::routes ? refuseRouteReason_ : refuseAdjReason_;
   return true;
}

bool Chip::egressReady(const Fal::L2AdjacencyPtr& adj) const {
   if (notReady_.empty()) {
      return true;
   }
   for (const auto& via : adj->l2ViaSet()) {
      if (notReady_.contains(via.l2Intf())) {
         return false;
      }
   }
   return true;
}

void Chip::programAdjacency(Fal::VrfId id, const Fal::MplsHwVrfConfig& config,
                            Fal::MplsHwVrfStatus& status, const Fal::L2AdjacencyPtr& adj) {
   VrfState& vrf = vrf_[id];
   bool present = status.l2AdjacencyHas(adj);
   if (!config.l2AdjacencyHas(adj)) {
      if (present) {
         --adjsInHw_;
         // A stale adjacency stays in hardware until it is taken back or swept.
         if (!reconciling_ || !stale_[id].adjPtrs.contains(adj)) {
            ++adjDeletes_;
         }
         status.l2AdjacencyDel(adj);
      }
      status.unprogrammedAdjacencyDel(adj);
      vrf.adjReason.erase(adj);
      return;
   }
   std::uint32_t count = config.l2Adjacency(adj);
   if (present && status.l2Adjacency(adj) == count) {
      status.unprogrammedAdjacencyDel(adj);
      vrf.adjReason.erase(adj);
      return;
   }
   Fal::UnprogrammedReason reason = Fal::UnprogrammedReason::Success;
   bool refused = takeRefusal(RefuseTarget::adjacencies, reason);
   if (!refused && !present && adjsInHw_ >= adjCapacity_) {
      refused = true;
      reason = Fal::UnprogrammedReason::AdjacencyFull;
   }
   if (refused) {
      // A refused reprogramming leaves the earlier programming in place.
      ++refusals_;
      vrf.adjReason[adj] = reason;
      status.unprogrammedReasonIs(reason);
      status.unprogrammedAdjacencyIs(adj, true);
      return;
   }
   if (!present) {
      ++adjsInHw_;
   }
   if (!takeStaleAdjacency(id, adj, present)) {
      ++adjWrites_;
   }
   status.l2AdjacencyIs(adj, count);
   status.unprogrammedAdjacencyDel(adj);
   vrf.adjReason.erase(adj);
}

void Chip::refuseRoute(VrfState& vrf, Fal::MplsHwVrfStatus& status, const Mpls::RouteKey& key,
                       Fal::UnprogrammedReason reason) {
   ++refusals_;
   if (status.routeHas(key)) {
      --routesInHw_;
      status.routeDel(key);
   }
   vrf.routeReason[key] = reason;
   status.unprogrammedReasonIs(reason);
   status.unprogrammedRouteIs(key, true);
}

void Chip::programRoute(Fal::VrfId id, const Fal::MplsHwVrfConfig& config,
                        Fal::MplsHwVrfStatus& status, const Mpls::RouteKey& key) {
   VrfState& vrf = vrf_[id];
   bool present = status.routeHas(key);
   Fal::MplsHwRoute route = config.route(key);
   if (!route) {
      if (present) {
         --routesInHw_;
         if (!reconciling_ || !stale_[id].routes.contains(key)) {
            ++routeDeletes_;
         }
         status.routeDel(key);
      }
      // Only a listing this chip made is its to clear: a route that goes the FEC way is listed by
      // the transit machine when the route helper refuses it, and stays listed until retried.
      if (vrf.routeReason.erase(key) != 0) {
         status.unprogrammedRouteDel(key);
      }
      return;
   }
   const Fal::L2AdjacencyPtr& adj = route.l2Adjacency();
   // An interface that went down takes out even a route that is programmed as configured.
   if (adj && !egressReady(adj)) {
      refuseRoute(vrf, status, key, Fal::UnprogrammedReason::InterfaceNotReady);
      return;
   }
   if (present && status.route(key) == route) {
      status.unprogrammedRouteDel(key);
      vrf.routeReason.erase(key);
      return;
   }
   Fal::UnprogrammedReason reason = Fal::UnprogrammedReason::Success;
   if (!adj || !status.l2AdjacencyHas(adj)) {
      refuseRoute(vrf, status, key, Fal::UnprogrammedReason::AdjacencyFull);
      return;
   }
   if (takeRefusal(RefuseTarget::routes, reason)) {
      refuseRoute(vrf, status, key, reason);
      return;
   }
   if (!present && !routeRoom()) {
      refuseRoute(vrf, status, key, Fal::UnprogrammedReason::RouteFull);
      return;
   }
   if (!present) {
      ++routesInHw_;
   }
   if (!takeStaleRoute(id, key, adj)) {
      ++routeWrites_;
   }
   status.routeIs(route);
   status.unprogrammedRouteDel(key);
   vrf.routeReason.erase(key);
}

Fal::UnprogrammedReason Chip::routeReason(Fal::VrfId id, const Mpls::RouteKey& key) const {
   auto it = vrf_.find(id);
   if (it == vrf_.end()) {
      return Fal::UnprogrammedReason::Success;
   }
   return Kor::mapValueOr(it->second.routeReason, key, Fal::UnprogrammedReason::Success);
}

Fal::UnprogrammedReason Chip::adjacencyReason(Fal::VrfId id, const Fal::L2AdjacencyPtr& adj) const {
   auto it = vrf_.find(id);
   if (it == vrf_.end()) {
      return Fal::UnprogrammedReason::Success;
   }
   return Kor::mapValueOr(it->second.adjReason, adj, Fal::UnprogrammedReason::Success);
}

}  // namespace sim
