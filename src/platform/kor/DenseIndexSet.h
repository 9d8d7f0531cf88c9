#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

#include "DenseIndexMap.h"

namespace Kor {

// A set of keys with a dense integer index (see DenseIndex), kept as one bit per possible key:
// membership is one bit test, and a full label space costs 128 KB whatever the number of members.
// The bitmap is allocated at the first insertion and freed by clear(). Iteration runs in key
// order and yields keys by value.
template <class K, class Ix = DenseIndex<K>>
class DenseIndexSet {
 public:
   static constexpr std::uint32_t kCapacity = Ix::kCapacity;
   static_assert(kCapacity % 64 == 0, "capacity must be whole words");
   static constexpr std::uint32_t kWords = kCapacity / 64;
   using key_type = K;
   using value_type = K;
   using size_type = std::size_t;

   class const_iterator {
    public:
      using value_type = K;
      using reference = K;
      using difference_type = std::ptrdiff_t;
      using iterator_category = std::forward_iterator_tag;

      const_iterator() = default;
      const_iterator(const DenseIndexSet* set, std::uint32_t index) : set_(set), index_(index) {}
      K operator*() const { return Ix::key(index_); }
      const_iterator& operator++() {
         index_ = set_->nextFrom(index_ + 1);
         return *this;
      }
      const_iterator operator++(int) {
         const_iterator old = *this;
         ++*this;
         return old;
      }
      bool operator==(const const_iterator& o) const { return index_ == o.index_; }

    private:
      const DenseIndexSet* set_ = nullptr;
      std::uint32_t index_ = kCapacity;
   };
   using iterator = const_iterator;

   DenseIndexSet() = default;
   DenseIndexSet(DenseIndexSet&&) noexcept = default;
   DenseIndexSet& operator=(DenseIndexSet&&) noexcept = default;
   DenseIndexSet(const DenseIndexSet& o) : size_(o.size_) {
      if (o.bits_) {
         bits_ = std::make_unique<std::uint64_t[]>(kWords);
         std::memcpy(bits_.get(), o.bits_.get(), kWords * sizeof(std::uint64_t));
      }
   }
   DenseIndexSet& operator=(const DenseIndexSet& o) {
      if (this != &o) {
         DenseIndexSet copy(o);
         swap(copy);
      }
      return *this;
   }

   std::size_t size() const { return size_; }
   bool empty() const { return size_ == 0; }
   void reserve(std::size_t) {}

   const_iterator begin() const { return const_iterator(this, nextFrom(0)); }
   const_iterator end() const { return const_iterator(this, kCapacity); }
   // The first member not before `k`, and the first after it (end() when none); `k` itself need
   // not be a member. A walk that resumes after the key it just handled costs, over a whole walk,
   // one pass over the bitmap.
   const_iterator lower_bound(const K& k) const {
      const std::uint32_t i = Ix::index(k);
      return const_iterator(this, i < kCapacity ? nextFrom(i) : kCapacity);
   }
   const_iterator upper_bound(const K& k) const {
      const std::uint32_t i = Ix::index(k);
      return const_iterator(this, i < kCapacity ? nextFrom(i + 1) : kCapacity);
   }

   bool contains(const K& k) const {
      std::uint32_t i = Ix::index(k);
      return i < kCapacity && bits_ && (bits_[i >> 6] >> (i & 63)) & 1;
   }
   std::size_t count(const K& k) const { return contains(k) ? 1 : 0; }

   // Throws Kor::RangeError for a key without a slot.
   std::pair<const_iterator, bool> insert(const K& k) {
      std::uint32_t i = Ix::index(k);
      if (i >= kCapacity) {
         throw RangeError("key has no slot in a dense set");
      }
      if (!bits_) {
         bits_ = std::make_unique<std::uint64_t[]>(kWords);
      }
      std::uint64_t bit = std::uint64_t(1) << (i & 63);
      std::uint64_t& word = bits_[i >> 6];
      if (word & bit) {
         return {const_iterator(this, i), false};
      }
      word |= bit;
      ++size_;
      return {const_iterator(this, i), true};
   }
   template <class It>
   void insert(It first, It last) {
      for (; first != last; ++first) {
         insert(*first);
      }
   }
   std::size_t erase(const K& k) {
      if (!contains(k)) {
         return 0;
      }
      std::uint32_t i = Ix::index(k);
      bits_[i >> 6] &= ~(std::uint64_t(1) << (i & 63));
      --size_;
      return 1;
   }
   void clear() {
      bits_.reset();
      size_ = 0;
   }
   void swap(DenseIndexSet& o) noexcept {
      bits_.swap(o.bits_);
      std::swap(size_, o.size_);
   }

 private:
   std::uint32_t nextFrom(std::uint32_t i) const {
      if (!bits_ || i >= kCapacity || size_ == 0) {
         return kCapacity;
      }
      std::uint32_t w = i >> 6;
      std::uint64_t word = bits_[w] & (~std::uint64_t(0) << (i & 63));
      for (;;) {
         if (word) {
            return (w << 6) + static_cast<std::uint32_t>(std::countr_zero(word));
         }
         if (++w == kWords) {
            return kCapacity;
         }
         word = bits_[w];
      }
   }

   std::unique_ptr<std::uint64_t[]> bits_;
   std::size_t size_ = 0;
};

}  // namespace Kor
