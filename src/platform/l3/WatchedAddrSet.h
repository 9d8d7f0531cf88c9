#pragma once

#include <cstddef>
#include <cstdint>

#include <mplsfwd/kor/Collections.h>

namespace Fal {

// The bookkeeping behind the route reactor configurations: a set of watched addresses, each
// counted per user and carrying whether only a host route may resolve it. The flag of an entry
// starts as its first user asked and can only widen: once any user has asked for resolution by
// any covering route, the entry stays so until its last user has gone (the remove carries no
// flag, so a narrower request cannot be told apart from a wider one when it leaves). Mutators
// answer whether what a reader can see (watched or not, host-route-only or not) changed; the
// owning entity notifies exactly then.
template <class Key>
class WatchedAddrSet {
 public:
   struct Watch {
      std::uint32_t refs = 0;
      bool hostRouteOnly = false;
      bool operator==(const Watch&) const = default;
   };
   using Map = Kor::HashMap<Key, Watch>;

   bool add(const Key& key, bool hostRouteOnly) {
      auto [it, inserted] = map_.try_emplace(key, Watch{0, hostRouteOnly});
      ++it->second.refs;
      if (inserted) {
         return true;
      }
      if (it->second.hostRouteOnly && !hostRouteOnly) {
         it->second.hostRouteOnly = false;
         return true;
      }
      return false;
   }
   // Drops one user; true when the last one went.
   bool remove(const Key& key) {
      auto it = map_.find(key);
      if (it == map_.end()) {
         return false;
      }
      if (--it->second.refs != 0) {
         return false;
      }
      map_.erase(it);
      return true;
   }
   // Drops the entry whatever its count; true when it was there.
   bool erase(const Key& key) { return map_.erase(key) != 0; }

   bool has(const Key& key) const { return map_.contains(key); }
   bool hostRouteOnly(const Key& key) const {
      auto it = map_.find(key);
      return it != map_.end() && it->second.hostRouteOnly;
   }
   std::uint32_t refs(const Key& key) const {
      auto it = map_.find(key);
      return it == map_.end() ? 0 : it->second.refs;
   }
   std::size_t size() const { return map_.size(); }
   const Map& map() const { return map_; }

 private:
   Map map_;
};

}  // namespace Fal
