#include <gtest/gtest.h>

#include <mplsfwd/log/NoopAgent.h>
#include <cstdlib>

namespace {

TEST(NoopAgentTest, AnyValueMeansSetAndTheEnvironmentIsReadEachTime) {
   ASSERT_EQ(unsetenv("FAL_NOOP_AGENT"), 0);
   EXPECT_FALSE(Log::noopAgent());
   ASSERT_EQ(setenv("FAL_NOOP_AGENT", "", 1), 0);
   EXPECT_TRUE(Log::noopAgent());
   ASSERT_EQ(setenv("FAL_NOOP_AGENT", "0", 1), 0);
   EXPECT_TRUE(Log::noopAgent());
   ASSERT_EQ(unsetenv("FAL_NOOP_AGENT"), 0);
   EXPECT_FALSE(Log::noopAgent());
}

}  // namespace
