#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include <mplsfwd/kor/Ptr.h>

#include "HardwareL2ViaSet.h"

namespace Mpls::Hardware {

// What every hardware adjacency record has: its index, fixed at creation, and whether the
// platform reported it unprogrammed. Shared by counted reference between the hardware status,
// the per-VRF hardware configuration and the forwarding layer's own adjacency objects; identity
// (the object), not content, is what the configuration tables compare.
class AdjacencyBase : public Kor::PtrInterface {
 public:
   explicit AdjacencyBase(std::uint64_t index) : index_(index) {}

   std::uint64_t index() const { return index_; }
   bool unprogrammed() const { return unprogrammed_; }
   void unprogrammedIs(bool v) { unprogrammed_ = v; }

 private:
   const std::uint64_t index_;
   bool unprogrammed_ = false;
};

// A hardware L2 adjacency: the egress rewrite (resolved L2 vias) that MPLS routes forward
// through. Created by the transit layer when a new L2 via set appears, written into the
// per-VRF hardware configuration and shared by every L3 adjacency that resolves to the same set.
// Plain record without reactors: whoever changes it republishes it.
class L2Adjacency : public AdjacencyBase {
 public:
   using Ptr = Kor::Ptr<L2Adjacency>;
   using PtrConst = Kor::Ptr<const L2Adjacency>;

   explicit L2Adjacency(std::uint64_t index) : AdjacencyBase(index) {}

   const L2ViaSet& l2ViaSet() const { return l2ViaSet_; }
   void l2ViaSetIs(const L2ViaSet& v) { l2ViaSet_ = v; }
   std::uint64_t version() const { return version_; }
   void versionIs(std::uint64_t v) { version_ = v; }

   // "hw l2 adj 7 version 0 unprogrammed false hw l2 via set {...}".
   std::string stringValue() const;

 private:
   L2ViaSet l2ViaSet_;
   std::uint64_t version_ = 0;
};

std::ostream& operator<<(std::ostream& os, const L2Adjacency& adj);

}  // namespace Mpls::Hardware
