// Seeded random sequences of control-plane, neighbour and platform events, with the invariants
// checked after every step and, once the agent is quiet again, the hardware compared with what
// the LFIB and the neighbour table call for, computed here independently of the state machine.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <sstream>

#include <mplsfwd/log/ToggleService.h>

#include "support/TransitAgent.h"
#include "support/TransitInvariants.h"

namespace {

using TestSupport::TransitAgent;
using TestSupport::transitInvariantViolations;

const Wire::IntfId kResolverIntf = Wire::IntfId::vlan(40);
const std::vector<Wire::IntfId> kIntfs = {Wire::IntfId::vlan(10), Wire::IntfId::vlan(20),
                                          Wire::IntfId::vlan(30)};
const char* const kDefaultGateway = "10.9.0.4";
const std::vector<std::string> kMacs = {"00:00:00:00:00:01", "00:00:00:00:00:02",
                                        "00:00:00:00:00:03"};
constexpr std::uint32_t kVias = 24;
constexpr std::uint32_t kViaSets = 12;
constexpr std::uint32_t kFirstLabel = 1000;
constexpr std::uint32_t kLabels = 48;
constexpr std::uint32_t kFirstExtSet = 20;
constexpr std::uint32_t kExtSets = 4;
const std::vector<Memtab::Fib::FecId> kExtFecs = {
    Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::fibAdj_, 5),
    Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::fibAdj_, 6), Memtab::Fib::FecId(0)};

Mpls::LfibViaKey viaKey(std::uint32_t index) {
   return Mpls::LfibViaKey(Mpls::viaTypeMplsIp_, index, Mpls::lfibSourceStatic_);
}

// The next hops the sequences use: a few on each monitored interface, and a few reached through
// the route resolver inside one connected subnet.
struct NextHop {
   std::string addr;
   Wire::IntfId intf;  // empty: through the route resolver
};

std::vector<NextHop> nextHops() {
   std::vector<NextHop> all;
   for (std::size_t i = 0; i < kIntfs.size(); ++i) {
      for (int host = 1; host <= 3; ++host) {
         all.push_back({"10." + std::to_string(i + 1) + ".0." + std::to_string(host), kIntfs[i]});
      }
   }
   for (int host = 1; host <= 4; ++host) {
      all.push_back({"10.9.0." + std::to_string(host), Wire::IntfId()});
   }
   // Covered only by the default route.
   for (int host = 1; host <= 2; ++host) {
      all.push_back({"172.16.0." + std::to_string(host), Wire::IntfId()});
   }
   return all;
}

class RandomSequence {
 public:
   // With `fec`, the platform forwards into FECs: odd via sets are of the source that goes the
   // FEC way, and routes may also use external-FEC via sets.
   RandomSequence(std::uint32_t seed, bool inPlace, bool fec)
       : rng_(seed), nextHops_(nextHops()), fec_(fec) {
      Log::ToggleService::toggleIs("InPlaceMplsAdjacencyUpdate", inPlace);
      TransitAgent::Options options;
      options.fecForwarding = fec;
      agent_ = std::make_unique<TransitAgent>(options);
      agent_->connectedRoute("10.9.0.0", 24, kResolverIntf);
      agent_->ipRoute("0.0.0.0", 0, kDefaultGateway, kResolverIntf);
   }

   Mpls::LfibViaSetKey setKey(std::uint32_t index) const {
      if (index >= kFirstExtSet) {
         return Mpls::LfibViaSetKey(Mpls::viaTypeExternalFec_, index, Mpls::lfibSourceStatic_);
      }
      bool fibSource = fec_ && index % 2 == 1;
      return Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, index,
                                 fibSource ? Mpls::lfibSourceOspfSr_ : Mpls::lfibSourceStatic_);
   }
   ~RandomSequence() {
      agent_.reset();
      Log::ToggleService::toggleDel("InPlaceMplsAdjacencyUpdate");
   }

   // Runs `events` random events, checking the invariants after every settle. Stops at the first
   // violation.
   void run(int events) {
      for (int i = 0; i < events && !::testing::Test::HasFailure(); ++i) {
         event();
         if (pick(4) == 0) {
            settle(pick(10) == 0 ? 11.0 : 0.001 * pick(30));
         }
      }
   }

   // Clears the refusals, restores room, switches routing on, makes every route's via set exist,
   // and lets the retries run.
   void quiesce() {
      TransitAgent& a = *agent_;
      a.chip.refuseNextIs(sim::RefuseTarget::routes, 0, Fal::UnprogrammedReason::RouteFull);
      a.helper->refuseNextIs(0, Mpls::lfibHwProgrammingResourceFull_);
      a.chip.routeCapacityIs(SIZE_MAX);
      a.chip.l2AdjacencyCapacityIs(SIZE_MAX);
      a.routingInfo->mplsRoutingIs(true);
      a.chip.confirmRoutingIs(true);
      // A route whose via set is gone waits for it with whatever it had; give every such route
      // its via set back so that the comparison below can hold.
      for (const auto& [key, route] : a.lfib->lfibRouteMap()) {
         if (!a.lfib->viaSetHas(route.viaSetKey())) {
            newSet(route.viaSetKey().index());
         }
      }
      log("quiesce");
      settle(30.0);
   }

   // The hardware holds exactly what the LFIB and the neighbour table call for.
   void compare() {
      TransitAgent& a = *agent_;
      auto config = a.vrfConfig();
      auto status = a.vrfStatus();
      ASSERT_TRUE(config);
      ASSERT_TRUE(status);
      std::size_t expectedRoutes = 0;
      Kor::HashSet<Mpls::Hardware::L2ViaSet> expectedSets;
      Kor::HashSet<Fal::NextHopKey> expectedMonitored;
      Kor::HashSet<std::string> expectedWatched;
      Kor::HashSet<Mpls::LfibViaSetKey> expectedL3;
      std::size_t expectedStateRoutes = 0;
      for (const auto& [key, route] : a.lfib->lfibRouteMap()) {
         Expected e = expected(route.viaSetKey());
         if (e.sane && !(a.state() && a.state()->route(key))) {
            ADD_FAILURE() << "route " << key << " of " << route.viaSetKey()
                          << " was dropped by the machine: " << a.lfib->viaSet(route.viaSetKey())
                          << trail();
         }
         if (e.sane) {
            ++expectedStateRoutes;
            expectedL3.insert(route.viaSetKey());
            for (const auto& nh : e.monitored) {
               expectedMonitored.insert(nh);
            }
            for (const auto& addr : e.watched) {
               expectedWatched.insert(addr);
            }
         }
         Fal::MplsHwRoute cfg = config->route(key);
         if (e.fecWay) {
            EXPECT_TRUE(!cfg) << "route " << key << " going the FEC way is configured" << trail();
            checkFecRoute(key, route.viaSetKey(), e);
            continue;
         }
         if (a.helper) {
            EXPECT_FALSE(a.helper->routeHas(key))
                << "route " << key << " is in the helper" << trail();
         }
         if (!e.programmed) {
            EXPECT_TRUE(!cfg) << "route " << key << " of " << route.viaSetKey()
                              << " is configured though it cannot be programmed" << trail();
            continue;
         }
         ++expectedRoutes;
         expectedSets.insert(e.l2ViaSet);
         if (!cfg || !cfg.l2Adjacency()) {
            ADD_FAILURE() << "route " << key << " of " << route.viaSetKey() << " is not configured"
                          << trail();
            continue;
         }
         EXPECT_EQ(cfg.l2Adjacency()->l2ViaSet(), e.l2ViaSet)
             << "route " << key << " is configured through the wrong L2 vias" << trail();
         EXPECT_TRUE(config->l2AdjacencyHas(cfg.l2Adjacency())) << "route " << key;
         EXPECT_TRUE(status->route(key) == cfg) << "route " << key << " is not programmed";
         EXPECT_FALSE(a.hwMplsStatus->route(key).unprogrammed())
             << "route " << key << " is published unprogrammed";
      }
      EXPECT_EQ(config->routes(), expectedRoutes) << trail();
      EXPECT_EQ(status->unprogrammedRoutes(), 0u);
      EXPECT_TRUE(status->unprogrammedAdjacencyMap().empty());
      // One L2 adjacency per distinct L2 via set, and no other.
      EXPECT_EQ(config->l2Adjacencies(), expectedSets.size()) << trail();
      for (const auto& [adj, count] : config->l2AdjacencyMap()) {
         EXPECT_TRUE(expectedSets.contains(adj->l2ViaSet()))
             << "configured L2 adjacency " << adj->index() << " serves no route" << trail();
      }
      // The machine's own view: the routes and adjacencies it keeps, the next hops it watches.
      auto state = a.state();
      ASSERT_TRUE(state);
      EXPECT_EQ(state->routes(), expectedStateRoutes) << trail();
      EXPECT_EQ(state->l3Adjacencies(), expectedL3.size()) << trail();
      EXPECT_EQ(a.monitoredNhSm->entries(), expectedMonitored.size()) << trail();
      for (const auto& nh : expectedMonitored) {
         EXPECT_TRUE(a.monitoredNhSm->entryHas(Fal::VrfId(0), nh.nextHop(), nh.l3Intf()))
             << "next hop " << nh << " is not monitored";
      }
      EXPECT_EQ(a.routeReactorConfig->watchedAddrs(), expectedWatched.size()) << trail();
      for (const auto& line : transitInvariantViolations(a)) {
         ADD_FAILURE() << "transit invariant: " << line << trail();
      }
   }

   TransitAgent& agent() { return *agent_; }

 private:
   struct Expected {
      bool sane = false;        // the machine keeps the route (its via set passes validation)
      bool programmed = false;  // and every next hop resolves (or its FEC is valid)
      bool fecWay = false;      // programmed through the helper into a FEC
      Memtab::Fib::FecId externalFec;  // for an external-FEC via set
      std::vector<Mpls::LfibMplsVia> vias;
      Mpls::Hardware::L2ViaSet l2ViaSet;
      std::vector<Fal::NextHopKey> monitored;
      std::vector<std::string> watched;
   };

   // What the route of a via set must look like in hardware, from the LFIB and the neighbour
   // table alone.
   Expected expected(const Mpls::LfibViaSetKey& key) const {
      const TransitAgent& a = *agent_;
      Expected e;
      const Mpls::LfibViaSet* set = a.lfib->viaSetPtr(key);
      if (!set) {
         return e;
      }
      if (key.viaType() == Mpls::viaTypeExternalFec_) {
         // Kept whatever its content; programmed only with one valid external-FEC via.
         e.sane = true;
         if (set->vias() == 1) {
            Mpls::LfibExtFecVia via = a.lfib->extFecVia(set->via(Mpls::LfibViaIndexRange(0)));
            e.fecWay = via.fecId().isValid();
            e.programmed = e.fecWay;
            e.externalFec = via.fecId();
         }
         return e;
      }
      std::vector<Mpls::LfibMplsVia> vias;
      for (std::uint32_t i = 0; i < set->vias(); ++i) {
         const Mpls::LfibViaKey& k = set->via(Mpls::LfibViaIndexRange(i));
         if (k.viaType() != Mpls::viaTypeMplsIp_) {
            return e;
         }
         Mpls::LfibMplsVia via = a.lfib->mplsVia(k);
         if (via == Mpls::LfibMplsVia() || via.labelStack().stackSize() > 1) {
            return e;
         }
         vias.push_back(via);
      }
      e.sane = true;
      e.vias = vias;
      if (vias.empty()) {
         return e;
      }
      if (key.source() == Mpls::lfibSourceOspfSr_) {
         e.fecWay = true;
         e.programmed = true;
         return e;
      }
      bool resolved = true;
      for (const auto& via : vias) {
         Fal::NextHopKey neighbourKey(via.nextHop(), via.intf());
         if (via.intf().empty()) {
            e.watched.push_back(via.nextHop().stringValue());
            // Inside the connected subnet the address is its own next hop on that interface;
            // elsewhere only the default route covers it, through its gateway, and only while
            // that is allowed.
            Wire::IpGenAddr gateway = via.nextHop();
            if (via.nextHop().stringValue().rfind("172.16.", 0) == 0) {
               if (!a.mplsStatus->nexthopResolutionAllowDefaultRoute()) {
                  resolved = false;
                  continue;
               }
               gateway = Wire::IpGenAddr::parse(kDefaultGateway);
            }
            neighbourKey = Fal::NextHopKey(gateway, kResolverIntf);
         } else {
            e.monitored.push_back(neighbourKey);
         }
         Fal::NextHopInfo info = a.l3Status->nextHopInfo(neighbourKey);
         if (!info.resolved()) {
            resolved = false;
            continue;
         }
         e.l2ViaSet.l2ViaIs(Mpls::Hardware::L2Via(info.vlanId(), info.l2Intf(), info.macAddr(),
                                                  via.labelStack(), via.nextHop()),
                            true);
      }
      e.programmed = resolved;
      return e;
   }

   // A route going the FEC way is in the helper, forwarding into the FEC of its via set, whose
   // published record holds the via set's vias in order.
   void checkFecRoute(const Mpls::RouteKey& key, const Mpls::LfibViaSetKey& setKey,
                      const Expected& e) {
      TransitAgent& a = *agent_;
      ASSERT_TRUE(a.helper);
      if (!a.helper->routeHas(key)) {
         ADD_FAILURE() << "route " << key << " of " << setKey << " is not in the helper" << trail();
         return;
      }
      Memtab::Fib::FecId fecId(a.helper->routeMap().at(key).fecId);
      EXPECT_EQ(a.fecRequest->hwFecIdRequest(fecId), Fal::HwFecIdRequest(fecId)) << key;
      EXPECT_NE(a.fecResponse->hwFecId(fecId).hwFecId(), 0u) << key;
      if (setKey.viaType() == Mpls::viaTypeExternalFec_) {
         EXPECT_EQ(fecId, e.externalFec) << "route " << key << trail();
         EXPECT_FALSE(a.fecRequest->fecPtr(fecId)) << key;
         return;
      }
      EXPECT_EQ(fecId.adjType(), Memtab::Fib::AdjType::mplsNexthopAdj_) << key;
      const Memtab::Fib::Fec* fec = a.fecRequest->fecPtr(fecId);
      if (!fec) {
         ADD_FAILURE() << "the FEC of route " << key << " is not published" << trail();
         return;
      }
      ASSERT_EQ(fec->vias(), e.vias.size()) << key << trail();
      for (std::size_t i = 0; i < e.vias.size(); ++i) {
         Memtab::Fib::Via via = fec->via(Memtab::Fib::ViaIndex(static_cast<std::uint32_t>(i)));
         EXPECT_EQ(via.nextHop(), e.vias[i].nextHop()) << key << " via " << i << trail();
         EXPECT_EQ(via.intf(), e.vias[i].intf()) << key << " via " << i;
         EXPECT_EQ(via.labelStack(), e.vias[i].labelStack()) << key << " via " << i;
      }
   }

   std::uint32_t pick(std::uint32_t n) {
      return std::uniform_int_distribution<std::uint32_t>(0, n - 1)(rng_);
   }

   void log(const std::string& line) {
      events_.push_back(line);
      if (events_.size() > 40) {
         events_.pop_front();
      }
   }

   std::string trail() const {
      std::ostringstream os;
      os << "\nlast events:";
      for (const auto& e : events_) {
         os << "\n  " << e;
      }
      return os.str();
   }

   void settle(double seconds) {
      std::ostringstream os;
      os << "settle " << seconds;
      log(os.str());
      agent_->settle(seconds);
      for (const auto& line : transitInvariantViolations(*agent_)) {
         ADD_FAILURE() << "transit invariant: " << line << trail();
      }
   }

   void newVia(std::uint32_t index) {
      const NextHop& nh = nextHops_[pick(nextHops_.size())];
      std::vector<std::uint32_t> labels;
      std::uint32_t kind = pick(10);
      if (kind < 6) {
         labels.push_back(100 + 100 * pick(3));
      } else if (kind == 6) {
         labels = {300, 301};  // refused by validation
      }
      agent_->mplsViaWith(index, nh.addr, nh.intf, labels);
      log("via " + std::to_string(index) + " -> " + nh.addr + " " + nh.intf.stringValue() +
          " labels " + std::to_string(labels.size()));
   }

   void newViaSet(std::uint32_t index) {
      std::vector<Mpls::LfibViaKey> vias;
      std::uint32_t n = pick(12) == 0 ? 0 : 1 + pick(3);
      for (std::uint32_t i = 0; i < n; ++i) {
         std::uint32_t kind = pick(30);
         if (kind == 0) {
            vias.push_back(Mpls::LfibViaKey(Mpls::viaTypeVlan_, 1, Mpls::lfibSourceEvpn_));
         } else if (kind == 1) {
            vias.push_back(viaKey(500 + pick(5)));  // never in the LFIB
         } else {
            vias.push_back(viaKey(1 + pick(kVias)));
         }
      }
      agent_->viaSet(index, vias, Mpls::LfibViaSetKey(), setKey(index).source());
      log("via set " + std::to_string(index) + " with " + std::to_string(n) + " vias");
   }

   void newExtFecSet(std::uint32_t index) {
      TransitAgent& a = *agent_;
      if (pick(6) == 0) {
         Mpls::LfibViaKey v1(Mpls::viaTypeExternalFec_, index, Mpls::lfibSourceStatic_);
         Mpls::LfibViaKey v2(Mpls::viaTypeExternalFec_, index + 100, Mpls::lfibSourceStatic_);
         a.lfib->extFecViaIs(Mpls::LfibExtFecVia(v1, kExtFecs[0]));
         a.lfib->extFecViaIs(Mpls::LfibExtFecVia(v2, kExtFecs[1]));
         a.lfib->viaSetIs(Mpls::LfibViaSet(setKey(index), {v1, v2}));
         log("external FEC set " + std::to_string(index) + " with two vias");
         return;
      }
      const Memtab::Fib::FecId& fecId = kExtFecs[pick(kExtFecs.size())];
      a.extFecViaSet(index, fecId);
      log("external FEC set " + std::to_string(index) + " -> " + fecId.stringValue());
   }

   void newSet(std::uint32_t index) {
      if (index >= kFirstExtSet) {
         newExtFecSet(index);
      } else {
         newViaSet(index);
      }
   }

   std::uint32_t randomSet() {
      if (fec_ && pick(5) == 0) {
         return kFirstExtSet + pick(kExtSets);
      }
      return 1 + pick(kViaSets);
   }

   void event() {
      TransitAgent& a = *agent_;
      std::uint32_t kind = pick(100);
      if (kind < 25) {
         std::uint32_t label = kFirstLabel + pick(kLabels);
         std::uint32_t set = randomSet();
         a.route(label, setKey(set));
         log("route " + std::to_string(label) + " -> set " + std::to_string(set));
      } else if (kind < 35) {
         std::uint32_t label = kFirstLabel + pick(kLabels);
         a.routeDel(label);
         log("route " + std::to_string(label) + " deleted");
      } else if (kind < 47) {
         newSet(randomSet());
      } else if (kind < 50) {
         std::uint32_t set = randomSet();
         a.viaSetDel(setKey(set));
         log("via set " + std::to_string(set) + " deleted");
      } else if (kind < 60) {
         newVia(1 + pick(kVias));
      } else if (kind < 75) {
         const NextHop& nh = nextHops_[pick(nextHops_.size())];
         Wire::IntfId intf = nh.intf.empty() ? kResolverIntf : nh.intf;
         const std::string& mac = kMacs[pick(kMacs.size())];
         a.neighbor(nh.addr, intf, mac, 10 + pick(2), Wire::IntfId::ethernet(1 + pick(2)));
         log("neighbour " + nh.addr + " " + intf.stringValue() + " " + mac);
      } else if (kind < 83) {
         const NextHop& nh = nextHops_[pick(nextHops_.size())];
         Wire::IntfId intf = nh.intf.empty() ? kResolverIntf : nh.intf;
         a.neighborDel(nh.addr, intf);
         log("neighbour " + nh.addr + " " + intf.stringValue() + " deleted");
      } else if (kind < 88) {
         static const Fal::UnprogrammedReason reasons[] = {
             Fal::UnprogrammedReason::RouteFull, Fal::UnprogrammedReason::AdjacencyFull,
             Fal::UnprogrammedReason::InterfaceNotReady};
         std::uint32_t n = 1 + pick(4);
         a.chip.refuseNextIs(sim::RefuseTarget::routes, n, reasons[pick(3)]);
         if (fec_ && pick(2) == 0) {
            a.helper->refuseNextIs(n, Mpls::lfibHwProgrammingResourceFull_);
         }
         log("refuse next " + std::to_string(n));
      } else if (kind < 92) {
         std::size_t routes = pick(3) == 0 ? SIZE_MAX : 5 + pick(20);
         std::size_t adjs = pick(3) == 0 ? SIZE_MAX : 2 + pick(6);
         a.chip.routeCapacityIs(routes);
         a.chip.l2AdjacencyCapacityIs(adjs);
         log("capacity routes " + std::to_string(routes) + " adjacencies " + std::to_string(adjs));
      } else if (kind < 94) {
         bool on = !a.routingInfo->mplsRouting();
         a.routingInfo->mplsRoutingIs(on);
         log(std::string("routing ") + (on ? "on" : "off"));
      } else if (kind < 95) {
         // The platform withdraws MPLS routing on its own, and later answers the configuration
         // again (quiesce makes it answer at the latest).
         if (auto status = a.vrfStatus()) {
            bool on = !status->mplsRouting() && a.vrfConfig()->mplsRouting();
            status->mplsRoutingIs(on);
            log(std::string("platform routing ") + (on ? "on" : "off"));
         }
      } else if (kind < 96) {
         bool allow = !a.mplsStatus->nexthopResolutionAllowDefaultRoute();
         a.mplsStatus->nexthopResolutionAllowDefaultRouteIs(allow);
         log(std::string("default route ") + (allow ? "allowed" : "not allowed"));
      } else if (kind < 97) {
         a.stop();
         // The route helper restarts with the agent here; one that survives a restart is the FEC
         // tests' subject.
         for (const auto& key : a.helper->routeKeys()) {
            a.helper->deleteRoute(key);
         }
         a.start();
         log("restart");
      } else {
         settle(11.0);
      }
   }

   std::mt19937 rng_;
   std::vector<NextHop> nextHops_;
   bool fec_;
   std::unique_ptr<TransitAgent> agent_;
   std::deque<std::string> events_;
};

void runSequence(std::uint32_t seed, bool inPlace, bool fec) {
   RandomSequence sequence(seed, inPlace, fec);
   // Start from something: every via exists once.
   for (std::uint32_t i = 1; i <= kVias; ++i) {
      sequence.agent().mplsVia(i, "10.1.0." + std::to_string(1 + i % 3), kIntfs[0]);
   }
   sequence.run(3000);
   ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed;
   sequence.quiesce();
   ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed;
   sequence.compare();
   EXPECT_FALSE(::testing::Test::HasFailure()) << "seed " << seed;
}

class TransitRandomSequence : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(TransitRandomSequence, HardwareMatchesTheLfibOnceQuiet) {
   runSequence(GetParam(), GetParam() % 2 == 0, false);
}

TEST_P(TransitRandomSequence, HardwareAndFecsMatchTheLfibOnceQuiet) {
   runSequence(GetParam(), GetParam() % 2 == 1, true);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TransitRandomSequence, ::testing::Range(1u, 13u));

}  // namespace
