#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/PseudowireLocalConnectorInfo.h>
#include <mplsfwd/mpls/PseudowireStatus.h>
#include <mplsfwd/mpls/PwDecapInfo.h>

namespace {

using ::testing::MatchesRegex;

Wire::IntfId vlanPw(std::uint32_t n) {
   return Wire::PseudowireIntfId::vlanPseudowireIntfId(n);
}
Wire::IntfId portPw(std::uint32_t n) {
   return Wire::PseudowireIntfId::portPseudowireIntfId(n);
}
Wire::MplsLabel label(std::uint32_t v) {
   return Wire::MplsLabel(v);
}

Pseudowire::LocalConnectorInfo connector(std::uint32_t eth, std::uint16_t dot1q,
                                         std::uint16_t intVlan) {
   return Pseudowire::LocalConnectorInfo(Wire::IntfId::ethernet(eth), Bridging::VlanId(dot1q),
                                         Bridging::VlanId(intVlan));
}

TEST(PseudowireLocalConnectorInfo, ValueSemanticsTextAndParse) {
   const Pseudowire::LocalConnectorInfo none;
   EXPECT_TRUE(!none);
   EXPECT_FALSE(!connector(1, 10, 1006));
   EXPECT_EQ(connector(1, 10, 1006), connector(1, 10, 1006));
   EXPECT_EQ(connector(1, 10, 1006).hash(), connector(1, 10, 1006).hash());
   // Each field takes part in equality.
   EXPECT_NE(connector(1, 10, 1006), connector(2, 10, 1006));
   EXPECT_NE(connector(1, 10, 1006), connector(1, 11, 1006));
   EXPECT_NE(connector(1, 10, 1006), connector(1, 10, 1007));

   EXPECT_EQ(connector(1, 10, 1006).stringValue(),
             "Value('Pseudowire::LocalConnectorInfo', ** {'parentIntfId': Ethernet1, "
             "'dot1qTag': 10, 'internalVlan': 1006})");
   for (const auto& c : {none, connector(1, 10, 1006), connector(7, 0, 4094)}) {
      EXPECT_EQ(Pseudowire::LocalConnectorInfo::parse(c.stringValue()), c) << c;
   }
   EXPECT_THROW(Pseudowire::LocalConnectorInfo::parse("Value('Pseudowire::LocalConnectorInfo', "
                                                      "** {'parentIntfId': Ethernet1})"),
                Kor::ParseError);
}

struct StatusWatch : Pseudowire::Status::NotifieeConst {
   using Pseudowire::Status::NotifieeConst::NotifieeConst;
   void onLocalConnectorInfo(Wire::IntfId intf) override { seen.push_back(intf); }
   std::vector<Wire::IntfId> seen;
};

TEST(PseudowireStatus, ConnectorCollectionNotifiesOnlyOnRealChange) {
   auto status = Kor::make<Pseudowire::Status>();
   StatusWatch w(status);
   EXPECT_EQ(status->localConnectorInfo(vlanPw(1)), Pseudowire::LocalConnectorInfo());

   status->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1006));
   status->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1006));
   EXPECT_EQ(w.seen.size(), 1u);
   status->localConnectorInfoIs(vlanPw(1), connector(1, 20, 1006));
   EXPECT_EQ(w.seen.size(), 2u);
   EXPECT_EQ(status->localConnectorInfo(vlanPw(1)), connector(1, 20, 1006));

   status->localConnectorInfoDel(vlanPw(9));
   EXPECT_EQ(w.seen.size(), 2u);
   status->localConnectorInfoDel(vlanPw(1));
   EXPECT_EQ(w.seen.size(), 3u);
   EXPECT_TRUE(status->localConnectorInfoMap().empty());
}

TEST(PseudowireStatus, CorruptRecordThrowsUntilRewrittenAndNotifiesAsAWrite) {
   auto status = Kor::make<Pseudowire::Status>();
   status->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1006));
   status->localConnectorInfoIs(vlanPw(2), connector(2, 10, 1007));
   StatusWatch w(status);

   status->localConnectorInfoCorruptIs(vlanPw(1), true);
   status->localConnectorInfoCorruptIs(vlanPw(1), true);
   EXPECT_EQ(w.seen.size(), 1u);
   EXPECT_TRUE(status->localConnectorInfoCorrupt(vlanPw(1)));
   try {
      (void)status->localConnectorInfo(vlanPw(1));
      FAIL() << "a corrupt record was read without error";
   } catch (const Pseudowire::CorruptionError& e) {
      const std::string what = e.what();
      EXPECT_THAT(what, MatchesRegex("PodArray::set expected size <= [0-9]+, instead got [0-9]+\\. "
                                     "Buffer is at address: 0x[0-9a-f]+ with contents:"
                                     "( [0-9a-f][0-9a-f])+"));
   }
   // Only the marked record is affected.
   EXPECT_EQ(status->localConnectorInfo(vlanPw(2)), connector(2, 10, 1007));

   // Rewriting the same value repairs the record: a change, even though the value is equal.
   status->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1006));
   EXPECT_EQ(w.seen.size(), 2u);
   EXPECT_EQ(status->localConnectorInfo(vlanPw(1)), connector(1, 10, 1006));

   // A record that was never written can be corrupt too; deleting it clears the mark.
   status->localConnectorInfoCorruptIs(vlanPw(5), true);
   EXPECT_THROW((void)status->localConnectorInfo(vlanPw(5)), Pseudowire::CorruptionError);
   status->localConnectorInfoDel(vlanPw(5));
   EXPECT_EQ(w.seen.size(), 4u);
   EXPECT_EQ(status->localConnectorInfo(vlanPw(5)), Pseudowire::LocalConnectorInfo());

   status->corruptionDetected("first");
   status->corruptionDetected("second");
   EXPECT_EQ(status->corruptions(), 2u);
   EXPECT_EQ(status->lastCorruption(), "second");
}

struct DecapWatch : FalPw::DecapInfoTable::NotifieeConst {
   using FalPw::DecapInfoTable::NotifieeConst::NotifieeConst;
   void onLabelToPwDecapInfo(Wire::MplsLabel l) override { seen.push_back(l); }
   std::vector<Wire::MplsLabel> seen;
};

TEST(DecapInfoTable, KeyedMutatorsNotifyOnlyOnRealChange) {
   auto table = Kor::make<FalPw::DecapInfoTable>();
   DecapWatch w(table);
   EXPECT_EQ(table->labelToPwDecapInfo(label(100)), FalPw::PwDecapInfo());

   table->labelToPwDecapInfoIs(label(100), FalPw::PwDecapInfo(label(100), portPw(1)));
   table->labelToPwDecapInfoIs(label(100), FalPw::PwDecapInfo(label(100), portPw(1)));
   EXPECT_EQ(w.seen.size(), 1u);
   table->labelToPwDecapInfoIs(label(100), FalPw::PwDecapInfo(label(100), portPw(2)));
   EXPECT_EQ(w.seen.size(), 2u);
   table->labelToPwDecapInfoDel(label(200));
   EXPECT_EQ(w.seen.size(), 2u);

   table->labelToPwDecapInfoIs(label(200), FalPw::PwDecapInfo(label(200), vlanPw(2)));
   w.seen.clear();
   table->labelToPwDecapInfoDelAll();
   EXPECT_EQ(w.seen.size(), 2u);
   EXPECT_EQ(table->labelToPwDecapInfos(), 0u);
}

}  // namespace
