#include "IpAddrIntfId.h"

#include <mplsfwd/kor/TextForm.h>

namespace Fal {

std::string IpAddrIntfId::stringValue() const {
   return "Value('Fal::IpAddrIntfId', ** {'ipGenAddr': " + ipGenAddr_.stringValue() +
          ", 'l3Intf': " + l3Intf_.stringValue() + "})";
}

IpAddrIntfId IpAddrIntfId::parse(std::string_view text) {
   Kor::ValueTextReader reader(text, "Fal::IpAddrIntfId");
   auto addr = reader.field("ipGenAddr");
   auto intf = reader.field("l3Intf");
   reader.finish();
   return IpAddrIntfId(addr.empty() ? Wire::IpGenAddr() : Wire::IpGenAddr::parse(addr),
                       intf.empty() ? Wire::IntfId() : Wire::IntfId::parse(intf));
}

}  // namespace Fal
