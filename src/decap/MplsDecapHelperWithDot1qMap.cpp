#include "MplsDecapHelperWithDot1qMap.h"

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/log/Assert.h>
#include <mplsfwd/log/Trace.h>
#include <mplsfwd/loom/Range.h>

namespace FalHelper {

namespace {
Log::Trace helperTrace("MplsDecapHelper");
}

MplsDecapHelperWithDot1qMap::MplsDecapHelperWithDot1qMap(
    const Kor::Name& name, Kor::Ptr<const Loom::TimerWheel> timerWheel)
    : MplsDecapHelper(name), timerWheel_(std::move(timerWheel)) {}

// The ids die with the helper; whatever the hardware holds is the platform's to clean.
MplsDecapHelperWithDot1qMap::~MplsDecapHelperWithDot1qMap() {
   dot1qMapIdDelAll();
   allocatedMapIdDelAll();
   numAllocatorDel();
}

void MplsDecapHelperWithDot1qMap::handleInitialized() {
   TRACE8(helperTrace, "MplsDecapHelper::"
                           << "handleInitialized");
   if (initialized_) {
      return;
   }
   const Loom::Range range(firstMapId, lastMapId);
   auto config =
       Kor::make<Loom::NumAllocatorConfig>(range, mapIdExpiryTime, name() + "-dot1qMapIdConfig");
   auto status = Kor::make<Loom::NumAllocatorStatus>(name() + "-dot1qMapIdStatus");
   Kor::Ptr<Kor::Clock> clock = timerWheel_ ? timerWheel_->clock() : nullptr;
   numAllocatorIs(config, status, clock);
   initialized_ = true;
}

void MplsDecapHelperWithDot1qMap::numAllocatorIs(Kor::Ptr<const Loom::NumAllocatorConfig> config,
                                                 Kor::Ptr<Loom::NumAllocatorStatus> status,
                                                 Kor::Ptr<Kor::Clock> clock) {
   numAllocator_ =
       Kor::make<Loom::NumAllocator>(std::move(config), std::move(status), std::move(clock));
}

Kor::Ptr<const Mpls::LfibDot1qTagToVlan> MplsDecapHelperWithDot1qMap::allocatedMapId(
    Fal::Dot1qTagToVlanMapId id) const {
   return Kor::mapValueOr(allocatedMapId_, id);
}

void MplsDecapHelperWithDot1qMap::allocatedMapIdIs(
    Fal::Dot1qTagToVlanMapId id, Kor::Ptr<const Mpls::LfibDot1qTagToVlan> record) {
   allocatedMapId_[id] = std::move(record);
}

Fal::Dot1qTagToVlanMapId MplsDecapHelperWithDot1qMap::dot1qMapId(
    const Mpls::LfibDot1qTagToVlanKey& key) const {
   return Kor::mapValueOr(dot1qMapId_, key);
}

void MplsDecapHelperWithDot1qMap::dot1qMapIdIs(const Mpls::LfibDot1qTagToVlanKey& key,
                                               Fal::Dot1qTagToVlanMapId id) {
   dot1qMapId_[key] = id;
}

const Fal::Dot1qTagToVlanMapId MplsDecapHelperWithDot1qMap::createDot1qMapping(
    Kor::Ptr<const Mpls::LfibDot1qTagToVlan> dot1qTagToVlan) {
   TRACE8(
       helperTrace, "createDot1qMapping::"
                        << "createDot1qMapping"
                        << "( LfibDot1qTagToVlanKey:"
                        << (dot1qTagToVlan ? dot1qTagToVlan->key() : Mpls::LfibDot1qTagToVlanKey())
                        << " )");
   FAL_ASSERT(initialized());
   FAL_ASSERT(dot1qTagToVlan);
   const Mpls::LfibDot1qTagToVlanKey& key = dot1qTagToVlan->key();
   if (auto it = dot1qMapId_.find(key); it != dot1qMapId_.end()) {
      // Shared by key: the same collection keeps the id it already has.
      return it->second;
   }
   const std::uint64_t number = numAllocator_->getNumber();
   if (number == Loom::NumAllocator::invalidNumber()) {
      return Fal::Dot1qTagToVlanMapId(Fal::Dot1qTagToVlanMapId::invalid);
   }
   const Fal::Dot1qTagToVlanMapId id(static_cast<std::uint32_t>(number));
   allocatedMapIdIs(id, dot1qTagToVlan);
   dot1qMapIdIs(key, id);
   TRACE8(helperTrace, "Allocated Dot1qTagToVlanMapId " << id);
   return id;
}

void MplsDecapHelperWithDot1qMap::deleteDot1qMapping(Fal::Dot1qTagToVlanMapId mapId) {
   TRACE8(helperTrace, "deleteDot1qMapping::"
                           << "deleteDot1qMapping"
                           << "( Dot1qTagToVlanMapId:" << mapId << " )");
   FAL_ASSERT(initialized());
   auto it = allocatedMapId_.find(mapId);
   if (it == allocatedMapId_.end()) {
      return;
   }
   if (it->second) {
      dot1qMapIdDel(it->second->key());
   } else {
      // An entry written without its record: find the key through the reverse index.
      std::erase_if(dot1qMapId_, [&](const auto& entry) { return entry.second == mapId; });
   }
   allocatedMapIdDel(mapId);
   FAL_ASSERT(numAllocator_->releaseNumber(mapId.value()));
   TRACE8(helperTrace, "Deleted Dot1qTagToVlanMapId " << mapId);
}

}  // namespace FalHelper
