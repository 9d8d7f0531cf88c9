#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <string>

#include "LfibKeys.h"
#include "LfibTypes.h"

namespace Mpls {

// The position of a via inside a via set: 0 to 127. Out-of-bounds values cannot be built or set.
class LfibViaIndexRange {
 public:
   static constexpr std::uint32_t min = 0;
   static constexpr std::uint32_t max = 127;

   constexpr LfibViaIndexRange() = default;
   // Throws Kor::RangeError outside [min, max].
   LfibViaIndexRange(std::uint32_t value);  // NOLINT: positions are written as plain numbers

   constexpr std::uint32_t value() const { return value_; }
   void valueIs(std::uint32_t value);

   constexpr bool operator==(const LfibViaIndexRange&) const = default;
   constexpr auto operator<=>(const LfibViaIndexRange&) const = default;
   std::size_t hash() const;

 private:
   std::uint32_t value_ = 0;
};

std::ostream& operator<<(std::ostream& os, const LfibViaIndexRange& index);

// One via set of the LFIB: its key, its type, the keys of its vias in positions 0 to vias()-1
// and the via set to fall back to. A set with no vias is a valid record (the forwarding layers
// reject it, not the record). Positions at or beyond vias() are not part of the set: equality
// and text ignore whatever they hold.
//
// The first kInlineVias positions live in the record; writing a position past them moves all
// 128 to one heap block. A decap route has a via set of one via of its own, so a million of them
// are a million records: 128 positions in every record made each 1.6 KB.
class LfibViaSet {
 public:
   static constexpr std::size_t kMaxVias = LfibViaIndexRange::max + 1;
   static constexpr std::size_t kInlineVias = 4;

   LfibViaSet() = default;
   explicit LfibViaSet(const LfibViaSetKey& key, LfibViaSetType viaSetType = viaSetTypeUnknown_)
       : key_(key), viaSetType_(viaSetType) {}
   // A set holding `vias` in positions 0 onwards; throws Kor::RangeError beyond 128 vias.
   LfibViaSet(const LfibViaSetKey& key, std::initializer_list<LfibViaKey> vias,
              LfibViaSetType viaSetType = viaSetTypeUnknown_);
   LfibViaSet(const LfibViaSet& o);
   LfibViaSet& operator=(const LfibViaSet& o);
   LfibViaSet(LfibViaSet&&) noexcept = default;
   LfibViaSet& operator=(LfibViaSet&&) noexcept = default;
   ~LfibViaSet() = default;

   const LfibViaSetKey& key() const { return key_; }
   void keyIs(const LfibViaSetKey& v) { key_ = v; }
   LfibViaSetType viaSetType() const { return viaSetType_; }
   void viaSetTypeIs(LfibViaSetType v) { viaSetType_ = v; }

   const LfibViaKey& via(LfibViaIndexRange index) const {
      const std::uint32_t i = index.value();
      if (spill_) {
         return spill_[i];
      }
      return i < kInlineVias ? inline_[i] : kNoVia;
   }
   void viaIs(LfibViaIndexRange index, const LfibViaKey& via);
   // Appends a via at position vias(); throws Kor::RangeError when all 128 positions are used.
   void viaAppend(const LfibViaKey& via);
   std::uint32_t vias() const { return vias_; }
   // Throws Kor::RangeError above 128.
   void viasIs(std::uint32_t count);

   const LfibViaSetKey& backupViaSetKey() const { return backupViaSetKey_; }
   void backupViaSetKeyIs(const LfibViaSetKey& v) { backupViaSetKey_ = v; }
   bool hasBackup() const { return !(backupViaSetKey_ == LfibViaSetKey()); }

   bool operator==(const LfibViaSet& o) const;
   std::size_t hash() const;

   // "lFib viaSet index 5 source static viaType viaTypeMplsIp viaSetType viaSetTypeEcmp vias 2:
   // [0] via ..., [1] via ... backup index 0 source unknown viaType viaTypeInvalid".
   std::string stringValue() const;

 private:
   LfibViaSetKey key_;
   LfibViaSetType viaSetType_ = viaSetTypeUnknown_;
   static const LfibViaKey kNoVia;
   const LfibViaKey* viaData() const { return spill_ ? spill_.get() : inline_.data(); }
   // Moves the positions to the heap block; a no-op when they are there already.
   void spill();

   std::uint32_t vias_ = 0;
   LfibViaSetKey backupViaSetKey_;
   std::array<LfibViaKey, kInlineVias> inline_{};
   // All kMaxVias positions, once one past the inline ones was written; null before.
   std::unique_ptr<LfibViaKey[]> spill_;
};

std::ostream& operator<<(std::ostream& os, const LfibViaSet& viaSet);

}  // namespace Mpls
