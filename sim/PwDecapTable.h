#pragma once

#include <cstdint>
#include <memory>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/mpls/DecapInfoTable.h>

namespace sim {

// The platform's consumer of the pseudowire decap info table: it programs one pseudowire decap
// entry per label as the table says (a changed record rewrites the entry, a removed one deletes
// it) and keeps what it programmed. Its entries are hardware: they survive an agent restart until
// the restarted state machine empties the table. Driven synchronously by the table's
// notifications.
class PwDecapTable {
 public:
   explicit PwDecapTable(Kor::Ptr<const FalPw::DecapInfoTable> table);
   ~PwDecapTable();
   PwDecapTable(const PwDecapTable&) = delete;
   PwDecapTable& operator=(const PwDecapTable&) = delete;

   const Kor::OrderedMap<Wire::MplsLabel, FalPw::PwDecapInfo>& entryMap() const { return entry_; }
   FalPw::PwDecapInfo entry(Wire::MplsLabel label) const { return Kor::mapValueOr(entry_, label); }
   std::uint64_t writes() const { return writes_; }
   std::uint64_t deletes() const { return deletes_; }

 private:
   class TableReactor;
   void labelChanged(Wire::MplsLabel label);

   Kor::Ptr<const FalPw::DecapInfoTable> table_;
   std::unique_ptr<TableReactor> reactor_;
   Kor::OrderedMap<Wire::MplsLabel, FalPw::PwDecapInfo> entry_;
   std::uint64_t writes_ = 0;
   std::uint64_t deletes_ = 0;
};

}  // namespace sim
