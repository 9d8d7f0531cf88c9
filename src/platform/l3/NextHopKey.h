#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>

namespace Fal {

// A next hop on an L3 interface: the neighbour's address (IPv4 or IPv6) and the interface it is
// reached through. Key of the L3 status's neighbour table and of the next hops that the
// monitored-next-hop state machine resolves; the same address on two interfaces is two next hops.
class NextHopKey {
 public:
   NextHopKey() = default;
   NextHopKey(const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf)
       : nextHop_(nextHop), l3Intf_(l3Intf) {}

   const Wire::IpGenAddr& nextHop() const { return nextHop_; }
   Wire::IntfId l3Intf() const { return l3Intf_; }

   bool operator==(const NextHopKey&) const = default;
   // By address, then by interface.
   bool operator<(const NextHopKey& o) const;
   std::size_t hash() const;

   // "Value('Fal::NextHopKey', ** {'nextHop': 10.0.0.1, 'l3Intf': Ethernet1})".
   std::string stringValue() const;

 private:
   Wire::IpGenAddr nextHop_;
   Wire::IntfId l3Intf_;
};

std::ostream& operator<<(std::ostream& os, const NextHopKey& key);

}  // namespace Fal
