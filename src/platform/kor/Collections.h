#pragma once

#include <functional>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include <tsl/robin_map.h>
#include <tsl/robin_set.h>

#include "Hash.h"

namespace Kor {

// Value types of the runtime hash through their hash() member when they have one, and through
// std::hash otherwise. Every collection of the library goes through these aliases so that the
// containers behind them can be swapped in one place when a benchmark says so.
template <class T>
struct DefaultHash {
   std::size_t operator()(const T& v) const noexcept {
      if constexpr (requires { v.hash(); }) {
         return v.hash();
      } else if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
         return static_cast<std::size_t>(mixInt(static_cast<std::uint64_t>(v)));
      } else {
         return std::hash<T>()(v);
      }
   }
};

template <class K, class V, class H = DefaultHash<K>>
using HashMap = std::unordered_map<K, V, H>;

template <class K, class H = DefaultHash<K>>
using HashSet = std::unordered_set<K, H>;

// Open-addressing tables for the per-route collections that a million routes fill: no allocation
// per entry, a few bytes per slot, and an iteration order that depends only on the keys and the
// order of insertion (our own hash, no per-process seed), so simulations replay identically.
// Unlike HashMap they move entries on insert and erase: no reference or iterator into them
// survives a change, and values are changed through iterator.value() (see Kor::valueOf).
// Robin-hood probing keeps lookups short at high load, so the tables run fuller than the
// library's default of one half: memory per route is what limits a full label space.
inline constexpr float kFlatMaxLoadFactor = 0.8f;

// Prime-sized buckets, not powers of two: walking one table in bucket order while inserting into
// another (a review draining one set into the next) would otherwise insert keys in the order of
// their low hash bits and pile them into long probe runs.
using FlatGrowthPolicy = tsl::rh::prime_growth_policy;

template <class K, class V, class H = DefaultHash<K>>
class FlatHashMap
    : public tsl::robin_map<K, V, H, std::equal_to<K>, std::allocator<std::pair<K, V>>, false,
                            FlatGrowthPolicy> {
 public:
   FlatHashMap() { this->max_load_factor(kFlatMaxLoadFactor); }
};

template <class K, class H = DefaultHash<K>>
class FlatHashSet
    : public tsl::robin_set<K, H, std::equal_to<K>, std::allocator<K>, false, FlatGrowthPolicy> {
 public:
   FlatHashSet() { this->max_load_factor(kFlatMaxLoadFactor); }
   template <class It>
   FlatHashSet(It first, It last) : FlatHashSet() {
      this->insert(first, last);
   }
};

template <class K, class V, class C = std::less<K>>
using OrderedMap = std::map<K, V, C>;

template <class K, class C = std::less<K>>
using OrderedSet = std::set<K, C>;

}  // namespace Kor
