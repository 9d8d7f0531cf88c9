#include "Route6ReactorConfig.h"

#include <mplsfwd/kor/Errors.h>

namespace Fal {

void Route6ReactorConfig::addWatchedIp6Addr(const VrfAndIpGenAddr& key, bool hostRouteOnly) {
   if (key.ipGenAddr().af() != Wire::ipv6()) {
      throw Kor::RangeError("Route6ReactorConfig watches IPv6 addresses only, not '" +
                            key.ipGenAddr().stringValue() + "'");
   }
   if (watched_.add(key, hostRouteOnly)) {
      notify(&NotifieeConst::onWatchedIp6Addr, key);
   }
}

void Route6ReactorConfig::removeWatchedIp6Addr(const VrfAndIpGenAddr& key) {
   if (watched_.remove(key)) {
      notify(&NotifieeConst::onWatchedIp6Addr, key);
   }
}

void Route6ReactorConfig::watchedIp6AddrDelAll() {
   while (watched_.size() != 0) {
      VrfAndIpGenAddr key = watched_.map().begin()->first;
      watched_.erase(key);
      notify(&NotifieeConst::onWatchedIp6Addr, key);
   }
}

}  // namespace Fal
