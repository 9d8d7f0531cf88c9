#pragma once

#include <cstdint>

#include "MplsDecapHelperWithDot1qMap.h"

namespace FalHelper {

// A complete decap helper without hardware: the platform that the platform-independent code runs
// against when none is present (tests, simulation, bring-up). Each label operation stores its
// arguments into the attributes of its group, in argument order, then increments the group's
// count; each create answers the group's settable return code, so a test or a simulation makes
// the next creates fail by setting it. It also allocates dot1q map ids, as its base does.
//
// Initial values mean "never called": counts and return codes 0, labels the no-label value
// 0x100000, VLAN ids and dot1q tags 1, the VLAN-or-none 0 (none), flood false, VRF names empty,
// payload types 0.
class MplsDecapHelperStub : public MplsDecapHelperWithDot1qMap {
 public:
   MplsDecapHelperStub(const Kor::Name& name, Kor::Ptr<const Loom::TimerWheel> timerWheel);
   ~MplsDecapHelperStub() override;

   Mpls::LfibHwProgrammingReturnCode createLabelToVlanMapping(Wire::MplsLabel label,
                                                              Bridging::VlanId vlanId,
                                                              bool flood) override;
   void deleteLabelToVlanMapping(Wire::MplsLabel label, Bridging::VlanId vlanId,
                                 bool flood) override;
   Mpls::LfibHwProgrammingReturnCode createLabelDot1qToVlanMapping(Wire::MplsLabel label,
                                                                   Bridging::VlanId dot1qTag,
                                                                   Bridging::VlanIdOrNone vlanId,
                                                                   bool flood) override;
   void deleteLabelDot1qToVlanMapping(Wire::MplsLabel label, Bridging::VlanId dot1qTag,
                                      bool flood) override;
   Mpls::LfibHwProgrammingReturnCode createLabelToVrfMapping(
       Wire::MplsLabel label, L3::VrfName vrfName, Mpls::PayloadType payloadType) override;
   void deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrfName,
                                Mpls::PayloadType payloadType) override;

   // createLabelToVlan group.
   Mpls::LfibHwProgrammingReturnCode createLabelToVlanRc() const { return createLabelToVlanRc_; }
   void createLabelToVlanRcIs(Mpls::LfibHwProgrammingReturnCode v) { createLabelToVlanRc_ = v; }
   std::uint32_t createLabelToVlanCount() const { return createLabelToVlanCount_; }
   void createLabelToVlanCountIs(std::uint32_t v) { createLabelToVlanCount_ = v; }
   Wire::MplsLabel createLabelToVlanLabel() const { return createLabelToVlanLabel_; }
   void createLabelToVlanLabelIs(Wire::MplsLabel v) { createLabelToVlanLabel_ = v; }
   Bridging::VlanId createLabelToVlanVlanId() const { return createLabelToVlanVlanId_; }
   void createLabelToVlanVlanIdIs(Bridging::VlanId v) { createLabelToVlanVlanId_ = v; }
   bool createLabelToVlanFlood() const { return createLabelToVlanFlood_; }
   void createLabelToVlanFloodIs(bool v) { createLabelToVlanFlood_ = v; }

   // createLabelDot1qToVlan group.
   Mpls::LfibHwProgrammingReturnCode createLabelDot1qToVlanRc() const {
      return createLabelDot1qToVlanRc_;
   }
   void createLabelDot1qToVlanRcIs(Mpls::LfibHwProgrammingReturnCode v) {
      createLabelDot1qToVlanRc_ = v;
   }
   std::uint32_t createLabelDot1qToVlanCount() const { return createLabelDot1qToVlanCount_; }
   void createLabelDot1qToVlanCountIs(std::uint32_t v) { createLabelDot1qToVlanCount_ = v; }
   Wire::MplsLabel createLabelDot1qToVlanLabel() const { return createLabelDot1qToVlanLabel_; }
   void createLabelDot1qToVlanLabelIs(Wire::MplsLabel v) { createLabelDot1qToVlanLabel_ = v; }
   Bridging::VlanId createLabelDot1qToVlanDot1qTag() const {
      return createLabelDot1qToVlanDot1qTag_;
   }
   void createLabelDot1qToVlanDot1qTagIs(Bridging::VlanId v) {
      createLabelDot1qToVlanDot1qTag_ = v;
   }
   Bridging::VlanIdOrNone createLabelDot1qToVlanVlanId() const {
      return createLabelDot1qToVlanVlanId_;
   }
   void createLabelDot1qToVlanVlanIdIs(Bridging::VlanIdOrNone v) {
      createLabelDot1qToVlanVlanId_ = v;
   }
   bool createLabelDot1qToVlanFlood() const { return createLabelDot1qToVlanFlood_; }
   void createLabelDot1qToVlanFloodIs(bool v) { createLabelDot1qToVlanFlood_ = v; }

   // deleteLabelDot1qToVlan group.
   std::uint32_t deleteLabelDot1qToVlanCount() const { return deleteLabelDot1qToVlanCount_; }
   void deleteLabelDot1qToVlanCountIs(std::uint32_t v) { deleteLabelDot1qToVlanCount_ = v; }
   Wire::MplsLabel deleteLabelDot1qToVlanLabel() const { return deleteLabelDot1qToVlanLabel_; }
   void deleteLabelDot1qToVlanLabelIs(Wire::MplsLabel v) { deleteLabelDot1qToVlanLabel_ = v; }
   Bridging::VlanId deleteLabelDot1qToVlanDot1qTag() const {
      return deleteLabelDot1qToVlanDot1qTag_;
   }
   void deleteLabelDot1qToVlanDot1qTagIs(Bridging::VlanId v) {
      deleteLabelDot1qToVlanDot1qTag_ = v;
   }
   bool deleteLabelDot1qToVlanFlood() const { return deleteLabelDot1qToVlanFlood_; }
   void deleteLabelDot1qToVlanFloodIs(bool v) { deleteLabelDot1qToVlanFlood_ = v; }

   // deleteLabelToVlan group.
   std::uint32_t deleteLabelToVlanCount() const { return deleteLabelToVlanCount_; }
   void deleteLabelToVlanCountIs(std::uint32_t v) { deleteLabelToVlanCount_ = v; }
   Wire::MplsLabel deleteLabelToVlanLabel() const { return deleteLabelToVlanLabel_; }
   void deleteLabelToVlanLabelIs(Wire::MplsLabel v) { deleteLabelToVlanLabel_ = v; }
   Bridging::VlanId deleteLabelToVlanVlanId() const { return deleteLabelToVlanVlanId_; }
   void deleteLabelToVlanVlanIdIs(Bridging::VlanId v) { deleteLabelToVlanVlanId_ = v; }
   bool deleteLabelToVlanFlood() const { return deleteLabelToVlanFlood_; }
   void deleteLabelToVlanFloodIs(bool v) { deleteLabelToVlanFlood_ = v; }

   // createLabelToVrf group.
   Mpls::LfibHwProgrammingReturnCode createLabelToVrfRc() const { return createLabelToVrfRc_; }
   void createLabelToVrfRcIs(Mpls::LfibHwProgrammingReturnCode v) { createLabelToVrfRc_ = v; }
   std::uint32_t createLabelToVrfCount() const { return createLabelToVrfCount_; }
   void createLabelToVrfCountIs(std::uint32_t v) { createLabelToVrfCount_ = v; }
   Wire::MplsLabel createLabelToVrfLabel() const { return createLabelToVrfLabel_; }
   void createLabelToVrfLabelIs(Wire::MplsLabel v) { createLabelToVrfLabel_ = v; }
   const L3::VrfName& createLabelToVrfVrfName() const { return createLabelToVrfVrfName_; }
   void createLabelToVrfVrfNameIs(const L3::VrfName& v) { createLabelToVrfVrfName_ = v; }
   Mpls::PayloadType createLabelToVrfPayloadType() const { return createLabelToVrfPayloadType_; }
   void createLabelToVrfPayloadTypeIs(Mpls::PayloadType v) { createLabelToVrfPayloadType_ = v; }

   // deleteLabelToVrf group.
   std::uint32_t deleteLabelToVrfCount() const { return deleteLabelToVrfCount_; }
   void deleteLabelToVrfCountIs(std::uint32_t v) { deleteLabelToVrfCount_ = v; }
   Wire::MplsLabel deleteLabelToVrfLabel() const { return deleteLabelToVrfLabel_; }
   void deleteLabelToVrfLabelIs(Wire::MplsLabel v) { deleteLabelToVrfLabel_ = v; }
   const L3::VrfName& deleteLabelToVrfVrfName() const { return deleteLabelToVrfVrfName_; }
   void deleteLabelToVrfVrfNameIs(const L3::VrfName& v) { deleteLabelToVrfVrfName_ = v; }
   Mpls::PayloadType deleteLabelToVrfPayloadType() const { return deleteLabelToVrfPayloadType_; }
   void deleteLabelToVrfPayloadTypeIs(Mpls::PayloadType v) { deleteLabelToVrfPayloadType_ = v; }

 private:
   Mpls::LfibHwProgrammingReturnCode createLabelToVlanRc_ = Mpls::lfibHwProgrammingSuccess_;
   std::uint32_t createLabelToVlanCount_ = 0;
   Wire::MplsLabel createLabelToVlanLabel_;
   Bridging::VlanId createLabelToVlanVlanId_ = Bridging::VlanId(1);
   bool createLabelToVlanFlood_ = false;

   Mpls::LfibHwProgrammingReturnCode createLabelDot1qToVlanRc_ = Mpls::lfibHwProgrammingSuccess_;
   std::uint32_t createLabelDot1qToVlanCount_ = 0;
   Wire::MplsLabel createLabelDot1qToVlanLabel_;
   Bridging::VlanId createLabelDot1qToVlanDot1qTag_ = Bridging::VlanId(1);
   Bridging::VlanIdOrNone createLabelDot1qToVlanVlanId_;
   bool createLabelDot1qToVlanFlood_ = false;

   std::uint32_t deleteLabelDot1qToVlanCount_ = 0;
   Wire::MplsLabel deleteLabelDot1qToVlanLabel_;
   Bridging::VlanId deleteLabelDot1qToVlanDot1qTag_ = Bridging::VlanId(1);
   bool deleteLabelDot1qToVlanFlood_ = false;

   std::uint32_t deleteLabelToVlanCount_ = 0;
   Wire::MplsLabel deleteLabelToVlanLabel_;
   Bridging::VlanId deleteLabelToVlanVlanId_ = Bridging::VlanId(1);
   bool deleteLabelToVlanFlood_ = false;

   Mpls::LfibHwProgrammingReturnCode createLabelToVrfRc_ = Mpls::lfibHwProgrammingSuccess_;
   std::uint32_t createLabelToVrfCount_ = 0;
   Wire::MplsLabel createLabelToVrfLabel_;
   L3::VrfName createLabelToVrfVrfName_;
   Mpls::PayloadType createLabelToVrfPayloadType_ = Mpls::payloadTypeAutoDecide_;

   std::uint32_t deleteLabelToVrfCount_ = 0;
   Wire::MplsLabel deleteLabelToVrfLabel_;
   L3::VrfName deleteLabelToVrfVrfName_;
   Mpls::PayloadType deleteLabelToVrfPayloadType_ = Mpls::payloadTypeAutoDecide_;
};

// Builds a stub and hands it out as the interface the decap state machine takes.
Kor::Ptr<MplsDecapHelper> mplsDecapHelperStubFactory(const Kor::Name& name,
                                                     Kor::Ptr<const Loom::TimerWheel> timerWheel);

}  // namespace FalHelper
