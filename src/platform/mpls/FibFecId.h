#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/kor/EnumRegistry.h>

namespace Memtab::Fib {

// The adjacency type of a FEC: which agent's numbering the FEC's index belongs to. Only the types
// this library allocates from or tests are named; ids of other types are carried as they come.
enum class AdjType : std::uint8_t {
   nullAdj_ = 0,
   fibAdj_ = 1,
   nexthopGroupAdj_ = 2,
   tunnelAdj_ = 3,
   mplsNexthopAdj_ = 10,  // the FECs that the transit layer allocates for its via sets
   pwDecapAdj_ = 14,      // the FECs that carry pseudowire decapsulation
};

// The adjacency type stands in the top byte of a FEC id, the index in the bits below.
constexpr int adjTypePos() {
   return 56;
}
// One past the largest adjacency type that an id may carry.
constexpr std::uint64_t adjTypeMax() {
   return 21;
}

const Kor::EnumRegistry<AdjType>& adjTypeRegistry();
std::string stringValue(AdjType adjType);
std::ostream& operator<<(std::ostream& os, AdjType adjType);

// The 64-bit identifier of a FEC of the FIB: adjacency type in bits 56 to 63, index below. The
// zero id is invalid and stands for "no FEC" (in caches and as a missing backup). Ordered and
// hashed by the raw value.
class FecId {
 public:
   static constexpr std::uint64_t kIndexMask = (std::uint64_t(1) << adjTypePos()) - 1;

   constexpr FecId() = default;
   constexpr explicit FecId(std::uint64_t value) : value_(value) {}

   // Throws Kor::RangeError for a type at or above adjTypeMax() or an index that does not fit
   // below the type.
   static FecId fecIdForAdjType(AdjType adjType, std::uint64_t index);

   constexpr std::uint64_t value() const { return value_; }
   constexpr bool isValid() const { return value_ != 0; }
   // An id whose type is not below adjTypeMax() breaks the FIB's invariant: reading its type
   // fails the assertion that names it. Ids from outside (an LFIB via, say) are checked with
   // adjTypeInRange() first.
   AdjType adjType() const;
   constexpr bool adjTypeInRange() const { return (value_ >> adjTypePos()) < adjTypeMax(); }
   constexpr std::uint64_t index() const { return value_ & kIndexMask; }

   constexpr bool operator==(const FecId&) const = default;
   constexpr auto operator<=>(const FecId&) const = default;
   std::size_t hash() const;

   // The raw value in decimal.
   std::string stringValue() const;
   static FecId parse(std::string_view text);

 private:
   std::uint64_t value_ = 0;
};

std::ostream& operator<<(std::ostream& os, const FecId& fecId);

}  // namespace Memtab::Fib
