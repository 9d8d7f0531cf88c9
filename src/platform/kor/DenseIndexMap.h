#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>

#include "Errors.h"

namespace Kor {

// How a key that is really a small integer maps onto a slot of a dense table. A key type that
// wants dense tables specialises it with:
//   static constexpr std::uint32_t kCapacity;      number of slots, a multiple of 1024
//   static std::uint32_t index(const K&);          kCapacity or more for keys that have no slot
//   static K key(std::uint32_t index);
template <class K>
struct DenseIndex;

// A map from keys with a dense integer index (an MPLS label, say) to values, stored as an array
// indexed by the key. Lookup, insertion and erasure are one array access, with no hashing and no
// probing, and iteration runs in key order. The array is cut into pages of 1024 slots that are
// allocated when their first key arrives and freed when their last key goes, so a map over a few
// clustered keys stays small while a full key space costs the values plus one bit per slot.
//
// Absent slots hold a default-constructed value, so V must be default-constructible and cheap to
// hold in bulk. The interface is the subset of the hash maps' that the library uses; values stay
// where they are while their page lives, but like the open-addressing tables, code must not keep
// references or iterators across an erase. Iterators dereference to a pair of the key and a
// reference to the value, by value: bind them with `const auto&` or `auto`.
template <class K, class V, class Ix = DenseIndex<K>>
class DenseIndexMap {
   static constexpr std::uint32_t kPageBits = 10;
   static constexpr std::uint32_t kPageSize = 1u << kPageBits;
   static constexpr std::uint32_t kWordsPerPage = kPageSize / 64;

 public:
   static constexpr std::uint32_t kCapacity = Ix::kCapacity;
   static_assert(kCapacity % kPageSize == 0, "capacity must be whole pages");

   using key_type = K;
   using mapped_type = V;
   using size_type = std::size_t;

   template <bool Const>
   class Iter {
      using MapT = std::conditional_t<Const, const DenseIndexMap, DenseIndexMap>;
      using Ref = std::conditional_t<Const, const V&, V&>;

    public:
      using value_type = std::pair<K, Ref>;
      using reference = value_type;
      using difference_type = std::ptrdiff_t;
      using iterator_category = std::forward_iterator_tag;
      struct Arrow {
         value_type entry;
         const value_type* operator->() const { return &entry; }
      };

      Iter() = default;
      Iter(MapT* map, std::uint32_t index) : map_(map), index_(index) {}
      // Mutable to const.
      template <bool C = Const, class = std::enable_if_t<C>>
      Iter(const Iter<false>& o) : map_(o.map_), index_(o.index_) {}

      K key() const { return Ix::key(index_); }
      Ref value() const { return map_->slot(index_); }
      value_type operator*() const { return {key(), value()}; }
      Arrow operator->() const { return Arrow{**this}; }
      Iter& operator++() {
         index_ = map_->nextFrom(index_ + 1);
         return *this;
      }
      Iter operator++(int) {
         Iter old = *this;
         ++*this;
         return old;
      }
      bool operator==(const Iter& o) const { return index_ == o.index_; }

    private:
      friend class DenseIndexMap;
      friend class Iter<!Const>;
      MapT* map_ = nullptr;
      std::uint32_t index_ = kCapacity;
   };
   using iterator = Iter<false>;
   using const_iterator = Iter<true>;

   DenseIndexMap() = default;
   DenseIndexMap(DenseIndexMap&&) noexcept = default;
   DenseIndexMap& operator=(DenseIndexMap&&) noexcept = default;
   DenseIndexMap(const DenseIndexMap& o) {
      for (const auto& [k, v] : o) {
         try_emplace(k, v);
      }
   }
   DenseIndexMap& operator=(const DenseIndexMap& o) {
      if (this != &o) {
         DenseIndexMap copy(o);
         swap(copy);
      }
      return *this;
   }

   std::size_t size() const { return size_; }
   bool empty() const { return size_ == 0; }
   // Nothing to make room for: kept so that callers can treat all per-route maps alike.
   void reserve(std::size_t) {}

   iterator begin() { return iterator(this, nextFrom(0)); }
   iterator end() { return iterator(this, kCapacity); }
   const_iterator begin() const { return const_iterator(this, nextFrom(0)); }
   const_iterator end() const { return const_iterator(this, kCapacity); }
   const_iterator cbegin() const { return begin(); }
   const_iterator cend() const { return end(); }

   bool contains(const K& k) const {
      std::uint32_t i = Ix::index(k);
      return i < kCapacity && occupied(i);
   }
   std::size_t count(const K& k) const { return contains(k) ? 1 : 0; }
   iterator find(const K& k) {
      std::uint32_t i = Ix::index(k);
      return iterator(this, i < kCapacity && occupied(i) ? i : kCapacity);
   }
   const_iterator find(const K& k) const {
      std::uint32_t i = Ix::index(k);
      return const_iterator(this, i < kCapacity && occupied(i) ? i : kCapacity);
   }

   // Throws Kor::RangeError for a key without a slot.
   template <class... Args>
   std::pair<iterator, bool> try_emplace(const K& k, Args&&... args) {
      std::uint32_t i = checkedIndex(k);
      Page& page = pageFor(i);
      std::uint32_t off = i & (kPageSize - 1);
      std::uint64_t bit = std::uint64_t(1) << (off & 63);
      std::uint64_t& word = page.bits[off >> 6];
      if (word & bit) {
         return {iterator(this, i), false};
      }
      page.values[off] = V(std::forward<Args>(args)...);
      word |= bit;
      ++page.count;
      ++size_;
      return {iterator(this, i), true};
   }
   std::pair<iterator, bool> insert(const std::pair<K, V>& entry) {
      return try_emplace(entry.first, entry.second);
   }
   template <class M>
   std::pair<iterator, bool> insert_or_assign(const K& k, M&& v) {
      auto result = try_emplace(k);
      result.first.value() = std::forward<M>(v);
      return result;
   }
   V& operator[](const K& k) { return try_emplace(k).first.value(); }

   std::size_t erase(const K& k) {
      std::uint32_t i = Ix::index(k);
      if (i >= kCapacity || !occupied(i)) {
         return 0;
      }
      eraseAt(i);
      return 1;
   }
   iterator erase(const_iterator it) {
      std::uint32_t i = it.index_;
      eraseAt(i);
      return iterator(this, nextFrom(i + 1));
   }
   iterator erase(iterator it) { return erase(const_iterator(it)); }

   void clear() {
      pages_.reset();
      size_ = 0;
   }
   void swap(DenseIndexMap& o) noexcept {
      pages_.swap(o.pages_);
      std::swap(size_, o.size_);
   }

   bool operator==(const DenseIndexMap& o) const {
      if (size_ != o.size_) {
         return false;
      }
      for (auto a = begin(), b = o.begin(); a != end(); ++a, ++b) {
         if (a.index_ != b.index_ || !(a.value() == b.value())) {
            return false;
         }
      }
      return true;
   }

 private:
   struct Page {
      std::array<V, kPageSize> values{};
      std::array<std::uint64_t, kWordsPerPage> bits{};
      std::uint32_t count = 0;
   };
   static constexpr std::uint32_t kPages = kCapacity / kPageSize;

   static std::uint32_t checkedIndex(const K& k) {
      std::uint32_t i = Ix::index(k);
      if (i >= kCapacity) {
         throw RangeError("key has no slot in a dense table");
      }
      return i;
   }
   const Page* page(std::uint32_t i) const {
      return pages_ ? pages_[i >> kPageBits].get() : nullptr;
   }
   bool occupied(std::uint32_t i) const {
      const Page* p = page(i);
      std::uint32_t off = i & (kPageSize - 1);
      return p && (p->bits[off >> 6] >> (off & 63)) & 1;
   }
   Page& pageFor(std::uint32_t i) {
      if (!pages_) {
         pages_ = std::make_unique<std::unique_ptr<Page>[]>(kPages);
      }
      auto& p = pages_[i >> kPageBits];
      if (!p) {
         p = std::make_unique<Page>();
      }
      return *p;
   }
   V& slot(std::uint32_t i) { return pages_[i >> kPageBits]->values[i & (kPageSize - 1)]; }
   const V& slot(std::uint32_t i) const {
      return pages_[i >> kPageBits]->values[i & (kPageSize - 1)];
   }
   void eraseAt(std::uint32_t i) {
      auto& p = pages_[i >> kPageBits];
      std::uint32_t off = i & (kPageSize - 1);
      p->bits[off >> 6] &= ~(std::uint64_t(1) << (off & 63));
      --size_;
      if (--p->count == 0) {
         p.reset();
         if (size_ == 0) {
            pages_.reset();
         }
         return;
      }
      // Let go of what the value holds (references, say) now rather than when the slot is reused.
      p->values[off] = V();
   }
   // The first occupied index at or after i, or kCapacity.
   std::uint32_t nextFrom(std::uint32_t i) const {
      if (!pages_) {
         return kCapacity;
      }
      while (i < kCapacity) {
         std::uint32_t pageIndex = i >> kPageBits;
         const Page* p = pages_[pageIndex].get();
         if (p) {
            std::uint32_t off = i & (kPageSize - 1);
            std::uint32_t w = off >> 6;
            std::uint64_t bits = p->bits[w] & (~std::uint64_t(0) << (off & 63));
            for (;;) {
               if (bits) {
                  return (pageIndex << kPageBits) + (w << 6) +
                         static_cast<std::uint32_t>(std::countr_zero(bits));
               }
               if (++w == kWordsPerPage) {
                  break;
               }
               bits = p->bits[w];
            }
         }
         i = (pageIndex + 1) << kPageBits;
      }
      return kCapacity;
   }

   std::unique_ptr<std::unique_ptr<Page>[]> pages_;
   std::size_t size_ = 0;
};

}  // namespace Kor
