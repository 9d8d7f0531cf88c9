#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "LfibKeys.h"
#include "LfibTypes.h"
#include "RouteKey.h"

namespace Mpls {

// One route of the system LFIB, keyed by its incoming label. The transit and decap layers
// follow `viaSetKey` to the route's vias; the pseudowire layer follows `adjacencyKey` to the
// adjacency of the MPLS status that the route was published against (a pseudowire adjacency
// for a route that ends a pseudowire). A default route (default key) is the "absent" record.
class LfibRoute {
 public:
   LfibRoute() = default;
   explicit LfibRoute(const RouteKey& key) : key_(key) {}
   LfibRoute(const RouteKey& key, const LfibViaSetKey& viaSetKey, std::uint32_t metric = 0,
             LfibSource source = lfibSourceUnknown_)
       : key_(key), viaSetKey_(viaSetKey), metric_(metric), source_(source) {}

   const RouteKey& key() const { return key_; }
   const LfibViaSetKey& viaSetKey() const { return viaSetKey_; }
   void viaSetKeyIs(const LfibViaSetKey& v) { viaSetKey_ = v; }
   std::uint32_t metric() const { return metric_; }
   void metricIs(std::uint32_t v) { metric_ = v; }
   LfibSource source() const { return source_; }
   void sourceIs(LfibSource v) { source_ = v; }
   const AdjacencyKey& adjacencyKey() const { return adjacencyKey_; }
   void adjacencyKeyIs(const AdjacencyKey& v) { adjacencyKey_ = v; }

   bool operator==(const LfibRoute&) const = default;
   std::size_t hash() const;

   // "lFib route 16 viaSet index 5 source static viaType viaTypeMplsIp metric 0 source static
   // adjacency adjacencyTypeMpls 5".
   std::string stringValue() const;

 private:
   RouteKey key_;
   LfibViaSetKey viaSetKey_;
   std::uint32_t metric_ = 0;
   LfibSource source_ = lfibSourceUnknown_;
   AdjacencyKey adjacencyKey_;
};

static_assert(sizeof(LfibRoute) <= 36, "the LFIB keeps one route record per label");

std::ostream& operator<<(std::ostream& os, const LfibRoute& route);

}  // namespace Mpls
