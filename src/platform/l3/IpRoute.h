#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include <mplsfwd/kor/EnumRegistry.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>

namespace Routing::Hardware {

// What a hardware IP route does with matching traffic. `connected`: the prefix is a directly
// attached subnet, each address is its own next hop; `gateway`: forward to the route's next-hop
// router; `drop`: discard; `receive`: deliver to the switch itself. `unknown` is only the default
// of an absent route and is never stored.
enum class RouteType : std::uint8_t {
   unknown = 0,
   connected = 1,
   gateway = 2,
   drop = 3,
   receive = 4,
};

const Kor::EnumRegistry<RouteType>& routeTypeRegistry();
// "unknown", "connected", "gateway", "drop", "receive".
std::string stringValue(RouteType type);
std::ostream& operator<<(std::ostream& os, RouteType type);

// One IP route as the hardware holds it (the value of RouteStatus's route table): its type, and
// for a gateway route the next-hop router; the L3 interface the traffic leaves on (for connected
// and gateway routes).
class IpRoute {
 public:
   IpRoute() = default;
   IpRoute(RouteType routeType, const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf)
       : routeType_(routeType), nextHop_(nextHop), l3Intf_(l3Intf) {}

   static IpRoute connected(Wire::IntfId l3Intf) {
      return IpRoute(RouteType::connected, Wire::IpGenAddr(), l3Intf);
   }
   static IpRoute gateway(const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf) {
      return IpRoute(RouteType::gateway, nextHop, l3Intf);
   }
   static IpRoute drop() { return IpRoute(RouteType::drop, Wire::IpGenAddr(), Wire::IntfId()); }
   static IpRoute receive() {
      return IpRoute(RouteType::receive, Wire::IpGenAddr(), Wire::IntfId());
   }

   RouteType routeType() const { return routeType_; }
   const Wire::IpGenAddr& nextHop() const { return nextHop_; }
   Wire::IntfId l3Intf() const { return l3Intf_; }

   bool operator==(const IpRoute&) const = default;
   std::size_t hash() const;

   // "Value('Routing::Hardware::IpRoute', ** {'routeType': gateway, 'nextHop': 10.0.0.1,
   // 'l3Intf': Ethernet1})".
   std::string stringValue() const;

 private:
   RouteType routeType_ = RouteType::unknown;
   Wire::IpGenAddr nextHop_;
   Wire::IntfId l3Intf_;
};

std::ostream& operator<<(std::ostream& os, const IpRoute& route);

}  // namespace Routing::Hardware
