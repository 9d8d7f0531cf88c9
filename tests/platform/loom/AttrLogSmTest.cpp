#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include <mplsfwd/loom/AttrLogSm.h>

namespace {

using Loom::AttrLogSm;

struct Watcher : AttrLogSm::NotifieeConst {
   using NotifieeConst::NotifieeConst;
   void onOutputBacklog() override {
      ++backlogChanges;
      if (onBacklogHook) {
         onBacklogHook();
      }
   }
   void onClogged() override { seen.push_back(notifier()->isAttrLogOutClogged()); }
   int backlogChanges = 0;
   std::vector<bool> seen;  // the clogged answer at each onClogged
   std::function<void()> onBacklogHook;
};

TEST(AttrLogSm, CloggedAtOrAboveTheThreshold) {
   auto log = Kor::make<AttrLogSm>("attrLogSm", 100);
   Watcher w(log);
   EXPECT_FALSE(log->isAttrLogOutClogged());
   log->outputBacklogIs(99);
   EXPECT_FALSE(log->isAttrLogOutClogged());
   log->outputBacklogIs(100);
   EXPECT_TRUE(log->isAttrLogOutClogged());
   log->outputBacklogIs(500);
   log->outputBacklogIs(500);  // no change: silent
   EXPECT_TRUE(log->isAttrLogOutClogged());
   log->outputBacklogIs(0);
   EXPECT_FALSE(log->isAttrLogOutClogged());
   EXPECT_EQ(w.backlogChanges, 4);
   EXPECT_EQ(w.seen, (std::vector<bool>{true, false}));
}

TEST(AttrLogSm, ForcedStateOverridesTheBacklogUntilDeleted) {
   auto log = Kor::make<AttrLogSm>("attrLogSm", 10);
   Watcher w(log);
   log->cloggedIs(true);
   EXPECT_TRUE(log->isAttrLogOutClogged());
   EXPECT_EQ(log->clogged(), std::optional<bool>(true));
   log->outputBacklogIs(20);
   log->outputBacklogIs(0);
   EXPECT_TRUE(log->isAttrLogOutClogged());  // the backlog does not lift a forced clog
   log->cloggedIs(false);
   EXPECT_FALSE(log->isAttrLogOutClogged());
   log->outputBacklogIs(30);
   EXPECT_FALSE(log->isAttrLogOutClogged());
   log->cloggedDel();  // back to the backlog's answer: clogged
   EXPECT_TRUE(log->isAttrLogOutClogged());
   EXPECT_EQ(log->clogged(), std::nullopt);
   log->cloggedIs(true);  // same answer as the backlog's: no clogged notification
   EXPECT_EQ(w.seen, (std::vector<bool>{true, false, true}));
}

TEST(AttrLogSm, ReactorChangingTheBacklogDuringANotificationKeepsAnnouncementsExact) {
   auto log = Kor::make<AttrLogSm>("attrLogSm", 10);
   Watcher w(log);
   // The first rise above the threshold is drained at once by a reactor.
   w.onBacklogHook = [&] {
      if (log->outputBacklog() >= 10) {
         log->outputBacklogIs(0);
      }
   };
   log->outputBacklogIs(15);
   EXPECT_FALSE(log->isAttrLogOutClogged());
   // Nothing was clogged when the dust settled, so no reactor heard of a clog.
   EXPECT_TRUE(w.seen.empty());
   EXPECT_EQ(w.backlogChanges, 2);
}

}  // namespace
