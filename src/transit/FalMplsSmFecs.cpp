// FEC allocation, FEC records and the hardware FEC id hand-shake.
#include "FalMplsSm.h"

#include "MplsSmTrace.h"

namespace Fal {

namespace {
const L3::VrfName& defaultVrf() {
   static const L3::VrfName name = L3::VrfName::defaultVrf();
   return name;
}
constexpr auto kMplsNexthopAdj = Memtab::Fib::AdjType::mplsNexthopAdj_;
}  // namespace

void MplsSm::hwFecIdRequestIs(Kor::Ptr<FecIdToHwFecIdRequest> t) {
   hwFecIdRequest_ = std::move(t);
   if (!hwFecIdRequest_) {
      return;
   }
   // The table outlives a restart of this machine: FECs and requests of an earlier incarnation
   // that no record of this one backs would otherwise hold their hardware ids for good.
   Kor::Ptr<VrfMplsState> vrf = mplsState(defaultVrf());
   auto stale = [&](Memtab::Fib::FecId id) { return !vrf || !vrf->extFecInfo(id); };
   std::vector<Memtab::Fib::FecId> fecs;
   for (const auto& [id, fec] : hwFecIdRequest_->fecMap()) {
      if (stale(id)) {
         fecs.push_back(id);
      }
   }
   std::vector<Memtab::Fib::FecId> requests;
   for (const auto& [id, request] : hwFecIdRequest_->hwFecIdRequestMap()) {
      if (stale(id)) {
         requests.push_back(id);
      }
   }
   for (const auto& id : requests) {
      hwFecIdRequest_->hwFecIdRequestDel(id);
   }
   for (const auto& id : fecs) {
      hwFecIdRequest_->fecDel(id);
   }
}

Memtab::Fib::FecId MplsSm::getOrAllocateMplsV4FecId(const Mpls::LfibViaSetKey& key,
                                                    VrfMplsState& vrf) {
   SM_TRACE(8, vrf.vrfName() << " lFib adj index" << key);
   Memtab::Fib::FecId cached = vrf.lFibViaSetToFecId(key);
   if (cached.isValid()) {
      SM_TRACE(8, ": cachedFecId: " << cached);
      return cached;
   }
   std::uint64_t index = numAllocator_->getNumber();
   FAL_ASSERT(
       index != numAllocator_->invalidNumber() && "FecId range exhausted, Not possible",
       "index != numAllocator()->invalidNumber() && \"FecId range exhausted, Not possible\"");
   Memtab::Fib::FecId fecId = Memtab::Fib::FecId::fecIdForAdjType(kMplsNexthopAdj, index);
   vrf.lFibViaSetToFecIdIs(key, fecId);
   SM_TRACE(8, ": index: " << index << ", fecId: " << fecId);
   return fecId;
}

Memtab::Fib::Fec MplsSm::createMplsV4Fec(Memtab::Fib::FecId fecId,
                                         const CachedLFibMplsViaColl& vias,
                                         Memtab::Fib::FecId backupFecId) const {
   SM_TRACE(8, " FecId " << fecId);
   Memtab::Fib::Fec fec(fecId);
   std::uint32_t index = 0;
   for (const auto& [position, via] : vias.viaMap()) {
      SM_TRACE(9, "LFib via " << via);
      Memtab::Fib::Via fibVia;
      if (!vias.usableAsPrimaryVias()) {
         SM_DECISION(8, "Primary vias disabled, using drop vias");
      } else {
         fibVia.nextHopIs(via.nextHop());
         fibVia.intfIs(via.intf());
         fibVia.labelStackIs(via.labelStack());
         fibVia.labelActionIs(via.labelAction());
      }
      fec.viaIs(Memtab::Fib::ViaIndex(index++), fibVia);
   }
   fec.backupFecIdIs(backupFecId);
   return fec;
}

void MplsSm::requestHwFecIdAndUpdateDependencyMaps(Memtab::Fib::FecId fecId,
                                                   const Memtab::Fib::Fec& fec, VrfMplsState& vrf,
                                                   const L3AdjacencyPtr& l3Adj,
                                                   const Mpls::LfibViaSetKey& key) {
   SM_TRACE(8, vrf.vrfName() << " FecId " << fecId << " Fec " << fec << " L3Adjacency "
                             << l3Adj->index() << " LFibViaSetKey: " << key);
   FAL_ASSERT(forwardingIntoExternalFecsSupported());
   ExternalFecInfoPtr info = vrf.extFecInfoIs(fecId);
   info->lFibViaSetKeyIs(key);
   if (l3Adj->extFecInfo() != info) {
      ExternalFecInfoPtr old = l3Adj->extFecInfo();
      l3Adj->extFecInfoIs(info);
      info->dependentL3AdjacencyIs(l3Adj);
      if (old) {
         old->dependentL3AdjacencyDel(l3Adj);
         maybeDeleteExtFecInfo(vrf, old->fecId());
      }
   }
   if (fec == Memtab::Fib::Fec()) {
      // An external FEC is another agent's to publish; a record of ours under its id is stale.
      if (hwFecIdRequest_->fecPtr(fecId)) {
         hwFecIdRequest_->fecDel(fecId);
      }
   } else {
      const Memtab::Fib::Fec* current = hwFecIdRequest_->fecPtr(fecId);
      if (!current || !(*current == fec)) {
         hwFecIdRequest_->fecIs(fec);
      }
   }
   HwFecIdRequest request(fecId);
   if (!(hwFecIdRequest_->hwFecIdRequest(fecId) == request)) {
      hwFecIdRequest_->hwFecIdRequestIs(request);
   }
}

void MplsSm::freeMplsV4FecId(Memtab::Fib::FecId fecId, VrfMplsState& vrf) {
   SM_TRACE(8, ": fecId: " << fecId);
   if (fecId.adjType() != kMplsNexthopAdj) {
      return;  // external FECs are not ours to free
   }
   ExternalFecInfoPtr info = vrf.extFecInfo(fecId);
   numAllocator_->releaseNumber(fecId.value() & 0xFFFFFFFFu);
   if (info) {
      vrf.lFibViaSetToFecIdDel(info->lFibViaSetKey());
   }
}

void MplsSm::handleHwFecIdResponse(Memtab::Fib::FecId fecId) {
   SM_TRACE(8, "handleHwFecIdResponse " << fecId);
   if (!hwFecIdRequest_ || hwFecIdRequest_->hwFecIdRequest(fecId) == HwFecIdRequest()) {
      SM_TRACE(8, "no request for fecId " << fecId);
      return;
   }
   const L3::VrfName& vrfName = defaultVrf();
   Kor::Ptr<VrfMplsState> vrf = mplsState(vrfName);
   if (!vrf) {
      SM_TRACE(8, "no vrf state for vrf " << vrfName);
      return;
   }
   if (ExternalFecInfoPtr info = vrf->extFecInfo(fecId)) {
      for (const auto& l3Adj : info->dependentL3AdjacencySet()) {
         SM_TRACE(8, "add l3 adj " << l3Adj->index() << " for review");
         vrf->l3AdjForReviewIs(l3Adj->index(), true);
      }
   }
   processHwFecIdResponse(fecId, *vrf);
   doMaybeScheduleReview(vrfName);
}

void MplsSm::processHwFecIdResponse(Memtab::Fib::FecId fecId, VrfMplsState& vrf) {
   SM_TRACE(8, " vrf " << vrf.vrfName() << " FecId " << fecId);
   ExternalFecInfoPtr info = vrf.extFecInfoIs(fecId);
   info->hwIdIs(hwFecIdResponse_->hwFecId(fecId).hwFecId());
}

}  // namespace Fal
