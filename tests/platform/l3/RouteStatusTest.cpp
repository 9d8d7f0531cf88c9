#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/l3/RouteStatus.h>

namespace {

using Routing::Hardware::IpRoute;
using Routing::Hardware::IpRouteKey;

IpRouteKey key(const char* prefix, std::uint32_t vrf = 0) {
   return IpRouteKey(Fal::VrfId(vrf), L3::IpPrefix::parse(prefix));
}

struct RouteRecorder : Routing::Hardware::RouteStatus::NotifieeConst {
   using Routing::Hardware::RouteStatus::NotifieeConst::NotifieeConst;
   void onRoute(const IpRouteKey& k) override {
      events.push_back(Kor::concat({notifier()->routeHas(k) ? "+" : "-", k.vrfId().stringValue(),
                                    " ", k.prefix().stringValue()}));
   }
   std::vector<std::string> events;
};

using Events = std::vector<std::string>;

TEST(RouteStatusTest, RoutesNotifyOnlyOnRealChange) {
   auto rs = Kor::make<Routing::Hardware::RouteStatus>("routes");
   RouteRecorder r(rs);
   auto eth1 = Wire::IntfId::ethernet(1);
   rs->routeIs(key("10.0.0.0/24"), IpRoute::connected(eth1));
   rs->routeIs(key("10.0.0.0/24"), IpRoute::connected(eth1));  // same: silent
   rs->routeIs(key("10.0.0.0/24", 1), IpRoute::connected(eth1));
   rs->routeIs(key("10.0.0.0/24"),
               IpRoute::gateway(Wire::IpGenAddr::parse("10.1.1.1"), eth1));  // changed
   rs->routeDel(key("10.0.0.0/25"));                                         // absent: silent
   EXPECT_EQ(r.events, (Events{"+0 10.0.0.0/24", "+1 10.0.0.0/24", "+0 10.0.0.0/24"}));
   EXPECT_EQ(rs->route(key("10.0.0.0/24")).routeType(), Routing::Hardware::RouteType::gateway);
   EXPECT_EQ(rs->route(key("10.0.0.0/25")), IpRoute());  // absent reads as the default

   rs->routeDelAll();
   ASSERT_EQ(r.events.size(), 5u);
   EXPECT_EQ(r.events[3][0], '-');
   EXPECT_EQ(r.events[4][0], '-');
   EXPECT_EQ(rs->routes(), 0u);
}

TEST(RouteStatusTest, MalformedRoutesAreRefusedAndLeaveNoTrace) {
   auto rs = Kor::make<Routing::Hardware::RouteStatus>("routes");
   RouteRecorder r(rs);
   EXPECT_THROW(rs->routeIs(IpRouteKey(), IpRoute::drop()), Kor::RangeError);
   EXPECT_THROW(rs->routeIs(key("10.0.0.0/8"), IpRoute()), Kor::RangeError);
   EXPECT_THROW(rs->routeIs(key("10.0.0.0/8"),
                            IpRoute::gateway(Wire::IpGenAddr(), Wire::IntfId::ethernet(1))),
                Kor::RangeError);
   EXPECT_THROW(
       rs->routeIs(key("10.0.0.0/8"), IpRoute::gateway(Wire::IpGenAddr::parse("2001:db8::1"),
                                                       Wire::IntfId::ethernet(1))),
       Kor::RangeError);
   EXPECT_EQ(rs->routes(), 0u);
   EXPECT_TRUE(r.events.empty());
}

}  // namespace
