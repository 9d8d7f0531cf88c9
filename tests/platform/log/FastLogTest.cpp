#include <gtest/gtest.h>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/log/FastLog.h>
#include <deque>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

// Keeps texts in order until full, then overwrites the oldest.
TEST(FastLogTest, MatchesABoundedQueueOverManyWraps) {
   for (std::size_t capacity : {1u, 2u, 7u}) {
      Log::FastLog ring(capacity);
      EXPECT_TRUE(ring.empty());
      std::deque<std::string> model;
      for (int i = 0; i < 100; ++i) {
         std::string text = Kor::concat({"t", std::to_string(i)});
         ring.add(text);
         model.push_back(text);
         if (model.size() > capacity) {
            model.pop_front();
         }
         ASSERT_EQ(ring.snapshot(), Texts(model.begin(), model.end()))
             << "capacity " << capacity << " after " << i;
         ASSERT_EQ(ring.dropped(), static_cast<std::uint64_t>(i + 1) - model.size());
      }
      EXPECT_EQ(ring.added(), 100u);
      Texts walked;
      ring.forEach([&](const std::string& t) { walked.push_back(t); });
      EXPECT_EQ(walked, ring.snapshot());
   }
}

TEST(FastLogTest, ClearForgetsTextsAndCountersButKeepsCapacity) {
   Log::FastLog ring(2);
   for (const char* t : {"a", "b", "c"}) {
      ring.add(t);
   }
   ring.clear();
   EXPECT_TRUE(ring.empty());
   EXPECT_EQ(ring.added(), 0u);
   EXPECT_EQ(ring.dropped(), 0u);
   EXPECT_EQ(ring.capacity(), 2u);
   ring.add("x");
   ring.add("y");
   ring.add("z");
   EXPECT_EQ(ring.snapshot(), (Texts{"y", "z"}));
}

TEST(FastLogTest, LongTextsAreCutAndZeroCapacityIsRefused) {
   Log::FastLog ring(2);
   std::string longText(Log::FastLog::maxTextLength + 40, 'x');
   ring.add(longText);
   ASSERT_EQ(ring.size(), 1u);
   EXPECT_EQ(ring.snapshot()[0], longText.substr(0, Log::FastLog::maxTextLength));
   EXPECT_THROW(Log::FastLog(0), Kor::RangeError);
}

int bump(int& counter) {
   return ++counter;
}

TEST(FastLogTest, ProcessRingIsUsableThroughTheShortMacro) {
   Log::FastLog& ring = Log::FastLog::instance();
   bool wasEnabled = ring.enabled();
   ring.enabledIs(false);
   ring.clear();
   int evaluated = 0;
   FASTLOG("not kept " << bump(evaluated));
   EXPECT_EQ(evaluated, 0);  // a disabled ring evaluates nothing
   EXPECT_TRUE(ring.empty());
   ring.enabledIs(true);
   FASTLOG("nothing to review in vrf " << bump(evaluated));
   EXPECT_EQ(ring.snapshot(), (Texts{"nothing to review in vrf 1"}));
   ring.clear();
   ring.enabledIs(wasEnabled);
}

}  // namespace
