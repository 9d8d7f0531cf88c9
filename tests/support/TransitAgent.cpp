#include "TransitAgent.h"

#include <mplsfwd/log/LogFacility.h>
#include <mplsfwd/sim/ControlPlane.h>

namespace TestSupport {

namespace {

sim::AgentOptions agentOptions(const TransitAgent::Options& o) {
   Log::LogFacility::reset();  // each test starts with the facility's defaults
   sim::AgentOptions a;
   a.fecForwarding = o.fecForwarding;
   a.decap = false;
   a.pseudowire = false;
   a.mplsRouting = o.mplsRouting;
   a.defaultVrfName = o.vrfNameKnown;
   return a;
}

}  // namespace

TransitAgent::TransitAgent(Options options)
    : agent(agentOptions(options)),
      chip(agent.chip()),
      helper(agent.routeHelper()),
      loop(agent.loop()),
      routingInfo(agent.routingInfo()),
      lfib(agent.lfib()),
      hwMplsStatus(agent.hwMplsStatus()),
      routeReactorConfig(agent.routeReactorConfig()),
      l3Status(agent.l3Status()),
      monitoredNhSm(agent.monitoredNhSm()),
      fecRequest(agent.fecRequest()) {}

void TransitAgent::start() {
   // A new incarnation: the invariant check numbers its adjacency indices afresh.
   agent.restart();
}

void TransitAgent::fecAnswersIs(bool on) {
   agent.fecIdService().capacityIs(on ? sim::FecIdService::unlimited()
                                      : agent.fecIdService().inUse());
}

Mpls::LfibViaKey TransitAgent::mplsVia(std::uint32_t index, const std::string& nextHop,
                                       Wire::IntfId intf, std::uint32_t outLabel,
                                       Wire::MplsLabelAction action) {
   std::vector<std::uint32_t> labels;
   if (outLabel != Wire::MplsLabel::kNoLabel) {
      labels.push_back(outLabel);
   }
   return mplsViaWith(index, nextHop, intf, labels, action);
}

Mpls::LfibViaKey TransitAgent::mplsViaWith(std::uint32_t index, const std::string& nextHop,
                                           Wire::IntfId intf,
                                           const std::vector<std::uint32_t>& labels,
                                           Wire::MplsLabelAction action,
                                           Mpls::PayloadType payload) {
   Wire::MplsLabelOperation op;
   for (std::uint32_t label : labels) {
      op.push(Wire::MplsLabel(label));
   }
   return sim::ControlPlane(agent).mplsVia(index, Wire::IpGenAddr::parse(nextHop), intf, op, action,
                                           payload);
}

Mpls::LfibViaSetKey TransitAgent::viaSet(std::uint32_t index,
                                         const std::vector<Mpls::LfibViaKey>& vias,
                                         Mpls::LfibViaSetKey backup, Mpls::LfibSource source) {
   Mpls::LfibViaSetKey key(Mpls::viaTypeMplsIp_, index, source);
   sim::ControlPlane(agent).viaSet(key, vias, Mpls::viaSetTypeEcmp_, backup);
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
   lfib->lfibRouteIs(Mpls::LfibRoute(key(label), viaSet));
   return key(label);
}

void TransitAgent::neighbor(const std::string& addr, Wire::IntfId intf, const std::string& mac,
                            std::uint16_t vlan, Wire::IntfId l2Intf) {
   sim::ControlPlane(agent).neighbor(Wire::IpGenAddr::parse(addr), intf, Wire::EthAddr::parse(mac),
                                     Bridging::VlanId(vlan), l2Intf);
}

void TransitAgent::neighborDel(const std::string& addr, Wire::IntfId intf) {
   sim::ControlPlane(agent).neighborDel(Wire::IpGenAddr::parse(addr), intf);
}

void TransitAgent::ipRoute(const std::string& prefix, std::uint8_t length,
                           const std::string& gateway, Wire::IntfId intf) {
   sim::ControlPlane(agent).ipRoute(
       Fal::VrfId(0), L3::IpPrefix(Wire::IpGenAddr::parse(prefix), length),
       Routing::Hardware::IpRoute::gateway(Wire::IpGenAddr::parse(gateway), intf));
}

void TransitAgent::connectedRoute(const std::string& prefix, std::uint8_t length,
                                  Wire::IntfId intf) {
   sim::ControlPlane(agent).ipRoute(Fal::VrfId(0),
                                    L3::IpPrefix(Wire::IpGenAddr::parse(prefix), length),
                                    Routing::Hardware::IpRoute::connected(intf));
}

Fal::MplsHwRoute TransitAgent::configRoute(std::uint32_t label) const {
   auto vrf = vrfConfig();
   return vrf ? vrf->route(key(label)) : Fal::MplsHwRoute();
}

bool TransitAgent::programmed(std::uint32_t label) const {
   auto status = vrfStatus();
   return status && status->routeHas(key(label));
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

}  // namespace TestSupport
