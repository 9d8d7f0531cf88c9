#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/VlanId.h>

namespace {

using Wire::IpAddr;
using Wire::IpGenAddr;

TEST(IpGenAddr, FamiliesAndEmptiness) {
   IpGenAddr none;
   EXPECT_EQ(none.af(), Wire::AddressFamily::ipunknown);
   EXPECT_TRUE(none.empty());
   EXPECT_EQ(none.stringValue(), "");
   EXPECT_EQ(IpGenAddr::parse(""), none);
   IpGenAddr v4 = IpGenAddr::parse("10.1.2.3");
   EXPECT_EQ(v4.af(), Wire::ipv4());
   EXPECT_EQ(v4.v4Addr(), IpAddr(0x0A010203));
   EXPECT_EQ(IpGenAddr(IpAddr(0x0A010203)), v4);
   IpGenAddr v6 = IpGenAddr::parse("2001:db8::1");
   EXPECT_EQ(v6.af(), Wire::ipv6());
   EXPECT_EQ(v6.v4Addr(), IpAddr());
   // The zero address of a family is an address, not the empty one.
   EXPECT_NE(IpGenAddr::parse("0.0.0.0"), none);
   EXPECT_NE(IpGenAddr::parse("::"), none);
   EXPECT_NE(IpGenAddr::parse("::"), IpGenAddr::parse("0.0.0.0"));
   EXPECT_TRUE(IpGenAddr::parse("::").isZero());
   EXPECT_EQ(Kor::toText(Wire::ipv6()), "ipv6");
}

TEST(IpGenAddr, Ipv6CanonicalText) {
   const std::vector<std::pair<std::string, std::string>> cases = {
       {"2001:0DB8:0000:0000:0000:0000:0000:0001", "2001:db8::1"},
       {"::", "::"},
       {"::1", "::1"},
       {"1::", "1::"},
       {"1:0:0:2:0:0:0:3", "1:0:0:2::3"},       // the longer run is shortened
       {"1:0:0:2:0:0:3:4", "1::2:0:0:3:4"},     // equal runs: the first
       {"1:0:2:3:4:5:6:7", "1:0:2:3:4:5:6:7"},  // a single zero group stays
       {"fe80::a:b:c:d", "fe80::a:b:c:d"},
       {"::ffff:10.0.0.1", "::ffff:a00:1"},
       {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
   };
   for (const auto& [in, canonical] : cases) {
      IpGenAddr a = IpGenAddr::parse(in);
      EXPECT_EQ(a.stringValue(), canonical) << in;
      EXPECT_EQ(IpGenAddr::parse(a.stringValue()), a) << in;
      EXPECT_EQ(IpGenAddr::parse(a.stringValue()).stringValue(), canonical);
   }
}

TEST(IpGenAddr, RejectsMalformedText) {
   for (const char* bad : {"10.0.0", "10.0.0.256", "10.0.0.1.2", "010.0.0.1", "10..0.1", "a.b.c.d",
                           "10.0.0.1 ", ":::", "1::2::3", "1:2:3:4:5:6:7:8:9", "1:2:3:4:5:6:7",
                           "12345::", "g::1", "1:2:3:4:5:6:7::8", "::1.2.3", "1.2.3.4::"}) {
      EXPECT_THROW(IpGenAddr::parse(bad), Kor::ParseError) << bad;
   }
   EXPECT_THROW(IpAddr::parse("2001::1"), Kor::ParseError);
}

TEST(IpGenAddr, OrderAndHash) {
   IpGenAddr none;
   IpGenAddr a = IpGenAddr::parse("10.0.0.1");
   IpGenAddr b = IpGenAddr::parse("10.0.0.2");
   IpGenAddr big4 = IpGenAddr::parse("255.255.255.255");
   IpGenAddr small6 = IpGenAddr::parse("::");
   EXPECT_LT(none, a);
   EXPECT_LT(a, b);
   EXPECT_LT(big4, small6);
   EXPECT_FALSE(b < a);
   EXPECT_EQ(a.hash(), IpGenAddr::parse("10.0.0.1").hash());
   Kor::HashSet<IpGenAddr> s{
       none, a, b, big4, small6, IpGenAddr::parse("10.0.0.1"), IpGenAddr::parse("::0")};
   EXPECT_EQ(s.size(), 5u);
}

TEST(IpAddr, DottedQuad) {
   EXPECT_EQ(IpAddr().stringValue(), "0.0.0.0");
   EXPECT_EQ(IpAddr(0xC0A80001).stringValue(), "192.168.0.1");
   EXPECT_EQ(IpAddr::parse("192.168.0.1"), IpAddr(0xC0A80001));
   EXPECT_LT(IpAddr::parse("9.255.255.255"), IpAddr::parse("10.0.0.0"));
}

TEST(EthAddr, TextRoundTripAndOrder) {
   Wire::EthAddr mac = Wire::EthAddr::parse("00:11:22:33:44:55");
   EXPECT_EQ(mac.stringValue(), "00:11:22:33:44:55");
   EXPECT_EQ(Kor::toText(mac), "00:11:22:33:44:55");
   EXPECT_EQ(Wire::EthAddr::parse("AA:bb:CC:dd:EE:ff").stringValue(), "aa:bb:cc:dd:ee:ff");
   EXPECT_EQ(mac.value(), 0x001122334455u);
   EXPECT_TRUE(Wire::EthAddr().isZero());
   EXPECT_FALSE(mac.isZero());
   EXPECT_EQ(Wire::EthAddr().stringValue(), "00:00:00:00:00:00");
   EXPECT_LT(Wire::EthAddr(), mac);
   EXPECT_LT(mac, Wire::EthAddr::parse("00:11:22:33:44:56"));
   EXPECT_EQ(mac.hash(), Wire::EthAddr::parse("00:11:22:33:44:55").hash());
   for (const char* bad : {"", "00:11:22:33:44", "00:11:22:33:44:55:66", "00-11-22-33-44-55",
                           "0:11:22:33:44:55", "00:11:22:33:44:5g", "0011.2233.4455"}) {
      EXPECT_THROW(Wire::EthAddr::parse(bad), Kor::ParseError) << bad;
   }
}

TEST(VlanId, BoundsValidityAndNone) {
   EXPECT_EQ(Bridging::VlanId().value(), 0);
   EXPECT_FALSE(Bridging::VlanId().isValid());
   EXPECT_TRUE(Bridging::VlanId(1).isValid());
   EXPECT_TRUE(Bridging::VlanId(4094).isValid());
   EXPECT_FALSE(Bridging::VlanId(4095).isValid());
   try {
      Bridging::VlanId(4096);
      ADD_FAILURE() << "4096 accepted";
   } catch (const Kor::RangeError& e) {
      EXPECT_STREQ(e.what(), "VlanId::value < VlanId::min or > VlanId::max not allowed");
   }
   EXPECT_EQ(Bridging::VlanId::parse("100"), Bridging::VlanId(100));
   EXPECT_THROW(Bridging::VlanId::parse("4096"), Kor::ParseError);
   EXPECT_LT(Bridging::VlanId(5), Bridging::VlanId(6));

   Bridging::VlanIdOrNone none;
   EXPECT_TRUE(none.isNone());
   EXPECT_EQ(none, Bridging::VlanIdOrNone::none());
   EXPECT_EQ(none.stringValue(), "none");
   Bridging::VlanIdOrNone ten = Bridging::VlanId(10);
   EXPECT_FALSE(ten.isNone());
   EXPECT_EQ(ten.vlanId(), Bridging::VlanId(10));
   EXPECT_EQ(Kor::toText(ten), "10");
   EXPECT_EQ(Bridging::VlanIdOrNone::parse("none"), none);
   EXPECT_EQ(Bridging::VlanIdOrNone::parse("10"), ten);
   EXPECT_THROW(Bridging::VlanIdOrNone::parse("0"), Kor::ParseError);
   EXPECT_NE(none.hash(), ten.hash());
}

}  // namespace
