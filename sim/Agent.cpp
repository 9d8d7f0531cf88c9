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
   Fal::TransitTables transit;
   transit.mplsStatus = mplsStatus_;
   transit.mplsRoutingInfo = routingInfo_;
   transit.transitLfib = lfib_;
   transit.falL3Status = l3Status_;
   transit.routingHwRouteStatus = ipRoutes_;
   transit.routeReactorConfig = routeReactorConfig_;
   transit.route6ReactorConfig = route6ReactorConfig_;
   transit.monitoredNhSm = monitoredNhSm_;
   transit.routingHwMplsStatus = hwMplsStatus_;
   transit.mplsHwConfig = hwConfig_;
   transit.mplsHwStatus = hwStatus_;
   transit.entityManager = entityManager_;
   transit.attrLogSm = attrLogSm_;
   transit.clock = clock_;
   if (options_.fecForwarding) {
      transit.hwFecIdRequest = fecRequest_;
      transit.hwFecIdResponse = fecResponse_;
      transit.mplsSmHelper = routeHelper_;
   }
   transit.unprogrammedRetryInterval = options_.transitRetryInterval;
   transit_ = std::make_unique<Fal::TransitMachine>(transit);
   if (options_.decap) {
      Fal::DecapTables decap;
      decap.mplsDecapHelper = decapHelper_;
      decap.lfibStatus = lfib_;
      decap.scheduler = loop_->scheduler();
      decap.lfibHwStatus = lfibHwStatus_;
      decap.unprogrammedRetryInterval = options_.decapRetryInterval;
      decap_ = std::make_unique<Fal::DecapMachine>(decap);
   }
   if (options_.pseudowire) {
      Fal::PseudowireTables pw;
      pw.mplsStatus = mplsStatus_;
      pw.pwStatus = pwStatus_;
      pw.mplsIpStatus = mplsIpStatus_;
      pw.decapInfoTable = decapInfoTable_;
      pw.dstPortToHwFecIdRequest = pwFecRequest_;
      pw.dstPortToHwFecIdResponse = pwFecResponse_;
      pw.timerWheel = timerWheel_;
      pseudowire_ = std::make_unique<Fal::PseudowireMachine>(pw);
   }
}

void Agent::stop() {
   pseudowire_.reset();
   decap_.reset();
   transit_.reset();
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
