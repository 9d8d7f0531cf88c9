#pragma once

#include <cstdint>

#include "Task.h"

namespace Loom {

// A task that becomes ready at a time. timeIs() arms it for an absolute time (positive infinity
// disarms), scheduleAfter() for a delay from now; re-arming replaces the pending time. When the
// loop reaches the time the task is disarmed and put on the ready queue, where it runs by its
// priority; timer tasks due at the same time become ready in the order they were armed.
//
// armed() is true while a time is pending, scheduled() while it waits on the ready queue;
// pending() is either. cancel() undoes both. Once the loop is gone the task can no longer be
// armed (timeIs is ignored).
class TimerTask : public Task {
 public:
   TimerTask(Kor::Ptr<TaskScheduler> scheduler, Kor::Name name, int priority = 0, Body body = {});
   ~TimerTask() override;

   void timeIs(double time);
   void scheduleAfter(double delay);
   void cancel();

   bool armed() const;
   // The pending time; positive infinity when not armed.
   double time() const;
   bool pending() const { return armed() || scheduled(); }

 private:
   friend class EventLoop;
   static constexpr std::uint32_t noSlot = UINT32_MAX;

   EventLoop* loop() const;
   // Called by the loop when the time is reached (already disarmed).
   void timeReached() { schedule(); }

   std::uint32_t slot_ = noSlot;
};

}  // namespace Loom
