#include "LFibSmFixture.h"

#include <mplsfwd/mpls/FibVia.h>

namespace PwTest {
namespace {

class LFibSmConnectorTest : public LFibSmTest {
 protected:
   void SetUp() override {
      LFibSmTest::SetUp();
      pw->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1001));
      pwAdj(1, vlanPw(1));
      pwAdj(11, vlanPw(1));
      start();
      lfib->lfibRouteIs(pwRoute(100, 1));
      lfib->lfibRouteIs(pwRoute(101, 11));
      answer(decapFecId(0));
      answer(decapFecId(1));
   }
   Bridging::VlanId fecVlan(std::uint32_t l) const {
      return req->fec(sm->dstPortFecRequested(label(l))).via(0).vlanId();
   }
};

TEST_F(LFibSmConnectorTest, ChangeThatKeepsTheInternalVlanWritesNothing) {
   RequestWatch requests(req);
   DecapWatch records(decap);
   EXPECT_TRUE(traced(": vlan pw decapConnector(parent=Ethernet1, dot1q=10, intVlan=1001)"));
   pw->localConnectorInfoIs(vlanPw(1), connector(5, 55, 1001));
   EXPECT_EQ(requests.fecWrites + requests.requestWrites, 0);
   EXPECT_TRUE(records.labels.empty());
   EXPECT_TRUE(traced(": updating decap connector"));
   EXPECT_FALSE(traced(": in place fec update:"));
   expectConsistent();
}

TEST_F(LFibSmConnectorTest, InternalVlanChangeRewritesEveryFecOfThePseudowireInPlace) {
   RequestWatch requests(req);
   DecapWatch records(decap);
   pw->localConnectorInfoIs(vlanPw(1), connector(1, 10, 2002));

   // Both FECs of the pseudowire, each once; ids, requests, answers and records stay.
   EXPECT_EQ(requests.fecWrites, 2);
   EXPECT_EQ(requests.requestWrites, 0);
   EXPECT_TRUE(records.labels.empty());
   EXPECT_EQ(fecVlan(100), Bridging::VlanId(2002));
   EXPECT_EQ(fecVlan(101), Bridging::VlanId(2002));
   EXPECT_EQ(sm->dstPortFecRequested(label(100)), decapFecId(0));
   EXPECT_EQ(allocated(), 2u);
   EXPECT_TRUE(traced(": in place fec update:"));
   expectConsistent();

   // Another pseudowire's connector leaves these FECs alone.
   pw->localConnectorInfoIs(vlanPw(2), connector(2, 20, 3003));
   EXPECT_EQ(requests.fecWrites, 2);
}

TEST_F(LFibSmConnectorTest, CorruptConnectorIsTracedWithItsMessageAndLeavesTheFecs) {
   RequestWatch requests(req);
   pw->localConnectorInfoCorruptIs(vlanPw(1), true);

   EXPECT_EQ(requests.fecWrites, 0);
   EXPECT_EQ(fecVlan(100), Bridging::VlanId(1001));
   EXPECT_EQ(pw->corruptions(), 1u);
   for (const char* fragment : {"PodArray::set expected size <=", ", instead got",
                                ". Buffer is at address:", "with contents:"}) {
      EXPECT_TRUE(traced(fragment)) << fragment;
      EXPECT_NE(pw->lastCorruption().find(fragment), std::string::npos) << fragment;
   }
   expectConsistent();

   // The writer repairs the record with a new VLAN: the FECs follow.
   pw->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1003));
   EXPECT_EQ(fecVlan(100), Bridging::VlanId(1003));
   EXPECT_EQ(requests.fecWrites, 2);
   expectConsistent();
}

TEST_F(LFibSmConnectorTest, CorruptConnectorAtRouteTimeRequestsTheFecWithoutAVlanUntilRepaired) {
   pw->localConnectorInfoIs(vlanPw(2), connector(2, 20, 1002));
   pwAdj(2, vlanPw(2));
   pw->localConnectorInfoCorruptIs(vlanPw(2), true);
   lfib->lfibRouteIs(pwRoute(200, 2));

   EXPECT_EQ(fecVlan(200), Bridging::VlanId());
   // Read once when marked (no FEC of that pseudowire yet) and once for the route.
   EXPECT_EQ(pw->corruptions(), 2u);
   EXPECT_TRUE(traced("corrupt decap connector"));
   expectConsistent();

   pw->localConnectorInfoIs(vlanPw(2), connector(2, 20, 1002));
   EXPECT_EQ(fecVlan(200), Bridging::VlanId(1002));
   expectConsistent();
}

}  // namespace
}  // namespace PwTest
