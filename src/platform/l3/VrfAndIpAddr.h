#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/IpAddr.h>

#include "VrfId.h"

namespace Fal {

// An IPv4 address in a VRF: key of the addresses watched through the IPv4 route reactor and of
// their resolutions in the L3 status.
class VrfAndIpAddr {
 public:
   VrfAndIpAddr() = default;
   VrfAndIpAddr(VrfId vrfId, Wire::IpAddr ipAddr) : vrfId_(vrfId), ipAddr_(ipAddr) {}

   VrfId vrfId() const { return vrfId_; }
   Wire::IpAddr ipAddr() const { return ipAddr_; }

   bool operator==(const VrfAndIpAddr&) const = default;
   // By VRF, then by address.
   bool operator<(const VrfAndIpAddr& o) const;
   std::size_t hash() const;

   // "Value('Fal::VrfAndIpAddr', ** {'vrfId': 1, 'ipAddr': 10.0.0.1})".
   std::string stringValue() const;

 private:
   VrfId vrfId_;
   Wire::IpAddr ipAddr_;
};

std::ostream& operator<<(std::ostream& os, const VrfAndIpAddr& key);

}  // namespace Fal
