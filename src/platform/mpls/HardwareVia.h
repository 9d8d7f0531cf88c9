#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/MplsLabelOperation.h>
#include <mplsfwd/wire/VlanId.h>

namespace Mpls::Hardware {

// One via of a hardware L3 adjacency, as next-hop resolution fills it: the L3 next hop, the
// address it was resolved through (the gateway when a route resolved it; empty otherwise), the
// labels, the egress L3 interface, the L2 part (VLAN, MAC, port) and flags. All fields are
// zero or empty when constructed. Ordered field by field in that order.
class Via {
 public:
   Via() = default;

   const Wire::IpGenAddr& nextHop() const { return nextHop_; }
   void nextHopIs(const Wire::IpGenAddr& v) { nextHop_ = v; }
   const Wire::IpGenAddr& resolvedAddr() const { return resolvedAddr_; }
   void resolvedAddrIs(const Wire::IpGenAddr& v) { resolvedAddr_ = v; }
   const Wire::MplsLabelOperation& labelStack() const { return labelStack_; }
   void labelStackIs(const Wire::MplsLabelOperation& v) { labelStack_ = v; }
   Wire::IntfId l3Intf() const { return l3Intf_; }
   void l3IntfIs(Wire::IntfId v) { l3Intf_ = v; }
   Bridging::VlanId vlanId() const { return vlanId_; }
   void vlanIdIs(Bridging::VlanId v) { vlanId_ = v; }
   const Wire::EthAddr& macAddr() const { return macAddr_; }
   void macAddrIs(const Wire::EthAddr& v) { macAddr_ = v; }
   Wire::IntfId l2Intf() const { return l2Intf_; }
   void l2IntfIs(Wire::IntfId v) { l2Intf_ = v; }
   std::uint32_t flags() const { return flags_; }
   void flagsIs(std::uint32_t v) { flags_ = v; }

   bool operator==(const Via&) const = default;
   bool operator<(const Via& o) const;
   std::size_t hash() const;

   // "hw via nexthop 10.0.0.1 resolved  labels [16] l3Intf Vlan10 vlan 10 mac ... l2Intf ...
   // flags 0".
   std::string stringValue() const;

 private:
   Wire::IpGenAddr nextHop_;
   Wire::IpGenAddr resolvedAddr_;
   Wire::MplsLabelOperation labelStack_;
   Wire::IntfId l3Intf_;
   Bridging::VlanId vlanId_;
   Wire::EthAddr macAddr_;
   Wire::IntfId l2Intf_;
   std::uint32_t flags_ = 0;
};

std::ostream& operator<<(std::ostream& os, const Via& via);

}  // namespace Mpls::Hardware
