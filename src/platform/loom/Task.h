#pragma once

#include <cstdint>
#include <functional>

#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/Ptr.h>

#include "TaskScheduler.h"

namespace Loom {

// A named unit of deferred work run by a TaskScheduler. Its body is either an override of run()
// or a function given at construction (bodyIs). The owner calls schedule() to put it on the ready
// queue; scheduling is idempotent while the task waits, and a running task may schedule itself
// again to continue later. A task that polls taskShouldYield() between items gives the loop back
// once its slice is used up and counts its items with workCountInc().
//
// A task may be a member of its owner or held by Kor::Ptr. Deleting it unlinks it from the ready
// queue; deleting it while it runs is safe as long as run() touches nothing of it afterwards.
class Task : public Kor::Entity {
 public:
   using Body = std::function<void()>;

   Task(Kor::Ptr<TaskScheduler> scheduler, Kor::Name name, int priority = 0, Body body = {});
   ~Task() override;

   const Kor::Ptr<TaskScheduler>& scheduler() const { return scheduler_; }
   int priority() const { return priority_; }
   // Takes effect at once: a waiting task moves to the back of its new priority's queue.
   void priorityIs(int priority);
   void bodyIs(Body body) { body_ = std::move(body); }

   // Puts the task on the ready queue unless it is already there.
   void schedule();
   // Takes the task off the ready queue; no effect if it is not there.
   void unschedule();
   bool scheduled() const { return queued_; }
   bool running() const { return scheduler_->currentTask() == this; }

   // True when the current run has used up the scheduler's quantum; false outside a run of this
   // task. Reads the loop's time source, so every call counts as a read of the time.
   bool taskShouldYield() const;

   std::uint64_t workCount() const { return workCount_; }
   void workCountInc(std::uint64_t n = 1) { workCount_ += n; }
   void taskWorkCountInc(std::uint64_t n = 1) { workCountInc(n); }
   std::uint64_t runCount() const { return runCount_; }
   // The longest of its runs, in seconds of the loop's time: with real time, a run that stays
   // within its slice takes at most the scheduler's quantum plus the item under way.
   double longestRun() const { return longestRun_; }
   // The processor time of that longest run (zero with simulated time): a run far longer than
   // its processor time was preempted, not overrunning its slice.
   double longestRunCpu() const { return longestRunCpu_; }
   // All its runs together, in the loop's time and (with real time) in processor time.
   double totalRun() const { return totalRun_; }
   double totalRunCpu() const { return totalRunCpu_; }

 protected:
   // The task's work; the default calls the body given at construction, if any.
   virtual void run();

 private:
   friend class TaskScheduler;

   Kor::Ptr<TaskScheduler> scheduler_;
   int priority_;
   Body body_;
   bool queued_ = false;
   Task* prev_ = nullptr;
   Task* next_ = nullptr;
   std::uint64_t workCount_ = 0;
   std::uint64_t runCount_ = 0;
   double longestRun_ = 0.0;
   double longestRunCpu_ = 0.0;
   double totalRun_ = 0.0;
   double totalRunCpu_ = 0.0;
};

}  // namespace Loom
