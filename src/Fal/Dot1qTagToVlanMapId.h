#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

// The id that a platform's dot1q-tag-to-VLAN mapping allocator hands out for one mapping.
class Dot1qTagToVlanMapId {
 public:
   static constexpr std::uint32_t invalid = 0xFFFFFFFFu;

   constexpr Dot1qTagToVlanMapId() = default;
   constexpr explicit Dot1qTagToVlanMapId(std::uint32_t value) : value_(value) {}

   constexpr std::uint32_t value() const { return value_; }
   constexpr void valueIs(std::uint32_t v) { value_ = v; }
   constexpr bool isValid() const { return value_ != invalid; }

   constexpr bool operator==(const Dot1qTagToVlanMapId&) const = default;
   constexpr auto operator<=>(const Dot1qTagToVlanMapId&) const = default;
   std::size_t hash() const { return static_cast<std::size_t>(Kor::mixInt(value_)); }

   std::string stringValue() const { return std::to_string(value_); }
   // Throws Kor::ParseError for anything but a decimal 32-bit number.
   static Dot1qTagToVlanMapId parse(std::string_view text);

 private:
   std::uint32_t value_ = invalid;
};

inline std::ostream& operator<<(std::ostream& os, const Dot1qTagToVlanMapId& id) {
   return os << id.value();
}

}  // namespace Fal
