#pragma once

#include <cstddef>
#include <ostream>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

#include "LfibTypes.h"
#include "RouteKey.h"

namespace Mpls {

// A route that a programming helper refused, with the reason it gave.
class RouteInfo {
 public:
   RouteInfo() = default;
   RouteInfo(const RouteKey& key, LfibHwProgrammingReturnCode reason)
       : key_(key), reason_(reason) {}
   const RouteKey& key() const { return key_; }
   LfibHwProgrammingReturnCode reason() const { return reason_; }
   bool operator==(const RouteInfo&) const = default;

 private:
   RouteKey key_;
   LfibHwProgrammingReturnCode reason_ = lfibHwProgrammingSuccess_;
};

inline std::ostream& operator<<(std::ostream& os, const RouteInfo& r) {
   return os << r.key() << " reason " << static_cast<unsigned>(r.reason());
}

// The LFIB routes that could not be programmed, visible to other agents and operators. Ordered by
// key, so that a retry walk can go on from "the key after the current one" while entries come and
// go under it.
class LfibHwStatus : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<LfibHwStatus> {
    public:
      using Kor::Notifiee<LfibHwStatus>::Notifiee;
      virtual void onUnprogrammedRoute(const RouteKey&) {}
   };
   using UnprogrammedRouteMap = Kor::OrderedMap<RouteKey, RouteInfo>;

   explicit LfibHwStatus(Kor::Name name) : Kor::Entity(std::move(name)) {}

   RouteInfo unprogrammedRoute(const RouteKey& k) const {
      return Kor::mapValueOr(unprogrammed_, k);
   }
   bool unprogrammedRouteHas(const RouteKey& k) const { return unprogrammed_.contains(k); }
   void unprogrammedRouteIs(const RouteInfo& info) {
      if (Kor::mapAssignIfChanged(unprogrammed_, info.key(), info)) {
         notify(&NotifieeConst::onUnprogrammedRoute, info.key());
      }
   }
   void unprogrammedRouteDel(const RouteKey& k) {
      if (unprogrammed_.erase(k)) {
         notify(&NotifieeConst::onUnprogrammedRoute, k);
      }
   }
   void unprogrammedRouteDelAll() {
      Kor::deleteEachKey(unprogrammed_, [this](const RouteKey& k) { unprogrammedRouteDel(k); });
   }
   const UnprogrammedRouteMap& unprogrammedRouteMap() const { return unprogrammed_; }
   std::size_t unprogrammedRoutes() const { return unprogrammed_.size(); }

 private:
   UnprogrammedRouteMap unprogrammed_;
};

}  // namespace Mpls
