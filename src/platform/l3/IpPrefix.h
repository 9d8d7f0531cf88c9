#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/wire/IpGenAddr.h>

namespace L3 {

// An IP prefix: an address of either family and a prefix length. The address is stored masked to
// the length, so "10.1.2.3/8" and "10.0.0.0/8" are the same prefix and a prefix can key a table of
// routes directly. The default prefix is the empty one (empty address, length 0), which stands for
// "no prefix"; every other prefix has an IPv4 or IPv6 address and a length within its family's
// width, so a prefix in hand is always well formed.
class IpPrefix {
 public:
   IpPrefix() = default;
   // Throws Kor::RangeError for the empty address or a length beyond the family's width.
   IpPrefix(const Wire::IpGenAddr& addr, std::uint8_t length);

   // 32 for IPv4, 128 for IPv6, 0 for the empty family.
   static std::uint8_t maxLength(Wire::AddressFamily af);
   // `addr` with every bit past the first `length` cleared; `length` must be within the width.
   static Wire::IpGenAddr masked(const Wire::IpGenAddr& addr, std::uint8_t length);

   const Wire::IpGenAddr& address() const { return address_; }
   std::uint8_t length() const { return length_; }
   Wire::AddressFamily af() const { return address_.af(); }
   bool empty() const { return address_.empty(); }
   bool operator!() const { return empty(); }
   // 0.0.0.0/0 or ::/0.
   bool isDefaultRoute() const { return !empty() && length_ == 0; }
   // A /32 or a /128.
   bool isHost() const { return !empty() && length_ == maxLength(af()); }
   // True when `addr` is of the prefix's family and its first length() bits match.
   bool contains(const Wire::IpGenAddr& addr) const;
   // The highest address the prefix covers (the address itself for a host prefix).
   Wire::IpGenAddr lastAddress() const;

   bool operator==(const IpPrefix&) const = default;
   // By address (family first), then by length.
   bool operator<(const IpPrefix& o) const;
   std::size_t hash() const;

   // "10.0.0.0/8", "2001:db8::/32"; "" for the empty prefix.
   std::string stringValue() const;
   // Reverse of stringValue(); the address is masked like the constructor does. Throws
   // Kor::ParseError for bad text and Kor::RangeError for a length too long for the family.
   static IpPrefix parse(std::string_view text);

 private:
   Wire::IpGenAddr address_;
   std::uint8_t length_ = 0;
};

std::ostream& operator<<(std::ostream& os, const IpPrefix& prefix);

}  // namespace L3
