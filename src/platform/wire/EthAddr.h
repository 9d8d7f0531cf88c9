#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Wire {

// A 48-bit Ethernet MAC address. The all-zero address is the empty one ("no MAC known yet").
class EthAddr {
 public:
   using Bytes = std::array<std::uint8_t, 6>;

   constexpr EthAddr() = default;
   constexpr explicit EthAddr(const Bytes& bytes) : bytes_(bytes) {}

   constexpr const Bytes& bytes() const { return bytes_; }
   bool isZero() const { return *this == EthAddr(); }
   std::uint64_t value() const;

   constexpr bool operator==(const EthAddr&) const = default;
   constexpr auto operator<=>(const EthAddr&) const = default;
   std::size_t hash() const;

   // "00:11:22:33:44:55", lower case.
   std::string stringValue() const;
   // Six colon-separated pairs of hex digits, either case; throws Kor::ParseError.
   static EthAddr parse(std::string_view text);

 private:
   Bytes bytes_{};
};

std::ostream& operator<<(std::ostream& os, const EthAddr& addr);

}  // namespace Wire
