#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/DenseIndexMap.h>
#include <mplsfwd/kor/DenseIndexSet.h>
#include <mplsfwd/kor/DenseWorkQueue.h>
#include <mplsfwd/kor/Errors.h>

namespace {

// A small key space of eight pages, so that the tests cross page boundaries and free pages.
struct Slot {
   std::uint32_t v = 0;
   bool operator==(const Slot&) const = default;
   bool operator<(const Slot& o) const { return v < o.v; }
};

}  // namespace

template <>
struct Kor::DenseIndex<Slot> {
   static constexpr std::uint32_t kCapacity = 8192;
   static std::uint32_t index(const Slot& s) { return s.v; }
   static Slot key(std::uint32_t i) { return Slot{i}; }
};

namespace {

using Map = Kor::DenseIndexMap<Slot, int>;
using Set = Kor::DenseIndexSet<Slot>;
using Queue = Kor::DenseWorkQueue<Slot>;

template <class M>
std::map<std::uint32_t, int> contents(const M& m) {
   std::map<std::uint32_t, int> out;
   for (const auto& [k, v] : m) {
      EXPECT_TRUE(out.emplace(k.v, v).second) << "key " << k.v << " iterated twice";
   }
   return out;
}

TEST(DenseIndexMapTest, BehavesLikeAnOrderedMapUnderRandomChanges) {
   std::mt19937 rng(7);
   Map map;
   std::map<std::uint32_t, int> model;
   for (int step = 0; step < 20000; ++step) {
      // Mostly keys of three pages, sometimes anywhere, so that pages fill, empty and come back.
      std::uint32_t k = rng() % 4 == 0 ? rng() % 8192 : 2000 + rng() % 3000;
      switch (rng() % 5) {
         case 0:
         case 1: {
            int v = static_cast<int>(rng() % 1000);
            auto [it, inserted] = map.try_emplace(Slot{k}, v);
            auto [mit, minserted] = model.try_emplace(k, v);
            ASSERT_EQ(inserted, minserted);
            ASSERT_EQ(it.key().v, k);
            ASSERT_EQ(it.value(), mit->second);
            break;
         }
         case 2:
            ASSERT_EQ(map.erase(Slot{k}), model.erase(k));
            break;
         case 3: {
            int v = static_cast<int>(rng() % 1000);
            Kor::mapAssignIfChanged(map, Slot{k}, v);
            model[k] = v;
            break;
         }
         default: {
            auto it = map.find(Slot{k});
            auto mit = model.find(k);
            ASSERT_EQ(it == map.end(), mit == model.end());
            ASSERT_EQ(map.contains(Slot{k}), mit != model.end());
            if (mit != model.end()) {
               ASSERT_EQ(it->second, mit->second);
            }
            break;
         }
      }
      ASSERT_EQ(map.size(), model.size());
      if (step % 1000 == 0) {
         ASSERT_EQ(contents(map), model);
      }
   }
   ASSERT_EQ(contents(map), model);
}

TEST(DenseIndexMapTest, EraseThroughTheIteratorVisitsEveryKeyOnceAndEmptiesTheMap) {
   Map map;
   for (std::uint32_t k : {0u, 63u, 64u, 1023u, 1024u, 5000u, 8191u}) {
      map[Slot{k}] = static_cast<int>(k);
   }
   std::vector<std::uint32_t> seen;
   for (auto it = map.begin(); it != map.end();) {
      seen.push_back(it.key().v);
      it = map.erase(it);
   }
   EXPECT_EQ(seen, (std::vector<std::uint32_t>{0, 63, 64, 1023, 1024, 5000, 8191}));
   EXPECT_TRUE(map.empty());
   EXPECT_EQ(map.begin(), map.end());
   // Usable again after every page went.
   map[Slot{4}] = 9;
   EXPECT_EQ(contents(map), (std::map<std::uint32_t, int>{{4, 9}}));
}

TEST(DenseIndexMapTest, KeysWithoutASlotAreAbsentAndRefused) {
   Map map;
   EXPECT_FALSE(map.contains(Slot{8192}));
   EXPECT_EQ(map.find(Slot{100000}), map.end());
   EXPECT_EQ(map.erase(Slot{8192}), 0u);
   EXPECT_THROW(map.try_emplace(Slot{8192}, 1), Kor::RangeError);
   EXPECT_TRUE(map.empty());
}

TEST(DenseIndexMapTest, ErasedValuesAreReleasedAtOnceAndCopiesAreDeep) {
   Kor::DenseIndexMap<Slot, std::shared_ptr<int>> map;
   auto held = std::make_shared<int>(1);
   map.try_emplace(Slot{10}, held);
   map.try_emplace(Slot{11}, held);
   EXPECT_EQ(held.use_count(), 3);
   // The page keeps living (slot 11 is in it): the erased slot must still let go.
   map.erase(Slot{10});
   EXPECT_EQ(held.use_count(), 2);

   auto copy = map;
   EXPECT_EQ(held.use_count(), 3);
   copy.erase(Slot{11});
   EXPECT_TRUE(map.contains(Slot{11}));
   map.clear();
   EXPECT_EQ(held.use_count(), 1);
}

TEST(DenseIndexMapTest, EqualityComparesKeysAndValues) {
   Map a;
   Map b;
   a[Slot{1}] = 1;
   b[Slot{2}] = 1;
   EXPECT_FALSE(a == b);
   b.erase(Slot{2});
   b[Slot{1}] = 2;
   EXPECT_FALSE(a == b);
   b[Slot{1}] = 1;
   EXPECT_TRUE(a == b);
}

TEST(DenseIndexSetTest, BehavesLikeAnOrderedSetUnderRandomChanges) {
   std::mt19937 rng(11);
   Set set;
   std::set<std::uint32_t> model;
   for (int step = 0; step < 20000; ++step) {
      std::uint32_t k = rng() % 8192;
      if (rng() % 2) {
         ASSERT_EQ(set.insert(Slot{k}).second, model.insert(k).second);
      } else {
         ASSERT_EQ(set.erase(Slot{k}), model.erase(k));
      }
      ASSERT_EQ(set.size(), model.size());
      const std::uint32_t probe = rng() % 8192;
      auto lower = model.lower_bound(probe);
      auto upper = model.upper_bound(probe);
      ASSERT_EQ(set.lower_bound(Slot{probe}) == set.end(), lower == model.end());
      ASSERT_EQ(set.upper_bound(Slot{probe}) == set.end(), upper == model.end());
      if (lower != model.end()) {
         ASSERT_EQ((*set.lower_bound(Slot{probe})).v, *lower);
      }
      if (upper != model.end()) {
         ASSERT_EQ((*set.upper_bound(Slot{probe})).v, *upper);
      }
   }
   EXPECT_EQ(set.upper_bound(Slot{8191}), set.end());
   std::vector<std::uint32_t> got;
   for (Slot s : set) {
      got.push_back(s.v);
   }
   EXPECT_EQ(got, std::vector<std::uint32_t>(model.begin(), model.end()));
   EXPECT_THROW(set.insert(Slot{8192}), Kor::RangeError);
   EXPECT_FALSE(set.contains(Slot{8192}));
   set.clear();
   EXPECT_TRUE(set.empty());
   EXPECT_EQ(set.begin(), set.end());
}

// Takes what was listed when the call started, the way a time-boxed review pass does.
std::vector<std::uint32_t> drainListed(Queue& q) {
   std::vector<std::uint32_t> out;
   Slot k;
   for (std::size_t n = q.entriesListed(); n != 0; --n) {
      if (q.takeFront(k)) {
         out.push_back(k.v);
      }
   }
   return out;
}

TEST(DenseWorkQueueTest, KeysQueuedWhileAPassRunsWaitForTheNextPass) {
   Queue q;
   q.insert(Slot{1});
   q.insert(Slot{2});
   std::vector<std::uint32_t> worked;
   Slot k;
   for (std::size_t n = q.entriesListed(); n != 0; --n) {
      if (q.takeFront(k)) {
         worked.push_back(k.v);
         // Work that puts its own key and a new one back.
         q.insert(k);
         q.insert(Slot{k.v + 100});
      }
   }
   EXPECT_EQ(worked, (std::vector<std::uint32_t>{1, 2}));
   EXPECT_EQ(drainListed(q), (std::vector<std::uint32_t>{1, 101, 2, 102}));
}

TEST(DenseWorkQueueTest, MatchesAModelQueueThroughLongRunsOfChanges) {
   // Long enough that the list is compacted many times over. The model lists keys the plain way:
   // a deque of entries, stale ones included, and the sets of members and of listed keys.
   std::mt19937 rng(3);
   Queue q;
   std::deque<std::uint32_t> order;
   std::set<std::uint32_t> listed;
   std::set<std::uint32_t> members;
   for (int step = 0; step < 200000; ++step) {
      std::uint32_t k = rng() % 8192;
      switch (rng() % 4) {
         case 0:
         case 1: {
            bool added = members.insert(k).second;
            if (added && listed.insert(k).second) {
               order.push_back(k);
            }
            ASSERT_EQ(q.insert(Slot{k}), added);
            break;
         }
         case 2:
            ASSERT_EQ(q.erase(Slot{k}), members.erase(k) == 1);
            break;
         default: {
            Slot got{99999};
            bool live = q.takeFront(got);
            bool modelLive = false;
            if (!order.empty()) {
               std::uint32_t front = order.front();
               order.pop_front();
               listed.erase(front);
               modelLive = members.erase(front) == 1;
               if (modelLive) {
                  ASSERT_EQ(got.v, front);
               }
            }
            ASSERT_EQ(live, modelLive);
            break;
         }
      }
      ASSERT_EQ(q.size(), members.size());
      ASSERT_EQ(q.entriesListed(), order.size());
   }
}

}  // namespace
