#include "VrfName.h"

#include <mplsfwd/kor/Errors.h>
#include <functional>

namespace L3 {

VrfName::VrfName(std::string_view name) {
   if (name.size() > maxLength) {
      throw Kor::RangeError("VrfName::bytes > VrfName::maxLength not allowed");
   }
   name_ = name;
}

const VrfName& VrfName::defaultVrf() {
   static const VrfName name("default");
   return name;
}

std::size_t VrfName::hash() const {
   return std::hash<std::string_view>()(name_);
}

std::ostream& operator<<(std::ostream& os, const VrfName& name) {
   return os << name.stringValue();
}

}  // namespace L3
