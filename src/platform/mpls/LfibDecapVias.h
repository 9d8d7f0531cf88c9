#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/l3/VrfName.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/VlanId.h>

#include "LfibKeys.h"
#include "LfibTypes.h"

// The vias of the label-popping route kinds: the label is removed and the payload is looked up
// in a VRF, bridged into a VLAN, handed to an EVPN VLAN-aware instance or to a pseudowire. Each
// is a plain value keyed by its LfibViaKey; a default via is the "not found" answer of lookups.
// Comparison is by value over all fields.
namespace Mpls {

// Pop and look the payload up in the VRF `vrfName`.
class LfibIpLookupVia {
 public:
   LfibIpLookupVia() = default;
   LfibIpLookupVia(const LfibViaKey& key, const L3::VrfName& vrfName,
                   PayloadType payloadType = payloadTypeAutoDecide_)
       : key_(key), vrfName_(vrfName), payloadType_(payloadType) {}

   const LfibViaKey& key() const { return key_; }
   const L3::VrfName& vrfName() const { return vrfName_; }
   void vrfNameIs(const L3::VrfName& v) { vrfName_ = v; }
   PayloadType payloadType() const { return payloadType_; }
   void payloadTypeIs(PayloadType v) { payloadType_ = v; }

   bool operator==(const LfibIpLookupVia&) const = default;
   std::size_t hash() const;
   // "LfibIpLookupVia via viaTypeIpLookup index 1 source bgp vrfName red payloadType ...".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   L3::VrfName vrfName_;
   PayloadType payloadType_ = payloadTypeAutoDecide_;
};

std::ostream& operator<<(std::ostream& os, const LfibIpLookupVia& via);

// Pop and bridge the payload into VLAN `vlanId`.
class LfibVlanVia {
 public:
   LfibVlanVia() = default;
   LfibVlanVia(const LfibViaKey& key, Bridging::VlanId vlanId) : key_(key), vlanId_(vlanId) {}

   const LfibViaKey& key() const { return key_; }
   Bridging::VlanId vlanId() const { return vlanId_; }
   void vlanIdIs(Bridging::VlanId v) { vlanId_ = v; }

   bool operator==(const LfibVlanVia&) const = default;
   std::size_t hash() const;
   // "LfibVlanVia via viaTypeVlan index 1 source evpn vlanId 10".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   Bridging::VlanId vlanId_;
};

std::ostream& operator<<(std::ostream& os, const LfibVlanVia& via);

// The split-horizon filter of an EVPN ethernet segment: traffic that carries this label came from
// a peer attached to the same segment. It holds only its key; the decap machine leaves it to the
// platform and programs nothing for it.
class LfibEvpnEthernetSegmentFilterVia {
 public:
   LfibEvpnEthernetSegmentFilterVia() = default;
   explicit LfibEvpnEthernetSegmentFilterVia(const LfibViaKey& key) : key_(key) {}

   const LfibViaKey& key() const { return key_; }

   bool operator==(const LfibEvpnEthernetSegmentFilterVia&) const = default;
   std::size_t hash() const { return key_.hash(); }
   // "LfibEvpnEthernetSegmentFilterVia via viaTypeEvpnEthernetSegment index 1 source evpn".
   std::string stringValue() const {
      return "LfibEvpnEthernetSegmentFilterVia " + key_.stringValue();
   }

 private:
   LfibViaKey key_;
};

std::ostream& operator<<(std::ostream& os, const LfibEvpnEthernetSegmentFilterVia& via);

// Pop and flood the payload in VLAN `vlanId` (EVPN broadcast, unknown unicast and multicast).
class LfibEvpnVlanFloodVia {
 public:
   LfibEvpnVlanFloodVia() = default;
   LfibEvpnVlanFloodVia(const LfibViaKey& key, Bridging::VlanId vlanId)
       : key_(key), vlanId_(vlanId) {}

   const LfibViaKey& key() const { return key_; }
   Bridging::VlanId vlanId() const { return vlanId_; }
   void vlanIdIs(Bridging::VlanId v) { vlanId_ = v; }

   bool operator==(const LfibEvpnVlanFloodVia&) const = default;
   std::size_t hash() const;
   // "LfibEvpnVlanFloodVia via viaTypeEvpnVlanFlood index 1 source evpn vlanId 10".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   Bridging::VlanId vlanId_;
};

std::ostream& operator<<(std::ostream& os, const LfibEvpnVlanFloodVia& via);

// Pop and bridge by the payload's dot1q tag, through the tag-to-VLAN collection
// `dot1qTagToVlanKey` of the LFIB (EVPN VLAN-aware bundle).
class LfibEvpnVlanAwareVia {
 public:
   LfibEvpnVlanAwareVia() = default;
   LfibEvpnVlanAwareVia(const LfibViaKey& key, const LfibDot1qTagToVlanKey& dot1qTagToVlanKey)
       : key_(key), dot1qTagToVlanKey_(dot1qTagToVlanKey) {}

   const LfibViaKey& key() const { return key_; }
   const LfibDot1qTagToVlanKey& dot1qTagToVlanKey() const { return dot1qTagToVlanKey_; }
   void dot1qTagToVlanKeyIs(const LfibDot1qTagToVlanKey& v) { dot1qTagToVlanKey_ = v; }

   bool operator==(const LfibEvpnVlanAwareVia&) const = default;
   std::size_t hash() const;
   // "LfibEvpnVlanAwareVia via viaTypeEvpnVlanAware index 1 source evpn dot1qTagToVlanKey 3".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   LfibDot1qTagToVlanKey dot1qTagToVlanKey_;
};

std::ostream& operator<<(std::ostream& os, const LfibEvpnVlanAwareVia& via);

// The flooding variant of LfibEvpnVlanAwareVia.
class LfibEvpnVlanAwareFloodVia {
 public:
   LfibEvpnVlanAwareFloodVia() = default;
   LfibEvpnVlanAwareFloodVia(const LfibViaKey& key, const LfibDot1qTagToVlanKey& dot1qTagToVlanKey)
       : key_(key), dot1qTagToVlanKey_(dot1qTagToVlanKey) {}

   const LfibViaKey& key() const { return key_; }
   const LfibDot1qTagToVlanKey& dot1qTagToVlanKey() const { return dot1qTagToVlanKey_; }
   void dot1qTagToVlanKeyIs(const LfibDot1qTagToVlanKey& v) { dot1qTagToVlanKey_ = v; }

   bool operator==(const LfibEvpnVlanAwareFloodVia&) const = default;
   std::size_t hash() const;
   // "LfibEvpnVlanAwareFloodVia via viaTypeEvpnVlanAwareFlood index 1 source evpn
   // dot1qTagToVlanKey 3".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   LfibDot1qTagToVlanKey dot1qTagToVlanKey_;
};

std::ostream& operator<<(std::ostream& os, const LfibEvpnVlanAwareFloodVia& via);

// Pop and hand the payload to the pseudowire interface `pwIntfId`.
class LfibPwVia {
 public:
   LfibPwVia() = default;
   LfibPwVia(const LfibViaKey& key, Wire::IntfId pwIntfId) : key_(key), pwIntfId_(pwIntfId) {}

   const LfibViaKey& key() const { return key_; }
   Wire::IntfId pwIntfId() const { return pwIntfId_; }
   void pwIntfIdIs(Wire::IntfId v) { pwIntfId_ = v; }

   bool operator==(const LfibPwVia&) const = default;
   std::size_t hash() const;
   // "LfibPwVia via viaTypePseudowire index 1 source pseudowire pwIntfId Pseudowire5".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   Wire::IntfId pwIntfId_;
};

std::ostream& operator<<(std::ostream& os, const LfibPwVia& via);

}  // namespace Mpls
