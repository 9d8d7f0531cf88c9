#include "VrfAndIpAddr.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

bool VrfAndIpAddr::operator<(const VrfAndIpAddr& o) const {
   if (vrfId_ != o.vrfId_) {
      return vrfId_ < o.vrfId_;
   }
   return ipAddr_ < o.ipAddr_;
}

std::size_t VrfAndIpAddr::hash() const {
   return Kor::hashCombine(vrfId_.hash(), ipAddr_.value());
}

std::string VrfAndIpAddr::stringValue() const {
   return "Value('Fal::VrfAndIpAddr', ** {'vrfId': " + vrfId_.stringValue() +
          ", 'ipAddr': " + ipAddr_.stringValue() + "})";
}

std::ostream& operator<<(std::ostream& os, const VrfAndIpAddr& key) {
   return os << key.stringValue();
}

}  // namespace Fal
