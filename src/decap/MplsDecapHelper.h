#pragma once

#include <mplsfwd/Fal/Dot1qTagToVlanMapId.h>
#include <mplsfwd/Fal/FalCommon.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/l3/VrfName.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>
#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/wire/MplsLabel.h>
#include <mplsfwd/wire/VlanId.h>

namespace FalHelper {

// The label decapsulation contract between the platform-independent decap state machine and a
// hardware platform. The state machine hands every label-to-VRF, label-to-VLAN and
// label-plus-dot1q-tag-to-VLAN mapping to an object of this type and never touches hardware
// itself; the platform derives from it and overrides what its hardware supports.
//
// Every operation has a default body for a platform that did not override it: it aborts the
// agent with "Unimplemented <operation>", unless the agent runs as a no-op agent (FAL_NOOP_AGENT
// set), where it quietly answers failure (2 for a create, the invalid id for createDot1qMapping).
// The label passed is always the route's top label, and a delete carries the same values as the
// create it undoes, so that a platform can find its entry without a table of its own.
class MplsDecapHelper : public Fal::FalBaseHelper {
 public:
   explicit MplsDecapHelper(const Kor::Name& name);
   ~MplsDecapHelper() override;

   virtual Mpls::LfibHwProgrammingReturnCode createLabelToVlanMapping(Wire::MplsLabel label,
                                                                      Bridging::VlanId vlanId,
                                                                      bool flood);
   virtual void deleteLabelToVlanMapping(Wire::MplsLabel label, Bridging::VlanId vlanId,
                                         bool flood);
   // For the platform's own use: names a dot1q-tag-to-VLAN table by a small id.
   virtual const Fal::Dot1qTagToVlanMapId createDot1qMapping(
       Kor::Ptr<const Mpls::LfibDot1qTagToVlan> dot1qTagToVlan);
   virtual void deleteDot1qMapping(Fal::Dot1qTagToVlanMapId mapId);
   virtual Mpls::LfibHwProgrammingReturnCode createLabelDot1qToVlanMapping(
       Wire::MplsLabel label, Bridging::VlanId dot1qTag, Bridging::VlanIdOrNone vlanId, bool flood);
   // Carries no VLAN: the platform finds the entry by label and tag.
   virtual void deleteLabelDot1qToVlanMapping(Wire::MplsLabel label, Bridging::VlanId dot1qTag,
                                              bool flood);
   virtual Mpls::LfibHwProgrammingReturnCode createLabelToVrfMapping(Wire::MplsLabel label,
                                                                     L3::VrfName vrfName,
                                                                     Mpls::PayloadType payloadType);
   virtual void deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrfName,
                                        Mpls::PayloadType payloadType);
};

}  // namespace FalHelper
