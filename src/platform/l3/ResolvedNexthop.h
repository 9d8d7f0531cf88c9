#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/kor/EnumRegistry.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>

#include "IpPrefix.h"

namespace Fal {

// How a watched address resolved. `connected`: the address is on a directly attached subnet and is
// its own next hop; `gateway`: it is reached through the route's next-hop router; `drop` and
// `receive`: the covering route discards or terminates the traffic, so there is no next hop to
// forward to; `unresolved`: no route covers the address.
enum class NexthopType : std::uint8_t {
   unresolved = 0,
   connected = 1,
   gateway = 2,
   drop = 3,
   receive = 4,
};

const Kor::EnumRegistry<NexthopType>& nexthopTypeRegistry();
// "unresolved", "connected", "gateway", "drop", "receive".
std::string stringValue(NexthopType type);
std::ostream& operator<<(std::ostream& os, NexthopType type);

// The resolution of one watched address, as the route resolver writes it into the L3 status
// (L3Status::resolvedV4 / resolvedV6): the route prefix that covered the address (its longest
// match), the next hop the address is reached through and the L3 interface towards it, and the
// kind of resolution. The default value is the unresolved one (no prefix, no next hop). A
// resolution through a default route (0.0.0.0/0, ::/0) is reported like any other and flagged by
// viaDefaultRoute(); whether it may be used is the reader's decision.
class ResolvedNexthop {
 public:
   ResolvedNexthop() = default;
   ResolvedNexthop(const L3::IpPrefix& prefix, const Wire::IpGenAddr& nexthop, Wire::IntfId l3Intf,
                   NexthopType nexthopType)
       : prefix_(prefix), nexthop_(nexthop), l3Intf_(l3Intf), nexthopType_(nexthopType) {}

   const L3::IpPrefix& prefix() const { return prefix_; }
   const Wire::IpGenAddr& nexthop() const { return nexthop_; }
   Wire::IntfId l3Intf() const { return l3Intf_; }
   NexthopType nexthopType() const { return nexthopType_; }

   // Some route covers the address.
   bool resolved() const { return nexthopType_ != NexthopType::unresolved; }
   // The covering route forwards to a next hop (connected or gateway), as opposed to dropping or
   // receiving the traffic.
   bool hasNexthop() const {
      return nexthopType_ == NexthopType::connected || nexthopType_ == NexthopType::gateway;
   }
   // The covering route is 0.0.0.0/0 or ::/0.
   bool viaDefaultRoute() const { return resolved() && prefix_.isDefaultRoute(); }

   bool operator==(const ResolvedNexthop&) const = default;
   std::size_t hash() const;

   // "Value('Fal::ResolvedNexthop', ** {'prefix': 10.0.0.0/8, 'nexthop': 10.1.1.1, 'l3Intf':
   // Ethernet1, 'nexthopType': gateway})".
   std::string stringValue() const;

 private:
   L3::IpPrefix prefix_;
   Wire::IpGenAddr nexthop_;
   Wire::IntfId l3Intf_;
   NexthopType nexthopType_ = NexthopType::unresolved;
};

std::ostream& operator<<(std::ostream& os, const ResolvedNexthop& resolved);

}  // namespace Fal
