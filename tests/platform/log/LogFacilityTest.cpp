#include <gtest/gtest.h>

#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/log/LogFacility.h>
#include <mplsfwd/log/LogSink.h>
#include <mplsfwd/log/MessageDef.h>
#include <mplsfwd/log/RateLimiter.h>
#include <string>
#include <vector>

namespace {

class LogFacilityTest : public ::testing::Test {
 protected:
   void SetUp() override {
      Log::LogFacility::reset();
      Log::LogFacility::timeFunctionIs([this] { return now_; });
   }
   void TearDown() override {
      Log::LogFacility::timeFunctionIs(nullptr);
      Log::LogFacility::reset();
   }

   double now_ = 100.0;
   Log::MemoryLogSink sink_;
   Log::LogSinkScope scope_{sink_};
};

TEST_F(LogFacilityTest, EmittedMessageCarriesNameSeverityTextAndTime) {
   const Log::MessageDef full("ROUTING_MPLS_RESOURCE_FULL", 3,
                              "Hardware resources are insufficient to program all MPLS routes",
                              "explanation", "action", 0.0, 1.0);
   EXPECT_TRUE(Log::emit(full));
   ASSERT_EQ(sink_.size(), 1u);
   const Log::LogRecord& r = sink_.records()[0];
   EXPECT_EQ(r.name, "ROUTING_MPLS_RESOURCE_FULL");
   EXPECT_EQ(r.severity, 3);
   EXPECT_EQ(r.text, "Hardware resources are insufficient to program all MPLS routes");
   EXPECT_EQ(r.time, 100.0);
   EXPECT_EQ(sink_.count("ROUTING_MPLS_RESOURCE_FULL"), 1u);
   EXPECT_EQ(sink_.count("ROUTING_MPLS_RESOURCE_NORMAL"), 0u);
   EXPECT_EQ(Log::LogFacility::emitted("ROUTING_MPLS_RESOURCE_FULL"), 1u);
}

TEST_F(LogFacilityTest, RateCheckPassesFirstSuppressesWithinIntervalPassesAfter) {
   const Log::MessageDef def("TEST_LIMITED", 4, "limited %s", "", "", 5.0, 1.0);
   now_ = 0.0;
   EXPECT_TRUE(Log::emit(def, "first"));
   now_ = 4.9;
   EXPECT_FALSE(Log::emit(def, "early"));
   now_ = 5.0;
   EXPECT_TRUE(Log::emit(def, "second"));
   now_ = 5.1;
   EXPECT_FALSE(Log::emit(def, "early again"));
   now_ = 10.0;
   EXPECT_TRUE(Log::emit(def, "third"));

   ASSERT_EQ(sink_.size(), 3u);
   EXPECT_EQ(sink_.records()[0].text, "limited first");
   EXPECT_EQ(sink_.records()[1].text, "limited second");
   EXPECT_EQ(sink_.records()[2].text, "limited third");
   EXPECT_EQ(Log::LogFacility::emitted("TEST_LIMITED"), 3u);
   EXPECT_EQ(Log::LogFacility::suppressed("TEST_LIMITED"), 2u);
   // A zero interval never suppresses.
   const Log::MessageDef free("TEST_FREE", 3, "free", "", "", 0.0, 1.0);
   for (int i = 0; i < 5; ++i) {
      EXPECT_TRUE(Log::emit(free));
   }
}

TEST_F(LogFacilityTest, EachMessageHasItsOwnRateCheckAndResetForgetsThem) {
   const Log::MessageDef a("TEST_A", 3, "a", "", "", 60.0, 1.0);
   const Log::MessageDef b("TEST_B", 3, "b", "", "", 60.0, 1.0);
   EXPECT_TRUE(Log::emit(a));
   EXPECT_TRUE(Log::emit(b));
   EXPECT_FALSE(Log::emit(a));
   EXPECT_FALSE(Log::emit(b));
   Log::LogFacility::reset();
   EXPECT_EQ(Log::LogFacility::emitted("TEST_A"), 0u);
   EXPECT_TRUE(Log::emit(a));
   EXPECT_EQ(sink_.count("TEST_A"), 2u);
   EXPECT_EQ(sink_.count("TEST_B"), 1u);
}

TEST_F(LogFacilityTest, CallerSuppliedTimeAndTimeSource) {
   const Log::MessageDef def("TEST_AT", 3, "at", "", "", 2.0, 1.0);
   EXPECT_TRUE(Log::emitAt(1.0, def));
   EXPECT_FALSE(Log::emitAt(2.5, def));
   EXPECT_TRUE(Log::emitAt(3.0, def));

   struct FakeSource : Kor::TimeSource {
      double t = 0.0;
      double now() const override { return t; }
      void clockTimeMinChanged(Kor::Clock&) override {}
      void clockGone(Kor::Clock&) override {}
   } source;
   source.t = 3.5;
   Log::LogFacility::timeSourceIs(&source);
   EXPECT_EQ(Log::LogFacility::now(), 3.5);
   EXPECT_FALSE(Log::emit(def));
   source.t = 5.0;
   EXPECT_TRUE(Log::emit(def));
   ASSERT_EQ(sink_.size(), 3u);
   EXPECT_EQ(sink_.records()[2].time, 5.0);
}

TEST_F(LogFacilityTest, SuppressedMessageNeverReachesTheSinkEvenWhenStderrIsCurrent) {
   const Log::MessageDef def("TEST_STDERR", 2, "value %d of %s", "", "", 60.0, 1.0);
   Log::LogSinkScope toStderr(Log::LogSink::standardError());
   ::testing::internal::CaptureStderr();
   EXPECT_TRUE(Log::emit(def, 7, std::string("eight")));
   EXPECT_FALSE(Log::emit(def, 9, "ten"));
   EXPECT_EQ(::testing::internal::GetCapturedStderr(), "%TEST_STDERR-2: value 7 of eight\n");
   EXPECT_EQ(sink_.size(), 0u);
}

TEST(LogFormatTest, ConversionsTakeArgumentsInOrder) {
   using Log::LogFacility;
   EXPECT_EQ(LogFacility::format("no conversions", {}), "no conversions");
   EXPECT_EQ(LogFacility::format("%s and %d", {"x", "42"}), "x and 42");
   EXPECT_EQ(LogFacility::format("%5.2f|%-3s|%lu", {"1.5", "a", "9"}), "1.5|a|9");
   EXPECT_EQ(LogFacility::format("100%% of %s", {"routes"}), "100% of routes");
   // A conversion without an argument stays as written; extra arguments are dropped.
   EXPECT_EQ(LogFacility::format("%s then %s", {"one"}), "one then %s");
   EXPECT_EQ(LogFacility::format("%s", {"one", "two"}), "one");
   // A percent sign that starts no conversion is text.
   EXPECT_EQ(LogFacility::format("50%", {"x"}), "50%");
   EXPECT_EQ(LogFacility::format("%!", {"x"}), "%!");
}

TEST(RateLimiterTest, BurstThenOnePerInterval) {
   Log::RateLimiter limiter(10.0, 3.0);
   EXPECT_TRUE(limiter.allow(0.0));
   EXPECT_TRUE(limiter.allow(0.0));
   EXPECT_TRUE(limiter.allow(0.0));
   EXPECT_FALSE(limiter.allow(0.0));
   EXPECT_FALSE(limiter.allow(9.99));
   EXPECT_TRUE(limiter.allow(10.0));
   EXPECT_FALSE(limiter.allow(10.0));
   // A long quiet period refills to the burst, not beyond it.
   EXPECT_TRUE(limiter.allow(1000.0));
   EXPECT_TRUE(limiter.allow(1000.0));
   EXPECT_TRUE(limiter.allow(1000.0));
   EXPECT_FALSE(limiter.allow(1000.0));
   EXPECT_EQ(limiter.passed(), 7u);
   EXPECT_EQ(limiter.suppressed(), 4u);
}

TEST(RateLimiterTest, TimeGoingBackAddsNothingAndSmallBurstCountsAsOne) {
   Log::RateLimiter limiter(5.0, 0.0);
   EXPECT_EQ(limiter.burst(), 1.0);
   EXPECT_TRUE(limiter.allow(100.0));
   EXPECT_FALSE(limiter.allow(50.0));
   EXPECT_FALSE(limiter.allow(104.0));
   EXPECT_TRUE(limiter.allow(105.0));
}

}  // namespace
