// Parsing of scenario files: every step is checked and turned into a ready-to-run action before
// anything runs.
#include "Scenario.h"
#include "ScenarioObservations.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include <mplsfwd/decap/FalMplsDecapSm.h>
#include <mplsfwd/log/TraceConfig.h>

#include "Runner.h"
#include "ScenarioFields.h"
#include "ScenarioPackets.h"
#include "State.h"

namespace sim {

namespace {

using Json = nlohmann::json;
using Action = std::function<void(Runner&)>;

// ------------------------------------------------------------------------------------------------
// Names of the enumerations as scenarios write them.

const std::vector<std::pair<const char*, Mpls::LfibViaType>>& viaTypeNames() {
   static const std::vector<std::pair<const char*, Mpls::LfibViaType>> names = {
       {"mplsIp", Mpls::viaTypeMplsIp_},
       {"externalFec", Mpls::viaTypeExternalFec_},
       {"ipLookup", Mpls::viaTypeIpLookup_},
       {"vlan", Mpls::viaTypeVlan_},
       {"evpnVlanFlood", Mpls::viaTypeEvpnVlanFlood_},
       {"evpnVlanAware", Mpls::viaTypeEvpnVlanAware_},
       {"evpnVlanAwareFlood", Mpls::viaTypeEvpnVlanAwareFlood_},
       {"evpnEthernetSegment", Mpls::viaTypeEvpnEthernetSegment_},
       {"pseudowire", Mpls::viaTypePseudowire_}};
   return names;
}

const std::vector<std::pair<const char*, Mpls::LfibSource>>& sourceNames() {
   static const std::vector<std::pair<const char*, Mpls::LfibSource>> names = {
       {"unknown", Mpls::lfibSourceUnknown_},
       {"static", Mpls::lfibSourceStatic_},
       {"ldp", Mpls::lfibSourceLdp_},
       {"bgp", Mpls::lfibSourceBgp_},
       {"isisSr", Mpls::lfibSourceIsisSr_},
       {"ospfSr", Mpls::lfibSourceOspfSr_},
       {"rsvp", Mpls::lfibSourceRsvp_},
       {"evpn", Mpls::lfibSourceEvpn_},
       {"pseudowire", Mpls::lfibSourcePseudowire_}};
   return names;
}

const std::vector<std::pair<const char*, Wire::MplsLabelAction>>& actionNames() {
   static const std::vector<std::pair<const char*, Wire::MplsLabelAction>> names = {
       {"none", Wire::MplsLabelAction::none},
       {"push", Wire::MplsLabelAction::push},
       {"swap", Wire::MplsLabelAction::swap},
       {"pop", Wire::MplsLabelAction::pop},
       {"forward", Wire::MplsLabelAction::forward},
       {"popAndLookup", Wire::MplsLabelAction::popAndLookup}};
   return names;
}

const std::vector<std::pair<const char*, Mpls::PayloadType>>& payloadNames() {
   static const std::vector<std::pair<const char*, Mpls::PayloadType>> names = {
       {"autoDecide", Mpls::payloadTypeAutoDecide_},
       {"ipv4", Mpls::payloadTypeIpv4_},
       {"ipv6", Mpls::payloadTypeIpv6_},
       {"mpls", Mpls::payloadTypeMpls_},
       {"ethernet", Mpls::payloadTypeEthernet_}};
   return names;
}

const std::vector<std::pair<const char*, Mpls::LfibViaSetType>>& setTypeNames() {
   static const std::vector<std::pair<const char*, Mpls::LfibViaSetType>> names = {
       {"unknown", Mpls::viaSetTypeUnknown_},
       {"ecmp", Mpls::viaSetTypeEcmp_},
       {"weightedEcmp", Mpls::viaSetTypeWeightedEcmp_},
       {"primaryBackup", Mpls::viaSetTypePrimaryBackup_}};
   return names;
}

const std::vector<std::pair<const char*, Fal::UnprogrammedReason>>& reasonNames() {
   static const std::vector<std::pair<const char*, Fal::UnprogrammedReason>> names = {
       {"AdjacencyFull", Fal::UnprogrammedReason::AdjacencyFull},
       {"RouteFull", Fal::UnprogrammedReason::RouteFull},
       {"InterfaceNotReady", Fal::UnprogrammedReason::InterfaceNotReady}};
   return names;
}

const std::vector<std::pair<const char*, RouteState>>& stateNames() {
   static const std::vector<std::pair<const char*, RouteState>> names = {
       {"programmed", RouteState::programmed},
       {"unprogrammed", RouteState::unprogrammed},
       {"pending", RouteState::pending},
       {"absent", RouteState::absent}};
   return names;
}

// The source a via or via set of a type has when the scenario names none.
Mpls::LfibSource defaultSource(Mpls::LfibViaType type) {
   switch (type) {
      case Mpls::viaTypeVlan_:
      case Mpls::viaTypeEvpnVlanFlood_:
      case Mpls::viaTypeEvpnVlanAware_:
      case Mpls::viaTypeEvpnVlanAwareFlood_:
      case Mpls::viaTypeEvpnEthernetSegment_:
         return Mpls::lfibSourceEvpn_;
      case Mpls::viaTypePseudowire_:
         return Mpls::lfibSourcePseudowire_;
      default:
         return Mpls::lfibSourceStatic_;
   }
}

Mpls::LfibSource sourceOf(const Fields& f, Mpls::LfibViaType type) {
   return f.optChoice("source", sourceNames(), defaultSource(type));
}

Memtab::Fib::FecId fecIdOf(const Fields& f) {
   auto adjType = f.optInteger("fecAdjType", 0, 20).value_or(1);
   auto index = f.integer("fecIndex", 0, Memtab::Fib::FecId::kIndexMask);
   if (adjType == 0 && index == 0) {
      f.fail("fecIndex", "a FEC other than the null FEC (type 0, index 0)", f.get("fecIndex"));
   }
   return Memtab::Fib::FecId::fecIdForAdjType(static_cast<Memtab::Fib::AdjType>(adjType), index);
}

std::string text(const auto& v) {
   std::ostringstream os;
   os << v;
   return os.str();
}

std::string boolText(bool b) {
   return b ? "true" : "false";
}

// ------------------------------------------------------------------------------------------------
// Control-plane steps.

Action viaStep(const std::string& op, const Fields& f) {
   static const std::map<std::string, Mpls::LfibViaType> types = {
       {"mplsVia", Mpls::viaTypeMplsIp_},
       {"extFecVia", Mpls::viaTypeExternalFec_},
       {"ipLookupVia", Mpls::viaTypeIpLookup_},
       {"vlanVia", Mpls::viaTypeVlan_},
       {"evpnVlanFloodVia", Mpls::viaTypeEvpnVlanFlood_},
       {"evpnVlanAwareVia", Mpls::viaTypeEvpnVlanAware_},
       {"evpnVlanAwareFloodVia", Mpls::viaTypeEvpnVlanAwareFlood_},
       {"evpnEthernetSegmentFilterVia", Mpls::viaTypeEvpnEthernetSegment_},
       {"pwVia", Mpls::viaTypePseudowire_}};
   Mpls::LfibViaType type = types.at(op);
   auto index = static_cast<std::uint32_t>(f.integer("index", 0, UINT32_MAX));
   Mpls::LfibSource source = sourceOf(f, type);
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"index", "source"});
      Mpls::LfibViaKey key(type, index, source);
      return [key](Runner& r) { r.controlPlane().viaDel(key); };
   }
   switch (type) {
      case Mpls::viaTypeMplsIp_: {
         auto nextHop = f.ip("nextHop");
         auto intf = f.optIntf("interface").value_or(Wire::IntfId());
         Wire::MplsLabelOperation labels;
         if (f.has("labels")) {
            for (auto l : f.labels("labels")) {
               labels.push(l);
            }
         }
         auto action = f.optChoice("action", actionNames(), Wire::MplsLabelAction::swap);
         auto payload = f.optChoice("payloadType", payloadNames(), Mpls::payloadTypeMpls_);
         return [=](Runner& r) {
            r.controlPlane().mplsVia(index, nextHop, intf, labels, action, payload, source);
         };
      }
      case Mpls::viaTypeExternalFec_: {
         auto fecId = fecIdOf(f);
         auto action = f.optChoice("action", actionNames(), Wire::MplsLabelAction::pop);
         return [=](Runner& r) { r.controlPlane().extFecVia(index, fecId, action, source); };
      }
      case Mpls::viaTypeIpLookup_: {
         L3::VrfName vrf;
         try {
            vrf = L3::VrfName(f.string("vrf"));
         } catch (const ScenarioError&) {
            throw;
         } catch (const std::exception&) {
            f.fail("vrf", "a VRF name of at most 100 bytes", f.get("vrf"));
         }
         auto payload = f.optChoice("payloadType", payloadNames(), Mpls::payloadTypeIpv4_);
         return [=](Runner& r) { r.controlPlane().ipLookupVia(index, vrf, payload, source); };
      }
      case Mpls::viaTypeVlan_: {
         auto vlan = f.vlan("vlan");
         return [=](Runner& r) { r.controlPlane().vlanVia(index, vlan, source); };
      }
      case Mpls::viaTypeEvpnVlanFlood_: {
         auto vlan = f.vlan("vlan");
         return [=](Runner& r) { r.controlPlane().evpnVlanFloodVia(index, vlan, source); };
      }
      case Mpls::viaTypeEvpnVlanAware_: {
         Mpls::LfibDot1qTagToVlanKey coll(
             static_cast<std::uint32_t>(f.integer("dot1qColl", 0, UINT32_MAX)));
         return [=](Runner& r) { r.controlPlane().evpnVlanAwareVia(index, coll, source); };
      }
      case Mpls::viaTypeEvpnVlanAwareFlood_: {
         Mpls::LfibDot1qTagToVlanKey coll(
             static_cast<std::uint32_t>(f.integer("dot1qColl", 0, UINT32_MAX)));
         return [=](Runner& r) { r.controlPlane().evpnVlanAwareFloodVia(index, coll, source); };
      }
      case Mpls::viaTypeEvpnEthernetSegment_:
         return [=](Runner& r) { r.controlPlane().evpnEthernetSegmentFilterVia(index, source); };
      default: {
         auto pw = f.intf("pwInterface");
         return [=](Runner& r) { r.controlPlane().pwVia(index, pw, source); };
      }
   }
}

Action viaSetStep(const Fields& f) {
   auto type = f.choice("viaType", viaTypeNames());
   auto index = static_cast<std::uint32_t>(f.integer("index", 0, UINT32_MAX));
   Mpls::LfibSource source = sourceOf(f, type);
   Mpls::LfibViaSetKey key(type, index, source);
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"viaType", "index", "source"});
      return [key](Runner& r) { r.controlPlane().viaSetDel(key); };
   }
   const Json* vias = f.get("vias");
   if (!vias || !vias->is_array() || vias->size() > Mpls::LfibViaSet::kMaxVias) {
      f.fail("vias", "an array of at most 128 via indices", vias);
   }
   std::vector<Mpls::LfibViaKey> keys;
   for (const auto& v : *vias) {
      if (!v.is_number_unsigned() || v.get<std::uint64_t>() > UINT32_MAX) {
         f.fail("vias", "an array of via indices 0..4294967295", &v);
      }
      keys.emplace_back(type, static_cast<std::uint32_t>(v.get<std::uint64_t>()), source);
   }
   auto setType = f.optChoice("setType", setTypeNames(), Mpls::viaSetTypeEcmp_);
   Mpls::LfibViaSetKey backup;
   if (auto b = f.optInteger("backup", 0, UINT32_MAX)) {
      backup = Mpls::LfibViaSetKey(type, static_cast<std::uint32_t>(*b), source);
   }
   return [=](Runner& r) { r.controlPlane().viaSet(key, keys, setType, backup); };
}

Action routeStep(const Fields& f) {
   auto label = f.label("label");
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"label"});
      return [label](Runner& r) { r.controlPlane().routeDel(label); };
   }
   f.oneOf({"viaSet", "pwAdjacency"});
   Mpls::LfibViaSetKey viaSet;
   if (f.has("viaSet")) {
      auto type = f.optChoice("viaType", viaTypeNames(), Mpls::viaTypeMplsIp_);
      auto index = static_cast<std::uint32_t>(f.integer("viaSet", 0, UINT32_MAX));
      viaSet = Mpls::LfibViaSetKey(type, index, sourceOf(f, type));
   } else if (f.has("viaType") || f.has("source")) {
      f.fail("viaSet", "a via set index when viaType or source is given", nullptr);
   }
   auto metric = static_cast<std::uint32_t>(f.optInteger("metric", 0, UINT32_MAX).value_or(0));
   std::optional<std::uint64_t> pwAdj = f.optInteger("pwAdjacency", 0, UINT64_MAX);
   return [=](Runner& r) { r.controlPlane().route(label, viaSet, metric, pwAdj); };
}

Action dot1qCollStep(const Fields& f) {
   Mpls::LfibDot1qTagToVlanKey key(static_cast<std::uint32_t>(f.integer("index", 0, UINT32_MAX)));
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"index"});
      return [key](Runner& r) { r.controlPlane().dot1qCollDel(key); };
   }
   const Json* tags = f.get("tags");
   std::string expected = "an object of dot1q tag (\"1\"..\"4094\") to VLAN (1..4094 or \"none\")";
   if (!tags || !tags->is_object()) {
      f.fail("tags", expected, tags);
   }
   Mpls::LfibDot1qTagToVlan::TagMap map;
   for (const auto& [tagText, vlan] : tags->items()) {
      std::size_t used = 0;
      unsigned long tag = 0;
      try {
         tag = std::stoul(tagText, &used);
      } catch (const std::exception&) {
         used = 0;
      }
      if (used != tagText.size() || tag < 1 || tag > 4094) {
         f.fail("tags", expected, tags);
      }
      Json one = Json::object({{"vlan", vlan}});
      Fields vf(one, f.where() + ": tag " + tagText, {"vlan"});
      map[Bridging::VlanId(static_cast<std::uint16_t>(tag))] = vf.vlanOrNone("vlan");
   }
   return [key, map](Runner& r) { r.controlPlane().dot1qColl(key, map); };
}

Action dot1qTagStep(const Fields& f) {
   Mpls::LfibDot1qTagToVlanKey key(static_cast<std::uint32_t>(f.integer("coll", 0, UINT32_MAX)));
   auto tag = f.vlan("tag");
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"coll", "tag"});
      return [key, tag](Runner& r) { r.controlPlane().dot1qTagDel(key, tag); };
   }
   auto vlan = f.vlanOrNone("vlan");
   return [=](Runner& r) { r.controlPlane().dot1qTag(key, tag, vlan); };
}

Action pwAdjacencyStep(const Fields& f) {
   auto index = f.integer("index", 0, UINT64_MAX);
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"index"});
      return [index](Runner& r) { r.controlPlane().pwAdjacencyDel(index); };
   }
   auto pw = f.intf("pwInterface");
   return [=](Runner& r) { r.controlPlane().pwAdjacency(index, pw); };
}

Action extFecAdjacencyStep(const Fields& f) {
   auto index = f.integer("index", 0, UINT64_MAX);
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"index"});
      return [index](Runner& r) { r.controlPlane().extFecAdjacencyDel(index); };
   }
   auto fecId = fecIdOf(f);
   auto action = f.optChoice("action", actionNames(), Wire::MplsLabelAction::pop);
   return [=](Runner& r) { r.controlPlane().extFecAdjacency(index, fecId, action); };
}

Action connectorStep(const Fields& f) {
   auto pw = f.intf("pwInterface");
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"pwInterface"});
      return [pw](Runner& r) { r.controlPlane().connectorDel(pw); };
   }
   Pseudowire::LocalConnectorInfo info(f.intf("parent"), f.tag("dot1qTag"), f.vlan("internalVlan"));
   return [=](Runner& r) { r.controlPlane().connector(pw, info); };
}

Action neighborStep(const Fields& f) {
   auto addr = f.ip("address");
   auto intf = f.intf("interface");
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"address", "interface"});
      return [=](Runner& r) { r.controlPlane().neighborDel(addr, intf); };
   }
   auto macAddr = f.mac("mac");
   auto vlan = f.vlan("vlan");
   auto l2Intf = f.optIntf("l2Interface").value_or(intf);
   Fal::VrfId vrf(static_cast<std::uint32_t>(f.optInteger("vrfId", 0, 0xfffffe).value_or(0)));
   return [=](Runner& r) { r.controlPlane().neighbor(addr, intf, macAddr, vlan, l2Intf, vrf); };
}

Action ipRouteStep(const Fields& f) {
   auto prefix = f.prefix("prefix");
   Fal::VrfId vrf(static_cast<std::uint32_t>(f.optInteger("vrfId", 0, 0xfffffe).value_or(0)));
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"prefix", "vrfId"});
      return [=](Runner& r) { r.controlPlane().ipRouteDel(vrf, prefix); };
   }
   using Routing::Hardware::RouteType;
   static const std::vector<std::pair<const char*, RouteType>> types = {
       {"connected", RouteType::connected},
       {"gateway", RouteType::gateway},
       {"drop", RouteType::drop},
       {"receive", RouteType::receive}};
   auto type =
       f.optChoice("type", types, f.has("gateway") ? RouteType::gateway : RouteType::connected);
   Routing::Hardware::IpRoute route;
   switch (type) {
      case RouteType::gateway: {
         auto gw = f.ip("gateway");
         if (gw.af() != prefix.af()) {
            f.fail("gateway", "an address of the prefix's family", f.get("gateway"));
         }
         route = Routing::Hardware::IpRoute::gateway(gw, f.intf("interface"));
         break;
      }
      case RouteType::connected:
         route = Routing::Hardware::IpRoute::connected(f.intf("interface"));
         break;
      case RouteType::drop:
         route = Routing::Hardware::IpRoute::drop();
         break;
      default:
         route = Routing::Hardware::IpRoute::receive();
         break;
   }
   return [=](Runner& r) { r.controlPlane().ipRoute(vrf, prefix, route); };
}

Action vrfNameStep(const Fields& f) {
   Fal::VrfId vrf(static_cast<std::uint32_t>(f.integer("vrfId", 0, 0xfffffe)));
   if (f.optBoolean("delete", false)) {
      f.onlyFields({"vrfId"});
      return [vrf](Runner& r) { r.controlPlane().vrfNameDel(vrf); };
   }
   L3::VrfName name;
   try {
      name = L3::VrfName(f.string("name"));
   } catch (const ScenarioError&) {
      throw;
   } catch (const std::exception&) {
      f.fail("name", "a VRF name of at most 100 bytes", f.get("name"));
   }
   return [=](Runner& r) { r.controlPlane().vrfName(vrf, name); };
}

// ------------------------------------------------------------------------------------------------
// Platform, time and agent steps.

Action capacityStep(const Fields& f) {
   f.oneOf({"routes", "l2Adjacencies", "fecs", "decapMappings"});
   auto routes = f.optCapacity("routes");
   auto adjs = f.optCapacity("l2Adjacencies");
   auto fecs = f.optCapacity("fecs");
   auto decaps = f.optCapacity("decapMappings");
   return [=](Runner& r) {
      Agent& a = r.agent();
      if (decaps) {
         a.decapHelper()->capacityIs(*decaps);
      }
      if (fecs) {
         a.fecIdService().capacityIs(*fecs);
      }
      if (adjs) {
         a.chip().l2AdjacencyCapacityIs(*adjs);
      }
      if (routes) {
         a.chip().routeCapacityIs(*routes);
      }
   };
}

Action refuseStep(const Fields& f) {
   enum class Target { routes, adjacencies, decap, fecRoutes };
   static const std::vector<std::pair<const char*, Target>> targets = {
       {"routes", Target::routes},
       {"adjacencies", Target::adjacencies},
       {"decap", Target::decap},
       {"fecRoutes", Target::fecRoutes}};
   auto target = f.optChoice("target", targets, Target::routes);
   auto count = static_cast<std::size_t>(f.integer("count", 0, 1000000000));
   if (target == Target::routes || target == Target::adjacencies) {
      if (f.has("returnCode")) {
         f.fail("returnCode", "no return code for the chip's targets (give a reason)",
                f.get("returnCode"));
      }
      auto reason = f.optChoice("reason", reasonNames(),
                                target == Target::routes ? Fal::UnprogrammedReason::RouteFull
                                                         : Fal::UnprogrammedReason::AdjacencyFull);
      auto chipTarget = target == Target::routes ? RefuseTarget::routes : RefuseTarget::adjacencies;
      return [=](Runner& r) { r.agent().chip().refuseNextIs(chipTarget, count, reason); };
   }
   if (f.has("reason")) {
      f.fail("reason", "no reason for the helpers' targets (give a returnCode)", f.get("reason"));
   }
   auto rc = static_cast<Mpls::LfibHwProgrammingReturnCode>(
       f.optInteger("returnCode", 1, UINT32_MAX).value_or(1));
   if (target == Target::decap) {
      return [=](Runner& r) { r.agent().decapHelper()->refuseNextIs(count, rc); };
   }
   return [=](Runner& r) { r.agent().routeHelper()->refuseNextIs(count, rc); };
}

Action interfaceStep(const Fields& f) {
   auto intf = f.intf("name");
   bool ready = f.boolean("ready");
   return [=](Runner& r) { r.agent().chip().interfaceReadyIs(intf, ready); };
}

Action attrLogStep(const Fields& f) {
   const Json* v = f.get("clogged");
   if (v && v->is_string() && v->get<std::string>() == "auto") {
      return [](Runner& r) { r.agent().attrLogSm()->cloggedDel(); };
   }
   if (!v || !v->is_boolean()) {
      f.fail("clogged", "true, false or \"auto\"", v);
   }
   bool clogged = v->get<bool>();
   return [=](Runner& r) { r.agent().attrLogSm()->cloggedIs(clogged); };
}

Action answerDelayStep(const Fields& f) {
   auto seconds = f.number("seconds", 0, 3600);
   enum class Target { chip, fec };
   static const std::vector<std::pair<const char*, Target>> targets = {{"chip", Target::chip},
                                                                       {"fec", Target::fec}};
   auto target = f.optChoice("target", targets, Target::chip);
   return [=](Runner& r) {
      if (target == Target::chip) {
         r.agent().chip().answerDelayIs(seconds);
      } else {
         r.agent().fecIdService().answerDelayIs(seconds);
      }
   };
}

Action advanceStep(const Fields& f) {
   auto seconds = f.number("seconds", 0, 1e7);
   return [=](Runner& r) { r.agent().advance(seconds); };
}

Action runUntilIdleStep(const Fields& f, double dflt) {
   auto max = f.optNumber("maxSeconds", 0, 1e7).value_or(dflt);
   return [=](Runner& r) { r.agent().runUntilIdle(max); };
}

// ------------------------------------------------------------------------------------------------
// Expectations.

struct ViaSpec {
   std::optional<Wire::IpGenAddr> nextHop;
   std::optional<Wire::EthAddr> mac;
   std::optional<Bridging::VlanId> vlan;
   std::optional<Wire::IntfId> intf;
   std::optional<Wire::MplsLabelOperation> labels;

   bool matches(const Mpls::Hardware::L2Via& v) const {
      return (!nextHop || *nextHop == v.nextHop()) && (!mac || *mac == v.macAddr()) &&
             (!vlan || *vlan == v.vlanId()) && (!intf || *intf == v.l2Intf()) &&
             (!labels || *labels == v.labelStack());
   }
   std::string text() const {
      std::ostringstream os;
      os << "{";
      const char* sep = "";
      if (nextHop) {
         os << sep << "nextHop " << *nextHop;
         sep = " ";
      }
      if (mac) {
         os << sep << "mac " << *mac;
         sep = " ";
      }
      if (vlan) {
         os << sep << "vlan " << *vlan;
         sep = " ";
      }
      if (intf) {
         os << sep << "interface " << *intf;
         sep = " ";
      }
      if (labels) {
         os << sep << "labels " << *labels;
      }
      os << "}";
      return os.str();
   }
};

std::string viaText(const Mpls::Hardware::L2Via& v) {
   std::ostringstream os;
   os << "{nextHop " << v.nextHop() << " mac " << v.macAddr() << " vlan " << v.vlanId()
      << " interface " << v.l2Intf() << " labels " << v.labelStack() << "}";
   return os.str();
}

std::vector<ViaSpec> viaSpecs(const Fields& f) {
   const Json* adj = f.get("adjacency");
   std::string expected =
       "an object {\"vias\": [{\"nextHop\", \"mac\", \"vlan\", \"interface\", "
       "\"labels\"}, ...]}";
   if (!adj || !adj->is_object()) {
      f.fail("adjacency", expected, adj);
   }
   Fields af(*adj, f.where() + ": adjacency", {"vias"});
   const Json* vias = af.get("vias");
   if (!vias || !vias->is_array()) {
      af.fail("vias", "an array of vias", vias);
   }
   std::vector<ViaSpec> out;
   std::size_t i = 0;
   for (const auto& v : *vias) {
      Fields vf(v, f.where() + ": adjacency via " + std::to_string(i++),
                {"nextHop", "mac", "vlan", "interface", "labels"});
      ViaSpec desc;
      if (vf.has("nextHop")) {
         desc.nextHop = vf.ip("nextHop");
      }
      if (vf.has("mac")) {
         desc.mac = vf.mac("mac");
      }
      if (vf.has("vlan")) {
         desc.vlan = vf.tag("vlan");
      }
      if (vf.has("interface")) {
         desc.intf = vf.intf("interface");
      }
      if (vf.has("labels")) {
         Wire::MplsLabelOperation op;
         for (auto l : vf.labels("labels")) {
            op.push(l);
         }
         desc.labels = op;
      }
      out.push_back(desc);
   }
   return out;
}

Action expectRouteStep(const Fields& f) {
   Mpls::RouteKey key(f.label("label"));
   auto state = f.choice("state", stateNames());
   auto reason = f.has("reason") ? std::optional<std::string>(f.string("reason")) : std::nullopt;
   if (reason && state != RouteState::unprogrammed) {
      f.fail("reason", "a reason only with state \"unprogrammed\"", f.get("reason"));
   }
   auto path = f.optString("path");
   if (path && *path != "adjacency" && *path != "fec") {
      f.fail("path", "\"adjacency\" or \"fec\"", f.get("path"));
   }
   std::optional<std::vector<ViaSpec>> vias;
   if (f.has("adjacency")) {
      vias = viaSpecs(f);
   }
   auto version = f.optInteger("version", 0, UINT64_MAX);
   auto answered = f.optInteger("answeredVersion", 0, UINT64_MAX);
   return [=](Runner& r) {
      RouteView v = routeView(r.agent(), key);
      if (version) {
         r.check(v.configuredVersion == *version, "configured version", std::to_string(*version),
                 std::to_string(v.configuredVersion));
      }
      if (answered) {
         r.check(v.answeredVersion == *answered, "answered version", std::to_string(*answered),
                 v.answeredVersion ? std::to_string(*v.answeredVersion) : "none");
      }
      std::string found(routeStateName(v.state));
      if (!v.reason.empty()) {
         found += " (" + v.reason + ")";
      }
      r.check(v.state == state, "state", std::string(routeStateName(state)), found);
      if (reason) {
         r.check(v.reason == *reason, "reason", *reason, v.reason.empty() ? "none" : v.reason);
      }
      if (path) {
         r.check(v.path == *path, "path", *path, v.path.empty() ? "none" : v.path);
      }
      if (vias) {
         std::string expected, foundText;
         for (const auto& s : *vias) {
            expected += (expected.empty() ? "" : ", ") + s.text();
         }
         for (const auto& via : v.vias) {
            foundText += (foundText.empty() ? "" : ", ") + viaText(via);
         }
         std::vector<bool> used(v.vias.size(), false);
         bool ok = v.vias.size() == vias->size();
         for (const auto& s : *vias) {
            bool matched = false;
            for (std::size_t i = 0; ok && i < v.vias.size() && !matched; ++i) {
               if (!used[i] && s.matches(v.vias[i])) {
                  used[i] = true;
                  matched = true;
               }
            }
            ok = ok && matched;
         }
         r.check(ok, "adjacency vias", "[" + expected + "]", "[" + foundText + "]");
      }
   };
}

Action expectRouteCountStep(const Fields& f) {
   auto state = f.choice("state", stateNames());
   auto count = static_cast<std::size_t>(f.integer("count", 0, UINT64_MAX));
   return [=](Runner& r) {
      std::size_t n = snapshot(r.agent()).routesIn(state);
      r.check(n == count, std::string(routeStateName(state)) + " routes", std::to_string(count),
              std::to_string(n));
   };
}

Action expectL2AdjacenciesStep(const Fields& f) {
   f.oneOf({"count", "programmed"});
   auto count = f.optInteger("count", 0, UINT64_MAX);
   auto programmed = f.optInteger("programmed", 0, UINT64_MAX);
   return [=](Runner& r) {
      auto config = r.agent().defaultVrfConfig();
      auto status = r.agent().defaultVrfStatus();
      if (count) {
         std::size_t n = config ? config->l2Adjacencies() : 0;
         r.check(n == *count, "configured L2 adjacencies", std::to_string(*count),
                 std::to_string(n));
      }
      if (programmed) {
         std::size_t n = status ? status->l2Adjacencies() : 0;
         r.check(n == *programmed, "programmed L2 adjacencies", std::to_string(*programmed),
                 std::to_string(n));
      }
   };
}

Action expectAdjacencyStep(const Fields& f) {
   auto index = f.integer("index", 1, UINT64_MAX);
   bool present = f.optBoolean("present", true);
   auto count = f.optInteger("count", 0, UINT32_MAX);
   auto programmedCount = f.optInteger("programmedCount", 0, UINT32_MAX);
   auto reason = f.optString("reason");
   auto routes = f.optInteger("routes", 0, UINT64_MAX);
   return [=](Runner& r) {
      std::optional<AdjacencyView> found;
      for (auto& v : adjacencyViews(r.agent())) {
         if (v.index == index) {
            found = v;
         }
      }
      r.check(found.has_value() == present, "L2 adjacency " + std::to_string(index),
              present ? "present" : "absent", found ? "present" : "absent");
      if (!found) {
         return;
      }
      if (count) {
         r.check(found->count == *count, "programming count", std::to_string(*count),
                 std::to_string(found->count));
      }
      if (programmedCount) {
         r.check(found->programmedCount == *programmedCount, "answered programming count",
                 std::to_string(*programmedCount), std::to_string(found->programmedCount));
      }
      if (reason) {
         std::string got = found->reason.empty() ? "none" : found->reason;
         r.check(got == *reason, "reason", *reason, got);
      }
      if (routes) {
         r.check(found->routes == *routes, "routes", std::to_string(*routes),
                 std::to_string(found->routes));
      }
   };
}

Action expectPublishedStep(const Fields& f) {
   Mpls::RouteKey key(f.label("label"));
   bool present = f.optBoolean("present", true);
   auto adjacency = f.optInteger("adjacency", 0, UINT64_MAX);
   auto l2Adjacency = f.optInteger("l2Adjacency", 0, UINT64_MAX);
   auto version = f.optInteger("version", 0, UINT64_MAX);
   std::optional<bool> unprogrammed;
   if (f.has("unprogrammed")) {
      unprogrammed = f.boolean("unprogrammed");
   }
   return [=](Runner& r) {
      const auto& hw = r.agent().hwMplsStatus();
      bool has = hw && hw->routeHas(key);
      r.check(has == present, "published route", present ? "present" : "absent",
              has ? "present" : "absent");
      if (!has) {
         return;
      }
      Mpls::Hardware::Route route = hw->route(key);
      auto num = [&](const char* what, std::optional<std::uint64_t> want, std::uint64_t got) {
         if (want) {
            r.check(*want == got, what, std::to_string(*want), std::to_string(got));
         }
      };
      num("published adjacency", adjacency, route.adjacencyIndex());
      num("published L2 adjacency", l2Adjacency, route.l2AdjacencyIndex());
      num("published version", version, route.version());
      if (unprogrammed) {
         r.check(route.unprogrammed() == *unprogrammed, "published unprogrammed",
                 boolText(*unprogrammed), boolText(route.unprogrammed()));
      }
   };
}

Action expectDecapStep(const Fields& f) {
   auto label = f.label("label");
   static const std::vector<std::pair<const char*, std::string>> kinds = {
       {"vrf", "vrf"}, {"vlan", "vlan"}, {"dot1q", "dot1q"}};
   std::string kind = f.choice("kind", kinds);
   bool present = f.optBoolean("present", true);
   std::optional<Bridging::VlanId> tag;
   if (kind == "dot1q") {
      tag = f.vlan("dot1qTag");
   } else if (f.has("dot1qTag")) {
      f.fail("dot1qTag", "a dot1q tag only with kind \"dot1q\"", f.get("dot1qTag"));
   }
   std::optional<L3::VrfName> vrf;
   std::optional<Mpls::PayloadType> payload;
   std::optional<Bridging::VlanIdOrNone> vlan;
   std::optional<bool> flood;
   if (f.has("vrf")) {
      vrf = L3::VrfName(f.string("vrf"));
   }
   if (f.has("payloadType")) {
      payload = f.choice("payloadType", payloadNames());
   }
   if (f.has("vlan")) {
      vlan = f.vlanOrNone("vlan");
   }
   if (f.has("flood")) {
      flood = f.boolean("flood");
   }
   if (!present && (vrf || payload || vlan || flood)) {
      throw ScenarioError(f.where() + ": field 'present': arguments are only checked when present");
   }
   return [=](Runner& r) {
      std::optional<DecapView> found;
      for (const auto& d : decapViews(r.agent())) {
         if (d.kind == kind && d.label == label && (!tag || d.dot1qTag == *tag)) {
            found = d;
         }
      }
      r.check(found.has_value() == present, "mapping", present ? "present" : "absent",
              found ? "present" : "absent");
      if (!found || !present) {
         return;
      }
      if (vrf) {
         r.check(found->vrf == *vrf, "vrf", vrf->stringValue(), found->vrf.stringValue());
      }
      if (payload) {
         r.check(found->payloadType == *payload, "payloadType", text(*payload),
                 text(found->payloadType));
      }
      if (vlan) {
         r.check(found->vlan == *vlan, "vlan", vlan->stringValue(), found->vlan.stringValue());
      }
      if (flood) {
         r.check(found->flood == *flood, "flood", boolText(*flood), boolText(found->flood));
      }
   };
}

Action expectDecapUnprogrammedStep(const Fields& f) {
   Mpls::RouteKey key(f.label("label"));
   bool present = f.optBoolean("present", true);
   auto rc = f.optInteger("returnCode", 1, UINT32_MAX);
   return [=](Runner& r) {
      const auto& hw = *r.agent().lfibHwStatus();
      bool has = hw.unprogrammedRouteHas(key);
      r.check(has == present, "unprogrammed decap route", present ? "listed" : "not listed",
              has ? "listed" : "not listed");
      if (has && present && rc) {
         auto found = static_cast<std::uint64_t>(hw.unprogrammedRoute(key).reason());
         r.check(found == *rc, "returnCode", std::to_string(*rc), std::to_string(found));
      }
   };
}

Action expectPwDecapStep(const Fields& f) {
   auto label = f.label("label");
   bool present = f.optBoolean("present", true);
   auto pw = f.optIntf("pwInterface");
   return [=](Runner& r) {
      auto entry = r.agent().pwDecapTable().entry(label);
      bool has = !(entry == FalPw::PwDecapInfo());
      r.check(has == present, "pseudowire decap record", present ? "present" : "absent",
              has ? "present" : "absent");
      if (has && present && pw) {
         r.check(entry.pwIntfId() == *pw, "pwInterface", pw->stringValue(),
                 entry.pwIntfId().stringValue());
      }
   };
}

Action expectFecRequestStep(const Fields& f) {
   static const std::vector<std::pair<const char*, std::string>> tables = {
       {"transit", "transit"}, {"pseudowire", "pseudowire"}};
   std::string table = f.optChoice("table", tables, std::string("transit"));
   if (f.has("count")) {
      if (f.has("fecIndex") || f.has("present") || f.has("answered")) {
         throw ScenarioError(f.where() +
                             ": field 'count': give either count or fecIndex, not both");
      }
      auto count = static_cast<std::size_t>(f.integer("count", 0, UINT64_MAX));
      return [=](Runner& r) {
         std::size_t n = 0;
         for (const auto& v : fecRequestViews(r.agent())) {
            n += v.table == table;
         }
         r.check(n == count, table + " FEC requests", std::to_string(count), std::to_string(n));
      };
   }
   auto fecId = fecIdOf(f);
   bool present = f.optBoolean("present", true);
   auto answered =
       f.has("answered") ? std::optional<bool>(f.boolean("answered")) : std::optional<bool>();
   std::optional<Memtab::Fib::FecId> backup;
   if (f.has("backupFecIndex")) {
      auto type = f.optInteger("backupFecAdjType", 0, 20).value_or(10);
      backup = Memtab::Fib::FecId::fecIdForAdjType(
          static_cast<Memtab::Fib::AdjType>(type),
          f.integer("backupFecIndex", 0, Memtab::Fib::FecId::kIndexMask));
   }
   return [=](Runner& r) {
      std::optional<FecRequestView> found;
      for (const auto& v : fecRequestViews(r.agent())) {
         if (v.table == table && v.fecId == fecId) {
            found = v;
         }
      }
      r.check(found.has_value() == present, "FEC request " + fecId.stringValue(),
              present ? "present" : "absent", found ? "present" : "absent");
      if (found && present && answered) {
         bool a = found->hwFecId != 0;
         r.check(a == *answered, "answered", boolText(*answered), boolText(a));
      }
      if (found && present && backup) {
         r.check(found->backupFecId == *backup, "backup FEC", backup->stringValue(),
                 found->backupFecId.isValid() ? found->backupFecId.stringValue() : "none");
      }
   };
}

Action expectLogStep(const Fields& f) {
   auto name = f.string("name");
   auto count = static_cast<std::size_t>(f.integer("count", 0, UINT64_MAX));
   return [=](Runner& r) {
      std::size_t n = r.agent().logSink().count(name);
      r.check(n == count, name + " messages", std::to_string(count), std::to_string(n));
   };
}

Action expectTraceStep(const Fields& f, const ScenarioConfig& config) {
   auto fragment = f.string("text");
   bool seen = f.optBoolean("seen", true);
   if (config.trace.empty() && !config.fastLog) {
      throw ScenarioError(f.where() +
                          ": field 'text': expected traces to look in, found none enabled "
                          "(set config.trace or config.fastLog)");
   }
   return [=](Runner& r) {
      bool found = r.traceSeen(fragment);
      r.check(found == seen, "trace \"" + fragment + "\"", seen ? "seen" : "not seen",
              found ? "seen" : "not seen");
   };
}

// ------------------------------------------------------------------------------------------------
// The table of operations.

struct OpDef {
   std::vector<const char*> fields;
   bool expectation;
   std::function<Action(const std::string& op, const Fields&, const ScenarioConfig&)> parse;
};

const std::map<std::string, OpDef>& ops() {
   auto via = [](const std::string& op, const Fields& f, const ScenarioConfig&) {
      return viaStep(op, f);
   };
   auto simple = [](Action (*fn)(const Fields&)) {
      return [fn](const std::string&, const Fields& f, const ScenarioConfig&) { return fn(f); };
   };
   static const std::map<std::string, OpDef> table = {
       {"mplsVia",
        {{"index", "source", "delete", "nextHop", "interface", "labels", "action", "payloadType"},
         false,
         via}},
       {"extFecVia",
        {{"index", "source", "delete", "fecAdjType", "fecIndex", "action"}, false, via}},
       {"ipLookupVia", {{"index", "source", "delete", "vrf", "payloadType"}, false, via}},
       {"vlanVia", {{"index", "source", "delete", "vlan"}, false, via}},
       {"evpnVlanFloodVia", {{"index", "source", "delete", "vlan"}, false, via}},
       {"evpnVlanAwareVia", {{"index", "source", "delete", "dot1qColl"}, false, via}},
       {"evpnVlanAwareFloodVia", {{"index", "source", "delete", "dot1qColl"}, false, via}},
       {"evpnEthernetSegmentFilterVia", {{"index", "source", "delete"}, false, via}},
       {"pwVia", {{"index", "source", "delete", "pwInterface"}, false, via}},
       {"viaSet",
        {{"viaType", "index", "source", "delete", "vias", "setType", "backup"},
         false,
         simple(viaSetStep)}},
       {"route",
        {{"label", "delete", "viaType", "viaSet", "source", "metric", "pwAdjacency"},
         false,
         simple(routeStep)}},
       {"dot1qColl", {{"index", "delete", "tags"}, false, simple(dot1qCollStep)}},
       {"dot1qTag", {{"coll", "tag", "delete", "vlan"}, false, simple(dot1qTagStep)}},
       {"pwAdjacency", {{"index", "delete", "pwInterface"}, false, simple(pwAdjacencyStep)}},
       {"extFecAdjacency",
        {{"index", "delete", "fecAdjType", "fecIndex", "action"},
         false,
         simple(extFecAdjacencyStep)}},
       {"connector",
        {{"pwInterface", "delete", "parent", "dot1qTag", "internalVlan"},
         false,
         simple(connectorStep)}},
       {"neighbor",
        {{"address", "interface", "delete", "mac", "vlan", "l2Interface", "vrfId"},
         false,
         simple(neighborStep)}},
       {"ipRoute",
        {{"prefix", "vrfId", "delete", "type", "gateway", "interface"},
         false,
         simple(ipRouteStep)}},
       {"vrfName", {{"vrfId", "delete", "name"}, false, simple(vrfNameStep)}},
       {"mplsRouting",
        {{"enabled"},
         false,
         [](const std::string&, const Fields& f, const ScenarioConfig&) -> Action {
            bool on = f.boolean("enabled");
            return [on](Runner& r) { r.controlPlane().mplsRoutingIs(on); };
         }}},
       {"nexthopResolutionAllowDefaultRoute",
        {{"allowed"},
         false,
         [](const std::string&, const Fields& f, const ScenarioConfig&) -> Action {
            bool on = f.boolean("allowed");
            return [on](Runner& r) { r.controlPlane().nexthopResolutionAllowDefaultRouteIs(on); };
         }}},
       {"capacity",
        {{"routes", "l2Adjacencies", "fecs", "decapMappings"}, false, simple(capacityStep)}},
       {"refuse", {{"target", "count", "reason", "returnCode"}, false, simple(refuseStep)}},
       {"interface", {{"name", "ready"}, false, simple(interfaceStep)}},
       {"platformRouting",
        {{"enabled"},
         false,
         [](const std::string&, const Fields& f, const ScenarioConfig&) -> Action {
            // Off: the platform withdraws its confirmation of MPLS routing in the default VRF on
            // its own (as when its forwarding pipeline goes away); it stays withdrawn until the
            // agent writes the VRF's switch again or the platform is told to answer again (on).
            bool on = f.boolean("enabled");
            if (on) {
               return [](Runner& r) { r.agent().chip().confirmRoutingIs(true); };
            }
            return [](Runner& r) {
               if (auto status = r.agent().defaultVrfStatus()) {
                  status->mplsRoutingIs(false);
               }
            };
         }}},
       {"outOfOrder",
        {{"enabled"},
         false,
         [](const std::string&, const Fields& f, const ScenarioConfig&) -> Action {
            bool on = f.boolean("enabled");
            return [on](Runner& r) { r.agent().chip().outOfOrderIs(on); };
         }}},
       {"attrLog", {{"clogged"}, false, simple(attrLogStep)}},
       {"answerDelay", {{"seconds", "target"}, false, simple(answerDelayStep)}},
       {"advance", {{"seconds"}, false, simple(advanceStep)}},
       {"runUntilIdle",
        {{"maxSeconds"},
         false,
         [](const std::string&, const Fields& f, const ScenarioConfig& c) {
            return runUntilIdleStep(f, c.idleLimit);
         }}},
       {"restart",
        {{},
         false,
         [](const std::string&, const Fields&, const ScenarioConfig&) -> Action {
            return [](Runner& r) { r.agent().restart(); };
         }}},
       {"expectRoute",
        {{"label", "state", "reason", "path", "adjacency", "version", "answeredVersion"},
         true,
         simple(expectRouteStep)}},
       {"expectAdjacency",
        {{"index", "present", "count", "programmedCount", "reason", "routes"},
         true,
         simple(expectAdjacencyStep)}},
       {"expectPublished",
        {{"label", "present", "adjacency", "l2Adjacency", "version", "unprogrammed"},
         true,
         simple(expectPublishedStep)}},
       {"expectRouteCount", {{"state", "count"}, true, simple(expectRouteCountStep)}},
       {"expectL2Adjacencies", {{"count", "programmed"}, true, simple(expectL2AdjacenciesStep)}},
       {"expectDecap",
        {{"label", "kind", "present", "dot1qTag", "vrf", "payloadType", "vlan", "flood"},
         true,
         simple(expectDecapStep)}},
       {"expectDecapUnprogrammed",
        {{"label", "present", "returnCode"}, true, simple(expectDecapUnprogrammedStep)}},
       {"expectPwDecap", {{"label", "present", "pwInterface"}, true, simple(expectPwDecapStep)}},
       {"expectFecRequest",
        {{"table", "count", "fecAdjType", "fecIndex", "present", "answered", "backupFecAdjType",
          "backupFecIndex"},
         true,
         simple(expectFecRequestStep)}},
       {"expectLog", {{"name", "count"}, true, simple(expectLogStep)}},
       {"packet",
        {packetFields, false,
         [](const std::string&, const Fields& f, const ScenarioConfig& c) {
            return packetStep(f, c.forwarder);
         }}},
       {"expectPacket", {expectPacketFields, true, simple(expectPacketStep)}},
       {"expectExplain", {{"label", "cause"}, true, simple(expectExplainStep)}},
       {"expectHelperCalls", {{"call", "count"}, true, simple(expectHelperCallsStep)}},
       {"expectDecapMismatchedDeletes",
        {{"count"}, true, simple(expectDecapMismatchedDeletesStep)}},
       {"expectFecContents",
        {{"table", "nextHop", "interface", "labels", "action", "internalVlan", "present"},
         true,
         simple(expectFecContentsStep)}},
       {"expectMplsIpStatus", {{"label", "present"}, true, simple(expectMplsIpStatusStep)}},
       {"expectTrace",
        {{"text", "seen"},
         true,
         [](const std::string&, const Fields& f, const ScenarioConfig& c) {
            return expectTraceStep(f, c);
         }}},
   };
   return table;
}

ScenarioConfig parseConfig(const Json* j, const std::string& file) {
   ScenarioConfig c;
   if (!j) {
      return c;
   }
   Fields f(*j, file + ": config",
            {"capacity", "answerDelay", "fecAnswerDelay", "fecForwarding", "decap", "pseudowire",
             "mplsRouting", "defaultVrfName", "toggles", "retryInterval", "decapRetryInterval",
             "trace", "traceToStderr", "fastLog", "idleLimit", "routerMac", "ttlMode",
             "transitInvariants", "pseudowireInvariants"});
   c.forwarder = forwarderOptionsFromConfig(f);
   if (const Json* cap = f.get("capacity")) {
      Fields cf(*cap, file + ": config.capacity",
                {"routes", "l2Adjacencies", "fecs", "decapMappings"});
      c.routeCapacity = cf.optCapacity("routes");
      c.l2AdjacencyCapacity = cf.optCapacity("l2Adjacencies");
      c.fecCapacity = cf.optCapacity("fecs");
      c.decapCapacity = cf.optCapacity("decapMappings");
   }
   c.chipAnswerDelay = f.optNumber("answerDelay", 0, 3600).value_or(0);
   c.fecAnswerDelay = f.optNumber("fecAnswerDelay", 0, 3600).value_or(0);
   c.agent.fecForwarding = f.optBoolean("fecForwarding", false);
   c.agent.decap = f.optBoolean("decap", true);
   c.agent.pseudowire = f.optBoolean("pseudowire", true);
   c.agent.mplsRouting = f.optBoolean("mplsRouting", true);
   c.agent.defaultVrfName = f.optBoolean("defaultVrfName", true);
   if (auto v = f.optNumber("retryInterval", 0.001, 86400)) {
      c.agent.transitRetryInterval = *v;
   }
   if (auto v = f.optNumber("decapRetryInterval", 0.001, 86400)) {
      c.agent.decapRetryInterval = *v;
   }
   if (const Json* t = f.get("toggles")) {
      if (!t->is_object()) {
         f.fail("toggles", "an object of toggle name to true or false", t);
      }
      for (const auto& [name, value] : t->items()) {
         if (!value.is_boolean()) {
            f.fail("toggles." + name, "true or false", &value);
         }
         c.toggles.emplace_back(name, value.get<bool>());
      }
   }
   if (auto t = f.optString("trace")) {
      try {
         Log::TraceConfig::parse(*t);
      } catch (const std::exception&) {
         f.fail("trace", "a trace setting like \"MplsSm/0-9,MplsDecapSm/5\"", f.get("trace"));
      }
      c.trace = *t;
   }
   c.traceToStderr = f.optBoolean("traceToStderr", false);
   c.fastLog = f.optBoolean("fastLog", false);
   c.idleLimit = f.optNumber("idleLimit", 0, 1e7).value_or(60.0);
   c.transitInvariants = f.optBoolean("transitInvariants", true);
   c.pseudowireInvariants = f.optBoolean("pseudowireInvariants", true);
   return c;
}

}  // namespace

std::vector<std::string> scenarioOperations() {
   std::vector<std::string> out;
   for (const auto& [name, def] : ops()) {
      out.push_back(name);
   }
   return out;
}

namespace {

// Follows the JSON parser through the document: refuses nesting deeper than kMaxJsonDepth before
// anything recurses over the value, refuses a key given twice in one object, and knows at every
// point which step and field it is in, for the error messages of the parser itself (a number that
// overflows, a syntax error).
class JsonGuard {
 public:
   explicit JsonGuard(const std::string& file) : file_(file) {}

   bool operator()(int, Json::parse_event_t event, Json& parsed) {
      using E = Json::parse_event_t;
      switch (event) {
         case E::object_start:
         case E::array_start:
            countElement();
            if (frames_.size() >= kMaxJsonDepth) {
               throw ScenarioError(where() + ": nested deeper than " +
                                   std::to_string(kMaxJsonDepth) + " levels");
            }
            frames_.push_back(Frame{event == E::object_start, {}, {}, 0});
            break;
         case E::key: {
            Frame& f = frames_.back();
            f.key = parsed.get<std::string>();
            if (!f.keys.insert(f.key).second) {
               throw ScenarioError(where() + ": given twice in one object");
            }
            break;
         }
         case E::object_end:
         case E::array_end:
            frames_.pop_back();
            break;
         case E::value:
            countElement();
            break;
      }
      return true;
   }

   // "file: step 3: field 'seconds'", as far as the parser got.
   std::string where() const {
      std::string out = file_;
      std::size_t first = 0;
      if (!frames_.empty() && frames_[0].object && frames_[0].key == "steps" &&
          frames_.size() > 1) {
         out += ": step " + std::to_string(frames_[1].elements);
         first = 2;
      } else if (!frames_.empty() && frames_[0].object && frames_[0].key == "config") {
         out += ": config";
         first = 1;
      }
      std::string field;
      for (std::size_t i = first; i < frames_.size(); ++i) {
         if (frames_[i].object && !frames_[i].key.empty()) {
            field += (field.empty() ? "" : ".") + frames_[i].key;
         }
      }
      return field.empty() ? out : out + ": field '" + field + "'";
   }

 private:
   struct Frame {
      bool object;
      std::set<std::string> keys;
      std::string key;
      std::size_t elements;
   };

   void countElement() {
      if (!frames_.empty() && !frames_.back().object) {
         ++frames_.back().elements;
      }
   }

   const std::string& file_;
   std::vector<Frame> frames_;
};

Step parseStep(const Json& j, std::size_t number, const std::string& file,
               const ScenarioConfig& config) {
   std::string where = file + ": step " + std::to_string(number);
   if (!j.is_object()) {
      throw ScenarioError(where + ": expected an object with an \"op\", found " + Fields::show(j));
   }
   auto opIt = j.find("op");
   if (opIt == j.end() || !opIt->is_string() || !ops().contains(opIt->get<std::string>())) {
      std::string known;
      for (const auto& name : scenarioOperations()) {
         known += known.empty() ? "" : ", ";
         known += name;
      }
      throw ScenarioError(where + ": field 'op': expected one of " + known + ", found " +
                          (opIt == j.end() ? std::string("nothing") : Fields::show(*opIt)));
   }
   std::string op = opIt->get<std::string>();
   const OpDef& def = ops().at(op);
   where += " (" + op + ")";
   try {
      Fields f(j, where, def.fields);
      Step step;
      step.number = number;
      step.op = op;
      step.expectation = def.expectation;
      Json shown = j;
      shown.erase("comment");
      step.text = shown.dump();
      step.run = def.parse(op, f, config);
      if (op == "advance") {
         step.seconds = f.number("seconds", 0, 1e7);
      } else if (op == "runUntilIdle") {
         step.seconds = f.optNumber("maxSeconds", 0, 1e7).value_or(config.idleLimit);
      }
      return step;
   } catch (const ScenarioError&) {
      throw;
   } catch (const std::exception& e) {
      throw ScenarioError(where + ": " + e.what());
   }
}

}  // namespace

double Scenario::shortestRetryInterval() const {
   // The library's own intervals when the config sets none: 10 s for transit routes.
   double transit =
       config.agent.transitRetryInterval >= 0 ? config.agent.transitRetryInterval : 10.0;
   double decap = config.agent.decapRetryInterval >= 0 ? config.agent.decapRetryInterval
                                                       : Fal::MplsDecapSm::defaultRetryInterval;
   return std::min(transit, decap);
}

Scenario Scenario::parse(const std::string& text, const std::string& file) {
   Json doc;
   JsonGuard guard(file);
   try {
      doc = Json::parse(text, std::ref(guard));
   } catch (const Json::parse_error& e) {
      throw ScenarioError(file + ": not valid JSON: " + e.what());
   } catch (const Json::exception& e) {
      throw ScenarioError(guard.where() + ": " + e.what());
   }
   Scenario s;
   s.file = file;
   try {
      Fields top(doc, file, {"name", "description", "config", "steps"});
      s.name = top.optString("name").value_or("");
      s.description = top.optString("description").value_or("");
      s.config = parseConfig(top.get("config"), file);
      const Json* steps = top.get("steps");
      if (!steps || !steps->is_array()) {
         top.fail("steps", "an array of steps", steps);
      }
      std::size_t number = 0;
      for (const auto& j : *steps) {
         s.steps.push_back(parseStep(j, ++number, file, s.config));
      }
   } catch (const ScenarioError&) {
      throw;
   } catch (const std::exception& e) {
      throw ScenarioError(file + ": " + e.what());
   }
   return s;
}

Scenario Scenario::load(const std::string& path) {
   std::error_code ec;
   if (std::filesystem::is_directory(path, ec)) {
      throw ScenarioError(path + ": is a directory, not a scenario file");
   }
   errno = 0;
   std::ifstream in(path, std::ios::binary);
   if (!in) {
      int e = errno;
      throw ScenarioError(path + ": cannot be read: " + (e ? std::strerror(e) : "unknown reason"));
   }
   std::ostringstream os;
   os << in.rdbuf();
   if (in.bad()) {
      throw ScenarioError(path + ": cannot be read: " + std::strerror(errno));
   }
   return parse(os.str(), path);
}

}  // namespace sim
