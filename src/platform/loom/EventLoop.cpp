#include "EventLoop.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <stdexcept>
#include <thread>

#include "TimerTask.h"

namespace Loom {

EventLoop::EventLoop(TimeMode mode) : mode_(mode) {
   if (mode_ == TimeMode::monotonic) {
      start_ = std::chrono::steady_clock::now();
   }
   scheduler_ = Kor::make<TaskScheduler>("scheduler", this);
}

EventLoop::~EventLoop() {
   scheduler_->loopGone();
   // Clocks and timer tasks may outlive the loop: they stop asking it for anything.
   for (auto& [clock, slot] : clockSlot_) {
      const_cast<Kor::Clock*>(clock)->sourceGone();
   }
}

EventLoop::FireTime EventLoop::longestFire(const Kor::Clock& clock) const {
   auto it = clockSlot_.find(&clock);
   return it == clockSlot_.end() ? FireTime{} : slots_[it->second].longest;
}

double EventLoop::threadCpuNow() {
   timespec ts{};
   clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
   return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

double EventLoop::realNow() const {
   return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void EventLoop::refresh() {
   if (mode_ == TimeMode::monotonic) {
      now_ = std::max(now_, realNow());
   }
}

double EventLoop::now() const {
   if (mode_ == TimeMode::monotonic) {
      now_ = std::max(now_, realNow());
   } else {
      now_ += autoAdvancePerRead_;
   }
   return now_;
}

void EventLoop::autoAdvancePerReadIs(double step) {
   if (!simulated() || !(step >= 0.0) || !std::isfinite(step)) {
      throw std::invalid_argument("autoAdvancePerRead needs simulated time and a finite step >= 0");
   }
   autoAdvancePerRead_ = step;
}

Kor::Ptr<Kor::Clock> EventLoop::clockIs(const Kor::Name& name) {
   auto clock = Kor::make<Kor::Clock>(name, this);
   clockSlot_.emplace(clock.get(), slotNew(SlotKind::clock, clock.get()));
   return clock;
}

std::uint32_t EventLoop::slotNew(SlotKind kind, void* target) {
   std::uint32_t slot;
   if (!freeSlots_.empty()) {
      slot = freeSlots_.back();
      freeSlots_.pop_back();
   } else {
      slot = static_cast<std::uint32_t>(slots_.size());
      slots_.emplace_back();
   }
   Slot& s = slots_[slot];
   s.kind = kind;
   s.target = target;
   s.armed = false;
   s.time = never();
   s.longest = FireTime{};
   return slot;
}

void EventLoop::slotFree(std::uint32_t slot) {
   Slot& s = slots_[slot];
   if (s.armed) {
      --armed_;
   }
   // The generation keeps rising across reuse, so heap entries of the old owner stay stale.
   ++s.generation;
   s.kind = SlotKind::free;
   s.target = nullptr;
   s.armed = false;
   s.time = never();
   freeSlots_.push_back(slot);
}

std::uint32_t EventLoop::timerSlotNew(TimerTask* task) {
   return slotNew(SlotKind::timerTask, task);
}

void EventLoop::arm(std::uint32_t slot, double time) {
   Slot& s = slots_[slot];
   ++s.generation;
   if (s.armed) {
      --armed_;
   }
   s.time = time;
   s.armed = time != never();
   if (!s.armed) {
      compactIfStale();
      return;
   }
   ++armed_;
   heap_.push_back(Entry{time, nextOrder_++, slot, s.generation});
   std::push_heap(heap_.begin(), heap_.end(), Later{});
   compactIfStale();
}

bool EventLoop::valid(const Entry& e) const {
   const Slot& s = slots_[e.slot];
   return s.armed && s.generation == e.generation;
}

void EventLoop::dropStaleTop() const {
   while (!heap_.empty() && !valid(heap_.front())) {
      std::pop_heap(heap_.begin(), heap_.end(), Later{});
      heap_.pop_back();
   }
}

// Re-arming leaves the old entry in the heap; once stale entries outnumber live ones the heap is
// rebuilt, which keeps its size linear in the armed wake-ups at amortised constant cost.
void EventLoop::compactIfStale() {
   if (heap_.size() <= 2 * armed_ + 64) {
      return;
   }
   std::erase_if(heap_, [this](const Entry& e) { return !valid(e); });
   std::make_heap(heap_.begin(), heap_.end(), Later{});
}

double EventLoop::nextWakeUp() const {
   dropStaleTop();
   return heap_.empty() ? never() : heap_.front().time;
}

void EventLoop::clockTimeMinChanged(Kor::Clock& clock) {
   auto it = clockSlot_.find(&clock);
   if (it == clockSlot_.end()) {
      // A clock built directly on this source rather than through clockIs().
      it = clockSlot_.emplace(&clock, slotNew(SlotKind::clock, &clock)).first;
   }
   arm(it->second, clock.timeMin());
}

void EventLoop::clockGone(Kor::Clock& clock) {
   auto it = clockSlot_.find(&clock);
   if (it == clockSlot_.end()) {
      return;
   }
   slotFree(it->second);
   clockSlot_.erase(it);
}

void EventLoop::fire(std::uint32_t slot) {
   Slot& s = slots_[slot];
   if (s.kind == SlotKind::clock) {
      auto* clock = static_cast<Kor::Clock*>(s.target);
      // A counted clock is kept alive while its reactors run, so that a reactor dropping the
      // last reference does not delete it under the notification.
      Kor::Ptr<Kor::Clock> keep(clock->references() > 0 ? clock : nullptr);
      if (mode_ != TimeMode::monotonic) {
         clock->fire();
         return;
      }
      const double wallStart = realNow();
      const double cpuStart = threadCpuNow();
      clock->fire();
      const double wall = realNow() - wallStart;
      // The slot may have been freed by the reactor (the clock went away): keep nothing then.
      Slot& after = slots_[slot];
      if (after.kind == SlotKind::clock && after.target == clock && wall > after.longest.wall) {
         after.longest = FireTime{wall, threadCpuNow() - cpuStart};
      }
   } else if (s.kind == SlotKind::timerTask) {
      static_cast<TimerTask*>(s.target)->timeReached();
   }
}

EventLoop::Step EventLoop::step(double horizon) {
   dropStaleTop();
   if (!heap_.empty() && heap_.front().time <= now_) {
      Entry e = heap_.front();
      std::pop_heap(heap_.begin(), heap_.end(), Later{});
      heap_.pop_back();
      Slot& s = slots_[e.slot];
      s.armed = false;
      s.time = never();
      --armed_;
      fire(e.slot);
      if (afterStep_) {
         afterStep_();
      }
      return Step::fired;
   }
   if (scheduler_->runOne()) {
      if (afterStep_) {
         afterStep_();
      }
      return Step::ran;
   }
   dropStaleTop();
   if (!heap_.empty() && heap_.front().time <= horizon) {
      now_ = std::max(now_, heap_.front().time);
      return Step::moved;
   }
   return Step::idle;
}

std::size_t EventLoop::run(double horizon, std::size_t limit) {
   // The loop may be held by nothing but the caller's plain reference; a counted loop is kept
   // alive until its run returns.
   Kor::Ptr<EventLoop> keep(references() > 0 ? this : nullptr);
   std::size_t done = 0;
   while (done < limit) {
      Step s = step(horizon);
      if (s == Step::idle) {
         break;
      }
      if (s != Step::moved) {
         ++done;
      }
   }
   return done;
}

std::size_t EventLoop::advance(double seconds) {
   if (!(seconds >= 0.0)) {
      throw std::invalid_argument("advance needs a duration >= 0");
   }
   return advanceTo(now_ + seconds);
}

std::size_t EventLoop::advanceTo(double time) {
   if (!simulated()) {
      throw std::logic_error("advance needs simulated time");
   }
   std::size_t done = run(time, noLimit());
   now_ = std::max(now_, time);
   return done;
}

std::size_t EventLoop::runUntilIdle(std::size_t limit) {
   refresh();
   if (simulated()) {
      return run(now_, limit);
   }
   std::size_t done = 0;
   while (done < limit) {
      refresh();
      Step s = step(now_);
      if (s == Step::idle) {
         break;
      }
      if (s != Step::moved) {
         ++done;
      }
   }
   return done;
}

std::size_t EventLoop::runFor(double seconds) {
   if (simulated()) {
      return advance(seconds);
   }
   if (!(seconds >= 0.0) || !std::isfinite(seconds)) {
      throw std::invalid_argument("runFor needs a finite duration >= 0");
   }
   Kor::Ptr<EventLoop> keep(references() > 0 ? this : nullptr);
   refresh();
   const double deadline = now_ + seconds;
   std::size_t done = 0;
   while (true) {
      refresh();
      if (now_ >= deadline) {
         break;
      }
      Step s = step(now_);
      if (s == Step::fired || s == Step::ran) {
         ++done;
         continue;
      }
      double until = std::min(nextWakeUp(), deadline);
      std::this_thread::sleep_until(start_ + std::chrono::duration_cast<std::chrono::nanoseconds>(
                                                 std::chrono::duration<double>(until)));
   }
   return done;
}

}  // namespace Loom
