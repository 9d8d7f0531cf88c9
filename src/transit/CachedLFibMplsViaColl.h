#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/LfibMplsVia.h>
#include <mplsfwd/mpls/LfibViaSet.h>

namespace Fal {

// A snapshot of the MPLS vias of one via set, taken when the set passes validation and only read
// afterwards. When the primary vias must not be used, drop vias stand in for them. The vias are
// kept in position order in one array: the validation takes them in that order, so a snapshot
// costs one allocation, not one per via.
class CachedLFibMplsViaColl : public Kor::PtrInterface {
 public:
   using ViaMap = std::vector<std::pair<Mpls::LfibViaIndexRange, Mpls::LfibMplsVia>>;

   bool usableAsPrimaryVias() const { return usableAsPrimaryVias_; }
   void usableAsPrimaryViasIs(bool v) { usableAsPrimaryVias_ = v; }

   Mpls::LfibMplsVia via(Mpls::LfibViaIndexRange position) const {
      auto it = find(position);
      return it == via_.end() || !(it->first == position) ? Mpls::LfibMplsVia() : it->second;
   }
   void viaIs(Mpls::LfibViaIndexRange position, const Mpls::LfibMplsVia& via) {
      if (via_.empty() || via_.back().first < position) {
         via_.emplace_back(position, via);
         return;
      }
      auto it = find(position);
      if (it != via_.end() && it->first == position) {
         it->second = via;
      } else {
         via_.emplace(it, position, via);
      }
   }
   void viaDel(Mpls::LfibViaIndexRange position) {
      auto it = find(position);
      if (it != via_.end() && it->first == position) {
         via_.erase(it);
      }
   }
   void viaDelAll() { via_.clear(); }
   void reserve(std::size_t n) { via_.reserve(n); }
   std::size_t vias() const { return via_.size(); }
   const ViaMap& viaMap() const { return via_; }

 private:
   ViaMap::const_iterator find(Mpls::LfibViaIndexRange position) const {
      return std::lower_bound(via_.begin(), via_.end(), position,
                              [](const auto& e, const auto& p) { return e.first < p; });
   }
   ViaMap::iterator find(Mpls::LfibViaIndexRange position) {
      return std::lower_bound(via_.begin(), via_.end(), position,
                              [](const auto& e, const auto& p) { return e.first < p; });
   }

   bool usableAsPrimaryVias_ = true;
   ViaMap via_;
};

}  // namespace Fal
