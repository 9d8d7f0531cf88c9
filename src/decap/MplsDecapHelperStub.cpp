#include "MplsDecapHelperStub.h"

namespace FalHelper {

MplsDecapHelperStub::MplsDecapHelperStub(const Kor::Name& name,
                                         Kor::Ptr<const Loom::TimerWheel> timerWheel)
    : MplsDecapHelperWithDot1qMap(name, std::move(timerWheel)) {}

MplsDecapHelperStub::~MplsDecapHelperStub() = default;

Mpls::LfibHwProgrammingReturnCode MplsDecapHelperStub::createLabelToVlanMapping(
    Wire::MplsLabel label, Bridging::VlanId vlanId, bool flood) {
   createLabelToVlanLabel_ = label;
   createLabelToVlanVlanId_ = vlanId;
   createLabelToVlanFlood_ = flood;
   ++createLabelToVlanCount_;
   return createLabelToVlanRc_;
}

void MplsDecapHelperStub::deleteLabelToVlanMapping(Wire::MplsLabel label, Bridging::VlanId vlanId,
                                                   bool flood) {
   deleteLabelToVlanLabel_ = label;
   deleteLabelToVlanVlanId_ = vlanId;
   deleteLabelToVlanFlood_ = flood;
   ++deleteLabelToVlanCount_;
}

Mpls::LfibHwProgrammingReturnCode MplsDecapHelperStub::createLabelDot1qToVlanMapping(
    Wire::MplsLabel label, Bridging::VlanId dot1qTag, Bridging::VlanIdOrNone vlanId, bool flood) {
   createLabelDot1qToVlanLabel_ = label;
   createLabelDot1qToVlanDot1qTag_ = dot1qTag;
   createLabelDot1qToVlanVlanId_ = vlanId;
   createLabelDot1qToVlanFlood_ = flood;
   ++createLabelDot1qToVlanCount_;
   return createLabelDot1qToVlanRc_;
}

void MplsDecapHelperStub::deleteLabelDot1qToVlanMapping(Wire::MplsLabel label,
                                                        Bridging::VlanId dot1qTag, bool flood) {
   deleteLabelDot1qToVlanLabel_ = label;
   deleteLabelDot1qToVlanDot1qTag_ = dot1qTag;
   deleteLabelDot1qToVlanFlood_ = flood;
   ++deleteLabelDot1qToVlanCount_;
}

Mpls::LfibHwProgrammingReturnCode MplsDecapHelperStub::createLabelToVrfMapping(
    Wire::MplsLabel label, L3::VrfName vrfName, Mpls::PayloadType payloadType) {
   createLabelToVrfLabel_ = label;
   createLabelToVrfVrfName_ = std::move(vrfName);
   createLabelToVrfPayloadType_ = payloadType;
   ++createLabelToVrfCount_;
   return createLabelToVrfRc_;
}

void MplsDecapHelperStub::deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrfName,
                                                  Mpls::PayloadType payloadType) {
   deleteLabelToVrfLabel_ = label;
   deleteLabelToVrfVrfName_ = std::move(vrfName);
   deleteLabelToVrfPayloadType_ = payloadType;
   ++deleteLabelToVrfCount_;
}

Kor::Ptr<MplsDecapHelper> mplsDecapHelperStubFactory(const Kor::Name& name,
                                                     Kor::Ptr<const Loom::TimerWheel> timerWheel) {
   return Kor::make<MplsDecapHelperStub>(name, std::move(timerWheel));
}

}  // namespace FalHelper
