#pragma once

#include <functional>
#include <memory>
#include <string>

#include <mplsfwd/kor/Ptr.h>

#include "LfibStatus.h"
#include "LfibTrackingStatus.h"

namespace Mpls {

// What an LfibTrackingSm puts on the backlogs. Bit 1: route keys (a route changed, or its via set,
// or a via of its via set). Bit 2: via-set keys (a via set changed, or one of its vias).
enum LfibTrackingMode : unsigned {
   lfibTrackingRoutes_ = 1,
   lfibTrackingViaSets_ = 2,
   lfibTrackingRoutesAndViaSets_ = 3,
};

// Watches an LFIB and turns every change that can matter to a consumer into a key on its tracking
// status's backlogs. At construction it puts every key of the LFIB as it stands on the backlog, so
// a consumer that starts late misses nothing.
class LfibTrackingSm : public Kor::PtrInterface {
 public:
   LfibTrackingSm(Kor::Ptr<const LfibStatus> lfib, Kor::Ptr<LfibTrackingStatus> status,
                  LfibTrackingMode mode, std::string traceName);
   ~LfibTrackingSm() override;

   LfibTrackingMode mode() const { return mode_; }
   const std::string& traceName() const { return traceName_; }

   // Asked, when a via set changes, whether the owner would find nothing to do for it now; a set
   // it answers true for is not put on the via-set backlog. Only an owner that drains that backlog
   // as each key arrives may set one: its answer then stands in for the handling it skips. Empty
   // (the default) puts every changed via set on the backlog.
   using ViaSetSkip = std::function<bool(const LfibViaSetKey&)>;
   void viaSetSkipIs(ViaSetSkip skip) { viaSetSkip_ = std::move(skip); }

 private:
   class LfibReactor;
   void routeChanged(const RouteKey& key);
   void viaSetChanged(const LfibViaSetKey& key);
   void viaChanged(const LfibViaKey& key);

   Kor::Ptr<const LfibStatus> lfib_;
   Kor::Ptr<LfibTrackingStatus> status_;
   LfibTrackingMode mode_;
   std::string traceName_;
   ViaSetSkip viaSetSkip_;
   std::unique_ptr<LfibReactor> reactor_;
};

}  // namespace Mpls
