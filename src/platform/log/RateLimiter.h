#pragma once

#include <cstdint>

namespace Log {

// The rate check of one log message: a token bucket that holds up to `burst` tokens (at least 1),
// starts full, and gains one token every `minInterval` seconds. An emission passes when a whole
// token is available and takes it; otherwise it is suppressed. With minInterval 0 or less every
// emission passes. Time is whatever the caller passes (seconds, never decreasing in practice; a
// time earlier than the last one seen adds no token), so tests drive it with simulated time.
class RateLimiter {
 public:
   RateLimiter(double minInterval, double burst);

   // Decides one emission at time `now`.
   bool allow(double now);

   double minInterval() const { return minInterval_; }
   double burst() const { return burst_; }
   double tokens() const { return tokens_; }
   std::uint64_t passed() const { return passed_; }
   std::uint64_t suppressed() const { return suppressed_; }

 private:
   double minInterval_;
   double burst_;
   double tokens_;
   double last_ = 0.0;
   bool started_ = false;
   std::uint64_t passed_ = 0;
   std::uint64_t suppressed_ = 0;
};

}  // namespace Log
