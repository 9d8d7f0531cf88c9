#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Wire {

// An MPLS label: 20 bits carried in a 32-bit value. The value one past the largest label
// (1048576, 0x100000) means "no label"; it is the default, and it is what empty positions of a
// label stack hold. Values above it cannot be built. Plain value, freely copied.
class MplsLabel {
 public:
   static constexpr std::uint32_t kMax = 0xFFFFF;
   static constexpr std::uint32_t kNoLabel = 0x100000;

   constexpr MplsLabel() = default;
   // Throws Kor::RangeError above the no-label value.
   explicit MplsLabel(std::uint32_t value);

   static constexpr MplsLabel noLabel() { return MplsLabel(); }

   constexpr std::uint32_t value() const { return value_; }
   constexpr bool isValid() const { return value_ <= kMax; }

   constexpr bool operator==(const MplsLabel&) const = default;
   constexpr auto operator<=>(const MplsLabel&) const = default;
   std::size_t hash() const;

   // Decimal, the no-label value included.
   std::string stringValue() const;
   // Reverse of stringValue(); throws Kor::ParseError.
   static MplsLabel parse(std::string_view text);

 private:
   std::uint32_t value_ = kNoLabel;
};

std::ostream& operator<<(std::ostream& os, const MplsLabel& label);

}  // namespace Wire
