#include <gtest/gtest.h>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/l3/IpPrefix.h>
#include <mplsfwd/l3/ResolvedNexthop.h>

namespace {

Wire::IpGenAddr ip(const char* text) {
   return Wire::IpGenAddr::parse(text);
}

TEST(IpPrefixTest, HostBitsAreMaskedSoEqualPrefixesAreOneKey) {
   L3::IpPrefix a(ip("10.1.2.3"), 8);
   L3::IpPrefix b(ip("10.0.0.0"), 8);
   EXPECT_EQ(a, b);
   EXPECT_EQ(a.hash(), b.hash());
   EXPECT_EQ(a.stringValue(), "10.0.0.0/8");
   EXPECT_NE(a, L3::IpPrefix(ip("10.0.0.0"), 9));
   // A length that is not a byte boundary keeps exactly its bits.
   EXPECT_EQ(L3::IpPrefix(ip("192.168.255.255"), 17).stringValue(), "192.168.128.0/17");
   EXPECT_EQ(L3::IpPrefix(ip("2001:db8:ffff::1"), 36).stringValue(), "2001:db8:f000::/36");
   EXPECT_EQ(L3::IpPrefix(ip("2001:db8::1"), 128).stringValue(), "2001:db8::1/128");
}

TEST(IpPrefixTest, ContainsAndLastAddressFollowTheLength) {
   L3::IpPrefix p = L3::IpPrefix::parse("10.1.0.0/20");
   EXPECT_TRUE(p.contains(ip("10.1.0.0")));
   EXPECT_TRUE(p.contains(ip("10.1.15.255")));
   EXPECT_FALSE(p.contains(ip("10.1.16.0")));
   EXPECT_FALSE(p.contains(ip("::a01:1")));  // same bytes, other family
   EXPECT_EQ(p.lastAddress(), ip("10.1.15.255"));

   L3::IpPrefix dflt(ip("0.0.0.0"), 0);
   EXPECT_TRUE(dflt.isDefaultRoute());
   EXPECT_TRUE(dflt.contains(ip("255.255.255.255")));
   EXPECT_EQ(dflt.lastAddress(), ip("255.255.255.255"));
   EXPECT_FALSE(dflt.isHost());

   L3::IpPrefix v6dflt = L3::IpPrefix::parse("::/0");
   EXPECT_TRUE(v6dflt.isDefaultRoute());
   EXPECT_EQ(v6dflt.lastAddress(), ip("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"));
   EXPECT_TRUE(L3::IpPrefix(ip("2001:db8::1"), 128).isHost());
   EXPECT_FALSE(L3::IpPrefix(ip("10.0.0.0"), 31).isHost());

   L3::IpPrefix none;
   EXPECT_TRUE(none.empty());
   EXPECT_FALSE(none.isDefaultRoute());
   EXPECT_FALSE(none.contains(ip("10.0.0.1")));
   EXPECT_EQ(none.stringValue(), "");
}

TEST(IpPrefixTest, BadPrefixesAreRefused) {
   EXPECT_THROW(L3::IpPrefix(ip("10.0.0.0"), 33), Kor::RangeError);
   EXPECT_THROW(L3::IpPrefix(ip("2001:db8::"), 129), Kor::RangeError);
   EXPECT_THROW(L3::IpPrefix(Wire::IpGenAddr(), 0), Kor::RangeError);
   EXPECT_THROW(L3::IpPrefix::parse("10.0.0.0"), Kor::ParseError);
   EXPECT_THROW(L3::IpPrefix::parse("10.0.0.0/x"), Kor::ParseError);
   EXPECT_THROW(L3::IpPrefix::parse("/8"), Kor::ParseError);
   EXPECT_THROW(L3::IpPrefix::parse("10.0.0.0/33"), Kor::RangeError);
   EXPECT_EQ(L3::IpPrefix::parse(""), L3::IpPrefix());
   EXPECT_EQ(L3::IpPrefix::parse("2001:db8::/32").stringValue(), "2001:db8::/32");
}

TEST(ResolvedNexthopTest, DefaultIsUnresolvedAndDefaultRouteIsFlagged) {
   Fal::ResolvedNexthop none;
   EXPECT_FALSE(none.resolved());
   EXPECT_FALSE(none.hasNexthop());
   EXPECT_FALSE(none.viaDefaultRoute());

   Fal::ResolvedNexthop viaDefault(L3::IpPrefix::parse("0.0.0.0/0"), ip("10.0.0.254"),
                                   Wire::IntfId::ethernet(1), Fal::NexthopType::gateway);
   EXPECT_TRUE(viaDefault.viaDefaultRoute());
   EXPECT_TRUE(viaDefault.hasNexthop());

   EXPECT_EQ(viaDefault.stringValue(),
             "Value('Fal::ResolvedNexthop', ** {'prefix': 0.0.0.0/0, 'nexthop': 10.0.0.254, "
             "'l3Intf': Ethernet1, 'nexthopType': gateway})");
}

}  // namespace
