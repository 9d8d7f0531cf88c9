#pragma once

#include <limits>

#include "Entity.h"

namespace Kor {

class Clock;

// Where a clock reads the time and whom it tells about its wake-up time. The event loop is the
// time source of an agent; nothing in the library reads the wall clock directly.
class TimeSource {
 public:
   virtual ~TimeSource() = default;
   virtual double now() const = 0;
   // The clock's timeMin changed; the source arranges a wake-up at that time (infinity: none).
   virtual void clockTimeMinChanged(Clock& clock) = 0;
   // The clock is going away; the source forgets it.
   virtual void clockGone(Clock& clock) = 0;
};

// A wake-up source. Owners arm it by setting timeMin, an absolute time in seconds; positive
// infinity disarms it. When the time source reaches timeMin, reactors see onTimeMin(). The clock
// does not disarm itself: the reactor re-arms or disarms it as its work requires.
class Clock : public Entity {
 public:
   class NotifieeConst : public Notifiee<Clock> {
    public:
      using Notifiee<Clock>::Notifiee;
      virtual void onTimeMin() {}
   };

   static constexpr double never() { return std::numeric_limits<double>::infinity(); }

   Clock(Name name, TimeSource* source) : Entity(std::move(name)), source_(source) {}
   ~Clock() override {
      if (source_) {
         source_->clockGone(*this);
      }
   }

   double now() const { return source_ ? source_->now() : 0.0; }
   double timeMin() const { return timeMin_; }
   void timeMinIs(double t) {
      if (t == timeMin_) {
         return;
      }
      timeMin_ = t;
      if (source_) {
         source_->clockTimeMinChanged(*this);
      }
   }
   bool armed() const { return timeMin_ != never(); }

   // Called by the time source when timeMin is reached.
   void fire() { notify(&NotifieeConst::onTimeMin); }
   // Called by a time source that goes away before its clocks.
   void sourceGone() { source_ = nullptr; }
   TimeSource* source() const { return source_; }

 private:
   TimeSource* source_;
   double timeMin_ = never();
};

}  // namespace Kor
