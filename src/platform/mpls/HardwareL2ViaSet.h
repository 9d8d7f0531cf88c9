#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <vector>

#include "HardwareL2Via.h"

namespace Mpls::Hardware {

// The resolved layer-2 vias of one L3 adjacency, kept in L2Via order. Two adjacencies whose
// next hops resolve to equal sets share one hardware L2 adjacency, so equality, ordering and
// hash look at every member in that order. The hash is computed once per content and kept: the
// sets are keys of the table that finds the adjacency to share, where a hash walked every
// member's addresses and labels on every lookup, insertion and erasure. The members are one
// sorted array (a set holds a handful): copying a set, which every rewrite of an adjacency does
// several times, is one allocation rather than one per member.
class L2ViaSet {
 public:
   using Members = std::vector<L2Via>;

   L2ViaSet() = default;

   // Adds (true) or removes (false) one via.
   void l2ViaIs(const L2Via& via, bool present);
   bool l2Via(const L2Via& via) const;
   void l2ViaDelAll() {
      members_.clear();
      hashed_ = false;
   }
   // Room for `n` vias, so that a set filled one via at a time allocates once.
   void reserve(std::size_t n) { members_.reserve(n); }
   std::size_t l2Vias() const { return members_.size(); }
   bool empty() const { return members_.empty(); }
   const Members& members() const { return members_; }
   Members::const_iterator begin() const { return members_.begin(); }
   Members::const_iterator end() const { return members_.end(); }

   bool operator==(const L2ViaSet& o) const {
      if (hashed_ && o.hashed_ && hash_ != o.hash_) {
         return false;
      }
      return members_ == o.members_;
   }
   bool operator<(const L2ViaSet& o) const { return members_ < o.members_; }
   std::size_t hash() const;

   // "hw l2 via set {hw l2 via ..., hw l2 via ...}".
   std::string stringValue() const;

 private:
   std::size_t computeHash() const;

   Members members_;
   mutable std::size_t hash_ = 0;
   mutable bool hashed_ = false;
};

std::ostream& operator<<(std::ostream& os, const L2ViaSet& set);

}  // namespace Mpls::Hardware
