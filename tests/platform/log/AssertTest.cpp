#include <gtest/gtest.h>

#include <mplsfwd/log/Assert.h>
#include <csignal>
#include <string>

namespace {

using ::testing::Eq;

TEST(AssertDeathTest, FailurePrintsExactlyTheTextAndAborts) {
   EXPECT_EXIT(Log::falAssertFail("vrf == L3::VrfName::defaultVrf()"),
               ::testing::KilledBySignal(SIGABRT), Eq("vrf == L3::VrfName::defaultVrf()\n"));
}

TEST(AssertDeathTest, MacroFailsOnAFalseConditionWithItsText) {
   int preUnprogrammed = 0;
   int delta = -1;
   EXPECT_EXIT(FAL_ASSERT(!(preUnprogrammed == 0 && delta == -1),
                          "! (preUnprogrammed == 0 && delta == -1 )"),
               ::testing::KilledBySignal(SIGABRT),
               Eq("! (preUnprogrammed == 0 && delta == -1 )\n"));
   EXPECT_DEATH(FAL_ASSERT(false, std::string("Unimplemented ") + "createLabelToVlanMapping"),
                Eq("Unimplemented createLabelToVlanMapping\n"));
   EXPECT_EXIT(FAL_ASSERT(delta == -1 && preUnprogrammed != 0), ::testing::KilledBySignal(SIGABRT),
               Eq("delta == -1 && preUnprogrammed != 0\n"));
}

TEST(AssertTest, TrueConditionPassesWithoutBuildingTheText) {
   int built = 0;
   auto text = [&] {
      ++built;
      return std::string("never");
   };
   int evaluatedCondition = 0;
   FAL_ASSERT(++evaluatedCondition == 1, text());
   EXPECT_EQ(evaluatedCondition, 1);
   EXPECT_EQ(built, 0);
}

}  // namespace
