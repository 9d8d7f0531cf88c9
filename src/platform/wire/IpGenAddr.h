#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "IpAddr.h"

namespace Wire {

enum class AddressFamily : std::uint8_t {
   ipunknown = 0,
   ipv4 = 4,
   ipv6 = 6,
};

constexpr AddressFamily ipv4() {
   return AddressFamily::ipv4;
}
constexpr AddressFamily ipv6() {
   return AddressFamily::ipv6;
}
std::string stringValue(AddressFamily af);
std::ostream& operator<<(std::ostream& os, AddressFamily af);

// An IP address of either family, or the empty address (family ipunknown) that stands for "no
// address". The bytes are in network order; for IPv4 only the first four are used and the rest
// stay zero, so that equality and hashing can look at all of them. Ordering is by family (empty,
// then IPv4, then IPv6) and then by the bytes, i.e. numerically within a family.
class IpGenAddr {
 public:
   using Bytes = std::array<std::uint8_t, 16>;

   IpGenAddr() = default;
   IpGenAddr(IpAddr v4);
   static IpGenAddr ipv6(const Bytes& bytes);

   AddressFamily af() const { return af_; }
   bool empty() const { return af_ == AddressFamily::ipunknown; }
   bool operator!() const { return empty(); }
   const Bytes& bytes() const { return bytes_; }
   // The IPv4 address; the zero address for another family.
   IpAddr v4Addr() const;
   bool isZero() const;

   bool operator==(const IpGenAddr&) const = default;
   bool operator<(const IpGenAddr& o) const;
   std::size_t hash() const;

   // "10.0.0.1"; IPv6 in its canonical short form ("2001:db8::1", lower case, the longest run of
   // two or more zero groups shortened, the first of equal runs); "" for the empty address.
   std::string stringValue() const;
   // Dotted quad or IPv6 notation (with "::" and a trailing dotted quad); "" gives the empty
   // address. Throws Kor::ParseError.
   static IpGenAddr parse(std::string_view text);

 private:
   AddressFamily af_ = AddressFamily::ipunknown;
   Bytes bytes_{};
};

std::ostream& operator<<(std::ostream& os, const IpGenAddr& addr);

}  // namespace Wire
