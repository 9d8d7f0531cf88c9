#include "VrfAndIpGenAddr.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Fal {

bool VrfAndIpGenAddr::operator<(const VrfAndIpGenAddr& o) const {
   if (vrfId_ != o.vrfId_) {
      return vrfId_ < o.vrfId_;
   }
   return ipGenAddr_ < o.ipGenAddr_;
}

std::size_t VrfAndIpGenAddr::hash() const {
   return Kor::hashCombine(vrfId_.hash(), ipGenAddr_.hash());
}

std::string VrfAndIpGenAddr::stringValue() const {
   return "Value('Fal::VrfAndIpGenAddr', ** {'vrfId': " + vrfId_.stringValue() +
          ", 'ipGenAddr': " + ipGenAddr_.stringValue() + "})";
}

std::ostream& operator<<(std::ostream& os, const VrfAndIpGenAddr& key) {
   return os << key.stringValue();
}

}  // namespace Fal
