#include "State.h"

#include <algorithm>

namespace sim {

std::string_view routeStateName(RouteState state) {
   switch (state) {
      case RouteState::programmed:
         return "programmed";
      case RouteState::unprogrammed:
         return "unprogrammed";
      case RouteState::pending:
         return "pending";
      case RouteState::absent:
         return "absent";
   }
   return "absent";
}

std::optional<RouteState> parseRouteState(std::string_view text) {
   for (auto s : {RouteState::programmed, RouteState::unprogrammed, RouteState::pending,
                  RouteState::absent}) {
      if (routeStateName(s) == text) {
         return s;
      }
   }
   return std::nullopt;
}

std::size_t State::routesIn(RouteState state) const {
   return static_cast<std::size_t>(std::count_if(
       routes.begin(), routes.end(), [state](const RouteView& r) { return r.state == state; }));
}

namespace {

std::vector<Mpls::Hardware::L2Via> viasOf(const Fal::L2AdjacencyPtr& adj) {
   std::vector<Mpls::Hardware::L2Via> out;
   if (adj) {
      for (const auto& via : adj->l2ViaSet()) {
         out.push_back(via);
      }
   }
   return out;
}

void adjacencyInto(RouteView& v, const Fal::L2AdjacencyPtr& adj) {
   if (adj) {
      v.l2Adjacency = adj->index();
      v.vias = viasOf(adj);
   }
}

}  // namespace

RouteView routeView(const Agent& agent, const Mpls::RouteKey& key) {
   RouteView v;
   v.key = key;
   auto config = agent.defaultVrfConfig();
   auto status = agent.defaultVrfStatus();
   const auto& helper = *agent.routeHelper();
   Fal::MplsHwRoute configured = config ? config->route(key) : Fal::MplsHwRoute();
   v.configuredVersion = configured.version();
   if (status && status->routeHas(key)) {
      Fal::MplsHwRoute r = status->route(key);
      v.answeredVersion = r.version();
      v.state = RouteState::programmed;
      v.path = "adjacency";
      v.version = r.version();
      adjacencyInto(v, r.l2Adjacency());
      return v;
   }
   if (auto it = helper.routeMap().find(key); it != helper.routeMap().end()) {
      v.state = RouteState::programmed;
      v.path = "fec";
      v.fecId = it->second.fecId;
      return v;
   }
   if (!!configured) {
      v.version = configured.version();
      adjacencyInto(v, configured.l2Adjacency());
   }
   if (status && status->unprogrammedRouteHas(key)) {
      v.state = RouteState::unprogrammed;
      Fal::UnprogrammedReason reason = agent.chip().routeReason(Fal::VrfId(0), key);
      if (reason != Fal::UnprogrammedReason::Success) {
         v.reason = Fal::stringValue(reason);
      } else if (auto it = helper.refusedMap().find(key); it != helper.refusedMap().end()) {
         v.reason = "returnCode " + std::to_string(static_cast<unsigned>(it->second));
         v.path = "fec";
      } else {
         v.reason = Fal::stringValue(status->unprogrammedReason());
      }
      return v;
   }
   if (!!configured) {
      v.state = RouteState::pending;
      v.path = "adjacency";
      return v;
   }
   v.state = RouteState::absent;
   return v;
}

std::vector<AdjacencyView> adjacencyViews(const Agent& agent) {
   std::map<std::uint64_t, AdjacencyView> views;
   auto config = agent.defaultVrfConfig();
   auto status = agent.defaultVrfStatus();
   auto viewOf = [&](const Fal::L2AdjacencyPtr& adj) -> AdjacencyView& {
      AdjacencyView& v = views[adj->index()];
      v.index = adj->index();
      if (v.vias.empty()) {
         v.vias = viasOf(adj);
      }
      return v;
   };
   if (config) {
      for (const auto& [adj, count] : config->l2AdjacencyMap()) {
         viewOf(adj).count = count;
      }
      for (const auto& [key, route] : config->routeMap()) {
         if (route.l2Adjacency()) {
            viewOf(route.l2Adjacency()).routes++;
         }
      }
   }
   if (status) {
      for (const auto& [adj, count] : status->l2AdjacencyMap()) {
         viewOf(adj).programmed = true;
         viewOf(adj).programmedCount = count;
      }
      for (const auto& [adj, flag] : status->unprogrammedAdjacencyMap()) {
         auto reason = agent.chip().adjacencyReason(Fal::VrfId(0), adj);
         viewOf(adj).reason = Fal::stringValue(
             reason == Fal::UnprogrammedReason::Success ? status->unprogrammedReason() : reason);
      }
   }
   std::vector<AdjacencyView> out;
   for (auto& [index, v] : views) {
      out.push_back(std::move(v));
   }
   return out;
}

std::vector<DecapView> decapViews(const Agent& agent) {
   std::vector<DecapView> out;
   const auto& helper = *agent.decapHelper();
   for (const auto& [label, m] : helper.vrfMappingMap()) {
      DecapView v;
      v.kind = "vrf";
      v.label = label;
      v.vrf = m.vrfName;
      v.payloadType = m.payloadType;
      out.push_back(v);
   }
   for (const auto& [label, m] : helper.vlanMappingMap()) {
      DecapView v;
      v.kind = "vlan";
      v.label = label;
      v.vlan = m.vlanId;
      v.flood = m.flood;
      out.push_back(v);
   }
   for (const auto& [key, m] : helper.dot1qMappingMap()) {
      DecapView v;
      v.kind = "dot1q";
      v.label = key.first;
      v.dot1qTag = key.second;
      v.vlan = m.vlanId;
      v.flood = m.flood;
      out.push_back(v);
   }
   std::stable_sort(out.begin(), out.end(),
                    [](const DecapView& a, const DecapView& b) { return a.label < b.label; });
   return out;
}

std::vector<FecRequestView> fecRequestViews(const Agent& agent) {
   std::vector<FecRequestView> out;
   auto add = [&](const char* table, const Fal::FecIdToHwFecIdRequest& req,
                  const Fal::FecIdToHwFecIdResponse& resp) {
      Kor::OrderedSet<Memtab::Fib::FecId> ids;
      for (const auto& [id, r] : req.hwFecIdRequestMap()) {
         ids.insert(id);
      }
      for (const auto& [id, f] : req.fecMap()) {
         ids.insert(id);
      }
      for (auto id : ids) {
         FecRequestView v;
         v.table = table;
         v.fecId = id;
         const Memtab::Fib::Fec* fec = req.fecPtr(id);
         v.fec = fec != nullptr;
         v.vias = fec ? fec->vias() : 0;
         v.backupFecId = fec ? fec->backupFecId() : Memtab::Fib::FecId();
         v.hwFecId = resp.hwFecId(id).hwFecId();
         out.push_back(v);
      }
   };
   add("transit", *agent.fecRequest(), *agent.fecResponse());
   add("pseudowire", *agent.pwFecRequest(), *agent.pwFecResponse());
   return out;
}

State snapshot(const Agent& agent) {
   State s;
   s.time = agent.now();
   s.restarts = agent.restarts();
   Kor::OrderedSet<Mpls::RouteKey> keys;
   for (const auto& [key, route] : agent.lfib()->lfibRouteMap()) {
      ++s.lfibRoutes;
      auto type = route.viaSetKey().viaType();
      if (type == Mpls::viaTypeMplsIp_ || type == Mpls::viaTypeExternalFec_) {
         keys.insert(key);
      }
   }
   if (auto config = agent.defaultVrfConfig()) {
      for (const auto& [key, r] : config->routeMap()) {
         keys.insert(key);
      }
   }
   if (auto status = agent.defaultVrfStatus()) {
      for (const auto& [key, r] : status->routeMap()) {
         keys.insert(key);
      }
      for (const auto& [key, flag] : status->unprogrammedRouteMap()) {
         keys.insert(key);
      }
   }
   for (const auto& [key, r] : agent.routeHelper()->routeMap()) {
      keys.insert(key);
   }
   s.routes.reserve(keys.size());
   for (const auto& key : keys) {
      s.routes.push_back(routeView(agent, key));
   }
   s.adjacencies = adjacencyViews(agent);
   s.decaps = decapViews(agent);
   for (const auto& [key, info] : agent.lfibHwStatus()->unprogrammedRouteMap()) {
      s.decapUnprogrammed.emplace_back(key, static_cast<std::uint32_t>(info.reason()));
   }
   for (const auto& [label, info] : agent.pwDecapTable().entryMap()) {
      s.pwDecaps.push_back(info);
   }
   s.fecRequests = fecRequestViews(agent);
   for (const auto& record : agent.logSink().records()) {
      s.logs[record.name]++;
   }
   s.decapMismatches = agent.decapHelper()->mismatches();
   return s;
}

}  // namespace sim
