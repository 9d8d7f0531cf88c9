#include <gtest/gtest.h>

#include <limits>

#include <mplsfwd/Fal/Dot1qTagToVlanMapId.h>
#include <mplsfwd/Fal/MplsHwRoute.h>
#include <mplsfwd/Fal/UnprogrammedReason.h>

namespace {

using L2Adj = Mpls::Hardware::L2Adjacency;

TEST(MplsHwRoute, EqualityTakesAdjacencyByIdentity) {
   Mpls::RouteKey k(Wire::MplsLabel(100));
   auto a = Kor::make<L2Adj>(1);
   auto b = Kor::make<L2Adj>(1);
   EXPECT_EQ(Fal::MplsHwRoute(k, a, 3), Fal::MplsHwRoute(k, a, 3));
   EXPECT_FALSE(Fal::MplsHwRoute(k, a, 3) == Fal::MplsHwRoute(k, b, 3));
   EXPECT_FALSE(Fal::MplsHwRoute(k, a, 3) == Fal::MplsHwRoute(k, a, 4));
}

TEST(MplsHwRoute, TextFormOfDefaultAndRoundTrip) {
   Fal::MplsHwRoute r;
   std::string text = r.stringValue();
   EXPECT_EQ(text, "Value('Fal::MplsHwRoute', ** {'routeKey': " + Mpls::RouteKey().stringValue() +
                       ", 'l2Adjacency': None, 'version': 0})");
   Fal::MplsHwRoute withKey(Mpls::RouteKey(Wire::MplsLabel(1048575)), nullptr,
                            18446744073709551615u);
   EXPECT_EQ(Fal::MplsHwRoute::parse(withKey.stringValue()).stringValue(), withKey.stringValue());
   EXPECT_EQ(Fal::MplsHwRoute::parse(withKey.stringValue()), withKey);
}

TEST(MplsHwRoute, ParseRejectsObjectReferencesAndGarbage) {
   Fal::MplsHwRoute r(Mpls::RouteKey(Wire::MplsLabel(16)), Kor::make<L2Adj>(1), 1);
   EXPECT_THROW(Fal::MplsHwRoute::parse(r.stringValue()), Kor::ParseError);
   EXPECT_THROW(Fal::MplsHwRoute::parse("Value('Fal::MplsHwRoute', ** {})"), Kor::ParseError);
}

}  // namespace
