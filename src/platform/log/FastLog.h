#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Log {

// A bounded in-memory ring of short trace texts: the cheap, always-available record of the
// decisions a state machine made most recently, to be read from a debugger, a test or the
// simulator. It holds at most `capacity` texts of at most `maxTextLength` bytes each (longer texts
// are cut); when full, a new text overwrites the oldest one and counts as one dropped. Its memory
// does not grow after the ring has filled once.
//
// A disabled ring ignores add() and, through the macro below, costs one branch per trace point
// with no argument evaluated. The process ring (instance()) is configured at first use from the
// environment variable MPLSFWD_FASTLOG: unset leaves it disabled with the default capacity; a
// positive number enables it with that capacity; any other value enables it with the default
// capacity. One thread only.
class FastLog {
 public:
   static constexpr std::size_t defaultCapacity = 1024;
   static constexpr std::size_t maxTextLength = 160;
   static constexpr const char* environmentVariable = "MPLSFWD_FASTLOG";

   // Throws Kor::RangeError when capacity is 0.
   explicit FastLog(std::size_t capacity = defaultCapacity, bool enabled = true);

   bool enabled() const { return enabled_; }
   void enabledIs(bool enabled) { enabled_ = enabled; }

   std::size_t capacity() const { return capacity_; }
   // Texts held now (at most capacity()).
   std::size_t size() const { return size_; }
   bool empty() const { return size_ == 0; }
   // Texts ever added since construction or clear(), and those of them overwritten.
   std::uint64_t added() const { return added_; }
   std::uint64_t dropped() const { return added_ - size_; }

   // Appends a text, cut to maxTextLength bytes, overwriting the oldest when full. Adds even when
   // disabled: the enabled flag is for the macro's check.
   void add(std::string_view text);
   // Forgets every text and resets the counters; capacity and the enabled flag stay.
   void clear();

   // The held texts, oldest first.
   std::vector<std::string> snapshot() const;
   // Calls f(text) for each held text, oldest first.
   template <class F>
   void forEach(F&& f) const {
      std::size_t start = size_ < capacity_ ? 0 : next_;
      for (std::size_t i = 0; i < size_; ++i) {
         f(static_cast<const std::string&>(slots_[(start + i) % capacity_]));
      }
   }

   // Called with every text added, after it is held: an observer (the simulator) stamps it with
   // its time. Empty by default.
   void listenerIs(std::function<void(std::string_view)> f) { listener_ = std::move(f); }

   // The process ring.
   static FastLog& instance();

 private:
   std::vector<std::string> slots_;
   std::size_t capacity_;
   std::size_t next_ = 0;
   std::size_t size_ = 0;
   std::uint64_t added_ = 0;
   bool enabled_;
   std::function<void(std::string_view)> listener_;
};

}  // namespace Log

// MPLSFWD_FASTLOG(ring, a << b << ...): appends the streamed text to `ring` when it is enabled;
// when it is not, the stream expression is not evaluated. FASTLOG(a << b) uses the process ring.
#define MPLSFWD_FASTLOG(ring, expr)                      \
   do {                                                  \
      ::Log::FastLog& mplsfwdFastLog_ = (ring);          \
      if (mplsfwdFastLog_.enabled()) [[unlikely]] {      \
         std::ostringstream mplsfwdFastLogText_;         \
         mplsfwdFastLogText_ << expr;                    \
         mplsfwdFastLog_.add(mplsfwdFastLogText_.str()); \
      }                                                  \
   } while (false)

#define FASTLOG(expr) MPLSFWD_FASTLOG(::Log::FastLog::instance(), expr)
