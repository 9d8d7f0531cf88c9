#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/mpls/RouteKey.h>

namespace {

using Mpls::RouteKey;
using Wire::MplsLabel;

TEST(RouteKey, DefaultHoldsNoLabel) {
   RouteKey key;
   EXPECT_EQ(key.topLabel().value(), 1048576u);
   EXPECT_FALSE(key.topLabel().isValid());
   EXPECT_EQ(key, RouteKey(MplsLabel::noLabel()));
   EXPECT_NE(key, RouteKey(MplsLabel(0)));
}

TEST(RouteKey, OrderFollowsTheLabel) {
   EXPECT_LT(RouteKey(MplsLabel(0)), RouteKey(MplsLabel(16)));
   EXPECT_LT(RouteKey(MplsLabel(1048575)), RouteKey());
   EXPECT_FALSE(RouteKey(MplsLabel(16)) < RouteKey(MplsLabel(16)));
   Kor::OrderedSet<RouteKey> keys{RouteKey(MplsLabel(30)), RouteKey(), RouteKey(MplsLabel(20))};
   ASSERT_EQ(keys.size(), 3u);
   EXPECT_EQ(keys.begin()->topLabel(), MplsLabel(20));
   EXPECT_EQ(keys.rbegin()->topLabel(), MplsLabel());
}

TEST(RouteKey, HashAgreesWithEquality) {
   Kor::HashMap<RouteKey, int> byKey;
   for (std::uint32_t l = 0; l < 1000; ++l) {
      byKey[RouteKey(MplsLabel(l))] = static_cast<int>(l);
   }
   byKey[RouteKey(MplsLabel(999))] = -1;
   EXPECT_EQ(byKey.size(), 1000u);
   EXPECT_EQ(byKey.at(RouteKey(MplsLabel(999))), -1);
   EXPECT_EQ(byKey.count(RouteKey()), 0u);
   EXPECT_EQ(RouteKey(MplsLabel(5)).hash(), RouteKey(MplsLabel(5)).hash());
}

TEST(RouteKey, TextRoundTrip) {
   EXPECT_EQ(RouteKey(MplsLabel(16)).stringValue(), "Value('Mpls::RouteKey', ** {'topLabel': 16})");
   EXPECT_EQ(Kor::toText(RouteKey()), "Value('Mpls::RouteKey', ** {'topLabel': 1048576})");
   for (RouteKey key : {RouteKey(), RouteKey(MplsLabel(0)), RouteKey(MplsLabel(1048575))}) {
      RouteKey back = RouteKey::parse(key.stringValue());
      EXPECT_EQ(back, key);
      EXPECT_EQ(back.stringValue(), key.stringValue());
   }
   for (const char* bad : {"", "16", "Value('Mpls::RouteKey', ** {'topLabel': 1048577})",
                           "Value('Mpls::RouteKey', ** {'label': 16})",
                           "Value('Mpls::RouteKey', ** {'topLabel': 16, 'x': 1})",
                           "Value('Fal::RouteKey', ** {'topLabel': 16})"}) {
      EXPECT_THROW(RouteKey::parse(bad), Kor::ParseError) << bad;
   }
}

}  // namespace
