#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/l3/RouteResolver.h>

namespace {

using Fal::NexthopType;
using Fal::ResolvedNexthop;
using Routing::Hardware::IpRoute;
using Routing::Hardware::IpRouteKey;

Wire::IpGenAddr ip(const char* text) {
   return Wire::IpGenAddr::parse(text);
}
L3::IpPrefix pfx(const char* text) {
   return L3::IpPrefix::parse(text);
}
Fal::VrfAndIpAddr v4(const char* text, std::uint32_t vrf = 0) {
   return Fal::VrfAndIpAddr(Fal::VrfId(vrf), Wire::IpAddr::parse(text));
}
Fal::VrfAndIpGenAddr v6(const char* text, std::uint32_t vrf = 0) {
   return Fal::VrfAndIpGenAddr(Fal::VrfId(vrf), ip(text));
}

// Counts the resolution notifications of the L3 status, per key text.
struct ResolvedRecorder : Fal::L3Status::NotifieeConst {
   using Fal::L3Status::NotifieeConst::NotifieeConst;
   void onResolvedV4(const Fal::VrfAndIpAddr& k) override {
      events.push_back(k.vrfId().stringValue() + ":" + k.ipAddr().stringValue());
      if (hookV4) {
         hookV4(k);
      }
   }
   void onResolvedV6(const Fal::VrfAndIpGenAddr& k) override {
      events.push_back(k.vrfId().stringValue() + ":" + k.ipGenAddr().stringValue());
   }
   std::vector<std::string> events;
   std::function<void(const Fal::VrfAndIpAddr&)> hookV4;
};

using Events = std::vector<std::string>;

class RouteResolverTest : public ::testing::Test {
 protected:
   void SetUp() override { startResolver(); }
   void startResolver() { resolver = std::make_unique<Fal::RouteResolver>(routes, cfg4, cfg6, l3); }
   void route(const char* prefix, const IpRoute& r, std::uint32_t vrf = 0) {
      routes->routeIs(IpRouteKey(Fal::VrfId(vrf), pfx(prefix)), r);
   }
   void routeDel(const char* prefix, std::uint32_t vrf = 0) {
      routes->routeDel(IpRouteKey(Fal::VrfId(vrf), pfx(prefix)));
   }
   static IpRoute gw(const char* nextHop, std::uint32_t eth = 1) {
      return IpRoute::gateway(ip(nextHop), Wire::IntfId::ethernet(eth));
   }
   static IpRoute conn(std::uint32_t eth) {
      return IpRoute::connected(Wire::IntfId::ethernet(eth));
   }
   static ResolvedNexthop viaGw(const char* prefix, const char* nextHop, std::uint32_t eth = 1) {
      return ResolvedNexthop(pfx(prefix), ip(nextHop), Wire::IntfId::ethernet(eth),
                             NexthopType::gateway);
   }
   // The resolved entries must be exactly the watched addresses, each with the resolver's answer.
   void expectStatusMatchesWatches() {
      EXPECT_EQ(l3->resolvedV4s(), cfg4->watchedAddrs());
      for (const auto& [k, watch] : cfg4->watchedAddrMap()) {
         EXPECT_EQ(l3->resolvedV4(k),
                   resolver->resolve(k.vrfId(), Wire::IpGenAddr(k.ipAddr()), watch.hostRouteOnly))
             << k;
      }
      EXPECT_EQ(l3->resolvedV6s(), cfg6->watchedIp6Addrs());
      for (const auto& [k, watch] : cfg6->watchedIp6AddrMap()) {
         EXPECT_EQ(l3->resolvedV6(k),
                   resolver->resolve(k.vrfId(), k.ipGenAddr(), watch.hostRouteOnly))
             << k;
      }
   }

   Kor::Ptr<Routing::Hardware::RouteStatus> routes =
       Kor::make<Routing::Hardware::RouteStatus>("routes");
   Kor::Ptr<Fal::RouteReactorConfig> cfg4 = Kor::make<Fal::RouteReactorConfig>("rr");
   Kor::Ptr<Fal::Route6ReactorConfig> cfg6 = Kor::make<Fal::Route6ReactorConfig>("rr6");
   Kor::Ptr<Fal::L3Status> l3 = Kor::make<Fal::L3Status>("l3");
   std::unique_ptr<Fal::RouteResolver> resolver;
};

TEST_F(RouteResolverTest, Ipv6LongestPrefixTakeoverFallbackAndDefault) {
   route("::/0", gw("2001:db8::fe"));
   route("2001:db8::/32", gw("fe80::1", 4));
   cfg6->addWatchedIp6Addr(v6("2001:db8:1:2::5"), false);
   cfg6->addWatchedIp6Addr(v6("2001:dead::1"), false);
   EXPECT_EQ(l3->resolvedV6(v6("2001:db8:1:2::5")), viaGw("2001:db8::/32", "fe80::1", 4));
   EXPECT_TRUE(l3->resolvedV6(v6("2001:dead::1")).viaDefaultRoute());

   ResolvedRecorder r(l3);
   route("2001:db8:1:2::/64", conn(5));
   EXPECT_EQ(r.events, (Events{"0:2001:db8:1:2::5"}));  // the /64 covers only one of the two
   EXPECT_EQ(l3->resolvedV6(v6("2001:db8:1:2::5")),
             ResolvedNexthop(pfx("2001:db8:1:2::/64"), ip("2001:db8:1:2::5"),
                             Wire::IntfId::ethernet(5), NexthopType::connected));
   routeDel("2001:db8:1:2::/64");
   EXPECT_EQ(l3->resolvedV6(v6("2001:db8:1:2::5")), viaGw("2001:db8::/32", "fe80::1", 4));
   EXPECT_EQ(r.events.size(), 2u);
   // Routes of one family never resolve addresses of the other.
   EXPECT_EQ(l3->resolvedV4s(), 0u);
   cfg4->addWatchedAddr(v4("10.0.0.1"), false);
   EXPECT_FALSE(l3->resolvedV4(v4("10.0.0.1")).resolved());
   expectStatusMatchesWatches();
}

TEST_F(RouteResolverTest, UnwatchingRemovesTheResolvedEntry) {
   route("10.0.0.0/8", gw("192.168.0.1"));
   cfg4->addWatchedAddr(v4("10.1.2.3"), false);
   cfg4->addWatchedAddr(v4("10.1.2.3"), false);
   cfg6->addWatchedIp6Addr(v6("2001:db8::1"), false);
   ResolvedRecorder r(l3);
   cfg4->removeWatchedAddr(v4("10.1.2.3"));
   EXPECT_TRUE(l3->resolvedV4Has(v4("10.1.2.3")));  // one user still watches
   EXPECT_TRUE(r.events.empty());
   cfg4->removeWatchedAddr(v4("10.1.2.3"));
   EXPECT_FALSE(l3->resolvedV4Has(v4("10.1.2.3")));
   EXPECT_EQ(r.events, (Events{"0:10.1.2.3"}));
   cfg6->removeWatchedIp6Addr(v6("2001:db8::1"));
   EXPECT_FALSE(l3->resolvedV6Has(v6("2001:db8::1")));
   EXPECT_EQ(r.events.size(), 2u);

   // A route change afterwards does not bring the entry back.
   route("10.1.0.0/16", gw("192.168.0.2"));
   EXPECT_EQ(l3->resolvedV4s(), 0u);
   EXPECT_EQ(r.events.size(), 2u);
}

TEST_F(RouteResolverTest, NothingIsWrittenWhenNothingChanged) {
   route("10.1.2.0/24", gw("192.168.0.1"));
   cfg4->addWatchedAddr(v4("10.1.2.3"), false);
   ResolvedRecorder r(l3);
   route("10.0.0.0/8", gw("192.168.0.7"));       // less specific: the /24 still wins
   route("10.1.2.0/24", gw("192.168.0.1"));      // rewritten with the same value
   route("10.1.2.0/24", gw("192.168.0.1"), 1);   // same prefix, other VRF
   route("20.0.0.0/8", gw("192.168.0.1"));       // covers no watched address
   cfg4->addWatchedAddr(v4("10.1.2.3"), false);  // a second user of the same address
   EXPECT_TRUE(r.events.empty());

   route("10.1.2.0/24", gw("192.168.0.5"));  // the winning route's next hop moves
   EXPECT_EQ(r.events, (Events{"0:10.1.2.3"}));
   EXPECT_EQ(l3->resolvedV4(v4("10.1.2.3")).nexthop(), ip("192.168.0.5"));
}

TEST_F(RouteResolverTest, RouteChangeReresolvesOnlyTheWatchedAddressesItCovers) {
   for (const char* a : {"10.0.0.1", "10.200.0.1", "20.0.0.1", "30.0.0.1"}) {
      cfg4->addWatchedAddr(v4(a), false);
   }
   cfg4->addWatchedAddr(v4("10.0.0.1", 1), false);
   cfg6->addWatchedIp6Addr(v6("::a00:1"), false);  // the same bytes as 10.0.0.1, other family
   std::uint64_t before = resolver->resolutions();
   route("10.0.0.0/8", gw("192.168.0.1"));
   EXPECT_EQ(resolver->resolutions() - before, 2u);  // 10.0.0.1 and 10.200.0.1 of VRF 0
   route("10.0.0.0/9", gw("192.168.0.1"));
   EXPECT_EQ(resolver->resolutions() - before, 3u);  // 10.200.0.1 is outside the /9
   route("0.0.0.0/0", gw("192.168.0.1"));
   EXPECT_EQ(resolver->resolutions() - before, 7u);  // every VRF 0 IPv4 watch
   EXPECT_FALSE(l3->resolvedV4(v4("10.0.0.1", 1)).resolved());
   EXPECT_FALSE(l3->resolvedV6(v6("::a00:1")).resolved());
   expectStatusMatchesWatches();
}

TEST_F(RouteResolverTest, HostRouteOnlyWatchUsesOnlyAHostRouteUntilWidened) {
   route("10.9.9.9/32", conn(3));  // host routes exist, none for the watched address
   route("10.1.2.0/24", conn(3));
   cfg4->addWatchedAddr(v4("10.1.2.3"), true);
   EXPECT_FALSE(l3->resolvedV4(v4("10.1.2.3")).resolved());
   route("10.1.2.3/32", gw("10.1.2.254", 3));
   EXPECT_EQ(l3->resolvedV4(v4("10.1.2.3")), viaGw("10.1.2.3/32", "10.1.2.254", 3));
   routeDel("10.1.2.3/32");
   EXPECT_FALSE(l3->resolvedV4(v4("10.1.2.3")).resolved());
   // A second user who accepts any covering prefix widens the watch: the /24 now resolves it.
   cfg4->addWatchedAddr(v4("10.1.2.3"), false);
   EXPECT_EQ(l3->resolvedV4(v4("10.1.2.3")).prefix(), pfx("10.1.2.0/24"));
   expectStatusMatchesWatches();
}

TEST_F(RouteResolverTest, DropAndReceiveRoutesResolveWithoutANextHop) {
   route("10.0.0.0/8", IpRoute::drop());
   route("10.1.2.3/32", IpRoute::receive());
   cfg4->addWatchedAddr(v4("10.9.9.9"), false);
   cfg4->addWatchedAddr(v4("10.1.2.3"), false);
   ResolvedNexthop dropped = l3->resolvedV4(v4("10.9.9.9"));
   EXPECT_EQ(dropped.nexthopType(), NexthopType::drop);
   EXPECT_TRUE(dropped.resolved());
   EXPECT_FALSE(dropped.hasNexthop());
   EXPECT_TRUE(dropped.nexthop().empty());
   EXPECT_EQ(l3->resolvedV4(v4("10.1.2.3")).nexthopType(), NexthopType::receive);
}

TEST_F(RouteResolverTest, ConstructionTakesUpExistingRoutesAndWatchesAndDropsStaleEntries) {
   resolver.reset();
   route("10.0.0.0/8", gw("192.168.0.1"));
   route("2001:db8::/32", gw("fe80::1"));
   cfg4->addWatchedAddr(v4("10.1.1.1"), false);
   cfg6->addWatchedIp6Addr(v6("2001:db8::9"), false);
   // Left by an earlier incarnation: one stale, one still watched but out of date.
   l3->resolvedV4Is(v4("99.0.0.1"), viaGw("99.0.0.0/8", "192.168.0.3"));
   l3->resolvedV4Is(v4("10.1.1.1"), viaGw("0.0.0.0/0", "192.168.0.3"));
   l3->resolvedV6Is(v6("2001:db8::77"), ResolvedNexthop());
   startResolver();
   EXPECT_FALSE(l3->resolvedV4Has(v4("99.0.0.1")));
   EXPECT_FALSE(l3->resolvedV6Has(v6("2001:db8::77")));
   EXPECT_EQ(l3->resolvedV4(v4("10.1.1.1")), viaGw("10.0.0.0/8", "192.168.0.1"));
   EXPECT_EQ(l3->resolvedV6(v6("2001:db8::9")), viaGw("2001:db8::/32", "fe80::1"));
   expectStatusMatchesWatches();

   // Once the resolver is gone, changes no longer reach the L3 status.
   resolver.reset();
   route("10.1.0.0/16", gw("192.168.0.2"));
   EXPECT_EQ(l3->resolvedV4(v4("10.1.1.1")).prefix(), pfx("10.0.0.0/8"));
}

TEST_F(RouteResolverTest, ReaderThatUnwatchesDuringANotificationIsSafe) {
   cfg4->addWatchedAddr(v4("10.0.0.1"), false);
   cfg4->addWatchedAddr(v4("10.0.0.2"), false);
   ResolvedRecorder r(l3);
   // Whoever reads the first resolution drops its interest in the other address on the spot.
   r.hookV4 = [&](const Fal::VrfAndIpAddr& k) {
      Fal::VrfAndIpAddr other = k == v4("10.0.0.1") ? v4("10.0.0.2") : v4("10.0.0.1");
      if (cfg4->watchedAddrHas(other) && cfg4->watchedAddrHas(k)) {
         cfg4->removeWatchedAddr(other);
      }
   };
   route("10.0.0.0/24", conn(1));
   EXPECT_EQ(cfg4->watchedAddrs(), 1u);
   EXPECT_EQ(l3->resolvedV4s(), 1u);
   expectStatusMatchesWatches();
}

// Brute force: the longest prefix among all routes of the VRF and family that contain the address
// (a connected route resolves to the address itself, an address covered by nothing is watched with
// the unresolved value).
ResolvedNexthop bruteForce(const Routing::Hardware::RouteStatus& rs, Fal::VrfId vrf,
                           const Wire::IpGenAddr& addr) {
   const IpRouteKey* best = nullptr;
   for (const auto& [k, r] : rs.routeMap()) {
      if (k.vrfId() == vrf && k.prefix().contains(addr) &&
          (!best || k.prefix().length() > best->prefix().length())) {
         best = &k;
      }
   }
   if (!best) {
      return ResolvedNexthop();
   }
   IpRoute r = rs.route(*best);
   return r.routeType() == Routing::Hardware::RouteType::connected
              ? ResolvedNexthop(best->prefix(), addr, r.l3Intf(), NexthopType::connected)
              : ResolvedNexthop(best->prefix(), r.nextHop(), r.l3Intf(), NexthopType::gateway);
}

TEST_F(RouteResolverTest, AgreesWithABruteForceLongestMatchThroughRandomChurn) {
   std::mt19937 rng(20240611);
   // A small address space so that prefixes overlap a lot.
   auto randomAddr = [&] { return Wire::IpAddr(0x0a000000u | (rng() & 0x0000ffffu)); };
   for (int i = 0; i < 40; ++i) {
      cfg4->addWatchedAddr(Fal::VrfAndIpAddr(Fal::VrfId(rng() % 2), randomAddr()), false);
   }
   for (int step = 0; step < 600; ++step) {
      IpRouteKey k(Fal::VrfId(rng() % 2), L3::IpPrefix(Wire::IpGenAddr(randomAddr()),
                                                       static_cast<std::uint8_t>(rng() % 33)));
      if (rng() % 3 == 0) {
         routes->routeDel(k);
      } else if (rng() % 2) {
         routes->routeIs(k, conn(1 + rng() % 4));
      } else {
         routes->routeIs(k, IpRoute::gateway(Wire::IpGenAddr(randomAddr()),
                                             Wire::IntfId::ethernet(1 + rng() % 4)));
      }
      if (step % 50 == 0) {
         auto w = Fal::VrfAndIpAddr(Fal::VrfId(rng() % 2), randomAddr());
         cfg4->addWatchedAddr(w, false);
      }
   }
   ASSERT_EQ(l3->resolvedV4s(), cfg4->watchedAddrs());
   ASSERT_GT(routes->routes(), 100u);
   int resolvedCount = 0;
   for (const auto& [k, watch] : cfg4->watchedAddrMap()) {
      ResolvedNexthop expected = bruteForce(*routes, k.vrfId(), Wire::IpGenAddr(k.ipAddr()));
      EXPECT_EQ(l3->resolvedV4(k), expected) << k;
      resolvedCount += expected.resolved();
   }
   EXPECT_GT(resolvedCount, 0);  // the churn exercised real matches, not only misses
}

}  // namespace
