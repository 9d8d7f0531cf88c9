#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/wire/IntfId.h>

namespace {

using Wire::IntfId;
using Wire::IntfKind;

TEST(IntfId, NamesOfEveryKindRoundTrip) {
   const std::vector<std::pair<IntfId, std::string>> cases = {
       {IntfId::ethernet(1), "Ethernet1"},
       {IntfId::ethernet(16777215), "Ethernet16777215"},
       {IntfId::portChannel(3), "Port-Channel3"},
       {IntfId::vlan(10), "Vlan10"},
       {IntfId::vlan(4094), "Vlan4094"},
       {IntfId::loopback(0), "Loopback0"},
       {Wire::FecIdIntfId::nexthopGroupIdIntfId(4), "NexthopGroup4"},
       {Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(2), "DynamicTunnel2"},
       {Wire::PseudowireIntfId::portPseudowireIntfId(5), "Pseudowire5"},
       {Wire::PseudowireIntfId::vlanPseudowireIntfId(6), "VlanPseudowire6"},
   };
   Kor::HashSet<IntfId> seen;
   for (const auto& [intf, text] : cases) {
      EXPECT_EQ(intf.stringValue(), text);
      EXPECT_EQ(Kor::toText(intf), text);
      EXPECT_EQ(IntfId::parse(text), intf) << text;
      EXPECT_EQ(IntfId::parse(intf.stringValue()).stringValue(), text);
      EXPECT_EQ(IntfId(intf.value()), intf);
      EXPECT_FALSE(intf.empty());
      seen.insert(intf);
   }
   EXPECT_EQ(seen.size(), cases.size());
}

TEST(IntfId, BoundsOfKindsAndRawIds) {
   EXPECT_THROW(IntfId::ethernet(0), Kor::RangeError);
   EXPECT_THROW(IntfId::ethernet(16777216), Kor::RangeError);
   EXPECT_THROW(IntfId::portChannel(0), Kor::RangeError);
   EXPECT_THROW(IntfId::vlan(0), Kor::RangeError);
   EXPECT_THROW(IntfId::vlan(4095), Kor::RangeError);
   EXPECT_THROW(IntfId(IntfKind::none, 1), Kor::RangeError);
   EXPECT_THROW(IntfId(0x01000000u), Kor::RangeError);  // Ethernet0
   EXPECT_THROW(IntfId(0x09000001u), Kor::RangeError);  // no such kind
   EXPECT_THROW(IntfId(0xFF000001u), Kor::RangeError);
   EXPECT_EQ(IntfId(0x03000000u | 100).stringValue(), "Vlan100");
}

TEST(IntfId, ParseRejectsUnknownNamesAndOtherSpellings) {
   for (const char* bad : {"Ethernet", "Ethernet0", "Ethernet01", "ethernet1", "Eth1", "Vlan4095",
                           "Vlan0", "Port-Channel", "Ethernet1 ", " Ethernet1", "Ethernet-1",
                           "Pseudowire", "Tunnel1", "Ethernet16777216"}) {
      EXPECT_THROW(IntfId::parse(bad), Kor::ParseError) << bad;
   }
}

TEST(IntfId, ClassifiersTellKindsApart) {
   IntfId nhg = Wire::FecIdIntfId::nexthopGroupIdIntfId(7);
   IntfId tun = Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(7);
   IntfId portPw = Wire::PseudowireIntfId::portPseudowireIntfId(7);
   IntfId vlanPw = Wire::PseudowireIntfId::vlanPseudowireIntfId(7);
   IntfId eth = IntfId::ethernet(7);
   EXPECT_TRUE(Wire::FecIdIntfId::isNexthopGroupIdIntfId(nhg));
   EXPECT_TRUE(Wire::DynamicTunnelIntfId::isDynamicTunnelIntfId(tun));
   EXPECT_TRUE(Wire::PseudowireIntfId::isPortPseudowireIntfId(portPw));
   EXPECT_TRUE(Wire::PseudowireIntfId::isVlanPseudowireIntfId(vlanPw));
   EXPECT_TRUE(Wire::PseudowireIntfId::isPseudowireIntfId(portPw));
   EXPECT_TRUE(Wire::PseudowireIntfId::isPseudowireIntfId(vlanPw));
   for (IntfId other : {eth, IntfId(), IntfId::vlan(7), IntfId::portChannel(7), tun, portPw}) {
      EXPECT_FALSE(Wire::FecIdIntfId::isNexthopGroupIdIntfId(other)) << other;
   }
   for (IntfId other : {eth, IntfId(), nhg, vlanPw}) {
      EXPECT_FALSE(Wire::DynamicTunnelIntfId::isDynamicTunnelIntfId(other)) << other;
   }
   for (IntfId other : {eth, IntfId(), nhg, tun, vlanPw}) {
      EXPECT_FALSE(Wire::PseudowireIntfId::isPortPseudowireIntfId(other)) << other;
   }
   EXPECT_FALSE(Wire::PseudowireIntfId::isPseudowireIntfId(eth));
   EXPECT_EQ(nhg.number(), 7u);
   EXPECT_NE(nhg, tun);
}

TEST(IntfId, OrderIsByKindThenNumber) {
   EXPECT_LT(IntfId(), IntfId::ethernet(1));
   EXPECT_LT(IntfId::ethernet(2), IntfId::ethernet(10));
   EXPECT_LT(IntfId::ethernet(16777215), IntfId::portChannel(1));
   EXPECT_LT(IntfId::vlan(4094), IntfId::loopback(0));
   Kor::OrderedSet<IntfId> s{IntfId::vlan(3), IntfId::ethernet(9), IntfId(), IntfId::ethernet(1)};
   ASSERT_EQ(s.size(), 4u);
   std::vector<std::string> names;
   for (IntfId i : s) {
      names.push_back(i.stringValue());
   }
   EXPECT_EQ(names, (std::vector<std::string>{"", "Ethernet1", "Ethernet9", "Vlan3"}));
}

}  // namespace
