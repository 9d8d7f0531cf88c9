#include "FastLog.h"

#include <mplsfwd/kor/Errors.h>
#include <cstdlib>

namespace Log {

FastLog::FastLog(std::size_t capacity, bool enabled) : capacity_(capacity), enabled_(enabled) {
   if (capacity == 0) {
      throw Kor::RangeError("FastLog capacity must be at least 1");
   }
   // Slots are created as texts arrive, so that a ring that is never used costs no memory; once
   // the ring is full, each slot's storage is reused.
}

void FastLog::add(std::string_view text) {
   if (text.size() > maxTextLength) {
      text = text.substr(0, maxTextLength);
   }
   if (slots_.size() < capacity_) {
      slots_.emplace_back(text);
   } else {
      slots_[next_].assign(text);
   }
   next_ = (next_ + 1) % capacity_;
   if (size_ < capacity_) {
      ++size_;
   }
   ++added_;
   if (listener_) {
      listener_(text);
   }
}

void FastLog::clear() {
   slots_.clear();
   next_ = 0;
   size_ = 0;
   added_ = 0;
}

std::vector<std::string> FastLog::snapshot() const {
   std::vector<std::string> out;
   out.reserve(size_);
   forEach([&](const std::string& text) { out.push_back(text); });
   return out;
}

FastLog& FastLog::instance() {
   static FastLog* ring = [] {
      const char* env = std::getenv(environmentVariable);
      if (env == nullptr) {
         return new FastLog(defaultCapacity, false);
      }
      char* end = nullptr;
      unsigned long long n = std::strtoull(env, &end, 10);
      bool number = end != env && *end == '\0' && n > 0 && n <= (1ull << 24);
      return new FastLog(number ? static_cast<std::size_t>(n) : defaultCapacity, true);
   }();
   return *ring;
}

}  // namespace Log
