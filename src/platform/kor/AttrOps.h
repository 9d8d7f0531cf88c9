#pragma once

#include <utility>
#include <vector>

namespace Kor {

// Building blocks of the change-only mutators. Each answers whether the stored state changed, so
// that the entity notifies exactly on a real change.

template <class T, class U>
bool assignIfChanged(T& field, U&& value) {
   if (field == value) {
      return false;
   }
   field = std::forward<U>(value);
   return true;
}

// The writable value of a map entry, whichever kind of map the iterator belongs to.
template <class It>
auto& valueOf(It& it) {
   if constexpr (requires { it.value(); }) {
      return it.value();
   } else {
      return it->second;
   }
}

// Insert or update one entry of a map; true when the entry was added or its value changed.
template <class Map, class K, class V>
bool mapAssignIfChanged(Map& map, const K& key, V&& value) {
   auto [it, inserted] = map.try_emplace(key, value);
   if (inserted) {
      return true;
   }
   if (it->second == value) {
      return false;
   }
   valueOf(it) = std::forward<V>(value);
   return true;
}

// Lookup that yields the default value for an absent key.
template <class Map, class K>
typename Map::mapped_type mapValueOr(const Map& map, const K& key,
                                     typename Map::mapped_type dflt = {}) {
   auto it = map.find(key);
   return it == map.end() ? dflt : it->second;
}

// Removes every entry through the single-entry delete, so that each raises its own notification.
// The keys are taken first: a reactor may change the collection while one entry goes, and
// open-addressing containers make repeated begin() after erase quadratic.
template <class Map, class Del>
void deleteEachKey(const Map& map, Del&& del) {
   std::vector<typename Map::key_type> keys;
   keys.reserve(map.size());
   for (const auto& entry : map) {
      keys.push_back(entry.first);
   }
   for (const auto& key : keys) {
      del(key);
   }
}

template <class Set, class Del>
void deleteEachMember(const Set& set, Del&& del) {
   std::vector<typename Set::key_type> keys(set.begin(), set.end());
   for (const auto& key : keys) {
      del(key);
   }
}

}  // namespace Kor
