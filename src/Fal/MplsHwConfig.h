#pragma once

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

#include "MplsHwVrfConfig.h"

namespace Fal {

// Root of what is to be programmed: one MplsHwVrfConfig per VRF, created on first use.
class MplsHwConfig : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<MplsHwConfig> {
    public:
      using Kor::Notifiee<MplsHwConfig>::Notifiee;
      virtual void onVrfConfig(VrfId) {}
   };
   using VrfConfigMap = Kor::HashMap<VrfId, Kor::Ptr<MplsHwVrfConfig>>;

   explicit MplsHwConfig(Kor::Name name) : Kor::Entity(std::move(name)) {}

   // Null when absent.
   Kor::Ptr<MplsHwVrfConfig> vrfConfig(VrfId vrfId) const {
      return Kor::mapValueOr(vrfConfig_, vrfId);
   }
   // Get or create; notifies only on creation.
   Kor::Ptr<MplsHwVrfConfig> vrfConfigIs(VrfId vrfId) {
      auto [it, inserted] = vrfConfig_.try_emplace(vrfId);
      if (inserted) {
         it->second = Kor::make<MplsHwVrfConfig>(vrfId);
         Kor::Ptr<MplsHwVrfConfig> created = it->second;
         notify(&NotifieeConst::onVrfConfig, vrfId);
         return created;
      }
      return it->second;
   }
   void vrfConfigDel(VrfId vrfId) {
      if (vrfConfig_.erase(vrfId)) {
         notify(&NotifieeConst::onVrfConfig, vrfId);
      }
   }
   void vrfConfigDelAll() {
      Kor::deleteEachKey(vrfConfig_, [this](VrfId id) { vrfConfigDel(id); });
   }
   const VrfConfigMap& vrfConfigMap() const { return vrfConfig_; }

 private:
   VrfConfigMap vrfConfig_;
};

Kor::Ptr<MplsHwConfig> mplsHwConfigFactory(const Kor::Name& name);

}  // namespace Fal
