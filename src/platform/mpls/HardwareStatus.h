#pragma once

#include <cstdint>
#include <string>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/DenseRecordMap.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/Errors.h>

#include "HardwareAdjacency.h"
#include "HardwareL2Adjacency.h"
#include "HardwareRoute.h"

namespace Mpls::Hardware {

// How the status stores a published route, one record per route (a million at full scale): its
// slot is its label, so the label is not repeated; the 64-bit values are kept in 32-bit halves so
// that the record is 4-byte aligned; and the unprogrammed flag takes the top bit of the L2
// adjacency index. Adjacency indices come from one counter that only grows by one per adjacency
// made: at a billion a second it would take 292 years to reach that bit, so an index that has it
// set is refused (Kor::RangeError) rather than stored wrongly.
struct RoutePacking {
   struct Halves {
      std::uint32_t low = 0;
      std::uint32_t high = 0;
      static Halves of(std::uint64_t v) {
         return {static_cast<std::uint32_t>(v), static_cast<std::uint32_t>(v >> 32)};
      }
      std::uint64_t value() const { return (std::uint64_t(high) << 32) | low; }
      bool operator==(const Halves&) const = default;
   };
   struct Packed {
      Halves adjacencyIndex;
      Halves l2AdjacencyIndexAndUnprogrammed;
      Halves version;
      std::uint32_t metric = 0;
      bool operator==(const Packed&) const = default;
   };
   static constexpr std::uint64_t kUnprogrammedBit = std::uint64_t(1) << 63;

   static const RouteKey& key(const Route& r) { return r.routeKey(); }
   static Packed pack(const Route& r) {
      if (r.l2AdjacencyIndex() & kUnprogrammedBit) {
         throw Kor::RangeError("L2 adjacency index " + std::to_string(r.l2AdjacencyIndex()) +
                               " is past the published route's range");
      }
      return {Halves::of(r.adjacencyIndex()),
              Halves::of(r.l2AdjacencyIndex() | (r.unprogrammed() ? kUnprogrammedBit : 0)),
              Halves::of(r.version()), r.metric()};
   }
   static Route unpack(const RouteKey& k, const Packed& p) {
      const std::uint64_t l2 = p.l2AdjacencyIndexAndUnprogrammed.value();
      Route r(k);
      r.adjacencyIndexIs(p.adjacencyIndex.value());
      r.l2AdjacencyIndexIs(l2 & ~kUnprogrammedBit);
      r.unprogrammedIs((l2 & kUnprogrammedBit) != 0);
      r.versionIs(p.version.value());
      r.metricIs(p.metric);
      return r;
   }
};
static_assert(sizeof(RoutePacking::Packed) <= 28, "a stored route is kept per route");

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
