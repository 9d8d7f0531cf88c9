#include "TaskScheduler.h"

#include <algorithm>

#include <cassert>

#include "EventLoop.h"
#include "Task.h"

namespace Loom {

TaskScheduler::TaskScheduler(Kor::Name name, EventLoop* loop)
    : Kor::Entity(std::move(name)), loop_(loop) {}

// Every queued task holds a reference to its scheduler, so none can be left here.
TaskScheduler::~TaskScheduler() {
   assert(ready_ == 0);
}

double TaskScheduler::time() const {
   return loop_ ? loop_->now() : 0.0;
}

void TaskScheduler::enqueue(Task& task) {
   Queue& q = queues_[task.priority_];
   task.prev_ = q.tail;
   task.next_ = nullptr;
   if (q.tail) {
      q.tail->next_ = &task;
   } else {
      q.head = &task;
   }
   q.tail = &task;
   task.queued_ = true;
   ++ready_;
}

void TaskScheduler::dequeue(Task& task) {
   auto it = queues_.find(task.priority_);
   assert(it != queues_.end());
   Queue& q = it->second;
   (task.prev_ ? task.prev_->next_ : q.head) = task.next_;
   (task.next_ ? task.next_->prev_ : q.tail) = task.prev_;
   task.prev_ = task.next_ = nullptr;
   task.queued_ = false;
   --ready_;
   if (!q.head) {
      queues_.erase(it);
   }
}

void TaskScheduler::taskGone(Task& task) {
   if (task.queued_) {
      dequeue(task);
   }
   for (auto*& t : running_) {
      if (t == &task) {
         t = nullptr;
      }
   }
   if (current_ == &task) {
      current_ = nullptr;
   }
}

bool TaskScheduler::runOne() {
   if (queues_.empty()) {
      return false;
   }
   Task* task = queues_.begin()->second.head;
   dequeue(*task);
   // A counted task lives through its own run even if its owner drops it meanwhile.
   Kor::Ptr<Task> keep(task->references() > 0 ? task : nullptr);
   // Runs nest when a task drives the loop itself; the outer run's slice resumes afterwards.
   struct Nest {
      TaskScheduler& s;
      double savedStart;
      ~Nest() {
         s.running_.pop_back();
         s.current_ = s.running_.empty() ? nullptr : s.running_.back();
         s.sliceStart_ = savedStart;
      }
   } nest{*this, sliceStart_};
   running_.push_back(task);
   current_ = task;
   sliceStart_ = loop_ ? loop_->now_ : 0.0;
   ++runs_;
   ++task->runCount_;
   // Processor time only with real time: simulated runs take none worth the system call.
   const bool real = loop_ && !loop_->simulated();
   const double cpuStart = real ? EventLoop::threadCpuNow() : 0.0;
   task->run();
   // The task may have been deleted by its own run: the running list then holds null for it.
   // Simulated time is read as it stands, so that measuring moves no time on.
   if (running_.back() == task && loop_) {
      const double end = real ? loop_->now() : loop_->now_;
      const double cpu = real ? EventLoop::threadCpuNow() - cpuStart : 0.0;
      const double length = end - sliceStart_;
      if (length > task->longestRun_) {
         task->longestRun_ = length;
         task->longestRunCpu_ = cpu;
      }
      task->totalRun_ += length;
      task->totalRunCpu_ += cpu;
   }
   return true;
}

}  // namespace Loom
