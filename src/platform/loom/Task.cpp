#include "Task.h"

#include <stdexcept>

#include "EventLoop.h"

namespace Loom {

Task::Task(Kor::Ptr<TaskScheduler> scheduler, Kor::Name name, int priority, Body body)
    : Kor::Entity(std::move(name)),
      scheduler_(std::move(scheduler)),
      priority_(priority),
      body_(std::move(body)) {
   if (!scheduler_) {
      throw std::invalid_argument("a task needs a scheduler");
   }
}

Task::~Task() {
   scheduler_->taskGone(*this);
}

void Task::priorityIs(int priority) {
   if (priority == priority_) {
      return;
   }
   const bool wasQueued = queued_;
   if (wasQueued) {
      scheduler_->dequeue(*this);
   }
   priority_ = priority;
   if (wasQueued) {
      scheduler_->enqueue(*this);
   }
}

void Task::schedule() {
   if (!queued_) {
      scheduler_->enqueue(*this);
   }
}

void Task::unschedule() {
   if (queued_) {
      scheduler_->dequeue(*this);
   }
}

bool Task::taskShouldYield() const {
   if (!running()) {
      return false;
   }
   return scheduler_->time() - scheduler_->sliceStart() >= scheduler_->quantum();
}

void Task::run() {
   if (body_) {
      body_();
   }
}

}  // namespace Loom
