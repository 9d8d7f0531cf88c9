#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>

namespace Fal {

// A next hop on an interface: the key of a transit next hop. An empty interface means the next hop
// is resolved through the route resolver rather than on a named interface.
class IpAddrIntfId {
 public:
   IpAddrIntfId() = default;
   IpAddrIntfId(const Wire::IpGenAddr& ipGenAddr, Wire::IntfId l3Intf)
       : ipGenAddr_(ipGenAddr), l3Intf_(l3Intf) {}

   const Wire::IpGenAddr& ipGenAddr() const { return ipGenAddr_; }
   Wire::IntfId l3Intf() const { return l3Intf_; }

   bool operator==(const IpAddrIntfId&) const = default;
   bool operator<(const IpAddrIntfId& o) const {
      if (!(ipGenAddr_ == o.ipGenAddr_)) {
         return ipGenAddr_ < o.ipGenAddr_;
      }
      return l3Intf_ < o.l3Intf_;
   }
   bool operator!() const { return ipGenAddr_.empty() && l3Intf_.empty(); }
   std::size_t hash() const { return Kor::hashCombine(ipGenAddr_.hash(), l3Intf_.value()); }

   // "Value('Fal::IpAddrIntfId', ** {'ipGenAddr': <addr>, 'l3Intf': <intf>})".
   std::string stringValue() const;
   static IpAddrIntfId parse(std::string_view text);

 private:
   Wire::IpGenAddr ipGenAddr_;
   Wire::IntfId l3Intf_;
};

inline std::ostream& operator<<(std::ostream& os, const IpAddrIntfId& v) {
   return os << v.stringValue();
}

}  // namespace Fal
