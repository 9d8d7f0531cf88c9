#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Wire {

// The kinds of interface an IntfId can name. The kind is the top byte of the id and the number
// (as in "Ethernet7") its low 24 bits, so every kind owns one contiguous range of ids.
enum class IntfKind : std::uint8_t {
   none = 0,
   ethernet = 1,
   portChannel = 2,
   vlan = 3,
   loopback = 4,
   nexthopGroup = 5,
   dynamicTunnel = 6,
   portPseudowire = 7,
   vlanPseudowire = 8,
};

// A 32-bit interface id. The zero id is the empty interface ("no interface"); it prints as "".
// Only ids of a known kind with a number in that kind's bounds can be built, so every id has a
// name and parses back from it. Ethernet and Port-Channel numbers start at 1, VLAN numbers run
// 1 to 4094, the other kinds start at 0; all end at 16777215.
class IntfId {
 public:
   static constexpr std::uint32_t kNumberBits = 24;
   static constexpr std::uint32_t kNumberMask = (1u << kNumberBits) - 1;

   constexpr IntfId() = default;
   // From a raw id; throws Kor::RangeError for an id that names no interface.
   explicit IntfId(std::uint32_t value);
   // From a kind and a number; throws Kor::RangeError when the number is out of the kind's bounds.
   IntfId(IntfKind kind, std::uint32_t number);

   static IntfId ethernet(std::uint32_t number) { return IntfId(IntfKind::ethernet, number); }
   static IntfId portChannel(std::uint32_t number) { return IntfId(IntfKind::portChannel, number); }
   static IntfId vlan(std::uint32_t number) { return IntfId(IntfKind::vlan, number); }
   static IntfId loopback(std::uint32_t number) { return IntfId(IntfKind::loopback, number); }

   constexpr std::uint32_t value() const { return value_; }
   constexpr IntfKind kind() const { return static_cast<IntfKind>(value_ >> kNumberBits); }
   constexpr std::uint32_t number() const { return value_ & kNumberMask; }
   constexpr bool empty() const { return value_ == 0; }
   constexpr bool operator!() const { return empty(); }

   constexpr bool operator==(const IntfId&) const = default;
   constexpr auto operator<=>(const IntfId&) const = default;
   std::size_t hash() const;

   // "Ethernet1", "Port-Channel3", "Vlan10", "Loopback0", "NexthopGroup4", "DynamicTunnel2",
   // "Pseudowire5" (port pseudowire), "VlanPseudowire6"; "" for the empty id.
   std::string stringValue() const;
   // Reverse of stringValue(); throws Kor::ParseError for an unknown name or a bad number.
   static IntfId parse(std::string_view text);

   // The text prefix of a kind ("" for none) and the bounds of its numbers.
   static std::string_view kindName(IntfKind kind);
   static std::uint32_t minNumber(IntfKind kind);
   static std::uint32_t maxNumber(IntfKind kind);

 private:
   std::uint32_t value_ = 0;
};

std::ostream& operator<<(std::ostream& os, const IntfId& intf);

// An interface that stands for a next-hop group, i.e. for a FEC of the FIB.
struct FecIdIntfId {
   static bool isNexthopGroupIdIntfId(IntfId intf) { return intf.kind() == IntfKind::nexthopGroup; }
   static IntfId nexthopGroupIdIntfId(std::uint32_t nexthopGroupId) {
      return IntfId(IntfKind::nexthopGroup, nexthopGroupId);
   }
};

// An interface that stands for a dynamically created tunnel.
struct DynamicTunnelIntfId {
   static bool isDynamicTunnelIntfId(IntfId intf) { return intf.kind() == IntfKind::dynamicTunnel; }
   static IntfId dynamicTunnelIntfId(std::uint32_t tunnelIndex) {
      return IntfId(IntfKind::dynamicTunnel, tunnelIndex);
   }
};

// Pseudowire interfaces: a port pseudowire carries a whole port, a VLAN pseudowire one VLAN of it.
struct PseudowireIntfId {
   static bool isPseudowireIntfId(IntfId intf) {
      return isPortPseudowireIntfId(intf) || isVlanPseudowireIntfId(intf);
   }
   static bool isPortPseudowireIntfId(IntfId intf) {
      return intf.kind() == IntfKind::portPseudowire;
   }
   static bool isVlanPseudowireIntfId(IntfId intf) {
      return intf.kind() == IntfKind::vlanPseudowire;
   }
   static IntfId portPseudowireIntfId(std::uint32_t number) {
      return IntfId(IntfKind::portPseudowire, number);
   }
   static IntfId vlanPseudowireIntfId(std::uint32_t number) {
      return IntfId(IntfKind::vlanPseudowire, number);
   }
};

}  // namespace Wire
