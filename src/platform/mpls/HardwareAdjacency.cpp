#include "HardwareAdjacency.h"

#include <ostream>

namespace Mpls::Hardware {

void Adjacency::viaIs(const Via& via, bool present) {
   if (present) {
      via_.insert(via);
   } else {
      via_.erase(via);
   }
}

std::string Adjacency::stringValue() const {
   std::string s = "hw adj " + std::to_string(index()) + " l2 adj " +
                   (l2Adjacency_ ? std::to_string(l2Adjacency_->index()) : std::string("none")) +
                   " unprogrammed " + (unprogrammed() ? "true" : "false") + " vias " +
                   std::to_string(via_.size());
   bool first = true;
   for (const Via& v : via_) {
      s += first ? ": " : ", ";
      first = false;
      s += v.stringValue();
   }
   return s;
}

std::ostream& operator<<(std::ostream& os, const Adjacency& adj) {
   return os << adj.stringValue();
}

}  // namespace Mpls::Hardware
