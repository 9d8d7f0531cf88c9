#pragma once

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>

#include "LfibKeys.h"
#include "RouteKey.h"

namespace Mpls {

// Backlogs of LFIB keys that changed and still wait to be handled, filled by an LfibTrackingSm
// and drained by a state machine, which deletes each key once handled. Ordered, so that a drain
// that stops to yield resumes from the start of what is left in a stable order. Route keys are
// a bit per label (a whole LFIB queued is 128 KB and each key one bit operation), walked in
// label order like the ordered set they replace.
class LfibTrackingStatus : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<LfibTrackingStatus> {
    public:
      using Kor::Notifiee<LfibTrackingStatus>::Notifiee;
      virtual void onViaSetKeyBacklog(const LfibViaSetKey&) {}
      virtual void onRouteKeyBacklog(const RouteKey&) {}
   };
   using ViaSetKeyBacklog = Kor::OrderedSet<LfibViaSetKey>;
   using RouteKeyBacklog = DenseRouteKeySet;

   explicit LfibTrackingStatus(Kor::Name name) : Kor::Entity(std::move(name)) {}

   bool viaSetKeyBacklog(const LfibViaSetKey& k) const { return viaSetKeyBacklog_.contains(k); }
   void viaSetKeyBacklogIs(const LfibViaSetKey& k) {
      if (viaSetKeyBacklog_.insert(k).second) {
         notify(&NotifieeConst::onViaSetKeyBacklog, k);
      }
   }
   void viaSetKeyBacklogDel(const LfibViaSetKey& k) {
      if (viaSetKeyBacklog_.erase(k)) {
         notify(&NotifieeConst::onViaSetKeyBacklog, k);
      }
   }
   const ViaSetKeyBacklog& viaSetKeyBacklogSet() const { return viaSetKeyBacklog_; }

   bool routeKeyBacklog(const RouteKey& k) const { return routeKeyBacklog_.contains(k); }
   void routeKeyBacklogIs(const RouteKey& k) {
      if (routeKeyBacklog_.insert(k).second) {
         notify(&NotifieeConst::onRouteKeyBacklog, k);
      }
   }
   void routeKeyBacklogDel(const RouteKey& k) {
      if (routeKeyBacklog_.erase(k)) {
         notify(&NotifieeConst::onRouteKeyBacklog, k);
      }
   }
   const RouteKeyBacklog& routeKeyBacklogSet() const { return routeKeyBacklog_; }

 private:
   ViaSetKeyBacklog viaSetKeyBacklog_;
   RouteKeyBacklog routeKeyBacklog_;
};

}  // namespace Mpls
