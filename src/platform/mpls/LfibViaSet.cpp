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

const LfibViaKey LfibViaSet::kNoVia;

LfibViaSet::LfibViaSet(const LfibViaSet& o)
    : key_(o.key_),
      viaSetType_(o.viaSetType_),
      vias_(o.vias_),
      backupViaSetKey_(o.backupViaSetKey_),
      inline_(o.inline_) {
   if (o.spill_) {
      spill_ = std::make_unique<LfibViaKey[]>(kMaxVias);
      std::copy(o.spill_.get(), o.spill_.get() + kMaxVias, spill_.get());
   }
}

LfibViaSet& LfibViaSet::operator=(const LfibViaSet& o) {
   if (this != &o) {
      LfibViaSet copy(o);
      *this = std::move(copy);
   }
   return *this;
}

void LfibViaSet::spill() {
   if (spill_) {
      return;
   }
   spill_ = std::make_unique<LfibViaKey[]>(kMaxVias);
   std::copy(inline_.begin(), inline_.end(), spill_.get());
}

void LfibViaSet::viaIs(LfibViaIndexRange index, const LfibViaKey& via) {
   const std::uint32_t i = index.value();
   if (!spill_ && i >= kInlineVias) {
      spill();
   }
   if (spill_) {
      spill_[i] = via;
   } else {
      inline_[i] = via;
   }
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
   viaIs(position, via);
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
          std::equal(viaData(), viaData() + vias_, o.viaData());
}

std::size_t LfibViaSet::hash() const {
   std::size_t h = key_.hash();
   h = Kor::hashCombine(h, viaSetType_);
   h = Kor::hashCombine(h, backupViaSetKey_.hash());
   for (std::uint32_t i = 0; i < vias_; ++i) {
      h = Kor::hashCombine(h, viaData()[i].hash());
   }
   return h;
}

std::string LfibViaSet::stringValue() const {
   std::string s = "lFib viaSet " + key_.stringValue() + " viaSetType " +
                   Mpls::stringValue(viaSetType_) + " vias " + std::to_string(vias_);
   for (std::uint32_t i = 0; i < vias_; ++i) {
      s += (i ? ", [" : ": [") + std::to_string(i) + "] " + viaData()[i].stringValue();
   }
   return s + " backup " + backupViaSetKey_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibViaSet& viaSet) {
   return os << viaSet.stringValue();
}

}  // namespace Mpls
