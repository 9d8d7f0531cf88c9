#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/IpGenAddr.h>

#include "VrfAndIpAddr.h"
#include "VrfId.h"

namespace Fal {

// An address of either family in a VRF: key of the addresses watched through the IPv6 route
// reactor and of their resolutions in the L3 status. Built from a VrfAndIpAddr, so that handling
// of resolved IPv4 and IPv6 addresses can meet in one place.
class VrfAndIpGenAddr {
 public:
   VrfAndIpGenAddr() = default;
   VrfAndIpGenAddr(VrfId vrfId, const Wire::IpGenAddr& ipGenAddr)
       : vrfId_(vrfId), ipGenAddr_(ipGenAddr) {}
   explicit VrfAndIpGenAddr(const VrfAndIpAddr& v4)
       : vrfId_(v4.vrfId()), ipGenAddr_(Wire::IpGenAddr(v4.ipAddr())) {}

   VrfId vrfId() const { return vrfId_; }
   const Wire::IpGenAddr& ipGenAddr() const { return ipGenAddr_; }

   bool operator==(const VrfAndIpGenAddr&) const = default;
   // By VRF, then by address.
   bool operator<(const VrfAndIpGenAddr& o) const;
   std::size_t hash() const;

   // "Value('Fal::VrfAndIpGenAddr', ** {'vrfId': 1, 'ipGenAddr': 2001:db8::1})".
   std::string stringValue() const;

 private:
   VrfId vrfId_;
   Wire::IpGenAddr ipGenAddr_;
};

std::ostream& operator<<(std::ostream& os, const VrfAndIpGenAddr& key);

}  // namespace Fal
