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

}  // namespace
