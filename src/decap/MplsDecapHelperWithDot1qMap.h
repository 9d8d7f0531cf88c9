#pragma once

#include <cstdint>

#include <mplsfwd/Fal/Dot1qTagToVlanMapId.h>
#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/loom/NumAllocator.h>
#include <mplsfwd/loom/NumAllocatorConfig.h>
#include <mplsfwd/loom/NumAllocatorStatus.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>
#include <mplsfwd/mpls/LfibKeys.h>

#include "MplsDecapHelper.h"

namespace FalHelper {

// A partial decap helper for platforms whose hardware names a dot1q-tag-to-VLAN table by a small
// integer. It hands out those ids (1 to 255) from a number allocator built in
// handleInitialized(), which the helper's owner calls once the agent is ready; a released id is
// held back for 10 s before it is handed out again. Requests for the same collection key share
// one id; the caller deletes an id once, when its last user is gone. The six label operations
// keep their aborting defaults for the platform to override.
//
// Invariant: allocatedMapId and dot1qMapId are exact inverses, and an id is in them exactly when
// the allocator holds it as in use.
class MplsDecapHelperWithDot1qMap : public MplsDecapHelper {
 public:
   using AllocatedMapIdMap =
       Kor::HashMap<Fal::Dot1qTagToVlanMapId, Kor::Ptr<const Mpls::LfibDot1qTagToVlan>>;
   using Dot1qMapIdMap = Kor::HashMap<Mpls::LfibDot1qTagToVlanKey, Fal::Dot1qTagToVlanMapId>;

   static constexpr std::uint64_t firstMapId = 1;
   static constexpr std::uint64_t lastMapId = 255;
   static constexpr double mapIdExpiryTime = 10.0;

   MplsDecapHelperWithDot1qMap(const Kor::Name& name, Kor::Ptr<const Loom::TimerWheel> timerWheel);
   ~MplsDecapHelperWithDot1qMap() override;

   const Kor::Ptr<const Loom::TimerWheel>& timerWheel() const { return timerWheel_; }
   bool initialized() const { return initialized_; }

   // Builds the id allocator; does nothing when already initialized.
   void handleInitialized();

   const Fal::Dot1qTagToVlanMapId createDot1qMapping(
       Kor::Ptr<const Mpls::LfibDot1qTagToVlan> dot1qTagToVlan) override;
   void deleteDot1qMapping(Fal::Dot1qTagToVlanMapId mapId) override;

   const Kor::Ptr<Loom::NumAllocator>& numAllocator() const { return numAllocator_; }
   void numAllocatorIs(Kor::Ptr<const Loom::NumAllocatorConfig> config,
                       Kor::Ptr<Loom::NumAllocatorStatus> status, Kor::Ptr<Kor::Clock> clock);
   void numAllocatorDel() { numAllocator_ = nullptr; }

   // The record an id was handed out for; null when the id is not in use.
   Kor::Ptr<const Mpls::LfibDot1qTagToVlan> allocatedMapId(Fal::Dot1qTagToVlanMapId id) const;
   void allocatedMapIdIs(Fal::Dot1qTagToVlanMapId id,
                         Kor::Ptr<const Mpls::LfibDot1qTagToVlan> record);
   void allocatedMapIdDel(Fal::Dot1qTagToVlanMapId id) { allocatedMapId_.erase(id); }
   void allocatedMapIdDelAll() { allocatedMapId_.clear(); }
   const AllocatedMapIdMap& allocatedMapIdMap() const { return allocatedMapId_; }

   // The id a collection key holds; the invalid id when it holds none.
   Fal::Dot1qTagToVlanMapId dot1qMapId(const Mpls::LfibDot1qTagToVlanKey& key) const;
   void dot1qMapIdIs(const Mpls::LfibDot1qTagToVlanKey& key, Fal::Dot1qTagToVlanMapId id);
   void dot1qMapIdDel(const Mpls::LfibDot1qTagToVlanKey& key) { dot1qMapId_.erase(key); }
   void dot1qMapIdDelAll() { dot1qMapId_.clear(); }
   const Dot1qMapIdMap& dot1qMapIdMap() const { return dot1qMapId_; }

 private:
   Kor::Ptr<const Loom::TimerWheel> timerWheel_;
   AllocatedMapIdMap allocatedMapId_;
   Dot1qMapIdMap dot1qMapId_;
   Kor::Ptr<Loom::NumAllocator> numAllocator_;
   bool initialized_ = false;
};

}  // namespace FalHelper
