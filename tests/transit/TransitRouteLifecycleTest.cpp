// The road of a transit route through the state machine: arrival, via set, resolution, hardware
// configuration, platform answer, publication; deletions, the routing switches, VRF names and
// restarts. Moves between via sets are the example route-moves-between-via-sets.json.
#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;

Mpls::LfibViaSetKey mplsIpSetKey(std::uint32_t index) {
   return Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, index, Mpls::lfibSourceStatic_);
}

TEST(TransitRoute, RouteWaitsForViaSetThenNextHopThenReachesHardwareAndIsPublished) {
   TraceCapture traces;
   TransitAgent a;
   // The route arrives before its via set.
   a.route(100, mplsIpSetKey(1));
   settleAndCheck(a);
   ASSERT_TRUE(a.stateRoute(100));
   EXPECT_FALSE(a.stateRoute(100)->l3Adj());
   EXPECT_EQ(traces.count("via set for route (" + TransitAgent::key(100).stringValue() +
                          ") does not exist in system LFIB, delay processing"),
             1u);
   EXPECT_EQ(a.vrfConfig()->routes(), 0u);

   // The via set arrives through the tracking backlog; its next hop is not resolved yet.
   a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10, 2000)});
   settleAndCheck(a);
   EXPECT_TRUE(traces.contains("No L3Adj for viaSet. Scheduling all user Routes"));
   EXPECT_EQ(a.sm()->lfibTrackingStatus()->viaSetKeyBacklogSet().size(), 0u);
   ASSERT_TRUE(a.l3Adj(mplsIpSetKey(1)));
   EXPECT_TRUE(a.l3Adj(mplsIpSetKey(1))->unprogrammed());
   EXPECT_TRUE(
       a.monitoredNhSm->entryHas(Fal::VrfId(0), Wire::IpGenAddr::parse("10.0.0.2"), kVlan10));
   EXPECT_TRUE(!a.configRoute(100));
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
   // Known to the shared status through its adjacency, but not programmed.
   EXPECT_TRUE(a.hwMplsStatus->route(TransitAgent::key(100)).unprogrammed());

   // Resolved: configured, confirmed and published as programmed (its vias are the basic
   // example's).
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02", 10, Wire::IntfId::ethernet(3));
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   auto adj = a.configRoute(100).l2Adjacency();
   std::uint32_t count = a.vrfConfig()->l2Adjacency(adj);

   // Nothing moves while nothing changes; a neighbour refresh with the same answer reprograms the
   // adjacency (its count rises) and leaves the route alone.
   std::uint64_t writes = a.chip.routeWrites();
   settleAndCheck(a, 30.0);
   EXPECT_EQ(a.chip.routeWrites(), writes);
   EXPECT_EQ(a.vrfConfig()->l2Adjacency(adj), count);
   a.neighborDel("10.0.0.2", kVlan10);
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02", 10, Wire::IntfId::ethernet(3));
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
}

// Nothing happens until the platform confirms routing, the VRF has its name and the control plane
// has routing on; each opening brings the route up.
TEST(TransitRoute, NothingIsProgrammedWhileAGateIsClosed) {
   const struct {
      const char* name;
      bool vrfNameKnown, mplsRouting, platformConfirms, askedFor;
      std::function<void(TransitAgent&)> open;
   } cases[] = {
       {"platform has not confirmed", true, true, false, true,
        [](TransitAgent& a) { a.chip.confirmRoutingIs(true); }},
       {"VRF name unknown", false, true, true, true,
        [](TransitAgent& a) { a.l3Status->vrfNameIs(Fal::VrfId(0), L3::VrfName::defaultVrf()); }},
       {"routing off, no routes: the flag clears at once", true, false, true, false,
        [](TransitAgent& a) { a.routingInfo->mplsRoutingIs(true); }},
   };
   for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      TransitAgent a({.mplsRouting = c.mplsRouting, .vrfNameKnown = c.vrfNameKnown});
      a.chip.confirmRoutingIs(c.platformConfirms);
      a.agent.hwStatus()->vrfStatusIs(Fal::VrfId(0));
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}));
      settleAndCheck(a, 5.0);
      EXPECT_EQ(a.vrfConfig()->mplsRouting(), c.askedFor);
      EXPECT_EQ(a.vrfStatus()->mplsRouting(), c.platformConfirms && c.askedFor);
      EXPECT_FALSE(a.state());
      EXPECT_EQ(a.vrfConfig()->routes() + a.monitoredNhSm->entries(), 0u);
      c.open(a);
      settleAndCheck(a);
      EXPECT_TRUE(a.programmed(100));
   }
}

TEST(TransitRoute, OtherVrfNamesAreSkipped) {
   TraceCapture traces;
   TransitAgent a;
   a.l3Status->vrfNameIs(Fal::VrfId(5), L3::VrfName("blue"));
   settleAndCheck(a);
   EXPECT_EQ(traces.count("Vrf: blue is not default. skip."), 1u);
   EXPECT_FALSE(a.state());
}

TEST(TransitRoute, DeletionReleasesAdjacenciesWatchesAndPublications) {
   TransitAgent a;
   a.connectedRoute("10.1.0.0", 24, kVlan20);
   a.neighbor("10.1.0.5", kVlan20, "00:00:00:00:00:05");
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10), a.mplsVia(2, "10.1.0.5")}));
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   EXPECT_EQ(a.monitoredNhSm->entries(), 1u);
   EXPECT_EQ(a.routeReactorConfig->watchedAddrs(), 1u);

   // What must go with it is the invariant check's; here, that nothing is left at all.
   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_TRUE(a.vrfStatus()->routeMap().empty());
   EXPECT_TRUE(a.vrfStatus()->l2AdjacencyMap().empty());
   EXPECT_EQ(a.monitoredNhSm->entries() + a.routeReactorConfig->watchedAddrs(), 0u);
   if (auto s = a.state()) {
      EXPECT_TRUE(s->empty());
   }
}

TEST(TransitRoute, RouteDeletedBeforeItsReviewNeverReachesHardware) {
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}));
   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_EQ(a.routeAttempts(), 0u);
   EXPECT_EQ(a.vrfConfig()->routes(), 0u);
   EXPECT_FALSE(a.stateRoute(100));
}

TEST(TransitRoute, RoutesDroppedForABadViaSetComeBackWithItWhileItsAdjacencyLives) {
   TraceCapture traces;
   TransitAgent a;
   auto set = twoRoutes(a);
   ASSERT_TRUE(a.programmed(100));
   // Route 101 moves to a via set that is not there yet: it waits, holding the old adjacency.
   a.route(101, mplsIpSetKey(2));
   settleAndCheck(a);
   ASSERT_TRUE(a.l3Adj(set));

   // The via set goes bad: route 100 is taken down and dropped from the state.
   a.mplsViaWith(1, "10.0.0.2", kVlan10, {100, 101});
   settleAndCheck(a);
   EXPECT_TRUE(
       traces.contains("LFib via set " + set.stringValue() + ", type viaTypeMplsIp is not sane"));
   EXPECT_TRUE(!a.configRoute(100));
   EXPECT_FALSE(a.stateRoute(100));
   EXPECT_TRUE(a.sm()->mplsIpRouteKey(TransitAgent::key(100)));  // dropped, not forgotten
   ASSERT_TRUE(a.l3Adj(set));                                    // still held by the waiting route

   // Fixed again: the route it dropped comes back.
   a.mplsVia(1, "10.0.0.2", kVlan10);
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
}

TEST(TransitRoute, AnAdjacencyPendingDeletionCanAlsoBeDeletedFromItsOwnReview) {
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
   a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}));
   settleAndCheck(a);
   auto old = a.configRoute(100).l2Adjacency();
   ASSERT_TRUE(old);
   // The route moves to a via set that is not there yet and its old next hop goes: the old L2
   // adjacency has no user but the configured route still points at it.
   a.route(100, mplsIpSetKey(2));
   a.neighborDel("10.0.0.2", kVlan10);
   settleAndCheck(a);
   ASSERT_TRUE(a.state()->l2AdjPendingForDelete(old->index()));
   ASSERT_EQ(a.configRoute(100).l2Adjacency(), old);

   // The new via set arrives; one pass binds the route to a new adjacency, the next moves it
   // there. Between the two the platform reports the old adjacency, so that its own review and
   // the pending-delete pass meet in the same pass.
   a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   double now = a.loop->now();
   a.loop->advanceTo(now + 0.0015);
   a.vrfStatus()->unprogrammedAdjacencyIs(old, true);
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_NE(a.configRoute(100).l2Adjacency(), old);
   EXPECT_FALSE(a.vrfConfig()->l2AdjacencyHas(old));
   EXPECT_TRUE(a.state()->l2AdjPendingForDeleteSet().empty());
}

TEST(TransitRoute, RoutesOfOtherViaTypesAreIgnoredAndTakenDownWhenTheyChangeType) {
   // Untraced, the machine skips such routes and sets before its VRF lookups: same outcome.
   for (bool traced : {true, false}) {
      SCOPED_TRACE(traced ? "traced" : "untraced");
      std::optional<TraceCapture> traces;
      if (traced) {
         traces.emplace();
      }
      TransitAgent a;
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      auto set = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
      Mpls::LfibViaSetKey vlanSet(Mpls::viaTypeVlan_, 7, Mpls::lfibSourceEvpn_);
      a.route(200, vlanSet);
      a.route(100, set);
      settleAndCheck(a);
      if (traces) {
         EXPECT_EQ(traces->count("Ignoring non mpls-ip and extFec LfibRoute"), 1u);
      }
      EXPECT_FALSE(a.stateRoute(200));
      ASSERT_TRUE(a.programmed(100));

      // The VLAN set arrives while route 100 moves onto it: the route is still taken down.
      a.route(100, vlanSet);
      a.lfib->viaSetIs(Mpls::LfibViaSet(vlanSet));
      settleAndCheck(a);
      EXPECT_TRUE(!a.configRoute(100));
      EXPECT_FALSE(a.stateRoute(100));
      EXPECT_FALSE(a.stateRoute(200));
      EXPECT_FALSE(a.hwMplsStatus->routeHas(TransitAgent::key(100)));
      EXPECT_EQ(a.monitoredNhSm->entries(), 0u);
   }
}

TEST(TransitRoute, RoutingSwitchedOffDrainsRoutesBeforeTheHardwareFlagGoes) {
   TraceCapture traces;
   TransitAgent a;
   twoRoutes(a);
   ASSERT_TRUE(a.programmed(100));

   // Watch the order in which the configuration changes.
   struct Watch : Fal::MplsHwVrfConfig::NotifieeConst {
      using Fal::MplsHwVrfConfig::NotifieeConst::NotifieeConst;
      void onMplsRouting() override {
         if (!notifier()->mplsRouting()) {
            routesAtFlagOff = notifier()->routes();
            adjsAtFlagOff = notifier()->l2Adjacencies();
            ++flagOff;
         }
      }
      std::size_t routesAtFlagOff = 99;
      std::size_t adjsAtFlagOff = 99;
      int flagOff = 0;
   } watch(a.vrfConfig());

   a.routingInfo->mplsRoutingIs(false);
   // The flag stays up while routes remain.
   EXPECT_TRUE(a.vrfConfig()->mplsRouting());
   settleAndCheck(a);
   EXPECT_EQ(watch.flagOff, 1);
   EXPECT_EQ(watch.routesAtFlagOff, 0u);
   EXPECT_EQ(watch.adjsAtFlagOff, 0u);
   EXPECT_FALSE(a.vrfConfig()->mplsRouting());
   EXPECT_FALSE(a.state());
   EXPECT_TRUE(traces.contains("disable mplsRouting in vrf default"));
   EXPECT_TRUE(traces.contains("delete state for vrf default"));
   EXPECT_FALSE(a.vrfStatus()->mplsRouting());

   // And back on: everything returns once the platform confirms.
   a.routingInfo->mplsRoutingIs(true);
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_TRUE(a.programmed(101));
}

// MPLS routing goes away and comes back while the LFIB moves on: route 101 is deleted and the
// next hop of route 100's via set changes. Once routing is back both changes are in hardware.
TEST(TransitRoute, ChangesWhileRoutingIsAwayAreTakenUpWhenItReturns) {
   const struct {
      const char* name;
      std::function<void(TransitAgent&)> off, on;
   } cases[] = {
       {"control plane, off and on before a pass",
        [](TransitAgent& a) { a.routingInfo->mplsRoutingIs(false); },
        [](TransitAgent& a) { a.routingInfo->mplsRoutingIs(true); }},
       // Off long enough for one pass to take the routes down, on again before the VRF is empty:
       // the platform never stops confirming routing, so nothing else announces the return.
       {"control plane, routes drained",
        [](TransitAgent& a) {
           a.routingInfo->mplsRoutingIs(false);
           a.loop->advance(0.0015);
           ASSERT_FALSE(a.stateRoute(100));
           ASSERT_TRUE(a.vrfConfig()->mplsRouting());
        },
        [](TransitAgent& a) { a.routingInfo->mplsRoutingIs(true); }},
       {"the platform withdraws it on its own",
        [](TransitAgent& a) { a.vrfStatus()->mplsRoutingIs(false); },
        [](TransitAgent& a) {
           settleAndCheck(a);
           a.vrfStatus()->mplsRoutingIs(true);
        }},
   };
   for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      TransitAgent a;
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
      a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}));
      a.route(101, a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)}));
      settleAndCheck(a);
      ASSERT_TRUE(a.programmed(100));
      c.off(a);
      a.routeDel(101);
      a.mplsVia(1, "10.0.1.2", kVlan20);
      c.on(a);
      settleAndCheck(a);
      EXPECT_FALSE(a.stateRoute(101));
      ASSERT_TRUE(a.programmed(100));
      EXPECT_EQ(a.configRoute(100).l2Adjacency()->l2ViaSet().begin()->macAddr(),
                Wire::EthAddr::parse("00:00:00:00:01:02"));
      EXPECT_EQ(a.monitoredNhSm->entries(), 1u);
   }
}

TEST(TransitRoute, RestartRemovesStaleConfigurationAndReprogramsTheLfib) {
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
   auto set1 = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   auto set2 = a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   a.route(100, set1);
   a.route(101, set2);
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   ASSERT_TRUE(a.programmed(101));
   auto staleAdj = a.configRoute(101).l2Adjacency();

   a.stop();
   // While the machine is away the LFIB moves on.
   a.routeDel(101);
   a.route(102, set1);
   a.start();
   // Start-up cleared what the earlier incarnation left, before anything else.
   EXPECT_EQ(a.vrfConfig()->routes(), 0u);
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
   EXPECT_TRUE(a.hwMplsStatus->routeMap().empty());
   EXPECT_TRUE(a.hwMplsStatus->l2AdjacencyMap().empty());
   EXPECT_TRUE(a.hwMplsStatus->adjacencyMap().empty());

   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_TRUE(a.programmed(102));
   EXPECT_FALSE(a.programmed(101));
   EXPECT_FALSE(a.vrfStatus()->l2AdjacencyHas(staleAdj));
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 1u);
   EXPECT_EQ(a.monitoredNhSm->entries(), 1u);
}

TEST(TransitRoute, RestartWithRoutesTheHardwareCouldNotTake) {
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   auto set = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   a.chip.routeCapacityIs(1);
   a.route(100, set);
   a.route(101, set);
   settleAndCheck(a);
   ASSERT_EQ(a.vrfStatus()->unprogrammedRoutes(), 1u);

   a.stop();
   a.start();
   settleAndCheck(a);
   EXPECT_EQ(a.vrfStatus()->routes(), 1u);
   EXPECT_EQ(a.vrfStatus()->unprogrammedRoutes(), 1u);
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 1u);

   a.chip.routeCapacityIs(10);
   settleAndCheck(a, 11.0);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_TRUE(a.programmed(101));
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 0u);
}

}  // namespace
