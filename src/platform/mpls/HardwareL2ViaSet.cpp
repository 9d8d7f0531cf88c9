#include "HardwareL2ViaSet.h"

#include <algorithm>
#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls::Hardware {

void L2ViaSet::l2ViaIs(const L2Via& via, bool present) {
   // A set filled in order takes each via at the end, after one compare.
   if (present && (members_.empty() || members_.back() < via)) {
      members_.push_back(via);
      hashed_ = false;
      return;
   }
   auto it = std::lower_bound(members_.begin(), members_.end(), via);
   const bool there = it != members_.end() && *it == via;
   if (present && !there) {
      members_.insert(it, via);
      hashed_ = false;
   } else if (!present && there) {
      members_.erase(it);
      hashed_ = false;
   }
}

bool L2ViaSet::l2Via(const L2Via& via) const {
   return std::binary_search(members_.begin(), members_.end(), via);
}

std::size_t L2ViaSet::hash() const {
   if (!hashed_) {
      hash_ = computeHash();
      hashed_ = true;
   }
   return hash_;
}

std::size_t L2ViaSet::computeHash() const {
   std::size_t h = Kor::mixInt(members_.size());
   for (const L2Via& via : members_) {
      h = Kor::hashCombine(h, via.hash());
   }
   return h;
}

std::string L2ViaSet::stringValue() const {
   std::string s = "hw l2 via set {";
   bool first = true;
   for (const L2Via& via : members_) {
      if (!first) {
         s += ", ";
      }
      first = false;
      s += via.stringValue();
   }
   return s + "}";
}

std::ostream& operator<<(std::ostream& os, const L2ViaSet& set) {
   return os << set.stringValue();
}

}  // namespace Mpls::Hardware
