#include "LfibRoute.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls {

std::size_t LfibRoute::hash() const {
   std::size_t h = key_.hash();
   h = Kor::hashCombine(h, viaSetKey_.hash());
   h = Kor::hashCombine(h, metric_);
   h = Kor::hashCombine(h, source_);
   return Kor::hashCombine(h, adjacencyKey_.hash());
}

std::string LfibRoute::stringValue() const {
   return "lFib route " + key_.topLabel().stringValue() + " viaSet " + viaSetKey_.stringValue() +
          " metric " + std::to_string(metric_) + " source " + Mpls::stringValue(source_) +
          " adjacency " + adjacencyKey_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibRoute& route) {
   return os << route.stringValue();
}

}  // namespace Mpls
