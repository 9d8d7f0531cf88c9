#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/MplsLabelAction.h>
#include <mplsfwd/wire/MplsLabelOperation.h>

#include "LfibKeys.h"
#include "LfibTypes.h"

namespace Mpls {

// One via of type MPLS-IP: send the packet, with `labelStack` applied as `labelAction` says,
// to the IP next hop `nextHop`, over `intf` when one is named (else the next hop is resolved
// through the routing table). The interface may stand for a next-hop group or a dynamic tunnel
// (see the classifiers of Wire::IntfId). A default via is the "not found" answer of lookups.
class LfibMplsVia {
 public:
   LfibMplsVia() = default;
   LfibMplsVia(const LfibViaKey& key, const Wire::IpGenAddr& nextHop, Wire::IntfId intf,
               const Wire::MplsLabelOperation& labelStack,
               Wire::MplsLabelAction labelAction = Wire::MplsLabelAction::swap,
               PayloadType payloadType = payloadTypeAutoDecide_)
       : key_(key),
         nextHop_(nextHop),
         intf_(intf),
         labelStack_(labelStack),
         labelAction_(labelAction),
         payloadType_(payloadType) {}

   const LfibViaKey& key() const { return key_; }
   const Wire::IpGenAddr& nextHop() const { return nextHop_; }
   void nextHopIs(const Wire::IpGenAddr& v) { nextHop_ = v; }
   Wire::IntfId intf() const { return intf_; }
   void intfIs(Wire::IntfId v) { intf_ = v; }
   const Wire::MplsLabelOperation& labelStack() const { return labelStack_; }
   void labelStackIs(const Wire::MplsLabelOperation& v) { labelStack_ = v; }
   Wire::MplsLabelAction labelAction() const { return labelAction_; }
   void labelActionIs(Wire::MplsLabelAction v) { labelAction_ = v; }
   PayloadType payloadType() const { return payloadType_; }
   void payloadTypeIs(PayloadType v) { payloadType_ = v; }

   bool operator==(const LfibMplsVia&) const = default;
   std::size_t hash() const;

   // "LfibMplsVia via viaTypeMplsIp index 1 source static nextHop 10.0.0.1 intf Ethernet1
   // labelStack [16] labelAction swap payloadType payloadTypeAutoDecide".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   Wire::IpGenAddr nextHop_;
   Wire::IntfId intf_;
   Wire::MplsLabelOperation labelStack_;
   Wire::MplsLabelAction labelAction_ = Wire::MplsLabelAction::none;
   PayloadType payloadType_ = payloadTypeAutoDecide_;
};

std::ostream& operator<<(std::ostream& os, const LfibMplsVia& via);

}  // namespace Mpls
