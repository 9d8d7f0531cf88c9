#include "IpRoute.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Routing::Hardware {

const Kor::EnumRegistry<RouteType>& routeTypeRegistry() {
   static const Kor::EnumRegistry<RouteType> registry("Routing::Hardware::RouteType",
                                                      {
                                                          {RouteType::unknown, "unknown"},
                                                          {RouteType::connected, "connected"},
                                                          {RouteType::gateway, "gateway"},
                                                          {RouteType::drop, "drop"},
                                                          {RouteType::receive, "receive"},
                                                      });
   return registry;
}

std::string stringValue(RouteType type) {
   return routeTypeRegistry().name(type);
}

std::ostream& operator<<(std::ostream& os, RouteType type) {
   return os << stringValue(type);
}

std::size_t IpRoute::hash() const {
   std::size_t h = Kor::mixInt(static_cast<std::uint64_t>(routeType_));
   h = Kor::hashCombine(h, nextHop_.hash());
   return Kor::hashCombine(h, l3Intf_.value());
}

std::string IpRoute::stringValue() const {
   return "Value('Routing::Hardware::IpRoute', ** {'routeType': " +
          Routing::Hardware::stringValue(routeType_) + ", 'nextHop': " + nextHop_.stringValue() +
          ", 'l3Intf': " + l3Intf_.stringValue() + "})";
}

std::ostream& operator<<(std::ostream& os, const IpRoute& route) {
   return os << route.stringValue();
}

}  // namespace Routing::Hardware
