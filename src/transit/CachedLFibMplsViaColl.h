#pragma once

#include <cstddef>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/LfibMplsVia.h>
#include <mplsfwd/mpls/LfibViaSet.h>

namespace Fal {

// A snapshot of the MPLS vias of one via set, taken when the set passes validation and only read
// afterwards. When the primary vias must not be used, drop vias stand in for them.
class CachedLFibMplsViaColl : public Kor::PtrInterface {
 public:
   using ViaMap = Kor::OrderedMap<Mpls::LfibViaIndexRange, Mpls::LfibMplsVia>;

   bool usableAsPrimaryVias() const { return usableAsPrimaryVias_; }
   void usableAsPrimaryViasIs(bool v) { usableAsPrimaryVias_ = v; }

   Mpls::LfibMplsVia via(Mpls::LfibViaIndexRange position) const {
      auto it = via_.find(position);
      return it == via_.end() ? Mpls::LfibMplsVia() : it->second;
   }
   void viaIs(Mpls::LfibViaIndexRange position, const Mpls::LfibMplsVia& via) {
      via_[position] = via;
   }
   void viaDel(Mpls::LfibViaIndexRange position) { via_.erase(position); }
   void viaDelAll() { via_.clear(); }
   std::size_t vias() const { return via_.size(); }
   const ViaMap& viaMap() const { return via_; }

 private:
   bool usableAsPrimaryVias_ = true;
   ViaMap via_;
};

}  // namespace Fal
