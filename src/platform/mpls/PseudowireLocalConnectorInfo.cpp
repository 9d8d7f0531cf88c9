#include "PseudowireLocalConnectorInfo.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace Pseudowire {

std::size_t LocalConnectorInfo::hash() const {
   std::size_t h = Kor::hashCombine(0x4c43, parentIntfId_.value());
   h = Kor::hashCombine(h, dot1qTag_.value());
   return Kor::hashCombine(h, internalVlan_.value());
}

std::string LocalConnectorInfo::stringValue() const {
   return "Value('Pseudowire::LocalConnectorInfo', ** {'parentIntfId': " +
          parentIntfId_.stringValue() + ", 'dot1qTag': " + dot1qTag_.stringValue() +
          ", 'internalVlan': " + internalVlan_.stringValue() + "})";
}

LocalConnectorInfo LocalConnectorInfo::parse(std::string_view text) {
   Kor::ValueTextReader reader(text, "Pseudowire::LocalConnectorInfo");
   Wire::IntfId parent = Wire::IntfId::parse(reader.field("parentIntfId"));
   Bridging::VlanId dot1q = Bridging::VlanId::parse(reader.field("dot1qTag"));
   Bridging::VlanId internal = Bridging::VlanId::parse(reader.field("internalVlan"));
   reader.finish();
   return LocalConnectorInfo(parent, dot1q, internal);
}

std::ostream& operator<<(std::ostream& os, const LocalConnectorInfo& info) {
   return os << info.stringValue();
}

}  // namespace Pseudowire
