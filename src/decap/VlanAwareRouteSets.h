#pragma once

#include <cstddef>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/LfibKeys.h>
#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/wire/VlanId.h>

namespace Fal {

// What the decap state machine has programmed for one VLAN-aware EVPN route: exactly the dot1q
// tags for which the helper accepted a label-plus-tag mapping, each with the VLAN it was given.
// It lives from the route's first create to its delete; deleting the route's mappings walks it.
class VlanAwareProgrammedRouteSet : public Kor::PtrInterface {
 public:
   using Dot1qTagToVlanIdMap = Kor::HashMap<Bridging::VlanId, Bridging::VlanIdOrNone>;

   explicit VlanAwareProgrammedRouteSet(const Mpls::RouteKey& routeKey) : routeKey_(routeKey) {}

   const Mpls::RouteKey& routeKey() const { return routeKey_; }

   Bridging::VlanIdOrNone dot1qTagToVlanId(Bridging::VlanId dot1qTag) const {
      return Kor::mapValueOr(dot1qTagToVlanId_, dot1qTag);
   }
   bool dot1qTagToVlanIdHas(Bridging::VlanId dot1qTag) const {
      return dot1qTagToVlanId_.contains(dot1qTag);
   }
   void dot1qTagToVlanIdIs(Bridging::VlanId dot1qTag, Bridging::VlanIdOrNone vlanId) {
      dot1qTagToVlanId_[dot1qTag] = vlanId;
   }
   void dot1qTagToVlanIdDel(Bridging::VlanId dot1qTag) { dot1qTagToVlanId_.erase(dot1qTag); }
   void dot1qTagToVlanIdDelAll() { dot1qTagToVlanId_.clear(); }
   const Dot1qTagToVlanIdMap& dot1qTagToVlanIdMap() const { return dot1qTagToVlanId_; }
   std::size_t dot1qTags() const { return dot1qTagToVlanId_.size(); }

 private:
   Mpls::RouteKey routeKey_;
   Dot1qTagToVlanIdMap dot1qTagToVlanId_;
};

// The VLAN-aware routes whose via names one dot1q-tag-to-VLAN collection of the LFIB: the reverse
// index that lets a change of the collection reach every route that depends on it. It exists from
// the first route that names the collection until the state machine ends, even when empty.
// Ordered, so that the routes of a collection are reprogrammed in label order.
class VlanAwareDot1qTagVlanRouteKeySet : public Kor::PtrInterface {
 public:
   using RouteKeySet = Kor::OrderedSet<Mpls::RouteKey>;

   explicit VlanAwareDot1qTagVlanRouteKeySet(const Mpls::LfibDot1qTagToVlanKey& key) : key_(key) {}

   const Mpls::LfibDot1qTagToVlanKey& key() const { return key_; }

   bool routeKeySet(const Mpls::RouteKey& routeKey) const {
      return routeKeySet_.contains(routeKey);
   }
   void routeKeySetIs(const Mpls::RouteKey& routeKey) { routeKeySet_.insert(routeKey); }
   void routeKeySetDel(const Mpls::RouteKey& routeKey) { routeKeySet_.erase(routeKey); }
   void routeKeySetDelAll() { routeKeySet_.clear(); }
   const RouteKeySet& routeKeySetSet() const { return routeKeySet_; }
   std::size_t routeKeys() const { return routeKeySet_.size(); }

 private:
   Mpls::LfibDot1qTagToVlanKey key_;
   RouteKeySet routeKeySet_;
};

}  // namespace Fal
