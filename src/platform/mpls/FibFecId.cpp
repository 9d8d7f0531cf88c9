#include "FibFecId.h"

#include <limits>
#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/log/Assert.h>

namespace Memtab::Fib {

const Kor::EnumRegistry<AdjType>& adjTypeRegistry() {
   static const Kor::EnumRegistry<AdjType> registry("Memtab::Fib::AdjType",
                                                    {{AdjType::nullAdj_, "nullAdj"},
                                                     {AdjType::fibAdj_, "fibAdj"},
                                                     {AdjType::nexthopGroupAdj_, "nexthopGroupAdj"},
                                                     {AdjType::tunnelAdj_, "tunnelAdj"},
                                                     {AdjType::mplsNexthopAdj_, "mplsNexthopAdj"},
                                                     {AdjType::pwDecapAdj_, "pwDecapAdj"}});
   return registry;
}

std::string stringValue(AdjType adjType) {
   return adjTypeRegistry().name(adjType);
}

std::ostream& operator<<(std::ostream& os, AdjType adjType) {
   return os << stringValue(adjType);
}

FecId FecId::fecIdForAdjType(AdjType adjType, std::uint64_t index) {
   if (static_cast<std::uint64_t>(adjType) >= adjTypeMax()) {
      throw Kor::RangeError("FecId::adjType >= Fib::adjTypeMax() not allowed");
   }
   if (index > kIndexMask) {
      throw Kor::RangeError("FecId::index > FecId::indexMax not allowed");
   }
   return FecId((static_cast<std::uint64_t>(adjType) << adjTypePos()) | index);
}

AdjType FecId::adjType() const {
   // A type at or above the bound can only come from a corrupt id: an invariant of the FIB, not
   // an input error.
   FAL_ASSERT((value_ >> adjTypePos()) < adjTypeMax(),
              "(value_ >> Fib::adjTypePos()) < Fib::adjTypeMax()");
   return static_cast<AdjType>(value_ >> adjTypePos());
}

std::size_t FecId::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::string FecId::stringValue() const {
   return std::to_string(value_);
}

FecId FecId::parse(std::string_view text) {
   return FecId(Kor::parseUnsigned(text, std::numeric_limits<std::uint64_t>::max(), "FecId"));
}

std::ostream& operator<<(std::ostream& os, const FecId& fecId) {
   return os << fecId.value();
}

}  // namespace Memtab::Fib
