#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

#include "DenseIndexMap.h"

namespace Kor {

// A dense table of records that carry their own key (a route that names its label, say), each
// stored without that key: the slot already says it. At a million records the repeated key and
// its padding are a sizeable part of the table.
//
// Packing says how a record is cut down and rebuilt:
//   using Packed = ...;                                    the stored form, with operator==
//   static K key(const Record&);
//   static Packed pack(const Record&);
//   static Record unpack(const K&, const Packed&);
// Records are values: lookups and iteration rebuild them (iterators dereference to a pair of the
// key and the record, by value), and writes go through assignIfChanged and erase.
template <class K, class Record, class Packing, class Ix = DenseIndex<K>>
class DenseRecordMap {
   using Slots = DenseIndexMap<K, typename Packing::Packed, Ix>;

 public:
   using key_type = K;
   using mapped_type = Record;
   using size_type = std::size_t;

   class const_iterator {
    public:
      using value_type = std::pair<K, Record>;
      using reference = value_type;
      using difference_type = std::ptrdiff_t;
      using iterator_category = std::forward_iterator_tag;
      struct Arrow {
         value_type entry;
         const value_type* operator->() const { return &entry; }
      };

      const_iterator() = default;
      explicit const_iterator(typename Slots::const_iterator it) : it_(it) {}

      K key() const { return it_.key(); }
      Record value() const { return Packing::unpack(it_.key(), it_.value()); }
      value_type operator*() const { return {key(), value()}; }
      Arrow operator->() const { return Arrow{**this}; }
      const_iterator& operator++() {
         ++it_;
         return *this;
      }
      const_iterator operator++(int) {
         const_iterator old = *this;
         ++*this;
         return old;
      }
      bool operator==(const const_iterator& o) const { return it_ == o.it_; }

    private:
      typename Slots::const_iterator it_;
   };
   using iterator = const_iterator;

   std::size_t size() const { return slots_.size(); }
   bool empty() const { return slots_.empty(); }
   const_iterator begin() const { return const_iterator(slots_.begin()); }
   const_iterator end() const { return const_iterator(slots_.end()); }
   bool contains(const K& k) const { return slots_.contains(k); }
   std::size_t count(const K& k) const { return slots_.count(k); }
   const_iterator find(const K& k) const { return const_iterator(slots_.find(k)); }

   // Stores the record under its own key; true when it was added or differs from the stored one.
   // Throws Kor::RangeError for a key without a slot.
   bool assignIfChanged(const Record& r) {
      typename Packing::Packed packed = Packing::pack(r);
      auto [it, inserted] = slots_.try_emplace(Packing::key(r), std::move(packed));
      if (inserted) {
         return true;
      }
      if (it.value() == packed) {
         return false;
      }
      it.value() = std::move(packed);
      return true;
   }
   std::size_t erase(const K& k) { return slots_.erase(k); }
   void clear() { slots_.clear(); }

   bool operator==(const DenseRecordMap& o) const { return slots_ == o.slots_; }

 private:
   Slots slots_;
};

}  // namespace Kor
