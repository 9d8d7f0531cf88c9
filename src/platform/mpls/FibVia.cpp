#include "FibVia.h"

#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>

namespace Memtab::Fib {

ViaIndex::ViaIndex(std::uint32_t value) {
   valueIs(value);
}

void ViaIndex::valueIs(std::uint32_t value) {
   if (value > max) {
      throw Kor::RangeError("ViaIndex::value < ViaIndex::min or > ViaIndex::max not allowed");
   }
   value_ = value;
}

std::size_t ViaIndex::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::ostream& operator<<(std::ostream& os, const ViaIndex& index) {
   return os << index.value();
}

std::size_t Via::hash() const {
   std::size_t h = nextHop_.hash();
   h = Kor::hashCombine(h, intf_.value());
   h = Kor::hashCombine(h, labelStack_.hash());
   h = Kor::hashCombine(h, static_cast<std::uint64_t>(labelAction_));
   return Kor::hashCombine(h, vlanId_.value());
}

std::string Via::stringValue() const {
   return "via nextHop " + nextHop_.stringValue() + " intf " + intf_.stringValue() +
          " labelStack " + labelStack_.stringValue() + " labelAction " +
          Wire::stringValue(labelAction_) + " vlanId " + vlanId_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const Via& via) {
   return os << via.stringValue();
}

}  // namespace Memtab::Fib
