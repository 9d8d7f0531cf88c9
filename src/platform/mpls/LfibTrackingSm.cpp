#include "LfibTrackingSm.h"

#include <vector>

#include <mplsfwd/log/Trace.h>

namespace Mpls {

namespace {
Log::Trace trackingTrace("LfibTrackingSm");
}

class LfibTrackingSm::LfibReactor : public LfibStatus::NotifieeConst {
 public:
   LfibReactor(Kor::Ptr<const LfibStatus> lfib, LfibTrackingSm& sm)
       : LfibStatus::NotifieeConst(std::move(lfib)), sm_(sm) {}
   void onLfibRoute(const RouteKey& k) override { sm_.routeChanged(k); }
   void onViaSet(const LfibViaSetKey& k) override { sm_.viaSetChanged(k); }
   void onMplsVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onExtFecVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onPwVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onVlanVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onIpLookupVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onEvpnVlanFloodVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onEvpnVlanAwareVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onEvpnVlanAwareFloodVia(const LfibViaKey& k) override { sm_.viaChanged(k); }
   void onEvpnEthernetSegmentFilterVia(const LfibViaKey& k) override { sm_.viaChanged(k); }

 private:
   LfibTrackingSm& sm_;
};

LfibTrackingSm::LfibTrackingSm(Kor::Ptr<const LfibStatus> lfib, Kor::Ptr<LfibTrackingStatus> status,
                               LfibTrackingMode mode, std::string traceName)
    : lfib_(std::move(lfib)),
      status_(std::move(status)),
      mode_(mode),
      traceName_(std::move(traceName)) {
   reactor_ = std::make_unique<LfibReactor>(lfib_, *this);
   reactor_->ownerIs(this);
   TRACE8(trackingTrace, traceName_ << ": tracking mode " << unsigned(mode_));
   if (mode_ & lfibTrackingViaSets_) {
      lfib_->forEachViaSetKey(
          [this](const LfibViaSetKey& key) { status_->viaSetKeyBacklogIs(key); });
   }
   if (mode_ & lfibTrackingRoutes_) {
      for (const auto& [key, route] : lfib_->lfibRouteMap()) {
         status_->routeKeyBacklogIs(key);
      }
   }
}

LfibTrackingSm::~LfibTrackingSm() {
   reactor_->deadIs(true);
}

void LfibTrackingSm::routeChanged(const RouteKey& key) {
   if (mode_ & lfibTrackingRoutes_) {
      TRACE9(trackingTrace, traceName_ << ": route " << key);
      status_->routeKeyBacklogIs(key);
   }
}

void LfibTrackingSm::viaSetChanged(const LfibViaSetKey& key) {
   TRACE9(trackingTrace, traceName_ << ": via set " << key);
   if ((mode_ & lfibTrackingViaSets_) && !(viaSetSkip_ && viaSetSkip_(key))) {
      status_->viaSetKeyBacklogIs(key);
   }
   if (mode_ & lfibTrackingRoutes_) {
      for (const auto& routeKey : lfib_->routeKeysOfViaSet(key)) {
         status_->routeKeyBacklogIs(routeKey);
      }
   }
}

void LfibTrackingSm::viaChanged(const LfibViaKey& key) {
   TRACE9(trackingTrace, traceName_ << ": via " << key);
   // Copy: a consumer reacting to the backlog may change the LFIB under us.
   auto namers = lfib_->viaSetsOfVia(key);
   const std::vector<LfibViaSetKey> viaSets(namers.begin(), namers.end());
   for (const auto& viaSetKey : viaSets) {
      viaSetChanged(viaSetKey);
   }
}

}  // namespace Mpls
