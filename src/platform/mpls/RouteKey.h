#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

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
