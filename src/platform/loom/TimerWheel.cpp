#include "TimerWheel.h"

#include <stdexcept>

namespace Loom {

namespace {

Kor::Ptr<EventLoop> checked(Kor::Ptr<EventLoop> loop) {
   if (!loop) {
      throw std::invalid_argument("a timer wheel needs an event loop");
   }
   return loop;
}

}  // namespace

TimerWheel::TimerWheel(Kor::Name name, Kor::Ptr<EventLoop> loop)
    : Kor::Entity(std::move(name)), loop_(checked(std::move(loop))) {
   clock_ = loop_->clockIs(this->name() + "-clock");
}

Kor::Ptr<TimerTask> TimerWheel::timerTaskIs(Kor::Name name, int priority, Task::Body body) const {
   return Kor::make<TimerTask>(loop_->scheduler(), std::move(name), priority, std::move(body));
}

}  // namespace Loom
