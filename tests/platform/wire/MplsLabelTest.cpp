#include <gtest/gtest.h>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/wire/MplsLabel.h>
#include <mplsfwd/wire/MplsLabelOperation.h>

namespace {

using Wire::MplsLabel;
using Wire::MplsLabelOperation;

TEST(MplsLabel, DefaultIsNoLabelAndBoundsAreTwentyBits) {
   EXPECT_EQ(MplsLabel().value(), 1048576u);
   EXPECT_FALSE(MplsLabel().isValid());
   EXPECT_EQ(MplsLabel::noLabel(), MplsLabel(0x100000));
   EXPECT_TRUE(MplsLabel(0).isValid());
   EXPECT_TRUE(MplsLabel(1048575).isValid());
   EXPECT_FALSE(MplsLabel(1048576).isValid());
   EXPECT_THROW(MplsLabel(1048577), Kor::RangeError);
   EXPECT_THROW(MplsLabel(0xFFFFFFFF), Kor::RangeError);
}

TEST(MplsLabel, OrderHashAndText) {
   EXPECT_LT(MplsLabel(16), MplsLabel(17));
   EXPECT_LT(MplsLabel(1048575), MplsLabel());
   EXPECT_NE(MplsLabel(16).hash(), MplsLabel(17).hash());
   for (std::uint32_t v : {0u, 3u, 16u, 999999u, 1048575u, 1048576u}) {
      MplsLabel l(v);
      EXPECT_EQ(l.stringValue(), std::to_string(v));
      EXPECT_EQ(Kor::toText(l), l.stringValue());
      EXPECT_EQ(MplsLabel::parse(l.stringValue()), l);
      EXPECT_EQ(MplsLabel::parse(l.stringValue()).stringValue(), l.stringValue());
   }
   EXPECT_THROW(MplsLabel::parse("1048577"), Kor::ParseError);
   EXPECT_THROW(MplsLabel::parse("-1"), Kor::ParseError);
   EXPECT_THROW(MplsLabel::parse("16 "), Kor::ParseError);
   EXPECT_THROW(MplsLabel::parse(""), Kor::ParseError);
}

TEST(MplsLabelOperation, RejectsNoLabelAndOverflow) {
   MplsLabelOperation op;
   EXPECT_THROW(op.push(MplsLabel()), Kor::RangeError);
   EXPECT_EQ(op.stackSize(), 0);
   for (std::uint32_t i = 0; i < MplsLabelOperation::kMaxLabels; ++i) {
      op.push(MplsLabel(16 + i));
   }
   EXPECT_THROW(op.push(MplsLabel(99)), Kor::RangeError);
   EXPECT_EQ(op.stackSize(), MplsLabelOperation::kMaxLabels);
   EXPECT_EQ(op.labelStack(MplsLabelOperation::kMaxLabels - 1), MplsLabel(23));
}

TEST(MplsLabelOperation, EqualityOrderAndHash) {
   MplsLabelOperation a{MplsLabel(16)};
   MplsLabelOperation b;
   b.push(MplsLabel(16));
   EXPECT_EQ(a, b);
   EXPECT_EQ(a.hash(), b.hash());
   MplsLabelOperation ab{MplsLabel(16), MplsLabel(17)};
   MplsLabelOperation ba{MplsLabel(17), MplsLabel(16)};
   EXPECT_NE(ab, ba);
   EXPECT_NE(ab.hash(), ba.hash());
   EXPECT_LT(MplsLabelOperation(), a);
   EXPECT_LT(a, ab);  // a prefix orders first
   EXPECT_LT(ab, ba);
   EXPECT_FALSE(ba < ab);
   EXPECT_FALSE(a < b);
   EXPECT_FALSE(b < a);
}

TEST(MplsLabelOperation, TextRoundTrip) {
   EXPECT_EQ(MplsLabelOperation().stringValue(), "[]");
   EXPECT_EQ((MplsLabelOperation{MplsLabel(16)}).stringValue(), "[16]");
   MplsLabelOperation three{MplsLabel(0), MplsLabel(16), MplsLabel(1048575)};
   EXPECT_EQ(three.stringValue(), "[0, 16, 1048575]");
   EXPECT_EQ(Kor::toText(three), "[0, 16, 1048575]");
   for (const auto& op : {MplsLabelOperation(), MplsLabelOperation{MplsLabel(16)}, three}) {
      MplsLabelOperation back = MplsLabelOperation::parse(op.stringValue());
      EXPECT_EQ(back, op);
      EXPECT_EQ(back.stringValue(), op.stringValue());
   }
   for (const char* bad :
        {"", "[", "16", "[16,17]", "[16, ]", "[,]", "[ 16]", "[1048576]", "[16, x]"}) {
      EXPECT_THROW(MplsLabelOperation::parse(bad), Kor::ParseError) << bad;
   }
   EXPECT_THROW(MplsLabelOperation::parse("[1, 2, 3, 4, 5, 6, 7, 8, 9]"), Kor::RangeError);
}

}  // namespace
