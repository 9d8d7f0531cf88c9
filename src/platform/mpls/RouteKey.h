#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/kor/DenseIndexMap.h>
#include <mplsfwd/kor/DenseIndexSet.h>
#include <mplsfwd/kor/DenseWorkQueue.h>
#include <mplsfwd/wire/MplsLabel.h>

namespace Mpls {

// The key of one LFIB route: the incoming (top) label that the route matches. A default key holds
// the no-label value and matches nothing; it is what lookups of absent routes carry. Every
// per-route collection of the forwarding layers is keyed by it.
class RouteKey {
 public:
   RouteKey() = default;
   explicit RouteKey(Wire::MplsLabel topLabel) : topLabel_(topLabel) {}

   Wire::MplsLabel topLabel() const { return topLabel_; }

   bool operator==(const RouteKey&) const = default;
   bool operator<(const RouteKey& o) const { return topLabel_ < o.topLabel_; }
   std::size_t hash() const;

   // "Value('Mpls::RouteKey', ** {'topLabel': 16})".
   std::string stringValue() const;
   // Reverse of stringValue(); throws Kor::ParseError.
   static RouteKey parse(std::string_view text);

 private:
   Wire::MplsLabel topLabel_;
};

std::ostream& operator<<(std::ostream& os, const RouteKey& key);

}  // namespace Mpls

// A route key's slot is its label; the no-label key has none.
template <>
struct Kor::DenseIndex<Mpls::RouteKey> {
   static constexpr std::uint32_t kCapacity = Wire::MplsLabel::kMax + 1;
   static std::uint32_t index(const Mpls::RouteKey& k) { return k.topLabel().value(); }
   static Mpls::RouteKey key(std::uint32_t i) { return Mpls::RouteKey(Wire::MplsLabel(i)); }
};

namespace Mpls {

// Per-route tables indexed directly by the label: a million routes are the whole label space,
// and at that scale an array beats any hash table in both time and memory. The no-label key has
// no slot: looking it up finds nothing, and storing it throws Kor::RangeError, so every table
// built on them (the LFIB status, the hardware configuration and status) refuses a route without
// a label.
template <class V>
using DenseRouteMap = Kor::DenseIndexMap<RouteKey, V>;
using DenseRouteKeySet = Kor::DenseIndexSet<RouteKey>;
using RouteKeyQueue = Kor::DenseWorkQueue<RouteKey>;

}  // namespace Mpls
