#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Bridging {

// A VLAN id as the 12-bit tag field carries it. Any 12-bit value can be held (0 is "no VLAN",
// the default; 4095 is reserved); isValid() says whether it names a usable VLAN (1 to 4094).
// Values above 4095 cannot be built.
class VlanId {
 public:
   static constexpr std::uint16_t kMin = 0;
   static constexpr std::uint16_t kMax = 4095;

   constexpr VlanId() = default;
   // Throws Kor::RangeError above 4095.
   explicit VlanId(std::uint16_t value);

   constexpr std::uint16_t value() const { return value_; }
   constexpr bool isValid() const { return value_ >= 1 && value_ <= 4094; }

   constexpr bool operator==(const VlanId&) const = default;
   constexpr auto operator<=>(const VlanId&) const = default;
   std::size_t hash() const;

   std::string stringValue() const;
   static VlanId parse(std::string_view text);

 private:
   std::uint16_t value_ = 0;
};

std::ostream& operator<<(std::ostream& os, const VlanId& vlanId);

// A VLAN id where "none" is an expected answer (a dot1q tag that maps to no VLAN): 0 is none and
// the default. Same bounds as VlanId, from which it converts implicitly.
class VlanIdOrNone {
 public:
   constexpr VlanIdOrNone() = default;
   explicit VlanIdOrNone(std::uint16_t value) : vlanId_(value) {}
   constexpr VlanIdOrNone(VlanId vlanId) : vlanId_(vlanId) {}

   static constexpr VlanIdOrNone none() { return VlanIdOrNone(); }

   constexpr bool isNone() const { return vlanId_.value() == 0; }
   constexpr VlanId vlanId() const { return vlanId_; }
   constexpr std::uint16_t value() const { return vlanId_.value(); }

   constexpr bool operator==(const VlanIdOrNone&) const = default;
   constexpr auto operator<=>(const VlanIdOrNone&) const = default;
   std::size_t hash() const { return vlanId_.hash(); }

   // The number, or "none".
   std::string stringValue() const;
   static VlanIdOrNone parse(std::string_view text);

 private:
   VlanId vlanId_;
};

std::ostream& operator<<(std::ostream& os, const VlanIdOrNone& vlanId);

}  // namespace Bridging
