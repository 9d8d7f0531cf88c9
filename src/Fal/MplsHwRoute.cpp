#include "MplsHwRoute.h"

#include <limits>

#include <mplsfwd/kor/TextForm.h>

namespace Fal {

std::string MplsHwRoute::stringValue() const {
   return "Value('Fal::MplsHwRoute', ** {'routeKey': " + routeKey_.stringValue() +
          ", 'l2Adjacency': " + Kor::refText(l2Adjacency_.ptr()) +
          ", 'version': " + std::to_string(version_) + "})";
}

MplsHwRoute MplsHwRoute::parse(std::string_view text) {
   Kor::ValueTextReader reader(text, "Fal::MplsHwRoute");
   MplsHwRoute r;
   r.routeKey_ = Mpls::RouteKey::parse(reader.field("routeKey"));
   auto adj = reader.field("l2Adjacency");
   if (adj != Kor::refText(nullptr)) {
      throw Kor::ParseError("cannot resolve the object reference '" + std::string(adj) +
                            "' of Fal::MplsHwRoute.l2Adjacency");
   }
   r.version_ = Kor::parseUnsigned(reader.field("version"),
                                   std::numeric_limits<std::uint64_t>::max(), "version");
   reader.finish();
   return r;
}

std::ostream& operator<<(std::ostream& os, const MplsHwRoute& r) {
   return os << r.stringValue();
}

}  // namespace Fal
