#include "LfibViaSet.h"

#include <algorithm>
#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>

namespace Mpls {

namespace {

[[noreturn]] void outOfRange() {
   throw Kor::RangeError(
       "LfibViaIndexRange::value < LfibViaIndexRange::min or > LfibViaIndexRange::max not "
       "allowed");
}

}  // namespace

LfibViaIndexRange::LfibViaIndexRange(std::uint32_t value) {
   valueIs(value);
}

void LfibViaIndexRange::valueIs(std::uint32_t value) {
   if (value > max) {
      outOfRange();
   }
   value_ = value;
}

std::size_t LfibViaIndexRange::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::ostream& operator<<(std::ostream& os, const LfibViaIndexRange& index) {
   return os << index.value();
}

LfibViaSet::LfibViaSet(const LfibViaSetKey& key, std::initializer_list<LfibViaKey> vias,
                       LfibViaSetType viaSetType)
    : key_(key), viaSetType_(viaSetType) {
   for (const LfibViaKey& v : vias) {
      viaAppend(v);
   }
}

void LfibViaSet::viaAppend(const LfibViaKey& via) {
   // The position is range-checked like any other, so a full set raises the position's error.
   LfibViaIndexRange position(vias_);
   via_[position.value()] = via;
   ++vias_;
}

void LfibViaSet::viasIs(std::uint32_t count) {
   if (count > kMaxVias) {
      outOfRange();
   }
   vias_ = count;
}

bool LfibViaSet::operator==(const LfibViaSet& o) const {
   return key_ == o.key_ && viaSetType_ == o.viaSetType_ && vias_ == o.vias_ &&
          backupViaSetKey_ == o.backupViaSetKey_ &&
          std::equal(via_.begin(), via_.begin() + vias_, o.via_.begin());
}

std::size_t LfibViaSet::hash() const {
   std::size_t h = key_.hash();
   h = Kor::hashCombine(h, viaSetType_);
   h = Kor::hashCombine(h, backupViaSetKey_.hash());
   for (std::uint32_t i = 0; i < vias_; ++i) {
      h = Kor::hashCombine(h, via_[i].hash());
   }
   return h;
}

std::string LfibViaSet::stringValue() const {
   std::string s = "lFib viaSet " + key_.stringValue() + " viaSetType " +
                   Mpls::stringValue(viaSetType_) + " vias " + std::to_string(vias_);
   for (std::uint32_t i = 0; i < vias_; ++i) {
      s += (i ? ", [" : ": [") + std::to_string(i) + "] " + via_[i].stringValue();
   }
   return s + " backup " + backupViaSetKey_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibViaSet& viaSet) {
   return os << viaSet.stringValue();
}

}  // namespace Mpls
