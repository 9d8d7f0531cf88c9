#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>

#include <vector>

#include <mplsfwd/kor/Ptr.h>

#include "HardwareL2Adjacency.h"
#include "HardwareVia.h"

namespace Mpls::Hardware {

// A hardware L3 adjacency: the vias that one LFIB via set resolved to and the L2 adjacency that
// carries them. Created in the hardware status under the transit layer's adjacency index when
// an L3 adjacency is made, refilled whenever the via set or its resolution changes, deleted with
// the L3 adjacency. The vias form a set: adding an equal via twice keeps one. They are one sorted
// array, refilled in place by every review of the adjacency without allocating.
class Adjacency : public AdjacencyBase {
 public:
   using Ptr = Kor::Ptr<Adjacency>;
   using PtrConst = Kor::Ptr<const Adjacency>;
   using Vias = std::vector<Via>;

   explicit Adjacency(std::uint64_t index) : AdjacencyBase(index) {}

   // Adds (true) or removes (false) one via.
   void viaIs(const Via& via, bool present);
   bool via(const Via& via) const;
   void viaDelAll() { via_.clear(); }
   // Rewrites the via at `position` (of viaSet()) with one that keeps its place in the order:
   // the same via with another layer-2 part, say, as the fields before it tell vias apart.
   void viaAtIs(std::size_t position, const Via& via) { via_[position] = via; }
   std::size_t vias() const { return via_.size(); }
   const Vias& viaSet() const { return via_; }

   const L2Adjacency::Ptr& l2Adjacency() const { return l2Adjacency_; }
   void l2AdjacencyIs(L2Adjacency::Ptr v) { l2Adjacency_ = std::move(v); }

   // "hw adj 3 l2 adj 7 unprogrammed false vias 2: hw via ..., hw via ...".
   std::string stringValue() const;

 private:
   Vias via_;
   L2Adjacency::Ptr l2Adjacency_;
};

std::ostream& operator<<(std::ostream& os, const Adjacency& adj);

}  // namespace Mpls::Hardware
