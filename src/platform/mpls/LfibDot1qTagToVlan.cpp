#include "LfibDot1qTagToVlan.h"

#include <ostream>

#include <mplsfwd/kor/AttrOps.h>

namespace Mpls {

LfibDot1qTagToVlan::LfibDot1qTagToVlan(const LfibDot1qTagToVlanKey& key)
    : Kor::Entity("LfibDot1qTagToVlan-" + key.stringValue()), key_(key) {}

Bridging::VlanIdOrNone LfibDot1qTagToVlan::dot1qTagToVlanId(Bridging::VlanId dot1qTag) const {
   return Kor::mapValueOr(dot1qTagToVlanId_, dot1qTag);
}

bool LfibDot1qTagToVlan::dot1qTagToVlanIdHas(Bridging::VlanId dot1qTag) const {
   return dot1qTagToVlanId_.count(dot1qTag) != 0;
}

void LfibDot1qTagToVlan::dot1qTagToVlanIdIs(Bridging::VlanId dot1qTag,
                                            Bridging::VlanIdOrNone vlanId) {
   if (Kor::mapAssignIfChanged(dot1qTagToVlanId_, dot1qTag, vlanId)) {
      notify(&NotifieeConst::onDot1qTagToVlanId, dot1qTag);
   }
}

void LfibDot1qTagToVlan::dot1qTagToVlanIdDel(Bridging::VlanId dot1qTag) {
   if (dot1qTagToVlanId_.erase(dot1qTag)) {
      notify(&NotifieeConst::onDot1qTagToVlanId, dot1qTag);
   }
}

void LfibDot1qTagToVlan::dot1qTagToVlanIdDelAll() {
   Kor::deleteEachKey(dot1qTagToVlanId_,
                      [this](Bridging::VlanId tag) { dot1qTagToVlanIdDel(tag); });
}

void LfibDot1qTagToVlan::dot1qTagToVlanIdIs(const TagMap& map) {
   if (map == dot1qTagToVlanId_) {
      return;
   }
   dot1qTagToVlanId_ = map;
   notify(&NotifieeConst::onDot1qTagToVlanColl);
}

std::string LfibDot1qTagToVlan::stringValue() const {
   Kor::OrderedMap<Bridging::VlanId, Bridging::VlanIdOrNone> sorted(dot1qTagToVlanId_.begin(),
                                                                    dot1qTagToVlanId_.end());
   std::string s = "LfibDot1qTagToVlan " + key_.stringValue() + " {";
   bool first = true;
   for (const auto& [tag, vlan] : sorted) {
      if (!first) {
         s += ", ";
      }
      first = false;
      s += tag.stringValue() + ": " + vlan.stringValue();
   }
   return s + "}";
}

std::ostream& operator<<(std::ostream& os, const LfibDot1qTagToVlan& coll) {
   return os << coll.stringValue();
}

}  // namespace Mpls
