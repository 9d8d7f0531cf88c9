#include "ControlPlane.h"

namespace sim {

Mpls::LfibViaKey ControlPlane::mplsVia(std::uint32_t index, const Wire::IpGenAddr& nextHop,
                                       Wire::IntfId intf, const Wire::MplsLabelOperation& labels,
                                       Wire::MplsLabelAction action, Mpls::PayloadType payloadType,
                                       Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeMplsIp_, index, source);
   agent_.lfib()->mplsViaIs(Mpls::LfibMplsVia(key, nextHop, intf, labels, action, payloadType));
   return key;
}

Mpls::LfibViaKey ControlPlane::extFecVia(std::uint32_t index, Memtab::Fib::FecId fecId,
                                         Wire::MplsLabelAction action, Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeExternalFec_, index, source);
   agent_.lfib()->extFecViaIs(Mpls::LfibExtFecVia(key, fecId, action));
   return key;
}

Mpls::LfibViaKey ControlPlane::ipLookupVia(std::uint32_t index, const L3::VrfName& vrf,
                                           Mpls::PayloadType payloadType, Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeIpLookup_, index, source);
   agent_.lfib()->ipLookupViaIs(Mpls::LfibIpLookupVia(key, vrf, payloadType));
   return key;
}

Mpls::LfibViaKey ControlPlane::vlanVia(std::uint32_t index, Bridging::VlanId vlan,
                                       Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeVlan_, index, source);
   agent_.lfib()->vlanViaIs(Mpls::LfibVlanVia(key, vlan));
   return key;
}

Mpls::LfibViaKey ControlPlane::evpnVlanFloodVia(std::uint32_t index, Bridging::VlanId vlan,
                                                Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeEvpnVlanFlood_, index, source);
   agent_.lfib()->evpnVlanFloodViaIs(Mpls::LfibEvpnVlanFloodVia(key, vlan));
   return key;
}

Mpls::LfibViaKey ControlPlane::evpnEthernetSegmentFilterVia(std::uint32_t index,
                                                            Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeEvpnEthernetSegment_, index, source);
   agent_.lfib()->evpnEthernetSegmentFilterViaIs(Mpls::LfibEvpnEthernetSegmentFilterVia(key));
   return key;
}

Mpls::LfibViaKey ControlPlane::evpnVlanAwareVia(std::uint32_t index,
                                                Mpls::LfibDot1qTagToVlanKey coll,
                                                Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeEvpnVlanAware_, index, source);
   agent_.lfib()->evpnVlanAwareViaIs(Mpls::LfibEvpnVlanAwareVia(key, coll));
   return key;
}

Mpls::LfibViaKey ControlPlane::evpnVlanAwareFloodVia(std::uint32_t index,
                                                     Mpls::LfibDot1qTagToVlanKey coll,
                                                     Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypeEvpnVlanAwareFlood_, index, source);
   agent_.lfib()->evpnVlanAwareFloodViaIs(Mpls::LfibEvpnVlanAwareFloodVia(key, coll));
   return key;
}

Mpls::LfibViaKey ControlPlane::pwVia(std::uint32_t index, Wire::IntfId pwIntf,
                                     Mpls::LfibSource source) {
   Mpls::LfibViaKey key(Mpls::viaTypePseudowire_, index, source);
   agent_.lfib()->pwViaIs(Mpls::LfibPwVia(key, pwIntf));
   return key;
}

void ControlPlane::viaDel(const Mpls::LfibViaKey& key) {
   auto& lfib = *agent_.lfib();
   switch (key.viaType()) {
      case Mpls::viaTypeMplsIp_:
         lfib.mplsViaDel(key);
         break;
      case Mpls::viaTypeExternalFec_:
         lfib.extFecViaDel(key);
         break;
      case Mpls::viaTypeIpLookup_:
         lfib.ipLookupViaDel(key);
         break;
      case Mpls::viaTypeVlan_:
         lfib.vlanViaDel(key);
         break;
      case Mpls::viaTypeEvpnVlanFlood_:
         lfib.evpnVlanFloodViaDel(key);
         break;
      case Mpls::viaTypeEvpnVlanAware_:
         lfib.evpnVlanAwareViaDel(key);
         break;
      case Mpls::viaTypeEvpnVlanAwareFlood_:
         lfib.evpnVlanAwareFloodViaDel(key);
         break;
      case Mpls::viaTypeEvpnEthernetSegment_:
         lfib.evpnEthernetSegmentFilterViaDel(key);
         break;
      case Mpls::viaTypePseudowire_:
         lfib.pwViaDel(key);
         break;
      default:
         break;
   }
}

void ControlPlane::viaSet(const Mpls::LfibViaSetKey& key, const std::vector<Mpls::LfibViaKey>& vias,
                          Mpls::LfibViaSetType type, const Mpls::LfibViaSetKey& backup) {
   Mpls::LfibViaSet set(key, type);
   for (const auto& via : vias) {
      set.viaAppend(via);
   }
   set.backupViaSetKeyIs(backup);
   agent_.lfib()->viaSetIs(set);
}

void ControlPlane::viaSetDel(const Mpls::LfibViaSetKey& key) {
   agent_.lfib()->viaSetDel(key);
}

void ControlPlane::route(Wire::MplsLabel label, const Mpls::LfibViaSetKey& viaSet,
                         std::uint32_t metric, std::optional<std::uint64_t> pwAdjacency) {
   Mpls::RouteKey key(label);
   Mpls::LfibRoute route(key, viaSet, metric, viaSet.source());
   if (pwAdjacency) {
      route.adjacencyKeyIs(Mpls::AdjacencyKey(Mpls::adjacencyTypePseudowire_, *pwAdjacency));
      route.sourceIs(Mpls::lfibSourcePseudowire_);
   }
   if (!(viaSet == Mpls::LfibViaSetKey())) {
      agent_.lfib()->lfibRouteIs(route);
   } else {
      agent_.lfib()->lfibRouteDel(key);
   }
   if (pwAdjacency) {
      agent_.mplsStatus()->lfibRouteIs(route);
   } else {
      agent_.mplsStatus()->lfibRouteDel(key);
   }
}

void ControlPlane::routeDel(Wire::MplsLabel label) {
   Mpls::RouteKey key(label);
   agent_.lfib()->lfibRouteDel(key);
   agent_.mplsStatus()->lfibRouteDel(key);
}

void ControlPlane::dot1qColl(Mpls::LfibDot1qTagToVlanKey key,
                             const Mpls::LfibDot1qTagToVlan::TagMap& tags) {
   agent_.lfib()->dot1qTagToVlanCollIs(key)->dot1qTagToVlanIdIs(tags);
}

void ControlPlane::dot1qCollDel(Mpls::LfibDot1qTagToVlanKey key) {
   agent_.lfib()->dot1qTagToVlanCollDel(key);
}

void ControlPlane::dot1qTag(Mpls::LfibDot1qTagToVlanKey key, Bridging::VlanId tag,
                            Bridging::VlanIdOrNone vlan) {
   agent_.lfib()->dot1qTagToVlanCollIs(key)->dot1qTagToVlanIdIs(tag, vlan);
}

void ControlPlane::dot1qTagDel(Mpls::LfibDot1qTagToVlanKey key, Bridging::VlanId tag) {
   if (auto coll = agent_.lfib()->dot1qTagToVlanColl(key)) {
      coll->dot1qTagToVlanIdDel(tag);
   }
}

void ControlPlane::pwAdjacency(std::uint64_t index, Wire::IntfId pwIntf) {
   agent_.mplsStatus()->lfibPwAdjacencyIs(Mpls::PwAdjacency(index, pwIntf));
}

void ControlPlane::pwAdjacencyDel(std::uint64_t index) {
   agent_.mplsStatus()->lfibPwAdjacencyDel(index);
}

void ControlPlane::extFecAdjacency(std::uint64_t index, Memtab::Fib::FecId fecId,
                                   Wire::MplsLabelAction action) {
   agent_.mplsStatus()->lfibExtFecAdjacencyIs(index, fecId, action);
}

void ControlPlane::extFecAdjacencyDel(std::uint64_t index) {
   agent_.mplsStatus()->lfibExtFecAdjacencyDel(index);
}

void ControlPlane::connector(Wire::IntfId pwIntf, const Pseudowire::LocalConnectorInfo& info) {
   agent_.pwStatus()->localConnectorInfoIs(pwIntf, info);
}

void ControlPlane::connectorDel(Wire::IntfId pwIntf) {
   agent_.pwStatus()->localConnectorInfoDel(pwIntf);
}

void ControlPlane::neighbor(const Wire::IpGenAddr& addr, Wire::IntfId l3Intf,
                            const Wire::EthAddr& mac, Bridging::VlanId vlan, Wire::IntfId l2Intf,
                            Fal::VrfId vrf) {
   agent_.l3Status()->nextHopInfoIs(Fal::NextHopKey(addr, l3Intf),
                                    Fal::NextHopInfo(vrf, mac, vlan, l2Intf));
}

void ControlPlane::neighborDel(const Wire::IpGenAddr& addr, Wire::IntfId l3Intf) {
   agent_.l3Status()->nextHopInfoDel(Fal::NextHopKey(addr, l3Intf));
}

void ControlPlane::ipRoute(Fal::VrfId vrf, const L3::IpPrefix& prefix,
                           const Routing::Hardware::IpRoute& r) {
   agent_.ipRoutes()->routeIs(Routing::Hardware::IpRouteKey(vrf, prefix), r);
}

void ControlPlane::ipRouteDel(Fal::VrfId vrf, const L3::IpPrefix& prefix) {
   agent_.ipRoutes()->routeDel(Routing::Hardware::IpRouteKey(vrf, prefix));
}

void ControlPlane::vrfName(Fal::VrfId vrf, const L3::VrfName& name) {
   agent_.l3Status()->vrfNameIs(vrf, name);
}

void ControlPlane::vrfNameDel(Fal::VrfId vrf) {
   agent_.l3Status()->vrfNameDel(vrf);
}

void ControlPlane::mplsRoutingIs(bool enabled) {
   agent_.routingInfo()->mplsRoutingIs(enabled);
}

void ControlPlane::nexthopResolutionAllowDefaultRouteIs(bool allowed) {
   agent_.mplsStatus()->nexthopResolutionAllowDefaultRouteIs(allowed);
}

}  // namespace sim
