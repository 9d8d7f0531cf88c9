#pragma once

#include <cstddef>
#include <utility>

#include "AttrOps.h"
#include "Ptr.h"

namespace Kor {

// What a keyed attribute calls when nobody observes it.
struct Unobserved {
   template <class K>
   void operator()(const K&) const {}
};

// One keyed attribute of an entity (a map from key to value) with the runtime's change rules:
// is(k, v) stores only a real change and calls `changed(k)` only then; del(k) calls it only when
// the entry was there; delAll() removes entry by entry through del, so that every removal is
// seen on its own. An absent key reads as the value type's default. The owner names the
// accessors (MPLSFWD_KEYED_ATTR below) and passes its notification as `changed`.
template <class Map>
class KeyedAttr {
 public:
   using Key = typename Map::key_type;
   using Value = typename Map::mapped_type;

   Value operator()(const Key& k) const { return mapValueOr(map_, k); }
   bool has(const Key& k) const { return map_.contains(k); }
   template <class V, class Changed = Unobserved>
   bool is(const Key& k, V&& v, Changed&& changed = {}) {
      if (!mapAssignIfChanged(map_, k, std::forward<V>(v))) {
         return false;
      }
      changed(k);
      return true;
   }
   // The owned object under `k`, made by `make()` when the key is absent (no change otherwise).
   template <class Make, class Changed = Unobserved>
   Value instantiate(const Key& k, Make&& make, Changed&& changed = {}) {
      auto [it, inserted] = map_.try_emplace(k);
      if (!inserted) {
         return it->second;
      }
      valueOf(it) = make();
      changed(k);
      return it->second;
   }
   template <class Changed = Unobserved>
   bool del(const Key& k, Changed&& changed = {}) {
      if (map_.erase(k) == 0) {
         return false;
      }
      changed(k);
      return true;
   }
   template <class Changed = Unobserved>
   void delAll(Changed&& changed = {}) {
      deleteEachKey(map_, [&](const Key& k) { del(k, changed); });
   }
   // The stored value, or null when the key is absent.
   const Value* find(const Key& k) const {
      auto it = map_.find(k);
      return it == map_.end() ? nullptr : &it->second;
   }
   std::size_t size() const { return map_.size(); }
   bool empty() const { return map_.empty(); }
   const Map& map() const { return map_; }
   // Sizes the table for `n` entries at once, when it would otherwise grow on the way there.
   void reserve(std::size_t n) {
      if (n > map_.bucket_count() * map_.max_load_factor()) {
         map_.reserve(n);
      }
   }
   // Drops every entry without a word: for the owner's own teardown only.
   void clear() { map_.clear(); }

 private:
   Map map_;
};

}  // namespace Kor

// The accessors of the keyed attribute `name##_` (a Kor::KeyedAttr keyed by `Key`): name(k),
// nameHas(k), nameIs(k, v), nameDel(k), nameDelAll(), nameMap() and the count `count()`. `changed`
// is what the owner calls with the key on a real change (Kor::Unobserved{} for nothing).
#define MPLSFWD_KEYED_ATTR(name, count, Key, changed) \
   bool name##Has(const Key& k) const {               \
      return name##_.has(k);                          \
   }                                                  \
   void name##Is(const Key& k, const auto& v) {       \
      name##_.is(k, v, changed);                      \
   }                                                  \
   MPLSFWD_KEYED_ATTR_READ_DEL(name, count, Key, changed)

// The same for a keyed collection of owned entities: nameIs(k) gets or creates the entity
// (constructed from its key) instead of storing a value.
#define MPLSFWD_OWNED_ATTR(name, count, Key, changed)                                         \
   auto name##Is(const Key& k) {                                                              \
      return name##_.instantiate(                                                             \
          k, [&] { return ::Kor::make<typename decltype(name##_)::Value::element_type>(k); }, \
          changed);                                                                           \
   }                                                                                          \
   MPLSFWD_KEYED_ATTR_READ_DEL(name, count, Key, changed)

// What both share: the read, the deletes, the map and the count.
#define MPLSFWD_KEYED_ATTR_READ_DEL(name, count, Key, changed) \
   auto name(const Key& k) const {                             \
      return name##_(k);                                       \
   }                                                           \
   void name##Del(const Key& k) {                              \
      name##_.del(k, changed);                                 \
   }                                                           \
   void name##DelAll() {                                       \
      name##_.delAll(changed);                                 \
   }                                                           \
   const auto& name##Map() const {                             \
      return name##_.map();                                    \
   }                                                           \
   std::size_t count() const {                                 \
      return name##_.size();                                   \
   }
