// How the review classifies an L3 adjacency: one row per rule, each a small LFIB, the plan asked
// for once the machine has settled (or right after a last change, before it is reviewed).
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "MplsSmTestAccess.h"
#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;
using Way = Fal::L3AdjPlan::Way;
using Skip = Fal::L3AdjPlan::Skip;
using Backup = Fal::L3AdjPlan::Backup;

struct PlanCase {
   const char* name;
   bool fecForwarding;
   // Builds the LFIB and returns the via set whose adjacency is classified.
   std::function<Mpls::LfibViaSetKey(TransitAgent&)> build;
   Way way;
   Skip skip;
   Backup backup;
};

Mpls::LfibViaSetKey plain(TransitAgent& a, std::uint32_t index, const char* nextHop = "10.0.0.2",
                          Mpls::LfibViaSetKey backup = Mpls::LfibViaSetKey()) {
   return a.viaSet(index, {a.mplsVia(index, nextHop, kVlan10)}, backup);
}

Mpls::LfibViaSetKey routed(TransitAgent& a, Mpls::LfibViaSetKey set) {
   a.route(100, set);
   a.settle();
   return set;
}

Memtab::Fib::FecId externalFec(std::uint64_t index) {
   return Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::fibAdj_, index);
}

TEST(TransitL3AdjPlan, EachRuleOfTheReview) {
   const auto tunnel = Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(3);
   auto tunnelSet = [&](TransitAgent& a) {
      return routed(a, a.viaSet(1, {a.mplsViaWith(1, "10.0.0.2", tunnel, {100})}));
   };
   auto backupPair = [](TransitAgent& a) {
      return routed(a, plain(a, 1, "10.0.0.2", plain(a, 2)));
   };
   const std::vector<PlanCase> cases = {
       {"a regular set goes the L2 way", false,
        [](TransitAgent& a) { return routed(a, plain(a, 1)); }, Way::l2, Skip::none, Backup::none},
       {"a set of the FIB source goes the FEC way", true,
        [](TransitAgent& a) {
           return routed(
               a, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}, {}, Mpls::lfibSourceOspfSr_));
        },
        Way::fec, Skip::none, Backup::none},
       {"tunnel vias go the FEC way", true, tunnelSet, Way::fec, Skip::none, Backup::none},
       {"tunnel vias need FEC forwarding", false, tunnelSet, Way::skip, Skip::needsFecForTunnel,
        Backup::none},
       {"a set with a ready backup goes the FEC way and links it", true, backupPair, Way::fec,
        Skip::none, Backup::link},
       {"a backup relation needs FEC forwarding", false, backupPair, Way::skip,
        Skip::needsFecForBackup, Backup::link},
       {"a backup missing from the LFIB is awaited", true,
        [](TransitAgent& a) {
           return routed(
               a, plain(a, 1, "10.0.0.2",
                        Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, 2, Mpls::lfibSourceStatic_)));
        },
        Way::skip, Skip::backupMissing, Backup::await},
       {"a backup with a backup of its own", true,
        [](TransitAgent& a) {
           return routed(a, plain(a, 1, "10.0.0.2", plain(a, 2, "10.0.1.2", plain(a, 3))));
        },
        Way::skip, Skip::backupHasBackup, Backup::none},
       {"a set that dropped its backup lets it go", true,
        [&](TransitAgent& a) {
           backupPair(a);
           return plain(a, 1);  // rewritten without the backup, not reviewed yet
        },
        Way::l2, Skip::none, Backup::drop},
       {"an insane set", false,
        [](TransitAgent& a) {
           routed(a, plain(a, 1));
           // Rewritten with a label stack the transit layer refuses, not reviewed yet.
           return a.viaSet(1, {a.mplsViaWith(2, "10.0.0.2", kVlan10, {100, 200})});
        },
        Way::skip, Skip::notSane, Backup::none},
       {"a set without vias", false, [](TransitAgent& a) { return routed(a, a.viaSet(1, {})); },
        Way::skip, Skip::noVias, Backup::none},
       {"a set deleted under its routes", false,
        [](TransitAgent& a) {
           auto set = routed(a, plain(a, 1));
           a.viaSetDel(set);
           return set;
        },
        Way::skip, Skip::viaSetDeleted, Backup::none},
       {"an external FEC set", true,
        [](TransitAgent& a) { return routed(a, a.extFecViaSet(1, externalFec(7))); },
        Way::externalFec, Skip::none, Backup::none},
       {"an external FEC set without FEC forwarding", false,
        [](TransitAgent& a) { return routed(a, a.extFecViaSet(1, externalFec(7))); }, Way::skip,
        Skip::extFecRejected, Backup::none},
   };
   for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      TransitAgent::Options options;
      options.fecForwarding = c.fecForwarding;
      TransitAgent a(options);
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
      const Mpls::LfibViaSetKey set = c.build(a);
      auto l3Adj = a.l3Adj(set);
      ASSERT_TRUE(l3Adj);
      const Fal::L3AdjPlan plan = Fal::MplsSmTestAccess::classifyL3Adj(*a.sm(), *a.state(), *l3Adj);
      EXPECT_EQ(plan.way, c.way);
      EXPECT_EQ(plan.skip, c.skip);
      EXPECT_EQ(plan.backup, c.backup);
   }
}

}  // namespace
