#pragma once

#include <cstdint>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "AdjacencyObjects.h"

namespace Fal {

// The transit machine's record of one route of one VRF. It lives here rather than with the other
// shared value types because it holds the machine's own adjacency objects. It has no reactors.
// A new route starts unprogrammed on purpose: only a confirmed programming clears the flag.
class MplsRoute : public Kor::PtrInterface {
 public:
   explicit MplsRoute(const Mpls::RouteKey& routeKey) : routeKey_(routeKey) {}

   const Mpls::RouteKey& routeKey() const { return routeKey_; }
   std::int32_t metric() const { return metric_; }
   void metricIs(std::int32_t v) { metric_ = v; }
   const L3AdjacencyPtr& l3Adj() const { return l3Adj_; }
   void l3AdjIs(L3AdjacencyPtr v) { l3Adj_ = std::move(v); }
   const MplsL2AdjacencyPtr& l2Adj() const { return l2Adj_; }
   void l2AdjIs(MplsL2AdjacencyPtr v) { l2Adj_ = std::move(v); }
   const ExternalFecInfoPtr& extFecInfo() const { return extFecInfo_; }
   void extFecInfoIs(ExternalFecInfoPtr v) { extFecInfo_ = std::move(v); }
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
   L3AdjacencyPtr l3Adj_;
   MplsL2AdjacencyPtr l2Adj_;
   ExternalFecInfoPtr extFecInfo_;
   std::uint64_t version_ = 0;
};

}  // namespace Fal
