#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/wire/IpGenAddr.h>

#include "IpRoute.h"
#include "IpRouteKey.h"
#include "L3Status.h"
#include "ResolvedNexthop.h"
#include "Route6ReactorConfig.h"
#include "RouteReactorConfig.h"
#include "RouteStatus.h"
#include "VrfId.h"

namespace Fal {

// Resolves watched next-hop addresses against the hardware's IP routes. It follows a RouteStatus
// (the routes), a RouteReactorConfig and a Route6ReactorConfig (the watched addresses) and keeps
// L3Status::resolvedV4 / resolvedV6 so that there is exactly one entry per watched address, holding
// that address's longest-prefix match among the routes of its VRF and family (the unresolved value
// when none covers it). Entries are written only when their value changes and deleted when the
// address stops being watched; at construction, entries for addresses nobody watches are removed.
//
// A connected route resolves an address to itself as next hop on the route's interface, a gateway
// route to the route's next hop; drop and receive routes resolve without a next hop. Default
// routes resolve like any other, flagged by ResolvedNexthop::viaDefaultRoute(); whether such a
// resolution may be used is the reader's decision. A host-route-only watch is resolved by a
// route of the address's full length only. Resolution is one level deep: a gateway's next hop is
// not itself resolved.
//
// Per VRF and family the routes are indexed by prefix length (longest first), each length a hash
// table of masked prefixes, so one lookup costs one probe per distinct prefix length in use. The
// watched addresses of a VRF and family are kept ordered, so that a route change re-resolves only
// the watched addresses its prefix covers.
//
// Not an entity: the assembly of the agent owns it for as long as it wants resolutions. It runs on
// the agent's thread, driven by the notifications of its three inputs.
class RouteResolver : public Kor::PtrInterface {
 public:
   RouteResolver(Kor::Ptr<const Routing::Hardware::RouteStatus> routeStatus,
                 Kor::Ptr<const RouteReactorConfig> routeReactorConfig,
                 Kor::Ptr<const Route6ReactorConfig> route6ReactorConfig,
                 Kor::Ptr<L3Status> l3Status);
   ~RouteResolver() override;
   RouteResolver(const RouteResolver&) = delete;
   RouteResolver& operator=(const RouteResolver&) = delete;

   const Kor::Ptr<const Routing::Hardware::RouteStatus>& routeStatus() const {
      return routeStatusReactor_.notifier();
   }
   const Kor::Ptr<const RouteReactorConfig>& routeReactorConfig() const {
      return routeReactorConfigReactor_.notifier();
   }
   const Kor::Ptr<const Route6ReactorConfig>& route6ReactorConfig() const {
      return route6ReactorConfigReactor_.notifier();
   }
   const Kor::Ptr<L3Status>& l3Status() const { return l3Status_; }

   // The longest-prefix match of `addr` among the indexed routes of `vrfId`, whether watched or
   // not; the unresolved value when no route covers it.
   ResolvedNexthop resolve(VrfId vrfId, const Wire::IpGenAddr& addr, bool hostRouteOnly) const;
   // Number of distinct prefix lengths in use in one VRF and family (the probes of one lookup).
   std::size_t prefixLengths(VrfId vrfId, Wire::AddressFamily af) const;
   // Number of watched addresses re-resolved so far, for checking that a change touches only the
   // addresses it can affect.
   std::uint64_t resolutions() const { return resolutions_; }

   // Reactor entry points, called by the nested reactors.
   void handleRoute(const Routing::Hardware::IpRouteKey& key);
   void handleWatchedAddr(const VrfAndIpAddr& key);
   void handleWatchedIp6Addr(const VrfAndIpGenAddr& key);

 private:
   struct VrfFamily {
      VrfId vrfId;
      Wire::AddressFamily af;
      bool operator==(const VrfFamily&) const = default;
      std::size_t hash() const {
         return Kor::hashCombine(vrfId.hash(), static_cast<std::uint64_t>(af));
      }
   };
   // The routes and watched addresses of one VRF and family.
   struct Table {
      // Prefix length, longest first -> masked prefix address -> route.
      std::map<std::uint8_t, Kor::HashMap<Wire::IpGenAddr, Routing::Hardware::IpRoute>,
               std::greater<std::uint8_t>>
          routesByLength;
      Kor::OrderedSet<Wire::IpGenAddr> watched;
      bool empty() const { return routesByLength.empty() && watched.empty(); }
   };

   class RouteStatusReactor : public Routing::Hardware::RouteStatus::NotifieeConst {
    public:
      explicit RouteStatusReactor(RouteResolver& owner) : owner_(owner) { ownerIs(&owner); }
      void onRoute(const Routing::Hardware::IpRouteKey& key) override { owner_.handleRoute(key); }

    private:
      RouteResolver& owner_;
   };
   class RouteReactorConfigReactor : public RouteReactorConfig::NotifieeConst {
    public:
      explicit RouteReactorConfigReactor(RouteResolver& owner) : owner_(owner) { ownerIs(&owner); }
      void onWatchedAddr(const VrfAndIpAddr& key) override { owner_.handleWatchedAddr(key); }

    private:
      RouteResolver& owner_;
   };
   class Route6ReactorConfigReactor : public Route6ReactorConfig::NotifieeConst {
    public:
      explicit Route6ReactorConfigReactor(RouteResolver& owner) : owner_(owner) { ownerIs(&owner); }
      void onWatchedIp6Addr(const VrfAndIpGenAddr& key) override {
         owner_.handleWatchedIp6Addr(key);
      }

    private:
      RouteResolver& owner_;
   };

   void indexRoute(const Routing::Hardware::IpRouteKey& key);
   void watchedIs(VrfId vrfId, const Wire::IpGenAddr& addr, bool watched);
   bool isWatched(VrfId vrfId, const Wire::IpGenAddr& addr) const;
   bool hostRouteOnly(VrfId vrfId, const Wire::IpGenAddr& addr) const;
   // Resolves one watched address and publishes the result in the L3 status.
   void resolveWatched(VrfId vrfId, const Wire::IpGenAddr& addr);
   void tableDelIfEmpty(const VrfFamily& vf);

   Kor::Ptr<L3Status> l3Status_;
   Kor::HashMap<VrfFamily, Table> table_;
   std::uint64_t resolutions_ = 0;
   RouteStatusReactor routeStatusReactor_;
   RouteReactorConfigReactor routeReactorConfigReactor_;
   Route6ReactorConfigReactor route6ReactorConfigReactor_;
};

}  // namespace Fal
