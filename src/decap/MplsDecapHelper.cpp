#include "MplsDecapHelper.h"

#include <mplsfwd/log/NoopAgent.h>

namespace FalHelper {

namespace {

// What an unimplemented create answers in a no-op agent: the mapping is not in hardware.
constexpr Mpls::LfibHwProgrammingReturnCode noopCreateResult = Mpls::lfibHwProgrammingFailed_;

}  // namespace

MplsDecapHelper::MplsDecapHelper(const Kor::Name& name) : Fal::FalBaseHelper(name) {}

MplsDecapHelper::~MplsDecapHelper() = default;

Mpls::LfibHwProgrammingReturnCode MplsDecapHelper::createLabelToVlanMapping(Wire::MplsLabel,
                                                                            Bridging::VlanId,
                                                                            bool) {
   const Kor::String message = "Unimplemented createLabelToVlanMapping";
   if (Log::noopAgent()) {
      return noopCreateResult;
   }
   falAssert(message);
}

void MplsDecapHelper::deleteLabelToVlanMapping(Wire::MplsLabel, Bridging::VlanId, bool) {
   const Kor::String message = "Unimplemented delLabelToVlanMapping";
   if (Log::noopAgent()) {
      return;
   }
   falAssert(message);
}

const Fal::Dot1qTagToVlanMapId MplsDecapHelper::createDot1qMapping(
    Kor::Ptr<const Mpls::LfibDot1qTagToVlan>) {
   const Kor::String message = "Unimplemented createDot1qMapping";
   if (Log::noopAgent()) {
      return Fal::Dot1qTagToVlanMapId(Fal::Dot1qTagToVlanMapId::invalid);
   }
   falAssert(message);
}

void MplsDecapHelper::deleteDot1qMapping(Fal::Dot1qTagToVlanMapId) {
   const Kor::String message = "Unimplemented deleteDot1qMapping";
   if (Log::noopAgent()) {
      return;
   }
   falAssert(message);
}

Mpls::LfibHwProgrammingReturnCode MplsDecapHelper::createLabelDot1qToVlanMapping(
    Wire::MplsLabel, Bridging::VlanId, Bridging::VlanIdOrNone, bool) {
   const Kor::String message = "Unimplemented createLabelDot1qToVlanMapping";
   if (Log::noopAgent()) {
      return noopCreateResult;
   }
   falAssert(message);
}

void MplsDecapHelper::deleteLabelDot1qToVlanMapping(Wire::MplsLabel, Bridging::VlanId, bool) {
   const Kor::String message = "Unimplemented deleteLabelDot1qToVlanMapping";
   if (Log::noopAgent()) {
      return;
   }
   falAssert(message);
}

Mpls::LfibHwProgrammingReturnCode MplsDecapHelper::createLabelToVrfMapping(Wire::MplsLabel,
                                                                           L3::VrfName,
                                                                           Mpls::PayloadType) {
   const Kor::String message = "Unimplemented createLabelToVrfMapping";
   if (Log::noopAgent()) {
      return noopCreateResult;
   }
   falAssert(message);
}

void MplsDecapHelper::deleteLabelToVrfMapping(Wire::MplsLabel, L3::VrfName, Mpls::PayloadType) {
   const Kor::String message = "Unimplemented deleteLabelToVrfMapping";
   if (Log::noopAgent()) {
      return;
   }
   falAssert(message);
}

std::vector<MplsDecapHelper::Mapping> MplsDecapHelper::listMappings() const {
   return {};
}

}  // namespace FalHelper
