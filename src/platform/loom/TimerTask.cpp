#include "TimerTask.h"

#include "EventLoop.h"

namespace Loom {

TimerTask::TimerTask(Kor::Ptr<TaskScheduler> scheduler, Kor::Name name, int priority, Body body)
    : Task(std::move(scheduler), std::move(name), priority, std::move(body)) {
   if (EventLoop* l = loop()) {
      slot_ = l->timerSlotNew(this);
   }
}

TimerTask::~TimerTask() {
   if (EventLoop* l = loop(); l && slot_ != noSlot) {
      l->timerSlotDel(slot_);
   }
}

EventLoop* TimerTask::loop() const {
   return scheduler()->loop();
}

void TimerTask::timeIs(double time) {
   EventLoop* l = loop();
   if (!l || slot_ == noSlot) {
      return;
   }
   if (time == l->timerSlotTime(slot_)) {
      return;
   }
   l->timerSlotArm(slot_, time);
}

void TimerTask::scheduleAfter(double delay) {
   if (EventLoop* l = loop()) {
      timeIs(l->now() + delay);
   }
}

void TimerTask::cancel() {
   timeIs(EventLoop::never());
   unschedule();
}

bool TimerTask::armed() const {
   EventLoop* l = loop();
   return l && slot_ != noSlot && l->timerSlotArmed(slot_);
}

double TimerTask::time() const {
   return armed() ? loop()->timerSlotTime(slot_) : EventLoop::never();
}

}  // namespace Loom
