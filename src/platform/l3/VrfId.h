#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

// The platform's numeric VRF id: the key of the per-VRF hardware tables and of the L3 status's
// VRF-name table.
class VrfId {
 public:
   constexpr VrfId() = default;
   constexpr explicit VrfId(std::uint32_t value) : value_(value) {}

   constexpr std::uint32_t value() const { return value_; }
   constexpr bool operator==(const VrfId&) const = default;
   constexpr auto operator<=>(const VrfId&) const = default;
   std::size_t hash() const { return static_cast<std::size_t>(Kor::mixInt(value_)); }
   std::string stringValue() const { return std::to_string(value_); }

 private:
   std::uint32_t value_ = 0;
};

inline std::ostream& operator<<(std::ostream& os, const VrfId& v) {
   return os << v.value();
}

}  // namespace Fal
