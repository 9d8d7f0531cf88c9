#include "RouteHelper.h"

namespace sim {

RouteHelper::RouteHelper(const Kor::Name& name, Chip& chip)
    : FalHelper::MplsSmHelper(name), chip_(chip) {}

Mpls::LfibHwProgrammingReturnCode RouteHelper::updateRoute(
    const Mpls::RouteKey& routeKey, Wire::MplsLabelAction labelAction,
    Mpls::PayloadType payloadType, const std::uint64_t& fecId,
    Wire::AddressingMethod addressingMethod) {
   ++updates_;
   bool present = route_.contains(routeKey);
   Mpls::LfibHwProgrammingReturnCode rc = Mpls::lfibHwProgrammingSuccess_;
   if (refuse_ > 0) {
      --refuse_;
      rc = refuseRc_;
   } else if (!present && !chip_.routeRoom()) {
      rc = Mpls::lfibHwProgrammingResourceFull_;
   }
   if (rc != Mpls::lfibHwProgrammingSuccess_) {
      refused_[routeKey] = rc;
      return rc;
   }
   refused_.erase(routeKey);
   route_[routeKey] = FecRoute{labelAction, payloadType, fecId, addressingMethod};
   chip_.externalRoutesIs(route_.size());
   return rc;
}

void RouteHelper::deleteRoute(const Mpls::RouteKey& routeKey) {
   ++deletes_;
   refused_.erase(routeKey);
   if (route_.erase(routeKey)) {
      chip_.externalRoutesIs(route_.size());
   }
}

std::vector<Mpls::RouteKey> RouteHelper::routeKeys() const {
   std::vector<Mpls::RouteKey> keys;
   keys.reserve(route_.size());
   for (const auto& [key, route] : route_) {
      keys.push_back(key);
   }
   return keys;
}

}  // namespace sim
