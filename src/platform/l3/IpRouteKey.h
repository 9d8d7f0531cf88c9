#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "IpPrefix.h"
#include "VrfId.h"

namespace Routing::Hardware {

// The key of one IP route in the hardware's route status: its VRF and its prefix.
class IpRouteKey {
 public:
   IpRouteKey() = default;
   IpRouteKey(Fal::VrfId vrfId, const L3::IpPrefix& prefix) : vrfId_(vrfId), prefix_(prefix) {}

   Fal::VrfId vrfId() const { return vrfId_; }
   const L3::IpPrefix& prefix() const { return prefix_; }

   bool operator==(const IpRouteKey&) const = default;
   // By VRF, then by prefix.
   bool operator<(const IpRouteKey& o) const;
   std::size_t hash() const;

   // "Value('Routing::Hardware::IpRouteKey', ** {'vrfId': 0, 'prefix': 10.0.0.0/8})".
   std::string stringValue() const;

 private:
   Fal::VrfId vrfId_;
   L3::IpPrefix prefix_;
};

std::ostream& operator<<(std::ostream& os, const IpRouteKey& key);

}  // namespace Routing::Hardware
