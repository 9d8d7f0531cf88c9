#include <gtest/gtest.h>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/mpls/FibFec.h>
#include <mplsfwd/mpls/FibFecId.h>

namespace {

using Memtab::Fib::AdjType;
using Memtab::Fib::Fec;
using Memtab::Fib::FecId;
using Memtab::Fib::Via;
using Memtab::Fib::ViaIndex;

std::string rangeErrorText(const std::function<void()>& f) {
   try {
      f();
   } catch (const Kor::RangeError& e) {
      return e.what();
   }
   return "no range error";
}

TEST(FecId, BitLayout) {
   FecId id = FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 5);
   EXPECT_EQ(id.value(), 0x0A00000000000005u);
   EXPECT_EQ(id.adjType(), AdjType::mplsNexthopAdj_);
   EXPECT_EQ(id.index(), 5u);
   FecId pw = FecId::fecIdForAdjType(AdjType::pwDecapAdj_, 0xFFFFFFFF);
   EXPECT_EQ(pw.value(), 0x0E000000FFFFFFFFu);
   EXPECT_EQ(pw.adjType(), AdjType::pwDecapAdj_);
   EXPECT_EQ(pw.index(), 0xFFFFFFFFu);
   // The largest index fills all 56 bits below the type without touching it.
   FecId wide = FecId::fecIdForAdjType(AdjType::fibAdj_, FecId::kIndexMask);
   EXPECT_EQ(wide.adjType(), AdjType::fibAdj_);
   EXPECT_EQ(wide.index(), FecId::kIndexMask);
   EXPECT_THROW(FecId::fecIdForAdjType(AdjType::fibAdj_, FecId::kIndexMask + 1), Kor::RangeError);
}

TEST(FecIdDeathTest, AdjTypeBoundIsAnInvariant) {
   EXPECT_EQ(Memtab::Fib::adjTypeMax(), 21u);
   FecId at20(std::uint64_t(20) << 56 | 1);
   EXPECT_EQ(static_cast<int>(at20.adjType()), 20);
   FecId at21(std::uint64_t(21) << 56 | 1);
   EXPECT_DEATH(at21.adjType(), "\\(value_ >> Fib::adjTypePos\\(\\)\\) < Fib::adjTypeMax\\(\\)");
   FecId top(~std::uint64_t(0));
   EXPECT_DEATH(top.adjType(), "adjTypeMax");
   EXPECT_THROW(FecId::fecIdForAdjType(static_cast<AdjType>(21), 1), Kor::RangeError);
   EXPECT_NO_THROW(FecId::fecIdForAdjType(static_cast<AdjType>(20), 1));
}

TEST(FecId, ValidityOrderHashText) {
   EXPECT_FALSE(FecId().isValid());
   EXPECT_TRUE(FecId(1).isValid());
   // Index 0 of a real type is a valid id: only the all-zero value is invalid.
   EXPECT_TRUE(FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 0).isValid());
   EXPECT_FALSE(FecId::fecIdForAdjType(AdjType::nullAdj_, 0).isValid());
   EXPECT_LT(FecId(1), FecId(2));
   EXPECT_LT(FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 0xFFFFFFFF),
             FecId::fecIdForAdjType(AdjType::pwDecapAdj_, 0));
   Kor::HashSet<FecId> s{FecId(1), FecId(1), FecId::fecIdForAdjType(AdjType::pwDecapAdj_, 1)};
   EXPECT_EQ(s.size(), 2u);
   FecId id = FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 7);
   EXPECT_EQ(Kor::toText(id), std::to_string(id.value()));
   EXPECT_EQ(FecId::parse(id.stringValue()), id);
}

TEST(FibViaIndex, RefusedValueLeavesTheOldOne) {
   ViaIndex i(3);
   EXPECT_THROW(i.valueIs(512), Kor::RangeError);
   EXPECT_EQ(i.value(), 3u);
}

Via mplsVia(const char* nh, std::uint32_t label) {
   return Via(Wire::IpGenAddr::parse(nh), Wire::IntfId::ethernet(1),
              Wire::MplsLabelOperation{Wire::MplsLabel(label)}, Wire::MplsLabelAction::push);
}

TEST(FibFec, AcceptsViasAtEveryPositionUpTo511) {
   Fec fec(FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 1));
   fec.viaIs(0, mplsVia("10.0.0.1", 16));
   fec.viaIs(511, mplsVia("10.0.0.2", 17));
   EXPECT_EQ(fec.vias(), 512u);
   EXPECT_EQ(fec.via(0), mplsVia("10.0.0.1", 16));
   EXPECT_EQ(fec.via(511), mplsVia("10.0.0.2", 17));
   EXPECT_EQ(fec.via(200), Via());
   EXPECT_EQ(rangeErrorText([&] { fec.viaIs(512, mplsVia("10.0.0.3", 18)); }),
             "ViaIndex::value < ViaIndex::min or > ViaIndex::max not allowed");
   EXPECT_EQ(fec.vias(), 512u);
   EXPECT_THROW(fec.via(512), Kor::RangeError);
}

TEST(FibFec, EqualityCoversIdViasAndBackup) {
   FecId id = FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 1);
   Fec a(id);
   Fec b(id);
   a.viaIs(0, mplsVia("10.0.0.1", 16));
   EXPECT_NE(a, b);
   b.viaIs(0, mplsVia("10.0.0.1", 16));
   EXPECT_EQ(a, b);
   EXPECT_EQ(a.hash(), b.hash());
   b.backupFecIdIs(FecId::fecIdForAdjType(AdjType::mplsNexthopAdj_, 2));
   EXPECT_NE(a, b);
   a.backupFecIdIs(b.backupFecId());
   EXPECT_EQ(a, b);
   Via withVlan = mplsVia("10.0.0.1", 16);
   withVlan.vlanIdIs(Bridging::VlanId(100));
   b.viaIs(0, withVlan);
   EXPECT_NE(a, b);
   EXPECT_NE(Fec(id), Fec());
   EXPECT_EQ(Fec(), Fec());
}

TEST(FibFec, DropViasCountAsVias) {
   Fec none(FecId(5));
   Fec drops(FecId(5));
   drops.viaIs(0, Via());
   drops.viaIs(1, Via());
   EXPECT_EQ(drops.vias(), 2u);
   EXPECT_EQ(drops.via(1), Via());
   EXPECT_NE(drops, none);
   drops.viaDelAll();
   EXPECT_EQ(drops, none);
}

TEST(FibFec, Text) {
   Fec fec(FecId(5));
   fec.viaIs(0, mplsVia("10.0.0.1", 16));
   EXPECT_EQ(Kor::toText(fec),
             "fec 5 backupFecId 0 vias 1: [0] via nextHop 10.0.0.1 intf Ethernet1 labelStack [16] "
             "labelAction push vlanId 0");
}

}  // namespace
