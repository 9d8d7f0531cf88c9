#pragma once

#include <cstddef>
#include <cstdint>

namespace Kor {

// The runtime's integer hash: a 64-bit finaliser (from splitmix64) so that keys that differ in a
// few low bits, such as labels and indices, spread over the whole table.
constexpr std::uint64_t mixInt(std::uint64_t x) noexcept {
   x ^= x >> 30;
   x *= 0xbf58476d1ce4e5b9ULL;
   x ^= x >> 27;
   x *= 0x94d049bb133111ebULL;
   x ^= x >> 31;
   return x;
}

constexpr std::size_t hashCombine(std::size_t seed, std::uint64_t value) noexcept {
   return static_cast<std::size_t>(
       mixInt(seed ^ (value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2))));
}

// Hash functor for value types that provide hash() as a member.
struct MemberHash {
   template <class T>
   std::size_t operator()(const T& v) const noexcept(noexcept(v.hash())) {
      return v.hash();
   }
};

}  // namespace Kor
