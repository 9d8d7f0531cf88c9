#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/HardwareL2Adjacency.h>
#include <mplsfwd/mpls/RouteKey.h>

namespace Fal {

// One MPLS route as the transit state machine asks the platform to program it, stored by value in
// the per-VRF hardware tables and keyed by its route key. Equality takes the adjacency by
// identity: the same key and version through another (even equal) adjacency object is a change
// the platform must see.
class MplsHwRoute {
 public:
   MplsHwRoute() = default;
   MplsHwRoute(const Mpls::RouteKey& routeKey, Kor::Ptr<Mpls::Hardware::L2Adjacency> l2Adjacency,
               std::uint64_t version)
       : routeKey_(routeKey), l2Adjacency_(std::move(l2Adjacency)), version_(version) {}

   const Mpls::RouteKey& routeKey() const { return routeKey_; }
   void routeKeyIs(const Mpls::RouteKey& k) { routeKey_ = k; }
   const Kor::Ptr<Mpls::Hardware::L2Adjacency>& l2Adjacency() const { return l2Adjacency_; }
   void l2AdjacencyIs(Kor::Ptr<Mpls::Hardware::L2Adjacency> a) { l2Adjacency_ = std::move(a); }
   std::uint64_t version() const { return version_; }
   void versionIs(std::uint64_t v) { version_ = v; }

   bool operator==(const MplsHwRoute& o) const {
      return routeKey_ == o.routeKey_ && l2Adjacency_ == o.l2Adjacency_ && version_ == o.version_;
   }
   // True for the empty route that lookups of absent keys return.
   bool operator!() const { return *this == MplsHwRoute(); }

   std::string stringValue() const;
   // The reverse of stringValue. An adjacency reference cannot be rebuilt from its identity text,
   // so only the null reference parses; anything else throws Kor::ParseError.
   static MplsHwRoute parse(std::string_view text);

 private:
   Mpls::RouteKey routeKey_;
   Kor::Ptr<Mpls::Hardware::L2Adjacency> l2Adjacency_;
   std::uint64_t version_ = 0;
};

std::ostream& operator<<(std::ostream& os, const MplsHwRoute& r);

}  // namespace Fal
