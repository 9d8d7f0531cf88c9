#include "NextHopInfo.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

std::size_t NextHopInfo::hash() const {
   std::size_t h = vrfId_.hash();
   h = Kor::hashCombine(h, macAddr_.value());
   h = Kor::hashCombine(h, vlanId_.value());
   return Kor::hashCombine(h, l2Intf_.value());
}

std::string NextHopInfo::stringValue() const {
   return "Value('Fal::NextHopInfo', ** {'vrfId': " + vrfId_.stringValue() +
          ", 'macAddr': " + macAddr_.stringValue() + ", 'vlanId': " + vlanId_.stringValue() +
          ", 'l2Intf': " + l2Intf_.stringValue() + "})";
}

std::ostream& operator<<(std::ostream& os, const NextHopInfo& info) {
   return os << info.stringValue();
}

}  // namespace Fal
