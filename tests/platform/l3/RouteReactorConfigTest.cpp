#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/l3/Route6ReactorConfig.h>
#include <mplsfwd/l3/RouteReactorConfig.h>

namespace {

struct V4Recorder : Fal::RouteReactorConfig::NotifieeConst {
   using Fal::RouteReactorConfig::NotifieeConst::NotifieeConst;
   void onWatchedAddr(const Fal::VrfAndIpAddr& k) override {
      const auto& c = *notifier();
      std::string state = !c.watchedAddrHas(k)            ? "-"
                          : c.watchedAddrHostRouteOnly(k) ? "+host"
                                                          : "+any";
      events.push_back(state + " " + k.ipAddr().stringValue());
   }
   std::vector<std::string> events;
};

struct V6Recorder : Fal::Route6ReactorConfig::NotifieeConst {
   using Fal::Route6ReactorConfig::NotifieeConst::NotifieeConst;
   void onWatchedIp6Addr(const Fal::VrfAndIpGenAddr& k) override {
      // Appended rather than concatenated: GCC 12 at -O3 takes the one-character temporary
      // plus a string for an overlapping copy (-Wrestrict, a false positive).
      std::string event = notifier()->watchedIp6AddrHas(k) ? "+" : "-";
      event += k.ipGenAddr().stringValue();
      events.push_back(std::move(event));
   }
   std::vector<std::string> events;
};

using Events = std::vector<std::string>;

Fal::VrfAndIpAddr v4(const char* text, std::uint32_t vrf = 0) {
   return Fal::VrfAndIpAddr(Fal::VrfId(vrf), Wire::IpAddr::parse(text));
}

TEST(RouteReactorConfigTest, WatchedAddressIsCountedPerUser) {
   auto cfg = Kor::make<Fal::RouteReactorConfig>("rr");
   V4Recorder r(cfg);
   cfg->addWatchedAddr(v4("10.0.0.1"), false);
   cfg->addWatchedAddr(v4("10.0.0.1"), false);
   cfg->addWatchedAddr(v4("10.0.0.1", 1), false);  // another VRF is another entry
   EXPECT_EQ(cfg->watchedAddrRefs(v4("10.0.0.1")), 2u);
   EXPECT_EQ(cfg->watchedAddrs(), 2u);
   cfg->removeWatchedAddr(v4("10.0.0.1"));
   EXPECT_TRUE(cfg->watchedAddrHas(v4("10.0.0.1")));
   cfg->removeWatchedAddr(v4("10.0.0.1"));
   cfg->removeWatchedAddr(v4("10.0.0.1"));  // absent: harmless and silent
   EXPECT_FALSE(cfg->watchedAddrHas(v4("10.0.0.1")));
   EXPECT_EQ(r.events, (Events{"+any 10.0.0.1", "+any 10.0.0.1", "- 10.0.0.1"}));
}

TEST(RouteReactorConfigTest, HostRouteOnlyWidensOnceAndStaysWideUntilTheLastUserGoes) {
   auto cfg = Kor::make<Fal::RouteReactorConfig>("rr");
   V4Recorder r(cfg);
   auto k = v4("10.0.0.1");
   cfg->addWatchedAddr(k, true);
   cfg->addWatchedAddr(k, true);   // same flag: silent
   cfg->addWatchedAddr(k, false);  // widens: one notification
   cfg->addWatchedAddr(k, true);   // cannot narrow again: silent
   cfg->removeWatchedAddr(k);
   cfg->removeWatchedAddr(k);
   cfg->removeWatchedAddr(k);
   EXPECT_FALSE(cfg->watchedAddrHostRouteOnly(k));
   EXPECT_EQ(r.events, (Events{"+host 10.0.0.1", "+any 10.0.0.1"}));
   cfg->removeWatchedAddr(k);
   EXPECT_EQ(r.events.back(), "- 10.0.0.1");
   cfg->addWatchedAddr(k, true);  // a fresh entry takes its first user's flag again
   EXPECT_TRUE(cfg->watchedAddrHostRouteOnly(k));
}

TEST(Route6ReactorConfigTest, CountsUsersAndTakesIpv6Only) {
   auto cfg = Kor::make<Fal::Route6ReactorConfig>("rr6");
   V6Recorder r(cfg);
   Fal::VrfAndIpGenAddr k(Fal::VrfId(0), Wire::IpGenAddr::parse("2001:db8::1"));
   cfg->addWatchedIp6Addr(k, false);
   cfg->addWatchedIp6Addr(k, false);
   cfg->removeWatchedIp6Addr(k);
   EXPECT_EQ(r.events, (Events{"+2001:db8::1"}));
   cfg->removeWatchedIp6Addr(k);
   EXPECT_EQ(r.events, (Events{"+2001:db8::1", "-2001:db8::1"}));

   Fal::VrfAndIpGenAddr v4key(Fal::VrfId(0), Wire::IpGenAddr::parse("10.0.0.1"));
   EXPECT_THROW(cfg->addWatchedIp6Addr(v4key, false), Kor::RangeError);
   EXPECT_THROW(cfg->addWatchedIp6Addr(Fal::VrfAndIpGenAddr(), false), Kor::RangeError);
   EXPECT_EQ(cfg->watchedIp6Addrs(), 0u);
   EXPECT_EQ(r.events.size(), 2u);
}

}  // namespace
