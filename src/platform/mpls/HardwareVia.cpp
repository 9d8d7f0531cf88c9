#include "HardwareVia.h"

#include <ostream>
#include <tuple>

#include <mplsfwd/kor/Hash.h>

namespace Mpls::Hardware {

bool Via::operator<(const Via& o) const {
   if (!(nextHop_ == o.nextHop_)) {
      return nextHop_ < o.nextHop_;
   }
   if (!(resolvedAddr_ == o.resolvedAddr_)) {
      return resolvedAddr_ < o.resolvedAddr_;
   }
   if (!(labelStack_ == o.labelStack_)) {
      return labelStack_ < o.labelStack_;
   }
   return std::tie(l3Intf_, vlanId_, macAddr_, l2Intf_, flags_) <
          std::tie(o.l3Intf_, o.vlanId_, o.macAddr_, o.l2Intf_, o.flags_);
}

std::size_t Via::hash() const {
   std::size_t h = nextHop_.hash();
   h = Kor::hashCombine(h, resolvedAddr_.hash());
   h = Kor::hashCombine(h, labelStack_.hash());
   h = Kor::hashCombine(h, l3Intf_.value());
   h = Kor::hashCombine(h, vlanId_.value());
   h = Kor::hashCombine(h, macAddr_.value());
   h = Kor::hashCombine(h, l2Intf_.value());
   return Kor::hashCombine(h, flags_);
}

std::string Via::stringValue() const {
   return "hw via nexthop " + nextHop_.stringValue() + " resolved " + resolvedAddr_.stringValue() +
          " labels " + labelStack_.stringValue() + " l3Intf " + l3Intf_.stringValue() + " vlan " +
          vlanId_.stringValue() + " mac " + macAddr_.stringValue() + " l2Intf " +
          l2Intf_.stringValue() + " flags " + std::to_string(flags_);
}

std::ostream& operator<<(std::ostream& os, const Via& via) {
   return os << via.stringValue();
}

}  // namespace Mpls::Hardware
