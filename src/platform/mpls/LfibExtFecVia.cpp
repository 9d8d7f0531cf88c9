#include "LfibExtFecVia.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls {

std::size_t LfibExtFecVia::hash() const {
   std::size_t h = Kor::hashCombine(key_.hash(), fecId_.value());
   return Kor::hashCombine(h, static_cast<std::uint64_t>(labelAction_));
}

std::string LfibExtFecVia::stringValue() const {
   return "LfibExtFecVia " + key_.stringValue() + " fecId " + fecId_.stringValue() +
          " labelAction " + Wire::stringValue(labelAction_);
}

std::ostream& operator<<(std::ostream& os, const LfibExtFecVia& via) {
   return os << via.stringValue();
}

}  // namespace Mpls
