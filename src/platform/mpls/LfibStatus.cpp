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
   auto it = viaSet_.find(key);
   return RouteKeysOfViaSet(this, key, it == viaSet_.end() ? Users() : it->second.users);
}

LfibViaSet LfibStatus::viaSet(const LfibViaSetKey& key) const {
   const LfibViaSet* stored = viaSetPtr(key);
   return stored ? *stored : LfibViaSet(key);
}

const LfibViaSet* LfibStatus::viaSetPtr(const LfibViaSetKey& key) const {
   auto it = viaSet_.find(key);
   return it == viaSet_.end() || it->second.record == kNoRecord ? nullptr
                                                                : &viaSetRecord_[it->second.record];
}

void LfibStatus::viaSetIs(const LfibViaSet& viaSet) {
   auto it = viaSet_.try_emplace(viaSet.key()).first;
   if (it->second.record != kNoRecord) {
      LfibViaSet& stored = viaSetRecord_[it->second.record];
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
      it.value().record = slot;
      ++viaSets_;
   }
   indexViaSet(viaSet);
   notify(&NotifieeConst::onViaSet, viaSet.key());
}

void LfibStatus::viaSetDel(const LfibViaSetKey& key) {
   auto it = viaSet_.find(key);
   if (it == viaSet_.end() || it->second.record == kNoRecord) {
      return;
   }
   const std::uint32_t slot = it->second.record;
   if (it->second.users.size == 0) {
      viaSet_.erase(it);
   } else {
      it.value().record = kNoRecord;
   }
   --viaSets_;
   unindexViaSet(viaSetRecord_[slot]);
   if (viaSets_ == 0) {
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
   // Keys that only routes name are skipped by viaSetDel.
   Kor::deleteEachKey(viaSet_, [this](const LfibViaSetKey& k) { viaSetDel(k); });
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
   Users& users = viaSet_[route.viaSetKey()].users;
   const std::uint32_t label = Kor::DenseIndex<RouteKey>::index(route.key());
   routeLink_.try_emplace(route.key(), Link{kNoLink, users.head});
   if (users.head != kNoLink) {
      linkAt(users.head).prev = label;
   }
   users.head = label;
   ++users.size;
}

void LfibStatus::unindexRoute(const LfibRoute& route) {
   auto entry = viaSet_.find(route.viaSetKey());
   auto link = routeLink_.find(route.key());
   if (entry == viaSet_.end() || link == routeLink_.end()) {
      return;
   }
   Users& users = entry.value().users;
   const Link l = link->second;
   routeLink_.erase(link);
   if (l.prev != kNoLink) {
      linkAt(l.prev).next = l.next;
   } else {
      users.head = l.next;
   }
   if (l.next != kNoLink) {
      linkAt(l.next).prev = l.prev;
   }
   if (--users.size == 0 && entry->second.record == kNoRecord) {
      viaSet_.erase(entry);
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
