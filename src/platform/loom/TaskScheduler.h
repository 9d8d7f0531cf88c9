#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

namespace Loom {

class EventLoop;
class Task;

// The ready tasks of one event loop, by priority and first-in first-out within a priority. A
// lower priority value runs first. The loop creates its scheduler and drives it (runOne()); state
// machines hold it to create their tasks.
//
// It keeps tasks by plain pointer in intrusive queues: a task is on at most one queue, at most
// once, and unlinks itself when it is deleted, so the scheduler never sees a deleted task. While
// a task runs the scheduler knows it as currentTask() and times its slice against quantum(),
// reading the loop's time source; a task deleted while it runs is forgotten, not touched again.
class TaskScheduler : public Kor::Entity {
 public:
   static constexpr double defaultQuantum() { return 0.005; }

   TaskScheduler(Kor::Name name, EventLoop* loop);
   ~TaskScheduler() override;

   // The loop this scheduler belongs to; null once the loop is gone.
   EventLoop* loop() const { return loop_; }

   // Length of the time slice after which a running task is asked to yield, in seconds.
   double quantum() const { return quantum_; }
   void quantumIs(double seconds) { quantum_ = seconds; }

   std::size_t readyTasks() const { return ready_; }
   bool idle() const { return ready_ == 0; }
   Task* currentTask() const { return current_; }
   // Time the current run started, on the loop's time source.
   double sliceStart() const { return sliceStart_; }
   std::uint64_t runs() const { return runs_; }

   // Runs the first ready task; false when none is ready. Called by the event loop.
   bool runOne();

 private:
   friend class Task;
   friend class EventLoop;
   struct Queue {
      Task* head = nullptr;
      Task* tail = nullptr;
   };

   void enqueue(Task& task);
   void dequeue(Task& task);
   void taskGone(Task& task);
   void loopGone() { loop_ = nullptr; }
   double time() const;

   EventLoop* loop_;
   double quantum_ = defaultQuantum();
   Kor::OrderedMap<int, Queue> queues_;
   std::size_t ready_ = 0;
   Task* current_ = nullptr;
   std::vector<Task*> running_;  // innermost last; null where the task was deleted
   double sliceStart_ = 0.0;
   std::uint64_t runs_ = 0;
};

}  // namespace Loom
