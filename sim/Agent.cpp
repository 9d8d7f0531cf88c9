#include "Agent.h"

#include <algorithm>

#include <mplsfwd/log/LogFacility.h>
#include <mplsfwd/transit/MplsResourceLog.h>

namespace sim {

Agent::Agent(AgentOptions options) : options_(options) {
   loop_ = Kor::make<Loom::EventLoop>(options_.timeMode);
   clock_ = loop_->clockIs("MplsSm-clock");
   timerWheel_ = Kor::make<Loom::TimerWheel>("timerWheel", loop_);
   attrLogSm_ = Kor::make<Loom::AttrLogSm>();
   Log::LogFacility::timeSourceIs(loop_.ptr());
   if (options_.captureLogs) {
      logScope_ = std::make_unique<Log::LogSinkScope>(logSink_);
   }

   lfib_ = Kor::make<Mpls::LfibStatus>("lfib");
   mplsStatus_ = Kor::make<Mpls::Status>("mplsStatus");
   routingInfo_ = Kor::make<Mpls::RoutingInfo>("routingInfo");
   routingInfo_->mplsRoutingIs(options_.mplsRouting);
   l3Status_ = Kor::make<Fal::L3Status>("l3Status");
   if (options_.defaultVrfName) {
      l3Status_->vrfNameIs(Fal::VrfId(0), L3::VrfName::defaultVrf());
   }
   ipRoutes_ = Kor::make<Routing::Hardware::RouteStatus>("routeStatus");
   pwStatus_ = Kor::make<Pseudowire::Status>("pseudowireStatus");

   hwConfig_ = Fal::mplsHwConfigFactory("mplsHwConfig");
   hwStatus_ = Fal::mplsHwStatusFactory("mplsHwStatus");
   hwMplsStatus_ = Kor::make<Mpls::Hardware::Status>("hwMplsStatus");
   routeReactorConfig_ = Kor::make<Fal::RouteReactorConfig>("routeReactorConfig");
   route6ReactorConfig_ = Kor::make<Fal::Route6ReactorConfig>("route6ReactorConfig");
   monitoredNhSm_ = Kor::make<Fal::MonitoredNexthopSm>("monitoredNhSm");
   entityManager_ = Kor::make<Regdb::EntityManager>("entityManager");
   fecRequest_ = Kor::make<Fal::FecIdToHwFecIdRequest>("fecIdToHwFecIdRequest");
   fecResponse_ = Kor::make<Fal::FecIdToHwFecIdResponse>("fecIdToHwFecIdResponse");
   pwFecRequest_ = Kor::make<Fal::FecIdToHwFecIdRequest>("dstPortToHwFecIdRequest");
   pwFecResponse_ = Kor::make<Fal::FecIdToHwFecIdResponse>("dstPortToHwFecIdResponse");
   mplsIpStatus_ = Kor::make<Mpls::Status>("mplsIpStatus");
   decapInfoTable_ = Kor::make<FalPw::DecapInfoTable>("decapInfoTable");
   lfibHwStatus_ = Kor::make<Mpls::LfibHwStatus>("lfibHwStatus");

   chip_ = std::make_unique<Chip>(loop_, hwConfig_, hwStatus_);
   fecIdService_ = std::make_unique<FecIdService>(loop_);
   fecIdService_->serve(fecRequest_, fecResponse_);
   fecIdService_->serve(pwFecRequest_, pwFecResponse_);
   routeHelper_ = Kor::make<RouteHelper>("simRouteHelper", *chip_);
   decapHelper_ = Kor::make<DecapHelper>("simDecapHelper", timerWheel_);
   decapHelper_->handleInitialized();
   pwDecapTable_ = std::make_unique<PwDecapTable>(decapInfoTable_);
   resolver_ = Kor::make<Fal::RouteResolver>(ipRoutes_, routeReactorConfig_, route6ReactorConfig_,
                                             l3Status_);
   start();
}

Agent::~Agent() {
   stop();
   resolver_ = nullptr;
   pwDecapTable_.reset();
   fecIdService_.reset();
   routeHelper_ = nullptr;
   decapHelper_ = nullptr;
   chip_.reset();
   logScope_.reset();
   Log::LogFacility::timeSourceIs(nullptr);
}

void Agent::start() {
   if (running()) {
      return;
   }
   // A new incarnation of the agent process: nothing of the old one's log state is remembered.
   Fal::resourceFullLoggedIs(false);
   mplsSm_ = Fal::MplsSmIs(mplsStatus_, routingInfo_, lfib_, ipRoutes_, hwMplsStatus_,
                           routeReactorConfig_, route6ReactorConfig_, hwConfig_, hwStatus_,
                           l3Status_, monitoredNhSm_, entityManager_, attrLogSm_, clock_);
   if (options_.transitRetryInterval >= 0) {
      mplsSm_->defaultUnprogrammedRetryIntervalIs(options_.transitRetryInterval);
   }
   if (options_.fecForwarding) {
      mplsSm_->hwFecIdRequestIs(fecRequest_);
      mplsSm_->hwFecIdResponseIs(fecResponse_);
      mplsSm_->mplsSmHelperIs(routeHelper_);
   }
   if (options_.decap) {
      decapTracking_ = Kor::make<Mpls::LfibTrackingStatus>("decapTrackingStatus");
      decapTrackingSm_ = Kor::make<Mpls::LfibTrackingSm>(
          lfib_, decapTracking_, Mpls::lfibTrackingRoutes_, "DecapTracking");
      decapSm_ = Fal::mplsDecapSmFactory(decapHelper_, lfib_, loop_->scheduler(), decapTracking_,
                                         lfibHwStatus_);
      if (options_.decapRetryInterval >= 0) {
         decapSm_->defaultUnprogrammedRetryIntervalIs(options_.decapRetryInterval);
      }
   }
   if (options_.pseudowire) {
      lFibSm_ = Fal::lFibSmFactory(mplsStatus_, mplsIpStatus_, decapInfoTable_, pwStatus_,
                                   pwFecRequest_, pwFecResponse_, timerWheel_);
   }
}

void Agent::stop() {
   lFibSm_ = nullptr;
   decapSm_ = nullptr;
   decapTrackingSm_ = nullptr;
   mplsSm_ = nullptr;
}

void Agent::restart() {
   stop();
   ++restarts_;
   start();
}

double Agent::runUntilIdle(double maxSeconds) {
   const double start = loop_->now();
   loop_->runUntilIdle();
   for (;;) {
      double next = loop_->nextWakeUp();
      if (next == Loom::EventLoop::never() || next - start > maxSeconds) {
         break;
      }
      if (loop_->simulated()) {
         loop_->advanceTo(next);
      } else {
         loop_->runFor(std::max(0.0, next - loop_->now()));
      }
      loop_->runUntilIdle();
   }
   return loop_->now() - start;
}

Kor::Ptr<Fal::MplsHwVrfConfig> Agent::defaultVrfConfig() const {
   return hwConfig_->vrfConfig(Fal::VrfId(0));
}

Kor::Ptr<Fal::MplsHwVrfStatus> Agent::defaultVrfStatus() const {
   return hwStatus_->vrfStatus(Fal::VrfId(0));
}

}  // namespace sim
