#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/KeyedAttr.h>

namespace {

// A small entity with one scalar and one keyed attribute, written the way the library's entities
// are, to pin down the runtime's notification rules.
class Table : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<Table> {
    public:
      using Kor::Notifiee<Table>::Notifiee;
      virtual void onEnabled() {}
      virtual void onEntry(int) {}
   };

   using Kor::Entity::Entity;

   bool enabled() const { return enabled_; }
   void enabledIs(bool v) {
      if (Kor::assignIfChanged(enabled_, v)) {
         notify(&NotifieeConst::onEnabled);
      }
   }
   MPLSFWD_KEYED_ATTR(entry, entries, int, [this](int k) { notify(&NotifieeConst::onEntry, k); })

 private:
   bool enabled_ = false;
   Kor::KeyedAttr<Kor::OrderedMap<int, std::string>> entry_;
};

struct Recorder : Table::NotifieeConst {
   using Table::NotifieeConst::NotifieeConst;
   void onEnabled() override { ++enabled; }
   void onEntry(int k) override {
      keys.push_back(k);
      if (onEntryHook) {
         onEntryHook(k);
      }
   }
   int enabled = 0;
   std::vector<int> keys;
   std::function<void(int)> onEntryHook;
};

TEST(EntityNotification, ScalarNotifiesOnlyOnRealChange) {
   auto t = Kor::make<Table>("t");
   Recorder r(t);
   t->enabledIs(false);
   EXPECT_EQ(r.enabled, 0);
   t->enabledIs(true);
   t->enabledIs(true);
   EXPECT_EQ(r.enabled, 1);
   t->enabledIs(false);
   EXPECT_EQ(r.enabled, 2);
}

// Each row: what is done to the keyed attribute, the keys notified in order, the entries left.
struct KeyedCase {
   const char* name;
   std::function<void(Table&)> ops;
   std::vector<int> notified;
   std::size_t entries;
};

TEST(EntityNotification, KeyedAttributeRules) {
   const std::vector<KeyedCase> cases = {
       {"new entry", [](Table& t) { t.entryIs(1, "a"); }, {1}, 1},
       {"same value is silent",
        [](Table& t) {
           t.entryIs(1, "a");
           t.entryIs(1, "a");
        },
        {1},
        1},
       {"changed value",
        [](Table& t) {
           t.entryIs(1, "a");
           t.entryIs(1, "b");
        },
        {1, 1},
        1},
       {"delete of an absent key is silent", [](Table& t) { t.entryDel(7); }, {}, 0},
       {"delete",
        [](Table& t) {
           t.entryIs(1, "a");
           t.entryDel(1);
           t.entryDel(1);
        },
        {1, 1},
        0},
       {"delete-all goes entry by entry",
        [](Table& t) {
           for (int k : {3, 1, 2}) {
              t.entryIs(k, "x");
           }
           t.entryDelAll();
           t.entryDelAll();
        },
        {3, 1, 2, 1, 2, 3},
        0},
   };
   for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      auto t = Kor::make<Table>("t");
      Recorder r(t);
      c.ops(*t);
      EXPECT_EQ(r.keys, c.notified);
      EXPECT_EQ(t->entries(), c.entries);
      EXPECT_EQ(t->entry(7), "");  // an absent key reads as the default value
   }
}

TEST(EntityNotification, ReactorRemovedDuringDeliveryIsNotCalledAgain) {
   auto t = Kor::make<Table>("t");
   auto first = std::make_unique<Recorder>(t);
   auto second = std::make_unique<Recorder>(t);
   // The first reactor destroys the second while the notification is being delivered.
   first->onEntryHook = [&](int) { second.reset(); };
   t->entryIs(1, "a");
   EXPECT_EQ(first->keys.size(), 1u);
   EXPECT_EQ(second, nullptr);
   EXPECT_EQ(t->notifiees(), 1u);
   t->entryIs(2, "a");
   EXPECT_EQ(first->keys.size(), 2u);
}

TEST(EntityNotification, ReactorRemovingItselfAndAddingAnotherDuringDelivery) {
   auto t = Kor::make<Table>("t");
   auto self = std::make_unique<Recorder>(t);
   std::unique_ptr<Recorder> added;
   Recorder* raw = self.get();
   raw->onEntryHook = [&](int) {
      added = std::make_unique<Recorder>(t);
      self.reset();
   };
   t->entryIs(1, "a");
   // The reactor added during the delivery does not see the notification under way...
   ASSERT_NE(added, nullptr);
   EXPECT_TRUE(added->keys.empty());
   // ...but sees the next one.
   t->entryIs(2, "a");
   EXPECT_EQ(added->keys, std::vector<int>{2});
   EXPECT_EQ(t->notifiees(), 1u);
}

TEST(EntityNotification, DeadReactorDropsNotifications) {
   auto t = Kor::make<Table>("t");
   Recorder r(t);
   r.deadIs(true);
   t->entryIs(1, "a");
   EXPECT_TRUE(r.keys.empty());
   r.deadIs(false);
   t->entryIs(2, "a");
   EXPECT_EQ(r.keys, std::vector<int>{2});
}

// An owner that holds a reactor and mutates the table from its own destructor: the reactor must
// not call back into the half-destroyed owner.
class Owner : public Kor::PtrInterface {
 public:
   explicit Owner(Kor::Ptr<Table> t, int* calls) : table_(t), reactor_(t, calls) {
      reactor_.ownerIs(this);
   }
   ~Owner() override { table_->entryIs(99, "late"); }

 private:
   struct Reactor : Table::NotifieeConst {
      Reactor(Kor::Ptr<Table> t, int* calls) : Table::NotifieeConst(t), calls(calls) {}
      void onEntry(int) override { ++*calls; }
      int* calls;
   };
   Kor::Ptr<Table> table_;
   Reactor reactor_;
};

TEST(EntityNotification, ReactorOfTornDownOwnerDropsNotifications) {
   auto t = Kor::make<Table>("t");
   int calls = 0;
   {
      Kor::Ptr<Owner> o = Kor::make<Owner>(t, &calls);
      t->entryIs(1, "a");
      EXPECT_EQ(calls, 1);
   }
   EXPECT_EQ(calls, 1);
   EXPECT_EQ(t->entry(99), "late");
   EXPECT_EQ(t->notifiees(), 0u);
}

TEST(EntityNotification, ReactorCanMoveToAnotherNotifier) {
   auto a = Kor::make<Table>("a");
   auto b = Kor::make<Table>("b");
   Recorder r(a);
   r.notifierIs(b);
   a->entryIs(1, "x");
   b->entryIs(2, "x");
   EXPECT_EQ(r.keys, std::vector<int>{2});
   EXPECT_EQ(a->notifiees(), 0u);
}

}  // namespace
