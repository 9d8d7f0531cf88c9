#include "IpRouteKey.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Routing::Hardware {

bool IpRouteKey::operator<(const IpRouteKey& o) const {
   if (vrfId_ != o.vrfId_) {
      return vrfId_ < o.vrfId_;
   }
   return prefix_ < o.prefix_;
}

std::size_t IpRouteKey::hash() const {
   return Kor::hashCombine(prefix_.hash(), vrfId_.value());
}

std::string IpRouteKey::stringValue() const {
   return "Value('Routing::Hardware::IpRouteKey', ** {'vrfId': " + vrfId_.stringValue() +
          ", 'prefix': " + prefix_.stringValue() + "})";
}

std::ostream& operator<<(std::ostream& os, const IpRouteKey& key) {
   return os << key.stringValue();
}

}  // namespace Routing::Hardware
