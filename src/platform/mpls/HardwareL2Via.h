#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/MplsLabelOperation.h>
#include <mplsfwd/wire/VlanId.h>

namespace Mpls::Hardware {

// One resolved layer-2 next hop as the platform programs it: the VLAN and port to send on, the
// neighbour's MAC, the labels to put on and the L3 next hop that it was resolved from. Ordered
// field by field in that order, so that a set of them has one canonical order and can serve as
// the key by which identical L2 adjacencies are shared.
class L2Via {
 public:
   L2Via() = default;
   L2Via(Bridging::VlanId vlanId, Wire::IntfId l2Intf, const Wire::EthAddr& macAddr,
         const Wire::MplsLabelOperation& labelStack, const Wire::IpGenAddr& nextHop)
       : vlanId_(vlanId),
         l2Intf_(l2Intf),
         macAddr_(macAddr),
         labelStack_(labelStack),
         nextHop_(nextHop) {}

   Bridging::VlanId vlanId() const { return vlanId_; }
   void vlanIdIs(Bridging::VlanId v) { vlanId_ = v; }
   Wire::IntfId l2Intf() const { return l2Intf_; }
   void l2IntfIs(Wire::IntfId v) { l2Intf_ = v; }
   const Wire::EthAddr& macAddr() const { return macAddr_; }
   void macAddrIs(const Wire::EthAddr& v) { macAddr_ = v; }
   const Wire::MplsLabelOperation& labelStack() const { return labelStack_; }
   void labelStackIs(const Wire::MplsLabelOperation& v) { labelStack_ = v; }
   const Wire::IpGenAddr& nextHop() const { return nextHop_; }
   void nextHopIs(const Wire::IpGenAddr& v) { nextHop_ = v; }

   bool operator==(const L2Via&) const = default;
   bool operator<(const L2Via& o) const;
   std::size_t hash() const;

   // "hw l2 via vlan 10 intf Ethernet1 mac 00:11:22:33:44:55 labels [16] nexthop 10.0.0.1".
   std::string stringValue() const;

 private:
   Bridging::VlanId vlanId_;
   Wire::IntfId l2Intf_;
   Wire::EthAddr macAddr_;
   Wire::MplsLabelOperation labelStack_;
   Wire::IpGenAddr nextHop_;
};

std::ostream& operator<<(std::ostream& os, const L2Via& via);

}  // namespace Mpls::Hardware
