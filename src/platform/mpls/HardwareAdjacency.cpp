#include "HardwareAdjacency.h"

#include <algorithm>
#include <ostream>

namespace Mpls::Hardware {

void Adjacency::viaIs(const Via& via, bool present) {
   // A review refills the vias in their order: each one then goes at the end, after one compare.
   if (present && (via_.empty() || via_.back() < via)) {
      via_.push_back(via);
      return;
   }
   auto it = std::lower_bound(via_.begin(), via_.end(), via);
   const bool there = it != via_.end() && *it == via;
   if (present && !there) {
      via_.insert(it, via);
   } else if (!present && there) {
      via_.erase(it);
   }
}

bool Adjacency::via(const Via& via) const {
   return std::binary_search(via_.begin(), via_.end(), via);
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
