#include "FibFec.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Memtab::Fib {

Via Fec::via(ViaIndex index) const {
   return index.value() < via_.size() ? via_[index.value()] : Via();
}

void Fec::viaIs(ViaIndex index, const Via& via) {
   std::size_t pos = index.value();
   if (pos >= via_.size()) {
      via_.resize(pos + 1);
   }
   via_[pos] = via;
}

std::size_t Fec::hash() const {
   std::size_t h = fecId_.hash();
   h = Kor::hashCombine(h, backupFecId_.value());
   for (const Via& v : via_) {
      h = Kor::hashCombine(h, v.hash());
   }
   return h;
}

std::string Fec::stringValue() const {
   std::string s = "fec " + fecId_.stringValue() + " backupFecId " + backupFecId_.stringValue() +
                   " vias " + std::to_string(via_.size());
   for (std::size_t i = 0; i < via_.size(); ++i) {
      s += (i ? ", [" : ": [") + std::to_string(i) + "] " + via_[i].stringValue();
   }
   return s;
}

std::ostream& operator<<(std::ostream& os, const Fec& fec) {
   return os << fec.stringValue();
}

}  // namespace Memtab::Fib
