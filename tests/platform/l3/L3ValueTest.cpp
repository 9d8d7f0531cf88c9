#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/l3/IpPrefix.h>
#include <mplsfwd/l3/IpRoute.h>
#include <mplsfwd/l3/IpRouteKey.h>
#include <mplsfwd/l3/NextHopInfo.h>
#include <mplsfwd/l3/NextHopKey.h>
#include <mplsfwd/l3/ResolvedNexthop.h>
#include <mplsfwd/l3/VrfAndIpAddr.h>
#include <mplsfwd/l3/VrfAndIpGenAddr.h>

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

TEST(NextHopKeyTest, EqualityOrderingHashAndText) {
   Fal::NextHopKey a(ip("10.0.0.1"), Wire::IntfId::ethernet(1));
   Fal::NextHopKey sameAddrOtherIntf(ip("10.0.0.1"), Wire::IntfId::ethernet(2));
   Fal::NextHopKey higherAddr(ip("10.0.0.2"), Wire::IntfId::ethernet(1));
   EXPECT_EQ(a, Fal::NextHopKey(ip("10.0.0.1"), Wire::IntfId::ethernet(1)));
   EXPECT_NE(a, sameAddrOtherIntf);
   EXPECT_TRUE(a < sameAddrOtherIntf);
   EXPECT_TRUE(sameAddrOtherIntf < higherAddr);  // address decides first
   EXPECT_FALSE(a < a);
   EXPECT_EQ(a.hash(), Fal::NextHopKey(ip("10.0.0.1"), Wire::IntfId::ethernet(1)).hash());
   Kor::HashSet<Fal::NextHopKey> set{a, sameAddrOtherIntf, higherAddr, a};
   EXPECT_EQ(set.size(), 3u);
   EXPECT_EQ(a.stringValue(),
             "Value('Fal::NextHopKey', ** {'nextHop': 10.0.0.1, 'l3Intf': Ethernet1})");
   EXPECT_EQ(Kor::toText(a), a.stringValue());
}

TEST(VrfAndAddrTest, KeysCompareByVrfThenAddress) {
   Fal::VrfAndIpAddr a(Fal::VrfId(1), Wire::IpAddr::parse("10.0.0.1"));
   Fal::VrfAndIpAddr otherVrf(Fal::VrfId(2), Wire::IpAddr::parse("10.0.0.1"));
   EXPECT_NE(a, otherVrf);
   EXPECT_TRUE(a < otherVrf);
   EXPECT_TRUE(Fal::VrfAndIpAddr(Fal::VrfId(1), Wire::IpAddr::parse("99.0.0.1")) < otherVrf);
   Kor::HashSet<Fal::VrfAndIpAddr> set{a, otherVrf, a};
   EXPECT_EQ(set.size(), 2u);
   EXPECT_EQ(a.stringValue(), "Value('Fal::VrfAndIpAddr', ** {'vrfId': 1, 'ipAddr': 10.0.0.1})");

   Fal::VrfAndIpGenAddr g(a);
   EXPECT_EQ(g.vrfId(), Fal::VrfId(1));
   EXPECT_EQ(g.ipGenAddr(), ip("10.0.0.1"));
   Fal::VrfAndIpGenAddr v6(Fal::VrfId(1), ip("2001:db8::1"));
   EXPECT_NE(g, v6);
   EXPECT_TRUE(g < v6);  // IPv4 orders before IPv6 within a VRF
   EXPECT_EQ(v6.stringValue(),
             "Value('Fal::VrfAndIpGenAddr', ** {'vrfId': 1, 'ipGenAddr': 2001:db8::1})");
   Kor::HashSet<Fal::VrfAndIpGenAddr> gset{g, v6,
                                           Fal::VrfAndIpGenAddr(Fal::VrfId(1), ip("10.0.0.1"))};
   EXPECT_EQ(gset.size(), 2u);
}

TEST(NextHopInfoTest, DefaultIsUnresolvedInTheInvalidVrf) {
   Fal::NextHopInfo info;
   EXPECT_EQ(Fal::invalidVrfId(), Fal::VrfId(0xffffff));
   EXPECT_EQ(info.vrfId(), Fal::invalidVrfId());
   EXPECT_FALSE(info.resolved());
   EXPECT_EQ(info.stringValue(),
             "Value('Fal::NextHopInfo', ** {'vrfId': 16777215, 'macAddr': 00:00:00:00:00:00, "
             "'vlanId': 0, 'l2Intf': })");

   Fal::NextHopInfo resolved(Fal::VrfId(3), Wire::EthAddr::parse("00:11:22:33:44:55"),
                             Bridging::VlanId(10), Wire::IntfId::ethernet(4));
   EXPECT_TRUE(resolved.resolved());
   EXPECT_NE(resolved, info);
   Fal::NextHopInfo otherVlan = resolved;
   otherVlan.vlanIdIs(Bridging::VlanId(11));
   EXPECT_NE(otherVlan, resolved);  // every field takes part in equality
   Fal::NextHopInfo otherVrf = resolved;
   otherVrf.vrfIdIs(Fal::VrfId(4));
   EXPECT_NE(otherVrf, resolved);
}

TEST(ResolvedNexthopTest, DefaultIsUnresolvedAndDefaultRouteIsFlagged) {
   Fal::ResolvedNexthop none;
   EXPECT_FALSE(none.resolved());
   EXPECT_FALSE(none.hasNexthop());
   EXPECT_FALSE(none.viaDefaultRoute());
   EXPECT_EQ(none.nexthopType(), Fal::NexthopType::unresolved);

   Fal::ResolvedNexthop viaDefault(L3::IpPrefix::parse("0.0.0.0/0"), ip("10.0.0.254"),
                                   Wire::IntfId::ethernet(1), Fal::NexthopType::gateway);
   EXPECT_TRUE(viaDefault.viaDefaultRoute());
   EXPECT_TRUE(viaDefault.hasNexthop());
   Fal::ResolvedNexthop v6Default(L3::IpPrefix::parse("::/0"), ip("2001:db8::fe"),
                                  Wire::IntfId::ethernet(1), Fal::NexthopType::gateway);
   EXPECT_TRUE(v6Default.viaDefaultRoute());
   Fal::ResolvedNexthop specific(L3::IpPrefix::parse("10.0.0.0/24"), ip("10.0.0.1"),
                                 Wire::IntfId::ethernet(1), Fal::NexthopType::connected);
   EXPECT_FALSE(specific.viaDefaultRoute());
   Fal::ResolvedNexthop dropped(L3::IpPrefix::parse("10.0.0.0/24"), Wire::IpGenAddr(),
                                Wire::IntfId(), Fal::NexthopType::drop);
   EXPECT_TRUE(dropped.resolved());
   EXPECT_FALSE(dropped.hasNexthop());

   EXPECT_EQ(viaDefault.stringValue(),
             "Value('Fal::ResolvedNexthop', ** {'prefix': 0.0.0.0/0, 'nexthop': 10.0.0.254, "
             "'l3Intf': Ethernet1, 'nexthopType': gateway})");
   EXPECT_EQ(Fal::stringValue(Fal::NexthopType::connected), "connected");
   EXPECT_EQ(Fal::nexthopTypeRegistry().instance("receive"), Fal::NexthopType::receive);
   EXPECT_THROW(Fal::nexthopTypeRegistry().instance(9), Kor::EnumError);
}

TEST(IpRouteTest, KeyAndValueTextAndIdentity) {
   Routing::Hardware::IpRouteKey k(Fal::VrfId(0), L3::IpPrefix::parse("10.0.0.0/8"));
   EXPECT_EQ(k.stringValue(),
             "Value('Routing::Hardware::IpRouteKey', ** {'vrfId': 0, 'prefix': 10.0.0.0/8})");
   EXPECT_NE(k, Routing::Hardware::IpRouteKey(Fal::VrfId(1), k.prefix()));
   EXPECT_TRUE(k < Routing::Hardware::IpRouteKey(Fal::VrfId(1), L3::IpPrefix::parse("1.0.0.0/8")));
   auto gw = Routing::Hardware::IpRoute::gateway(ip("10.0.0.1"), Wire::IntfId::ethernet(2));
   EXPECT_EQ(gw.stringValue(),
             "Value('Routing::Hardware::IpRoute', ** {'routeType': gateway, 'nextHop': 10.0.0.1, "
             "'l3Intf': Ethernet2})");
   EXPECT_NE(gw, Routing::Hardware::IpRoute::connected(Wire::IntfId::ethernet(2)));
   EXPECT_EQ(Routing::Hardware::IpRoute().routeType(), Routing::Hardware::RouteType::unknown);
}

}  // namespace
