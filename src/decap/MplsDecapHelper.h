#pragma once

#include <vector>

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
   // One mapping as the platform holds it, with the values it was created with.
   struct Mapping {
      enum class Kind { vrf, vlan, dot1q };
      Kind kind = Kind::vrf;
      Wire::MplsLabel label;
      L3::VrfName vrfName;                                           // vrf
      Mpls::PayloadType payloadType = Mpls::payloadTypeAutoDecide_;  // vrf
      Bridging::VlanId vlanId;                                       // vlan
      Bridging::VlanId dot1qTag;                                     // dot1q
      Bridging::VlanIdOrNone dot1qVlanId;                            // dot1q
      bool flood = false;                                            // vlan, dot1q
   };

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
   // Every mapping the platform holds. Mappings outlive an agent restart: once the new
   // incarnation has taken up the whole LFIB it deletes those it does not program (a label that
   // became a transit route must stop decapsulating). The default lists nothing: a platform that
   // cannot list its mappings is not reconciled.
   virtual std::vector<Mapping> listMappings() const;
};

}  // namespace FalHelper
