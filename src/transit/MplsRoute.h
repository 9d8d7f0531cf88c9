#pragma once

#include <cstdint>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "AdjacencyObjects.h"

namespace Fal {

// The transit machine's record of one route of one VRF. It lives here rather than with the other
// shared value types because it holds the machine's own adjacency objects. It has no reactors.
// A new route starts unprogrammed on purpose: only a confirmed programming clears the flag.
//
// There is one record per route, a million at full scale, so it is kept within a 64-byte heap
// block: it is counted like the runtime's objects but has no virtual destructor (it is final), and
// it holds its L2 adjacency or its external FEC, which are exclusive, in one field.
class MplsRoute final : public Kor::RefCounted<MplsRoute> {
 public:
   explicit MplsRoute(const Mpls::RouteKey& routeKey) : routeKey_(routeKey) {}
   MplsRoute(const MplsRoute&) = delete;
   MplsRoute& operator=(const MplsRoute&) = delete;

   const Mpls::RouteKey& routeKey() const { return routeKey_; }
   std::int32_t metric() const { return metric_; }
   void metricIs(std::int32_t v) { metric_ = v; }
   const L3AdjacencyPtr& l3Adj() const { return l3Adj_; }
   void l3AdjIs(L3AdjacencyPtr v) { l3Adj_ = std::move(v); }
   // The L2 adjacency the route is programmed through, or the external FEC it is forwarded into;
   // never both. Setting one replaces the other; clearing one leaves the other alone.
   MplsL2AdjacencyPtr l2Adj() const {
      return forwardedIntoFec_ ? nullptr : static_cast<MplsL2Adjacency*>(target_.ptr());
   }
   void l2AdjIs(MplsL2AdjacencyPtr v) {
      if (v || !forwardedIntoFec_) {
         target_ = std::move(v);
         forwardedIntoFec_ = false;
      }
   }
   ExternalFecInfoPtr extFecInfo() const {
      return forwardedIntoFec_ ? static_cast<ExternalFecInfo*>(target_.ptr()) : nullptr;
   }
   void extFecInfoIs(ExternalFecInfoPtr v) {
      if (v) {
         target_ = std::move(v);
         forwardedIntoFec_ = true;
      } else if (forwardedIntoFec_) {
         target_ = nullptr;
         forwardedIntoFec_ = false;
      }
   }
   std::uint64_t version() const { return version_; }
   void versionIs(std::uint64_t v) { version_ = v; }
   // Unsigned 64-bit: wraps past the largest version.
   void versionInc(std::uint64_t delta) { version_ += delta; }
   bool unprogrammed() const { return unprogrammed_; }
   void unprogrammedIs(bool v) { unprogrammed_ = v; }
   // Whether the route counts in the VRF's number of unprogrammed routes: it does exactly while
   // the platform's status lists it as seen by this machine, so that the count is always the
   // number of such routes, also over a status that an earlier incarnation left.
   bool countedUnprogrammed() const { return countedUnprogrammed_; }
   void countedUnprogrammedIs(bool v) { countedUnprogrammed_ = v; }
   bool unprogramRequired() const { return unprogramRequired_; }
   void unprogramRequiredIs(bool v) { unprogramRequired_ = v; }
   // The route's places in the route lists of its L3 and L2 adjacencies.
   RouteLink& l3Link() { return l3Link_; }
   const RouteLink& l3Link() const { return l3Link_; }
   RouteLink& l2Link() { return l2Link_; }
   const RouteLink& l2Link() const { return l2Link_; }

 private:
   Mpls::RouteKey routeKey_;
   std::int32_t metric_ = 0;
   RouteLink l3Link_;
   RouteLink l2Link_;
   bool unprogrammed_ = true;
   bool unprogramRequired_ = false;
   bool countedUnprogrammed_ = false;
   bool forwardedIntoFec_ = false;
   L3AdjacencyPtr l3Adj_;
   Kor::Ptr<Kor::PtrInterface> target_;
   std::uint64_t version_ = 0;
};

static_assert(sizeof(MplsRoute) <= 56, "a route record must fit a 64-byte heap block");

}  // namespace Fal
