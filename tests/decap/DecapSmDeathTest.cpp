#include <gtest/gtest.h>

#include <cstdlib>

#include "DecapTestSupport.h"
#include "MplsDecapSmTestAccess.h"

namespace {

using namespace DecapTest;

// Programming errors abort with their condition text; an unimplemented helper operation aborts
// with its name unless the agent is a no-op agent.
struct DecapSmDeathTest : DecapFixture {
   void SetUp() override {
      unsetenv("FAL_NOOP_AGENT");
      DecapFixture::SetUp();
   }
};

TEST_F(DecapSmDeathTest, ImpossibleProgrammedTypeIsAnInternalError) {
   start();
   settle();
   sm->routeViaTypeIs(key(16), Mpls::viaTypeMplsIp_);
   EXPECT_DEATH(Fal::MplsDecapSmTestAccess::deleteRoute(*sm, key(16)),
                "^!\"Internal Error: Invalid via type\"\n");
}

TEST_F(DecapSmDeathTest, CreatingOverAProgrammedKeyAndProcessingAKeyNotInTheBacklogAssert) {
   start();
   route(16, vlanVia(1, 10));
   settle();
   EXPECT_DEATH(Fal::MplsDecapSmTestAccess::createVlanVia(
                    *sm, key(16), lfib->vlanVia(Mpls::LfibViaKey(Mpls::viaTypeVlan_, 1))),
                "^!routeViaTypeHas\\( routeKey \\)\n");
   EXPECT_DEATH(Fal::MplsDecapSmTestAccess::processRouteKeyBacklog(*sm, key(16)),
                "^backlogIter.isMemberOf\\( routeKey \\)\n");
   // A VLAN-aware route recorded with one via cannot be created again with another.
   route(17, vlanAwareVia(2, 5));
   settle();
   EXPECT_DEATH(Fal::MplsDecapSmTestAccess::createEvpnVlanAwareVia(
                    *sm, key(17),
                    Mpls::LfibEvpnVlanAwareVia(Mpls::LfibViaKey(Mpls::viaTypeEvpnVlanAware_, 3),
                                               Mpls::LfibDot1qTagToVlanKey(5))),
                "^routeEvpnVlanAwareVia\\( routeKey \\) == via\n");
}

TEST_F(DecapSmDeathTest, MissingInputsFailInitialization) {
   EXPECT_DEATH(Fal::mplsDecapSmFactory(helper, lfib, nullptr, tracking, hwStatus),
                "^scheduler\\(\\)\n");
   EXPECT_DEATH(Fal::mplsDecapSmFactory(helper, lfib, loop->scheduler(), tracking, nullptr),
                "^lfibHwStatus\\(\\)\n");
   EXPECT_DEATH(Fal::mplsDecapSmFactory(nullptr, lfib, loop->scheduler(), tracking, hwStatus),
                "^mplsDecapHelper\\(\\)\n");
}

}  // namespace
