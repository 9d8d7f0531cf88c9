#include "NextHopKey.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

bool NextHopKey::operator<(const NextHopKey& o) const {
   if (nextHop_ != o.nextHop_) {
      return nextHop_ < o.nextHop_;
   }
   return l3Intf_ < o.l3Intf_;
}

std::size_t NextHopKey::hash() const {
   return Kor::hashCombine(nextHop_.hash(), l3Intf_.value());
}

std::string NextHopKey::stringValue() const {
   return "Value('Fal::NextHopKey', ** {'nextHop': " + nextHop_.stringValue() +
          ", 'l3Intf': " + l3Intf_.stringValue() + "})";
}

std::ostream& operator<<(std::ostream& os, const NextHopKey& key) {
   return os << key.stringValue();
}

}  // namespace Fal
