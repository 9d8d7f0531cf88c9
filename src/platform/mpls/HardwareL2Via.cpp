#include "HardwareL2Via.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls::Hardware {

bool L2Via::operator<(const L2Via& o) const {
   if (vlanId_ != o.vlanId_) {
      return vlanId_ < o.vlanId_;
   }
   if (l2Intf_ != o.l2Intf_) {
      return l2Intf_ < o.l2Intf_;
   }
   if (macAddr_ != o.macAddr_) {
      return macAddr_ < o.macAddr_;
   }
   if (!(labelStack_ == o.labelStack_)) {
      return labelStack_ < o.labelStack_;
   }
   return nextHop_ < o.nextHop_;
}

std::size_t L2Via::hash() const {
   std::size_t h = Kor::mixInt(vlanId_.value());
   h = Kor::hashCombine(h, l2Intf_.value());
   h = Kor::hashCombine(h, macAddr_.value());
   h = Kor::hashCombine(h, labelStack_.hash());
   return Kor::hashCombine(h, nextHop_.hash());
}

std::string L2Via::stringValue() const {
   return "hw l2 via vlan " + vlanId_.stringValue() + " intf " + l2Intf_.stringValue() + " mac " +
          macAddr_.stringValue() + " labels " + labelStack_.stringValue() + " nexthop " +
          nextHop_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const L2Via& via) {
   return os << via.stringValue();
}

}  // namespace Mpls::Hardware
