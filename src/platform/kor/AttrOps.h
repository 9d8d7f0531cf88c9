#pragma once

#include <utility>

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
   it->second = std::forward<V>(value);
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
template <class Map, class Del>
void deleteEachKey(const Map& map, Del&& del) {
   while (!map.empty()) {
      auto key = map.begin()->first;
      del(key);
   }
}

template <class Set, class Del>
void deleteEachMember(const Set& set, Del&& del) {
   while (!set.empty()) {
      auto key = *set.begin();
      del(key);
   }
}

}  // namespace Kor
