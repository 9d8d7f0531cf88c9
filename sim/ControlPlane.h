#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <mplsfwd/l3/IpPrefix.h>
#include <mplsfwd/l3/IpRoute.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>
#include <mplsfwd/mpls/PseudowireLocalConnectorInfo.h>

#include "Agent.h"

namespace sim {

// The control plane's publisher: writes what the MPLS control plane, the L3 agent and the
// pseudowire agent publish into the agent's input tables, one record at a time, as they would.
// Vias, via sets and routes go into the LFIB; a route that ends a pseudowire (one that names a
// pseudowire adjacency) is also published in the MPLS status, where the pseudowire decap machine
// reads it; pseudowire and external-FEC adjacencies, the next-hop-resolution setting go into the
// MPLS status; neighbours and VRF names into the L3 status; IP routes into the hardware route
// status that the route resolver reads; connectors into the pseudowire status.
//
// Every write is a plain upsert: writing a record again with other values is a change, writing it
// with the same values changes nothing. Deletes of absent records change nothing.
class ControlPlane {
 public:
   explicit ControlPlane(Agent& agent) : agent_(agent) {}

   // Vias, by type. Each returns the via's key.
   Mpls::LfibViaKey mplsVia(std::uint32_t index, const Wire::IpGenAddr& nextHop, Wire::IntfId intf,
                            const Wire::MplsLabelOperation& labels,
                            Wire::MplsLabelAction action = Wire::MplsLabelAction::swap,
                            Mpls::PayloadType payloadType = Mpls::payloadTypeMpls_,
                            Mpls::LfibSource source = Mpls::lfibSourceStatic_);
   Mpls::LfibViaKey extFecVia(std::uint32_t index, Memtab::Fib::FecId fecId,
                              Wire::MplsLabelAction action = Wire::MplsLabelAction::pop,
                              Mpls::LfibSource source = Mpls::lfibSourceStatic_);
   Mpls::LfibViaKey ipLookupVia(std::uint32_t index, const L3::VrfName& vrf,
                                Mpls::PayloadType payloadType = Mpls::payloadTypeAutoDecide_,
                                Mpls::LfibSource source = Mpls::lfibSourceStatic_);
   Mpls::LfibViaKey vlanVia(std::uint32_t index, Bridging::VlanId vlan,
                            Mpls::LfibSource source = Mpls::lfibSourceEvpn_);
   Mpls::LfibViaKey evpnEthernetSegmentFilterVia(std::uint32_t index,
                                                 Mpls::LfibSource source = Mpls::lfibSourceEvpn_);
   Mpls::LfibViaKey evpnVlanFloodVia(std::uint32_t index, Bridging::VlanId vlan,
                                     Mpls::LfibSource source = Mpls::lfibSourceEvpn_);
   Mpls::LfibViaKey evpnVlanAwareVia(std::uint32_t index, Mpls::LfibDot1qTagToVlanKey coll,
                                     Mpls::LfibSource source = Mpls::lfibSourceEvpn_);
   Mpls::LfibViaKey evpnVlanAwareFloodVia(std::uint32_t index, Mpls::LfibDot1qTagToVlanKey coll,
                                          Mpls::LfibSource source = Mpls::lfibSourceEvpn_);
   Mpls::LfibViaKey pwVia(std::uint32_t index, Wire::IntfId pwIntf,
                          Mpls::LfibSource source = Mpls::lfibSourcePseudowire_);
   // Deletes a via of any type.
   void viaDel(const Mpls::LfibViaKey& key);

   // Via sets: the vias in positions 0 onwards, and the backup set (default key: none).
   void viaSet(const Mpls::LfibViaSetKey& key, const std::vector<Mpls::LfibViaKey>& vias,
               Mpls::LfibViaSetType type = Mpls::viaSetTypeEcmp_,
               const Mpls::LfibViaSetKey& backup = Mpls::LfibViaSetKey());
   void viaSetDel(const Mpls::LfibViaSetKey& key);

   // Routes. A route with a pseudowire adjacency is also published in the MPLS status; a route
   // without a via set (the default key) is published only there.
   void route(Wire::MplsLabel label, const Mpls::LfibViaSetKey& viaSet, std::uint32_t metric = 0,
              std::optional<std::uint64_t> pwAdjacency = std::nullopt);
   void routeDel(Wire::MplsLabel label);

   // Dot1q-tag-to-VLAN collections: a whole collection at once, or one tag.
   void dot1qColl(Mpls::LfibDot1qTagToVlanKey key, const Mpls::LfibDot1qTagToVlan::TagMap& tags);
   void dot1qCollDel(Mpls::LfibDot1qTagToVlanKey key);
   void dot1qTag(Mpls::LfibDot1qTagToVlanKey key, Bridging::VlanId tag,
                 Bridging::VlanIdOrNone vlan);
   void dot1qTagDel(Mpls::LfibDot1qTagToVlanKey key, Bridging::VlanId tag);

   // Pseudowires and external-FEC adjacencies of the MPLS status.
   void pwAdjacency(std::uint64_t index, Wire::IntfId pwIntf);
   void pwAdjacencyDel(std::uint64_t index);
   void extFecAdjacency(std::uint64_t index, Memtab::Fib::FecId fecId,
                        Wire::MplsLabelAction action);
   void extFecAdjacencyDel(std::uint64_t index);
   void connector(Wire::IntfId pwIntf, const Pseudowire::LocalConnectorInfo& info);
   void connectorDel(Wire::IntfId pwIntf);

   // L3: neighbours, IP routes for the resolver, VRF names.
   void neighbor(const Wire::IpGenAddr& addr, Wire::IntfId l3Intf, const Wire::EthAddr& mac,
                 Bridging::VlanId vlan, Wire::IntfId l2Intf, Fal::VrfId vrf = Fal::VrfId(0));
   void neighborDel(const Wire::IpGenAddr& addr, Wire::IntfId l3Intf);
   void ipRoute(Fal::VrfId vrf, const L3::IpPrefix& prefix, const Routing::Hardware::IpRoute& r);
   void ipRouteDel(Fal::VrfId vrf, const L3::IpPrefix& prefix);
   void vrfName(Fal::VrfId vrf, const L3::VrfName& name);
   void vrfNameDel(Fal::VrfId vrf);

   // Switches.
   void mplsRoutingIs(bool enabled);
   void nexthopResolutionAllowDefaultRouteIs(bool allowed);

 private:
   Agent& agent_;
};

}  // namespace sim
