#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Name.h>
#include <mplsfwd/kor/Ptr.h>

#include "TaskScheduler.h"

namespace Loom {

class TimerTask;

// The agent's one event loop: it owns the time source, the wake-ups (clocks and timer tasks) and
// the task scheduler with the ready tasks.
//
// Time is either simulated (starts at 0.0 and moves only when the loop is told to advance, so
// that every test and scenario is deterministic and the wall clock is never read) or monotonic
// real time (seconds since the loop was built, from std::chrono::steady_clock).
//
// Driven by whoever owns the agent: a test or the scenario runner calls advance() or
// runUntilIdle(), a real agent calls runFor(). One step of the loop fires the earliest due
// wake-up if there is one, else runs one ready task, else moves simulated time to the next
// wake-up. So every wake-up due at the current time fires before ready tasks run, and ready
// tasks all run before time moves on.
//
// Invariants: time never goes backwards; wake-ups fire in time order, ties in arming order;
// re-arming replaces the pending wake-up (older heap entries are recognised by their generation
// and skipped); a clock or timer task fires at most once per arming.
class EventLoop : public Kor::PtrInterface, public Kor::TimeSource {
 public:
   enum class TimeMode { simulated, monotonic };
   static constexpr double never() { return std::numeric_limits<double>::infinity(); }
   static constexpr std::size_t noLimit() { return std::numeric_limits<std::size_t>::max(); }

   explicit EventLoop(TimeMode mode = TimeMode::simulated);
   ~EventLoop() override;
   EventLoop(const EventLoop&) = delete;
   EventLoop& operator=(const EventLoop&) = delete;

   TimeMode timeMode() const { return mode_; }
   bool simulated() const { return mode_ == TimeMode::simulated; }

   // The current time in seconds. With autoAdvancePerRead set (simulated time only), every read
   // first moves time on by that step, so that code which polls the time to bound its work can
   // be made to yield in a test.
   double now() const override;
   double autoAdvancePerRead() const { return autoAdvancePerRead_; }
   void autoAdvancePerReadIs(double step);

   // A new clock whose wake-ups this loop keeps. The loop does not own it; when the loop goes
   // first, its clocks are detached and read time 0 from then on.
   Kor::Ptr<Kor::Clock> clockIs(const Kor::Name& name);
   std::size_t clocks() const { return clockSlot_.size(); }

   const Kor::Ptr<TaskScheduler>& scheduler() const { return scheduler_; }

   // Simulated time: runs everything due up to now + seconds (or up to the absolute time), in
   // time order, then sets the time to the target. Answers the number of wake-ups fired plus
   // tasks run.
   std::size_t advance(double seconds);
   std::size_t advanceTo(double time);
   // Runs ready tasks and due wake-ups until nothing is ready at the current time, or until
   // `limit` of them ran. Does not move simulated time (except through autoAdvancePerRead).
   std::size_t runUntilIdle(std::size_t limit = noLimit());
   // Runs the loop for that many seconds: simulated time advances; real time sleeps until the
   // next wake-up whenever nothing is ready.
   std::size_t runFor(double seconds);

   // The earliest pending wake-up, never() when nothing is armed.
   double nextWakeUp() const;

   // Called after every wake-up fired and every task run, so that an observer (a timeline) sees
   // each change as it happens; empty by default.
   void afterStepIs(std::function<void()> f) { afterStep_ = std::move(f); }
   std::size_t armedWakeUps() const { return armed_; }

   // The longest run of one clock's wake-up in real time, and the processor time of that same run,
   // in seconds; measured only with monotonic time (zero otherwise, and for an unknown clock). The
   // processor time tells a long wake-up apart from one that the machine preempted.
   struct FireTime {
      double wall = 0.0;
      double cpu = 0.0;
   };
   FireTime longestFire(const Kor::Clock& clock) const;

   // Kor::TimeSource.
   void clockTimeMinChanged(Kor::Clock& clock) override;
   void clockGone(Kor::Clock& clock) override;

 private:
   friend class TimerTask;
   friend class TaskScheduler;

   enum class SlotKind : std::uint8_t { free, clock, timerTask };
   struct Slot {
      SlotKind kind = SlotKind::free;
      bool armed = false;
      std::uint64_t generation = 0;
      double time = never();
      void* target = nullptr;
      FireTime longest;
   };
   struct Entry {
      double time;
      std::uint64_t order;  // arming order, breaks ties in time
      std::uint32_t slot;
      std::uint64_t generation;
   };
   struct Later {
      bool operator()(const Entry& a, const Entry& b) const {
         return a.time != b.time ? a.time > b.time : a.order > b.order;
      }
   };
   enum class Step { fired, ran, moved, idle };

   // Timer-task side of the wake-ups.
   std::uint32_t timerSlotNew(TimerTask* task);
   void timerSlotArm(std::uint32_t slot, double time) { arm(slot, time); }
   void timerSlotDel(std::uint32_t slot) { slotFree(slot); }
   double timerSlotTime(std::uint32_t slot) const { return slots_[slot].time; }
   bool timerSlotArmed(std::uint32_t slot) const { return slots_[slot].armed; }

   std::uint32_t slotNew(SlotKind kind, void* target);
   void slotFree(std::uint32_t slot);
   void arm(std::uint32_t slot, double time);
   void dropStaleTop() const;
   void compactIfStale();
   bool valid(const Entry& e) const;
   Step step(double horizon);
   void fire(std::uint32_t slot);
   double realNow() const;
   static double threadCpuNow();
   void refresh();
   std::size_t run(double horizon, std::size_t limit);

   TimeMode mode_;
   std::chrono::steady_clock::time_point start_{};
   mutable double now_ = 0.0;
   double autoAdvancePerRead_ = 0.0;
   std::vector<Slot> slots_;
   std::vector<std::uint32_t> freeSlots_;
   mutable std::vector<Entry> heap_;
   std::function<void()> afterStep_;
   std::uint64_t nextOrder_ = 0;
   std::size_t armed_ = 0;
   Kor::HashMap<const Kor::Clock*, std::uint32_t> clockSlot_;
   Kor::Ptr<TaskScheduler> scheduler_;
};

}  // namespace Loom
