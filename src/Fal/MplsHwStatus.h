#pragma once

#include <cstdint>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

#include "MplsHwVrfStatus.h"

namespace Fal {

// Root of what the platform reports: one MplsHwVrfStatus per VRF it serves, and two capabilities
// published for other agents.
class MplsHwStatus : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<MplsHwStatus> {
    public:
      using Kor::Notifiee<MplsHwStatus>::Notifiee;
      virtual void onVrfStatus(VrfId) {}
      virtual void onMaxEcmpSize() {}
      virtual void onLfibCountersSupported() {}
   };
   using VrfStatusMap = Kor::HashMap<VrfId, Kor::Ptr<MplsHwVrfStatus>>;

   explicit MplsHwStatus(Kor::Name name) : Kor::Entity(std::move(name)) {}

   Kor::Ptr<MplsHwVrfStatus> vrfStatus(VrfId vrfId) const {
      return Kor::mapValueOr(vrfStatus_, vrfId);
   }
   Kor::Ptr<MplsHwVrfStatus> vrfStatusIs(VrfId vrfId) {
      auto [it, inserted] = vrfStatus_.try_emplace(vrfId);
      if (inserted) {
         it->second = Kor::make<MplsHwVrfStatus>(vrfId);
         Kor::Ptr<MplsHwVrfStatus> created = it->second;
         notify(&NotifieeConst::onVrfStatus, vrfId);
         return created;
      }
      return it->second;
   }
   void vrfStatusDel(VrfId vrfId) {
      if (vrfStatus_.erase(vrfId)) {
         notify(&NotifieeConst::onVrfStatus, vrfId);
      }
   }
   void vrfStatusDelAll() {
      Kor::deleteEachKey(vrfStatus_, [this](VrfId id) { vrfStatusDel(id); });
   }
   const VrfStatusMap& vrfStatusMap() const { return vrfStatus_; }

   std::uint32_t maxEcmpSize() const { return maxEcmpSize_; }
   void maxEcmpSizeIs(std::uint32_t v) {
      if (Kor::assignIfChanged(maxEcmpSize_, v)) {
         notify(&NotifieeConst::onMaxEcmpSize);
      }
   }
   bool lfibCountersSupported() const { return lfibCountersSupported_; }
   void lfibCountersSupportedIs(bool v) {
      if (Kor::assignIfChanged(lfibCountersSupported_, v)) {
         notify(&NotifieeConst::onLfibCountersSupported);
      }
   }

 private:
   VrfStatusMap vrfStatus_;
   std::uint32_t maxEcmpSize_ = 0;
   bool lfibCountersSupported_ = false;
};

Kor::Ptr<MplsHwStatus> mplsHwStatusFactory(const Kor::Name& name);

}  // namespace Fal
