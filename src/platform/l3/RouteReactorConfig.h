#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include <mplsfwd/kor/Entity.h>

#include "VrfAndIpAddr.h"
#include "WatchedAddrSet.h"

namespace Fal {

// The IPv4 addresses whose route resolution somebody wants, per VRF. A user (e.g. the transit
// MPLS state machine, for next hops named without an interface) calls addWatchedAddr when it
// starts depending on an address and removeWatchedAddr when it stops; the entry is counted per
// user and stays watched until the last one has gone. The route resolver watches onWatchedAddr,
// raised when an address starts or stops being watched or its host-route-only flag widens, and
// publishes the resolution in L3Status::resolvedV4.
//
// hostRouteOnly: true asks that the address be resolved only by a host route (/32) of its own,
// false by the longest covering prefix, whatever its length. Shared entries serve the least
// restrictive user (see WatchedAddrSet), so a host-route-only user reads the result's prefix.
class RouteReactorConfig : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<RouteReactorConfig> {
    public:
      using Kor::Notifiee<RouteReactorConfig>::Notifiee;
      virtual void onWatchedAddr(const VrfAndIpAddr&) {}
   };
   using WatchedAddrMap = WatchedAddrSet<VrfAndIpAddr>::Map;

   explicit RouteReactorConfig(Kor::Name name) : Kor::Entity(std::move(name)) {}

   void addWatchedAddr(const VrfAndIpAddr& key, bool hostRouteOnly);
   void removeWatchedAddr(const VrfAndIpAddr& key);
   // Stops watching every address whatever its count, one notification each.
   void watchedAddrDelAll();

   bool watchedAddrHas(const VrfAndIpAddr& key) const { return watched_.has(key); }
   bool watchedAddrHostRouteOnly(const VrfAndIpAddr& key) const {
      return watched_.hostRouteOnly(key);
   }
   std::uint32_t watchedAddrRefs(const VrfAndIpAddr& key) const { return watched_.refs(key); }
   std::size_t watchedAddrs() const { return watched_.size(); }
   const WatchedAddrMap& watchedAddrMap() const { return watched_.map(); }

 private:
   WatchedAddrSet<VrfAndIpAddr> watched_;
};

}  // namespace Fal
