#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "FibFecId.h"
#include "FibVia.h"

namespace Memtab::Fib {

// One FEC of the FIB: its id, up to 512 vias by position and the FEC to fall back to. Reads as a
// fixed array of 512 vias whose unset positions hold the default via; only the positions up to
// the highest one set are stored, so copies of small FECs stay cheap. A drop via (the default
// via) that was set explicitly counts as a via: a FEC of two drop vias is not the FEC of none.
// A default FEC (id 0, no vias, no backup) is the "absent" record of lookups.
class Fec {
 public:
   static constexpr std::size_t kMaxVias = ViaIndex::max + 1;

   Fec() = default;
   explicit Fec(FecId fecId) : fecId_(fecId) {}

   FecId fecId() const { return fecId_; }
   FecId key() const { return fecId_; }
   void fecIdIs(FecId v) { fecId_ = v; }

   // The via at a position (the default via where none was set).
   Via via(ViaIndex index) const;
   void viaIs(ViaIndex index, const Via& via);
   void viaDelAll() { via_.clear(); }
   // One past the highest position set.
   std::size_t vias() const { return via_.size(); }

   FecId backupFecId() const { return backupFecId_; }
   void backupFecIdIs(FecId v) { backupFecId_ = v; }

   bool operator==(const Fec&) const = default;
   std::size_t hash() const;
   // "fec 5 backupFecId 0 vias 2: [0] via ..., [1] via ...".
   std::string stringValue() const;

 private:
   FecId fecId_;
   std::vector<Via> via_;
   FecId backupFecId_;
};

std::ostream& operator<<(std::ostream& os, const Fec& fec);

}  // namespace Memtab::Fib
