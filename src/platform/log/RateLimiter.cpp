#include "RateLimiter.h"

#include <algorithm>

namespace Log {

namespace {

// Refills are computed in floating point; an interval that has fully elapsed must yield a whole
// token even when the division leaves it a hair short.
constexpr double tokenSlack = 1e-9;

}  // namespace

RateLimiter::RateLimiter(double minInterval, double burst)
    : minInterval_(minInterval), burst_(std::max(burst, 1.0)), tokens_(burst_) {}

bool RateLimiter::allow(double now) {
   if (minInterval_ <= 0.0) {
      ++passed_;
      return true;
   }
   if (!started_) {
      started_ = true;
      last_ = now;
   } else if (now > last_) {
      tokens_ = std::min(burst_, tokens_ + (now - last_) / minInterval_);
      last_ = now;
   }
   if (tokens_ + tokenSlack >= 1.0) {
      tokens_ = std::max(0.0, tokens_ - 1.0);
      ++passed_;
      return true;
   }
   ++suppressed_;
   return false;
}

}  // namespace Log
