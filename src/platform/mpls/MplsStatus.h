#pragma once

#include <cstdint>
#include <ostream>

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/MplsLabelAction.h>

#include "FibFecId.h"
#include "LfibKeys.h"
#include "LfibRoute.h"
#include "LfibViaSet.h"

namespace Mpls {

// An adjacency that ends a pseudowire: the pseudowire interface whose decapsulated traffic it
// carries. A default record means "no such adjacency".
class PwAdjacency {
 public:
   PwAdjacency() = default;
   PwAdjacency(std::uint64_t index, Wire::IntfId pwIntfId) : index_(index), pwIntfId_(pwIntfId) {}
   std::uint64_t index() const { return index_; }
   Wire::IntfId pwIntfId() const { return pwIntfId_; }
   bool operator==(const PwAdjacency&) const = default;

 private:
   std::uint64_t index_ = 0;
   Wire::IntfId pwIntfId_;
};

// An adjacency that forwards into a FIB FEC with a label action.
class ExtFecAdjacency {
 public:
   ExtFecAdjacency() = default;
   ExtFecAdjacency(std::uint64_t index, Memtab::Fib::FecId fecId, Wire::MplsLabelAction action)
       : index_(index), fecId_(fecId), labelAction_(action) {}
   std::uint64_t index() const { return index_; }
   Memtab::Fib::FecId fecId() const { return fecId_; }
   Wire::MplsLabelAction labelAction() const { return labelAction_; }
   bool operator==(const ExtFecAdjacency&) const = default;

 private:
   std::uint64_t index_ = 0;
   Memtab::Fib::FecId fecId_;
   Wire::MplsLabelAction labelAction_ = Wire::MplsLabelAction::pop;
};

std::ostream& operator<<(std::ostream& os, const PwAdjacency& a);
std::ostream& operator<<(std::ostream& os, const ExtFecAdjacency& a);

// The MPLS status: the LFIB as it is published for the forwarding agents (routes naming their
// adjacency, MPLS adjacencies by index as via sets, pseudowire and external-FEC adjacencies) and
// the setting that lets next hops resolve through the default route. One instance is published
// read-only by the control plane; another, writable one is filled by copying from it.
class Status : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<Status> {
    public:
      using Kor::Notifiee<Status>::Notifiee;
      virtual void onLfibRoute(const RouteKey&) {}
      virtual void onLfibAdjacency(std::uint64_t /*index*/) {}
      virtual void onLfibPwAdjacency(std::uint64_t /*index*/) {}
      virtual void onLfibExtFecAdjacency(std::uint64_t /*index*/) {}
      virtual void onNexthopResolutionAllowDefaultRoute() {}
   };
   using RouteMap = Kor::HashMap<RouteKey, LfibRoute>;
   using AdjacencyMap = Kor::HashMap<std::uint64_t, LfibViaSet>;
   using PwAdjacencyMap = Kor::HashMap<std::uint64_t, PwAdjacency>;
   using ExtFecAdjacencyMap = Kor::HashMap<std::uint64_t, ExtFecAdjacency>;

   explicit Status(Kor::Name name) : Kor::Entity(std::move(name)) {}

   LfibRoute lfibRoute(const RouteKey& k) const;
   bool lfibRouteHas(const RouteKey& k) const { return route_.contains(k); }
   void lfibRouteIs(const LfibRoute& r) {
      if (Kor::mapAssignIfChanged(route_, r.key(), r)) {
         notify(&NotifieeConst::onLfibRoute, r.key());
      }
   }
   void lfibRouteDel(const RouteKey& k) {
      if (route_.erase(k)) {
         notify(&NotifieeConst::onLfibRoute, k);
      }
   }
   const RouteMap& lfibRouteMap() const { return route_; }

   // The via set of an MPLS adjacency; a via set with no vias when absent.
   LfibViaSet lfibAdjacency(std::uint64_t index) const;
   bool lfibAdjacencyHas(std::uint64_t index) const { return adjacency_.contains(index); }
   void lfibAdjacencyIs(std::uint64_t index, const LfibViaSet& viaSet) {
      if (Kor::mapAssignIfChanged(adjacency_, index, viaSet)) {
         notify(&NotifieeConst::onLfibAdjacency, index);
      }
   }
   void lfibAdjacencyDel(std::uint64_t index) {
      if (adjacency_.erase(index)) {
         notify(&NotifieeConst::onLfibAdjacency, index);
      }
   }
   const AdjacencyMap& lfibAdjacencyMap() const { return adjacency_; }

   PwAdjacency lfibPwAdjacency(std::uint64_t index) const {
      return Kor::mapValueOr(pwAdjacency_, index);
   }
   bool lfibPwAdjacencyHas(std::uint64_t index) const { return pwAdjacency_.contains(index); }
   void lfibPwAdjacencyIs(const PwAdjacency& a) {
      if (Kor::mapAssignIfChanged(pwAdjacency_, a.index(), a)) {
         notify(&NotifieeConst::onLfibPwAdjacency, a.index());
      }
   }
   void lfibPwAdjacencyDel(std::uint64_t index) {
      if (pwAdjacency_.erase(index)) {
         notify(&NotifieeConst::onLfibPwAdjacency, index);
      }
   }
   const PwAdjacencyMap& lfibPwAdjacencyMap() const { return pwAdjacency_; }
   // The pseudowire adjacency that a route's adjacency key names; default when absent or when the
   // key is not of the pseudowire type.
   PwAdjacency getPwAdjacency(const AdjacencyKey& key) const;

   ExtFecAdjacency lfibExtFecAdjacency(std::uint64_t index) const {
      return Kor::mapValueOr(extFecAdjacency_, index);
   }
   bool lfibExtFecAdjacencyHas(std::uint64_t index) const {
      return extFecAdjacency_.contains(index);
   }
   void lfibExtFecAdjacencyIs(std::uint64_t index, Memtab::Fib::FecId fecId,
                              Wire::MplsLabelAction labelAction) {
      ExtFecAdjacency a(index, fecId, labelAction);
      if (Kor::mapAssignIfChanged(extFecAdjacency_, index, a)) {
         notify(&NotifieeConst::onLfibExtFecAdjacency, index);
      }
   }
   void lfibExtFecAdjacencyDel(std::uint64_t index) {
      if (extFecAdjacency_.erase(index)) {
         notify(&NotifieeConst::onLfibExtFecAdjacency, index);
      }
   }
   const ExtFecAdjacencyMap& lfibExtFecAdjacencyMap() const { return extFecAdjacency_; }

   bool nexthopResolutionAllowDefaultRoute() const { return allowDefaultRoute_; }
   void nexthopResolutionAllowDefaultRouteIs(bool v) {
      if (Kor::assignIfChanged(allowDefaultRoute_, v)) {
         notify(&NotifieeConst::onNexthopResolutionAllowDefaultRoute);
      }
   }

 private:
   RouteMap route_;
   AdjacencyMap adjacency_;
   PwAdjacencyMap pwAdjacency_;
   ExtFecAdjacencyMap extFecAdjacency_;
   bool allowDefaultRoute_ = false;
};

}  // namespace Mpls
