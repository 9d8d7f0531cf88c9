#pragma once

#include <cstdint>
#include <limits>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/kor/KeyedAttr.h>
#include <mplsfwd/l3/VrfName.h>

#include "AdjacencyObjects.h"
#include "MplsRoute.h"

namespace Fal {

// Everything the transit machine knows about one VRF with MPLS routing: its routes, the
// adjacencies and next hops they use, the work queued for the next review and the review's
// counters. Owned by Fal::MplsSm, one per VRF name (in practice only the default VRF). The owned
// collections hold counted references; the review sets hold keys and indices only. Lookups of
// absent keys return null.
class VrfMplsState : public Kor::Entity {
 public:
   template <class K, class V>
   using Map = Kor::HashMap<K, V>;
   template <class K>
   using Set = Kor::FlatHashSet<K>;
   using RouteMap = Mpls::DenseRouteMap<Kor::Ptr<MplsRoute>>;
   using RouteKeyQueue = Mpls::RouteKeyQueue;

   explicit VrfMplsState(const L3::VrfName& vrfName);
   ~VrfMplsState() override;

   const L3::VrfName& vrfName() const { return vrfName_; }

   // Owned collections: xIs(key) gets or creates.
   MPLSFWD_OWNED_ATTR(route, routes, Mpls::RouteKey, Kor::Unobserved{})
   MPLSFWD_OWNED_ATTR(mplsNextHop, mplsNextHops, IpAddrIntfId, Kor::Unobserved{})
   MPLSFWD_OWNED_ATTR(l3Adjacency, l3Adjacencies, std::uint64_t, Kor::Unobserved{})
   MPLSFWD_OWNED_ATTR(l2Adjacency, l2Adjacencies, std::uint64_t, Kor::Unobserved{})
   MPLSFWD_OWNED_ATTR(extFecInfo, extFecInfos, Memtab::Fib::FecId, Kor::Unobserved{})

   // Plain maps.
   MPLSFWD_KEYED_ATTR(lFibViaSetToL3Adj, lFibViaSetToL3Adjs, Mpls::LfibViaSetKey, Kor::Unobserved{})

   // The L3 adjacency of a via set, or null: one lookup.
   L3AdjacencyPtr l3AdjacencyOfViaSet(const Mpls::LfibViaSetKey& k) const {
      const std::uint64_t* index = lFibViaSetToL3Adj_.find(k);
      return index ? l3Adjacency(*index) : nullptr;
   }

   // The route lists of the adjacencies, threaded through the route records: a route joins at
   // the end of the list and leaves it in place. It must be in the VRF's route table meanwhile.
   void routeLinkIs(L3Adjacency& adj, MplsRoute& route) {
      append(adj.routeList(), route, &MplsRoute::l3Link);
   }
   void routeUnlink(L3Adjacency& adj, MplsRoute& route) {
      remove(adj.routeList(), route, &MplsRoute::l3Link);
   }
   void routeLinkIs(MplsL2Adjacency& adj, MplsRoute& route) {
      append(adj.routeList(), route, &MplsRoute::l2Link);
   }
   void routeUnlink(MplsL2Adjacency& adj, MplsRoute& route) {
      remove(adj.routeList(), route, &MplsRoute::l2Link);
   }
   // Calls f(routeKey, route) for each route of the adjacency in list order; f may unlink the
   // route it is given, not others.
   template <class F>
   void forEachRoute(const L3Adjacency& adj, F&& f) const {
      walk(adj.routeList(), &MplsRoute::l3Link, f);
   }
   template <class F>
   void forEachRoute(const MplsL2Adjacency& adj, F&& f) const {
      walk(adj.routeList(), &MplsRoute::l2Link, f);
   }

   // A zero id counts as absent.
   bool lFibViaSetToFecIdHas(const Mpls::LfibViaSetKey& k) const {
      return lFibViaSetToFecId(k).isValid();
   }
   Memtab::Fib::FecId lFibViaSetToFecId(const Mpls::LfibViaSetKey& k) const {
      return Kor::mapValueOr(lFibViaSetToFecId_, k);
   }
   void lFibViaSetToFecIdIs(const Mpls::LfibViaSetKey& k, Memtab::Fib::FecId id) {
      lFibViaSetToFecId_[k] = id;
   }
   void lFibViaSetToFecIdDel(const Mpls::LfibViaSetKey& k) { lFibViaSetToFecId_.erase(k); }
   const Map<Mpls::LfibViaSetKey, Memtab::Fib::FecId>& lFibViaSetToFecIdMap() const {
      return lFibViaSetToFecId_;
   }

   // Primary via sets held back because their backup via set was not in the LFIB, by backup.
   // Taking them empties the entry; a primary that is gone by then is simply skipped.
   void primaryAwaitingBackupIs(const Mpls::LfibViaSetKey& backup,
                                const Mpls::LfibViaSetKey& primary) {
      primariesAwaitingBackup_[backup].insert(primary);
   }
   bool primariesAwaitingBackupHas(const Mpls::LfibViaSetKey& backup) const {
      return primariesAwaitingBackup_.contains(backup);
   }
   Kor::HashSet<Mpls::LfibViaSetKey> primariesAwaitingBackupTake(
       const Mpls::LfibViaSetKey& backup) {
      auto node = primariesAwaitingBackup_.extract(backup);
      return node ? std::move(node.mapped()) : Kor::HashSet<Mpls::LfibViaSetKey>();
   }

   // Review sets: xIs(key, true) inserts, xIs(key, false) removes.
   // The route review sets are queues: a pass works through them in the order that routes
   // arrived, and no pass walks the keys that it will not reach.
   bool routeKeyForPublish(const Mpls::RouteKey& k) const { return forPublish_.contains(k); }
   void routeKeyForPublishIs(const Mpls::RouteKey& k, bool in) { setIs(forPublish_, k, in); }
   RouteKeyQueue& routeKeyForPublishSet() { return forPublish_; }
   const RouteKeyQueue& routeKeyForPublishSet() const { return forPublish_; }

   bool routeKeyForReview(const Mpls::RouteKey& k) const { return forReview_.contains(k); }
   void routeKeyForReviewIs(const Mpls::RouteKey& k, bool in) { setIs(forReview_, k, in); }
   RouteKeyQueue& routeKeyForReviewSet() { return forReview_; }
   const RouteKeyQueue& routeKeyForReviewSet() const { return forReview_; }

   // Also true while the adjacency sits in the batch that the review is working through.
   bool l3AdjForReview(std::uint64_t i) const {
      return l3AdjForReview_.contains(i) || l3AdjInReview_.contains(i);
   }
   Set<std::uint64_t>& l3AdjInReviewBatch() { return l3AdjInReview_; }
   // Queued for any reason but a neighbour's change (or taken off): the full review.
   void l3AdjForReviewIs(std::uint64_t i, bool in) {
      setIs(l3AdjForReview_, i, in);
      if (neighbourOnlyReviews_ != 0) {
         if (L3AdjacencyPtr adj = l3Adjacency(i)) {
            neighbourOnlyReviewDel(*adj);
         }
      }
   }
   // Queued because the neighbour entry of `moved`, a next hop that the adjacency resolves
   // through the monitor, changed. Until something else queues the adjacency, its review may
   // patch the next hops that moved instead of resolving every via again.
   void l3AdjForNeighbourReviewIs(L3Adjacency& adj, const IpAddrIntfId& moved) {
      if (!l3AdjForReview(adj.index())) {
         l3AdjForReview_.insert(adj.index());
         if (!adj.neighbourOnlyReview()) {
            adj.neighbourOnlyReviewIs(true);
            ++neighbourOnlyReviews_;
         }
         adj.movedNextHopsClear();
      }
      if (adj.neighbourOnlyReview()) {
         adj.movedNextHopIs(moved);
      }
   }
   // Whether the review that starts was asked for by neighbour changes only; it answers once.
   bool l3AdjNeighbourReviewTake(L3Adjacency& adj) { return neighbourOnlyReviewDel(adj); }
   Set<std::uint64_t>& l3AdjForReviewSet() { return l3AdjForReview_; }
   const Set<std::uint64_t>& l3AdjForReviewSet() const { return l3AdjForReview_; }

   bool l2AdjForReview(std::uint64_t i) const { return l2AdjForReview_.contains(i); }
   void l2AdjForReviewIs(std::uint64_t i, bool in) { setIs(l2AdjForReview_, i, in); }
   Set<std::uint64_t>& l2AdjForReviewSet() { return l2AdjForReview_; }
   const Set<std::uint64_t>& l2AdjForReviewSet() const { return l2AdjForReview_; }

   bool l2AdjPendingForDelete(std::uint64_t i) const { return l2AdjPendingForDelete_.contains(i); }
   void l2AdjPendingForDeleteIs(std::uint64_t i, bool in) { setIs(l2AdjPendingForDelete_, i, in); }
   Set<std::uint64_t>& l2AdjPendingForDeleteSet() { return l2AdjPendingForDelete_; }
   const Set<std::uint64_t>& l2AdjPendingForDeleteSet() const { return l2AdjPendingForDelete_; }

   // Derived predicates deciding how soon the VRF is reviewed.
   bool needReview() const {
      return !forPublish_.empty() || !forReview_.empty() || !l3AdjForReview_.empty() ||
             !l2AdjForReview_.empty() || !l2AdjPendingForDelete_.empty();
   }
   // Routes or L2 adjacencies that the platform refused: both are retried on the retry interval.
   bool hasUnprogrammed() const { return numUnprogrammedRoute_ != 0 || numUnprogrammedAdj_ != 0; }
   bool needReviewForUnprogrammedOnly() const { return !needReview() && hasUnprogrammed(); }
   // Nothing left that a deletion of the state would lose.
   bool empty() const {
      return route_.empty() && mplsNextHop_.empty() && l3Adjacency_.empty() &&
             l2Adjacency_.empty() && extFecInfo_.empty() && lFibViaSetToL3Adj_.empty() &&
             lFibViaSetToFecId_.empty();
   }

#define MPLSFWD_VRF_COUNTER(type, name) \
   type name() const {                  \
      return name##_;                   \
   }                                    \
   void name##Is(type v) {              \
      name##_ = v;                      \
   }                                    \
   void name##Inc(type delta = 1) {     \
      name##_ += delta;                 \
   }
   MPLSFWD_VRF_COUNTER(std::uint64_t, numUnprogrammedRoute)
   MPLSFWD_VRF_COUNTER(std::uint64_t, numUnprogrammedAdj)
   MPLSFWD_VRF_COUNTER(std::uint64_t, vrfReviewCount)
   MPLSFWD_VRF_COUNTER(std::uint64_t, routeKeyReviewed)
   MPLSFWD_VRF_COUNTER(std::uint64_t, routeKeyPublished)
   MPLSFWD_VRF_COUNTER(std::uint64_t, l3AdjReviewed)
   MPLSFWD_VRF_COUNTER(std::uint64_t, l2AdjReviewed)
   MPLSFWD_VRF_COUNTER(std::uint64_t, l2AdjDeleted)
   MPLSFWD_VRF_COUNTER(std::uint64_t, unprogRouteRetried)
   MPLSFWD_VRF_COUNTER(std::uint64_t, unprogAdjRetried)
#undef MPLSFWD_VRF_COUNTER

   double lastUnprogrammedReview() const {
      return lastUnprogrammedReview_;
   }
   void lastUnprogrammedReviewIs(double t) {
      lastUnprogrammedReview_ = t;
   }
   double unprogrammedRetryInterval() const {
      return unprogrammedRetryInterval_;
   }
   void unprogrammedRetryIntervalIs(double t) {
      unprogrammedRetryInterval_ = t;
   }

 private:
   using LinkOf = RouteLink& (MplsRoute::*)();
   static std::uint32_t labelOf(const MplsRoute& route) {
      return Kor::DenseIndex<Mpls::RouteKey>::index(route.routeKey());
   }
   // A listed route is in the route table (the lists are kept so), so its slot holds a record.
   MplsRoute& recordAt(std::uint32_t label) const {
      return **route_.find(Kor::DenseIndex<Mpls::RouteKey>::key(label));
   }
   void append(RouteList& list, MplsRoute& route, LinkOf linkOf) {
      const std::uint32_t label = labelOf(route);
      RouteLink& link = (route.*linkOf)();
      link.prev = list.tail;
      link.next = RouteList::kNone;
      if (list.tail == RouteList::kNone) {
         list.head = label;
      } else {
         (recordAt(list.tail).*linkOf)().next = label;
      }
      list.tail = label;
      ++list.size;
   }
   void remove(RouteList& list, MplsRoute& route, LinkOf linkOf) {
      RouteLink& link = (route.*linkOf)();
      if (link.prev == RouteList::kNone) {
         list.head = link.next;
      } else {
         (recordAt(link.prev).*linkOf)().next = link.next;
      }
      if (link.next == RouteList::kNone) {
         list.tail = link.prev;
      } else {
         (recordAt(link.next).*linkOf)().prev = link.prev;
      }
      link = RouteLink();
      --list.size;
   }
   template <class F>
   void walk(const RouteList& list, LinkOf linkOf, F& f) const {
      for (std::uint32_t label = list.head; label != RouteList::kNone;) {
         MplsRoute& route = recordAt(label);
         const std::uint32_t next = (route.*linkOf)().next;
         f(route.routeKey(), route);
         label = next;
      }
   }

   bool neighbourOnlyReviewDel(L3Adjacency& adj) {
      if (!adj.neighbourOnlyReview()) {
         return false;
      }
      adj.neighbourOnlyReviewIs(false);
      --neighbourOnlyReviews_;
      return true;
   }

   template <class S, class K>
   static void setIs(S& set, const K& k, bool in) {
      if (in) {
         set.insert(k);
      } else {
         set.erase(k);
      }
   }

   L3::VrfName vrfName_;
   Kor::KeyedAttr<RouteMap> route_;
   Kor::KeyedAttr<Map<IpAddrIntfId, Kor::Ptr<MplsNextHop>>> mplsNextHop_;
   Kor::KeyedAttr<Map<std::uint64_t, L3AdjacencyPtr>> l3Adjacency_;
   Kor::KeyedAttr<Map<std::uint64_t, MplsL2AdjacencyPtr>> l2Adjacency_;
   Kor::KeyedAttr<Map<Memtab::Fib::FecId, ExternalFecInfoPtr>> extFecInfo_;
   Kor::KeyedAttr<Map<Mpls::LfibViaSetKey, std::uint64_t>> lFibViaSetToL3Adj_;
   Map<Mpls::LfibViaSetKey, Memtab::Fib::FecId> lFibViaSetToFecId_;
   Map<Mpls::LfibViaSetKey, Kor::HashSet<Mpls::LfibViaSetKey>> primariesAwaitingBackup_;
   RouteKeyQueue forPublish_;
   RouteKeyQueue forReview_;
   Set<std::uint64_t> l3AdjForReview_;
   Set<std::uint64_t> l3AdjInReview_;
   // How many adjacencies wait for a review that only neighbour changes asked for.
   std::size_t neighbourOnlyReviews_ = 0;
   Set<std::uint64_t> l2AdjForReview_;
   Set<std::uint64_t> l2AdjPendingForDelete_;
   std::uint64_t numUnprogrammedRoute_ = 0;
   std::uint64_t numUnprogrammedAdj_ = 0;
   std::uint64_t vrfReviewCount_ = 0;
   std::uint64_t routeKeyReviewed_ = 0;
   std::uint64_t routeKeyPublished_ = 0;
   std::uint64_t l3AdjReviewed_ = 0;
   std::uint64_t l2AdjReviewed_ = 0;
   std::uint64_t l2AdjDeleted_ = 0;
   std::uint64_t unprogRouteRetried_ = 0;
   std::uint64_t unprogAdjRetried_ = 0;
   double lastUnprogrammedReview_ = 0.0;
   double unprogrammedRetryInterval_ = 0.0;
};

}  // namespace Fal
