#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
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
class LfibViaSet {
 public:
   static constexpr std::size_t kMaxVias = LfibViaIndexRange::max + 1;

   LfibViaSet() = default;
   explicit LfibViaSet(const LfibViaSetKey& key, LfibViaSetType viaSetType = viaSetTypeUnknown_)
       : key_(key), viaSetType_(viaSetType) {}
   // A set holding `vias` in positions 0 onwards; throws Kor::RangeError beyond 128 vias.
   LfibViaSet(const LfibViaSetKey& key, std::initializer_list<LfibViaKey> vias,
              LfibViaSetType viaSetType = viaSetTypeUnknown_);

   const LfibViaSetKey& key() const { return key_; }
   void keyIs(const LfibViaSetKey& v) { key_ = v; }
   LfibViaSetType viaSetType() const { return viaSetType_; }
   void viaSetTypeIs(LfibViaSetType v) { viaSetType_ = v; }

   const LfibViaKey& via(LfibViaIndexRange index) const { return via_[index.value()]; }
   void viaIs(LfibViaIndexRange index, const LfibViaKey& via) { via_[index.value()] = via; }
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
   std::array<LfibViaKey, kMaxVias> via_{};
   std::uint32_t vias_ = 0;
   LfibViaSetKey backupViaSetKey_;
};

std::ostream& operator<<(std::ostream& os, const LfibViaSet& viaSet);

}  // namespace Mpls
