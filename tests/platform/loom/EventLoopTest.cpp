#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/Task.h>

namespace {

using Loom::EventLoop;

struct Firing {
   std::string clock;
   double time;
   bool operator==(const Firing&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Firing& f) {
   return os << f.clock << "@" << f.time;
}

// A clock reactor that records each wake-up with the time it saw, then runs an optional hook.
struct ClockLog : Kor::Clock::NotifieeConst {
   ClockLog(Kor::Ptr<Kor::Clock> c, std::vector<Firing>* log) : NotifieeConst(c), log(log) {}
   void onTimeMin() override {
      log->push_back({notifier()->name(), notifier()->now()});
      if (hook) {
         hook(const_cast<Kor::Clock&>(*notifier()));
      }
   }
   std::vector<Firing>* log;
   std::function<void(Kor::Clock&)> hook;
};

struct Clocks : ::testing::Test {
   Kor::Ptr<Kor::Clock> clock(const std::string& name) {
      auto c = loop->clockIs(name);
      logs.push_back(std::make_unique<ClockLog>(c, &fired));
      return c;
   }
   ClockLog& logOf(std::size_t i) { return *logs[i]; }

   Kor::Ptr<EventLoop> loop = Kor::make<EventLoop>();
   std::vector<Firing> fired;
   std::vector<std::unique_ptr<ClockLog>> logs;
};

TEST_F(Clocks, SimulatedTimeStartsAtZeroAndMovesOnlyWhenAdvanced) {
   EXPECT_TRUE(loop->simulated());
   EXPECT_EQ(loop->now(), 0.0);
   EXPECT_EQ(loop->runUntilIdle(), 0u);
   EXPECT_EQ(loop->now(), 0.0);
   loop->advance(2.5);
   EXPECT_EQ(loop->now(), 2.5);
   loop->advanceTo(1.0);  // never backwards
   EXPECT_EQ(loop->now(), 2.5);
   EXPECT_THROW(loop->advance(-1.0), std::invalid_argument);
}

TEST_F(Clocks, AdvanceFiresNothingEarlyAndTheReactorSeesTheWakeUpTime) {
   auto c = clock("c"), d = clock("d");
   c->timeMinIs(5.0);
   d->timeMinIs(7.0);
   loop->advance(4.5);
   EXPECT_EQ(loop->runUntilIdle(), 0u);
   EXPECT_TRUE(fired.empty());
   loop->advance(0.5);
   EXPECT_EQ(fired, (std::vector<Firing>{{"c", 5.0}}));
   loop->advance(95.0);
   EXPECT_EQ(fired, (std::vector<Firing>{{"c", 5.0}, {"d", 7.0}}));
   EXPECT_EQ(loop->now(), 100.0);
}

TEST_F(Clocks, FiresOncePerArmingEvenWhenTheReactorLeavesItArmed) {
   auto c = clock("c");
   c->timeMinIs(1.0);
   loop->advance(2.0);
   EXPECT_EQ(fired.size(), 1u);
   // timeMin still reads 1.0: the reactor owns the decision to re-arm or disarm.
   EXPECT_EQ(c->timeMin(), 1.0);
   loop->advance(5.0);
   EXPECT_EQ(loop->runUntilIdle(), 0u);
   EXPECT_EQ(fired.size(), 1u);
   c->timeMinIs(9.0);
   loop->advance(5.0);
   EXPECT_EQ(fired, (std::vector<Firing>{{"c", 1.0}, {"c", 9.0}}));
}

TEST_F(Clocks, PeriodicReactorReArmsFromInsideTheFiring) {
   auto c = clock("tick");
   logOf(0).hook = [](Kor::Clock& self) { self.timeMinIs(self.now() + 1.0); };
   c->timeMinIs(1.0);
   loop->advanceTo(3.5);
   EXPECT_EQ(fired, (std::vector<Firing>{{"tick", 1.0}, {"tick", 2.0}, {"tick", 3.0}}));
   EXPECT_EQ(c->timeMin(), 4.0);
}

TEST_F(Clocks, ReArmToAnEarlierTimeWhileFiringFiresAgainWithoutTurningTimeBack) {
   auto a = clock("a"), b = clock("b");
   int calls = 0;
   logOf(0).hook = [&](Kor::Clock& self) {
      if (++calls == 1) {
         self.timeMinIs(4.0);  // already past: due at once, and earlier than b
      }
   };
   a->timeMinIs(5.0);
   b->timeMinIs(5.0);
   loop->advanceTo(6.0);
   EXPECT_EQ(fired, (std::vector<Firing>{{"a", 5.0}, {"a", 5.0}, {"b", 5.0}}));
}

TEST_F(Clocks, ReArmToTheSameTimeWhileFiringQueuesBehindTies) {
   auto a = clock("a"), b = clock("b");
   int calls = 0;
   logOf(0).hook = [&](Kor::Clock& self) {
      if (++calls == 1) {
         // Setting the same value is not a change; disarming first makes the re-arm a new one.
         self.timeMinIs(Kor::Clock::never());
         self.timeMinIs(5.0);
      }
   };
   a->timeMinIs(5.0);
   b->timeMinIs(5.0);
   loop->advanceTo(6.0);
   EXPECT_EQ(fired, (std::vector<Firing>{{"a", 5.0}, {"b", 5.0}, {"a", 5.0}}));
}

TEST_F(Clocks, RunUntilIdleStopsAtItsLimit) {
   auto c = clock("spin");
   // A reactor that always wants to run again at once never lets the loop go idle.
   logOf(0).hook = [](Kor::Clock& self) {
      self.timeMinIs(Kor::Clock::never());
      self.timeMinIs(self.now());
   };
   c->timeMinIs(0.0);
   EXPECT_EQ(loop->runUntilIdle(10), 10u);
   EXPECT_EQ(fired.size(), 10u);
   EXPECT_EQ(loop->now(), 0.0);
}

TEST_F(Clocks, ReadyTasksRunBeforeTimeMoves) {
   std::vector<std::string> order;
   Loom::Task task(loop->scheduler(), "t", 0,
                   [&] { order.push_back("task@" + std::to_string(loop->now())); });
   auto first = clock("first"), second = clock("second");
   logOf(0).hook = [&](Kor::Clock&) {
      order.push_back("first");
      task.schedule();
   };
   logOf(1).hook = [&](Kor::Clock&) { order.push_back("second"); };
   first->timeMinIs(1.0);
   second->timeMinIs(2.0);
   loop->advance(3.0);
   EXPECT_EQ(order, (std::vector<std::string>{"first", "task@1.000000", "second"}));
}

TEST_F(Clocks, DroppedClockNeverFires) {
   auto c = clock("c");
   c->timeMinIs(1.0);
   logs.clear();
   c = nullptr;
   EXPECT_EQ(loop->clocks(), 0u);
   EXPECT_EQ(loop->armedWakeUps(), 0u);
   loop->advance(2.0);
   EXPECT_TRUE(fired.empty());
}

TEST_F(Clocks, ReactorMayDropTheLastReferenceToItsClockWhileFiring) {
   auto c = clock("c");
   c->timeMinIs(1.0);
   logOf(0).hook = [&](Kor::Clock&) { c = nullptr; };
   loop->advance(2.0);
   ASSERT_EQ(fired.size(), 1u);
   // Only the reactor holds the clock now; once it goes, so does the clock.
   EXPECT_EQ(loop->clocks(), 1u);
   logs.clear();
   EXPECT_EQ(loop->clocks(), 0u);
}

TEST_F(Clocks, ClocksOutliveTheirLoopDetached) {
   auto c = clock("c");
   c->timeMinIs(1.0);
   loop = nullptr;
   EXPECT_EQ(c->source(), nullptr);
   EXPECT_EQ(c->now(), 0.0);
   c->timeMinIs(2.0);  // nobody to tell; must not touch the dead loop
   EXPECT_EQ(c->timeMin(), 2.0);
}

// Wake-ups fire in time order with ties in arming order; re-arming pushes a wake-up back, pulls it
// forward or (never) disarms it. Many re-arms leave stale entries behind; whatever the churn, each
// clock fires exactly once, at its last time, in time order with ties in the order of the last
// arming.
TEST_F(Clocks, HeavyReArmingKeepsOrderAndFiresEachClockOnce) {
   std::mt19937 rng(7);
   std::uniform_int_distribution<int> pick(0, 49), when(1, 20);
   std::vector<Kor::Ptr<Kor::Clock>> cs;
   for (int i = 0; i < 50; ++i) {
      cs.push_back(clock(Kor::concat({"c", std::to_string(i)})));
   }
   struct Last {
      double time;
      int order;
   };
   std::vector<Last> last(50, Last{EventLoop::never(), -1});
   for (int n = 0; n < 5000; ++n) {
      int i = pick(rng);
      double t = when(rng) == 20 ? EventLoop::never() : when(rng);
      if (t == cs[i]->timeMin()) {
         continue;  // not a change, so not a new arming
      }
      cs[i]->timeMinIs(t);
      last[i] = {t, n};
   }
   std::vector<int> expected;
   for (int i = 0; i < 50; ++i) {
      if (last[i].time != EventLoop::never()) {
         expected.push_back(i);
      }
   }
   std::sort(expected.begin(), expected.end(), [&](int x, int y) {
      return last[x].time != last[y].time ? last[x].time < last[y].time
                                          : last[x].order < last[y].order;
   });
   EXPECT_EQ(loop->armedWakeUps(), expected.size());
   loop->advance(30.0);
   ASSERT_EQ(fired.size(), expected.size());
   for (std::size_t k = 0; k < expected.size(); ++k) {
      EXPECT_EQ(fired[k], (Firing{"c" + std::to_string(expected[k]), last[expected[k]].time}));
   }
}

TEST(EventLoopTime, AutoAdvancePerReadMovesTimeOnEveryRead) {
   EventLoop loop;
   loop.autoAdvancePerReadIs(0.25);
   EXPECT_EQ(loop.now(), 0.25);
   EXPECT_EQ(loop.now(), 0.5);
   loop.autoAdvancePerReadIs(0.0);
   EXPECT_EQ(loop.now(), 0.5);
   EXPECT_THROW(loop.autoAdvancePerReadIs(-1.0), std::invalid_argument);
}

TEST_F(Clocks, WakeUpsPassedByReadsFireAtTheNextStep) {
   clock("c")->timeMinIs(1.0);
   loop->autoAdvancePerReadIs(0.5);
   loop->now();
   EXPECT_EQ(loop->runUntilIdle(), 0u);  // time is 0.5: not due
   loop->now();
   EXPECT_EQ(loop->runUntilIdle(), 1u);  // time is 1.0: due without advancing
   EXPECT_EQ(fired.size(), 1u);
}

// Real time is exercised without waiting: only work that is already due.
TEST(EventLoopTime, MonotonicTimeRunsDueWorkWithoutSleeping) {
   EventLoop loop(EventLoop::TimeMode::monotonic);
   EXPECT_FALSE(loop.simulated());
   EXPECT_THROW(loop.advance(1.0), std::logic_error);
   double t0 = loop.now();
   EXPECT_GE(t0, 0.0);
   int ran = 0;
   Loom::Task task(loop.scheduler(), "t", 0, [&] { ++ran; });
   task.schedule();
   auto c = loop.clockIs("c");
   int fired = 0;
   struct R : Kor::Clock::NotifieeConst {
      R(Kor::Ptr<Kor::Clock> c, int* n) : NotifieeConst(c), n(n) {}
      void onTimeMin() override { ++*n; }
      int* n;
   } r(c, &fired);
   c->timeMinIs(t0);  // already due
   EXPECT_EQ(loop.runUntilIdle(), 2u);
   EXPECT_EQ(ran, 1);
   EXPECT_EQ(fired, 1);
   EXPECT_EQ(loop.runFor(0.0), 0u);
   EXPECT_GE(loop.now(), t0);
}

}  // namespace
