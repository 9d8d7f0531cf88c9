#pragma once

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
   using ViaSetMap = Kor::HashMap<LfibViaSetKey, LfibViaSet>;
   using RouteKeySet = Kor::FlatHashSet<RouteKey>;
   using ViaSetKeySet = Kor::HashSet<LfibViaSetKey>;
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
   // The routes whose via set is `key` (empty set when none).
   const RouteKeySet& routeKeysOfViaSet(const LfibViaSetKey& key) const;

   // Via sets.
   LfibViaSet viaSet(const LfibViaSetKey& key) const;
   const LfibViaSet* viaSetPtr(const LfibViaSetKey& key) const;
   bool viaSetHas(const LfibViaSetKey& key) const { return viaSet_.contains(key); }
   void viaSetIs(const LfibViaSet& viaSet);
   void viaSetDel(const LfibViaSetKey& key);
   void viaSetDelAll();
   const ViaSetMap& viaSetMap() const { return viaSet_; }
   // The via sets that name the via `key` (empty set when none).
   const ViaSetKeySet& viaSetsOfVia(const LfibViaKey& key) const;

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
   template <class V>
   using ViaMap = Kor::HashMap<LfibViaKey, V>;
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
   void indexRoute(const LfibRoute& route);
   void unindexRoute(const LfibRoute& route);
   void indexViaSet(const LfibViaSet& viaSet);
   void unindexViaSet(const LfibViaSet& viaSet);

   RouteMap route_;
   ViaSetMap viaSet_;
   Kor::HashMap<LfibViaSetKey, RouteKeySet> routesOfViaSet_;
   Kor::HashMap<LfibViaKey, ViaSetKeySet> viaSetsOfVia_;
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

}  // namespace Mpls
