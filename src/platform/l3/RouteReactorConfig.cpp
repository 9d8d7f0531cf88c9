#include "RouteReactorConfig.h"

namespace Fal {

void RouteReactorConfig::addWatchedAddr(const VrfAndIpAddr& key, bool hostRouteOnly) {
   if (watched_.add(key, hostRouteOnly)) {
      notify(&NotifieeConst::onWatchedAddr, key);
   }
}

void RouteReactorConfig::removeWatchedAddr(const VrfAndIpAddr& key) {
   if (watched_.remove(key)) {
      notify(&NotifieeConst::onWatchedAddr, key);
   }
}

void RouteReactorConfig::watchedAddrDelAll() {
   while (watched_.size() != 0) {
      VrfAndIpAddr key = watched_.map().begin()->first;
      watched_.erase(key);
      notify(&NotifieeConst::onWatchedAddr, key);
   }
}

}  // namespace Fal
