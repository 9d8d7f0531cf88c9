#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Wire {

// An IPv4 address in host byte order. The zero address "0.0.0.0" is the default.
class IpAddr {
 public:
   constexpr IpAddr() = default;
   constexpr explicit IpAddr(std::uint32_t value) : value_(value) {}

   constexpr std::uint32_t value() const { return value_; }
   constexpr bool isZero() const { return value_ == 0; }

   constexpr bool operator==(const IpAddr&) const = default;
   constexpr auto operator<=>(const IpAddr&) const = default;
   std::size_t hash() const;

   // Dotted quad, "10.0.0.1".
   std::string stringValue() const;
   // Strict dotted quad: four decimal parts 0..255 without leading zeros; throws Kor::ParseError.
   static IpAddr parse(std::string_view text);

 private:
   std::uint32_t value_ = 0;
};

std::ostream& operator<<(std::ostream& os, const IpAddr& addr);

}  // namespace Wire
