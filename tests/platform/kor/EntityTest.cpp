#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

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
   std::string entry(int k) const { return Kor::mapValueOr(entry_, k); }
   void entryIs(int k, const std::string& v) {
      if (Kor::mapAssignIfChanged(entry_, k, v)) {
         notify(&NotifieeConst::onEntry, k);
      }
   }
   void entryDel(int k) {
      if (entry_.erase(k)) {
         notify(&NotifieeConst::onEntry, k);
      }
   }
   void entryDelAll() {
      Kor::deleteEachKey(entry_, [this](int k) { entryDel(k); });
   }
   std::size_t entries() const { return entry_.size(); }

 private:
   bool enabled_ = false;
   Kor::OrderedMap<int, std::string> entry_;
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

TEST(EntityNotification, KeyedMutatorAndDeleteRules) {
   auto t = Kor::make<Table>("t");
   Recorder r(t);
   t->entryIs(1, "a");
   t->entryIs(1, "a");  // same value: silent
   t->entryIs(1, "b");  // changed value: one notification
   t->entryDel(7);      // absent: silent
   EXPECT_EQ(r.keys, (std::vector<int>{1, 1}));
   EXPECT_EQ(t->entry(7), "");  // absent key reads as the default value
   t->entryDel(1);
   EXPECT_EQ(r.keys.size(), 3u);
   EXPECT_EQ(t->entries(), 0u);
}

TEST(EntityNotification, DeleteAllNotifiesOncePerEntry) {
   auto t = Kor::make<Table>("t");
   for (int k : {3, 1, 2}) {
      t->entryIs(k, "x");
   }
   Recorder r(t);
   t->entryDelAll();
   ASSERT_EQ(r.keys.size(), 3u);
   EXPECT_EQ(r.keys, (std::vector<int>{1, 2, 3}));
   t->entryDelAll();
   EXPECT_EQ(r.keys.size(), 3u);
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
