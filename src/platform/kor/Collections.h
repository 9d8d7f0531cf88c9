#pragma once

#include <functional>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

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

template <class K, class V, class C = std::less<K>>
using OrderedMap = std::map<K, V, C>;

template <class K, class C = std::less<K>>
using OrderedSet = std::set<K, C>;

}  // namespace Kor
