#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <vector>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

#include "LfibDecapVias.h"
#include "LfibDot1qTagToVlan.h"
#include "LfibExtFecVia.h"
#include "LfibMplsVia.h"
#include "LfibRoute.h"
#include "LfibViaSet.h"

namespace Mpls {

// The system LFIB as the control plane publishes it: routes by label, via sets by key, one table
// of vias per via type, and the dot1q-tag-to-VLAN collections of EVPN VLAN-aware services.
// Lookups of absent keys yield the default record (an empty route, a via set with no vias, a
// default via). It also keeps two reverse indices that readers need and the records do not carry:
// the routes that use a via set, and the via sets that name a via.
class LfibStatus : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<LfibStatus> {
    public:
      using Kor::Notifiee<LfibStatus>::Notifiee;
      virtual void onLfibRoute(const RouteKey&) {}
      virtual void onViaSet(const LfibViaSetKey&) {}
      virtual void onMplsVia(const LfibViaKey&) {}
      virtual void onExtFecVia(const LfibViaKey&) {}
      virtual void onPwVia(const LfibViaKey&) {}
      virtual void onVlanVia(const LfibViaKey&) {}
      virtual void onIpLookupVia(const LfibViaKey&) {}
      virtual void onEvpnVlanFloodVia(const LfibViaKey&) {}
      virtual void onEvpnVlanAwareVia(const LfibViaKey&) {}
      virtual void onEvpnVlanAwareFloodVia(const LfibViaKey&) {}
      virtual void onEvpnEthernetSegmentFilterVia(const LfibViaKey&) {}
      virtual void onDot1qTagToVlanColl(const LfibDot1qTagToVlanKey&) {}
   };
   using RouteMap = DenseRouteMap<LfibRoute>;
   class RouteKeysOfViaSet;
   using ViaSetKeySet = Kor::HashSet<LfibViaSetKey>;
   class ViaSetKeysOfVia;
   using Dot1qCollMap = Kor::HashMap<LfibDot1qTagToVlanKey, Kor::Ptr<LfibDot1qTagToVlan>>;

   explicit LfibStatus(Kor::Name name) : Kor::Entity(std::move(name)) {}

   // Routes.
   LfibRoute lfibRoute(const RouteKey& key) const;
   const LfibRoute* lfibRoutePtr(const RouteKey& key) const;
   bool lfibRouteHas(const RouteKey& key) const { return route_.contains(key); }
   void lfibRouteIs(const LfibRoute& route);
   void lfibRouteDel(const RouteKey& key);
   void lfibRouteDelAll();
   const RouteMap& lfibRouteMap() const { return route_; }
   std::size_t lfibRoutes() const { return route_.size(); }
   // The routes whose via set is `key` (empty when none), newest first. A view: valid until the
   // routes change.
   RouteKeysOfViaSet routeKeysOfViaSet(const LfibViaSetKey& key) const;

   // Via sets.
   LfibViaSet viaSet(const LfibViaSetKey& key) const;
   // The stored set without a copy, or null; valid until the via sets change.
   const LfibViaSet* viaSetPtr(const LfibViaSetKey& key) const;
   bool viaSetHas(const LfibViaSetKey& key) const { return viaSetPtr(key) != nullptr; }
   void viaSetIs(const LfibViaSet& viaSet);
   void viaSetDel(const LfibViaSetKey& key);
   void viaSetDelAll();
   std::size_t viaSets() const { return viaSets_; }
   // Calls `f` with the key of every via set, in no particular order.
   template <class F>
   void forEachViaSetKey(F&& f) const {
      for (const auto& [key, entry] : viaSet_) {
         if (entry.record != kNoRecord) {
            f(key);
         }
      }
   }
   // The via sets that name the via `key` (empty when none). A view: valid until the via sets
   // change.
   ViaSetKeysOfVia viaSetsOfVia(const LfibViaKey& key) const;

   // Via tables, one per type.
   LfibMplsVia mplsVia(const LfibViaKey& k) const { return get(mplsVia_, k); }
   // The stored via without a copy, or null; valid until the via table changes.
   const LfibMplsVia* mplsViaPtr(const LfibViaKey& k) const {
      auto it = mplsVia_.find(k);
      return it == mplsVia_.end() ? nullptr : &it->second;
   }
   void mplsViaIs(const LfibMplsVia& v) { set(mplsVia_, v, &NotifieeConst::onMplsVia); }
   void mplsViaDel(const LfibViaKey& k) { del(mplsVia_, k, &NotifieeConst::onMplsVia); }
   LfibExtFecVia extFecVia(const LfibViaKey& k) const { return get(extFecVia_, k); }
   void extFecViaIs(const LfibExtFecVia& v) { set(extFecVia_, v, &NotifieeConst::onExtFecVia); }
   void extFecViaDel(const LfibViaKey& k) { del(extFecVia_, k, &NotifieeConst::onExtFecVia); }
   LfibPwVia pwVia(const LfibViaKey& k) const { return get(pwVia_, k); }
   void pwViaIs(const LfibPwVia& v) { set(pwVia_, v, &NotifieeConst::onPwVia); }
   void pwViaDel(const LfibViaKey& k) { del(pwVia_, k, &NotifieeConst::onPwVia); }
   LfibVlanVia vlanVia(const LfibViaKey& k) const { return get(vlanVia_, k); }
   void vlanViaIs(const LfibVlanVia& v) { set(vlanVia_, v, &NotifieeConst::onVlanVia); }
   void vlanViaDel(const LfibViaKey& k) { del(vlanVia_, k, &NotifieeConst::onVlanVia); }
   LfibIpLookupVia ipLookupVia(const LfibViaKey& k) const { return get(ipLookupVia_, k); }
   void ipLookupViaIs(const LfibIpLookupVia& v) {
      set(ipLookupVia_, v, &NotifieeConst::onIpLookupVia);
   }
   void ipLookupViaDel(const LfibViaKey& k) { del(ipLookupVia_, k, &NotifieeConst::onIpLookupVia); }
   LfibEvpnVlanFloodVia evpnVlanFloodVia(const LfibViaKey& k) const {
      return get(evpnVlanFloodVia_, k);
   }
   void evpnVlanFloodViaIs(const LfibEvpnVlanFloodVia& v) {
      set(evpnVlanFloodVia_, v, &NotifieeConst::onEvpnVlanFloodVia);
   }
   void evpnVlanFloodViaDel(const LfibViaKey& k) {
      del(evpnVlanFloodVia_, k, &NotifieeConst::onEvpnVlanFloodVia);
   }
   LfibEvpnVlanAwareVia evpnVlanAwareVia(const LfibViaKey& k) const {
      return get(evpnVlanAwareVia_, k);
   }
   void evpnVlanAwareViaIs(const LfibEvpnVlanAwareVia& v) {
      set(evpnVlanAwareVia_, v, &NotifieeConst::onEvpnVlanAwareVia);
   }
   void evpnVlanAwareViaDel(const LfibViaKey& k) {
      del(evpnVlanAwareVia_, k, &NotifieeConst::onEvpnVlanAwareVia);
   }
   LfibEvpnVlanAwareFloodVia evpnVlanAwareFloodVia(const LfibViaKey& k) const {
      return get(evpnVlanAwareFloodVia_, k);
   }
   void evpnVlanAwareFloodViaIs(const LfibEvpnVlanAwareFloodVia& v) {
      set(evpnVlanAwareFloodVia_, v, &NotifieeConst::onEvpnVlanAwareFloodVia);
   }
   void evpnVlanAwareFloodViaDel(const LfibViaKey& k) {
      del(evpnVlanAwareFloodVia_, k, &NotifieeConst::onEvpnVlanAwareFloodVia);
   }
   LfibEvpnEthernetSegmentFilterVia evpnEthernetSegmentFilterVia(const LfibViaKey& k) const {
      return get(evpnEthernetSegmentFilterVia_, k);
   }
   void evpnEthernetSegmentFilterViaIs(const LfibEvpnEthernetSegmentFilterVia& v) {
      set(evpnEthernetSegmentFilterVia_, v, &NotifieeConst::onEvpnEthernetSegmentFilterVia);
   }
   void evpnEthernetSegmentFilterViaDel(const LfibViaKey& k) {
      del(evpnEthernetSegmentFilterVia_, k, &NotifieeConst::onEvpnEthernetSegmentFilterVia);
   }

   // Dot1q-tag-to-VLAN collections (instantiating: get or create, notify on creation only).
   Kor::Ptr<LfibDot1qTagToVlan> dot1qTagToVlanColl(const LfibDot1qTagToVlanKey& key) const;
   Kor::Ptr<LfibDot1qTagToVlan> dot1qTagToVlanCollIs(const LfibDot1qTagToVlanKey& key);
   void dot1qTagToVlanCollDel(const LfibDot1qTagToVlanKey& key);
   const Dot1qCollMap& dot1qTagToVlanCollMap() const { return dot1qColl_; }

 private:
   // Open addressing: a decap route brings a via of its own, so these hold a million entries;
   // nothing walks them, so their order does not matter.
   template <class V>
   using ViaMap = Kor::FlatHashMap<LfibViaKey, V, LfibTableHash>;
   using Handler = void (NotifieeConst::*)(const LfibViaKey&);

   template <class V>
   static V get(const ViaMap<V>& m, const LfibViaKey& k) {
      auto it = m.find(k);
      return it == m.end() ? V() : it->second;
   }
   template <class V>
   void set(ViaMap<V>& m, const V& v, Handler h) {
      if (Kor::mapAssignIfChanged(m, v.key(), v)) {
         notify(h, v.key());
      }
   }
   template <class V>
   void del(ViaMap<V>& m, const LfibViaKey& k, Handler h) {
      if (m.erase(k)) {
         notify(h, k);
      }
   }
   // The routes of one via set form a list threaded through a label-indexed array of links: a
   // route joins or leaves its via set's list with no hashing and no allocation, where a set of
   // keys per via set cost a hash insertion and most of the memory of the index.
   static constexpr std::uint32_t kNoLink = 0xffffffffu;
   struct Link {
      std::uint32_t prev = kNoLink;
      std::uint32_t next = kNoLink;
   };
   // Constructors rather than member initializers: the tables below need these complete.
   struct Users {
      Users() : head(kNoLink), size(0) {}
      std::uint32_t head;
      std::uint32_t size;
   };
   // One via-set key: the set's record, and the routes that name the set, which may come before
   // the set is written or stay after it is deleted. The entry lives while either is there.
   static constexpr std::uint32_t kNoRecord = 0xffffffffu;
   struct ViaSetEntry {
      ViaSetEntry() : record(kNoRecord) {}
      std::uint32_t record;
      Users users;
   };
   // The via sets naming one via. Nearly every via is named by one set (a decap route's via by
   // its own), which is kept in place; a second one moves them into a hash set, kept until the
   // last one goes, so a via's sets are walked in the order a hash set gives them.
   struct Namers {
      LfibViaSetKey only;
      std::unique_ptr<ViaSetKeySet> many;
   };

   Link& linkAt(std::uint32_t label);
   void indexRoute(const LfibRoute& route);
   void unindexRoute(const LfibRoute& route);
   void indexViaSet(const LfibViaSet& viaSet);
   void unindexViaSet(const LfibViaSet& viaSet);

   RouteMap route_;
   // The via sets: records in the order they were first written (a deleted set's record is reused
   // by the next new one) behind a small index by key, which also holds the routes of each set.
   // A decap route brings a via set of its own, so a million of them are usual: growing the index
   // moves 24-byte entries, not the records, a route joining its set finds the entry its set's
   // write has just touched, and readers that go through the sets in the order they were written
   // (the decap machine's backlog, by label) read the records in sequence. Nothing walks the
   // index in an order anyone sees: the tracking machine's start puts its keys on an ordered
   // backlog.
   std::vector<LfibViaSet> viaSetRecord_;
   std::vector<std::uint32_t> freeViaSetRecord_;
   Kor::FlatHashMap<LfibViaSetKey, ViaSetEntry, LfibTableHash> viaSet_;
   std::size_t viaSets_ = 0;
   DenseRouteMap<Link> routeLink_;
   // Looked up only, never walked.
   Kor::FlatHashMap<LfibViaKey, Namers, LfibTableHash> viaSetsOfVia_;
   ViaMap<LfibMplsVia> mplsVia_;
   ViaMap<LfibExtFecVia> extFecVia_;
   ViaMap<LfibPwVia> pwVia_;
   ViaMap<LfibVlanVia> vlanVia_;
   ViaMap<LfibIpLookupVia> ipLookupVia_;
   ViaMap<LfibEvpnVlanFloodVia> evpnVlanFloodVia_;
   ViaMap<LfibEvpnVlanAwareVia> evpnVlanAwareVia_;
   ViaMap<LfibEvpnVlanAwareFloodVia> evpnVlanAwareFloodVia_;
   ViaMap<LfibEvpnEthernetSegmentFilterVia> evpnEthernetSegmentFilterVia_;
   Dot1qCollMap dot1qColl_;
};

// The via sets naming one via: the one kept in place, or the hash set.
class LfibStatus::ViaSetKeysOfVia {
 public:
   class Iterator {
    public:
      using value_type = LfibViaSetKey;
      using reference = const LfibViaSetKey&;
      using difference_type = std::ptrdiff_t;
      using iterator_category = std::forward_iterator_tag;
      Iterator(const LfibViaSetKey* only, ViaSetKeySet::const_iterator it) : only_(only), it_(it) {}
      const LfibViaSetKey& operator*() const { return only_ ? *only_ : *it_; }
      Iterator& operator++() {
         if (only_) {
            only_ = nullptr;
         } else {
            ++it_;
         }
         return *this;
      }
      bool operator==(const Iterator& o) const { return only_ == o.only_ && it_ == o.it_; }

    private:
      const LfibViaSetKey* only_;
      ViaSetKeySet::const_iterator it_;
   };

   explicit ViaSetKeysOfVia(const Namers* namers) : namers_(namers) {}
   Iterator begin() const {
      if (!namers_) {
         return end();
      }
      return namers_->many ? Iterator(nullptr, namers_->many->begin())
                           : Iterator(&namers_->only, ViaSetKeySet::const_iterator());
   }
   Iterator end() const {
      return Iterator(nullptr, namers_ && namers_->many ? namers_->many->end()
                                                        : ViaSetKeySet::const_iterator());
   }
   std::size_t size() const { return !namers_ ? 0 : namers_->many ? namers_->many->size() : 1; }
   bool empty() const { return size() == 0; }

 private:
   const Namers* namers_;
};

// The routes of one via set, walked through the LFIB's links.
class LfibStatus::RouteKeysOfViaSet {
 public:
   class Iterator {
    public:
      using value_type = RouteKey;
      using reference = RouteKey;
      using difference_type = std::ptrdiff_t;
      using iterator_category = std::forward_iterator_tag;
      Iterator(const LfibStatus* lfib, std::uint32_t label) : lfib_(lfib), label_(label) {}
      RouteKey operator*() const { return Kor::DenseIndex<RouteKey>::key(label_); }
      Iterator& operator++() {
         label_ = lfib_->routeLink_.find(**this)->second.next;
         return *this;
      }
      bool operator==(const Iterator& o) const { return label_ == o.label_; }

    private:
      const LfibStatus* lfib_;
      std::uint32_t label_;
   };

   RouteKeysOfViaSet(const LfibStatus* lfib, const LfibViaSetKey& key, Users users)
       : lfib_(lfib), key_(key), users_(users) {}
   Iterator begin() const { return Iterator(lfib_, users_.head); }
   Iterator end() const { return Iterator(lfib_, kNoLink); }
   std::size_t size() const { return users_.size; }
   bool empty() const { return users_.size == 0; }
   std::size_t count(const RouteKey& k) const {
      const LfibRoute* route = lfib_->lfibRoutePtr(k);
      return route && route->viaSetKey() == key_ ? 1 : 0;
   }

 private:
   const LfibStatus* lfib_;
   LfibViaSetKey key_;
   Users users_;
};

}  // namespace Mpls
