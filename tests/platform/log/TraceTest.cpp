#include <gtest/gtest.h>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/log/Trace.h>
#include <mplsfwd/log/TraceConfig.h>
#include <mplsfwd/log/TraceSink.h>
#include <cstdlib>
#include <string>

namespace {

constexpr std::uint32_t bit(int level) {
   return 1u << level;
}

class TraceTest : public ::testing::Test {
 protected:
   void SetUp() override { Log::TraceConfig::configIs(""); }
   void TearDown() override { Log::TraceConfig::configIs(""); }

   Log::MemoryTraceSink sink_;
   Log::TraceSinkScope scope_{sink_};
};

int bump(int& counter) {
   return ++counter;
}

TEST_F(TraceTest, DisabledTraceEvaluatesNoArgument) {
   Log::Trace trace("MplsSm");
   int evaluated = 0;
   for (int i = 0; i < 3; ++i) {
      TRACE0(trace, "a " << bump(evaluated));
      TRACE9(trace, "b " << bump(evaluated));
      MPLSFWD_TRACE(trace, 5, "c " << bump(evaluated));
   }
   EXPECT_EQ(evaluated, 0);
   EXPECT_EQ(sink_.size(), 0u);

   // Enabling level 5 alone evaluates the level-5 point and nothing at its neighbours.
   Log::TraceConfig::configIs("MplsSm/5");
   TRACE4(trace, "four " << bump(evaluated));
   TRACE5(trace, "five " << bump(evaluated));
   TRACE6(trace, "six " << bump(evaluated));
   EXPECT_EQ(evaluated, 1);
   ASSERT_EQ(sink_.size(), 1u);
   EXPECT_EQ(sink_.lines()[0].text, "five 1");
}

TEST_F(TraceTest, LineCarriesHandleLevelFunctionAndText) {
   Log::Trace trace("MplsDecapSm");
   Log::TraceConfig::configIs("MplsDecapSm/8");
   std::string vrf = "default";
   TRACE8(trace, "review vrf " << vrf << " count " << 3);
   ASSERT_EQ(sink_.size(), 1u);
   const auto& line = sink_.lines()[0];
   EXPECT_EQ(line.handle, "MplsDecapSm");
   EXPECT_EQ(line.level, 8);
   EXPECT_EQ(line.text, "review vrf default count 3");
   // The full signature of the tracing function, not just its bare name.
   EXPECT_NE(line.function.find("TraceTest_LineCarriesHandleLevelFunctionAndText_Test::TestBody()"),
             std::string::npos)
       << line.function;
}

TEST_F(TraceTest, ConfigurationEnablesByNameLevelAndRanges) {
   Log::Trace mplsSm("MplsSm"), decap("MplsDecapSm"), lfib("LFibSm"), other("Other");
   Log::TraceConfig::configIs("MplsSm/0-9,MplsDecapSm/5,LFibSm/1,3-4");
   EXPECT_EQ(mplsSm.enabledMask(), 0x3FFu);
   EXPECT_EQ(decap.enabledMask(), bit(5));
   EXPECT_EQ(lfib.enabledMask(), bit(1) | bit(3) | bit(4));
   EXPECT_EQ(other.enabledMask(), 0u);
   EXPECT_TRUE(lfib.enabled(3));
   EXPECT_FALSE(lfib.enabled(2));
   EXPECT_FALSE(lfib.enabled(-1));
   EXPECT_FALSE(mplsSm.enabled(10));
   EXPECT_EQ(Log::TraceConfig::config(), "MplsSm/0-9,MplsDecapSm/5,LFibSm/1,3-4");

   // A new configuration replaces the old one for handles that already exist.
   Log::TraceConfig::configIs("LFibSm/9");
   EXPECT_EQ(mplsSm.enabledMask(), 0u);
   EXPECT_EQ(decap.enabledMask(), 0u);
   EXPECT_EQ(lfib.enabledMask(), bit(9));
}

TEST_F(TraceTest, HandlesMadeLaterAndHandlesSharingANameFollowTheConfiguration) {
   Log::TraceConfig::configIs("MplsSm/2, MplsSm/7 ,Other");
   Log::Trace first("MplsSm");
   Log::Trace second("MplsSm");
   Log::Trace other("Other");
   EXPECT_EQ(first.enabledMask(), bit(2) | bit(7));
   EXPECT_EQ(second.enabledMask(), bit(2) | bit(7));
   // A bare name enables every level.
   EXPECT_EQ(other.enabledMask(), 0x3FFu);
   std::size_t live = Log::TraceConfig::traces();
   {
      Log::Trace gone("MplsSm");
      EXPECT_EQ(gone.enabledMask(), bit(2) | bit(7));
      EXPECT_EQ(Log::TraceConfig::traces(), live + 1);
   }
   // A destroyed handle has left the registry, so reconfiguring cannot reach it.
   EXPECT_EQ(Log::TraceConfig::traces(), live);
   Log::TraceConfig::configIs("*/0");
   EXPECT_EQ(first.enabledMask(), bit(0));
   EXPECT_EQ(other.enabledMask(), bit(0));
   EXPECT_EQ(Log::TraceConfig::enabledMask("AnyName"), bit(0));
}

TEST_F(TraceTest, BadConfigurationIsRefusedAndTheOldOneStays) {
   Log::Trace trace("MplsSm");
   Log::TraceConfig::configIs("MplsSm/4");
   for (const char* bad : {"MplsSm/10", "MplsSm/5-3", "3-4", "MplsSm/x", "MplsSm/", "a,,b",
                           "MplsSm/1,", "/5", "MplsSm/-3", "MplsSm/1-", ",MplsSm"}) {
      EXPECT_THROW(Log::TraceConfig::configIs(bad), Kor::ParseError) << bad;
      EXPECT_EQ(trace.enabledMask(), bit(4)) << bad;
      EXPECT_EQ(Log::TraceConfig::config(), "MplsSm/4");
   }
   Log::TraceConfig::configIs("  ");
   EXPECT_EQ(trace.enabledMask(), 0u);
}

TEST_F(TraceTest, EnvironmentIsReadOnReload) {
   Log::Trace trace("LFibSm");
   ASSERT_EQ(setenv(Log::TraceConfig::environmentVariable, "LFibSm/1,3-4", 1), 0);
   Log::TraceConfig::reloadFromEnvironment();
   EXPECT_EQ(trace.enabledMask(), bit(1) | bit(3) | bit(4));

   // A bad text in the environment is reported and ignored rather than thrown at start-up.
   ASSERT_EQ(setenv(Log::TraceConfig::environmentVariable, "LFibSm/12", 1), 0);
   ::testing::internal::CaptureStderr();
   Log::TraceConfig::reloadFromEnvironment();
   std::string err = ::testing::internal::GetCapturedStderr();
   EXPECT_NE(err.find("MPLSFWD_TRACE ignored"), std::string::npos) << err;
   EXPECT_EQ(trace.enabledMask(), 0u);

   ASSERT_EQ(unsetenv(Log::TraceConfig::environmentVariable), 0);
   Log::TraceConfig::reloadFromEnvironment();
   EXPECT_EQ(trace.enabledMask(), 0u);
}

TEST_F(TraceTest, SinkScopesNestAndStandardErrorIsTheDefault) {
   Log::Trace trace("MplsSm");
   Log::TraceConfig::configIs("MplsSm/3");
   {
      Log::MemoryTraceSink inner;
      Log::TraceSinkScope innerScope(inner);
      TRACE3(trace, "inner");
      EXPECT_EQ(inner.texts(), std::vector<std::string>{"inner"});
   }
   TRACE3(trace, "outer");
   EXPECT_EQ(sink_.texts(), std::vector<std::string>{"outer"});
   EXPECT_EQ(sink_.count("out"), 1u);
   EXPECT_TRUE(sink_.contains("ter"));
   EXPECT_FALSE(sink_.contains("inner"));

   Log::TraceSinkScope toStderr(Log::TraceSink::standardError());
   ::testing::internal::CaptureStderr();
   trace.write(3, "void f()", "to stderr");
   trace.write(4, nullptr, "bare");
   EXPECT_EQ(::testing::internal::GetCapturedStderr(),
             "MplsSm/3 void f(): to stderr\nMplsSm/4 bare\n");
}

}  // namespace

namespace {

class TraceFastTest : public TraceTest {
 protected:
   void SetUp() override {
      TraceTest::SetUp();
      wasEnabled_ = ring_.enabled();
      ring_.clear();
      ring_.enabledIs(false);
   }
   void TearDown() override {
      ring_.clear();
      ring_.enabledIs(wasEnabled_);
      TraceTest::TearDown();
   }
   Log::FastLog& ring_ = Log::FastLog::instance();
   bool wasEnabled_ = false;
};

TEST_F(TraceFastTest, OneTextReachesEachEnabledStreamOnly) {
   Log::Trace trace("MplsSm");
   int evaluated = 0;
   MPLSFWD_TRACE_FAST(trace, 5, "none " << bump(evaluated));
   EXPECT_EQ(evaluated, 0);

   ring_.enabledIs(true);
   MPLSFWD_TRACE_FAST(trace, 5, "ring " << bump(evaluated));
   EXPECT_EQ(evaluated, 1);
   EXPECT_EQ(ring_.snapshot(), std::vector<std::string>{"ring 1"});
   EXPECT_EQ(sink_.size(), 0u);

   Log::TraceConfig::configIs("MplsSm/5");
   MPLSFWD_TRACE_FAST(trace, 5, "both " << bump(evaluated));
   EXPECT_EQ(evaluated, 2);
   EXPECT_EQ(ring_.snapshot(), (std::vector<std::string>{"ring 1", "both 2"}));
   ASSERT_EQ(sink_.size(), 1u);
   EXPECT_EQ(sink_.lines()[0].text, "both 2");
   EXPECT_EQ(sink_.lines()[0].level, 5);

   ring_.enabledIs(false);
   MPLSFWD_TRACE_FAST(trace, 5, "trace " << bump(evaluated));
   EXPECT_EQ(evaluated, 3);
   EXPECT_EQ(ring_.size(), 2u);
   EXPECT_EQ(sink_.texts(), (std::vector<std::string>{"both 2", "trace 3"}));
}

}  // namespace
