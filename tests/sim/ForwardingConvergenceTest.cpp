// Seeded random sequences of route, via-set, neighbour, link and capacity events. After every
// quiescent step a packet is sent for every label of the LFIB: a route the platform programmed
// must forward exactly as the LFIB and the neighbour table say (the test's own model, not the
// hardware tables), one it did not must be dropped with the reason its state gives.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include <mplsfwd/sim/Forwarder.h>

#include "SimTestSupport.h"

namespace {

using namespace SimTest;

constexpr std::uint32_t kNextHops = 3;
constexpr std::uint32_t kViaSets = 4;
constexpr std::uint32_t kFirstLabel = 100;
constexpr std::uint32_t kLabels = 12;

struct Model {
   std::map<std::uint32_t, std::set<std::uint32_t>> viaSet;  // via set -> next hops
   std::map<std::uint32_t, std::uint32_t> route;             // label -> via set
   std::map<std::uint32_t, std::string> mac;                 // next hop -> MAC (resolved)
   std::set<std::uint32_t> down;                             // interfaces not ready
};

class Sequence {
 public:
   explicit Sequence(unsigned seed) : rng_(seed) {}

   void step() {
      std::uint32_t n = pick(1, kNextHops);
      switch (pick(0, 6)) {
         case 0: {  // a via set over a random non-empty set of next hops
            std::uint32_t s = pick(1, kViaSets);
            std::set<std::uint32_t> hops;
            for (std::uint32_t h = 1; h <= kNextHops; ++h) {
               if (pick(0, 1) || (h == kNextHops && hops.empty())) {
                  hops.insert(h);
               }
            }
            std::vector<Mpls::LfibViaKey> vias;
            for (auto h : hops) {
               vias.push_back(bed_.cp.mplsVia(s * 100 + h, Bed::nh(h), Wire::IntfId::ethernet(h),
                                              Wire::MplsLabelOperation{label(1000 + s)}));
            }
            bed_.cp.viaSet(mplsSet(s), vias);
            model_.viaSet[s] = hops;
            break;
         }
         case 1:
         case 2: {
            std::uint32_t s = pick(1, kViaSets);
            if (model_.viaSet.contains(s)) {
               std::uint32_t l = kFirstLabel + pick(0, kLabels - 1);
               bed_.cp.route(label(l), mplsSet(s));
               model_.route[l] = s;
            }
            break;
         }
         case 3: {
            std::uint32_t l = kFirstLabel + pick(0, kLabels - 1);
            bed_.cp.routeDel(label(l));
            model_.route.erase(l);
            break;
         }
         case 4: {  // the neighbour answers with a (new) MAC, or goes away
            if (pick(0, 3) == 0) {
               bed_.cp.neighborDel(Bed::nh(n), Wire::IntfId::ethernet(n));
               model_.mac.erase(n);
            } else {
               std::string m =
                   "00:00:00:00:0" + std::to_string(pick(1, 3)) + ":0" + std::to_string(n);
               bed_.cp.neighbor(Bed::nh(n), Wire::IntfId::ethernet(n), mac(m.c_str()),
                                Bridging::VlanId(10), Wire::IntfId::ethernet(n));
               model_.mac[n] = m;
            }
            break;
         }
         case 5: {  // a link flap
            bool ready = model_.down.contains(n);
            bed_.agent.chip().interfaceReadyIs(Wire::IntfId::ethernet(n), ready);
            ready ? (void)model_.down.erase(n) : (void)model_.down.insert(n);
            break;
         }
         case 6:
            bed_.agent.chip().routeCapacityIs(pick(0, 1) ? sim::Chip::unlimited() : pick(2, 8));
            break;
      }
   }

   // Sends one packet per label in range and checks it against the model; counts the labels
   // checked as forwarded.
   void check(int stepNo) {
      sim::Forwarder fwd(bed_.agent);
      for (std::uint32_t l = kFirstLabel; l < kFirstLabel + kLabels; ++l) {
         sim::Frame f;
         f.labels = {{l, 0, true, 64}};
         f.payload = sim::ipPacket({sim::PayloadKind::ipv4, "192.0.2.1", "198.51.100.7", 17,
                                    static_cast<std::uint16_t>(1000 + l), 80, 64});
         sim::ForwardResult r = fwd.forward(f, Wire::IntfId::ethernet(9));
         sim::RouteView view = bed_.route(l);
         std::string where = "step " + std::to_string(stepNo) + " label " + std::to_string(l) +
                             ": " + r.text() + " state " +
                             std::string(sim::routeStateName(view.state)) + " " + view.reason;
         for (const auto& v : view.vias) {
            where += " | " + v.stringValue();
         }
         ASSERT_NE(view.state, sim::RouteState::pending) << where;
         if (view.state != sim::RouteState::programmed) {
            sim::DropReason want =
                view.state == sim::RouteState::absent ? sim::DropReason::noRoute
                : view.reason == "InterfaceNotReady"  ? sim::DropReason::interfaceNotReady
                : view.reason == "AdjacencyFull"      ? sim::DropReason::adjacencyUnprogrammed
                                                      : sim::DropReason::routeUnprogrammed;
            EXPECT_TRUE(r.dropped() && r.reason == want)
                << where << " expected dropped: " << sim::dropReasonText(want);
            continue;
         }
         // Programmed: the LFIB route's via set, through a next hop that resolves.
         ASSERT_TRUE(model_.route.contains(l)) << where;
         std::uint32_t s = model_.route.at(l);
         ASSERT_EQ(r.kind, sim::ForwardResult::Kind::forwarded) << where;
         std::uint32_t h = r.port.number();
         EXPECT_TRUE(model_.viaSet.at(s).contains(h)) << where;
         EXPECT_FALSE(model_.down.contains(h)) << where;
         ASSERT_TRUE(model_.mac.contains(h)) << where;
         EXPECT_EQ(r.frame.dst.stringValue(), model_.mac.at(h)) << where;
         EXPECT_EQ(r.frame.vlan, std::optional<std::uint16_t>(10)) << where;
         std::vector<sim::LabelEntry> want = {{1000 + s, 0, true, 63}};
         EXPECT_EQ(r.frame.labels, want) << where;
         ++forwarded_;
      }
   }
   int forwarded() const { return forwarded_; }

   Bed& bed() { return bed_; }

 private:
   std::uint32_t pick(std::uint32_t lo, std::uint32_t hi) {
      return std::uniform_int_distribution<std::uint32_t>(lo, hi)(rng_);
   }
   std::mt19937 rng_;
   Bed bed_;
   Model model_;
   int forwarded_ = 0;
};

class ForwardingConvergence : public ::testing::TestWithParam<unsigned> {};

TEST_P(ForwardingConvergence, PacketsLeaveAsTheLfibSaysOnceQuiet) {
   Sequence seq(GetParam());
   for (int i = 1; i <= 150 && !::testing::Test::HasFailure(); ++i) {
      seq.step();
      seq.bed().agent.runUntilIdle();
      seq.check(i);
   }
   EXPECT_GT(seq.forwarded(), 100) << "the sequence programmed too little to show anything";
}

INSTANTIATE_TEST_SUITE_P(Seeds, ForwardingConvergence, ::testing::Values(1u, 2u, 3u, 4u));

}  // namespace
