#pragma once

#include <cstddef>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/FibFecId.h>
#include <mplsfwd/wire/IntfId.h>

namespace Fal {

// The decap FECs of one VLAN pseudowire interface, so that a change of the pseudowire's local
// connector reaches every FEC built from it. Owned by Fal::LFibSm, which creates it with the
// interface's first FEC and drops it when its last FEC goes; it is never empty while held there.
// Ordered, so that the FECs of an interface are rewritten in a fixed order.
class PwIntfIdToFecIdCollection : public Kor::PtrInterface {
 public:
   using FecIdSet = Kor::OrderedSet<Memtab::Fib::FecId>;

   explicit PwIntfIdToFecIdCollection(Wire::IntfId pwIntfId) : pwIntfId_(pwIntfId) {}

   Wire::IntfId pwIntfId() const { return pwIntfId_; }

   bool fecId(Memtab::Fib::FecId fecId) const { return fecId_.contains(fecId); }
   void fecIdIs(Memtab::Fib::FecId fecId) { fecId_.insert(fecId); }
   void fecIdDel(Memtab::Fib::FecId fecId) { fecId_.erase(fecId); }
   const FecIdSet& fecIds() const { return fecId_; }
   std::size_t size() const { return fecId_.size(); }
   bool empty() const { return fecId_.empty(); }

 private:
   Wire::IntfId pwIntfId_;
   FecIdSet fecId_;
};

}  // namespace Fal
