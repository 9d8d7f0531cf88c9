#include "IpPrefix.h"

#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace L3 {

namespace {

// The address with its bytes rewritten; IPv4 keeps only its first four bytes meaningful.
Wire::IpGenAddr withBytes(const Wire::IpGenAddr& addr, const Wire::IpGenAddr::Bytes& bytes) {
   if (addr.af() == Wire::ipv4()) {
      std::uint32_t v = (std::uint32_t(bytes[0]) << 24) | (std::uint32_t(bytes[1]) << 16) |
                        (std::uint32_t(bytes[2]) << 8) | std::uint32_t(bytes[3]);
      return Wire::IpGenAddr(Wire::IpAddr(v));
   }
   return Wire::IpGenAddr::ipv6(bytes);
}

// Sets (fill true) or clears every bit past `length` within the family's width.
Wire::IpGenAddr hostBits(const Wire::IpGenAddr& addr, std::uint8_t length, bool fill) {
   Wire::IpGenAddr::Bytes bytes = addr.bytes();
   std::size_t width = IpPrefix::maxLength(addr.af()) / 8;
   for (std::size_t i = 0; i < width; ++i) {
      std::size_t bitsKept = length > i * 8 ? length - i * 8 : 0;
      if (bitsKept >= 8) {
         continue;
      }
      auto keepMask = static_cast<std::uint8_t>(0xFF << (8 - bitsKept));
      bytes[i] = fill ? static_cast<std::uint8_t>(bytes[i] | ~keepMask)
                      : static_cast<std::uint8_t>(bytes[i] & keepMask);
   }
   return withBytes(addr, bytes);
}

}  // namespace

IpPrefix::IpPrefix(const Wire::IpGenAddr& addr, std::uint8_t length) : length_(length) {
   if (addr.empty()) {
      throw Kor::RangeError("IpPrefix needs an IPv4 or IPv6 address");
   }
   if (length > maxLength(addr.af())) {
      throw Kor::RangeError("IpPrefix::length > " + std::to_string(maxLength(addr.af())) +
                            " not allowed for " + Wire::stringValue(addr.af()));
   }
   address_ = masked(addr, length);
}

std::uint8_t IpPrefix::maxLength(Wire::AddressFamily af) {
   switch (af) {
      case Wire::AddressFamily::ipv4:
         return 32;
      case Wire::AddressFamily::ipv6:
         return 128;
      case Wire::AddressFamily::ipunknown:
         break;
   }
   return 0;
}

Wire::IpGenAddr IpPrefix::masked(const Wire::IpGenAddr& addr, std::uint8_t length) {
   if (addr.empty() || length >= maxLength(addr.af())) {
      return addr;
   }
   return hostBits(addr, length, false);
}

bool IpPrefix::contains(const Wire::IpGenAddr& addr) const {
   return !empty() && addr.af() == af() && masked(addr, length_) == address_;
}

Wire::IpGenAddr IpPrefix::lastAddress() const {
   if (empty()) {
      return address_;
   }
   return hostBits(address_, length_, true);
}

bool IpPrefix::operator<(const IpPrefix& o) const {
   if (address_ != o.address_) {
      return address_ < o.address_;
   }
   return length_ < o.length_;
}

std::size_t IpPrefix::hash() const {
   return Kor::hashCombine(address_.hash(), length_);
}

std::string IpPrefix::stringValue() const {
   if (empty()) {
      return "";
   }
   return address_.stringValue() + "/" + std::to_string(length_);
}

IpPrefix IpPrefix::parse(std::string_view text) {
   if (text.empty()) {
      return IpPrefix();
   }
   std::size_t slash = text.rfind('/');
   if (slash == std::string_view::npos) {
      throw Kor::ParseError("cannot parse '" + std::string(text) + "' as IpPrefix");
   }
   Wire::IpGenAddr addr = Wire::IpGenAddr::parse(text.substr(0, slash));
   if (addr.empty()) {
      throw Kor::ParseError("cannot parse '" + std::string(text) + "' as IpPrefix");
   }
   auto length = Kor::parseUnsigned(text.substr(slash + 1), 255, "IpPrefix length");
   return IpPrefix(addr, static_cast<std::uint8_t>(length));
}

std::ostream& operator<<(std::ostream& os, const IpPrefix& prefix) {
   return os << prefix.stringValue();
}

}  // namespace L3
