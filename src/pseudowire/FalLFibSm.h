#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/loom/NumAllocator.h>
#include <mplsfwd/loom/NumAllocatorConfig.h>
#include <mplsfwd/loom/NumAllocatorStatus.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/FibFec.h>
#include <mplsfwd/mpls/FibFecId.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/PseudowireStatus.h>
#include <mplsfwd/mpls/PwDecapInfo.h>
#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/MplsLabel.h>

#include "PwExplanation.h"
#include "PwIntfIdToFecIdCollection.h"

namespace Fal {

// The pseudowire decap state machine. It follows the LFIB routes whose adjacency ends a
// pseudowire and makes the platform able to decapsulate their label:
// - a port pseudowire gets its decap record (label, pseudowire interface) in the decap info table
//   at once;
// - a VLAN pseudowire gets a decap FEC (adjacency type pwDecapAdj_, one per label, numbered by
//   its own allocator) that puts the payload into the connector's internal VLAN; the FEC and a
//   hardware FEC id request go to the request table, and the decap record is written only once
//   the platform has answered with a hardware FEC id.
// It also mirrors the LFIB's routes, adjacencies, external-FEC adjacencies and the default-route
// resolution setting from the read-only MPLS status into the writable one, and rewrites decap
// FECs in place when a pseudowire's local connector changes.
//
// Driven by its reactors on the read-only MPLS status, the pseudowire status and the FEC response
// table; unlike the other state machines it does its work in the handlers. Built by the agent
// (lFibSmFactory) and kept for its lifetime; construction ends with handleInitialized().
//
// Invariants, between handler calls:
// - a label with an entry in dstPortFecRequested also has one in labelToDecapInfo and in
//   decapLabelToPwIntfId, its FEC id is in that interface's pwIntfIdToFecId entry, and the request
//   table holds its FEC and request;
// - a FEC id in fecIdToDecapInfo is allocated: either it is the current FEC of its label, or its
//   label was withdrawn after the platform answered and the id waits for the answer to go;
// - a decap record of a VLAN pseudowire is in the decap info table only while its FEC is
//   requested and answered;
// - every request in the request table has its record in fecIdToDecapInfo.
class LFibSm : public Kor::PtrInterface {
 public:
   using RouteKeySet = Kor::OrderedSet<Mpls::RouteKey>;

   LFibSm(Kor::Ptr<const Mpls::Status> mplsStatus, Kor::Ptr<Mpls::Status> mplsIpStatus,
          Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable,
          Kor::Ptr<const Pseudowire::Status> pwStatus,
          Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest,
          Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse,
          Kor::Ptr<Loom::TimerWheel> timerWheel);
   ~LFibSm() override;
   LFibSm(const LFibSm&) = delete;
   LFibSm& operator=(const LFibSm&) = delete;

   const Kor::Ptr<const Mpls::Status>& mplsStatus() const { return mplsStatus_; }
   const Kor::Ptr<Mpls::Status>& mplsIpStatus() const { return mplsIpStatus_; }
   const Kor::Ptr<FalPw::DecapInfoTable>& decapInfoTable() const { return decapInfoTable_; }
   const Kor::Ptr<const Pseudowire::Status>& pwStatus() const { return pwStatus_; }
   const Kor::Ptr<FecIdToHwFecIdRequest>& dstPortToHwFecIdRequest() const {
      return dstPortToHwFecIdRequest_;
   }
   const Kor::Ptr<const FecIdToHwFecIdResponse>& dstPortToHwFecIdResponse() const {
      return dstPortToHwFecIdResponse_;
   }
   const Kor::Ptr<Loom::TimerWheel>& timerWheel() const { return timerWheel_; }
   bool initialized() const { return initialized_; }

   // The decap FEC index allocator.
   const Kor::Ptr<const Loom::NumAllocatorConfig>& numAllocatorConfig() const {
      return numAllocatorConfig_;
   }
   const Kor::Ptr<Loom::NumAllocatorStatus>& numAllocatorStatus() const {
      return numAllocatorStatus_;
   }
   const Kor::Ptr<Loom::NumAllocator>& numAllocator() const { return numAllocator_; }
   // (Re)creates the allocator on the given configuration and status; the clock measures the
   // quarantine of released indices.
   void numAllocatorIs(Kor::Ptr<const Loom::NumAllocatorConfig> config,
                       Kor::Ptr<Loom::NumAllocatorStatus> status, Kor::Ptr<Kor::Clock> clock);

   // Own state; lookups of absent keys yield the default.
   FalPw::PwDecapInfo fecIdToDecapInfo(Memtab::Fib::FecId fecId) const;
   std::size_t fecIdToDecapInfos() const { return fecIdToDecapInfo_.size(); }
   const Kor::HashMap<Memtab::Fib::FecId, FalPw::PwDecapInfo>& fecIdToDecapInfoMap() const {
      return fecIdToDecapInfo_;
   }
   bool labelToDecapInfo(Wire::MplsLabel label) const { return labelToDecapInfo_.contains(label); }
   std::size_t labelToDecapInfos() const { return labelToDecapInfo_.size(); }
   Memtab::Fib::FecId dstPortFecRequested(Wire::MplsLabel label) const;
   std::size_t dstPortFecRequesteds() const { return dstPortFecRequested_.size(); }
   const Kor::HashMap<Wire::MplsLabel, Memtab::Fib::FecId>& dstPortFecRequestedMap() const {
      return dstPortFecRequested_;
   }
   Wire::IntfId decapLabelToPwIntfId(Wire::MplsLabel label) const;
   std::size_t decapLabelToPwIntfIds() const { return decapLabelToPwIntfId_.size(); }
   // Null when the interface has no decap FEC.
   Kor::Ptr<PwIntfIdToFecIdCollection> pwIntfIdToFecId(Wire::IntfId pwIntfId) const;
   std::size_t pwIntfIdToFecIds() const { return pwIntfIdToFecId_.size(); }
   // The routes waiting for the pseudowire adjacency `index` to appear; empty when none.
   RouteKeySet pwNonExistingAdj(std::uint64_t index) const;
   std::size_t pwNonExistingAdjs() const { return pwNonExistingAdj_.size(); }

   // Where one route stands and what holds it back, read from the state without changing it
   // (FalLFibSmExplain.cpp).
   PwExplanation explainRoute(const Mpls::RouteKey& routeKey) const;

 private:
   // The tests' one way to the work methods below.
   friend struct LFibSmTestAccess;

   // Handlers, called by the reactors (and by start-up).
   void handleInitialized();
   void handleLFibRoute(const Mpls::RouteKey& routeKey);
   void handleLFibAdjacency(std::uint64_t index);
   void handleLFibPwAdjacency(std::uint64_t index);
   void handleLFibExtFecAdjacency(std::uint64_t index);
   void handleNexthopResolutionAllowDefaultRoute();
   void handleConnectorChange(Wire::IntfId pwIntfId);
   void handleHwFecIdResponse(Memtab::Fib::FecId fecId);

   // The decap FEC of a label: the cached one, or a newly allocated one.
   Memtab::Fib::FecId getOrAllocateDecapFecId(Wire::MplsLabel label);
   // Returns a decap FEC id to the allocator; no request or answer may be left for it.
   void freeDecapFecId(Memtab::Fib::FecId fecId);

   class MplsStatusReactor;
   class PwStatusReactor;
   class HwFecIdResponseReactor;

   bool vlanPwDecapSupported() const {
      return dstPortToHwFecIdRequest_ && dstPortToHwFecIdResponse_;
   }
   bool hwFecIdRequested(Memtab::Fib::FecId fecId) const;
   bool hwFecIdAnswered(Memtab::Fib::FecId fecId) const;
   // The connector of a pseudowire interface; nullopt when its record is corrupt (traced and
   // reported to the pseudowire status).
   std::optional<Pseudowire::LocalConnectorInfo> readConnector(Wire::IntfId pwIntfId) const;
   Memtab::Fib::Fec decapFec(Memtab::Fib::FecId fecId,
                             const Pseudowire::LocalConnectorInfo& connector) const;

   void doInstallPortPwDecap(Wire::MplsLabel label, Wire::IntfId pwIntfId);
   void doInstallVlanPwDecap(Wire::MplsLabel label, Wire::IntfId pwIntfId);
   // Withdraws whatever decap state the label has: its decap record, its FEC request, and its FEC
   // id (at once when unanswered, else when the answer goes).
   void doRemoveDecapState(Wire::MplsLabel label);
   Kor::Ptr<PwIntfIdToFecIdCollection> pwIntfIdToFecIdIs(Wire::IntfId pwIntfId);
   void pwIntfIdToFecIdDel(Wire::IntfId pwIntfId, Memtab::Fib::FecId fecId);
   void pwAdjUseIs(const Mpls::RouteKey& routeKey, std::uint64_t index);
   void pwAdjUseDel(const Mpls::RouteKey& routeKey);

   Kor::Ptr<const Mpls::Status> mplsStatus_;
   Kor::Ptr<Mpls::Status> mplsIpStatus_;
   Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable_;
   Kor::Ptr<const Pseudowire::Status> pwStatus_;
   Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest_;
   Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse_;
   Kor::Ptr<Loom::TimerWheel> timerWheel_;

   Kor::Ptr<const Loom::NumAllocatorConfig> numAllocatorConfig_;
   Kor::Ptr<Loom::NumAllocatorStatus> numAllocatorStatus_;
   Kor::Ptr<Loom::NumAllocator> numAllocator_;

   Kor::HashMap<Memtab::Fib::FecId, FalPw::PwDecapInfo> fecIdToDecapInfo_;
   Kor::HashSet<Wire::MplsLabel> labelToDecapInfo_;
   Kor::HashMap<Wire::MplsLabel, Memtab::Fib::FecId> dstPortFecRequested_;
   Kor::HashMap<Wire::MplsLabel, Wire::IntfId> decapLabelToPwIntfId_;
   Kor::HashMap<Wire::IntfId, Kor::Ptr<PwIntfIdToFecIdCollection>> pwIntfIdToFecId_;
   // Routes that name a pseudowire adjacency which does not exist yet, by adjacency index.
   Kor::OrderedMap<std::uint64_t, RouteKeySet> pwNonExistingAdj_;
   // Every route handled as a pseudowire route, by the adjacency it names and back, so that a
   // change of that adjacency reaches the routes that use it.
   Kor::OrderedMap<std::uint64_t, RouteKeySet> pwAdjToRouteKeys_;
   Kor::HashMap<Mpls::RouteKey, std::uint64_t> routeKeyToPwAdj_;
   bool initialized_ = false;

   std::unique_ptr<MplsStatusReactor> mplsStatusReactor_;
   std::unique_ptr<PwStatusReactor> pwStatusReactor_;
   std::unique_ptr<HwFecIdResponseReactor> hwFecIdResponseReactor_;
};

// Entry points for the agent: build the state machine on its inputs and outputs (the same seven
// references as the constructor).
Kor::Ptr<LFibSm> LFibSmIs(Kor::Ptr<const Mpls::Status> mplsStatus,
                          Kor::Ptr<Mpls::Status> mplsIpStatus,
                          Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable,
                          Kor::Ptr<const Pseudowire::Status> pwStatus,
                          Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest,
                          Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse,
                          Kor::Ptr<Loom::TimerWheel> timerWheel);
Kor::Ptr<LFibSm> lFibSmFactory(Kor::Ptr<const Mpls::Status> mplsStatus,
                               Kor::Ptr<Mpls::Status> mplsIpStatus,
                               Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable,
                               Kor::Ptr<const Pseudowire::Status> pwStatus,
                               Kor::Ptr<FecIdToHwFecIdRequest> dstPortToHwFecIdRequest,
                               Kor::Ptr<const FecIdToHwFecIdResponse> dstPortToHwFecIdResponse,
                               Kor::Ptr<Loom::TimerWheel> timerWheel);

}  // namespace Fal
