#include "FecIdToHwFecIdRequest.h"

namespace Fal {

std::ostream& operator<<(std::ostream& os, const HwFecIdRequest& r) {
   return os << "HwFecIdRequest(" << r.fecId() << ")";
}

std::ostream& operator<<(std::ostream& os, const FecToHwFecId& r) {
   return os << "FecToHwFecId(" << r.fecId() << " -> " << r.hwFecId() << ")";
}

Memtab::Fib::Fec FecIdToHwFecIdRequest::fec(Memtab::Fib::FecId id) const {
   auto it = fec_.find(id);
   return it == fec_.end() ? Memtab::Fib::Fec() : it->second;
}

const Memtab::Fib::Fec* FecIdToHwFecIdRequest::fecPtr(Memtab::Fib::FecId id) const {
   auto it = fec_.find(id);
   return it == fec_.end() ? nullptr : &it->second;
}

void FecIdToHwFecIdRequest::fecIs(const Memtab::Fib::Fec& fec) {
   if (Kor::mapAssignIfChanged(fec_, fec.fecId(), fec)) {
      notify(&NotifieeConst::onFec, fec.fecId());
   }
}

void FecIdToHwFecIdRequest::fecDel(Memtab::Fib::FecId id) {
   if (fec_.erase(id)) {
      notify(&NotifieeConst::onFec, id);
   }
}

void FecIdToHwFecIdRequest::fecDelAll() {
   Kor::deleteEachKey(fec_, [this](Memtab::Fib::FecId id) { fecDel(id); });
}

void FecIdToHwFecIdRequest::hwFecIdRequestIs(const HwFecIdRequest& r) {
   if (Kor::mapAssignIfChanged(request_, r.key(), r)) {
      notify(&NotifieeConst::onHwFecIdRequest, r.key());
   }
}

void FecIdToHwFecIdRequest::hwFecIdRequestDel(Memtab::Fib::FecId id) {
   if (request_.erase(id)) {
      notify(&NotifieeConst::onHwFecIdRequest, id);
   }
}

void FecIdToHwFecIdRequest::hwFecIdRequestDelAll() {
   Kor::deleteEachKey(request_, [this](Memtab::Fib::FecId id) { hwFecIdRequestDel(id); });
}

void FecIdToHwFecIdRequest::corruptionDetected(const std::string& what) const {
   ++corruptions_;
   lastCorruption_ = what;
}

void FecIdToHwFecIdResponse::hwFecIdIs(const FecToHwFecId& answer) {
   if (Kor::mapAssignIfChanged(hwFecId_, answer.key(), answer)) {
      notify(&NotifieeConst::onHwFecId, answer.key());
   }
}

void FecIdToHwFecIdResponse::hwFecIdDel(Memtab::Fib::FecId id) {
   if (hwFecId_.erase(id)) {
      notify(&NotifieeConst::onHwFecId, id);
   }
}

void FecIdToHwFecIdResponse::hwFecIdDelAll() {
   Kor::deleteEachKey(hwFecId_, [this](Memtab::Fib::FecId id) { hwFecIdDel(id); });
}

void FecIdToHwFecIdResponse::l2IntfIdIs(Memtab::Fib::FecId id, Wire::IntfId intf) {
   if (Kor::mapAssignIfChanged(l2IntfId_, id, intf)) {
      notify(&NotifieeConst::onL2IntfId, id);
   }
}

void FecIdToHwFecIdResponse::l2IntfIdDel(Memtab::Fib::FecId id) {
   if (l2IntfId_.erase(id)) {
      notify(&NotifieeConst::onL2IntfId, id);
   }
}

}  // namespace Fal
