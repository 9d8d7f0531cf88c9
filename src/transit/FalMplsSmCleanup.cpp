// Route bookkeeping on adjacencies and FEC records, and the fixed order in which adjacencies are
// taken apart: back references first, then the platform's copies, then the objects.
#include "FalMplsSm.h"

#include "MplsSmTrace.h"

namespace Fal {

void MplsSm::addRouteKeyToL2Adj(VrfMplsState& vrf, MplsRoute& route,
                                const MplsL2AdjacencyPtr& l2Adj) {
   SM_TRACE(8, "add routeKey " << route.routeKey() << " to l2Adj " << l2Adj->index());
   vrf.routeLinkIs(*l2Adj, route);
}

void MplsSm::deleteRouteKeyFromL2Adj(VrfMplsState& vrf, MplsRoute& route,
                                     const MplsL2AdjacencyPtr& l2Adj) {
   SM_TRACE(8, "delete routeKey " << route.routeKey() << " from l2Adj " << l2Adj->index());
   vrf.routeUnlink(*l2Adj, route);
}

void MplsSm::addRouteKeyToExtFecInfo(const Mpls::RouteKey& key,
                                     const ExternalFecInfoPtr& extFecInfo) {
   SM_TRACE(8, "add routeKey " << key << " to extFecInfo " << extFecInfo->fecId());
   extFecInfo->dependentRouteKeyIs(key);
}

void MplsSm::deleteRouteKeyFromExtFecInfo(VrfMplsState& vrf, const Mpls::RouteKey& key,
                                          const ExternalFecInfoPtr& extFecInfo) {
   SM_TRACE(8, "delete routeKey " << key << " from extFecInfo " << extFecInfo->fecId());
   extFecInfo->dependentRouteKeyDel(key);
   maybeDeleteExtFecInfo(vrf, extFecInfo->fecId());
}

void MplsSm::maybeDeleteExtFecInfo(VrfMplsState& vrf, Memtab::Fib::FecId fecId) {
   SM_TRACE(8, "try to delete ext fec " << fecId);
   ExternalFecInfoPtr info = vrf.extFecInfo(fecId);
   FAL_ASSERT(info, "extFecInfo");
   if (!info->dependentL3AdjacencySet().empty() || !info->dependentRouteKeySet().empty()) {
      return;
   }
   if (forwardingIntoExternalFecsSupported()) {
      hwFecIdRequest_->hwFecIdRequestDel(fecId);
      hwFecIdRequest_->fecDel(fecId);
   }
   freeMplsV4FecId(fecId, vrf);
   vrf.extFecInfoDel(fecId);
}

void MplsSm::deleteL3AdjRefs(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj) {
   std::vector<IpAddrIntfId> nextHops(l3Adj->nextHopSet().begin(), l3Adj->nextHopSet().end());
   for (const auto& nh : nextHops) {
      if (Kor::Ptr<MplsNextHop> nextHop = vrf.mplsNextHop(nh)) {
         nextHop->resolvedByRRDel(l3Adj);
         nextHop->resolvedByMNHDel(l3Adj);
      }
      unwatchNextHopIfUnused(vrf, nh);
   }
}

void MplsSm::cleanupL3AdjInfo(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                              bool cleanupNormalAdjInfo, bool cleanupExtFecAdjInfo) {
   if (cleanupNormalAdjInfo && (l3Adj->nextHops() != 0 || l3Adj->l2Adjacency())) {
      SM_TRACE(8, "cleanup normal adj info:" << l3Adj->index());
      deleteL3AdjRefs(vrf, l3Adj);
      l3Adj->nextHopDelAll();
      unlinkL2Adj(vrf, l3Adj);
   }
   if (cleanupExtFecAdjInfo && l3Adj->extFecInfo()) {
      SM_TRACE(8, "cleanup external FEC info:" << l3Adj->index());
      ExternalFecInfoPtr info = l3Adj->extFecInfo();
      l3Adj->extFecInfoIs(nullptr);
      info->dependentL3AdjacencyDel(l3Adj);
      vrf.forEachRoute(*l3Adj, [&](const Mpls::RouteKey& key, MplsRoute& listed) {
         info->dependentRouteKeyDel(key);
         if (listed.extFecInfo() == info) {
            // The route no longer forwards into this FEC, which may be withdrawn below: the
            // platform lets go of the route first. Its review programs it anew.
            listed.extFecInfoIs(nullptr);
            listed.unprogrammedIs(true);
            if (mplsSmHelper_) {
               mplsSmHelper_->deleteRoute(key);
            }
         }
      });
      maybeDeleteExtFecInfo(vrf, info->fecId());
   }
}

void MplsSm::deleteL3Adj(VrfMplsState& vrf, std::uint64_t index) {
   SM_TRACE(5, "delete l3 adj " << index);
   L3AdjacencyPtr l3Adj = vrf.l3Adjacency(index);
   if (!l3Adj) {
      return;
   }
   deleteL3AdjRefs(vrf, l3Adj);
   l3Adj->nextHopDelAll();
   FAL_ASSERT(l3Adj->nextHops() == 0);
   unlinkL2Adj(vrf, l3Adj);
   if (ExternalFecInfoPtr info = l3Adj->extFecInfo()) {
      l3Adj->extFecInfoIs(nullptr);
      info->dependentL3AdjacencyDel(l3Adj);
      maybeDeleteExtFecInfo(vrf, info->fecId());
   }
   if (L3AdjacencyPtr backup = l3Adj->backupAdj()) {
      l3Adj->backupAdjIs(nullptr);
      backup->primaryAdjDel(index);
      vrf.l3AdjForReviewIs(backup->index(), true);
   }
   // A primary that loses its backup is reviewed again (and backs off until it has a new one).
   for (std::uint64_t primary : l3Adj->primaryAdjSet()) {
      if (auto p = vrf.l3Adjacency(primary); p && p->backupAdj() == l3Adj) {
         p->backupAdjIs(nullptr);
         vrf.l3AdjForReviewIs(primary, true);
      }
   }
   if (vrf.lFibViaSetToL3AdjHas(l3Adj->lFibViaSetKey()) &&
       vrf.lFibViaSetToL3Adj(l3Adj->lFibViaSetKey()) == index) {
      vrf.lFibViaSetToL3AdjDel(l3Adj->lFibViaSetKey());
   }
   routingHwMplsStatus_->adjacencyDel(index);
   vrf.l3AdjForReviewIs(index, false);
   vrf.l3AdjacencyDel(index);
}

bool MplsSm::l2AdjReferencedByConfig(VrfMplsState& vrf, const MplsL2Adjacency& l2Adj) {
   auto hwL2 = routingHwMplsStatus_->l2Adjacency(l2Adj.index());
   auto config = falMplsHwVrfConfig(vrf.vrfName());
   bool referenced = false;
   vrf.forEachRoute(l2Adj, [&](const Mpls::RouteKey& key, const MplsRoute&) {
      referenced = referenced || config->route(key).l2Adjacency() == hwL2;
   });
   return referenced;
}

void MplsSm::maybeDeleteL2Adj(VrfMplsState& vrf, std::uint64_t index) {
   MplsL2AdjacencyPtr l2Adj = vrf.l2Adjacency(index);
   FAL_ASSERT(l2Adj);
   if (l2Adj->l3Adjacencies() != 0) {
      vrf.l2AdjPendingForDeleteIs(index, false);
      return;
   }
   // Routes in the hardware configuration may still point at it until their own review moves
   // them; deleting it under them would leave the platform routes without an adjacency.
   if (l2AdjReferencedByConfig(vrf, *l2Adj)) {
      SM_TRACE(5, "schedule l2 adj " << index << " for deletion");
      vrf.l2AdjPendingForDeleteIs(index, true);
      doMaybeScheduleReview(vrf.vrfName());
      return;
   }
   SM_TRACE(5, "delete l2 adj " << index);
   doDeleteL2Adj(vrf, index);
}

void MplsSm::processL2AdjPendingDelete(VrfMplsState& vrf, std::uint64_t index) {
   MplsL2AdjacencyPtr l2Adj = vrf.l2Adjacency(index);
   FAL_ASSERT(l2Adj);
   if (l2Adj->l3Adjacencies() != 0) {
      vrf.l2AdjPendingForDeleteIs(index, false);
      return;
   }
   if (l2AdjReferencedByConfig(vrf, *l2Adj)) {
      return;
   }
   SM_TRACE(5, "delete l2 adj " << index);
   vrf.l2AdjPendingForDeleteIs(index, false);
   doDeleteL2Adj(vrf, index);
   vrf.l2AdjDeletedInc();
}

void MplsSm::doDeleteL2Adj(VrfMplsState& vrf, std::uint64_t index) {
   SM_TRACE(5, "doDelete l2 adj " << index);
   auto hwL2 = routingHwMplsStatus_->l2Adjacency(index);
   if (hwL2) {
      falMplsHwVrfConfig(vrf.vrfName())->l2AdjacencyDel(hwL2);
      auto mapped = viaSetToHwL2Adj_.find(hwL2->l2ViaSet());
      if (mapped != viaSetToHwL2Adj_.end() && mapped->second == hwL2) {
         viaSetToHwL2AdjDel(hwL2->l2ViaSet());
      }
   }
   routingHwMplsStatus_->l2AdjacencyDel(index);
   vrf.l2AdjForReviewIs(index, false);
   // Its own review may delete it while it also waits on the pending-delete list.
   vrf.l2AdjPendingForDeleteIs(index, false);
   vrf.l2AdjacencyDel(index);
}

}  // namespace Fal
