#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/Task.h>

namespace {

using Loom::EventLoop;
using Loom::Task;

struct Tasks : ::testing::Test {
   // A counted task that records its name when it runs.
   Kor::Ptr<Task> task(const std::string& name, int priority) {
      return Kor::make<Task>(loop->scheduler(), name, priority,
                             [this, name] { ran.push_back(name); });
   }

   Kor::Ptr<EventLoop> loop = Kor::make<EventLoop>();
   std::vector<std::string> ran;
};

TEST_F(Tasks, RunByPriorityLowestValueFirstAndFifoWithinAPriority) {
   auto a = task("a", 2), b = task("b", 1), c = task("c", 2), d = task("d", 0), e = task("e", 1);
   for (auto* t : {&a, &b, &c, &d, &e}) {
      (*t)->schedule();
   }
   EXPECT_EQ(loop->scheduler()->readyTasks(), 5u);
   EXPECT_TRUE(ran.empty());  // scheduling runs nothing by itself
   EXPECT_EQ(loop->runUntilIdle(), 5u);
   EXPECT_EQ(ran, (std::vector<std::string>{"d", "b", "e", "a", "c"}));
   EXPECT_TRUE(loop->scheduler()->idle());
}

TEST_F(Tasks, SchedulingIsIdempotentWhileQueued) {
   auto a = task("a", 0);
   a->schedule();
   a->schedule();
   a->schedule();
   EXPECT_TRUE(a->scheduled());
   EXPECT_EQ(loop->scheduler()->readyTasks(), 1u);
   loop->runUntilIdle();
   EXPECT_EQ(ran, std::vector<std::string>{"a"});
   EXPECT_FALSE(a->scheduled());
   EXPECT_EQ(a->runCount(), 1u);
}

TEST_F(Tasks, UnscheduleAndPriorityChangeWhileQueued) {
   auto a = task("a", 0), b = task("b", 0), c = task("c", 0);
   a->schedule();
   b->schedule();
   c->schedule();
   b->unschedule();
   b->unschedule();   // not queued: no effect
   a->priorityIs(5);  // moves behind c
   EXPECT_EQ(loop->scheduler()->readyTasks(), 2u);
   loop->runUntilIdle();
   EXPECT_EQ(ran, (std::vector<std::string>{"c", "a"}));
}

TEST_F(Tasks, TaskMayRescheduleItselfWhileRunningAndGoesBehindItsPeers) {
   auto b = task("b", 0);
   int runs = 0;
   Task a(loop->scheduler(), "a", 0, [&] {
      EXPECT_TRUE(a.running());
      EXPECT_FALSE(a.scheduled());
      ran.push_back("a");
      if (++runs < 3) {
         a.schedule();
      }
   });
   a.schedule();
   b->schedule();
   EXPECT_EQ(loop->runUntilIdle(), 4u);
   EXPECT_EQ(ran, (std::vector<std::string>{"a", "b", "a", "a"}));
   EXPECT_FALSE(a.running());
}

// A task that walks a list, asking before each item whether to yield, and picks up where it left
// off on its next run: the shape of the backlog reviews.
struct Walker {
   Walker(Kor::Ptr<Loom::TaskScheduler> s, int items) : task(s, "walker"), left(items) {
      task.bodyIs([this] {
         int done = 0;
         while (left > 0) {
            if (task.taskShouldYield()) {
               task.schedule();
               break;
            }
            --left;
            ++done;
            task.workCountInc();
         }
         perRun.push_back(done);
      });
   }
   Task task;
   int left;
   std::vector<int> perRun;
};

TEST_F(Tasks, YieldingTaskContinuesOnItsNextRun) {
   // Every read of the time moves it by 1/8 s; with a half-second slice a run sees three items
   // before its fourth read reaches the quantum.
   loop->autoAdvancePerReadIs(0.125);
   loop->scheduler()->quantumIs(0.5);
   Walker w(loop->scheduler(), 10);
   w.task.schedule();
   EXPECT_EQ(loop->runUntilIdle(), 4u);
   EXPECT_EQ(w.perRun, (std::vector<int>{3, 3, 3, 1}));
   // A run stops at its quantum: four reads of the time, the last one past the slice.
   EXPECT_DOUBLE_EQ(w.task.longestRun(), 0.5);
   // Three full slices and a last run of one read; no processor time with simulated time.
   EXPECT_DOUBLE_EQ(w.task.totalRun(), 1.625);
   EXPECT_DOUBLE_EQ(w.task.totalRunCpu(), 0.0);
   EXPECT_EQ(w.left, 0);
   EXPECT_EQ(w.task.workCount(), 10u);
   EXPECT_FALSE(w.task.scheduled());
}

TEST_F(Tasks, YieldingLetsOtherReadyTasksRunInBetween) {
   loop->autoAdvancePerReadIs(0.125);
   loop->scheduler()->quantumIs(0.5);
   Walker w(loop->scheduler(), 5);
   auto other = task("other", 0);
   w.task.schedule();
   other->schedule();
   std::vector<std::string> order;
   other->bodyIs([&] { order.push_back("other after " + std::to_string(w.task.workCount())); });
   loop->runUntilIdle();
   EXPECT_EQ(order, std::vector<std::string>{"other after 3"});
   EXPECT_EQ(w.perRun, (std::vector<int>{3, 2}));
}

TEST_F(Tasks, NoYieldWithoutTimePassingOrOutsideARun) {
   Walker w(loop->scheduler(), 1000);
   EXPECT_FALSE(w.task.taskShouldYield());  // not running
   w.task.schedule();
   loop->runUntilIdle();
   EXPECT_EQ(w.perRun, std::vector<int>{1000});  // simulated time stood still
   EXPECT_EQ(loop->scheduler()->quantum(), Loom::TaskScheduler::defaultQuantum());
}

TEST_F(Tasks, DeletingScheduledTasksUnlinksThem) {
   auto a = task("a", 0), b = task("b", 0), c = task("c", 0), d = task("d", 0), e = task("e", 1);
   for (auto* t : {&a, &b, &c, &d, &e}) {
      (*t)->schedule();
   }
   b = nullptr;  // middle of a queue
   a = nullptr;  // head
   d = nullptr;  // tail
   EXPECT_EQ(loop->scheduler()->readyTasks(), 2u);
   e = nullptr;  // only member of its priority
   EXPECT_EQ(loop->scheduler()->readyTasks(), 1u);
   EXPECT_EQ(loop->runUntilIdle(), 1u);
   EXPECT_EQ(ran, std::vector<std::string>{"c"});
}

TEST_F(Tasks, TaskDeletedByItsOwnRunIsNotTouchedAgain) {
   // Plain (uncounted) task owned by a unique_ptr that its own body resets.
   auto owned = std::make_unique<Task>(loop->scheduler(), "owned");
   auto after = task("after", 0);
   owned->bodyIs([&] {
      owned->schedule();  // queued again, then deleted: must leave the queue
      owned.reset();
   });
   owned->schedule();
   after->schedule();
   EXPECT_EQ(loop->runUntilIdle(), 2u);
   EXPECT_EQ(owned, nullptr);
   EXPECT_EQ(ran, std::vector<std::string>{"after"});
   EXPECT_EQ(loop->scheduler()->currentTask(), nullptr);
}

TEST_F(Tasks, CountedTaskSurvivesItsRunAfterTheLastReferenceGoes) {
   struct Tracked : Task {
      Tracked(Kor::Ptr<Loom::TaskScheduler> s, bool* gone) : Task(s, "tracked"), gone(gone) {}
      ~Tracked() override { *gone = true; }
      void run() override {
         *holder = nullptr;
         // Still alive until the run returns.
         EXPECT_FALSE(*gone);
         workCountInc();
      }
      bool* gone;
      Kor::Ptr<Task>* holder = nullptr;
   };
   bool gone = false;
   auto t = Kor::make<Tracked>(loop->scheduler(), &gone);
   Kor::Ptr<Task> holder = t;
   t->holder = &holder;
   t->schedule();
   t = nullptr;
   loop->runUntilIdle();
   EXPECT_TRUE(gone);
   EXPECT_EQ(holder, nullptr);
}

TEST_F(Tasks, TasksOutliveTheirLoop) {
   auto a = task("a", 0);
   auto scheduler = loop->scheduler();
   loop = nullptr;
   EXPECT_EQ(scheduler->loop(), nullptr);
   a->schedule();
   EXPECT_TRUE(a->scheduled());
   EXPECT_TRUE(scheduler->runOne());  // still runnable by hand
   EXPECT_EQ(ran, std::vector<std::string>{"a"});
}

}  // namespace
