// The forwarding model of the simulated chip: one frame through what the platform holds.
#include "Forwarder.h"

#include <array>
#include <utility>

#include "Agent.h"

namespace sim {

namespace {

using Kind = ForwardResult::Kind;

constexpr std::array<std::pair<DropReason, const char*>, 7> kReasonTexts = {{
    {DropReason::noRoute, "no route"},
    {DropReason::routeUnprogrammed, "route unprogrammed"},
    {DropReason::adjacencyUnprogrammed, "adjacency unprogrammed"},
    {DropReason::interfaceNotReady, "interface not ready"},
    {DropReason::ttlExpired, "TTL expired"},
    {DropReason::badFrame, "bad frame"},
    {DropReason::noConnector, "no connector"},
}};

ForwardResult drop(DropReason reason) {
   ForwardResult r;
   r.reason = reason;
   return r;
}

// FNV-1a, 64 bit.
struct Fnv {
   std::uint64_t h = 14695981039346656037ull;
   void add(std::uint64_t v, int bytes) {
      for (int i = 0; i < bytes; ++i) {
         h = (h ^ (v >> (8 * i) & 0xff)) * 1099511628211ull;
      }
   }
   void add(const std::string& s) {
      for (unsigned char c : s) {
         add(c, 1);
      }
   }
};

}  // namespace

const char* dropReasonText(DropReason r) {
   for (const auto& [reason, text] : kReasonTexts) {
      if (reason == r) {
         return text;
      }
   }
   return "none";
}

bool parseDropReason(const std::string& text, DropReason& out) {
   for (const auto& [reason, t] : kReasonTexts) {
      if (text == t) {
         out = reason;
         return true;
      }
   }
   return false;
}

std::string ForwardResult::text() const {
   switch (kind) {
      case Kind::dropped:
         return std::string("dropped: ") + dropReasonText(reason);
      case Kind::forwarded:
         return "forwarded " + port.stringValue() + " " + frame.text();
      case Kind::toVrf:
         return "vrf " + vrf + " " + frame.text();
      case Kind::toVlan:
         return "vlan " + std::to_string(vlan) + (flood ? " flood " : " ") + frame.text();
   }
   return "";
}

Forwarder::Forwarder(const Agent& agent, ForwarderOptions options)
    : agent_(agent), options_(options) {}

std::uint64_t Forwarder::flowHash(const Frame& f) {
   Fnv h;
   for (const auto& e : f.labels) {
      h.add(e.label, 3);
   }
   if (f.payloadKind() != PayloadKind::ethernet) {
      if (auto ip = ipFields(f.payload)) {
         h.add(ip->src);
         h.add(ip->dst);
         h.add(ip->protocol, 1);
         h.add(ip->srcPort, 2);
         h.add(ip->dstPort, 2);
      }
   }
   return h.h;
}

ForwardResult Forwarder::forwardBytes(std::span<const std::uint8_t> bytes,
                                      Wire::IntfId ingress) const {
   try {
      return forward(parseFrame(bytes), ingress);
   } catch (const FrameError&) {
      return drop(DropReason::badFrame);
   }
}

namespace {

// The label operation of a via on a frame: the top entry gives way to `op` (an empty operation
// pops), the TTL goes down by one and travels as the TTL mode says, and only the last entry of
// the stack keeps the bottom bit. A popped bottom label leaves an IP packet carrying the TTL.
DropReason relabel(Frame& f, const Wire::MplsLabelOperation& op, TtlMode mode) {
   LabelEntry top = f.labels.front();
   if (top.ttl <= 1) {
      return DropReason::ttlExpired;
   }
   auto ttl = static_cast<std::uint8_t>(top.ttl - 1);
   f.labels.erase(f.labels.begin());
   if (op.empty()) {
      if (!f.labels.empty()) {
         if (mode == TtlMode::uniform) {
            f.labels.front().ttl = ttl;
         }
         return DropReason::none;
      }
      PayloadKind kind = f.payloadKind();
      if (kind == PayloadKind::ethernet) {
         return DropReason::badFrame;
      }
      f.etherType = kind == PayloadKind::ipv4 ? etherTypeIpv4 : etherTypeIpv6;
      if (mode == TtlMode::uniform) {
         ipTtlIs(f.payload, ttl);
      }
      return DropReason::none;
   }
   std::vector<LabelEntry> pushed;
   for (std::size_t i = 0; i < op.stackSize(); ++i) {
      std::uint8_t t = i == 0 || mode == TtlMode::uniform ? ttl : 255;
      pushed.push_back({op.labelStack(i).value(), top.tc, false, t});
   }
   f.labels.insert(f.labels.begin(), pushed.begin(), pushed.end());
   for (auto& e : f.labels) {
      e.bottom = false;
   }
   f.labels.back().bottom = true;
   return DropReason::none;
}

// Pops the top label of a frame that ends here; the rest must be the one payload expected.
DropReason popLast(Frame& f) {
   if (f.labels.front().ttl <= 1) {
      return DropReason::ttlExpired;
   }
   if (f.labels.size() != 1) {
      return DropReason::badFrame;
   }
   f.labels.clear();
   return DropReason::none;
}

}  // namespace

ForwardResult Forwarder::forward(const Frame& in, Wire::IntfId ingress) const {
   if (!agent_.chip().interfaceReady(ingress)) {
      return drop(DropReason::interfaceNotReady);
   }
   if (in.labels.empty()) {
      return drop(DropReason::badFrame);
   }
   return transit(in, ingress);
}

ForwardResult Forwarder::transit(const Frame& in, Wire::IntfId) const {
   const Chip& chip = agent_.chip();
   Wire::MplsLabel label(in.labels.front().label);
   Mpls::RouteKey key(label);
   auto send = [&](const Wire::MplsLabelOperation& op, Wire::IntfId port, const Wire::EthAddr& mac,
                   std::uint16_t vlan) {
      if (!chip.interfaceReady(port)) {
         return drop(DropReason::interfaceNotReady);
      }
      ForwardResult r;
      r.frame = in;
      if (DropReason why = relabel(r.frame, op, options_.ttlMode); why != DropReason::none) {
         return drop(why);
      }
      r.kind = Kind::forwarded;
      r.port = port;
      r.frame.dst = mac;
      r.frame.src = options_.routerMac;
      r.frame.vlan = vlan ? std::optional<std::uint16_t>(vlan) : std::nullopt;
      return r;
   };

   auto status = agent_.defaultVrfStatus();
   if (status && status->routeHas(key)) {
      Fal::L2AdjacencyPtr adj = status->route(key).l2Adjacency();
      if (!adj || !status->l2AdjacencyHas(adj) || status->unprogrammedAdjacency(adj) ||
          adj->l2ViaSet().empty()) {
         return drop(DropReason::adjacencyUnprogrammed);
      }
      const auto& members = adj->l2ViaSet().members();
      auto it = members.begin();
      std::advance(it, static_cast<std::ptrdiff_t>(flowHash(in) % members.size()));
      return send(it->labelStack(), it->l2Intf(), it->macAddr(), it->vlanId().value());
   }

   if (agent_.routeHelper()) {
      const auto& routes = agent_.routeHelper()->routeMap();
      if (auto it = routes.find(key); it != routes.end()) {
         // The FEC and, while its vias are all drop vias, its backup; each must hold a
         // hardware FEC id.
         auto usableFec = [&](Memtab::Fib::FecId id) -> const Memtab::Fib::Fec* {
            const auto* fec = agent_.fecRequest()->fecPtr(id);
            return fec && agent_.fecResponse()->hwFecIdMap().contains(id) ? fec : nullptr;
         };
         const Memtab::Fib::Fec* fec = usableFec(Memtab::Fib::FecId(it->second.fecId));
         std::vector<Memtab::Fib::Via> vias;
         for (int pass = 0; pass < 2 && fec && vias.empty(); ++pass) {
            for (std::uint32_t i = 0; i < fec->vias(); ++i) {
               if (auto v = fec->via(i); !v.intf().empty()) {
                  vias.push_back(v);
               }
            }
            if (vias.empty()) {
               fec = fec->backupFecId().isValid() ? usableFec(fec->backupFecId()) : nullptr;
            }
         }
         if (vias.empty()) {
            return drop(DropReason::adjacencyUnprogrammed);
         }
         const auto& via = vias[flowHash(in) % vias.size()];
         Fal::NextHopInfo nh =
             agent_.l3Status()->nextHopInfo(Fal::NextHopKey(via.nextHop(), via.intf()));
         if (!nh.resolved()) {
            return drop(DropReason::adjacencyUnprogrammed);
         }
         Wire::IntfId port = nh.l2Intf().empty() ? via.intf() : nh.l2Intf();
         std::uint16_t vlan = via.vlanId().value() ? via.vlanId().value() : nh.vlanId().value();
         return send(via.labelStack(), port, nh.macAddr(), vlan);
      }
   }

   if (ForwardResult r = decap(in, label); !r.dropped() || r.reason != DropReason::none) {
      return r;
   }

   if (status && status->unprogrammedRouteHas(key)) {
      switch (chip.routeReason(Fal::VrfId(0), key)) {
         case Fal::UnprogrammedReason::InterfaceNotReady:
            return drop(DropReason::interfaceNotReady);
         case Fal::UnprogrammedReason::AdjacencyFull:
            return drop(DropReason::adjacencyUnprogrammed);
         default:
            return drop(DropReason::routeUnprogrammed);
      }
   }
   if (agent_.routeHelper() && agent_.routeHelper()->refusedMap().contains(key)) {
      return drop(DropReason::routeUnprogrammed);
   }
   return drop(DropReason::noRoute);
}

// Decap mappings and pseudowire decap entries. A default result (dropped, no reason) means that
// nothing is programmed for the label.
ForwardResult Forwarder::decap(const Frame& in, Wire::MplsLabel label) const {
   const DecapHelper& helper = *agent_.decapHelper();
   ForwardResult r;
   r.frame = in;
   // Pops the label and bridges the inner Ethernet frame, tagged with `vlan` (untouched without).
   auto bridge = [&](std::optional<std::uint16_t> vlan, bool flood) -> ForwardResult {
      if (DropReason why = popLast(r.frame); why != DropReason::none) {
         return drop(why);
      }
      if (r.frame.payloadKind() != PayloadKind::ethernet) {
         return drop(DropReason::badFrame);
      }
      try {
         r.frame = parseFrame(r.frame.payload);
      } catch (const FrameError&) {
         return drop(DropReason::badFrame);
      }
      r.kind = Kind::toVlan;
      r.vlan = vlan.value_or(0);
      r.flood = flood;
      if (vlan) {
         r.frame.vlan = *vlan;
      }
      return r;
   };

   if (auto it = helper.vrfMappingMap().find(label); it != helper.vrfMappingMap().end()) {
      auto ttl = static_cast<std::uint8_t>(in.labels.front().ttl - 1);
      if (DropReason why = popLast(r.frame); why != DropReason::none) {
         return drop(why);
      }
      PayloadKind kind = r.frame.payloadKind();
      Mpls::PayloadType want = it->second.payloadType;
      bool fits = (kind == PayloadKind::ipv4 &&
                   (want == Mpls::payloadTypeIpv4_ || want == Mpls::payloadTypeAutoDecide_)) ||
                  (kind == PayloadKind::ipv6 &&
                   (want == Mpls::payloadTypeIpv6_ || want == Mpls::payloadTypeAutoDecide_));
      if (!fits) {
         return drop(DropReason::badFrame);
      }
      if (options_.ttlMode == TtlMode::uniform) {
         ipTtlIs(r.frame.payload, ttl);
      }
      r.kind = Kind::toVrf;
      r.vrf = it->second.vrfName.stringValue();
      r.frame.etherType = kind == PayloadKind::ipv4 ? etherTypeIpv4 : etherTypeIpv6;
      r.frame.src = options_.routerMac;
      r.frame.vlan.reset();
      return r;
   }
   if (auto it = helper.vlanMappingMap().find(label); it != helper.vlanMappingMap().end()) {
      return bridge(it->second.vlanId.value(), it->second.flood);
   }
   const auto& dot1q = helper.dot1qMappingMap();
   if (auto it = dot1q.lower_bound({label, Bridging::VlanId()});
       it != dot1q.end() && it->first.first == label) {
      // The inner frame's own tag selects the mapping.
      std::optional<std::uint16_t> tag;
      try {
         tag = parseFrame(in.payload).vlan;
      } catch (const FrameError&) {
      }
      if (!tag || *tag == 0 || *tag > 4094) {
         return drop(DropReason::badFrame);
      }
      auto m = dot1q.find({label, Bridging::VlanId(*tag)});
      if (m == dot1q.end() || m->second.vlanId.isNone()) {
         return drop(DropReason::noRoute);
      }
      return bridge(m->second.vlanId.value(), m->second.flood);
   }

   const auto& pw = agent_.pwDecapTable().entryMap();
   if (auto it = pw.find(label); it != pw.end()) {
      auto connector = [&]() {
         try {
            return agent_.pwStatus()->localConnectorInfo(it->second.pwIntfId());
         } catch (const std::exception&) {
            return Pseudowire::LocalConnectorInfo();  // a corrupt record is no connector
         }
      }();
      if (!connector) {
         return drop(DropReason::noConnector);
      }
      if (!agent_.chip().interfaceReady(connector.parentIntfId())) {
         return drop(DropReason::interfaceNotReady);
      }
      std::uint16_t tag = connector.dot1qTag().value();
      ForwardResult b = bridge(tag ? std::optional<std::uint16_t>(tag) : std::nullopt, false);
      if (!b.dropped()) {
         b.kind = Kind::forwarded;
         b.port = connector.parentIntfId();
         b.vlan = 0;
      }
      return b;
   }
   return ForwardResult();
}

}  // namespace sim
