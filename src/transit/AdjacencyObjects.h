#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <mplsfwd/Fal/FecRecords.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/mpls/FibFecId.h>
#include <mplsfwd/mpls/HardwareL2Adjacency.h>
#include <mplsfwd/mpls/HardwareL2ViaSet.h>
#include <mplsfwd/mpls/LfibKeys.h>
#include <mplsfwd/mpls/LfibTypes.h>
#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/wire/MplsLabelAction.h>

#include "IpAddrIntfId.h"

namespace Fal {

class L3Adjacency;
class MplsL2Adjacency;
class ExternalFecInfo;

using L3AdjacencyPtr = Kor::Ptr<L3Adjacency>;
using MplsL2AdjacencyPtr = Kor::Ptr<MplsL2Adjacency>;
using ExternalFecInfoPtr = Kor::Ptr<ExternalFecInfo>;
using RouteKeySet = Kor::FlatHashSet<Mpls::RouteKey>;
using L3AdjacencySet = Kor::HashSet<L3AdjacencyPtr>;

// The routes of one adjacency: a list threaded through the routes' own records (MplsRoute), by
// label, in the order in which they joined. A million routes share a thousand adjacencies, so a
// set of route keys per adjacency cost a hash insertion (and the table's growth) per route and
// tens of bytes per route; the links cost two labels in each record. The VRF state (which finds
// a record by its label) links, unlinks and walks them.
struct RouteList {
   static constexpr std::uint32_t kNone = 0xFFFFFFFFu;
   std::uint32_t head = kNone;
   std::uint32_t tail = kNone;
   std::uint32_t size = 0;
};
// A route's place in one RouteList.
struct RouteLink {
   std::uint32_t prev = RouteList::kNone;
   std::uint32_t next = RouteList::kNone;
};

// The transit machine's bookkeeping objects. They hold each other by counted references in both
// directions (an L3 adjacency holds its L2 adjacency, external FEC and backup; those hold the L3
// adjacencies in their sets); the cycles are broken by the deletion order of the state machine,
// never left to the counts. Only the VRF state creates them.

// One per LFIB via set in use in a VRF; its index is also the index of the hardware L3 adjacency.
class L3Adjacency : public Kor::PtrInterface {
 public:
   explicit L3Adjacency(std::uint64_t index) : index_(index) {}

   std::uint64_t index() const { return index_; }

   const Mpls::LfibViaSetKey& lFibViaSetKey() const { return lFibViaSetKey_; }
   void lFibViaSetKeyIs(const Mpls::LfibViaSetKey& k) { lFibViaSetKey_ = k; }
   const ExternalFecInfoPtr& extFecInfo() const { return extFecInfo_; }
   void extFecInfoIs(ExternalFecInfoPtr v) { extFecInfo_ = std::move(v); }
   Wire::MplsLabelAction labelAction() const { return labelAction_; }
   void labelActionIs(Wire::MplsLabelAction v) { labelAction_ = v; }
   Mpls::PayloadType payloadType() const { return payloadType_; }
   void payloadTypeIs(Mpls::PayloadType v) { payloadType_ = v; }
   const MplsL2AdjacencyPtr& l2Adjacency() const { return l2Adjacency_; }
   void l2AdjacencyIs(MplsL2AdjacencyPtr v) { l2Adjacency_ = std::move(v); }
   const Kor::Ptr<Mpls::Hardware::L2Adjacency>& hwL2Adjacency() const { return hwL2Adjacency_; }
   void hwL2AdjacencyIs(Kor::Ptr<Mpls::Hardware::L2Adjacency> v) { hwL2Adjacency_ = std::move(v); }
   bool unprogrammed() const { return unprogrammed_; }
   void unprogrammedIs(bool v) { unprogrammed_ = v; }

   bool nextHop(const IpAddrIntfId& nh) const { return nextHop_.contains(nh); }
   void nextHopIs(const IpAddrIntfId& nh) { nextHop_.insert(nh); }
   bool nextHopDel(const IpAddrIntfId& nh) { return nextHop_.erase(nh) != 0; }
   void nextHopDelAll() { nextHop_.clear(); }
   std::size_t nextHops() const { return nextHop_.size(); }
   const Kor::HashSet<IpAddrIntfId>& nextHopSet() const { return nextHop_; }

   // The routes that use the adjacency (VrfMplsState walks and changes the list).
   std::size_t routeKeys() const { return routes_.size; }
   const RouteList& routeList() const { return routes_; }
   RouteList& routeList() { return routes_; }

   bool primaryAdj(std::uint64_t index) const { return primaryAdj_.contains(index); }
   void primaryAdjIs(std::uint64_t index) { primaryAdj_.insert(index); }
   bool primaryAdjDel(std::uint64_t index) { return primaryAdj_.erase(index) != 0; }
   std::size_t primaryAdjs() const { return primaryAdj_.size(); }
   const Kor::HashSet<std::uint64_t>& primaryAdjSet() const { return primaryAdj_; }

   const L3AdjacencyPtr& backupAdj() const { return backupAdj_; }
   void backupAdjIs(L3AdjacencyPtr v) { backupAdj_ = std::move(v); }

   // Set by a full review that programmed the adjacency through an L2 adjacency with every via
   // resolved by the next-hop monitor, cleared as the next full review starts or the via set
   // changes: until then the hardware adjacency's vias are what the via set resolves to, and a
   // neighbour's move can be patched into them.
   bool neighbourPatchable() const { return neighbourPatchable_; }
   void neighbourPatchableIs(bool v) { neighbourPatchable_ = v; }
   // Set while the adjacency waits for a review that only neighbour changes asked for (the VRF
   // state sets and clears it with its review set).
   bool neighbourOnlyReview() const { return neighbourOnlyReview_; }
   void neighbourOnlyReviewIs(bool v) { neighbourOnlyReview_ = v; }
   // The next hops whose neighbour entries changed meanwhile. A few are kept; more, and
   // movedNextHopsKnown() turns false.
   static constexpr std::size_t kMovedNextHopsKept = 2;
   void movedNextHopsClear() { movedNextHops_ = 0; }
   void movedNextHopIs(const IpAddrIntfId& nh) {
      for (std::size_t i = 0; i < movedNextHops_ && i < kMovedNextHopsKept; ++i) {
         if (movedNextHop_[i] == nh) {
            return;
         }
      }
      if (movedNextHops_ < kMovedNextHopsKept) {
         movedNextHop_[movedNextHops_] = nh;
      }
      if (movedNextHops_ <= kMovedNextHopsKept) {
         ++movedNextHops_;
      }
   }
   bool movedNextHopsKnown() const { return movedNextHops_ <= kMovedNextHopsKept; }
   std::size_t movedNextHops() const { return movedNextHops_; }
   const IpAddrIntfId& movedNextHop(std::size_t i) const { return movedNextHop_[i]; }

   // Whether the via set passed the sanity check in review pass `pass` (0: not checked). The LFIB
   // does not change during a pass, so the routes of one via set need the check once per pass.
   bool viaSetSaneInPass(std::uint64_t pass, bool& sane) const {
      sane = viaSetSane_;
      return pass != 0 && saneCheckPass_ == pass;
   }
   void viaSetSaneInPassIs(std::uint64_t pass, bool sane) {
      saneCheckPass_ = pass;
      viaSetSane_ = sane;
   }

 private:
   std::uint64_t index_;
   Mpls::LfibViaSetKey lFibViaSetKey_;
   ExternalFecInfoPtr extFecInfo_;
   Wire::MplsLabelAction labelAction_{};
   Mpls::PayloadType payloadType_{};
   MplsL2AdjacencyPtr l2Adjacency_;
   Kor::HashSet<IpAddrIntfId> nextHop_;
   Kor::Ptr<Mpls::Hardware::L2Adjacency> hwL2Adjacency_;
   bool unprogrammed_ = false;
   RouteList routes_;
   Kor::HashSet<std::uint64_t> primaryAdj_;
   L3AdjacencyPtr backupAdj_;
   std::uint64_t saneCheckPass_ = 0;
   bool viaSetSane_ = false;
   bool neighbourPatchable_ = false;
   bool neighbourOnlyReview_ = false;
   std::uint8_t movedNextHops_ = 0;
   std::array<IpAddrIntfId, kMovedNextHopsKept> movedNextHop_;
};

// One per distinct resolved layer-2 via set in a VRF: the unit programmed to hardware. L3
// adjacencies whose next hops resolve to the same L2 via set share it.
class MplsL2Adjacency : public Kor::PtrInterface {
 public:
   explicit MplsL2Adjacency(std::uint64_t index) : index_(index) {}

   std::uint64_t index() const { return index_; }
   const Mpls::Hardware::L2ViaSet& l2ViaSet() const { return l2ViaSet_; }
   void l2ViaSetIs(const Mpls::Hardware::L2ViaSet& v) { l2ViaSet_ = v; }

   bool l3Adjacency(const L3AdjacencyPtr& a) const { return l3Adjacency_.contains(a); }
   void l3AdjacencyIs(const L3AdjacencyPtr& a) { l3Adjacency_.insert(a); }
   bool l3AdjacencyDel(const L3AdjacencyPtr& a) { return l3Adjacency_.erase(a) != 0; }
   std::size_t l3Adjacencies() const { return l3Adjacency_.size(); }
   const L3AdjacencySet& l3AdjacencySet() const { return l3Adjacency_; }

   // The routes programmed through the adjacency (VrfMplsState walks and changes the list).
   std::size_t routeKeys() const { return routes_.size; }
   const RouteList& routeList() const { return routes_; }
   RouteList& routeList() { return routes_; }

 private:
   std::uint64_t index_;
   Mpls::Hardware::L2ViaSet l2ViaSet_;
   L3AdjacencySet l3Adjacency_;
   RouteList routes_;
};

// One per next hop in use in a VRF, with the L3 adjacencies that resolve through it in each of
// the two resolution modes.
class MplsNextHop : public Kor::PtrInterface {
 public:
   explicit MplsNextHop(const IpAddrIntfId& nextHopInfo) : nextHopInfo_(nextHopInfo) {}

   const IpAddrIntfId& nextHopInfo() const { return nextHopInfo_; }
   const Wire::IpGenAddr& nextHopIp() const { return nextHopInfo_.ipGenAddr(); }
   Wire::IntfId l3Intf() const { return nextHopInfo_.l3Intf(); }

   bool resolvedByRR(const L3AdjacencyPtr& a) const { return resolvedByRR_.contains(a); }
   void resolvedByRRIs(const L3AdjacencyPtr& a) { resolvedByRR_.insert(a); }
   bool resolvedByRRDel(const L3AdjacencyPtr& a) { return resolvedByRR_.erase(a) != 0; }
   const L3AdjacencySet& resolvedByRRSet() const { return resolvedByRR_; }

   bool resolvedByMNH(const L3AdjacencyPtr& a) const { return resolvedByMNH_.contains(a); }
   void resolvedByMNHIs(const L3AdjacencyPtr& a) { resolvedByMNH_.insert(a); }
   bool resolvedByMNHDel(const L3AdjacencyPtr& a) { return resolvedByMNH_.erase(a) != 0; }
   const L3AdjacencySet& resolvedByMNHSet() const { return resolvedByMNH_; }

   bool unused() const { return resolvedByRR_.empty() && resolvedByMNH_.empty(); }

 private:
   IpAddrIntfId nextHopInfo_;
   L3AdjacencySet resolvedByRR_;
   L3AdjacencySet resolvedByMNH_;
};

// One per FIB FEC that L3 adjacencies forward into, with the hardware FEC id once the platform
// gave one.
class ExternalFecInfo : public Kor::PtrInterface {
 public:
   explicit ExternalFecInfo(Memtab::Fib::FecId fecId) : fecId_(fecId) {}

   Memtab::Fib::FecId fecId() const { return fecId_; }
   HwFecId hwId() const { return hwId_; }
   void hwIdIs(HwFecId v) { hwId_ = v; }
   const Mpls::LfibViaSetKey& lFibViaSetKey() const { return lFibViaSetKey_; }
   void lFibViaSetKeyIs(const Mpls::LfibViaSetKey& k) { lFibViaSetKey_ = k; }

   bool dependentL3Adjacency(const L3AdjacencyPtr& a) const {
      return dependentL3Adjacency_.contains(a);
   }
   void dependentL3AdjacencyIs(const L3AdjacencyPtr& a) { dependentL3Adjacency_.insert(a); }
   bool dependentL3AdjacencyDel(const L3AdjacencyPtr& a) {
      return dependentL3Adjacency_.erase(a) != 0;
   }
   const L3AdjacencySet& dependentL3AdjacencySet() const { return dependentL3Adjacency_; }

   bool dependentRouteKey(const Mpls::RouteKey& k) const { return dependentRouteKey_.contains(k); }
   void dependentRouteKeyIs(const Mpls::RouteKey& k) { dependentRouteKey_.insert(k); }
   bool dependentRouteKeyDel(const Mpls::RouteKey& k) { return dependentRouteKey_.erase(k) != 0; }
   const RouteKeySet& dependentRouteKeySet() const { return dependentRouteKey_; }

 private:
   Memtab::Fib::FecId fecId_;
   HwFecId hwId_ = 0;
   L3AdjacencySet dependentL3Adjacency_;
   RouteKeySet dependentRouteKey_;
   Mpls::LfibViaSetKey lFibViaSetKey_;
};

}  // namespace Fal
