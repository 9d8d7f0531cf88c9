#include "RouteKey.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace Mpls {

std::size_t RouteKey::hash() const {
   return Kor::hashCombine(0x52, topLabel_.value());
}

std::string RouteKey::stringValue() const {
   return "Value('Mpls::RouteKey', ** {'topLabel': " + topLabel_.stringValue() + "})";
}

RouteKey RouteKey::parse(std::string_view text) {
   Kor::ValueTextReader reader(text, "Mpls::RouteKey");
   RouteKey key(Wire::MplsLabel::parse(reader.field("topLabel")));
   reader.finish();
   return key;
}

std::ostream& operator<<(std::ostream& os, const RouteKey& key) {
   return os << key.stringValue();
}

}  // namespace Mpls
