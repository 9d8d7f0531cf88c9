#include "VlanId.h"

#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace Bridging {

VlanId::VlanId(std::uint16_t value) : value_(value) {
   if (value > kMax) {
      throw Kor::RangeError("VlanId::value < VlanId::min or > VlanId::max not allowed");
   }
}

std::size_t VlanId::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::string VlanId::stringValue() const {
   return std::to_string(value_);
}

VlanId VlanId::parse(std::string_view text) {
   return VlanId(static_cast<std::uint16_t>(Kor::parseUnsigned(text, kMax, "VlanId")));
}

std::ostream& operator<<(std::ostream& os, const VlanId& vlanId) {
   return os << vlanId.value();
}

std::string VlanIdOrNone::stringValue() const {
   return isNone() ? "none" : vlanId_.stringValue();
}

VlanIdOrNone VlanIdOrNone::parse(std::string_view text) {
   if (text == "none") {
      return VlanIdOrNone();
   }
   VlanIdOrNone v(VlanId::parse(text));
   if (v.isNone()) {
      // "0" would be a second spelling of none.
      throw Kor::ParseError("cannot parse '" + std::string(text) + "' as VlanIdOrNone");
   }
   return v;
}

std::ostream& operator<<(std::ostream& os, const VlanIdOrNone& vlanId) {
   return os << vlanId.stringValue();
}

}  // namespace Bridging
