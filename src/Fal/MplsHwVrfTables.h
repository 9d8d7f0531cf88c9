#pragma once

#include <cstdint>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/DenseRecordMap.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/l3/VrfId.h>
#include <mplsfwd/mpls/HardwareL2Adjacency.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "MplsHwRoute.h"

namespace Fal {

using L2AdjacencyPtr = Kor::Ptr<Mpls::Hardware::L2Adjacency>;

// How the hardware tables store a route: its slot is its label, so the route key is not repeated
// in it (a million routes in each of the configuration and the status).
struct MplsHwRoutePacking {
   struct Packed {
      L2AdjacencyPtr l2Adjacency;
      std::uint64_t version = 0;
      bool operator==(const Packed&) const = default;
   };
   static const Mpls::RouteKey& key(const MplsHwRoute& r) { return r.routeKey(); }
   static Packed pack(const MplsHwRoute& r) { return {r.l2Adjacency(), r.version()}; }
   static MplsHwRoute unpack(const Mpls::RouteKey& k, const Packed& p) {
      return MplsHwRoute(k, p.l2Adjacency, p.version);
   }
};
static_assert(sizeof(MplsHwRoutePacking::Packed) <= 16, "a stored route is kept per route");

// What the per-VRF hardware configuration and the per-VRF hardware status have in common: the MPLS
// routing flag, the L2 adjacencies with their programming counts, and the routes. The
// configuration says what is wanted, the status what the platform did; both notify only on a real
// change. Self is the concrete entity, whose NotifieeConst derives from TablesNotifiee.
template <class Self>
class MplsHwVrfTables : public Kor::Entity {
 public:
   using RouteMap = Kor::DenseRecordMap<Mpls::RouteKey, MplsHwRoute, MplsHwRoutePacking>;
   using L2AdjacencyMap = Kor::HashMap<L2AdjacencyPtr, std::uint32_t>;

   class TablesNotifiee : public Kor::Notifiee<Self> {
    public:
      using Kor::Notifiee<Self>::Notifiee;
      virtual void onMplsRouting() {}
      virtual void onL2Adjacency(const L2AdjacencyPtr&) {}
      virtual void onRoute(const Mpls::RouteKey&) {}
   };

   explicit MplsHwVrfTables(VrfId vrfId) : Kor::Entity(vrfId.stringValue()), vrfId_(vrfId) {}

   VrfId vrfId() const { return vrfId_; }

   bool mplsRouting() const { return mplsRouting_; }
   void mplsRoutingIs(bool v) {
      if (Kor::assignIfChanged(mplsRouting_, v)) {
         notify(&TablesNotifiee::onMplsRouting);
      }
   }

   // Programming count of an L2 adjacency; 0 when absent.
   std::uint32_t l2Adjacency(const L2AdjacencyPtr& adj) const {
      return Kor::mapValueOr(l2Adjacency_, adj);
   }
   bool l2AdjacencyHas(const L2AdjacencyPtr& adj) const { return l2Adjacency_.contains(adj); }
   void l2AdjacencyIs(const L2AdjacencyPtr& adj, std::uint32_t count) {
      if (Kor::mapAssignIfChanged(l2Adjacency_, adj, count)) {
         notify(&TablesNotifiee::onL2Adjacency, adj);
      }
   }
   void l2AdjacencyDel(const L2AdjacencyPtr& adj) {
      auto it = l2Adjacency_.find(adj);
      if (it == l2Adjacency_.end()) {
         return;
      }
      // Keep the object alive for the reactors even though the table drops its reference.
      L2AdjacencyPtr keep = it->first;
      l2Adjacency_.erase(it);
      notify(&TablesNotifiee::onL2Adjacency, keep);
   }
   void l2AdjacencyDelAll() {
      Kor::deleteEachKey(l2Adjacency_, [this](const L2AdjacencyPtr& a) { l2AdjacencyDel(a); });
   }
   const L2AdjacencyMap& l2AdjacencyMap() const { return l2Adjacency_; }
   std::size_t l2Adjacencies() const { return l2Adjacency_.size(); }

   // The stored route, or the empty route (test it with !) for an absent key.
   MplsHwRoute route(const Mpls::RouteKey& key) const { return Kor::mapValueOr(route_, key); }
   bool routeHas(const Mpls::RouteKey& key) const { return route_.contains(key); }
   void routeIs(const MplsHwRoute& r) {
      if (route_.assignIfChanged(r)) {
         notify(&TablesNotifiee::onRoute, r.routeKey());
      }
   }
   MplsHwRoute routeDel(const Mpls::RouteKey& key) {
      auto it = route_.find(key);
      if (it == route_.end()) {
         return MplsHwRoute();
      }
      MplsHwRoute removed = it.value();
      route_.erase(key);
      notify(&TablesNotifiee::onRoute, key);
      return removed;
   }
   void routeDelAll() {
      Kor::deleteEachKey(route_, [this](const Mpls::RouteKey& k) { routeDel(k); });
   }
   const RouteMap& routeMap() const { return route_; }
   std::size_t routes() const { return route_.size(); }

 private:
   VrfId vrfId_;
   bool mplsRouting_ = false;
   L2AdjacencyMap l2Adjacency_;
   RouteMap route_;
};

}  // namespace Fal
