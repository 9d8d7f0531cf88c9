#include <gtest/gtest.h>

#include <mplsfwd/kor/EnumRegistry.h>
#include <mplsfwd/kor/TextForm.h>

namespace {

TEST(ValueTextReader, ReadsNestedFieldsInOrder) {
   Kor::ValueTextReader r("Value('T', ** {'a': 1, 'b': Value('U', ** {'x': (1, 2)}), 'c': 'q, r'})",
                          "T");
   EXPECT_EQ(r.field("a"), "1");
   EXPECT_EQ(r.field("b"), "Value('U', ** {'x': (1, 2)})");
   EXPECT_EQ(r.field("c"), "'q, r'");
   EXPECT_NO_THROW(r.finish());
}

TEST(ValueTextReader, RejectsWrongTypeFieldOrTail) {
   EXPECT_THROW(Kor::ValueTextReader("Value('X', ** {'a': 1})", "T"), Kor::ParseError);
   Kor::ValueTextReader wrongField("Value('T', ** {'a': 1})", "T");
   EXPECT_THROW(wrongField.field("b"), Kor::ParseError);
   Kor::ValueTextReader tail("Value('T', ** {'a': 1, 'b': 2})", "T");
   tail.field("a");
   EXPECT_THROW(tail.finish(), Kor::ParseError);
}

TEST(ParseUnsigned, BoundsAndGarbage) {
   EXPECT_EQ(Kor::parseUnsigned("42", 100, "n"), 42u);
   EXPECT_THROW(Kor::parseUnsigned("101", 100, "n"), Kor::ParseError);
   EXPECT_THROW(Kor::parseUnsigned("4x", 100, "n"), Kor::ParseError);
   EXPECT_THROW(Kor::parseUnsigned("", 100, "n"), Kor::ParseError);
}

enum class Color : unsigned { red = 0, green = 4 };

TEST(EnumRegistry, NamesNumbersAndErrors) {
   Kor::EnumRegistry<Color> reg("Color", {{Color::red, "red"}, {Color::green, "green"}});
   EXPECT_EQ(reg.name(Color::green), "green");
   EXPECT_EQ(reg.instance(4), Color::green);
   EXPECT_EQ(reg.instance("red"), Color::red);
   EXPECT_THROW(reg.instance(3), Kor::EnumError);
   EXPECT_THROW(reg.instance("blue"), Kor::EnumError);
   EXPECT_EQ(reg.name(static_cast<Color>(9)), "Color(9)");
}

TEST(RefText, NullAndIdentity) {
   int x = 0;
   EXPECT_EQ(Kor::refText(nullptr), "None");
   EXPECT_NE(Kor::refText(&x), Kor::refText(nullptr));
   EXPECT_EQ(Kor::refText(&x).substr(0, 4), "Ref(");
}

}  // namespace
