#include <gtest/gtest.h>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/log/ToggleService.h>
#include <cstdlib>
#include <string>

namespace {

class ToggleServiceTest : public ::testing::Test {
 protected:
   void SetUp() override { Log::ToggleService::toggleDelAll(); }
   void TearDown() override { Log::ToggleService::toggleDelAll(); }
};

constexpr const char* inPlace = "InPlaceMplsAdjacencyUpdate";

TEST_F(ToggleServiceTest, UnconfiguredToggleAnswersOnlyTheDefault) {
   EXPECT_EQ(Log::getToggleState(inPlace, false), 0u);
   EXPECT_EQ(Log::getToggleState(inPlace, true), Log::toggleStateBit);
   EXPECT_EQ(Log::getToggleState(inPlace, true) & Log::toggleValidBit, 0u);
}

TEST_F(ToggleServiceTest, ConfiguredToggleAnswersValidAndItsStateWhateverTheDefault) {
   Log::ToggleService::toggleIs(inPlace, true);
   EXPECT_EQ(Log::getToggleState(inPlace, false), 3u);
   EXPECT_EQ(Log::getToggleState(inPlace, true), 3u);
   Log::ToggleService::toggleIs(inPlace, false);
   EXPECT_EQ(Log::getToggleState(inPlace, false), 2u);
   EXPECT_EQ(Log::getToggleState(inPlace, true), 2u);
   Log::ToggleService::toggleDel(inPlace);
   EXPECT_EQ(Log::getToggleState(inPlace, true), 1u);
   EXPECT_FALSE(Log::ToggleService::toggle(inPlace).has_value());
}

// The way a caller that caches the word tells "off" from "unknown": ask with default off, and when
// the answer is not valid ask again with default on.
bool stateAskedTwice(const char* name) {
   std::uint32_t word = Log::getToggleState(name, false);
   if ((word & Log::toggleValidBit) == 0) {
      word = Log::getToggleState(name, true);
   }
   return (word & Log::toggleStateBit) != 0;
}

TEST_F(ToggleServiceTest, AskingAgainWithDefaultOnDistinguishesOffFromUnknown) {
   EXPECT_TRUE(stateAskedTwice(inPlace));
   Log::ToggleService::toggleIs(inPlace, false);
   EXPECT_FALSE(stateAskedTwice(inPlace));
   Log::ToggleService::toggleIs(inPlace, true);
   EXPECT_TRUE(stateAskedTwice(inPlace));
}

TEST_F(ToggleServiceTest, ConfigurationTextAndEnvironment) {
   Log::ToggleService::configIs("InPlaceMplsAdjacencyUpdate=on, Other = off,Bare");
   EXPECT_EQ(Log::getToggleState(inPlace, false), 3u);
   EXPECT_EQ(Log::getToggleState("Other", true), 2u);
   EXPECT_EQ(Log::getToggleState("Bare", false), 3u);
   EXPECT_EQ(Log::ToggleService::toggles().size(), 3u);

   for (const char* bad : {"A=maybe", "=on", "A=on,,B=off", "A=on,"}) {
      EXPECT_THROW(Log::ToggleService::configIs(bad), Kor::ParseError) << bad;
   }
   EXPECT_EQ(Log::ToggleService::toggles().size(), 3u);

   ASSERT_EQ(setenv(Log::ToggleService::environmentVariable, "Other=true,Fourth=0", 1), 0);
   Log::ToggleService::reloadFromEnvironment();
   EXPECT_EQ(Log::getToggleState(inPlace, false), 0u);
   EXPECT_EQ(Log::getToggleState("Other", false), 3u);
   EXPECT_EQ(Log::getToggleState("Fourth", true), 2u);

   ASSERT_EQ(setenv(Log::ToggleService::environmentVariable, "Other=sideways", 1), 0);
   ::testing::internal::CaptureStderr();
   Log::ToggleService::reloadFromEnvironment();
   std::string err = ::testing::internal::GetCapturedStderr();
   EXPECT_NE(err.find("MPLSFWD_TOGGLES ignored"), std::string::npos) << err;
   EXPECT_TRUE(Log::ToggleService::toggles().empty());
   ASSERT_EQ(unsetenv(Log::ToggleService::environmentVariable), 0);
}

}  // namespace
