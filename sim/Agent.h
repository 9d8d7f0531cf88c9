#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>
#include <mplsfwd/decap/DecapMachine.h>
#include <mplsfwd/decap/FalMplsDecapSm.h>
#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/EntityManager.h>
#include <mplsfwd/l3/L3Status.h>
#include <mplsfwd/l3/MonitoredNexthopSm.h>
#include <mplsfwd/l3/Route6ReactorConfig.h>
#include <mplsfwd/l3/RouteReactorConfig.h>
#include <mplsfwd/l3/RouteResolver.h>
#include <mplsfwd/l3/RouteStatus.h>
#include <mplsfwd/log/LogSink.h>
#include <mplsfwd/loom/AttrLogSm.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/DecapInfoTable.h>
#include <mplsfwd/mpls/HardwareStatus.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingSm.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>
#include <mplsfwd/mpls/MplsStatus.h>
#include <mplsfwd/mpls/PseudowireStatus.h>
#include <mplsfwd/mpls/RoutingInfo.h>
#include <mplsfwd/pseudowire/FalLFibSm.h>
#include <mplsfwd/pseudowire/PseudowireMachine.h>
#include <mplsfwd/transit/FalMplsSm.h>
#include <mplsfwd/transit/TransitMachine.h>

#include "Chip.h"
#include "DecapHelper.h"
#include "FecIdService.h"
#include "PwDecapTable.h"
#include "RouteHelper.h"

namespace sim {

// How an agent is assembled. Defaults give the whole library on simulated time.
struct AgentOptions {
   Loom::EventLoop::TimeMode timeMode = Loom::EventLoop::TimeMode::simulated;
   // The platform forwards into FIB FECs: the transit machine gets the FEC request and response
   // tables and the route helper.
   bool fecForwarding = false;
   // Build the decap machine and the pseudowire decap machine.
   bool decap = true;
   bool pseudowire = true;
   // The control plane's MPLS routing switch at start.
   bool mplsRouting = true;
   // Name VRF 0 "default" in the L3 status at start.
   bool defaultVrfName = true;
   // Retry intervals of unprogrammed routes, in seconds; a negative value keeps the library's.
   double transitRetryInterval = -1.0;
   double decapRetryInterval = -1.0;
   // Capture operator log messages in logSink() (otherwise they go to the current sink).
   bool captureLogs = true;
};

// One forwarding agent on a simulated platform: the runtime (one event loop, its clock and timer
// wheel), every input and output table of the three state machines, the simulated platform (the
// chip, the FEC id service, the route helper, the decap helper and the pseudowire decap table),
// the route resolver, and the three state machines themselves.
//
// Who drives it: a scenario runner, a benchmark or a test writes the control-plane tables (through
// a ControlPlane or directly) and moves the loop (advance, runUntilIdle). restart() destroys the
// state machines and builds new ones over the surviving tables, as after an agent restart: the
// platform's tables (hardware configuration and status, FEC tables, the decap helper's and the
// pseudowire decap table's entries) keep what the previous incarnation left, for the new one to
// clean up.
//
// The log sink and the log facility's time source are process-wide: one Agent at a time.
// Invariants: the machines exist between start() and stop(); the platform objects live as long as
// the agent; destruction takes the machines down before the platform.
class Agent {
 public:
   explicit Agent(AgentOptions options = AgentOptions());
   ~Agent();
   Agent(const Agent&) = delete;
   Agent& operator=(const Agent&) = delete;

   const AgentOptions& options() const { return options_; }

   // The state machines.
   void start();
   void stop();
   void restart();
   bool running() const { return transit_ != nullptr; }
   std::uint64_t restarts() const { return restarts_; }

   // Time. advance() runs everything due within `seconds`; runUntilIdle() runs what is ready and
   // moves simulated time from wake-up to wake-up until nothing is armed or the next wake-up lies
   // more than maxSeconds ahead of the start; it answers the simulated seconds that passed.
   void advance(double seconds) { loop_->advance(seconds); }
   double runUntilIdle(double maxSeconds = 60.0);
   double now() const { return loop_->now(); }

   // The runtime.
   const Kor::Ptr<Loom::EventLoop>& loop() const { return loop_; }
   const Kor::Ptr<Kor::Clock>& clock() const { return clock_; }
   const Kor::Ptr<Loom::TimerWheel>& timerWheel() const { return timerWheel_; }
   const Kor::Ptr<Loom::AttrLogSm>& attrLogSm() const { return attrLogSm_; }
   Log::MemoryLogSink& logSink() { return logSink_; }
   const Log::MemoryLogSink& logSink() const { return logSink_; }

   // The control plane's tables.
   const Kor::Ptr<Mpls::LfibStatus>& lfib() const { return lfib_; }
   const Kor::Ptr<Mpls::Status>& mplsStatus() const { return mplsStatus_; }
   const Kor::Ptr<Mpls::RoutingInfo>& routingInfo() const { return routingInfo_; }
   const Kor::Ptr<Fal::L3Status>& l3Status() const { return l3Status_; }
   const Kor::Ptr<Routing::Hardware::RouteStatus>& ipRoutes() const { return ipRoutes_; }
   const Kor::Ptr<Pseudowire::Status>& pwStatus() const { return pwStatus_; }

   // Tables between the machines and the platform.
   const Kor::Ptr<Fal::MplsHwConfig>& hwConfig() const { return hwConfig_; }
   const Kor::Ptr<Fal::MplsHwStatus>& hwStatus() const { return hwStatus_; }
   const Kor::Ptr<Mpls::Hardware::Status>& hwMplsStatus() const { return hwMplsStatus_; }
   const Kor::Ptr<Fal::FecIdToHwFecIdRequest>& fecRequest() const { return fecRequest_; }
   const Kor::Ptr<Fal::FecIdToHwFecIdResponse>& fecResponse() const { return fecResponse_; }
   const Kor::Ptr<Fal::FecIdToHwFecIdRequest>& pwFecRequest() const { return pwFecRequest_; }
   const Kor::Ptr<Fal::FecIdToHwFecIdResponse>& pwFecResponse() const { return pwFecResponse_; }
   const Kor::Ptr<Mpls::Status>& mplsIpStatus() const { return mplsIpStatus_; }
   const Kor::Ptr<FalPw::DecapInfoTable>& decapInfoTable() const { return decapInfoTable_; }
   const Kor::Ptr<Mpls::LfibHwStatus>& lfibHwStatus() const { return lfibHwStatus_; }
   const Kor::Ptr<Mpls::LfibTrackingStatus>& decapTracking() const {
      return decap_ ? decap_->trackingStatus() : noTracking_;
   }
   const Kor::Ptr<Fal::RouteReactorConfig>& routeReactorConfig() const {
      return routeReactorConfig_;
   }
   const Kor::Ptr<Fal::Route6ReactorConfig>& route6ReactorConfig() const {
      return route6ReactorConfig_;
   }
   const Kor::Ptr<Fal::MonitoredNexthopSm>& monitoredNhSm() const { return monitoredNhSm_; }

   // The simulated platform.
   Chip& chip() { return *chip_; }
   const Chip& chip() const { return *chip_; }
   FecIdService& fecIdService() { return *fecIdService_; }
   const FecIdService& fecIdService() const { return *fecIdService_; }
   const Kor::Ptr<RouteHelper>& routeHelper() const { return routeHelper_; }
   const Kor::Ptr<DecapHelper>& decapHelper() const { return decapHelper_; }
   PwDecapTable& pwDecapTable() { return *pwDecapTable_; }
   const PwDecapTable& pwDecapTable() const { return *pwDecapTable_; }
   const Kor::Ptr<Fal::RouteResolver>& resolver() const { return resolver_; }

   // The state machines (null when stopped or not built).
   const Kor::Ptr<Fal::MplsSm>& mplsSm() const { return transit_ ? transit_->sm() : noMplsSm_; }
   const Kor::Ptr<Fal::MplsDecapSm>& decapSm() const { return decap_ ? decap_->sm() : noDecapSm_; }
   const Kor::Ptr<Fal::LFibSm>& lFibSm() const {
      return pseudowire_ ? pseudowire_->sm() : noLFibSm_;
   }

   // The default VRF's per-VRF tables (null before they exist).
   Kor::Ptr<Fal::MplsHwVrfConfig> defaultVrfConfig() const;
   Kor::Ptr<Fal::MplsHwVrfStatus> defaultVrfStatus() const;

 private:
   AgentOptions options_;
   std::uint64_t restarts_ = 0;

   Kor::Ptr<Loom::EventLoop> loop_;
   Kor::Ptr<Kor::Clock> clock_;
   Kor::Ptr<Loom::TimerWheel> timerWheel_;
   Kor::Ptr<Loom::AttrLogSm> attrLogSm_;
   Log::MemoryLogSink logSink_;
   std::unique_ptr<Log::LogSinkScope> logScope_;

   Kor::Ptr<Mpls::LfibStatus> lfib_;
   Kor::Ptr<Mpls::Status> mplsStatus_;
   Kor::Ptr<Mpls::RoutingInfo> routingInfo_;
   Kor::Ptr<Fal::L3Status> l3Status_;
   Kor::Ptr<Routing::Hardware::RouteStatus> ipRoutes_;
   Kor::Ptr<Pseudowire::Status> pwStatus_;

   Kor::Ptr<Fal::MplsHwConfig> hwConfig_;
   Kor::Ptr<Fal::MplsHwStatus> hwStatus_;
   Kor::Ptr<Mpls::Hardware::Status> hwMplsStatus_;
   Kor::Ptr<Fal::RouteReactorConfig> routeReactorConfig_;
   Kor::Ptr<Fal::Route6ReactorConfig> route6ReactorConfig_;
   Kor::Ptr<Fal::MonitoredNexthopSm> monitoredNhSm_;
   Kor::Ptr<Regdb::EntityManager> entityManager_;
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> fecRequest_;
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> fecResponse_;
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> pwFecRequest_;
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> pwFecResponse_;
   Kor::Ptr<Mpls::Status> mplsIpStatus_;
   Kor::Ptr<FalPw::DecapInfoTable> decapInfoTable_;
   Kor::Ptr<Mpls::LfibHwStatus> lfibHwStatus_;

   std::unique_ptr<Chip> chip_;
   std::unique_ptr<FecIdService> fecIdService_;
   Kor::Ptr<RouteHelper> routeHelper_;
   Kor::Ptr<DecapHelper> decapHelper_;
   std::unique_ptr<PwDecapTable> pwDecapTable_;
   Kor::Ptr<Fal::RouteResolver> resolver_;

   // The state machines, assembled the way an agent assembles them.
   std::unique_ptr<Fal::TransitMachine> transit_;
   std::unique_ptr<Fal::DecapMachine> decap_;
   std::unique_ptr<Fal::PseudowireMachine> pseudowire_;
   // What the accessors answer for a machine that is not built.
   const Kor::Ptr<Fal::MplsSm> noMplsSm_;
   const Kor::Ptr<Fal::MplsDecapSm> noDecapSm_;
   const Kor::Ptr<Fal::LFibSm> noLFibSm_;
   const Kor::Ptr<Mpls::LfibTrackingStatus> noTracking_;
};

}  // namespace sim
