#include "MplsStatus.h"

namespace Mpls {

std::ostream& operator<<(std::ostream& os, const PwAdjacency& a) {
   return os << "pw adj " << a.index() << " pwIntfId " << a.pwIntfId();
}

std::ostream& operator<<(std::ostream& os, const ExtFecAdjacency& a) {
   return os << "ext fec adj " << a.index() << " fecId " << a.fecId() << " labelAction "
             << a.labelAction();
}

LfibRoute Status::lfibRoute(const RouteKey& k) const {
   auto it = route_.find(k);
   return it == route_.end() ? LfibRoute() : it->second;
}

LfibViaSet Status::lfibAdjacency(std::uint64_t index) const {
   auto it = adjacency_.find(index);
   return it == adjacency_.end() ? LfibViaSet() : it->second;
}

PwAdjacency Status::getPwAdjacency(const AdjacencyKey& key) const {
   if (key.adjType() != adjacencyTypePseudowire_) {
      return PwAdjacency();
   }
   return lfibPwAdjacency(key.index());
}

}  // namespace Mpls
