// A transit forwarding agent in one file: the tables, the transit state machine, a platform that
// answers the hardware configuration, and the agent's own loop. It publishes one neighbour, one
// via set and two routes into a chip with room for one route, then prints what the chip
// programmed and what it refused, with the reason. docs/embedding.md walks through it.
#include <mplsfwd/transit.h>

#include <cstdio>
#include <iostream>
#include <set>

namespace {

// The platform: follows the hardware configuration and answers in the hardware status, from a
// task of its own (never inside the notification). It confirms mplsRouting per VRF, mirrors the
// L2 adjacencies, and programs routes while it has room; a route it cannot take is reported
// with its reason first, then flagged unprogrammed.
class MiniChip {
 public:
   MiniChip(const Kor::Ptr<Loom::EventLoop>& loop, Kor::Ptr<const Fal::MplsHwConfig> config,
            Kor::Ptr<Fal::MplsHwStatus> status, std::size_t routeRoom)
       : config_(std::move(config)), status_(std::move(status)), routeRoom_(routeRoom) {
      task_ = Kor::make<Loom::TimerTask>(loop->scheduler(), "miniChip", 5, [this] { answer(); });
      configReactor_ = std::make_unique<ConfigReactor>(config_, *this);
   }
   ~MiniChip() { task_->cancel(); }

 private:
   struct ConfigReactor : Fal::MplsHwConfig::NotifieeConst {
      ConfigReactor(Kor::Ptr<const Fal::MplsHwConfig> c, MiniChip& chip)
          : NotifieeConst(std::move(c)), chip(chip) {}
      void onVrfConfig(Fal::VrfId id) override { chip.watch(id); }
      MiniChip& chip;
   };
   struct VrfReactor : Fal::MplsHwVrfConfig::NotifieeConst {
      VrfReactor(Kor::Ptr<const Fal::MplsHwVrfConfig> c, MiniChip& chip)
          : NotifieeConst(std::move(c)), chip(chip) {}
      void onMplsRouting() override { chip.task_->schedule(); }
      void onL2Adjacency(const Fal::L2AdjacencyPtr&) override { chip.task_->schedule(); }
      void onRoute(const Mpls::RouteKey&) override { chip.task_->schedule(); }
      MiniChip& chip;
   };

   void watch(Fal::VrfId id) {
      if (auto vrf = config_->vrfConfig(id)) {
         vrfReactors_.push_back(std::make_unique<VrfReactor>(vrf, *this));
         task_->schedule();
      }
   }

   // Brings the status in line with the configuration (adds and changes only, for brevity).
   void answer() {
      for (const auto& [id, config] : config_->vrfConfigMap()) {
         auto status = status_->vrfStatusIs(id);
         status->mplsRoutingIs(config->mplsRouting());
         for (const auto& [adj, count] : config->l2AdjacencyMap()) {
            status->l2AdjacencyIs(adj, count);
         }
         for (const auto& [key, route] : config->routeMap()) {
            if (status->routeHas(key) || programmed_.size() < routeRoom_) {
               programmed_.insert(key);
               status->routeIs(route);
               status->unprogrammedRouteDel(key);
            } else {
               status->unprogrammedReasonIs(Fal::UnprogrammedReason::RouteFull);
               status->unprogrammedRouteIs(key, true);
            }
         }
      }
   }

   Kor::Ptr<const Fal::MplsHwConfig> config_;
   Kor::Ptr<Fal::MplsHwStatus> status_;
   std::size_t routeRoom_;
   std::set<Mpls::RouteKey> programmed_;
   Kor::Ptr<Loom::TimerTask> task_;
   std::unique_ptr<ConfigReactor> configReactor_;
   std::vector<std::unique_ptr<VrfReactor>> vrfReactors_;
};

}  // namespace

int main() {
   // The runtime: one event loop on real time; the log facility reads its time.
   auto loop = Kor::make<Loom::EventLoop>(Loom::EventLoop::TimeMode::monotonic);
   Log::LogFacility::timeSourceIs(loop.ptr());

   // Every table the transit machine reads and writes. The agent owns them all.
   Fal::TransitTables t;
   auto lfib = Kor::make<Mpls::LfibStatus>("lfib");
   auto routingInfo = Kor::make<Mpls::RoutingInfo>("routingInfo");
   auto l3Status = Kor::make<Fal::L3Status>("l3Status");
   auto hwConfig = Fal::mplsHwConfigFactory("mplsHwConfig");
   auto hwStatus = Fal::mplsHwStatusFactory("mplsHwStatus");
   t.mplsStatus = Kor::make<Mpls::Status>("mplsStatus");
   t.mplsRoutingInfo = routingInfo;
   t.transitLfib = lfib;
   t.falL3Status = l3Status;
   t.routingHwRouteStatus = Kor::make<Routing::Hardware::RouteStatus>("routeStatus");
   t.routeReactorConfig = Kor::make<Fal::RouteReactorConfig>("routeReactorConfig");
   t.route6ReactorConfig = Kor::make<Fal::Route6ReactorConfig>("route6ReactorConfig");
   t.monitoredNhSm = Kor::make<Fal::MonitoredNexthopSm>("monitoredNhSm");
   t.routingHwMplsStatus = Kor::make<Mpls::Hardware::Status>("hwMplsStatus");
   t.mplsHwConfig = hwConfig;
   t.mplsHwStatus = hwStatus;
   t.entityManager = Kor::make<Regdb::EntityManager>("entityManager");
   t.attrLogSm = Kor::make<Loom::AttrLogSm>();
   t.clock = loop->clockIs("MplsSm-clock");

   // The platform, then the machine (a new incarnation: forget the old one's log state).
   MiniChip chip(loop, hwConfig, hwStatus, /*routeRoom=*/1);
   Fal::resourceFullLoggedIs(false);
   Fal::TransitMachine transit(t);

   // The control plane: routing on, the default VRF named, one neighbour, one via set, and two
   // routes over it.
   routingInfo->mplsRoutingIs(true);
   l3Status->vrfNameIs(Fal::VrfId(0), L3::VrfName::defaultVrf());
   auto eth1 = Wire::IntfId::parse("Ethernet1");
   auto nextHop = Wire::IpGenAddr::parse("10.0.0.2");
   l3Status->nextHopInfoIs(
       Fal::NextHopKey(nextHop, eth1),
       Fal::NextHopInfo(Fal::VrfId(0), Wire::EthAddr::parse("00:1c:73:00:00:02"),
                        Bridging::VlanId(10), eth1));
   Mpls::LfibViaKey via(Mpls::viaTypeMplsIp_, 1);
   lfib->mplsViaIs(Mpls::LfibMplsVia(via, nextHop, eth1, {Wire::MplsLabel(2000)},
                                     Wire::MplsLabelAction::swap, Mpls::payloadTypeMpls_));
   Mpls::LfibViaSetKey viaSet(Mpls::viaTypeMplsIp_, 1);
   lfib->viaSetIs(Mpls::LfibViaSet(viaSet, {via}));
   const Mpls::RouteKey first(Wire::MplsLabel(100)), second(Wire::MplsLabel(101));
   lfib->lfibRouteIs(Mpls::LfibRoute(first, viaSet));
   lfib->lfibRouteIs(Mpls::LfibRoute(second, viaSet));

   // The agent's loop: run what is due, sleep until the next wake-up, stop once nothing is armed
   // or within the next second (the retry of the refused route is 10 s away).
   loop->runUntilIdle();
   for (double next = loop->nextWakeUp(); next - loop->now() < 1.0; next = loop->nextWakeUp()) {
      loop->runFor(next - loop->now());
      loop->runUntilIdle();
   }

   auto status = hwStatus->vrfStatus(Fal::VrfId(0));
   if (!status || !status->routeHas(first) || !status->unprogrammedRouteHas(second)) {
      std::cerr << "transit-agent: expected one programmed and one refused route\n";
      return 1;
   }
   std::cout << "programmed: " << status->route(first) << "\n";
   std::cout << "refused:    " << second << " reason " << status->unprogrammedReason() << "\n";
   return 0;
}
