#include "HardwareRoute.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls::Hardware {

std::size_t Route::hash() const {
   std::size_t h = routeKey_.hash();
   h = Kor::hashCombine(h, adjacencyIndex_);
   h = Kor::hashCombine(h, l2AdjacencyIndex_);
   h = Kor::hashCombine(h, metric_);
   h = Kor::hashCombine(h, version_);
   return Kor::hashCombine(h, unprogrammed_);
}

std::string Route::stringValue() const {
   return "hw route " + routeKey_.topLabel().stringValue() + " adj " +
          std::to_string(adjacencyIndex_) + " l2 adj " + std::to_string(l2AdjacencyIndex_) +
          " metric " + std::to_string(metric_) + " version " + std::to_string(version_) +
          " unprogrammed " + (unprogrammed_ ? "true" : "false");
}

std::ostream& operator<<(std::ostream& os, const Route& route) {
   return os << route.stringValue();
}

}  // namespace Mpls::Hardware
