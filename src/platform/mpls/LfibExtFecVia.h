#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/MplsLabelAction.h>

#include "FibFecId.h"
#include "LfibKeys.h"

namespace Mpls {

// One via of type external FEC: forward the labelled packet into the FIB FEC `fecId` (published
// by another agent) after applying `labelAction`. A default via (invalid FEC id) is the
// "not found" answer of lookups.
class LfibExtFecVia {
 public:
   LfibExtFecVia() = default;
   LfibExtFecVia(const LfibViaKey& key, Memtab::Fib::FecId fecId,
                 Wire::MplsLabelAction labelAction = Wire::MplsLabelAction::pop)
       : key_(key), fecId_(fecId), labelAction_(labelAction) {}

   const LfibViaKey& key() const { return key_; }
   Memtab::Fib::FecId fecId() const { return fecId_; }
   void fecIdIs(Memtab::Fib::FecId v) { fecId_ = v; }
   Wire::MplsLabelAction labelAction() const { return labelAction_; }
   void labelActionIs(Wire::MplsLabelAction v) { labelAction_ = v; }

   bool operator==(const LfibExtFecVia&) const = default;
   std::size_t hash() const;

   // "LfibExtFecVia via viaTypeExternalFec index 1 source bgp fecId 7 labelAction pop".
   std::string stringValue() const;

 private:
   LfibViaKey key_;
   Memtab::Fib::FecId fecId_;
   Wire::MplsLabelAction labelAction_ = Wire::MplsLabelAction::none;
};

std::ostream& operator<<(std::ostream& os, const LfibExtFecVia& via);

}  // namespace Mpls
