#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerTask.h>
#include <mplsfwd/loom/TimerWheel.h>

namespace {

using Loom::EventLoop;
using Loom::TimerTask;

struct TimerTasks : ::testing::Test {
   Kor::Ptr<TimerTask> timer(const std::string& name, int priority = 0) {
      return wheel->timerTaskIs(name, priority, [this, name] {
         ran.push_back(name + "@" + std::to_string(static_cast<int>(wheel->now())));
      });
   }

   Kor::Ptr<EventLoop> loop = Kor::make<EventLoop>();
   Kor::Ptr<Loom::TimerWheel> wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   std::vector<std::string> ran;
};

TEST_F(TimerTasks, TasksDueTogetherRunByPriority) {
   auto slow = timer("slow", 3), fast = timer("fast", 1), peer = timer("peer", 3);
   slow->timeIs(5.0);
   fast->timeIs(5.0);
   peer->timeIs(5.0);
   loop->advance(6.0);
   EXPECT_EQ(ran, (std::vector<std::string>{"fast@5", "slow@5", "peer@5"}));
}

TEST_F(TimerTasks, ScheduleAfterCountsFromNow) {
   auto t = timer("t");
   loop->advance(2.0);
   t->scheduleAfter(3.0);
   EXPECT_EQ(t->time(), 5.0);
   loop->advance(2.5);
   EXPECT_TRUE(ran.empty());
   loop->advance(1.0);
   EXPECT_EQ(ran, std::vector<std::string>{"t@5"});
}

TEST_F(TimerTasks, StatesFromArmedThroughReadyToDone) {
   auto t = timer("t");
   EXPECT_FALSE(t->pending());
   EXPECT_EQ(t->time(), EventLoop::never());
   t->timeIs(1.0);
   EXPECT_TRUE(t->armed());
   EXPECT_FALSE(t->scheduled());
   // The time is reached and the task is ready, but a higher-priority task runs first.
   Loom::Task first(loop->scheduler(), "first", -1, [&] {
      EXPECT_FALSE(t->armed());
      EXPECT_TRUE(t->scheduled());
      EXPECT_TRUE(t->pending());
   });
   auto c = loop->clockIs("c");
   struct Kick : Kor::Clock::NotifieeConst {
      Kick(Kor::Ptr<Kor::Clock> c, Loom::Task* t) : NotifieeConst(c), t(t) {}
      void onTimeMin() override { t->schedule(); }
      Loom::Task* t;
   } kick(c, &first);
   c->timeMinIs(1.0);
   loop->advance(1.0);
   EXPECT_EQ(first.runCount(), 1u);
   EXPECT_EQ(ran, std::vector<std::string>{"t@1"});
   EXPECT_FALSE(t->pending());
}

TEST_F(TimerTasks, CancelUndoesArmedAndReady) {
   auto armed = timer("armed"), ready = timer("ready"), blocker = timer("blocker", -1);
   armed->timeIs(1.0);
   ready->timeIs(1.0);
   blocker->bodyIs([&] { ready->cancel(); });  // ready is on the queue by now
   blocker->timeIs(1.0);
   armed->cancel();
   EXPECT_FALSE(armed->armed());
   EXPECT_EQ(loop->armedWakeUps(), 2u);
   loop->advance(5.0);
   EXPECT_TRUE(ran.empty());
   EXPECT_EQ(blocker->runCount(), 1u);
   EXPECT_FALSE(ready->pending());
}

TEST_F(TimerTasks, PeriodicTaskReArmsFromItsOwnRun) {
   auto t = timer("tick");
   t->bodyIs([&] {
      ran.push_back("tick@" + std::to_string(static_cast<int>(loop->now())));
      t->scheduleAfter(1.0);
   });
   t->timeIs(1.0);
   loop->advance(3.5);
   EXPECT_EQ(ran, (std::vector<std::string>{"tick@1", "tick@2", "tick@3"}));
   EXPECT_EQ(t->time(), 4.0);
}

TEST_F(TimerTasks, SameTimeAfterFiringIsANewArming) {
   auto t = timer("t");
   int runs = 0;
   t->bodyIs([&] {
      if (++runs == 1) {
         t->timeIs(1.0);  // the time it just ran at: due again at once
      }
   });
   t->timeIs(1.0);
   loop->advance(2.0);
   EXPECT_EQ(runs, 2);
}

TEST_F(TimerTasks, DeletedArmedTaskNeverRuns) {
   auto t = timer("t");
   t->timeIs(1.0);
   t = nullptr;
   EXPECT_EQ(loop->armedWakeUps(), 0u);
   loop->advance(2.0);
   EXPECT_TRUE(ran.empty());
}

TEST_F(TimerTasks, ClocksAndTimerTasksShareOneTimeline) {
   auto c1 = loop->clockIs("c1"), c2 = loop->clockIs("c2");
   struct Log : Kor::Clock::NotifieeConst {
      Log(Kor::Ptr<Kor::Clock> c, std::vector<std::string>* ran) : NotifieeConst(c), ran(ran) {}
      void onTimeMin() override { ran->push_back(notifier()->name()); }
      std::vector<std::string>* ran;
   } l1(c1, &ran), l2(c2, &ran);
   auto t = timer("t");
   c1->timeMinIs(5.0);
   t->timeIs(5.0);
   c2->timeMinIs(5.0);
   loop->advance(5.0);
   // All wake-ups due at 5 fire in arming order before any ready task runs.
   EXPECT_EQ(ran, (std::vector<std::string>{"c1", "c2", "t@5"}));
}

TEST_F(TimerTasks, WheelGivesTheLoopsTimeAndAClockOnIt) {
   loop->advance(3.0);
   EXPECT_EQ(wheel->now(), 3.0);
   EXPECT_EQ(wheel->clock()->now(), 3.0);
   // The wheel keeps the loop alive for whoever holds only the wheel.
   auto t = timer("t");
   t->scheduleAfter(1.0);
   EventLoop* raw = loop.get();
   loop = nullptr;
   raw->advance(1.0);
   EXPECT_EQ(ran, std::vector<std::string>{"t@4"});
}

TEST(TimerTaskDetached, LoopGoneLeavesTimerTasksInert) {
   auto loop = Kor::make<EventLoop>();
   auto t = Kor::make<TimerTask>(loop->scheduler(), "t");
   t->timeIs(1.0);
   loop = nullptr;
   EXPECT_FALSE(t->armed());
   t->timeIs(2.0);
   EXPECT_FALSE(t->armed());
   t->cancel();
}

}  // namespace
