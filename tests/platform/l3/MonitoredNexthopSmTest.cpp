#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/l3/MonitoredNexthopSm.h>

namespace {

Wire::IpGenAddr ip(const char* text) {
   return Wire::IpGenAddr::parse(text);
}

struct EntryRecorder : Fal::MonitoredNexthopSm::NotifieeConst {
   using Fal::MonitoredNexthopSm::NotifieeConst::NotifieeConst;
   void onEntry(const Fal::NextHopKey& k, Fal::VrfId vrf) override {
      bool has = notifier()->entryHas(vrf, k.nextHop(), k.l3Intf());
      events.push_back(Kor::concat({has ? "+" : "-", vrf.stringValue(), " ",
                                    k.nextHop().stringValue(), " ", k.l3Intf().stringValue()}));
   }
   std::vector<std::string> events;
};

using Events = std::vector<std::string>;

TEST(MonitoredNexthopSmTest, EntryIsCountedPerUser) {
   auto sm = Kor::make<Fal::MonitoredNexthopSm>("mnh");
   EntryRecorder r(sm);
   auto nh = ip("10.0.0.1");
   auto eth1 = Wire::IntfId::ethernet(1);
   sm->addEntry(Fal::VrfId(0), nh, eth1);
   sm->addEntry(Fal::VrfId(0), nh, eth1);
   EXPECT_EQ(sm->entryRefs(Fal::VrfId(0), nh, eth1), 2u);
   EXPECT_EQ(r.events, (Events{"+0 10.0.0.1 Ethernet1"}));

   sm->removeEntry(Fal::VrfId(0), nh, eth1);
   EXPECT_TRUE(sm->entryHas(Fal::VrfId(0), nh, eth1));  // one user left
   EXPECT_EQ(r.events.size(), 1u);
   sm->removeEntry(Fal::VrfId(0), nh, eth1);
   EXPECT_FALSE(sm->entryHas(Fal::VrfId(0), nh, eth1));
   EXPECT_EQ(r.events, (Events{"+0 10.0.0.1 Ethernet1", "-0 10.0.0.1 Ethernet1"}));

   // Removing once more is harmless and does not leave a negative count behind.
   sm->removeEntry(Fal::VrfId(0), nh, eth1);
   sm->addEntry(Fal::VrfId(0), nh, eth1);
   EXPECT_EQ(sm->entryRefs(Fal::VrfId(0), nh, eth1), 1u);
   EXPECT_EQ(r.events.size(), 3u);
}

TEST(MonitoredNexthopSmTest, VrfAddressAndInterfaceEachMakeADistinctEntry) {
   auto sm = Kor::make<Fal::MonitoredNexthopSm>("mnh");
   EntryRecorder r(sm);
   sm->addEntry(Fal::VrfId(0), ip("10.0.0.1"), Wire::IntfId::ethernet(1));
   sm->addEntry(Fal::VrfId(1), ip("10.0.0.1"), Wire::IntfId::ethernet(1));
   sm->addEntry(Fal::VrfId(0), ip("10.0.0.1"), Wire::IntfId::ethernet(2));
   sm->addEntry(Fal::VrfId(0), ip("fe80::1"), Wire::IntfId::ethernet(1));
   EXPECT_EQ(sm->entries(), 4u);
   EXPECT_EQ(r.events.size(), 4u);
   sm->removeEntry(Fal::VrfId(1), ip("10.0.0.1"), Wire::IntfId::ethernet(1));
   EXPECT_EQ(r.events.back(), "-1 10.0.0.1 Ethernet1");
   EXPECT_TRUE(sm->entryHas(Fal::VrfId(0), ip("10.0.0.1"), Wire::IntfId::ethernet(1)));
   EXPECT_EQ(sm->entries(), 3u);
}

TEST(MonitoredNexthopSmTest, EmptyNextHopIsRefused) {
   auto sm = Kor::make<Fal::MonitoredNexthopSm>("mnh");
   EntryRecorder r(sm);
   EXPECT_THROW(sm->addEntry(Fal::VrfId(0), Wire::IpGenAddr(), Wire::IntfId::ethernet(1)),
                Kor::RangeError);
   EXPECT_EQ(sm->entries(), 0u);
   EXPECT_TRUE(r.events.empty());
}

}  // namespace
