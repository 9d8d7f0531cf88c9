#include "NumAllocator.h"

#include <stdexcept>

namespace Loom {

NumAllocator::NumAllocator(Kor::Ptr<const NumAllocatorConfig> config,
                           Kor::Ptr<NumAllocatorStatus> status, Kor::Ptr<Kor::Clock> clock)
    : config_(std::move(config)), status_(std::move(status)), clock_(std::move(clock)) {
   if (!config_) {
      throw std::invalid_argument("a number allocator needs a configuration");
   }
   if (!status_) {
      status_ = Kor::make<NumAllocatorStatus>();
   }
   const Range& r = config_->range();
   first_ = r.first();
   last_ = r.last() == invalidNumber() ? invalidNumber() - 1 : r.last();
   empty_ = r.empty() || first_ > last_;
   nextNew_ = first_;
   expiryTime_ = config_->expiryTime();
   statusUpdate();
   status_->exhaustions_ = 0;
}

void NumAllocator::expireAt(double now) {
   while (!quarantine_.empty() && quarantine_.front().releasedAt + expiryTime_ <= now) {
      freeList_.push_back(quarantine_.front().number);
      quarantine_.pop_front();
   }
}

void NumAllocator::expireQuarantine() {
   expireAt(time());
   statusUpdate();
}

void NumAllocator::statusUpdate() {
   status_->allocated_ = allocated_.size();
   status_->quarantined_ = quarantine_.size();
   status_->freeListSize_ = freeList_.size();
   status_->highWaterMark_ = empty_ ? 0 : nextNew_ - first_;
}

std::uint64_t NumAllocator::allocateNumber() {
   expireAt(time());
   std::uint64_t n;
   if (!freeList_.empty()) {
      n = freeList_.front();
      freeList_.pop_front();
   } else if (!empty_ && nextNew_ <= last_) {
      n = nextNew_++;
   } else {
      ++status_->exhaustions_;
      statusUpdate();
      return invalidNumber();
   }
   allocated_.insert(n);
   statusUpdate();
   return n;
}

bool NumAllocator::releaseNumber(std::uint64_t number) {
   auto it = allocated_.find(number);
   if (it == allocated_.end()) {
      return false;
   }
   allocated_.erase(it);
   const double now = time();
   expireAt(now);
   quarantine_.push_back(Quarantined{number, now});
   statusUpdate();
   return true;
}

}  // namespace Loom
