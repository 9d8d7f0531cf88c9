#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include <mplsfwd/Fal/MplsSmHelper.h>
#include <mplsfwd/kor/Collections.h>

#include "Chip.h"

namespace sim {

// One route programmed through the route helper: a route forwarded into a FIB FEC.
struct FecRoute {
   Wire::MplsLabelAction labelAction = Wire::MplsLabelAction::none;
   Mpls::PayloadType payloadType = Mpls::payloadTypeAutoDecide_;
   std::uint64_t fecId = 0;
   Wire::AddressingMethod addressingMethod = Wire::AddressingMethod::unknown;
   bool operator==(const FecRoute&) const = default;
};

// The platform's FalHelper::MplsSmHelper: the route table of a platform that forwards MPLS routes
// into FIB FECs. updateRoute programs or rewrites a route when the chip's route table has room
// (this table and the chip's adjacency routes share one capacity) and answers 0; a full table
// answers lfibHwProgrammingResourceFull_, and the next N calls can be made to fail with a chosen
// return code. deleteRoute removes a route and is harmless for an absent one.
//
// Called synchronously by the transit state machine during its review.
class RouteHelper : public FalHelper::MplsSmHelper {
 public:
   RouteHelper(const Kor::Name& name, Chip& chip);

   Mpls::LfibHwProgrammingReturnCode updateRoute(const Mpls::RouteKey& routeKey,
                                                 Wire::MplsLabelAction labelAction,
                                                 Mpls::PayloadType payloadType,
                                                 const std::uint64_t& fecId,
                                                 Wire::AddressingMethod addressingMethod) override;
   void deleteRoute(const Mpls::RouteKey& routeKey) override;
   std::vector<Mpls::RouteKey> routeKeys() const override;

   void refuseNextIs(std::size_t n, Mpls::LfibHwProgrammingReturnCode rc) {
      refuse_ = n;
      refuseRc_ = rc;
   }
   std::size_t refusalsLeft() const { return refuse_; }

   const Kor::OrderedMap<Mpls::RouteKey, FecRoute>& routeMap() const { return route_; }
   bool routeHas(const Mpls::RouteKey& k) const { return route_.contains(k); }
   std::size_t routes() const { return route_.size(); }
   // The return code of the last refused call of a route still refused; absent when not refused.
   const Kor::OrderedMap<Mpls::RouteKey, Mpls::LfibHwProgrammingReturnCode>& refusedMap() const {
      return refused_;
   }
   std::uint64_t updates() const { return updates_; }
   std::uint64_t deletes() const { return deletes_; }

 private:
   Chip& chip_;
   Kor::OrderedMap<Mpls::RouteKey, FecRoute> route_;
   Kor::OrderedMap<Mpls::RouteKey, Mpls::LfibHwProgrammingReturnCode> refused_;
   std::size_t refuse_ = 0;
   Mpls::LfibHwProgrammingReturnCode refuseRc_ = Mpls::lfibHwProgrammingResourceFull_;
   std::uint64_t updates_ = 0;
   std::uint64_t deletes_ = 0;
};

}  // namespace sim
