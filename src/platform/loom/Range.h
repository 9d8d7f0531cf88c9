#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

namespace Loom {

// An inclusive range of numbers [first, last] handed out by a NumAllocator. A range whose first
// is above its last is empty.
class Range {
 public:
   constexpr Range() = default;
   constexpr Range(std::uint64_t first, std::uint64_t last) : first_(first), last_(last) {}

   constexpr std::uint64_t first() const { return first_; }
   constexpr std::uint64_t last() const { return last_; }
   constexpr bool empty() const { return first_ > last_; }
   constexpr bool contains(std::uint64_t n) const { return first_ <= n && n <= last_; }

   constexpr bool operator==(const Range&) const = default;
   constexpr bool operator<(const Range& o) const {
      return first_ != o.first_ ? first_ < o.first_ : last_ < o.last_;
   }
   std::size_t hash() const;
   // "Range(first..last)"
   std::string stringValue() const;

 private:
   std::uint64_t first_ = 0;
   std::uint64_t last_ = 0;
};

std::ostream& operator<<(std::ostream& os, const Range& r);

}  // namespace Loom
