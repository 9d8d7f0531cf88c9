#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/VlanId.h>

#include "VrfId.h"

namespace Fal {

// The VRF id that names no VRF. A next hop's neighbour entry carries it when the entry is to be
// looked up in its interface's ARP VRF instead (L3Status::l3IntfArpVrfId).
constexpr VrfId invalidVrfId() {
   return VrfId(0xffffff);
}

// What the platform knows of one next hop's neighbour (ARP or ND) entry: the VRF the entry lives
// in, the neighbour's MAC address and the VLAN and L2 interface it is reached on. The default
// value is the unresolved entry: no MAC address yet and the invalid VRF. Written by the platform
// into L3Status::nextHopInfo; read by whoever resolves next hops to L2 terms.
class NextHopInfo {
 public:
   NextHopInfo() = default;
   NextHopInfo(VrfId vrfId, const Wire::EthAddr& macAddr, Bridging::VlanId vlanId,
               Wire::IntfId l2Intf)
       : vrfId_(vrfId), macAddr_(macAddr), vlanId_(vlanId), l2Intf_(l2Intf) {}

   VrfId vrfId() const { return vrfId_; }
   void vrfIdIs(VrfId v) { vrfId_ = v; }
   const Wire::EthAddr& macAddr() const { return macAddr_; }
   void macAddrIs(const Wire::EthAddr& v) { macAddr_ = v; }
   Bridging::VlanId vlanId() const { return vlanId_; }
   void vlanIdIs(Bridging::VlanId v) { vlanId_ = v; }
   Wire::IntfId l2Intf() const { return l2Intf_; }
   void l2IntfIs(Wire::IntfId v) { l2Intf_ = v; }

   // The neighbour's MAC address is known.
   bool resolved() const { return !macAddr_.isZero(); }

   bool operator==(const NextHopInfo&) const = default;
   std::size_t hash() const;

   // "Value('Fal::NextHopInfo', ** {'vrfId': 16777215, 'macAddr': 00:00:00:00:00:00, 'vlanId': 0,
   // 'l2Intf': })" for the default value.
   std::string stringValue() const;

 private:
   VrfId vrfId_ = invalidVrfId();
   Wire::EthAddr macAddr_;
   Bridging::VlanId vlanId_;
   Wire::IntfId l2Intf_;
};

std::ostream& operator<<(std::ostream& os, const NextHopInfo& info);

}  // namespace Fal
