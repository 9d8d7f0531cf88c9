#include "TransitInvariants.h"

#include <sstream>

#include "Agent.h"
#include "ViolationReport.h"

namespace sim {

namespace {

using Report = ViolationReport;

using Vrf = Fal::VrfMplsState;
using Kind = AdjacencyIndexHistory::Kind;

// Walks one adjacency's route list through the route records, checking its links as it goes;
// calls f(key, route) for each well-linked entry. Returns the number of entries walked.
template <class LinkOf, class F>
std::size_t walkRouteList(Vrf& vrf, const Fal::RouteList& list, LinkOf linkOf, const char* what,
                          std::uint64_t index, Report& r, F&& f) {
   std::size_t walked = 0;
   std::uint32_t prev = Fal::RouteList::kNone;
   for (std::uint32_t label = list.head; label != Fal::RouteList::kNone;) {
      const Mpls::RouteKey k = Kor::DenseIndex<Mpls::RouteKey>::key(label);
      auto route = vrf.route(k);
      if (!route || ++walked > list.size) {
         r.fail(what, " ", index, " route list is broken at ", k);
         return walked;
      }
      const Fal::RouteLink& link = linkOf(*route);
      if (link.prev != prev) {
         r.fail(what, " ", index, " route list links ", k, " back to the wrong route");
      }
      f(k, *route);
      prev = label;
      label = link.next;
   }
   if (walked != list.size || list.tail != prev) {
      r.fail(what, " ", index, " route list holds ", walked, " routes but counts ", list.size);
   }
   return walked;
}

// The review has nothing queued: what it owes is done, except the L2 adjacencies that wait on
// the pending-delete list for the routes that still point at them.
bool reviewIdle(Vrf& vrf) {
   return vrf.routeKeyForPublishSet().empty() && vrf.routeKeyForReviewSet().empty() &&
          vrf.l3AdjForReviewSet().empty() && vrf.l3AdjInReviewBatch().empty() &&
          vrf.l2AdjForReviewSet().empty();
}

void checkIndices(const TransitParts& agent, Vrf* vrf, Report& r) {
   AdjacencyIndexHistory& history = *agent.indexHistory;
   if (history.generation != agent.generation) {
      history = AdjacencyIndexHistory();
      history.generation = agent.generation;
   }
   Kor::HashMap<std::uint64_t, AdjacencyIndexHistory::Seen> current;
   auto see = [&](std::uint64_t index, Kind kind, const void* object) {
      if (index == 0 || index > agent.sm->adjacencyIndex()) {
         r.fail("adjacency index ", index, " was never handed out (last is ",
                agent.sm->adjacencyIndex(), ")");
      }
      if (!current.try_emplace(index, AdjacencyIndexHistory::Seen{kind, object}).second) {
         r.fail("index ", index, " names an L3 and an L2 adjacency at once");
      }
      if (history.gone.contains(index)) {
         r.fail("adjacency index ", index, " reused after its adjacency was deleted");
      }
      auto it = history.alive.find(index);
      if (it != history.alive.end()) {
         if (it->second.kind != kind) {
            r.fail("adjacency index ", index, " changed between L3 and L2");
         } else if (it->second.object != object) {
            r.fail("adjacency index ", index, " now names another object");
         }
      }
   };
   if (vrf) {
      for (const auto& [index, l3] : vrf->l3AdjacencyMap()) {
         see(index, Kind::l3, l3.ptr());
      }
      for (const auto& [index, l2] : vrf->l2AdjacencyMap()) {
         see(index, Kind::l2, l2.ptr());
      }
   }
   for (const auto& [index, seen] : history.alive) {
      if (!current.contains(index)) {
         history.gone.insert(index);
      }
   }
   history.alive = std::move(current);
}

void checkNeighbours(const TransitParts& agent, const Mpls::Hardware::Adjacency& hwAdj, Report& r) {
   for (const auto& via : hwAdj.viaSet()) {
      if (via.l3Intf().empty() || !via.resolvedAddr().empty()) {
         continue;
      }
      auto info =
          agent.sm->falL3Status()->nextHopInfo(Fal::NextHopKey(via.nextHop(), via.l3Intf()));
      if (info.resolved() && (!(info.macAddr() == via.macAddr()) || info.vlanId() != via.vlanId() ||
                              info.l2Intf() != via.l2Intf())) {
         r.fail("hardware adjacency ", hwAdj.index(), " reaches ", via.nextHop(), " on ",
                via.l3Intf(), " by another neighbour than its entry says");
      }
   }
}

void checkL3Adjacencies(const TransitParts& agent, Vrf& vrf, bool idle, Report& r) {
   auto& hw = *agent.hwMplsStatus;
   for (const auto& [index, l3] : vrf.l3AdjacencyMap()) {
      if (l3->index() != index) {
         r.fail("l3 adj ", l3->index(), " filed under ", index);
      }
      auto hwAdj = hw.adjacency(index);
      if (!hwAdj) {
         r.fail("l3 adj ", index, " has no hardware adjacency");
      }
      const auto& key = l3->lFibViaSetKey();
      if (!vrf.lFibViaSetToL3AdjHas(key) || vrf.lFibViaSetToL3Adj(key) != index) {
         r.fail("l3 adj ", index, " of via set ", key, " is not what the via-set map names");
      }
      if (const auto& l2 = l3->l2Adjacency()) {
         if (vrf.l2Adjacency(l2->index()) != l2) {
            r.fail("l3 adj ", index, " -> l2 adj ", l2->index(), " unknown to the VRF");
         } else if (!l2->l3Adjacency(l3)) {
            r.fail("l2 adj ", l2->index(), " does not list its l3 adj ", index);
         }
         if (hwAdj && hwAdj->l2Adjacency() != hw.l2Adjacency(l2->index())) {
            r.fail("hardware adjacency ", index, " does not name l2 adj ", l2->index());
         }
         // Once reviewed, a via resolved on its interface carries its neighbour as it is now,
         // however the review came to it (resolving every via or patching the moved ones).
         if (hwAdj && idle) {
            checkNeighbours(agent, *hwAdj, r);
         }
      } else if (hwAdj && hwAdj->l2Adjacency()) {
         r.fail("hardware adjacency ", index, " still names l2 adj ", hwAdj->l2Adjacency()->index(),
                " that its l3 adj let go");
      }
      for (const auto& nh : l3->nextHopSet()) {
         auto nextHop = vrf.mplsNextHop(nh);
         bool byResolver = nh.l3Intf().empty();
         if (!nextHop) {
            r.fail("l3 adj ", index, " uses next hop ", nh, " unknown to the VRF");
         } else if (byResolver ? !nextHop->resolvedByRR(l3) : !nextHop->resolvedByMNH(l3)) {
            r.fail("next hop ", nh, " does not list its l3 adj ", index);
         } else if (byResolver ? nextHop->resolvedByMNH(l3) : nextHop->resolvedByRR(l3)) {
            r.fail("next hop ", nh, " lists l3 adj ", index, " in both resolution modes");
         }
      }
      if (const auto& ext = l3->extFecInfo()) {
         if (vrf.extFecInfo(ext->fecId()) != ext) {
            r.fail("l3 adj ", index, " -> FEC ", ext->fecId(), " unknown to the VRF");
         } else if (!ext->dependentL3Adjacency(l3)) {
            r.fail("FEC ", ext->fecId(), " does not list its l3 adj ", index);
         }
         if (l3->l2Adjacency() || l3->nextHops() != 0) {
            r.fail("l3 adj ", index, " goes both the FEC way and the hardware-adjacency way");
         }
      }
      if (const auto& backup = l3->backupAdj()) {
         if (vrf.l3Adjacency(backup->index()) != backup) {
            r.fail("l3 adj ", index, " -> backup ", backup->index(), " unknown to the VRF");
         } else if (!backup->primaryAdj(index)) {
            r.fail("backup l3 adj ", backup->index(), " does not list its primary ", index);
         }
      }
      for (std::uint64_t primary : l3->primaryAdjSet()) {
         auto p = vrf.l3Adjacency(primary);
         if (!p || p->backupAdj() != l3) {
            r.fail("l3 adj ", index, " lists primary ", primary, " that does not name it");
         }
      }
      walkRouteList(
          vrf, l3->routeList(), [](const Fal::MplsRoute& m) { return m.l3Link(); }, "l3 adj", index,
          r,
          // Captured by name: clang 14 cannot capture a structured binding.
          [&r, &adj = l3, adjIndex = index](const Mpls::RouteKey& k, const Fal::MplsRoute& route) {
             if (route.l3Adj() != adj) {
                r.fail("l3 adj ", adjIndex, " lists route ", k, " that does not use it");
             }
          });
      if (idle && l3->routeKeys() == 0 && l3->primaryAdjs() == 0) {
         r.fail("l3 adj ", index, " has no route and no primary but was kept");
      }
   }
   for (const auto& [key, index] : vrf.lFibViaSetToL3AdjMap()) {
      auto l3 = vrf.l3Adjacency(index);
      if (!l3 || !(l3->lFibViaSetKey() == key)) {
         r.fail("via set ", key, " maps to l3 adj ", index, " that does not stand for it");
      }
   }
   for (const auto& [index, adj] : hw.adjacencyMap()) {
      if (!vrf.l3Adjacency(index)) {
         r.fail("hardware adjacency ", index, " has no l3 adj");
      }
   }
}

void checkL2Adjacencies(const TransitParts& agent, Vrf& vrf, bool idle, Report& r) {
   auto& hw = *agent.hwMplsStatus;
   const auto& sharing = agent.sm->viaSetToHwL2AdjMap();
   for (const auto& [index, l2] : vrf.l2AdjacencyMap()) {
      if (l2->index() != index) {
         r.fail("l2 adj ", l2->index(), " filed under ", index);
      }
      auto hwL2 = hw.l2Adjacency(index);
      if (!hwL2) {
         r.fail("l2 adj ", index, " has no hardware L2 adjacency");
      } else if (!(hwL2->l2ViaSet() == l2->l2ViaSet())) {
         r.fail("l2 adj ", index, " and its hardware record disagree on the L2 via set");
      }
      for (const auto& l3 : l2->l3AdjacencySet()) {
         if (vrf.l3Adjacency(l3->index()) != l3 || l3->l2Adjacency() != l2) {
            r.fail("l2 adj ", index, " lists l3 adj ", l3->index(), " that does not use it");
         }
      }
      walkRouteList(
          vrf, l2->routeList(), [](const Fal::MplsRoute& m) { return m.l2Link(); }, "l2 adj", index,
          r,
          // Captured by name: clang 14 cannot capture a structured binding.
          [&r, &adj = l2, adjIndex = index](const Mpls::RouteKey& k, const Fal::MplsRoute& route) {
             if (route.l2Adj() != adj) {
                r.fail("l2 adj ", adjIndex, " lists route ", k, " that does not use it");
             }
          });
      bool pending = vrf.l2AdjPendingForDelete(index);
      if (l2->l3Adjacencies() == 0) {
         if (!pending && (idle || !vrf.l2AdjForReview(index))) {
            r.fail("unused l2 adj ", index, " is neither deleted nor pending deletion");
         }
      } else {
         if (idle && pending) {
            r.fail("l2 adj ", index, " in use but still pending deletion");
         }
         auto it = sharing.find(l2->l2ViaSet());
         if (it == sharing.end() || it->second != hwL2) {
            r.fail("l2 adj ", index, " in use but not found by its L2 via set for sharing");
         }
      }
   }
   for (std::uint64_t index : vrf.l2AdjPendingForDeleteSet()) {
      if (!vrf.l2Adjacency(index)) {
         r.fail("pending-delete list names l2 adj ", index, " that is gone");
      }
   }
   for (const auto& [viaSet, hwL2] : sharing) {
      if (!hwL2 || hw.l2Adjacency(hwL2->index()) != hwL2 || !vrf.l2Adjacency(hwL2->index())) {
         r.fail("sharing map holds an L2 adjacency unknown to the VRF");
      } else if (!(hwL2->l2ViaSet() == viaSet)) {
         r.fail("sharing map files l2 adj ", hwL2->index(), " under another L2 via set");
      }
   }
   for (const auto& [index, adj] : hw.l2AdjacencyMap()) {
      if (!vrf.l2Adjacency(index)) {
         r.fail("hardware L2 adjacency ", index, " has no l2 adj");
      }
   }
}

void checkRoutes(const TransitParts& agent, Vrf& vrf, bool idle, Report& r) {
   auto& hw = *agent.hwMplsStatus;
   auto config = agent.vrfConfig;
   auto status = agent.vrfStatus;
   // A route has one place in each kind of list, and every listed route uses the adjacency that
   // lists it (checked with the adjacencies): so each route is listed by its adjacencies exactly
   // when the lists hold as many routes as use an adjacency.
   std::size_t usingL3 = 0;
   std::size_t usingL2 = 0;
   std::size_t listedL3 = 0;
   std::size_t listedL2 = 0;
   for (const auto& [index, l3] : vrf.l3AdjacencyMap()) {
      listedL3 += l3->routeKeys();
   }
   for (const auto& [index, l2] : vrf.l2AdjacencyMap()) {
      listedL2 += l2->routeKeys();
   }
   for (const auto& [k, route] : vrf.routeMap()) {
      const auto& l3 = route->l3Adj();
      const auto& l2 = route->l2Adj();
      const auto& ext = route->extFecInfo();
      usingL3 += l3 ? 1 : 0;
      usingL2 += l2 ? 1 : 0;
      if (l3 && vrf.l3Adjacency(l3->index()) != l3) {
         r.fail("route ", k, " -> l3 adj ", l3->index(), " which does not list it");
      }
      if (l2 && vrf.l2Adjacency(l2->index()) != l2) {
         r.fail("route ", k, " -> l2 adj ", l2->index(), " which does not list it");
      }
      if (ext && (vrf.extFecInfo(ext->fecId()) != ext || !ext->dependentRouteKey(k))) {
         r.fail("route ", k, " -> FEC ", ext->fecId(), " which does not list it");
      }
      if (l2 && ext) {
         r.fail("route ", k, " is bound to an L2 adjacency and a FEC at once");
      }
      if (!idle) {
         continue;
      }
      Fal::MplsHwRoute cfg = config ? config->route(k) : Fal::MplsHwRoute();
      if (l2) {
         if (!cfg || cfg.l2Adjacency() != hw.l2Adjacency(l2->index()) ||
             cfg.version() != route->version()) {
            r.fail("route ", k, " bound to l2 adj ", l2->index(),
                   " is not configured with it and its version");
         }
         if (status && status->route(k) == cfg && route->unprogrammed()) {
            r.fail("route ", k, " is programmed but still flagged unprogrammed");
         }
      } else if (!!cfg) {
         r.fail("route ", k, " is configured without an L2 adjacency in the state");
      }
      if (status && status->unprogrammedRouteHas(k) && !route->unprogrammed()) {
         r.fail("route ", k, " is reported unprogrammed but not flagged so");
      }
      if (l3) {
         Mpls::Hardware::Route published = hw.route(k);
         if (!hw.routeHas(k) || published.adjacencyIndex() != l3->index() ||
             published.l2AdjacencyIndex() != (l2 ? l2->index() : 0) ||
             published.unprogrammed() != route->unprogrammed() ||
             published.version() != route->version()) {
            r.fail("route ", k, " is not published as it stands (", published, ")");
         }
      } else if (hw.routeHas(k)) {
         r.fail("route ", k, " without an l3 adj is published");
      }
   }
   if (usingL3 != listedL3) {
      r.fail(usingL3, " routes use an l3 adj but the l3 adjs list ", listedL3);
   }
   if (usingL2 != listedL2) {
      r.fail(usingL2, " routes use an l2 adj but the l2 adjs list ", listedL2);
   }
   if (idle) {
      for (const auto& [k, published] : hw.routeMap()) {
         if (!vrf.route(k)) {
            r.fail("published route ", k, " is unknown to the VRF");
         }
      }
   }
   if (status) {
      std::uint64_t listed = 0;
      for (const auto& [k, flag] : status->unprogrammedRouteMap()) {
         if (vrf.route(k)) {
            ++listed;
         }
      }
      if (listed != vrf.numUnprogrammedRoute()) {
         r.fail("numUnprogrammedRoute is ", vrf.numUnprogrammedRoute(), " but ", listed,
                " of the VRF's routes are listed unprogrammed");
      }
      if (vrf.numUnprogrammedAdj() != status->unprogrammedAdjacencyMap().size()) {
         r.fail("numUnprogrammedAdj is ", vrf.numUnprogrammedAdj(), " but ",
                status->unprogrammedAdjacencyMap().size(), " adjacencies are listed unprogrammed");
      }
   }
}

// Every route and L2 adjacency of the hardware configuration is backed by the state.
void checkConfig(const TransitParts& agent, Vrf* vrf, Report& r) {
   auto config = agent.vrfConfig;
   if (!config) {
      return;
   }
   auto& hw = *agent.hwMplsStatus;
   auto known = [&](const Fal::L2AdjacencyPtr& adj) {
      return adj && vrf && vrf->l2Adjacency(adj->index()) && hw.l2Adjacency(adj->index()) == adj;
   };
   for (const auto& [k, route] : config->routeMap()) {
      if (!vrf || !vrf->route(k)) {
         r.fail("configured route ", k, " is unknown to the VRF state");
      }
      if (!known(route.l2Adjacency())) {
         r.fail("configured route ", k, " points at an L2 adjacency the VRF does not know");
      } else if (!config->l2AdjacencyHas(route.l2Adjacency())) {
         r.fail("configured route ", k, " points at an L2 adjacency that is not configured");
      }
   }
   for (const auto& [adj, count] : config->l2AdjacencyMap()) {
      if (!known(adj)) {
         r.fail("configured L2 adjacency ", adj->index(), " is unknown to the VRF state");
      }
      if (count == 0) {
         r.fail("configured L2 adjacency ", adj->index(), " has count 0");
      }
   }
}

void checkFecs(const TransitParts& agent, Vrf* vrf, bool idle, Report& r) {
   if (!agent.sm->forwardingIntoExternalFecsSupported()) {
      if (vrf && vrf->extFecInfos() != 0) {
         r.fail("FEC records without FEC forwarding");
      }
      return;
   }
   auto& request = *agent.fecRequest;
   if (vrf) {
      for (const auto& [id, info] : vrf->extFecInfoMap()) {
         if (!(info->fecId() == id)) {
            r.fail("FEC ", info->fecId(), " filed under ", id);
         }
         if (!(request.hwFecIdRequest(id) == Fal::HwFecIdRequest(id))) {
            r.fail("FEC ", id, " has no hardware id request");
         }
         bool own = id.adjType() == Memtab::Fib::AdjType::mplsNexthopAdj_;
         if (own) {
            if (!request.fecPtr(id)) {
               r.fail("own FEC ", id, " is not published");
            }
            if (!(vrf->lFibViaSetToFecId(info->lFibViaSetKey()) == id)) {
               r.fail("own FEC ", id, " is not the cached FEC of via set ", info->lFibViaSetKey());
            }
            if (!agent.sm->numAllocator()->isAllocated(id.value() & 0xFFFFFFFFu)) {
               r.fail("own FEC ", id, " uses a number the allocator does not hold");
            }
         } else if (request.fecPtr(id)) {
            r.fail("external FEC ", id, " is published as ours");
         }
         for (const auto& l3 : info->dependentL3AdjacencySet()) {
            if (vrf->l3Adjacency(l3->index()) != l3 || l3->extFecInfo() != info) {
               r.fail("FEC ", id, " lists l3 adj ", l3->index(), " that does not use it");
            }
         }
         for (const auto& k : info->dependentRouteKeySet()) {
            auto route = vrf->route(k);
            if (!route || route->extFecInfo() != info) {
               r.fail("FEC ", id, " lists route ", k, " that does not use it");
            }
         }
         if (idle && info->dependentL3AdjacencySet().empty() &&
             info->dependentRouteKeySet().empty()) {
            r.fail("FEC ", id, " has no user but was kept");
         }
      }
      for (const auto& [key, id] : vrf->lFibViaSetToFecIdMap()) {
         auto info = vrf->extFecInfo(id);
         if (!info || !(info->lFibViaSetKey() == key)) {
            r.fail("via set ", key, " caches FEC ", id, " that has no record for it");
         }
      }
   }
   for (const auto& [id, req] : request.hwFecIdRequestMap()) {
      if (!vrf || !vrf->extFecInfo(id)) {
         r.fail("hardware id request for FEC ", id, " that nothing uses");
      }
   }
   for (const auto& [id, fec] : request.fecMap()) {
      if (!vrf || !vrf->extFecInfo(id)) {
         r.fail("published FEC ", id, " that nothing uses");
      }
   }
   if (!agent.helper || !idle) {
      return;
   }
   auto status = agent.vrfStatus;
   for (const auto& [k, fecId] : agent.helperRoutes) {
      auto route = vrf ? vrf->route(k) : nullptr;
      if (route && status && status->unprogrammedRouteHas(k)) {
         continue;  // a refused update: the platform keeps the earlier programming until the retry
      }
      if (!route || !route->extFecInfo() || route->extFecInfo()->fecId().value() != fecId) {
         r.fail("helper holds route ", k, " that the state does not forward into FEC ", fecId);
      }
   }
   if (vrf) {
      for (const auto& [k, route] : vrf->routeMap()) {
         if (route->extFecInfo() && !(status && status->unprogrammedRouteHas(k)) &&
             !agent.helperRoutes.contains(k)) {
            r.fail("route ", k,
                   " forwarded into a FEC is neither programmed nor listed unprogrammed");
         }
      }
   }
}

// Exactly the VRF's next hops are watched, each once.
void checkWatches(const TransitParts& agent, Vrf* vrf, Report& r) {
   Kor::HashSet<Fal::MonitoredNexthopSm::EntryKey> monitored;
   Kor::HashSet<Fal::VrfAndIpAddr> watched4;
   Kor::HashSet<Fal::VrfAndIpGenAddr> watched6;
   std::size_t byMonitor = 0;
   if (vrf) {
      for (const auto& [nh, nextHop] : vrf->mplsNextHopMap()) {
         if (!(nextHop->nextHopInfo() == nh)) {
            r.fail("next hop ", nextHop->nextHopInfo(), " filed under ", nh);
         }
         if (nextHop->unused()) {
            r.fail("next hop ", nh, " has no user but was kept");
         }
         for (const auto* users : {&nextHop->resolvedByMNHSet(), &nextHop->resolvedByRRSet()}) {
            for (const auto& l3 : *users) {
               if (vrf->l3Adjacency(l3->index()) != l3 || !l3->nextHop(nh)) {
                  r.fail("next hop ", nh, " lists l3 adj ", l3->index(), " that does not use it");
               }
            }
         }
         const Wire::IpGenAddr& addr = nh.ipGenAddr();
         if (nh.l3Intf().empty()) {
            if (addr.af() == Wire::ipv4()) {
               watched4.insert(Fal::VrfAndIpAddr(Fal::VrfId(0), addr.v4Addr()));
            } else {
               watched6.insert(Fal::VrfAndIpGenAddr(Fal::VrfId(0), addr));
            }
            continue;
         }
         ++byMonitor;
         Fal::NextHopKey key(addr, nh.l3Intf());
         const auto& arp = agent.sm->currArpVrfIdMap();
         auto it = arp.find(key);
         if (it == arp.end()) {
            r.fail("monitored next hop ", nh, " has no ARP VRF recorded");
            continue;
         }
         monitored.insert(Fal::MonitoredNexthopSm::EntryKey{it->second, key});
      }
   }
   if (agent.sm->currArpVrfIdMap().size() != byMonitor) {
      r.fail(agent.sm->currArpVrfIdMap().size(), " ARP VRF entries for ", byMonitor,
             " monitored next hops");
   }
   const auto& entries = agent.monitoredNhSm->entryMap();
   if (entries.size() != monitored.size()) {
      r.fail(entries.size(), " monitored entries for ", monitored.size(), " next hops");
   }
   for (const auto& [key, refs] : entries) {
      if (!monitored.contains(key) || refs != 1) {
         r.fail("monitored entry ", key.nextHopKey, " in vrf ", key.vrfId, " with ", refs,
                " users is not exactly one next hop of the VRF");
      }
   }
   const auto& addrs = agent.routeReactorConfig->watchedAddrMap();
   if (addrs.size() != watched4.size()) {
      r.fail(addrs.size(), " watched IPv4 addresses for ", watched4.size(), " next hops");
   }
   for (const auto& [key, watch] : addrs) {
      if (!watched4.contains(key) || watch.refs != 1) {
         r.fail("watched address ", key, " with ", watch.refs,
                " users is not exactly one next hop of the VRF");
      }
   }
   const auto& addrs6 = agent.route6ReactorConfig->watchedIp6AddrMap();
   if (addrs6.size() != watched6.size()) {
      r.fail(addrs6.size(), " watched IPv6 addresses for ", watched6.size(), " next hops");
   }
   for (const auto& [key, watch] : addrs6) {
      if (!watched6.contains(key) || watch.refs != 1) {
         r.fail("watched address ", key, " with ", watch.refs,
                " users is not exactly one next hop of the VRF");
      }
   }
}

}  // namespace

TransitParts transitParts(const Agent& agent, AdjacencyIndexHistory& history) {
   TransitParts p;
   p.sm = agent.mplsSm();
   p.generation = agent.restarts();
   p.indexHistory = &history;
   p.hwMplsStatus = agent.hwMplsStatus();
   p.vrfConfig = agent.defaultVrfConfig();
   p.vrfStatus = agent.defaultVrfStatus();
   p.fecRequest = agent.fecRequest();
   p.helper = agent.options().fecForwarding;
   if (p.helper) {
      for (const auto& [k, r] : agent.routeHelper()->routeMap()) {
         p.helperRoutes.emplace(k, r.fecId);
      }
   }
   p.monitoredNhSm = agent.monitoredNhSm();
   p.routeReactorConfig = agent.routeReactorConfig();
   p.route6ReactorConfig = agent.route6ReactorConfig();
   return p;
}

std::vector<std::string> transitInvariantViolations(const TransitParts& agent) {
   Report r;
   if (!agent.sm) {
      return r.lines;
   }
   Kor::Ptr<Vrf> vrf = agent.sm->mplsState(L3::VrfName::defaultVrf());
   checkIndices(agent, vrf.ptr(), r);
   if (vrf) {
      bool idle = reviewIdle(*vrf);
      checkL3Adjacencies(agent, *vrf, idle, r);
      checkL2Adjacencies(agent, *vrf, idle, r);
      checkRoutes(agent, *vrf, idle, r);
      checkFecs(agent, vrf.ptr(), idle, r);
   } else {
      auto& hw = *agent.hwMplsStatus;
      if (!hw.adjacencyMap().empty() || !hw.l2AdjacencyMap().empty() || !hw.routeMap().empty()) {
         r.fail("shared hardware status holds adjacencies or routes without a VRF state");
      }
      if (!agent.sm->viaSetToHwL2AdjMap().empty()) {
         r.fail("sharing map holds L2 adjacencies without a VRF state");
      }
      checkFecs(agent, nullptr, true, r);
   }
   checkConfig(agent, vrf.ptr(), r);
   checkWatches(agent, vrf.ptr(), r);
   return r.lines;
}

}  // namespace sim
