#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "DenseIndexSet.h"

namespace Kor {

// A set of keys waiting for work, worked through in the order they first arrived. Membership is
// a bit per possible key (see DenseIndexSet), the order a list of indices, so queueing a key that
// is already queued costs one bit test and a million queued keys cost 4 MB of list.
//
// Removing a key only clears its bit; its stale list entry is skipped when the front reaches it.
// A key removed and queued again before then keeps its old place rather than being listed twice.
//
// A worker that must leave work queued during its own run for the next run (so that a key put
// back is not worked on twice in one go) takes the entries listed when it starts, with
// entriesListed() and takeFront(), and stops there.
template <class K, class Ix = DenseIndex<K>>
class DenseWorkQueue {
 public:
   using key_type = K;

   std::size_t size() const { return member_.size(); }
   bool empty() const { return member_.empty(); }
   bool contains(const K& k) const { return member_.contains(k); }

   // True when the key was not queued. Throws Kor::RangeError for a key without a slot.
   bool insert(const K& k) {
      if (!member_.insert(k).second) {
         return false;
      }
      if (listed_.insert(k).second) {
         order_.push_back(Ix::index(k));
      }
      return true;
   }
   // True when the key was queued.
   bool erase(const K& k) { return member_.erase(k) != 0; }
   void clear() {
      member_.clear();
      listed_.clear();
      order_ = {};
      front_ = 0;
   }

   // List entries from the front to the back, stale ones included: an upper bound on the keys
   // that takeFront() can yield before it reaches what was queued after this call.
   std::size_t entriesListed() const { return order_.size() - front_; }

   // Takes the front list entry. True, with the key in `out` (which leaves the queue), when the
   // entry was still queued; false for a stale entry or an empty list.
   bool takeFront(K& out) {
      if (front_ == order_.size()) {
         return false;
      }
      K k = Ix::key(order_[front_++]);
      listed_.erase(k);
      if (front_ == order_.size()) {
         order_.clear();
         front_ = 0;
      } else if (front_ >= kCompactAt && front_ * 2 >= order_.size()) {
         order_.erase(order_.begin(), order_.begin() + static_cast<std::ptrdiff_t>(front_));
         front_ = 0;
      }
      if (!member_.erase(k)) {
         return false;
      }
      out = k;
      return true;
   }

   // Members in key order (not queue order).
   typename DenseIndexSet<K, Ix>::const_iterator begin() const { return member_.begin(); }
   typename DenseIndexSet<K, Ix>::const_iterator end() const { return member_.end(); }

 private:
   // Taken entries are dropped from the list once they are this many and at least half of it.
   static constexpr std::size_t kCompactAt = 4096;

   DenseIndexSet<K, Ix> member_;
   // Keys with an entry in order_ at or after front_.
   DenseIndexSet<K, Ix> listed_;
   std::vector<std::uint32_t> order_;
   std::size_t front_ = 0;
};

}  // namespace Kor
