#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/log/TraceConfig.h>
#include <mplsfwd/log/TraceSink.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/PseudowireStatus.h>
#include <mplsfwd/pseudowire/FalLFibSm.h>

namespace PwTest {

using Memtab::Fib::FecId;

inline Wire::MplsLabel label(std::uint32_t v) {
   return Wire::MplsLabel(v);
}
inline Mpls::RouteKey key(std::uint32_t label) {
   return Mpls::RouteKey(Wire::MplsLabel(label));
}
inline Wire::IntfId vlanPw(std::uint32_t n) {
   return Wire::PseudowireIntfId::vlanPseudowireIntfId(n);
}
inline Wire::IntfId portPw(std::uint32_t n) {
   return Wire::PseudowireIntfId::portPseudowireIntfId(n);
}
inline FecId decapFecId(std::uint64_t index) {
   return FecId::fecIdForAdjType(Memtab::Fib::AdjType::pwDecapAdj_, index);
}
inline Pseudowire::LocalConnectorInfo connector(std::uint32_t eth, std::uint16_t dot1q,
                                                std::uint16_t intVlan) {
   return Pseudowire::LocalConnectorInfo(Wire::IntfId::ethernet(eth), Bridging::VlanId(dot1q),
                                         Bridging::VlanId(intVlan));
}

// A route that ends a pseudowire: it names the pseudowire adjacency `adjIndex`.
inline Mpls::LfibRoute pwRoute(std::uint32_t topLabel, std::uint64_t adjIndex,
                               std::uint32_t metric = 0) {
   Mpls::LfibRoute r(
       key(topLabel),
       Mpls::LfibViaSetKey(Mpls::viaTypePseudowire_, static_cast<std::uint32_t>(adjIndex)), metric);
   r.adjacencyKeyIs(Mpls::AdjacencyKey(Mpls::adjacencyTypePseudowire_, adjIndex));
   return r;
}

// A transit route over the MPLS adjacency `adjIndex`.
inline Mpls::LfibRoute mplsRoute(std::uint32_t topLabel, std::uint64_t adjIndex) {
   Mpls::LfibRoute r(key(topLabel), Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_,
                                                        static_cast<std::uint32_t>(adjIndex)));
   r.adjacencyKeyIs(Mpls::AdjacencyKey(Mpls::adjacencyTypeMpls_, adjIndex));
   return r;
}

// Counts what is written to the request table.
struct RequestWatch : Fal::FecIdToHwFecIdRequest::NotifieeConst {
   using Fal::FecIdToHwFecIdRequest::NotifieeConst::NotifieeConst;
   void onFec(FecId) override { ++fecWrites; }
   void onHwFecIdRequest(FecId) override { ++requestWrites; }
   int fecWrites = 0;
   int requestWrites = 0;
};

// Records every change of the decap info table, in order.
struct DecapWatch : FalPw::DecapInfoTable::NotifieeConst {
   using FalPw::DecapInfoTable::NotifieeConst::NotifieeConst;
   void onLabelToPwDecapInfo(Wire::MplsLabel l) override { labels.push_back(l); }
   std::vector<Wire::MplsLabel> labels;
};

// A FEC id service that answers every request from inside the request (the same hardware id for
// the same FEC every time), answers anew with a fresh id each write of a requested FEC (the
// deletion that precedes the request's own included), and withdraws the answer from inside the
// request's deletion, as a platform on the same thread may.
struct ImmediateFecIdService : Fal::FecIdToHwFecIdRequest::NotifieeConst {
   ImmediateFecIdService(Kor::Ptr<const Fal::FecIdToHwFecIdRequest> req,
                         Kor::Ptr<Fal::FecIdToHwFecIdResponse> resp)
       : Fal::FecIdToHwFecIdRequest::NotifieeConst(req), response(resp) {}
   bool requested(FecId id) const {
      return notifier()->hwFecIdRequest(id) != Fal::HwFecIdRequest();
   }
   void onHwFecIdRequest(FecId id) override {
      if (requested(id)) {
         response->hwFecIdIs(Fal::FecToHwFecId(id, 5000 + id.index()));
      } else {
         response->hwFecIdDel(id);
      }
   }
   void onFec(FecId id) override {
      if (requested(id)) {
         response->hwFecIdIs(Fal::FecToHwFecId(id, ++hwFecId));
      }
   }
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> response;
   Fal::HwFecId hwFecId = 9000;
};

// The pseudowire state machine on in-memory tables and a simulated clock. The platform's FEC id
// service is played by the test itself (answer / withdraw) unless a test installs one.
class LFibSmTest : public ::testing::Test {
 protected:
   void SetUp() override { Log::TraceConfig::configIs("LFibSm/0-9"); }
   void TearDown() override {
      sm = nullptr;
      Log::TraceConfig::configIs("");
   }

   void start() { sm = Fal::lFibSmFactory(lfib, ipStatus, decap, pw, req, resp, wheel); }

   void pwAdj(std::uint64_t index, Wire::IntfId intf) {
      lfib->lfibPwAdjacencyIs(Mpls::PwAdjacency(index, intf));
   }
   void answer(FecId id, Fal::HwFecId hw = 777) { resp->hwFecIdIs(Fal::FecToHwFecId(id, hw)); }
   void withdraw(FecId id) { resp->hwFecIdDel(id); }
   bool decapped(std::uint32_t l) const { return decap->labelToPwDecapInfoHas(label(l)); }
   std::uint64_t allocated() const { return sm->numAllocatorStatus()->allocated(); }
   bool traced(const std::string& fragment) const { return traces.contains(fragment); }

   // Whole-state invariants of the machine and its tables; checked after every step.
   void expectConsistent() const;

   Kor::Ptr<Loom::EventLoop> loop = Kor::make<Loom::EventLoop>();
   Kor::Ptr<Loom::TimerWheel> wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   Kor::Ptr<Mpls::Status> lfib = Kor::make<Mpls::Status>("mplsStatus");
   Kor::Ptr<Mpls::Status> ipStatus = Kor::make<Mpls::Status>("mplsIpStatus");
   Kor::Ptr<FalPw::DecapInfoTable> decap = Kor::make<FalPw::DecapInfoTable>();
   Kor::Ptr<Pseudowire::Status> pw = Kor::make<Pseudowire::Status>();
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> req = Kor::make<Fal::FecIdToHwFecIdRequest>("request");
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> resp = Kor::make<Fal::FecIdToHwFecIdResponse>("response");
   Log::MemoryTraceSink traces;
   Log::TraceSinkScope traceScope{traces};
   Kor::Ptr<Fal::LFibSm> sm;
};

}  // namespace PwTest
