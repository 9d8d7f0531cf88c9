#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/VlanId.h>

namespace Pseudowire {

// Where the traffic of a pseudowire enters and leaves the switch locally: the parent interface,
// the dot1q tag that selects the pseudowire's traffic on it (0 for a whole port) and the internal
// VLAN that the platform bridges the two through. Published by the pseudowire agent per
// pseudowire interface; a default record (empty interface, tag and VLAN 0) means "no connector".
class LocalConnectorInfo {
 public:
   LocalConnectorInfo() = default;
   LocalConnectorInfo(Wire::IntfId parentIntfId, Bridging::VlanId dot1qTag,
                      Bridging::VlanId internalVlan)
       : parentIntfId_(parentIntfId), dot1qTag_(dot1qTag), internalVlan_(internalVlan) {}

   Wire::IntfId parentIntfId() const { return parentIntfId_; }
   void parentIntfIdIs(Wire::IntfId v) { parentIntfId_ = v; }
   Bridging::VlanId dot1qTag() const { return dot1qTag_; }
   void dot1qTagIs(Bridging::VlanId v) { dot1qTag_ = v; }
   Bridging::VlanId internalVlan() const { return internalVlan_; }
   void internalVlanIs(Bridging::VlanId v) { internalVlan_ = v; }

   bool operator==(const LocalConnectorInfo&) const = default;
   bool operator!() const { return *this == LocalConnectorInfo(); }
   std::size_t hash() const;

   // "Value('Pseudowire::LocalConnectorInfo', ** {'parentIntfId': Ethernet1, 'dot1qTag': 10,
   // 'internalVlan': 1006})".
   std::string stringValue() const;
   // Reverse of stringValue(); throws Kor::ParseError (Kor::RangeError for an out-of-range VLAN).
   static LocalConnectorInfo parse(std::string_view text);

 private:
   Wire::IntfId parentIntfId_;
   Bridging::VlanId dot1qTag_;
   Bridging::VlanId internalVlan_;
};

std::ostream& operator<<(std::ostream& os, const LocalConnectorInfo& info);

}  // namespace Pseudowire
