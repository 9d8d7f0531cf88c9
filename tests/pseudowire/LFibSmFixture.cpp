#include "LFibSmFixture.h"

namespace PwTest {

void LFibSmTest::expectConsistent() const {
   ASSERT_TRUE(sm);
   // Every allocated index is a FEC the machine still knows, and the other way round.
   EXPECT_EQ(allocated(), sm->fecIdToDecapInfos());
   for (const auto& [fecId, di] : sm->fecIdToDecapInfoMap()) {
      EXPECT_EQ(fecId.adjType(), Memtab::Fib::AdjType::pwDecapAdj_);
      EXPECT_TRUE(sm->numAllocator()->isAllocated(fecId.index())) << fecId;
      EXPECT_FALSE(!di) << fecId;
   }
   // Each label's current FEC is requested, recorded for its interface, and decapsulated exactly
   // when answered.
   EXPECT_EQ(req->hwFecIdRequestMap().size(), sm->dstPortFecRequesteds());
   EXPECT_EQ(req->fecMap().size(), sm->dstPortFecRequesteds());
   for (const auto& [l, fecId] : sm->dstPortFecRequestedMap()) {
      const Wire::IntfId intf = sm->decapLabelToPwIntfId(l);
      EXPECT_TRUE(Wire::PseudowireIntfId::isVlanPseudowireIntfId(intf)) << l;
      EXPECT_TRUE(sm->labelToDecapInfo(l)) << l;
      EXPECT_EQ(sm->fecIdToDecapInfo(fecId), FalPw::PwDecapInfo(l, intf));
      const auto col = sm->pwIntfIdToFecId(intf);
      ASSERT_TRUE(col) << intf;
      EXPECT_TRUE(col->fecId(fecId));
      EXPECT_EQ(req->fec(fecId).vias(), 1u);
      EXPECT_EQ(req->hwFecIdRequest(fecId), Fal::HwFecIdRequest(fecId));
      const bool answered = resp->hwFecId(fecId) != Fal::FecToHwFecId();
      EXPECT_EQ(decap->labelToPwDecapInfoHas(l), answered) << l;
   }
   // Decap records belong to labels with decap state, for the interface that state names.
   for (const auto& [l, di] : decap->labelToPwDecapInfoMap()) {
      EXPECT_EQ(di.label(), l);
      EXPECT_TRUE(sm->labelToDecapInfo(l)) << l;
      EXPECT_EQ(sm->decapLabelToPwIntfId(l), di.pwIntfId());
   }
   // The writable status holds copies of LFIB routes only.
   for (const auto& [k, route] : ipStatus->lfibRouteMap()) {
      EXPECT_EQ(lfib->lfibRoute(k), route) << k;
   }
}

}  // namespace PwTest
