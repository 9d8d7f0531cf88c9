#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/mpls/RouteKey.h>

namespace {

using Mpls::RouteKey;
using Wire::MplsLabel;

TEST(RouteKey, OrderFollowsTheLabel) {
   EXPECT_LT(RouteKey(MplsLabel(0)), RouteKey(MplsLabel(16)));
   EXPECT_LT(RouteKey(MplsLabel(1048575)), RouteKey());
   EXPECT_FALSE(RouteKey(MplsLabel(16)) < RouteKey(MplsLabel(16)));
   Kor::OrderedSet<RouteKey> keys{RouteKey(MplsLabel(30)), RouteKey(), RouteKey(MplsLabel(20))};
   ASSERT_EQ(keys.size(), 3u);
   EXPECT_EQ(keys.begin()->topLabel(), MplsLabel(20));
   EXPECT_EQ(keys.rbegin()->topLabel(), MplsLabel());
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
