#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/l3/VrfName.h>
#include <string>

namespace {

TEST(VrfNameTest, LengthBoundIsInclusiveAt100Bytes) {
   std::string atBound(L3::VrfName::maxLength, 'v');
   L3::VrfName name(atBound);
   EXPECT_EQ(name.bytes(), 100u);
   EXPECT_EQ(name.stringValue(), atBound);

   std::string over(101, 'v');
   try {
      L3::VrfName tooLong(over);
      FAIL() << "a 101-byte name was accepted";
   } catch (const Kor::RangeError& e) {
      EXPECT_STREQ(e.what(), "VrfName::bytes > VrfName::maxLength not allowed");
   }
   // Every way in checks the bound.
   EXPECT_THROW(L3::VrfName(std::string_view(over)), Kor::RangeError);
   EXPECT_THROW(L3::VrfName(over.c_str()), Kor::RangeError);
}

TEST(VrfNameTest, BoundCountsBytesNotCharacters) {
   // 50 two-byte characters are 100 bytes: allowed; one more byte is not.
   std::string utf8;
   for (int i = 0; i < 50; ++i) {
      utf8 += "\xc3\xa9";
   }
   EXPECT_EQ(L3::VrfName(utf8).bytes(), 100u);
   EXPECT_THROW(L3::VrfName(utf8 + "x"), Kor::RangeError);
}

TEST(VrfNameTest, DefaultVrfAndEmptyName) {
   EXPECT_EQ(L3::VrfName::defaultVrf().stringValue(), "default");
   EXPECT_EQ(L3::VrfName::defaultVrf(), L3::VrfName("default"));
   EXPECT_NE(L3::VrfName::defaultVrf(), L3::VrfName("Default"));
   L3::VrfName none;
   EXPECT_TRUE(none.empty());
   EXPECT_NE(none, L3::VrfName::defaultVrf());
}

TEST(VrfNameTest, OrderHashAndText) {
   L3::VrfName a("blue"), b("red"), a2(std::string("blue"));
   EXPECT_TRUE(a < b);
   EXPECT_FALSE(b < a);
   EXPECT_FALSE(a < a2);
   EXPECT_EQ(a, a2);
   EXPECT_EQ(a.hash(), a2.hash());
   EXPECT_NE(a.hash(), b.hash());
   EXPECT_EQ(Kor::toText(a), "blue");

   Kor::HashSet<L3::VrfName> hashed{a, b, a2, L3::VrfName::defaultVrf()};
   EXPECT_EQ(hashed.size(), 3u);
   EXPECT_EQ(hashed.count(L3::VrfName("red")), 1u);
   Kor::OrderedSet<L3::VrfName> ordered{b, L3::VrfName::defaultVrf(), a};
   ASSERT_EQ(ordered.size(), 3u);
   EXPECT_EQ(ordered.begin()->stringValue(), "blue");
   EXPECT_EQ(ordered.rbegin()->stringValue(), "red");
}

}  // namespace
