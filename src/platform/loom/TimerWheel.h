#pragma once

#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/Ptr.h>

#include "EventLoop.h"
#include "TimerTask.h"

namespace Loom {

// The view of the event loop that a state machine holds: the current time, a clock (number
// allocators measure their quarantine on it) and a factory of timer tasks on the loop's
// scheduler. It keeps the loop alive; the loop does not refer back to it.
class TimerWheel : public Kor::Entity {
 public:
   TimerWheel(Kor::Name name, Kor::Ptr<EventLoop> loop);

   const Kor::Ptr<EventLoop>& loop() const { return loop_; }
   const Kor::Ptr<TaskScheduler>& scheduler() const { return loop_->scheduler(); }
   // The wheel's own clock, created with the wheel on the loop.
   const Kor::Ptr<Kor::Clock>& clock() const { return clock_; }
   double now() const { return loop_->now(); }

   Kor::Ptr<TimerTask> timerTaskIs(Kor::Name name, int priority = 0, Task::Body body = {}) const;

 private:
   Kor::Ptr<EventLoop> loop_;
   Kor::Ptr<Kor::Clock> clock_;
};

}  // namespace Loom
