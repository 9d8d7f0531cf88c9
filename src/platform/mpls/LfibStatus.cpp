#include "LfibStatus.h"

namespace Mpls {

LfibRoute LfibStatus::lfibRoute(const RouteKey& key) const {
   auto it = route_.find(key);
   return it == route_.end() ? LfibRoute() : it->second;
}

const LfibRoute* LfibStatus::lfibRoutePtr(const RouteKey& key) const {
   auto it = route_.find(key);
   return it == route_.end() ? nullptr : &it->second;
}

void LfibStatus::lfibRouteIs(const LfibRoute& route) {
   auto [it, inserted] = route_.try_emplace(route.key(), route);
   if (!inserted) {
      if (it->second == route) {
         return;
      }
      unindexRoute(it->second);
      Kor::valueOf(it) = route;
   }
   indexRoute(route);
   notify(&NotifieeConst::onLfibRoute, route.key());
}

void LfibStatus::lfibRouteDel(const RouteKey& key) {
   auto it = route_.find(key);
   if (it == route_.end()) {
      return;
   }
   unindexRoute(it->second);
   route_.erase(it);
   notify(&NotifieeConst::onLfibRoute, key);
}

void LfibStatus::lfibRouteDelAll() {
   Kor::deleteEachKey(route_, [this](const RouteKey& k) { lfibRouteDel(k); });
}

LfibStatus::RouteKeysOfViaSet LfibStatus::routeKeysOfViaSet(const LfibViaSetKey& key) const {
   auto it = routesOfViaSet_.find(key);
   return RouteKeysOfViaSet(this, key, it == routesOfViaSet_.end() ? Users() : it->second);
}

LfibViaSet LfibStatus::viaSet(const LfibViaSetKey& key) const {
   const LfibViaSet* stored = viaSetPtr(key);
   return stored ? *stored : LfibViaSet(key);
}

const LfibViaSet* LfibStatus::viaSetPtr(const LfibViaSetKey& key) const {
   auto it = viaSetSlot_.find(key);
   return it == viaSetSlot_.end() ? nullptr : &viaSetRecord_[it->second];
}

void LfibStatus::viaSetIs(const LfibViaSet& viaSet) {
   auto it = viaSetSlot_.find(viaSet.key());
   if (it != viaSetSlot_.end()) {
      LfibViaSet& stored = viaSetRecord_[it->second];
      if (stored == viaSet) {
         return;
      }
      unindexViaSet(stored);
      stored = viaSet;
   } else {
      std::uint32_t slot;
      if (!freeViaSetRecord_.empty()) {
         slot = freeViaSetRecord_.back();
         freeViaSetRecord_.pop_back();
         viaSetRecord_[slot] = viaSet;
      } else {
         slot = static_cast<std::uint32_t>(viaSetRecord_.size());
         viaSetRecord_.push_back(viaSet);
      }
      viaSetSlot_.emplace(viaSet.key(), slot);
   }
   indexViaSet(viaSet);
   notify(&NotifieeConst::onViaSet, viaSet.key());
}

void LfibStatus::viaSetDel(const LfibViaSetKey& key) {
   auto it = viaSetSlot_.find(key);
   if (it == viaSetSlot_.end()) {
      return;
   }
   const std::uint32_t slot = it->second;
   viaSetSlot_.erase(it);
   unindexViaSet(viaSetRecord_[slot]);
   if (viaSetSlot_.empty()) {
      // The last set is gone: give the records' memory back.
      std::vector<LfibViaSet>().swap(viaSetRecord_);
      std::vector<std::uint32_t>().swap(freeViaSetRecord_);
   } else {
      // The default record holds no heap block.
      viaSetRecord_[slot] = LfibViaSet();
      freeViaSetRecord_.push_back(slot);
   }
   notify(&NotifieeConst::onViaSet, key);
}

void LfibStatus::viaSetDelAll() {
   Kor::deleteEachKey(viaSetSlot_, [this](const LfibViaSetKey& k) { viaSetDel(k); });
}

LfibStatus::ViaSetKeysOfVia LfibStatus::viaSetsOfVia(const LfibViaKey& key) const {
   auto it = viaSetsOfVia_.find(key);
   return ViaSetKeysOfVia(it == viaSetsOfVia_.end() ? nullptr : &it->second);
}

Kor::Ptr<LfibDot1qTagToVlan> LfibStatus::dot1qTagToVlanColl(
    const LfibDot1qTagToVlanKey& key) const {
   return Kor::mapValueOr(dot1qColl_, key);
}

Kor::Ptr<LfibDot1qTagToVlan> LfibStatus::dot1qTagToVlanCollIs(const LfibDot1qTagToVlanKey& key) {
   auto [it, inserted] = dot1qColl_.try_emplace(key);
   if (!inserted) {
      return it->second;
   }
   it->second = Kor::make<LfibDot1qTagToVlan>(key);
   Kor::Ptr<LfibDot1qTagToVlan> created = it->second;
   notify(&NotifieeConst::onDot1qTagToVlanColl, key);
   return created;
}

void LfibStatus::dot1qTagToVlanCollDel(const LfibDot1qTagToVlanKey& key) {
   if (dot1qColl_.erase(key)) {
      notify(&NotifieeConst::onDot1qTagToVlanColl, key);
   }
}

LfibStatus::Link& LfibStatus::linkAt(std::uint32_t label) {
   return routeLink_.find(Kor::DenseIndex<RouteKey>::key(label)).value();
}

void LfibStatus::indexRoute(const LfibRoute& route) {
   Users& users = routesOfViaSet_[route.viaSetKey()];
   const std::uint32_t label = Kor::DenseIndex<RouteKey>::index(route.key());
   routeLink_.try_emplace(route.key(), Link{kNoLink, users.head});
   if (users.head != kNoLink) {
      linkAt(users.head).prev = label;
   }
   users.head = label;
   ++users.size;
}

void LfibStatus::unindexRoute(const LfibRoute& route) {
   auto users = routesOfViaSet_.find(route.viaSetKey());
   auto link = routeLink_.find(route.key());
   if (users == routesOfViaSet_.end() || link == routeLink_.end()) {
      return;
   }
   const Link l = link->second;
   routeLink_.erase(link);
   if (l.prev != kNoLink) {
      linkAt(l.prev).next = l.next;
   } else {
      Kor::valueOf(users).head = l.next;
   }
   if (l.next != kNoLink) {
      linkAt(l.next).prev = l.prev;
   }
   if (--Kor::valueOf(users).size == 0) {
      routesOfViaSet_.erase(users);
   }
}

void LfibStatus::indexViaSet(const LfibViaSet& viaSet) {
   for (std::uint32_t i = 0; i < viaSet.vias(); ++i) {
      auto [it, inserted] = viaSetsOfVia_.try_emplace(viaSet.via(LfibViaIndexRange(i)));
      Namers& namers = it.value();
      if (inserted) {
         namers.only = viaSet.key();
      } else if (namers.many) {
         namers.many->insert(viaSet.key());
      } else if (!(namers.only == viaSet.key())) {
         namers.many = std::make_unique<ViaSetKeySet>();
         namers.many->insert(namers.only);
         namers.many->insert(viaSet.key());
      }
   }
}

void LfibStatus::unindexViaSet(const LfibViaSet& viaSet) {
   for (std::uint32_t i = 0; i < viaSet.vias(); ++i) {
      auto it = viaSetsOfVia_.find(viaSet.via(LfibViaIndexRange(i)));
      if (it == viaSetsOfVia_.end()) {
         continue;
      }
      Namers& namers = it.value();
      if (namers.many) {
         namers.many->erase(viaSet.key());
         if (namers.many->empty()) {
            viaSetsOfVia_.erase(it);
         }
      } else if (namers.only == viaSet.key()) {
         viaSetsOfVia_.erase(it);
      }
   }
}

}  // namespace Mpls
