// The review of an L3 adjacency that only a neighbour's move queued (a next hop of it has a new
// MAC address, VLAN or port): the moved next hops' new resolution is patched into the hardware
// adjacency's vias and, by the in-place update, into its L2 adjacency, instead of resolving every
// via of the via set again and rebuilding both. What it writes is what the full review would
// write. Whenever that is not certain (the machine's traces are read, the via set changed since
// the last full review, a next hop lost its neighbour, the new L2 via set belongs to another
// adjacency or needs a new one) it changes nothing and leaves the adjacency to the full review.
#include "FalMplsSm.h"

#include <array>

#include "MplsSmTrace.h"

namespace Fal {

namespace {

struct MovedResolution {
   const IpAddrIntfId* nextHop = nullptr;
   NextHopInfo info;
};

bool through(const Mpls::Hardware::Via& via, const IpAddrIntfId& nh) {
   return via.l3Intf() == nh.l3Intf() && via.nextHop() == nh.ipGenAddr();
}

}  // namespace

bool MplsSm::patchMovedNeighbours(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj) {
   // The full review tells what it does step by step: while its traces are read, it runs.
   if (SM_TRACING()) {
      return false;
   }
   // What the full review decides before it resolves anything: the adjacency is in use, in no
   // backup relation, and its via set, unchanged since, still goes the L2 way.
   const L3Adjacency& adj = *l3Adj;
   if (!adj.neighbourPatchable() || !adj.movedNextHopsKnown() || adj.unprogrammed() ||
       adj.routeKeys() == 0 || adj.primaryAdjs() != 0 || adj.backupAdj() || adj.extFecInfo() ||
       (forwardingIntoExternalFecsSupported() && fecForwardedSource(adj.lFibViaSetKey()))) {
      return false;
   }
   const MplsL2AdjacencyPtr& current = adj.l2Adjacency();
   const L2AdjacencyPtr& hwL2 = adj.hwL2Adjacency();
   Kor::Ptr<Mpls::Hardware::Adjacency> hwAdj = routingHwMplsStatus_->adjacency(adj.index());
   if (!current || !hwL2 || !hwAdj || hwAdj->l2Adjacency() != hwL2) {
      return false;
   }

   std::array<MovedResolution, L3Adjacency::kMovedNextHopsKept> moved;
   const std::size_t nMoved = adj.movedNextHops();
   for (std::size_t i = 0; i < nMoved; ++i) {
      const IpAddrIntfId& nh = adj.movedNextHop(i);
      moved[i].nextHop = &nh;
      moved[i].info = falL3Status_->nextHopInfo(NextHopKey(nh.ipGenAddr(), nh.l3Intf()));
      // Without its neighbour the adjacency is no longer resolved.
      if (!moved[i].info.resolved()) {
         return false;
      }
   }
   auto movedOf = [&](const Mpls::Hardware::Via& via) -> const NextHopInfo* {
      for (std::size_t i = 0; i < nMoved; ++i) {
         if (through(via, *moved[i].nextHop)) {
            return &moved[i].info;
         }
      }
      return nullptr;
   };

   // The L2 via set that resolving every via gives: the hardware vias hold each via's resolution
   // (every other neighbour entry is as it was, or its change would have named it here), those
   // through a moved next hop take the new one.
   Mpls::Hardware::L2ViaSet& l2ViaSet = patchedL2ViaSet_;
   l2ViaSet.l2ViaDelAll();
   std::size_t patched = 0;
   for (const auto& via : hwAdj->viaSet()) {
      if (const NextHopInfo* info = movedOf(via)) {
         l2ViaSet.l2ViaIs(Mpls::Hardware::L2Via(info->vlanId(), info->l2Intf(), info->macAddr(),
                                                via.labelStack(), via.nextHop()),
                          true);
         ++patched;
      } else {
         l2ViaSet.l2ViaIs(Mpls::Hardware::L2Via(via.vlanId(), via.l2Intf(), via.macAddr(),
                                                via.labelStack(), via.nextHop()),
                          true);
      }
   }
   if (patched == 0) {
      return false;
   }
   // The full review's choice of L2 adjacency: the one that carries the set already, else this
   // one rewritten in place. Moving to another adjacency, or to a new one, is left to it.
   auto shared = viaSetToHwL2Adj_.find(l2ViaSet);
   if (shared != viaSetToHwL2Adj_.end()) {
      if (shared->second != hwL2) {
         return false;
      }
   } else if (!tryInPlaceUpdate(vrf, l3Adj, l2ViaSet)) {
      return false;
   }

   // The hardware vias, rewritten where they stand (their order does not depend on the layer-2
   // part), each with its interface's hardware id as the full review reads it.
   for (std::size_t i = 0; i < hwAdj->vias(); ++i) {
      const Mpls::Hardware::Via& via = hwAdj->viaSet()[i];
      const NextHopInfo* info = movedOf(via);
      const std::uint32_t l3Id = falL3Status_->intfIdToL3Id(via.l3Intf());
      if (!info && via.flags() == l3Id) {
         continue;
      }
      Mpls::Hardware::Via rewritten = via;
      if (info) {
         rewritten.vlanIdIs(info->vlanId());
         rewritten.macAddrIs(info->macAddr());
         rewritten.l2IntfIs(info->l2Intf());
      }
      rewritten.flagsIs(l3Id);
      hwAdj->viaAtIs(i, rewritten);
   }
   progHwL2Adj(vrf.vrfName(), hwL2);
   hwAdj->unprogrammedIs(false);
   return true;
}

}  // namespace Fal
