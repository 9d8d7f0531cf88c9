#include "HardwareL2Adjacency.h"

#include <ostream>

namespace Mpls::Hardware {

std::string L2Adjacency::stringValue() const {
   return "hw l2 adj " + std::to_string(index()) + " version " + std::to_string(version_) +
          " unprogrammed " + (unprogrammed() ? "true " : "false ") + l2ViaSet_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const L2Adjacency& adj) {
   return os << adj.stringValue();
}

}  // namespace Mpls::Hardware
