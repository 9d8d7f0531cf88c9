#pragma once

#include <cstdint>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/DenseRecordMap.h>
#include <mplsfwd/kor/Entity.h>

#include "HardwareAdjacency.h"
#include "HardwareL2Adjacency.h"
#include "HardwareRoute.h"

namespace Mpls::Hardware {

// How the status stores a published route: its slot is its label, so the label is not repeated
// in it (one record per route, a million at full scale).
struct RoutePacking {
   struct Packed {
      std::uint64_t adjacencyIndex = 0;
      std::uint64_t l2AdjacencyIndex = 0;
      std::uint64_t version = 0;
      std::uint32_t metric = 0;
      bool unprogrammed = false;
      bool operator==(const Packed&) const = default;
   };
   static const RouteKey& key(const Route& r) { return r.routeKey(); }
   static Packed pack(const Route& r) {
      return {r.adjacencyIndex(), r.l2AdjacencyIndex(), r.version(), r.metric(), r.unprogrammed()};
   }
   static Route unpack(const RouteKey& k, const Packed& p) {
      Route r(k);
      r.adjacencyIndexIs(p.adjacencyIndex);
      r.l2AdjacencyIndexIs(p.l2AdjacencyIndex);
      r.versionIs(p.version);
      r.metricIs(p.metric);
      r.unprogrammedIs(p.unprogrammed);
      return r;
   }
};
static_assert(sizeof(RoutePacking::Packed) <= 32, "a stored route is kept per route");

// The shared view of what the MPLS forwarding layer programs, published for other agents: the
// hardware L3 adjacencies and L2 adjacencies by index (instantiating: get or create), the routes
// by key, and whether next hops may resolve through the default route.
class Status : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<Status> {
    public:
      using Kor::Notifiee<Status>::Notifiee;
      virtual void onAdjacency(std::uint64_t) {}
      virtual void onL2Adjacency(std::uint64_t) {}
      virtual void onRoute(const RouteKey&) {}
      virtual void onNexthopResolutionAllowDefaultRoute() {}
   };
   using AdjacencyMap = Kor::HashMap<std::uint64_t, Kor::Ptr<Adjacency>>;
   using L2AdjacencyMap = Kor::HashMap<std::uint64_t, Kor::Ptr<L2Adjacency>>;
   using RouteMap = Kor::DenseRecordMap<RouteKey, Route, RoutePacking>;

   explicit Status(Kor::Name name) : Kor::Entity(std::move(name)) {}

   Kor::Ptr<Adjacency> adjacency(std::uint64_t index) const {
      return Kor::mapValueOr(adjacency_, index);
   }
   Kor::Ptr<Adjacency> adjacencyIs(std::uint64_t index) {
      return instantiate(adjacency_, index, &NotifieeConst::onAdjacency);
   }
   void adjacencyDel(std::uint64_t index) {
      if (adjacency_.erase(index)) {
         notify(&NotifieeConst::onAdjacency, index);
      }
   }
   void adjacencyDelAll() {
      Kor::deleteEachKey(adjacency_, [this](std::uint64_t i) { adjacencyDel(i); });
   }
   const AdjacencyMap& adjacencyMap() const { return adjacency_; }

   Kor::Ptr<L2Adjacency> l2Adjacency(std::uint64_t index) const {
      return Kor::mapValueOr(l2Adjacency_, index);
   }
   Kor::Ptr<L2Adjacency> l2AdjacencyIs(std::uint64_t index) {
      return instantiate(l2Adjacency_, index, &NotifieeConst::onL2Adjacency);
   }
   void l2AdjacencyDel(std::uint64_t index) {
      if (l2Adjacency_.erase(index)) {
         notify(&NotifieeConst::onL2Adjacency, index);
      }
   }
   void l2AdjacencyDelAll() {
      Kor::deleteEachKey(l2Adjacency_, [this](std::uint64_t i) { l2AdjacencyDel(i); });
   }
   const L2AdjacencyMap& l2AdjacencyMap() const { return l2Adjacency_; }

   Route route(const RouteKey& k) const { return Kor::mapValueOr(route_, k); }
   bool routeHas(const RouteKey& k) const { return route_.contains(k); }
   void routeIs(const Route& r) {
      if (route_.assignIfChanged(r)) {
         notify(&NotifieeConst::onRoute, r.routeKey());
      }
   }
   void routeDel(const RouteKey& k) {
      if (route_.erase(k)) {
         notify(&NotifieeConst::onRoute, k);
      }
   }
   void routeDelAll() {
      Kor::deleteEachKey(route_, [this](const RouteKey& k) { routeDel(k); });
   }
   const RouteMap& routeMap() const { return route_; }

   bool nexthopResolutionAllowDefaultRoute() const { return allowDefaultRoute_; }
   void nexthopResolutionAllowDefaultRouteIs(bool v) {
      if (Kor::assignIfChanged(allowDefaultRoute_, v)) {
         notify(&NotifieeConst::onNexthopResolutionAllowDefaultRoute);
      }
   }

 private:
   template <class Map>
   typename Map::mapped_type instantiate(Map& map, std::uint64_t index,
                                         void (NotifieeConst::*handler)(std::uint64_t)) {
      auto [it, inserted] = map.try_emplace(index);
      if (!inserted) {
         return it->second;
      }
      using Object = typename Map::mapped_type::element_type;  // NOLINT
      it->second = Kor::make<Object>(index);
      typename Map::mapped_type created = it->second;
      notify(handler, index);
      return created;
   }

   AdjacencyMap adjacency_;
   L2AdjacencyMap l2Adjacency_;
   RouteMap route_;
   bool allowDefaultRoute_ = false;
};

}  // namespace Mpls::Hardware
