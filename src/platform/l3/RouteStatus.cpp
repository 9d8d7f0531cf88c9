#include "RouteStatus.h"

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Errors.h>

namespace Routing::Hardware {

IpRoute RouteStatus::route(const IpRouteKey& key) const {
   return Kor::mapValueOr(route_, key);
}

void RouteStatus::routeIs(const IpRouteKey& key, const IpRoute& route) {
   if (key.prefix().empty()) {
      throw Kor::RangeError("RouteStatus::routeIs needs a prefix");
   }
   if (route.routeType() == RouteType::unknown) {
      throw Kor::RangeError("RouteStatus::routeIs needs a route type, got unknown for " +
                            key.prefix().stringValue());
   }
   if (route.routeType() == RouteType::gateway && route.nextHop().af() != key.prefix().af()) {
      throw Kor::RangeError("RouteStatus::routeIs: gateway route " + key.prefix().stringValue() +
                            " needs a next hop of its family, got '" +
                            route.nextHop().stringValue() + "'");
   }
   if (Kor::mapAssignIfChanged(route_, key, route)) {
      notify(&NotifieeConst::onRoute, key);
   }
}

void RouteStatus::routeDel(const IpRouteKey& key) {
   if (route_.erase(key)) {
      notify(&NotifieeConst::onRoute, key);
   }
}

void RouteStatus::routeDelAll() {
   Kor::deleteEachKey(route_, [this](const IpRouteKey& k) { routeDel(k); });
}

}  // namespace Routing::Hardware
