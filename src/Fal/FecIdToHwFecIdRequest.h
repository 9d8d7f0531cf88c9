#pragma once

#include <cstdint>
#include <string>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/mpls/FibFec.h>

#include "FecRecords.h"

namespace Fal {

// FECs that a state machine built and wants hardware FEC ids for, written by the library and
// served by the platform: the FEC records themselves and one request per FEC id.
class FecIdToHwFecIdRequest : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<FecIdToHwFecIdRequest> {
    public:
      using Kor::Notifiee<FecIdToHwFecIdRequest>::Notifiee;
      virtual void onFec(Memtab::Fib::FecId) {}
      virtual void onHwFecIdRequest(Memtab::Fib::FecId) {}
   };
   using FecMap = Kor::HashMap<Memtab::Fib::FecId, Memtab::Fib::Fec>;
   using RequestMap = Kor::HashMap<Memtab::Fib::FecId, HwFecIdRequest>;

   explicit FecIdToHwFecIdRequest(Kor::Name name) : Kor::Entity(std::move(name)) {}

   // The stored FEC, or an empty FEC when absent.
   Memtab::Fib::Fec fec(Memtab::Fib::FecId id) const;
   const Memtab::Fib::Fec* fecPtr(Memtab::Fib::FecId id) const;
   void fecIs(const Memtab::Fib::Fec& fec);
   void fecDel(Memtab::Fib::FecId id);
   void fecDelAll();
   const FecMap& fecMap() const { return fec_; }

   HwFecIdRequest hwFecIdRequest(Memtab::Fib::FecId id) const {
      return Kor::mapValueOr(request_, id);
   }
   void hwFecIdRequestIs(const HwFecIdRequest& r);
   void hwFecIdRequestDel(Memtab::Fib::FecId id);
   void hwFecIdRequestDelAll();
   const RequestMap& hwFecIdRequestMap() const { return request_; }

   // A reader found the shared table corrupt; counted and kept for the operator.
   void corruptionDetected(const std::string& what) const;
   std::uint64_t corruptions() const { return corruptions_; }
   const std::string& lastCorruption() const { return lastCorruption_; }

 private:
   FecMap fec_;
   RequestMap request_;
   mutable std::uint64_t corruptions_ = 0;
   mutable std::string lastCorruption_;
};

// The platform's answers: the hardware FEC id of each requested FEC, and the L2 interface that a
// FEC egresses through where the platform reports one.
class FecIdToHwFecIdResponse : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<FecIdToHwFecIdResponse> {
    public:
      using Kor::Notifiee<FecIdToHwFecIdResponse>::Notifiee;
      virtual void onHwFecId(Memtab::Fib::FecId) {}
      virtual void onL2IntfId(Memtab::Fib::FecId) {}
   };
   using HwFecIdMap = Kor::HashMap<Memtab::Fib::FecId, FecToHwFecId>;
   using L2IntfIdMap = Kor::HashMap<Memtab::Fib::FecId, Wire::IntfId>;

   explicit FecIdToHwFecIdResponse(Kor::Name name) : Kor::Entity(std::move(name)) {}

   FecToHwFecId hwFecId(Memtab::Fib::FecId id) const { return Kor::mapValueOr(hwFecId_, id); }
   void hwFecIdIs(const FecToHwFecId& answer);
   void hwFecIdDel(Memtab::Fib::FecId id);
   void hwFecIdDelAll();
   const HwFecIdMap& hwFecIdMap() const { return hwFecId_; }

   Wire::IntfId l2IntfId(Memtab::Fib::FecId id) const { return Kor::mapValueOr(l2IntfId_, id); }
   void l2IntfIdIs(Memtab::Fib::FecId id, Wire::IntfId intf);
   void l2IntfIdDel(Memtab::Fib::FecId id);

 private:
   HwFecIdMap hwFecId_;
   L2IntfIdMap l2IntfId_;
};

}  // namespace Fal
