#pragma once

#include <cstddef>
#include <utility>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

#include "IpRoute.h"
#include "IpRouteKey.h"

namespace Routing::Hardware {

// The IP routes the hardware holds, per VRF: IpRouteKey (VRF and prefix) -> IpRoute. Written by
// the platform (or a simulator) as routes are programmed and removed; read by the route resolver,
// which resolves watched next-hop addresses against it. Change-only: rewriting a route with the
// same value is silent, a delete of an absent route is silent, a delete-all goes route by route.
// Every stored route has a prefix and a known type, and a gateway route a next hop of the
// prefix's family; routeIs refuses anything else with Kor::RangeError.
class RouteStatus : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<RouteStatus> {
    public:
      using Kor::Notifiee<RouteStatus>::Notifiee;
      virtual void onRoute(const IpRouteKey&) {}
   };
   using RouteMap = Kor::HashMap<IpRouteKey, IpRoute>;

   explicit RouteStatus(Kor::Name name) : Kor::Entity(std::move(name)) {}

   // The default route value (type unknown) for an absent key.
   IpRoute route(const IpRouteKey& key) const;
   bool routeHas(const IpRouteKey& key) const { return route_.contains(key); }
   void routeIs(const IpRouteKey& key, const IpRoute& route);
   void routeDel(const IpRouteKey& key);
   void routeDelAll();
   std::size_t routes() const { return route_.size(); }
   const RouteMap& routeMap() const { return route_; }

 private:
   RouteMap route_;
};

}  // namespace Routing::Hardware
