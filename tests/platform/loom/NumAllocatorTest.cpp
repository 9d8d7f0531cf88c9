#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <vector>

#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/NumAllocator.h>
#include <mplsfwd/loom/TimerWheel.h>

namespace {

using Loom::NumAllocator;
using Loom::Range;

constexpr std::uint64_t kInvalid = NumAllocator::invalidNumber();

struct Counts {
   std::uint64_t allocated, quarantined, freeList, highWaterMark;
   bool operator==(const Counts&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Counts& c) {
   return os << "{allocated " << c.allocated << ", quarantined " << c.quarantined << ", free "
             << c.freeList << ", hwm " << c.highWaterMark << "}";
}

struct Allocator : ::testing::Test {
   void build(Range range, double expiry) {
      config = Kor::make<Loom::NumAllocatorConfig>(range, expiry);
      status = Kor::make<Loom::NumAllocatorStatus>();
      allocator = Kor::make<NumAllocator>(config, status, wheel->clock());
   }
   Counts counts() const {
      return {status->allocated(), status->quarantined(), status->freeListSize(),
              status->highWaterMark()};
   }
   std::vector<std::uint64_t> take(int n) {
      std::vector<std::uint64_t> got;
      for (int i = 0; i < n; ++i) {
         got.push_back(allocator->allocateNumber());
      }
      return got;
   }

   Kor::Ptr<Loom::EventLoop> loop = Kor::make<Loom::EventLoop>();
   Kor::Ptr<Loom::TimerWheel> wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   Kor::Ptr<Loom::NumAllocatorConfig> config;
   Kor::Ptr<Loom::NumAllocatorStatus> status;
   Kor::Ptr<NumAllocator> allocator;
};

TEST_F(Allocator, HandsOutFromTheStartOfTheRangeAndTakesBack) {
   build(Range(1, 255), 10.0);
   EXPECT_EQ(take(3), (std::vector<std::uint64_t>{1, 2, 3}));
   EXPECT_TRUE(allocator->isAllocated(2));
   EXPECT_FALSE(allocator->isAllocated(4));
   EXPECT_EQ(counts(), (Counts{3, 0, 0, 3}));
   EXPECT_TRUE(allocator->releaseNumber(2));
   EXPECT_FALSE(allocator->isAllocated(2));
   EXPECT_EQ(counts(), (Counts{2, 1, 0, 3}));
}

TEST_F(Allocator, ReleasedNumberIsNotReusedBeforeExpiryAndIsAfter) {
   build(Range(1, 255), 10.0);
   take(3);
   loop->advance(1.0);
   allocator->releaseNumber(2);
   loop->advanceTo(10.5);  // 9.5 s after the release
   EXPECT_EQ(allocator->allocateNumber(), 4u);
   EXPECT_EQ(counts(), (Counts{3, 1, 0, 4}));
   loop->advanceTo(11.0);  // exactly 10 s after the release
   EXPECT_EQ(allocator->allocateNumber(), 2u);
   EXPECT_EQ(counts(), (Counts{4, 0, 0, 4}));
}

TEST_F(Allocator, ExpiredNumbersComeBackOldestReleaseFirst) {
   build(Range(0, 99), 10.0);
   take(5);
   for (std::uint64_t n : {3, 0, 4}) {
      allocator->releaseNumber(n);
      loop->advance(1.0);
   }
   loop->advance(20.0);
   allocator->expireQuarantine();
   EXPECT_EQ(counts(), (Counts{2, 0, 3, 5}));
   EXPECT_EQ(take(4), (std::vector<std::uint64_t>{3, 0, 4, 5}));
}

TEST_F(Allocator, ExhaustionAtASmallRangeThenRecoveryAfterExpiry) {
   build(Range(7, 9), 10.0);
   EXPECT_EQ(take(4), (std::vector<std::uint64_t>{7, 8, 9, kInvalid}));
   EXPECT_EQ(status->exhaustions(), 1u);
   allocator->releaseNumber(8);
   loop->advance(5.0);
   EXPECT_EQ(allocator->allocateNumber(), kInvalid);  // the only free number is quarantined
   EXPECT_EQ(counts(), (Counts{2, 1, 0, 3}));
   loop->advance(5.0);
   EXPECT_EQ(allocator->allocateNumber(), 8u);
   EXPECT_EQ(allocator->allocateNumber(), kInvalid);
   EXPECT_EQ(counts(), (Counts{3, 0, 0, 3}));
   EXPECT_EQ(status->exhaustions(), 3u);
}

TEST_F(Allocator, FullThirtyTwoBitRangeCostsOnlyWhatIsInUse) {
   build(Range(0, 4294967295ULL), 10.0);
   // Only the high-water mark moves: nothing is set aside for the four billion others.
   EXPECT_EQ(take(4), (std::vector<std::uint64_t>{0, 1, 2, 3}));
   EXPECT_EQ(counts(), (Counts{4, 0, 0, 4}));
   allocator->releaseNumber(1);
   EXPECT_EQ(allocator->allocateNumber(), 4u);
   EXPECT_EQ(counts(), (Counts{4, 1, 0, 5}));
   loop->advance(10.0);
   EXPECT_EQ(allocator->allocateNumber(), 1u);
   EXPECT_EQ(counts(), (Counts{5, 0, 0, 5}));
}

TEST_F(Allocator, LastNumbersOfTheRangeAndTheInvalidNumber) {
   build(Range(4294967294ULL, 4294967295ULL), 0.0);
   EXPECT_EQ(take(3), (std::vector<std::uint64_t>{4294967294ULL, 4294967295ULL, kInvalid}));
   // A range reaching the top of 64 bits stops short of the invalid number.
   build(Range(kInvalid - 1, kInvalid), 0.0);
   EXPECT_EQ(take(2), (std::vector<std::uint64_t>{kInvalid - 1, kInvalid}));
   EXPECT_FALSE(allocator->isAllocated(kInvalid));
   EXPECT_EQ(counts(), (Counts{1, 0, 0, 1}));
}

TEST_F(Allocator, EmptyRangeHasNothingToGive) {
   build(Range(5, 4), 10.0);
   EXPECT_EQ(allocator->allocateNumber(), kInvalid);
   EXPECT_EQ(counts(), (Counts{0, 0, 0, 0}));
}

TEST_F(Allocator, ZeroExpiryReusesAtOnce) {
   build(Range(1, 2), 0.0);
   take(2);
   allocator->releaseNumber(1);
   EXPECT_EQ(allocator->allocateNumber(), 1u);
}

TEST_F(Allocator, ReleasingWhatIsNotAllocatedIsRefusedAndChangesNothing) {
   build(Range(1, 10), 10.0);
   take(3);
   EXPECT_TRUE(allocator->releaseNumber(2));
   const Counts before = counts();
   EXPECT_FALSE(allocator->releaseNumber(2));   // twice
   EXPECT_FALSE(allocator->releaseNumber(9));   // never handed out
   EXPECT_FALSE(allocator->releaseNumber(50));  // outside the range
   EXPECT_FALSE(allocator->releaseNumber(kInvalid));
   EXPECT_EQ(counts(), before);
   // The double release did not queue 2 twice: after expiry it comes back once.
   loop->advance(10.0);
   EXPECT_EQ(take(3), (std::vector<std::uint64_t>{2, 4, 5}));
}

TEST_F(Allocator, NewAllocatorOnAnOldStatusStartsItsCountsAfresh) {
   build(Range(1, 1), 10.0);
   take(2);
   EXPECT_EQ(status->exhaustions(), 1u);
   allocator = Kor::make<NumAllocator>(config, status, wheel->clock());
   EXPECT_EQ(counts(), (Counts{0, 0, 0, 0}));
   EXPECT_EQ(status->exhaustions(), 0u);
   EXPECT_EQ(allocator->getNumber(), 1u);
}

}  // namespace
