#pragma once

#include <iosfwd>
#include <string>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/wire/VlanId.h>

#include "LfibKeys.h"

namespace Mpls {

// One dot1q-tag-to-VLAN collection of the LFIB: for an EVPN VLAN-aware service, which bridging
// VLAN each customer dot1q tag maps into. Routes name it by key through their VLAN-aware via.
// Single tags change with one notification each (onDot1qTagToVlanId); replacing the whole
// collection at once is one event of its own (onDot1qTagToVlanColl), so that a consumer can
// redo everything that depends on it in one go.
class LfibDot1qTagToVlan : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<LfibDot1qTagToVlan> {
    public:
      using Kor::Notifiee<LfibDot1qTagToVlan>::Notifiee;
      virtual void onDot1qTagToVlanId(Bridging::VlanId /*dot1qTag*/) {}
      virtual void onDot1qTagToVlanColl() {}
   };
   using TagMap = Kor::HashMap<Bridging::VlanId, Bridging::VlanIdOrNone>;

   explicit LfibDot1qTagToVlan(const LfibDot1qTagToVlanKey& key);

   const LfibDot1qTagToVlanKey& key() const { return key_; }

   // The VLAN of a tag; none when the tag is not mapped.
   Bridging::VlanIdOrNone dot1qTagToVlanId(Bridging::VlanId dot1qTag) const;
   bool dot1qTagToVlanIdHas(Bridging::VlanId dot1qTag) const;
   void dot1qTagToVlanIdIs(Bridging::VlanId dot1qTag, Bridging::VlanIdOrNone vlanId);
   void dot1qTagToVlanIdDel(Bridging::VlanId dot1qTag);
   void dot1qTagToVlanIdDelAll();
   // Replaces the whole collection; one onDot1qTagToVlanColl when it differs.
   void dot1qTagToVlanIdIs(const TagMap& map);
   const TagMap& dot1qTagToVlanIdMap() const { return dot1qTagToVlanId_; }
   std::size_t dot1qTags() const { return dot1qTagToVlanId_.size(); }

   // "LfibDot1qTagToVlan <key> {tag: vlan, ...}" in tag order.
   std::string stringValue() const;

 private:
   LfibDot1qTagToVlanKey key_;
   TagMap dot1qTagToVlanId_;
};

std::ostream& operator<<(std::ostream& os, const LfibDot1qTagToVlan& coll);

}  // namespace Mpls
