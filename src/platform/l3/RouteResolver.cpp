#include "RouteResolver.h"

#include <vector>

#include <mplsfwd/log/Assert.h>
#include <mplsfwd/log/Trace.h>

namespace Fal {

namespace {

Log::Trace routeResolverTrace("RouteResolver");

using Routing::Hardware::IpRoute;
using Routing::Hardware::IpRouteKey;
using Routing::Hardware::RouteType;

ResolvedNexthop resolution(const L3::IpPrefix& prefix, const IpRoute& route,
                           const Wire::IpGenAddr& addr) {
   switch (route.routeType()) {
      case RouteType::connected:
         return ResolvedNexthop(prefix, addr, route.l3Intf(), NexthopType::connected);
      case RouteType::gateway:
         return ResolvedNexthop(prefix, route.nextHop(), route.l3Intf(), NexthopType::gateway);
      case RouteType::drop:
         return ResolvedNexthop(prefix, Wire::IpGenAddr(), Wire::IntfId(), NexthopType::drop);
      case RouteType::receive:
         return ResolvedNexthop(prefix, Wire::IpGenAddr(), Wire::IntfId(), NexthopType::receive);
      case RouteType::unknown:
         break;
   }
   return ResolvedNexthop();
}

}  // namespace

RouteResolver::RouteResolver(Kor::Ptr<const Routing::Hardware::RouteStatus> routeStatus,
                             Kor::Ptr<const RouteReactorConfig> routeReactorConfig,
                             Kor::Ptr<const Route6ReactorConfig> route6ReactorConfig,
                             Kor::Ptr<L3Status> l3Status)
    : l3Status_(std::move(l3Status)),
      routeStatusReactor_(*this),
      routeReactorConfigReactor_(*this),
      route6ReactorConfigReactor_(*this) {
   FAL_ASSERT(routeStatus);
   FAL_ASSERT(routeReactorConfig);
   FAL_ASSERT(route6ReactorConfig);
   FAL_ASSERT(l3Status_);
   routeStatusReactor_.notifierIs(std::move(routeStatus));
   routeReactorConfigReactor_.notifierIs(std::move(routeReactorConfig));
   route6ReactorConfigReactor_.notifierIs(std::move(route6ReactorConfig));

   for (const auto& entry : this->routeStatus()->routeMap()) {
      indexRoute(entry.first);
   }
   // Resolutions left by an earlier resolver for addresses nobody watches any more go first.
   std::vector<VrfAndIpAddr> staleV4;
   for (const auto& entry : l3Status_->resolvedV4Map()) {
      if (!this->routeReactorConfig()->watchedAddrHas(entry.first)) {
         staleV4.push_back(entry.first);
      }
   }
   for (const auto& key : staleV4) {
      l3Status_->resolvedV4Del(key);
   }
   std::vector<VrfAndIpGenAddr> staleV6;
   for (const auto& entry : l3Status_->resolvedV6Map()) {
      if (!this->route6ReactorConfig()->watchedIp6AddrHas(entry.first)) {
         staleV6.push_back(entry.first);
      }
   }
   for (const auto& key : staleV6) {
      l3Status_->resolvedV6Del(key);
   }

   std::vector<VrfAndIpAddr> watchedV4;
   for (const auto& entry : this->routeReactorConfig()->watchedAddrMap()) {
      watchedV4.push_back(entry.first);
   }
   for (const auto& key : watchedV4) {
      handleWatchedAddr(key);
   }
   std::vector<VrfAndIpGenAddr> watchedV6;
   for (const auto& entry : this->route6ReactorConfig()->watchedIp6AddrMap()) {
      watchedV6.push_back(entry.first);
   }
   for (const auto& key : watchedV6) {
      handleWatchedIp6Addr(key);
   }
}

RouteResolver::~RouteResolver() = default;

ResolvedNexthop RouteResolver::resolve(VrfId vrfId, const Wire::IpGenAddr& addr,
                                       bool hostRouteOnly) const {
   auto t = table_.find(VrfFamily{vrfId, addr.af()});
   if (t == table_.end()) {
      return ResolvedNexthop();
   }
   const auto& byLength = t->second.routesByLength;
   std::uint8_t maxLength = L3::IpPrefix::maxLength(addr.af());
   for (auto it = hostRouteOnly ? byLength.find(maxLength) : byLength.begin(); it != byLength.end();
        ++it) {
      auto route = it->second.find(L3::IpPrefix::masked(addr, it->first));
      if (route != it->second.end()) {
         return resolution(L3::IpPrefix(route->first, it->first), route->second, addr);
      }
      if (hostRouteOnly) {
         break;
      }
   }
   return ResolvedNexthop();
}

std::size_t RouteResolver::prefixLengths(VrfId vrfId, Wire::AddressFamily af) const {
   auto t = table_.find(VrfFamily{vrfId, af});
   return t == table_.end() ? 0 : t->second.routesByLength.size();
}

void RouteResolver::indexRoute(const IpRouteKey& key) {
   const L3::IpPrefix& prefix = key.prefix();
   VrfFamily vf{key.vrfId(), prefix.af()};
   if (routeStatus()->routeHas(key)) {
      table_[vf].routesByLength[prefix.length()].insert_or_assign(prefix.address(),
                                                                  routeStatus()->route(key));
      return;
   }
   auto t = table_.find(vf);
   if (t == table_.end()) {
      return;
   }
   auto& byLength = t->second.routesByLength;
   auto len = byLength.find(prefix.length());
   if (len == byLength.end()) {
      return;
   }
   len->second.erase(prefix.address());
   if (len->second.empty()) {
      byLength.erase(len);
   }
   tableDelIfEmpty(vf);
}

void RouteResolver::handleRoute(const IpRouteKey& key) {
   const L3::IpPrefix& prefix = key.prefix();
   if (prefix.empty()) {
      return;
   }
   indexRoute(key);
   auto t = table_.find(VrfFamily{key.vrfId(), prefix.af()});
   if (t == table_.end()) {
      return;
   }
   // Only the watched addresses inside the changed prefix can have a different longest match.
   // They are copied first: publishing a resolution lets readers react, possibly by changing what
   // is watched.
   const auto& watched = t->second.watched;
   std::vector<Wire::IpGenAddr> affected(watched.lower_bound(prefix.address()),
                                         watched.upper_bound(prefix.lastAddress()));
   MPLSFWD_TRACE(routeResolverTrace, 8,
                 "route " << key << " affects " << affected.size() << " watched addresses");
   for (const auto& addr : affected) {
      if (isWatched(key.vrfId(), addr)) {
         resolveWatched(key.vrfId(), addr);
      }
   }
}

void RouteResolver::handleWatchedAddr(const VrfAndIpAddr& key) {
   Wire::IpGenAddr addr(key.ipAddr());
   if (routeReactorConfig()->watchedAddrHas(key)) {
      watchedIs(key.vrfId(), addr, true);
      resolveWatched(key.vrfId(), addr);
      return;
   }
   watchedIs(key.vrfId(), addr, false);
   MPLSFWD_TRACE(routeResolverTrace, 5, "unwatched " << key);
   l3Status_->resolvedV4Del(key);
}

void RouteResolver::handleWatchedIp6Addr(const VrfAndIpGenAddr& key) {
   if (key.ipGenAddr().af() != Wire::ipv6()) {
      return;
   }
   if (route6ReactorConfig()->watchedIp6AddrHas(key)) {
      watchedIs(key.vrfId(), key.ipGenAddr(), true);
      resolveWatched(key.vrfId(), key.ipGenAddr());
      return;
   }
   watchedIs(key.vrfId(), key.ipGenAddr(), false);
   MPLSFWD_TRACE(routeResolverTrace, 5, "unwatched " << key);
   l3Status_->resolvedV6Del(key);
}

void RouteResolver::watchedIs(VrfId vrfId, const Wire::IpGenAddr& addr, bool watched) {
   VrfFamily vf{vrfId, addr.af()};
   if (watched) {
      table_[vf].watched.insert(addr);
      return;
   }
   auto t = table_.find(vf);
   if (t != table_.end()) {
      t->second.watched.erase(addr);
      tableDelIfEmpty(vf);
   }
}

bool RouteResolver::isWatched(VrfId vrfId, const Wire::IpGenAddr& addr) const {
   if (addr.af() == Wire::ipv4()) {
      return routeReactorConfig()->watchedAddrHas(VrfAndIpAddr(vrfId, addr.v4Addr()));
   }
   return route6ReactorConfig()->watchedIp6AddrHas(VrfAndIpGenAddr(vrfId, addr));
}

bool RouteResolver::hostRouteOnly(VrfId vrfId, const Wire::IpGenAddr& addr) const {
   if (addr.af() == Wire::ipv4()) {
      return routeReactorConfig()->watchedAddrHostRouteOnly(VrfAndIpAddr(vrfId, addr.v4Addr()));
   }
   return route6ReactorConfig()->watchedIp6AddrHostRouteOnly(VrfAndIpGenAddr(vrfId, addr));
}

void RouteResolver::resolveWatched(VrfId vrfId, const Wire::IpGenAddr& addr) {
   ++resolutions_;
   ResolvedNexthop resolved = resolve(vrfId, addr, hostRouteOnly(vrfId, addr));
   MPLSFWD_TRACE(routeResolverTrace, 7, "vrf " << vrfId << " addr " << addr << " -> " << resolved);
   if (addr.af() == Wire::ipv4()) {
      l3Status_->resolvedV4Is(VrfAndIpAddr(vrfId, addr.v4Addr()), resolved);
   } else {
      l3Status_->resolvedV6Is(VrfAndIpGenAddr(vrfId, addr), resolved);
   }
}

void RouteResolver::tableDelIfEmpty(const VrfFamily& vf) {
   auto t = table_.find(vf);
   if (t != table_.end() && t->second.empty()) {
      table_.erase(t);
   }
}

}  // namespace Fal
