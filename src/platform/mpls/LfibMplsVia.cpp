#include "LfibMplsVia.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls {

std::size_t LfibMplsVia::hash() const {
   std::size_t h = key_.hash();
   h = Kor::hashCombine(h, nextHop_.hash());
   h = Kor::hashCombine(h, intf_.value());
   h = Kor::hashCombine(h, labelStack_.hash());
   h = Kor::hashCombine(h, static_cast<std::uint64_t>(labelAction_));
   return Kor::hashCombine(h, payloadType_);
}

std::string LfibMplsVia::stringValue() const {
   return "LfibMplsVia " + key_.stringValue() + " nextHop " + nextHop_.stringValue() + " intf " +
          intf_.stringValue() + " labelStack " + labelStack_.stringValue() + " labelAction " +
          Wire::stringValue(labelAction_) + " payloadType " + Mpls::stringValue(payloadType_);
}

std::ostream& operator<<(std::ostream& os, const LfibMplsVia& via) {
   return os << via.stringValue();
}

}  // namespace Mpls
