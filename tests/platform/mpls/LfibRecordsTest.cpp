#include <gtest/gtest.h>

#include <functional>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/mpls/LfibExtFecVia.h>
#include <mplsfwd/mpls/LfibKeys.h>
#include <mplsfwd/mpls/LfibMplsVia.h>
#include <mplsfwd/mpls/LfibRoute.h>
#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/mpls/LfibViaSet.h>

namespace {

using namespace Mpls;

const char* const kIndexRangeText =
    "LfibViaIndexRange::value < LfibViaIndexRange::min or > LfibViaIndexRange::max not allowed";

std::string rangeErrorText(const std::function<void()>& f) {
   try {
      f();
   } catch (const Kor::RangeError& e) {
      return e.what();
   }
   return "no range error";
}

LfibViaKey mplsViaKey(std::uint32_t index) {
   return LfibViaKey(viaTypeMplsIp_, index, lfibSourceStatic_);
}

TEST(LfibViaSetKey, DefaultKeyMeansNoBackup) {
   LfibViaSet set(LfibViaSetKey(viaTypeMplsIp_, 5));
   EXPECT_FALSE(set.hasBackup());
   set.backupViaSetKeyIs(LfibViaSetKey(viaTypeMplsIp_, 6));
   EXPECT_TRUE(set.hasBackup());
   set.backupViaSetKeyIs(LfibViaSetKey());
   EXPECT_FALSE(set.hasBackup());
}

TEST(LfibViaSetKey, OrderHashAndTraceText) {
   LfibViaSetKey a(viaTypeMplsIp_, 5, lfibSourceStatic_);
   LfibViaSetKey b(viaTypeMplsIp_, 6, lfibSourceStatic_);
   LfibViaSetKey c(viaTypeExternalFec_, 1, lfibSourceBgp_);
   EXPECT_LT(LfibViaSetKey(), a);
   EXPECT_LT(a, b);
   EXPECT_LT(b, c);  // the via type ranks first
   EXPECT_LT(a, LfibViaSetKey(viaTypeMplsIp_, 5, lfibSourceLdp_));
   Kor::HashSet<LfibViaSetKey> s{a, b, c, LfibViaSetKey(),
                                 LfibViaSetKey(viaTypeMplsIp_, 5, lfibSourceStatic_)};
   EXPECT_EQ(s.size(), 4u);
   EXPECT_EQ("lFib viaSet " + Kor::toText(a),
             "lFib viaSet index 5 source static viaType viaTypeMplsIp");
   // Via keys and via-set keys with the same fields are different things and say so.
   LfibViaKey v(viaTypeMplsIp_, 5, lfibSourceStatic_);
   EXPECT_EQ(Kor::toText(v), "via viaTypeMplsIp index 5 source static");
   EXPECT_EQ(v, LfibViaKey(viaTypeMplsIp_, 5, lfibSourceStatic_));
   EXPECT_NE(v, LfibViaKey(viaTypeMplsIp_, 5, lfibSourceLdp_));
   EXPECT_EQ(v.hash(), LfibViaKey(viaTypeMplsIp_, 5, lfibSourceStatic_).hash());
}

TEST(LfibViaIndexRange, RefusedValueLeavesTheOldOne) {
   LfibViaIndexRange i(4);
   EXPECT_THROW(i.valueIs(128), Kor::RangeError);
   EXPECT_EQ(i.value(), 4u);
}

TEST(LfibViaSet, Position127IsTheLastOne) {
   LfibViaSet set(LfibViaSetKey(viaTypeMplsIp_, 1));
   for (std::uint32_t i = 0; i < 128; ++i) {
      set.viaAppend(mplsViaKey(i));
   }
   EXPECT_EQ(set.vias(), 128u);
   EXPECT_EQ(set.via(127), mplsViaKey(127));
   EXPECT_EQ(rangeErrorText([&] { set.viaAppend(mplsViaKey(128)); }), kIndexRangeText);
   EXPECT_EQ(set.vias(), 128u);
   EXPECT_EQ(rangeErrorText([&] { set.via(128); }), kIndexRangeText);
   EXPECT_EQ(rangeErrorText([&] { set.viaIs(128, mplsViaKey(1)); }), kIndexRangeText);
   EXPECT_EQ(rangeErrorText([&] { set.viasIs(129); }), kIndexRangeText);
   set.viasIs(3);
   EXPECT_EQ(set.vias(), 3u);
}

TEST(LfibViaSet, EqualityLooksOnlyAtViasInUse) {
   LfibViaSetKey key(viaTypeMplsIp_, 1);
   LfibViaSet a(key, {mplsViaKey(1), mplsViaKey(2)});
   LfibViaSet b(key);
   b.viaIs(0, mplsViaKey(1));
   b.viaIs(1, mplsViaKey(2));
   b.viaIs(2, mplsViaKey(3));  // beyond vias(): not part of the set
   b.viasIs(2);
   EXPECT_EQ(a, b);
   EXPECT_EQ(a.hash(), b.hash());
   EXPECT_EQ(a.stringValue(), b.stringValue());
   b.viasIs(3);
   EXPECT_NE(a, b);
   LfibViaSet swapped(key, {mplsViaKey(2), mplsViaKey(1)});
   EXPECT_NE(a, swapped);  // position matters
   LfibViaSet typed(key, {mplsViaKey(1), mplsViaKey(2)}, viaSetTypeWeightedEcmp_);
   EXPECT_NE(a, typed);
   LfibViaSet backed = a;
   backed.backupViaSetKeyIs(LfibViaSetKey(viaTypeMplsIp_, 2));
   EXPECT_NE(a, backed);
}

TEST(LfibViaSet, Text) {
   LfibViaSet set(LfibViaSetKey(viaTypeExternalFec_, 4, lfibSourceBgp_),
                  {LfibViaKey(viaTypeExternalFec_, 9, lfibSourceBgp_)}, viaSetTypeEcmp_);
   EXPECT_EQ(Kor::toText(set),
             "lFib viaSet index 4 source bgp viaType viaTypeExternalFec viaSetType viaSetTypeEcmp "
             "vias 1: [0] via viaTypeExternalFec index 9 source bgp backup index 0 source unknown "
             "viaType viaTypeInvalid");
}

TEST(LfibMplsVia, LabelStacksOfAnySizeAreRecords) {
   LfibMplsVia pop(mplsViaKey(1), Wire::IpGenAddr::parse("2001:db8::1"), Wire::IntfId(),
                   Wire::MplsLabelOperation(), Wire::MplsLabelAction::pop, payloadTypeIpv6_);
   EXPECT_EQ(pop.labelStack().stackSize(), 0);
   EXPECT_EQ(pop.labelStack().labelStack(0).value(), 0x100000u);
   LfibMplsVia two = pop;
   two.labelStackIs(Wire::MplsLabelOperation{Wire::MplsLabel(16), Wire::MplsLabel(17)});
   EXPECT_EQ(two.labelStack().stackSize(), 2);
   EXPECT_NE(two, pop);
   EXPECT_NE(two.hash(), pop.hash());
   EXPECT_EQ(Kor::toText(pop),
             "LfibMplsVia via viaTypeMplsIp index 1 source static nextHop 2001:db8::1 intf  "
             "labelStack [] labelAction pop payloadType payloadTypeIpv6");
}

TEST(LfibMplsVia, EveryFieldTakesPartInEquality) {
   LfibMplsVia base(mplsViaKey(1), Wire::IpGenAddr::parse("10.0.0.1"), Wire::IntfId::ethernet(1),
                    Wire::MplsLabelOperation{Wire::MplsLabel(16)});
   std::vector<LfibMplsVia> variants(5, base);
   variants[0].nextHopIs(Wire::IpGenAddr::parse("10.0.0.2"));
   variants[1].intfIs(Wire::IntfId::ethernet(2));
   variants[2].labelStackIs(Wire::MplsLabelOperation{Wire::MplsLabel(17)});
   variants[3].labelActionIs(Wire::MplsLabelAction::push);
   variants[4].payloadTypeIs(payloadTypeMpls_);
   variants.push_back(LfibMplsVia(mplsViaKey(2), base.nextHop(), base.intf(), base.labelStack()));
   for (const auto& v : variants) {
      EXPECT_NE(v, base) << v;
   }
}

TEST(LfibExtFecVia, CarriesFecIdAndAction) {
   LfibViaKey key(viaTypeExternalFec_, 1, lfibSourceBgp_);
   Memtab::Fib::FecId fec = Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::fibAdj_, 77);
   LfibExtFecVia via(key, fec, Wire::MplsLabelAction::pop);
   EXPECT_TRUE(via.fecId().isValid());
   EXPECT_FALSE(LfibExtFecVia().fecId().isValid());
   EXPECT_FALSE(LfibExtFecVia(key, Memtab::Fib::FecId()).fecId().isValid());
   EXPECT_EQ(via, LfibExtFecVia(key, fec, Wire::MplsLabelAction::pop));
   EXPECT_NE(via, LfibExtFecVia(key, fec, Wire::MplsLabelAction::swap));
   EXPECT_NE(via, LfibExtFecVia(key, Memtab::Fib::FecId(fec.value() + 1)));
   EXPECT_EQ(Kor::toText(via), "LfibExtFecVia via viaTypeExternalFec index 1 source bgp fecId " +
                                   fec.stringValue() + " labelAction pop");
}

TEST(LfibRoute, FieldsEqualityAndText) {
   RouteKey key(Wire::MplsLabel(16));
   LfibViaSetKey viaSet(viaTypeMplsIp_, 5, lfibSourceLdp_);
   LfibRoute route(key, viaSet, 10, lfibSourceLdp_);
   LfibRoute same(key, viaSet, 10, lfibSourceLdp_);
   EXPECT_EQ(route, same);
   EXPECT_EQ(route.hash(), same.hash());
   same.adjacencyKeyIs(AdjacencyKey(adjacencyTypePseudowire_, 4));
   EXPECT_NE(route, same);
   LfibRoute other = route;
   other.viaSetKeyIs(LfibViaSetKey(viaTypeExternalFec_, 5, lfibSourceLdp_));
   EXPECT_NE(route, other);
   EXPECT_EQ(Kor::toText(same),
             "lFib route 16 viaSet index 5 source ldp viaType viaTypeMplsIp metric 10 source ldp "
             "adjacency adjacencyTypePseudowire 4");
}

}  // namespace
