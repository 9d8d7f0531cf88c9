#pragma once

#include <mplsfwd/kor/AttrOps.h>

#include "MplsHwVrfTables.h"
#include "UnprogrammedReason.h"

namespace Fal {

// What the platform reports for one VRF: MPLS routing enabled in hardware, the L2 adjacencies and
// routes it programmed (each as the configuration asked for it, version included), and what it
// could not program with the reason of the most recent failure. Written by the platform; the
// library writes only the failure book-keeping of routes it programs through a helper.
class MplsHwVrfStatus : public MplsHwVrfTables<MplsHwVrfStatus> {
 public:
   class NotifieeConst : public TablesNotifiee {
    public:
      using TablesNotifiee::TablesNotifiee;
      virtual void onUnprogrammedReason() {}
      virtual void onUnprogrammedRoute(const Mpls::RouteKey&) {}
      virtual void onUnprogrammedAdjacency(const L2AdjacencyPtr&) {}
   };
   using UnprogrammedRouteMap = Mpls::DenseRouteMap<bool>;
   using UnprogrammedAdjacencyMap = Kor::HashMap<L2AdjacencyPtr, bool>;

   using MplsHwVrfTables::MplsHwVrfTables;

   UnprogrammedReason unprogrammedReason() const { return unprogrammedReason_; }
   void unprogrammedReasonIs(UnprogrammedReason r) {
      if (Kor::assignIfChanged(unprogrammedReason_, r)) {
         notify(&NotifieeConst::onUnprogrammedReason);
      }
   }

   bool unprogrammedRoute(const Mpls::RouteKey& key) const {
      return Kor::mapValueOr(unprogrammedRoute_, key);
   }
   bool unprogrammedRouteHas(const Mpls::RouteKey& key) const {
      return unprogrammedRoute_.contains(key);
   }
   void unprogrammedRouteIs(const Mpls::RouteKey& key, bool v) {
      if (Kor::mapAssignIfChanged(unprogrammedRoute_, key, v)) {
         notify(&NotifieeConst::onUnprogrammedRoute, key);
      }
   }
   void unprogrammedRouteDel(const Mpls::RouteKey& key) {
      if (unprogrammedRoute_.erase(key)) {
         notify(&NotifieeConst::onUnprogrammedRoute, key);
      }
   }
   void unprogrammedRouteDelAll() {
      Kor::deleteEachKey(unprogrammedRoute_,
                         [this](const Mpls::RouteKey& k) { unprogrammedRouteDel(k); });
   }
   const UnprogrammedRouteMap& unprogrammedRouteMap() const { return unprogrammedRoute_; }
   std::size_t unprogrammedRoutes() const { return unprogrammedRoute_.size(); }

   bool unprogrammedAdjacency(const L2AdjacencyPtr& adj) const {
      return Kor::mapValueOr(unprogrammedAdjacency_, adj);
   }
   bool unprogrammedAdjacencyHas(const L2AdjacencyPtr& adj) const {
      return unprogrammedAdjacency_.contains(adj);
   }
   void unprogrammedAdjacencyIs(const L2AdjacencyPtr& adj, bool v) {
      if (Kor::mapAssignIfChanged(unprogrammedAdjacency_, adj, v)) {
         notify(&NotifieeConst::onUnprogrammedAdjacency, adj);
      }
   }
   void unprogrammedAdjacencyDel(const L2AdjacencyPtr& adj) {
      auto it = unprogrammedAdjacency_.find(adj);
      if (it == unprogrammedAdjacency_.end()) {
         return;
      }
      L2AdjacencyPtr keep = it->first;
      unprogrammedAdjacency_.erase(it);
      notify(&NotifieeConst::onUnprogrammedAdjacency, keep);
   }
   void unprogrammedAdjacencyDelAll() {
      Kor::deleteEachKey(unprogrammedAdjacency_,
                         [this](const L2AdjacencyPtr& a) { unprogrammedAdjacencyDel(a); });
   }
   const UnprogrammedAdjacencyMap& unprogrammedAdjacencyMap() const {
      return unprogrammedAdjacency_;
   }

 private:
   UnprogrammedReason unprogrammedReason_ = UnprogrammedReason::Success;
   UnprogrammedRouteMap unprogrammedRoute_;
   UnprogrammedAdjacencyMap unprogrammedAdjacency_;
};

}  // namespace Fal
