#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include <mplsfwd/kor/Entity.h>

#include "VrfAndIpGenAddr.h"
#include "WatchedAddrSet.h"

namespace Fal {

// The IPv6 counterpart of RouteReactorConfig: IPv6 addresses whose route resolution somebody
// wants, per VRF, counted per user; the route resolver watches onWatchedIp6Addr and publishes the
// resolution in L3Status::resolvedV6. Only IPv6 addresses are accepted (IPv4 ones belong to
// RouteReactorConfig).
//
// hostRouteOnly: true asks that the address be resolved only by a host route (/128) of its own,
// false by the longest covering prefix. Shared entries serve the least restrictive user.
class Route6ReactorConfig : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<Route6ReactorConfig> {
    public:
      using Kor::Notifiee<Route6ReactorConfig>::Notifiee;
      virtual void onWatchedIp6Addr(const VrfAndIpGenAddr&) {}
   };
   using WatchedIp6AddrMap = WatchedAddrSet<VrfAndIpGenAddr>::Map;

   explicit Route6ReactorConfig(Kor::Name name) : Kor::Entity(std::move(name)) {}

   // Throws Kor::RangeError when the address is not IPv6.
   void addWatchedIp6Addr(const VrfAndIpGenAddr& key, bool hostRouteOnly);
   void removeWatchedIp6Addr(const VrfAndIpGenAddr& key);
   // Stops watching every address whatever its count, one notification each.
   void watchedIp6AddrDelAll();

   bool watchedIp6AddrHas(const VrfAndIpGenAddr& key) const { return watched_.has(key); }
   bool watchedIp6AddrHostRouteOnly(const VrfAndIpGenAddr& key) const {
      return watched_.hostRouteOnly(key);
   }
   std::uint32_t watchedIp6AddrRefs(const VrfAndIpGenAddr& key) const { return watched_.refs(key); }
   std::size_t watchedIp6Addrs() const { return watched_.size(); }
   const WatchedIp6AddrMap& watchedIp6AddrMap() const { return watched_.map(); }

 private:
   WatchedAddrSet<VrfAndIpGenAddr> watched_;
};

}  // namespace Fal
