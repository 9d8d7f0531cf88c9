#include "TransitAgent.h"

#include <mplsfwd/log/LogFacility.h>
#include <mplsfwd/transit/MplsResourceLog.h>

namespace TestSupport {

TransitAgent::TransitAgent(Options opts) : options(opts) {
   loop = Kor::make<Loom::EventLoop>();
   clock = loop->clockIs("MplsSm-clock");
   Log::LogFacility::reset();
   Log::LogFacility::timeSourceIs(loop.ptr());
   Fal::resourceFullLoggedIs(false);
   logScope_ = std::make_unique<Log::LogSinkScope>(logSink);
   mplsStatus = Kor::make<Mpls::Status>("mplsStatus");
   routingInfo = Kor::make<Mpls::RoutingInfo>("routingInfo");
   routingInfo->mplsRoutingIs(options.mplsRouting);
   lfib = Kor::make<Mpls::LfibStatus>("transitLfib");
   ipRoutes = Kor::make<Routing::Hardware::RouteStatus>("routeStatus");
   hwMplsStatus = Kor::make<Mpls::Hardware::Status>("hwMplsStatus");
   routeReactorConfig = Kor::make<Fal::RouteReactorConfig>("routeReactorConfig");
   route6ReactorConfig = Kor::make<Fal::Route6ReactorConfig>("route6ReactorConfig");
   hwConfig = Fal::mplsHwConfigFactory("mplsHwConfig");
   hwStatus = Fal::mplsHwStatusFactory("mplsHwStatus");
   l3Status = Kor::make<Fal::L3Status>("l3Status");
   if (options.vrfNameKnown) {
      l3Status->vrfNameIs(Fal::VrfId(0), L3::VrfName::defaultVrf());
   }
   monitoredNhSm = Kor::make<Fal::MonitoredNexthopSm>("monitoredNhSm");
   entityManager = Kor::make<Regdb::EntityManager>("entityManager");
   attrLogSm = Kor::make<Loom::AttrLogSm>();
   if (options.fecForwarding) {
      fecRequest = Kor::make<Fal::FecIdToHwFecIdRequest>("fecRequest");
      fecResponse = Kor::make<Fal::FecIdToHwFecIdResponse>("fecResponse");
      fecService = std::make_unique<FakeFecIdService>(loop, fecRequest, fecResponse);
      if (options.helper) {
         helper = Kor::make<FakeMplsSmHelper>();
      }
   }
   resolver =
       Kor::make<Fal::RouteResolver>(ipRoutes, routeReactorConfig, route6ReactorConfig, l3Status);
   chip = std::make_unique<FakeChip>(loop, hwConfig, hwStatus);
   start();
}

TransitAgent::~TransitAgent() {
   stop();
   chip.reset();
   fecService.reset();
   Log::LogFacility::timeSourceIs(nullptr);
}

void TransitAgent::start() {
   ++generation_;
   sm = Fal::MplsSmIs(mplsStatus, routingInfo, lfib, ipRoutes, hwMplsStatus, routeReactorConfig,
                      route6ReactorConfig, hwConfig, hwStatus, l3Status, monitoredNhSm,
                      entityManager, attrLogSm, clock);
   if (options.fecForwarding) {
      sm->hwFecIdRequestIs(fecRequest);
      sm->hwFecIdResponseIs(fecResponse);
   }
   if (helper) {
      sm->mplsSmHelperIs(helper);
   }
}

void TransitAgent::stop() {
   sm = nullptr;
}

Mpls::LfibViaKey TransitAgent::mplsVia(std::uint32_t index, const std::string& nextHop,
                                       Wire::IntfId intf, std::uint32_t outLabel,
                                       Wire::MplsLabelAction action) {
   Mpls::LfibViaKey key(Mpls::viaTypeMplsIp_, index, Mpls::lfibSourceStatic_);
   Wire::MplsLabelOperation op;
   if (outLabel != Wire::MplsLabel::kNoLabel) {
      op.push(Wire::MplsLabel(outLabel));
   }
   lfib->mplsViaIs(Mpls::LfibMplsVia(key, Wire::IpGenAddr::parse(nextHop), intf, op, action,
                                     Mpls::payloadTypeMpls_));
   return key;
}

Mpls::LfibViaKey TransitAgent::mplsViaWith(std::uint32_t index, const std::string& nextHop,
                                           Wire::IntfId intf,
                                           const std::vector<std::uint32_t>& labels,
                                           Wire::MplsLabelAction action,
                                           Mpls::PayloadType payload) {
   Mpls::LfibViaKey key(Mpls::viaTypeMplsIp_, index, Mpls::lfibSourceStatic_);
   Wire::MplsLabelOperation op;
   for (std::uint32_t label : labels) {
      op.push(Wire::MplsLabel(label));
   }
   lfib->mplsViaIs(
       Mpls::LfibMplsVia(key, Wire::IpGenAddr::parse(nextHop), intf, op, action, payload));
   return key;
}

Mpls::LfibViaSetKey TransitAgent::viaSet(std::uint32_t index,
                                         const std::vector<Mpls::LfibViaKey>& vias,
                                         Mpls::LfibViaSetKey backup, Mpls::LfibSource source) {
   Mpls::LfibViaSetKey key(Mpls::viaTypeMplsIp_, index, source);
   Mpls::LfibViaSet set(key, Mpls::viaSetTypeEcmp_);
   for (std::uint32_t i = 0; i < vias.size(); ++i) {
      set.viaIs(Mpls::LfibViaIndexRange(i), vias[i]);
   }
   set.viasIs(static_cast<std::uint32_t>(vias.size()));
   set.backupViaSetKeyIs(backup);
   lfib->viaSetIs(set);
   return key;
}

Mpls::LfibViaSetKey TransitAgent::extFecViaSet(std::uint32_t index, Memtab::Fib::FecId fecId) {
   Mpls::LfibViaKey viaKey(Mpls::viaTypeExternalFec_, index, Mpls::lfibSourceStatic_);
   lfib->extFecViaIs(Mpls::LfibExtFecVia(viaKey, fecId, Wire::MplsLabelAction::pop));
   Mpls::LfibViaSetKey key(Mpls::viaTypeExternalFec_, index, Mpls::lfibSourceStatic_);
   lfib->viaSetIs(Mpls::LfibViaSet(key, {viaKey}));
   return key;
}

Mpls::RouteKey TransitAgent::route(std::uint32_t label, Mpls::LfibViaSetKey viaSet) {
   Mpls::RouteKey key{Wire::MplsLabel(label)};
   lfib->lfibRouteIs(Mpls::LfibRoute(key, viaSet));
   return key;
}

void TransitAgent::routeDel(std::uint32_t label) {
   lfib->lfibRouteDel(Mpls::RouteKey(Wire::MplsLabel(label)));
}

void TransitAgent::neighbor(const std::string& addr, Wire::IntfId intf, const std::string& mac,
                            std::uint16_t vlan, Wire::IntfId l2Intf) {
   Fal::NextHopInfo info;
   info.macAddrIs(Wire::EthAddr::parse(mac));
   info.vlanIdIs(Bridging::VlanId(vlan));
   info.l2IntfIs(l2Intf);
   info.vrfIdIs(Fal::VrfId(0));
   l3Status->nextHopInfoIs(Fal::NextHopKey(Wire::IpGenAddr::parse(addr), intf), info);
}

void TransitAgent::neighborDel(const std::string& addr, Wire::IntfId intf) {
   l3Status->nextHopInfoDel(Fal::NextHopKey(Wire::IpGenAddr::parse(addr), intf));
}

void TransitAgent::ipRoute(const std::string& prefix, std::uint8_t length,
                           const std::string& gateway, Wire::IntfId intf) {
   ipRoutes->routeIs(Routing::Hardware::IpRouteKey(
                         Fal::VrfId(0), L3::IpPrefix(Wire::IpGenAddr::parse(prefix), length)),
                     Routing::Hardware::IpRoute::gateway(Wire::IpGenAddr::parse(gateway), intf));
}

void TransitAgent::connectedRoute(const std::string& prefix, std::uint8_t length,
                                  Wire::IntfId intf) {
   ipRoutes->routeIs(Routing::Hardware::IpRouteKey(
                         Fal::VrfId(0), L3::IpPrefix(Wire::IpGenAddr::parse(prefix), length)),
                     Routing::Hardware::IpRoute::connected(intf));
}

Fal::MplsHwRoute TransitAgent::configRoute(std::uint32_t label) const {
   auto vrf = vrfConfig();
   return vrf ? vrf->route(Mpls::RouteKey(Wire::MplsLabel(label))) : Fal::MplsHwRoute();
}

Kor::Ptr<Fal::MplsRoute> TransitAgent::stateRoute(std::uint32_t label) const {
   auto s = state();
   return s ? s->route(key(label)) : nullptr;
}

Fal::L3AdjacencyPtr TransitAgent::l3Adj(const Mpls::LfibViaSetKey& viaSet) const {
   auto s = state();
   if (!s || !s->lFibViaSetToL3AdjHas(viaSet)) {
      return nullptr;
   }
   return s->l3Adjacency(s->lFibViaSetToL3Adj(viaSet));
}

bool TransitAgent::programmed(std::uint32_t label) const {
   auto status = vrfStatus();
   return status && status->routeHas(Mpls::RouteKey(Wire::MplsLabel(label)));
}

}  // namespace TestSupport
