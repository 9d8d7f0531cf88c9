#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/MplsLabelAction.h>
#include <mplsfwd/wire/MplsLabelOperation.h>
#include <mplsfwd/wire/VlanId.h>

namespace Memtab::Fib {

// The position of a via in a FEC: 0 to 511. Out-of-bounds values cannot be built or set.
class ViaIndex {
 public:
   static constexpr std::uint32_t min = 0;
   static constexpr std::uint32_t max = 511;

   constexpr ViaIndex() = default;
   // Throws Kor::RangeError outside [min, max].
   ViaIndex(std::uint32_t value);  // NOLINT: positions are written as plain numbers

   constexpr std::uint32_t value() const { return value_; }
   void valueIs(std::uint32_t value);

   constexpr bool operator==(const ViaIndex&) const = default;
   constexpr auto operator<=>(const ViaIndex&) const = default;
   std::size_t hash() const;

 private:
   std::uint32_t value_ = 0;
};

std::ostream& operator<<(std::ostream& os, const ViaIndex& index);

// One via of a FIB FEC: where and how labelled traffic leaves. A default via (no next hop, no
// interface, no labels, no action, VLAN 0) is a drop via.
class Via {
 public:
   Via() = default;
   Via(const Wire::IpGenAddr& nextHop, Wire::IntfId intf,
       const Wire::MplsLabelOperation& labelStack,
       Wire::MplsLabelAction labelAction = Wire::MplsLabelAction::none)
       : nextHop_(nextHop), intf_(intf), labelStack_(labelStack), labelAction_(labelAction) {}

   const Wire::IpGenAddr& nextHop() const { return nextHop_; }
   void nextHopIs(const Wire::IpGenAddr& v) { nextHop_ = v; }
   Wire::IntfId intf() const { return intf_; }
   void intfIs(Wire::IntfId v) { intf_ = v; }
   const Wire::MplsLabelOperation& labelStack() const { return labelStack_; }
   void labelStackIs(const Wire::MplsLabelOperation& v) { labelStack_ = v; }
   Wire::MplsLabelAction labelAction() const { return labelAction_; }
   void labelActionIs(Wire::MplsLabelAction v) { labelAction_ = v; }
   Bridging::VlanId vlanId() const { return vlanId_; }
   void vlanIdIs(Bridging::VlanId v) { vlanId_ = v; }

   bool operator==(const Via&) const = default;
   std::size_t hash() const;
   // "via nextHop 10.0.0.1 intf Ethernet1 labelStack [16] labelAction swap vlanId 0".
   std::string stringValue() const;

 private:
   Wire::IpGenAddr nextHop_;
   Wire::IntfId intf_;
   Wire::MplsLabelOperation labelStack_;
   Wire::MplsLabelAction labelAction_ = Wire::MplsLabelAction::none;
   Bridging::VlanId vlanId_;
};

std::ostream& operator<<(std::ostream& os, const Via& via);

}  // namespace Memtab::Fib
