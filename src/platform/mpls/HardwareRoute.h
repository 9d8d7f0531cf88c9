#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "RouteKey.h"

namespace Mpls::Hardware {

// An MPLS route as the shared hardware status publishes it for other agents: the route's label,
// the hardware L3 adjacency (by index) that it uses, the L2 adjacency (by index) that the L3
// adjacency resolved to (0 when none, e.g. a route forwarded into an external FEC), its metric,
// the version that was programmed and whether the platform could not program it. Keyed by
// routeKey. A default route (default key) is the "absent" record of lookups.
class Route {
 public:
   Route() = default;
   explicit Route(const RouteKey& routeKey) : routeKey_(routeKey) {}

   const RouteKey& routeKey() const { return routeKey_; }
   const RouteKey& key() const { return routeKey_; }
   std::uint64_t adjacencyIndex() const { return adjacencyIndex_; }
   void adjacencyIndexIs(std::uint64_t v) { adjacencyIndex_ = v; }
   std::uint64_t l2AdjacencyIndex() const { return l2AdjacencyIndex_; }
   void l2AdjacencyIndexIs(std::uint64_t v) { l2AdjacencyIndex_ = v; }
   std::uint32_t metric() const { return metric_; }
   void metricIs(std::uint32_t v) { metric_ = v; }
   std::uint64_t version() const { return version_; }
   void versionIs(std::uint64_t v) { version_ = v; }
   bool unprogrammed() const { return unprogrammed_; }
   void unprogrammedIs(bool v) { unprogrammed_ = v; }

   bool operator==(const Route&) const = default;
   std::size_t hash() const;

   // "hw route 16 adj 3 l2 adj 7 metric 0 version 2 unprogrammed false".
   std::string stringValue() const;

 private:
   // The label and the metric share a word: the status keeps one record per route.
   RouteKey routeKey_;
   std::uint32_t metric_ = 0;
   std::uint64_t adjacencyIndex_ = 0;
   std::uint64_t l2AdjacencyIndex_ = 0;
   std::uint64_t version_ = 0;
   bool unprogrammed_ = false;
};

static_assert(sizeof(Route) <= 40, "a published route is kept per route: keep it packed");

std::ostream& operator<<(std::ostream& os, const Route& route);

}  // namespace Mpls::Hardware
