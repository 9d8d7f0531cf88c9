// Via sets the transit layer cannot carry: every rejection rule with the text it traces. Bad input
// is traced and skipped, never fatal, and the route comes up once the via set is fixed.
#include <gtest/gtest.h>

#include <functional>

#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;

const Wire::IntfId kTunnel1 = Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(1);
const Wire::IntfId kTunnel2 = Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(2);
const Wire::IntfId kNhg1 = Wire::FecIdIntfId::nexthopGroupIdIntfId(1);
const Wire::IntfId kNhg2 = Wire::FecIdIntfId::nexthopGroupIdIntfId(2);

struct ValidationTest : ::testing::Test {
   ValidationTest() : a(options()) {
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      a.neighbor("10.0.0.3", kVlan10, "00:00:00:00:00:03");
   }
   static TransitAgent::Options options() {
      TransitAgent::Options o;
      o.fecForwarding = true;
      return o;
   }
   // Route 100 over a via set of the given vias; settles and checks.
   void routeOver(const std::vector<Mpls::LfibViaKey>& vias) {
      set = a.viaSet(1, vias);
      a.route(100, set);
      settleAndCheck(a);
   }
   // Nothing of route 100 reached the hardware or the helper.
   void expectNothingProgrammed() {
      EXPECT_TRUE(!a.configRoute(100));
      EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
      EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
      EXPECT_TRUE(a.fecRequest->fecMap().empty());
   }
   TraceCapture traces;
   TransitAgent a;
   Mpls::LfibViaSetKey set;
};

TEST_F(ValidationTest, AMissingViaIsRejected) {
   Mpls::LfibViaKey missing(Mpls::viaTypeMplsIp_, 42, Mpls::lfibSourceStatic_);
   routeOver({missing});
   EXPECT_EQ(
       traces.count("LfibMplsVia index 0, source " + missing.stringValue() + " was not found"), 1u);
   expectNothingProgrammed();
   a.mplsVia(42, "10.0.0.2", kVlan10);
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
}

// Via sets the transit layer cannot carry: each is traced once with its reason and skipped.
TEST(TransitViaSetValidation, EveryRejectedViaSetIsTracedAndNothingIsProgrammed) {
   using Vias = std::vector<Mpls::LfibViaKey>;
   using Build = std::function<Mpls::LfibViaSetKey(TransitAgent&)>;
   auto mpls = [](std::function<Vias(TransitAgent&)> vias) -> Build {
      return [vias](TransitAgent& a) { return a.viaSet(1, vias(a)); };
   };
   // An external-FEC via set of one via.
   auto ext = [](Mpls::LfibViaKey via) -> Build {
      return [via](TransitAgent& a) {
         Mpls::LfibViaSetKey key(Mpls::viaTypeExternalFec_, 3, Mpls::lfibSourceStatic_);
         a.lfib->viaSetIs(Mpls::LfibViaSet(key, {via}));
         return key;
      };
   };
   Mpls::LfibViaKey ext1(Mpls::viaTypeExternalFec_, 1, Mpls::lfibSourceStatic_);
   Mpls::LfibViaKey ext2(Mpls::viaTypeExternalFec_, 2, Mpls::lfibSourceStatic_);
   const auto swap = Wire::MplsLabelAction::swap;
   const struct {
      Build build;
      std::string trace;
   } cases[] = {
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsVia(1, "10.0.0.2", kVlan10),
                   Mpls::LfibViaKey(Mpls::viaTypeVlan_, 4, Mpls::lfibSourceEvpn_)};
        }),
        "Via 1 ViaType viaTypeVlan is not mplsIp"},
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(1, "10.0.0.2", kVlan10, {100, 101}),
                   a.mplsViaWith(2, "10.0.0.3", kVlan10, {200, 201})};
        }),
        "Vias with more than one label is not supported"},
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(1, "10.0.0.2", kTunnel1, {100}),
                   a.mplsViaWith(2, "0.0.0.0", kNhg1, {200})};
        }),
        "Mix of dynamic tunnel and NHG via is not supported"},
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(3, "0.0.0.0", kNhg1, {200}),
                   a.mplsViaWith(4, "10.0.0.2", kTunnel1, {100})};
        }),
        "Mix of dynamic tunnel and NHG via is not supported"},
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(1, "0.0.0.0", kNhg1, {100}), a.mplsVia(2, "10.0.0.2", kVlan10)};
        }),
        "Mix of tunnel and non-tunnel via is not supported"},
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsVia(3, "10.0.0.2", kVlan10),
                   a.mplsViaWith(4, "10.0.0.3", kTunnel1, {100})};
        }),
        "Mix of tunnel and non-tunnel via is not supported"},
       {mpls([](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(1, "0.0.0.0", kNhg1, {100}),
                   a.mplsViaWith(2, "0.0.0.0", kNhg2, {100})};
        }),
        "Only one NHG via is supported now"},
       {mpls([swap](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(1, "10.0.0.2", kTunnel1, {100}, swap),
                   a.mplsViaWith(2, "10.0.0.3", kTunnel2, {100}, Wire::MplsLabelAction::push)};
        }),
        "Adjacencies of dynamic tunnel should have the samelabel action. The conflicting "
        "labelActions are: swap and push"},
       {mpls([swap](TransitAgent& a) -> Vias {
           return {a.mplsViaWith(1, "10.0.0.2", kTunnel1, {100}, swap, Mpls::payloadTypeIpv4_),
                   a.mplsViaWith(2, "10.0.0.3", kTunnel2, {100}, swap, Mpls::payloadTypeIpv6_)};
        }),
        "Adjacencies of dynamic tunnel should have the samepayloadTypes. The conflicting "
        "payloadTypes are: payloadTypeIpv4 and payloadTypeIpv6"},
       {[ext1, ext2](TransitAgent& a) {
           a.lfib->extFecViaIs(Mpls::LfibExtFecVia(ext1, Memtab::Fib::FecId(5)));
           a.lfib->extFecViaIs(Mpls::LfibExtFecVia(ext2, Memtab::Fib::FecId(6)));
           Mpls::LfibViaSetKey key(Mpls::viaTypeExternalFec_, 3, Mpls::lfibSourceStatic_);
           a.lfib->viaSetIs(Mpls::LfibViaSet(key, {ext1, ext2}));
           return key;
        },
        "lFib viaSet " +
            Mpls::LfibViaSetKey(Mpls::viaTypeExternalFec_, 3, Mpls::lfibSourceStatic_)
                .stringValue() +
            " has 2 vias, but should only have one; skipping l3 adj"},
       {[](TransitAgent& a) { return a.extFecViaSet(3, Memtab::Fib::FecId(0)); },
        "lFib via idx 3 has invalid external FecId; skipping l3 adj"},
       // An id whose type lies past the FIB's bound is skipped, not fatal.
       {[](TransitAgent& a) { return a.extFecViaSet(3, Memtab::Fib::FecId(~std::uint64_t(0))); },
        "lFib via idx 3 has invalid external FecId; skipping l3 adj"},
       {[](TransitAgent& a) {
           Mpls::LfibViaSetKey key(Mpls::viaTypeExternalFec_, 3, Mpls::lfibSourceStatic_);
           a.lfib->viaSetIs(Mpls::LfibViaSet(key, {a.mplsVia(7, "10.0.0.2", kVlan10)}));
           return key;
        },
        "lFib via idx 7 is viaType viaTypeMplsIp instead of externalFec; skipping l3 adj"},
       {ext(Mpls::LfibViaKey(Mpls::viaTypeExternalFec_, 8, Mpls::lfibSourceStatic_)),
        "lFib via idx 8 not found; skipping l3 adj"},
   };
   for (const auto& c : cases) {
      SCOPED_TRACE(c.trace);
      TraceCapture traces;
      TransitAgent a(ValidationTest::options());
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      a.neighbor("10.0.0.3", kVlan10, "00:00:00:00:00:03");
      a.route(100, c.build(a));
      settleAndCheck(a);
      EXPECT_EQ(traces.count(c.trace), 1u);
      EXPECT_TRUE(!a.configRoute(100));
      EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
      EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
      EXPECT_TRUE(a.fecRequest->hwFecIdRequestMap().empty());
   }
}

TEST_F(ValidationTest, DynamicTunnelViasThatAgreeAreAccepted) {
   routeOver({a.mplsViaWith(1, "10.0.0.2", kTunnel1, {100}),
              a.mplsViaWith(2, "10.0.0.3", kTunnel2, {100})});
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
}

TEST_F(ValidationTest, AViaSetWithNoViasIsKeptUnprogrammed) {
   routeOver({});
   EXPECT_EQ(traces.count("LFib via set " + set.stringValue() + ", type viaTypeMplsIp has no vias"),
             1u);
   expectNothingProgrammed();
   ASSERT_TRUE(a.stateRoute(100));
   EXPECT_TRUE(a.stateRoute(100)->unprogrammed());
   ASSERT_TRUE(a.l3Adj(set));
   EXPECT_TRUE(a.l3Adj(set)->unprogrammed());
}

TEST_F(ValidationTest, AnAdjacencysViaSetDeletedFromTheLfibIsReported) {
   routeOver({a.mplsVia(1, "10.0.0.2", kVlan10)});
   ASSERT_TRUE(a.programmed(100));
   a.viaSetDel(set);
   settleAndCheck(a);
   EXPECT_EQ(traces.count("lFib viaSet idx 1 viaType viaTypeMplsIp deleted"), 1u);
   // The route waits for its via set; the agent carries on.
   a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
}

TEST_F(ValidationTest, AnExternalFecViaSetDeletedUnderItsAdjacencyIsReported) {
   auto key = a.extFecViaSet(3, Memtab::Fib::FecId(9));
   a.route(100, key);
   settleAndCheck(a);
   ASSERT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   a.viaSetDel(key);
   settleAndCheck(a);
   EXPECT_EQ(traces.count("lFib viaSet idx 3 viaType viaTypeExternalFec deleted"), 1u);
   // The FEC is withdrawn, and the route with it: nothing forwards into a FEC nobody requests.
   EXPECT_TRUE(a.fecRequest->hwFecIdRequestMap().empty());
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   ASSERT_TRUE(a.stateRoute(100));
   EXPECT_TRUE(a.stateRoute(100)->unprogrammed());
   EXPECT_TRUE(a.hwMplsStatus->route(TransitAgent::key(100)).unprogrammed());
   a.extFecViaSet(3, Memtab::Fib::FecId(9));
   settleAndCheck(a);
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
}

}  // namespace
