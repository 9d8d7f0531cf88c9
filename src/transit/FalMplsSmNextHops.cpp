// Next-hop resolution and L2 adjacencies: resolving an L3 adjacency's next hops in either mode,
// sharing L2 adjacencies by their resolved L2 via set, programming them, and following the L3
// status.
#include "FalMplsSm.h"

#include "MplsSmTrace.h"

namespace Fal {

namespace {
const L3::VrfName& defaultVrf() {
   static const L3::VrfName name = L3::VrfName::defaultVrf();
   return name;
}
}  // namespace

// ---- Watching next hops. A next hop is registered with the monitor (or the route resolver) when
// the first L3 adjacency resolves through it and unregistered when the last one goes: both
// platform facilities count registrations, so registering on every resolution would never let go.

void MplsSm::watchNextHop(VrfMplsState& vrf, const IpAddrIntfId& nh, const L3AdjacencyPtr& l3Adj,
                          bool byRouteResolver) {
   // Already among the next hop's users: the key names the mode (no interface: the route
   // resolver), so the adjacency sits in the right set and the next hop is watched. An adjacency
   // reviewed again, after a neighbour's MAC moved say, keeps its registrations as they are.
   if (l3Adj->nextHop(nh)) {
      return;
   }
   Kor::Ptr<MplsNextHop> nextHop = vrf.mplsNextHop(nh);
   bool first = !nextHop || nextHop->unused();
   if (!nextHop) {
      nextHop = vrf.mplsNextHopIs(nh);
   }
   if (byRouteResolver) {
      nextHop->resolvedByRRIs(l3Adj);
   } else {
      nextHop->resolvedByMNHIs(l3Adj);
   }
   l3Adj->nextHopIs(nh);
   if (!first) {
      return;
   }
   VrfId vrfId = vrfIdOf(vrf.vrfName());
   const Wire::IpGenAddr& addr = nh.ipGenAddr();
   if (byRouteResolver) {
      SM_TRACE(5, "add watched addr " << addr);
      if (addr.af() == Wire::ipv4()) {
         routeReactorConfig_->addWatchedAddr(VrfAndIpAddr(vrfId, addr.v4Addr()), false);
      } else {
         FAL_ASSERT(addr.af() == Wire::ipv6(), "nextHop.af() == Wire::ipv6()");
         route6ReactorConfig_->addWatchedIp6Addr(VrfAndIpGenAddr(vrfId, addr), false);
      }
      return;
   }
   NextHopKey key(addr, nh.l3Intf());
   NextHopInfo info = falL3Status_->nextHopInfo(key);
   VrfId arpVrf =
       info.vrfId() == invalidVrfId() ? falL3Status_->l3IntfArpVrfId(nh.l3Intf()) : info.vrfId();
   SM_TRACE(5, "add entry (" << arpVrf << ", " << addr << ", " << nh.l3Intf() << ")");
   monitoredNhSm_->addEntry(arpVrf, addr, nh.l3Intf());
   currArpVrfId_[key] = arpVrf;
}

void MplsSm::unwatchNextHopIfUnused(VrfMplsState& vrf, const IpAddrIntfId& nh) {
   Kor::Ptr<MplsNextHop> nextHop = vrf.mplsNextHop(nh);
   if (!nextHop || !nextHop->unused()) {
      return;
   }
   const Wire::IpGenAddr& addr = nh.ipGenAddr();
   VrfId vrfId = vrfIdOf(vrf.vrfName());
   if (nh.l3Intf().empty()) {
      SM_TRACE(5, "remove watched addr " << addr);
      if (addr.af() == Wire::ipv4()) {
         routeReactorConfig_->removeWatchedAddr(VrfAndIpAddr(vrfId, addr.v4Addr()));
      } else {
         FAL_ASSERT(addr.af() == Wire::ipv6(), "nh.af() == Wire::ipv6()");
         route6ReactorConfig_->removeWatchedIp6Addr(VrfAndIpGenAddr(vrfId, addr));
      }
      for (auto it = rrGatewayUsers_.begin(); it != rrGatewayUsers_.end();) {
         it->second.erase(nh);
         it = it->second.empty() ? rrGatewayUsers_.erase(it) : std::next(it);
      }
   } else {
      NextHopKey key(addr, nh.l3Intf());
      VrfId arpVrf = Kor::mapValueOr(currArpVrfId_, key, vrfId);
      SM_TRACE(5, "remove entry (vrf=" << arpVrf << " nexthop=" << addr << " l3Intf=" << nh.l3Intf()
                                       << ") from monitoredNhSm");
      monitoredNhSm_->removeEntry(arpVrf, addr, nh.l3Intf());
      currArpVrfId_.erase(key);
   }
   vrf.mplsNextHopDel(nh);
}

// ---- Resolution.

namespace {

// A via whose next hop resolved to `info`: its L2 via joins the set, and the hardware via that
// the caller completes carries the same layer-2 rewrite.
Mpls::Hardware::Via resolvedVia(const Mpls::LfibMplsVia& via, const NextHopInfo& info,
                                Mpls::Hardware::L2ViaSet& l2ViaSet) {
   l2ViaSet.l2ViaIs(Mpls::Hardware::L2Via(info.vlanId(), info.l2Intf(), info.macAddr(),
                                          via.labelStack(), via.nextHop()),
                    true);
   Mpls::Hardware::Via hwVia;
   hwVia.nextHopIs(via.nextHop());
   hwVia.labelStackIs(via.labelStack());
   hwVia.vlanIdIs(info.vlanId());
   hwVia.macAddrIs(info.macAddr());
   hwVia.l2IntfIs(info.l2Intf());
   return hwVia;
}

}  // namespace

bool MplsSm::resolveNextHop(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                            const Mpls::LfibMplsVia& via, std::size_t nVias,
                            Mpls::Hardware::L2ViaSet& l2ViaSet, Mpls::Hardware::Adjacency& hwAdj) {
   if (via.intf() == Wire::IntfId()) {
      return resolveNextHopWithRR(vrf, l3Adj, via, nVias, l2ViaSet, hwAdj);
   }
   return resolveNextHopWithMNHSM(vrf, l3Adj, via, nVias, l2ViaSet, hwAdj);
}

bool MplsSm::resolveNextHopWithMNHSM(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                     const Mpls::LfibMplsVia& via, std::size_t nVias,
                                     Mpls::Hardware::L2ViaSet& l2ViaSet,
                                     Mpls::Hardware::Adjacency& hwAdj) {
   const Wire::IpGenAddr& nextHop = via.nextHop();
   NextHopKey key(nextHop, via.intf());
   NextHopInfo info = falL3Status_->nextHopInfo(key);
   VrfId vrfId =
       info.vrfId() == invalidVrfId() ? falL3Status_->l3IntfArpVrfId(via.intf()) : info.vrfId();
   SM_TRACE(8, "resolve nexthop with monitoredNhSm vrf " << vrfId << " nextHop " << nextHop
                                                         << " l3Intf " << via.intf() << " nVias "
                                                         << nVias << " l3 adj " << l3Adj->index());
   FAL_ASSERT(nextHop.af() == Wire::ipv4() || nextHop.af() == Wire::ipv6());
   watchNextHop(vrf, IpAddrIntfId(nextHop, via.intf()), l3Adj, false);
   if (!info.resolved()) {
      return false;
   }
   SM_TRACE(8, "nexthop resolved: nexthop " << nextHop << " vlanId " << info.vlanId() << " l2Intf "
                                            << info.l2Intf() << " macAddr " << info.macAddr());
   Mpls::Hardware::Via hwVia = resolvedVia(via, info, l2ViaSet);
   hwVia.l3IntfIs(via.intf());
   hwVia.flagsIs(falL3Status_->intfIdToL3Id(via.intf()));
   hwAdj.viaIs(hwVia, true);
   return true;
}

bool MplsSm::resolveNextHopWithRR(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                  const Mpls::LfibMplsVia& via, std::size_t nVias,
                                  Mpls::Hardware::L2ViaSet& l2ViaSet,
                                  Mpls::Hardware::Adjacency& hwAdj) {
   const Wire::IpGenAddr& nextHop = via.nextHop();
   VrfId vrfId = vrfIdOf(vrf.vrfName());
   SM_TRACE(8, "resolve nexthop with routeResolver vrf " << vrfId << " nextHop " << nextHop
                                                         << " nVias " << nVias << " l3 adj "
                                                         << l3Adj->index());
   FAL_ASSERT(nextHop.af() == Wire::ipv4() || nextHop.af() == Wire::ipv6());
   IpAddrIntfId nh(nextHop, Wire::IntfId());
   watchNextHop(vrf, nh, l3Adj, true);
   ResolvedNexthop resolved = nextHop.af() == Wire::ipv4()
                                  ? falL3Status_->resolvedV4(VrfAndIpAddr(vrfId, nextHop.v4Addr()))
                                  : falL3Status_->resolvedV6(VrfAndIpGenAddr(vrfId, nextHop));
   bool allowDefault = mplsStatus_ && mplsStatus_->nexthopResolutionAllowDefaultRoute();
   if (!resolved.resolved() || !resolved.hasNexthop() ||
       (resolved.viaDefaultRoute() && !allowDefault)) {
      SM_TRACE(8, "nexthop " << nextHop << " nexthop type " << resolved.nexthopType());
      SM_TRACE(8, "nexthop " << nextHop << " arp not resolved");
      return false;
   }
   SM_TRACE(8, "nexthop " << resolved.nexthop() << " nexthop type " << resolved.nexthopType());
   NextHopKey gateway(resolved.nexthop(), resolved.l3Intf());
   rrGatewayUsers_[gateway].insert(nh);
   NextHopInfo info = falL3Status_->nextHopInfo(gateway);
   if (!info.resolved()) {
      SM_TRACE(8, "nexthop " << nextHop << " arp not resolved");
      SM_DECISION(9, "nexthop " << nextHop << " arp is not resolved");
      return false;
   }
   SM_TRACE(8, "hw l2 via vlan " << info.vlanId() << " intf " << info.l2Intf() << " mac "
                                 << info.macAddr());
   Mpls::Hardware::Via hwVia = resolvedVia(via, info, l2ViaSet);
   hwVia.resolvedAddrIs(resolved.nexthop());
   hwVia.l3IntfIs(resolved.l3Intf());
   hwAdj.viaIs(hwVia, true);
   return true;
}

// ---- From resolved vias to a shared L2 adjacency.

MplsL2AdjacencyPtr MplsSm::processMplsIpL3Adj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                              const Mpls::LfibViaSet& viaSet,
                                              const CachedLFibMplsViaColl& vias) {
   L3AdjLFibAdjType lFibAdjType = findL3AdjLFibAdjType(&vias);
   FAL_ASSERT(lFibAdjType == adjTypeRegular_);
   FAL_ASSERT(viaSet.backupViaSetKey() == Mpls::LfibViaSetKey(),
              "lFibViaSet.backupViaSetKey() == Mpls::LfibViaSetKey()");
   Kor::Ptr<Mpls::Hardware::Adjacency> hwAdj = routingHwMplsStatus_->adjacencyIs(l3Adj->index());
   hwAdj->viaDelAll();

   Mpls::Hardware::L2ViaSet l2ViaSet;
   l2ViaSet.reserve(vias.vias());
   bool allResolved = true;
   bool allByMonitor = true;
   for (const auto& [position, via] : vias.viaMap()) {
      if (!resolveNextHop(vrf, l3Adj, via, vias.vias(), l2ViaSet, *hwAdj)) {
         allResolved = false;
      }
      allByMonitor = allByMonitor && !(via.intf() == Wire::IntfId());
   }
   const auto& first = vias.viaMap().begin()->second;
   l3Adj->labelActionIs(first.labelAction());
   l3Adj->payloadTypeIs(first.payloadType());
   dropUnusedNextHops(vrf, l3Adj, vias);

   // Program a via set only when every next hop resolves: a partial set would send the share of
   // traffic of the missing vias to the others without the control plane knowing.
   if (!allResolved) {
      SM_TRACE(5, "nexthop not resolved");
      unlinkL2Adj(vrf, l3Adj);
      return nullptr;
   }

   MplsL2AdjacencyPtr l2Adj;
   auto shared = viaSetToHwL2Adj_.find(l2ViaSet);
   if (shared != viaSetToHwL2Adj_.end()) {
      l2Adj = vrf.l2Adjacency(shared->second->index());
   }
   if (!l2Adj) {
      l2Adj = tryInPlaceUpdate(vrf, l3Adj, l2ViaSet);
   }
   if (!l2Adj) {
      l2Adj = newL2Adjacency(vrf);
      l2Adj->l2ViaSetIs(l2ViaSet);
      auto hwL2 = routingHwMplsStatus_->l2Adjacency(l2Adj->index());
      hwL2->l2ViaSetIs(l2ViaSet);
      viaSetToHwL2AdjIs(l2ViaSet, hwL2);
      SM_TRACE(5, "add l2 adj " << l2Adj->index() << " for review");
      vrf.l2AdjForReviewIs(l2Adj->index(), true);
   }
   if (l3Adj->l2Adjacency() != l2Adj) {
      unlinkL2Adj(vrf, l3Adj);
      l2Adj->l3AdjacencyIs(l3Adj);
      l3Adj->l2AdjacencyIs(l2Adj);
      SM_TRACE(5, "l3 adj " << l3Adj->index() << " -> l2 adj " << l2Adj->index());
   }
   l3Adj->hwL2AdjacencyIs(routingHwMplsStatus_->l2Adjacency(l2Adj->index()));
   hwAdj->l2AdjacencyIs(l3Adj->hwL2Adjacency());
   l3Adj->neighbourPatchableIs(allByMonitor);
   return l2Adj;
}

void MplsSm::dropUnusedNextHops(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                const CachedLFibMplsViaColl& vias) {
   // Every next hop of the vias is among the adjacency's now, so it has more exactly when the
   // via set no longer names some of them. Counting the distinct next hops of a few vias by
   // comparing them pairwise is cheaper than a set; the common review (nothing dropped) ends here.
   const auto& entries = vias.viaMap();
   constexpr std::size_t kPairwise = 16;
   if (entries.size() <= kPairwise) {
      std::size_t distinct = 0;
      for (std::size_t i = 0; i < entries.size(); ++i) {
         const auto& a = entries[i].second;
         bool seen = false;
         for (std::size_t j = 0; j < i && !seen; ++j) {
            const auto& b = entries[j].second;
            seen = b.nextHop() == a.nextHop() && b.intf() == a.intf();
         }
         distinct += seen ? 0 : 1;
      }
      if (l3Adj->nextHops() == distinct) {
         return;
      }
   }
   Kor::HashSet<IpAddrIntfId> named;
   for (const auto& [position, via] : entries) {
      named.insert(IpAddrIntfId(via.nextHop(), via.intf()));
   }
   if (named.size() == l3Adj->nextHops()) {
      return;
   }
   // Next hops the via set no longer names stop counting this adjacency among their users.
   std::vector<IpAddrIntfId> dropped;
   for (const auto& nh : l3Adj->nextHopSet()) {
      if (!named.contains(nh)) {
         dropped.push_back(nh);
      }
   }
   for (const auto& nh : dropped) {
      if (auto nextHop = vrf.mplsNextHop(nh)) {
         nextHop->resolvedByRRDel(l3Adj);
         nextHop->resolvedByMNHDel(l3Adj);
      }
      l3Adj->nextHopDel(nh);
      unwatchNextHopIfUnused(vrf, nh);
   }
}

namespace {

// True when two L2 via sets go to the same next hops with the same labels and differ at most in
// how those next hops are reached (MAC, VLAN, interface).
bool sameNextHopsAndLabels(const Mpls::Hardware::L2ViaSet& a, const Mpls::Hardware::L2ViaSet& b) {
   if (a.l2Vias() != b.l2Vias()) {
      return false;
   }
   for (const auto& via : a) {
      bool found = false;
      for (const auto& other : b) {
         if (other.nextHop() == via.nextHop() && other.labelStack() == via.labelStack()) {
            found = true;
            break;
         }
      }
      if (!found) {
         return false;
      }
   }
   return true;
}

}  // namespace

MplsL2AdjacencyPtr MplsSm::tryInPlaceUpdate(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj,
                                            const Mpls::Hardware::L2ViaSet& l2ViaSet) {
   // A changed resolution (a new neighbour MAC, say) rewrites the L2 adjacency in place: its
   // routes keep pointing at it and none of them has to be rewritten. That is right when this L3
   // adjacency is its only user, and also when the adjacency is shared but only the way its next
   // hops are reached changed: every user shares its next hops and labels (that is why they share
   // it), so every user moves the same way and finds it again when its own review comes.
   const MplsL2AdjacencyPtr& current = l3Adj->l2Adjacency();
   if (!current || current->l3Adjacencies() == 0 || !inPlaceAdjacencyUpdateSupported()) {
      return nullptr;
   }
   if (current->l3Adjacencies() != 1 && !sameNextHopsAndLabels(current->l2ViaSet(), l2ViaSet)) {
      return nullptr;
   }
   auto hwL2 = routingHwMplsStatus_->l2Adjacency(current->index());
   if (!hwL2) {
      return nullptr;
   }
   auto mapped = viaSetToHwL2Adj_.find(current->l2ViaSet());
   SM_DECISION(5, "in place update of l2 adj " << current->index());
   current->l2ViaSetIs(l2ViaSet);
   hwL2->l2ViaSetIs(l2ViaSet);
   if (mapped != viaSetToHwL2Adj_.end() && mapped->second == hwL2) {
      // The sharing table's entry moves to the new set: its node and the key's storage are
      // reused rather than freed and allocated again.
      auto node = viaSetToHwL2Adj_.extract(mapped);
      node.key() = l2ViaSet;
      auto inserted = viaSetToHwL2Adj_.insert(std::move(node));
      if (!inserted.inserted) {
         inserted.position->second = hwL2;
      }
   } else {
      viaSetToHwL2AdjIs(l2ViaSet, hwL2);
   }
   vrf.l2AdjPendingForDeleteIs(current->index(), false);
   return current;
}

void MplsSm::unlinkL2Adj(VrfMplsState& vrf, const L3AdjacencyPtr& l3Adj) {
   if (MplsL2AdjacencyPtr old = l3Adj->l2Adjacency()) {
      old->l3AdjacencyDel(l3Adj);
      l3Adj->l2AdjacencyIs(nullptr);
      l3Adj->hwL2AdjacencyIs(nullptr);
      if (auto hwAdj = routingHwMplsStatus_->adjacency(l3Adj->index())) {
         hwAdj->l2AdjacencyIs(nullptr);
      }
      SM_TRACE(5, "add l2 adj " << old->index() << " for review");
      vrf.l2AdjForReviewIs(old->index(), true);
   }
}

MplsL2AdjacencyPtr MplsSm::newL2Adjacency(VrfMplsState& vrf) {
   std::uint64_t index = ++adjacencyIndex_;
   routingHwMplsStatus_->l2AdjacencyIs(index);
   MplsL2AdjacencyPtr l2Adj = vrf.l2AdjacencyIs(index);
   SM_TRACE(5, "create l2 adj " << index);
   return l2Adj;
}

void MplsSm::progHwL2Adj(const L3::VrfName& vrfName, const L2AdjacencyPtr& hwL2Adjacency) {
   if (!hwL2Adjacency) {
      return;
   }
   auto config = falMplsHwVrfConfig(vrfName);
   std::uint32_t count = config->l2Adjacency(hwL2Adjacency) + 1;
   config->l2AdjacencyIs(hwL2Adjacency, count);
   hwL2Adjacency->versionIs(count);
   SM_TRACE(5, "prog hw L2 adj " << hwL2Adjacency->index() << " ver " << count);
}

void MplsSm::processL2Adj(VrfMplsState& vrf, std::uint64_t index) {
   SM_TRACE(5, "process l2 adj" << index);
   MplsL2AdjacencyPtr l2Adj = vrf.l2Adjacency(index);
   if (!l2Adj) {
      return;
   }
   if (l2Adj->l3Adjacencies() == 0) {
      auto hwL2 = routingHwMplsStatus_->l2Adjacency(index);
      auto mapped = viaSetToHwL2Adj_.find(l2Adj->l2ViaSet());
      if (mapped != viaSetToHwL2Adj_.end() && mapped->second == hwL2) {
         viaSetToHwL2Adj_.erase(mapped);
      }
      SM_TRACE(5, "delete l2 adj");
      maybeDeleteL2Adj(vrf, index);
      return;
   }
   for (const auto& l3Adj : l2Adj->l3AdjacencySet()) {
      SM_TRACE(5, "add l3 adj " << l3Adj->index() << " for review");
      vrf.l3AdjForReviewIs(l3Adj->index(), true);
   }
}

void MplsSm::viaSetToHwL2AdjIs(const Mpls::Hardware::L2ViaSet& viaSet,
                               const L2AdjacencyPtr& hwL2Adj) {
   viaSetToHwL2Adj_[viaSet] = hwL2Adj;
}

void MplsSm::viaSetToHwL2AdjDel(const Mpls::Hardware::L2ViaSet& viaSet) {
   viaSetToHwL2Adj_.erase(viaSet);
}

// ---- Reactions to the L3 status.

void MplsSm::handleNextHop(const NextHopKey& key) {
   SM_TRACE(5, "handle nexthopkey intf: " << key.l3Intf() << " " << key.nextHop());
   const L3::VrfName& vrfName = defaultVrf();
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf) {
      return;
   }
   bool any = false;
   auto reviewUsers = [&](const IpAddrIntfId& nh, bool movedHere) {
      Kor::Ptr<MplsNextHop> nextHop = vrf->mplsNextHop(nh);
      if (!nextHop) {
         return;
      }
      // The adjacencies that resolve this very entry through the monitor learn which next hop
      // moved, so that their review can patch it in (FalMplsSmNeighbourPatch.cpp).
      for (const auto& l3Adj : nextHop->resolvedByMNHSet()) {
         SM_TRACE(5, "add l3 adj " << l3Adj->index() << " for review");
         if (movedHere) {
            vrf->l3AdjForNeighbourReviewIs(*l3Adj, nh);
         } else {
            vrf->l3AdjForReviewIs(l3Adj->index(), true);
         }
         any = true;
      }
      for (const auto& l3Adj : nextHop->resolvedByRRSet()) {
         SM_TRACE(5, "add l3 adj " << l3Adj->index() << " for review");
         vrf->l3AdjForReviewIs(l3Adj->index(), true);
         any = true;
      }
   };
   const IpAddrIntfId moved(key.nextHop(), key.l3Intf());
   reviewUsers(moved, true);
   auto gatewayUsers = rrGatewayUsers_.find(key);
   if (gatewayUsers != rrGatewayUsers_.end()) {
      for (const auto& nh : gatewayUsers->second) {
         reviewUsers(nh, false);
      }
   }
   if (any) {
      doMaybeScheduleReview(vrfName);
   }
}

void MplsSm::handleResolvedV4Nexthop(const VrfAndIpAddr& vrfAndIpAddr) {
   handleResolvedNexthop(VrfAndIpGenAddr(vrfAndIpAddr));
}

void MplsSm::handleResolvedV6Nexthop(const VrfAndIpGenAddr& vrfAndIpGenAddr) {
   handleResolvedNexthop(vrfAndIpGenAddr);
}

void MplsSm::handleResolvedNexthop(const VrfAndIpGenAddr& vrfAddr) {
   SM_TRACE(5, "handle resolved nexthop");
   FAL_ASSERT(vrfAddr.ipGenAddr().af() == Wire::ipv4() || vrfAddr.ipGenAddr().af() == Wire::ipv6(),
              "vrfAddr.ipGenAddr().af() == Wire::ipv4() || vrfAddr.ipGenAddr().af() == "
              "Wire::ipv6()");
   L3::VrfName vrfName = falL3Status_->vrfName(vrfAddr.vrfId());
   if (vrfName.empty() && vrfAddr.vrfId() == VrfId(0)) {
      vrfName = defaultVrf();
   }
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf) {
      SM_TRACE(5, "no state for vrf");
      return;
   }
   Kor::Ptr<MplsNextHop> nextHop =
       vrf->mplsNextHop(IpAddrIntfId(vrfAddr.ipGenAddr(), Wire::IntfId()));
   if (!nextHop) {
      return;
   }
   for (const auto& l3Adj : nextHop->resolvedByRRSet()) {
      SM_TRACE(5, "add l3 adj " << l3Adj->index() << " for review");
      vrf->l3AdjForReviewIs(l3Adj->index(), true);
   }
   doMaybeScheduleReview(vrfName);
}

void MplsSm::handleNexthopResolutionAllowDefaultRoute() {
   bool allow = mplsStatus_ && mplsStatus_->nexthopResolutionAllowDefaultRoute();
   SM_TRACE(5, "nexthopResolutionAllowDefaultRoute:" << allow);
   if (routingHwMplsStatus_) {
      routingHwMplsStatus_->nexthopResolutionAllowDefaultRouteIs(allow);
   }
   // Resolutions through the default route become usable or unusable: look at them again.
   for (const auto& [name, vrf] : mplsState_) {
      bool any = false;
      for (const auto& [nh, nextHop] : vrf->mplsNextHopMap()) {
         for (const auto& l3Adj : nextHop->resolvedByRRSet()) {
            vrf->l3AdjForReviewIs(l3Adj->index(), true);
            any = true;
         }
      }
      if (any) {
         doMaybeScheduleReview(name);
      }
   }
}

}  // namespace Fal
