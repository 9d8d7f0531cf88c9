#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>

namespace {

struct Counted : Kor::PtrInterface {
   explicit Counted(int* alive) : alive(alive) { ++*alive; }
   ~Counted() override {
      // A reference taken and dropped during teardown must not delete the object again.
      Kor::Ptr<Counted> self(this);
      --*alive;
   }
   int* alive;
};

struct Derived : Counted {
   using Counted::Counted;
};

TEST(Ptr, CountsCopiesMovesAndConversions) {
   int alive = 0;
   {
      Kor::Ptr<Counted> a = Kor::make<Counted>(&alive);
      EXPECT_EQ(a->references(), 1);
      Kor::Ptr<Counted> b = a;
      EXPECT_EQ(a->references(), 2);
      Kor::Ptr<const Counted> c = std::move(b);
      EXPECT_FALSE(b);
      EXPECT_EQ(a->references(), 2);
      EXPECT_TRUE(c == a);
      c = nullptr;
      EXPECT_EQ(a->references(), 1);
      EXPECT_EQ(alive, 1);
   }
   EXPECT_EQ(alive, 0);
}

TEST(Ptr, DestructorMarksCountNegativeOnce) {
   int alive = 0;
   Kor::Ptr<Derived> d = Kor::make<Derived>(&alive);
   Kor::Ptr<Counted> base = d;
   d = nullptr;
   EXPECT_EQ(alive, 1);
   base = nullptr;
   EXPECT_EQ(alive, 0);
}

TEST(Ptr, HashesAndOrdersByIdentity) {
   int alive = 0;
   auto a = Kor::make<Counted>(&alive);
   auto b = Kor::make<Counted>(&alive);
   Kor::HashSet<Kor::Ptr<Counted>> set{a, b, a};
   EXPECT_EQ(set.size(), 2u);
   EXPECT_NE(a < b, b < a);
}

}  // namespace
