#pragma once

#include <cstdint>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/l3/VrfId.h>
#include <mplsfwd/mpls/HardwareL2Adjacency.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "MplsHwRoute.h"

namespace Fal {

using L2AdjacencyPtr = Kor::Ptr<Mpls::Hardware::L2Adjacency>;

// What the per-VRF hardware configuration and the per-VRF hardware status have in common: the MPLS
// routing flag, the L2 adjacencies with their programming counts, and the routes. The
// configuration says what is wanted, the status what the platform did; both notify only on a real
// change. Self is the concrete entity, whose NotifieeConst derives from TablesNotifiee.
template <class Self>
class MplsHwVrfTables : public Kor::Entity {
 public:
   using RouteMap = Mpls::DenseRouteMap<MplsHwRoute>;
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
   MplsHwRoute route(const Mpls::RouteKey& key) const {
      auto it = route_.find(key);
      return it == route_.end() ? MplsHwRoute() : it->second;
   }
   bool routeHas(const Mpls::RouteKey& key) const { return route_.contains(key); }
   void routeIs(const MplsHwRoute& r) {
      auto [it, inserted] = route_.try_emplace(r.routeKey(), r);
      if (!inserted) {
         if (it->second == r) {
            return;
         }
         Kor::valueOf(it) = r;
      }
      notify(&TablesNotifiee::onRoute, r.routeKey());
   }
   MplsHwRoute routeDel(const Mpls::RouteKey& key) {
      auto it = route_.find(key);
      if (it == route_.end()) {
         return MplsHwRoute();
      }
      MplsHwRoute removed = std::move(Kor::valueOf(it));
      route_.erase(it);
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
