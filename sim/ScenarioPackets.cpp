// The `packet` and `expectPacket` scenario steps.
#include "ScenarioPackets.h"

#include <sstream>

#include "Runner.h"
#include "ScenarioFields.h"

namespace sim {

namespace {

using Json = nlohmann::json;

const std::vector<std::pair<const char*, std::uint8_t>>& protocolNames() {
   static const std::vector<std::pair<const char*, std::uint8_t>> names = {
       {"udp", 17}, {"tcp", 6}, {"icmp", 1}};
   return names;
}

IpFields ipFromJson(const Json& j, const std::string& where, PayloadKind kind) {
   Fields f(j, where, {"src", "dst", "ttl", "protocol", "srcPort", "dstPort"});
   IpFields ip;
   ip.kind = kind;
   bool v4 = kind == PayloadKind::ipv4;
   ip.src = f.has("src") ? f.ip("src").stringValue() : (v4 ? "192.0.2.1" : "2001:db8::1");
   ip.dst = f.has("dst") ? f.ip("dst").stringValue() : (v4 ? "198.51.100.1" : "2001:db8::2");
   ip.ttl = static_cast<std::uint8_t>(f.optInteger("ttl", 0, 255).value_or(64));
   ip.protocol = f.optChoice<std::uint8_t>("protocol", protocolNames(), 17);
   ip.srcPort = static_cast<std::uint16_t>(f.optInteger("srcPort", 0, 65535).value_or(49152));
   ip.dstPort = static_cast<std::uint16_t>(f.optInteger("dstPort", 0, 65535).value_or(4789));
   try {
      ipPacket(ip);
   } catch (const std::exception& e) {
      throw ScenarioError(where + ": " + e.what());
   }
   return ip;
}

// The payload of a frame or of an inner Ethernet frame: "ipv4", "ipv6" or "ethernet" (an IPv4
// packet when none is given).
std::vector<std::uint8_t> payloadFromJson(const Fields& f, std::uint16_t& etherType) {
   int given = f.has("ipv4") + f.has("ipv6") + f.has("ethernet");
   if (given > 1) {
      f.fail("ipv4", "only one of ipv4, ipv6 and ethernet", f.get("ipv4"));
   }
   if (f.has("ethernet")) {
      Fields e(*f.get("ethernet"), f.where() + ": ethernet",
               {"dst", "src", "vlan", "ipv4", "ipv6"});
      Frame inner;
      inner.dst = e.has("dst") ? e.mac("dst") : Wire::EthAddr::parse("00:00:5e:00:53:02");
      inner.src = e.has("src") ? e.mac("src") : Wire::EthAddr::parse("00:00:5e:00:53:01");
      if (e.has("vlan")) {
         inner.vlan = e.vlan("vlan").value();
      }
      inner.payload = payloadFromJson(e, inner.etherType);
      etherType = 0x6558;  // transparent Ethernet bridging
      return inner.bytes();
   }
   PayloadKind kind = f.has("ipv6") ? PayloadKind::ipv6 : PayloadKind::ipv4;
   etherType = kind == PayloadKind::ipv4 ? etherTypeIpv4 : etherTypeIpv6;
   const char* name = kind == PayloadKind::ipv4 ? "ipv4" : "ipv6";
   Json empty = Json::object();
   const Json* j = f.has(name) ? f.get(name) : &empty;
   return ipPacket(ipFromJson(*j, f.where() + ": " + name, kind));
}

// Labels as objects {"label", "ttl", "bottom", "tc"} or plain numbers; the bottom bit defaults to
// the last entry.
std::vector<LabelEntry> labelsFromJson(const Fields& f, const char* name, bool needTtl) {
   const Json* v = f.get(name);
   if (!v || !v->is_array()) {
      f.fail(name, "an array of labels", v);
   }
   std::vector<LabelEntry> out;
   for (std::size_t i = 0; i < v->size(); ++i) {
      const Json& one = (*v)[i];
      std::string where = f.where() + ": " + name + "[" + std::to_string(i) + "]";
      Json obj = one.is_object() ? one : Json::object({{"label", one}});
      Fields e(obj, where, {"label", "ttl", "bottom", "tc"});
      LabelEntry entry;
      entry.label = e.label("label").value();
      entry.ttl = static_cast<std::uint8_t>(e.optInteger("ttl", 0, 255).value_or(needTtl ? 64 : 0));
      entry.tc = static_cast<std::uint8_t>(e.optInteger("tc", 0, 7).value_or(0));
      entry.bottom = e.optBoolean("bottom", i + 1 == v->size());
      out.push_back(entry);
   }
   return out;
}

std::string labelsText(const std::vector<LabelEntry>& labels) {
   std::ostringstream os;
   os << "[";
   for (std::size_t i = 0; i < labels.size(); ++i) {
      os << (i ? ", " : "") << labels[i].label << " ttl " << int(labels[i].ttl)
         << (labels[i].bottom ? " s" : "");
   }
   os << "]";
   return os.str();
}

const char* kindText(ForwardResult::Kind k) {
   switch (k) {
      case ForwardResult::Kind::forwarded:
         return "forwarded";
      case ForwardResult::Kind::toVrf:
         return "vrf";
      case ForwardResult::Kind::toVlan:
         return "bridged";
      case ForwardResult::Kind::dropped:
         break;
   }
   return "dropped";
}

}  // namespace

const std::vector<const char*> packetFields = {"ingress", "dst",  "src",  "vlan",
                                               "labels",  "ipv4", "ipv6", "ethernet"};
const std::vector<const char*> expectPacketFields = {
    "dropped", "port", "vrf", "bridged", "flood", "vlan", "dst", "src", "labels", "ipDst", "ipTtl"};

Frame frameFromJson(const Fields& f, const Wire::EthAddr& routerMac) {
   Frame frame;
   frame.dst = f.has("dst") ? f.mac("dst") : routerMac;
   frame.src = f.has("src") ? f.mac("src") : Wire::EthAddr::parse("00:00:5e:00:53:aa");
   if (f.has("vlan")) {
      frame.vlan = f.vlan("vlan").value();
   }
   frame.labels = labelsFromJson(f, "labels", true);
   frame.payload = payloadFromJson(f, frame.etherType);
   return frame;
}

ForwarderOptions forwarderOptionsFromConfig(const Fields& config) {
   ForwarderOptions o;
   if (config.has("routerMac")) {
      o.routerMac = config.mac("routerMac");
   }
   o.ttlMode = config.optChoice<TtlMode>(
       "ttlMode", {{"uniform", TtlMode::uniform}, {"pipe", TtlMode::pipe}}, TtlMode::uniform);
   return o;
}

std::function<void(Runner&)> packetStep(const Fields& f, const ForwarderOptions& options) {
   Wire::IntfId ingress = f.intf("ingress");
   Frame frame = frameFromJson(f, options.routerMac);
   return [ingress, frame, options](Runner& r) {
      r.lastPacket() = Forwarder(r.agent(), options).forward(frame, ingress);
   };
}

std::function<void(Runner&)> expectPacketStep(const Fields& f) {
   std::optional<DropReason> dropped;
   if (f.has("dropped")) {
      DropReason reason;
      std::string text = f.string("dropped");
      if (!parseDropReason(text, reason)) {
         f.fail("dropped",
                "one of no route, route unprogrammed, adjacency unprogrammed, interface not "
                "ready, TTL expired, bad frame, no connector",
                f.get("dropped"));
      }
      dropped = reason;
      f.onlyFields({"dropped"});
   }
   auto kind = f.has("port")      ? ForwardResult::Kind::forwarded
               : f.has("vrf")     ? ForwardResult::Kind::toVrf
               : f.has("bridged") ? ForwardResult::Kind::toVlan
                                  : ForwardResult::Kind::dropped;
   if (!dropped && kind == ForwardResult::Kind::dropped) {
      f.oneOf({"dropped", "port", "vrf", "bridged"});
   }
   auto port = f.optIntf("port");
   auto vrf = f.optString("vrf");
   std::optional<bool> flood;
   if (f.has("flood")) {
      flood = f.boolean("flood");
   }
   // "vlan": a VLAN id, or "none" for an untagged frame.
   std::optional<std::optional<std::uint16_t>> vlan;
   if (const Json* v = f.get("vlan"); v && v->is_string() && v->get<std::string>() == "none") {
      vlan.emplace(std::nullopt);
   } else if (v) {
      vlan.emplace(f.vlan("vlan").value());
   }
   auto dst = f.has("dst") ? std::optional(f.mac("dst")) : std::nullopt;
   auto src = f.has("src") ? std::optional(f.mac("src")) : std::nullopt;
   std::optional<std::vector<LabelEntry>> labels;
   if (f.has("labels")) {
      labels = labelsFromJson(f, "labels", false);
   }
   bool labelTtls = false;
   for (const auto& one : f.has("labels") ? *f.get("labels") : Json::array()) {
      labelTtls = labelTtls || (one.is_object() && one.contains("ttl"));
   }
   auto ipDst = f.has("ipDst") ? std::optional(f.ip("ipDst").stringValue()) : std::nullopt;
   auto ipTtl = f.optInteger("ipTtl", 0, 255);

   return [=](Runner& r) {
      const ForwardResult& got = r.lastPacket();
      if (dropped) {
         r.check(got.dropped() && got.reason == *dropped, "packet",
                 std::string("dropped: ") + dropReasonText(*dropped), got.text());
         return;
      }
      r.check(got.kind == kind, "packet outcome", kindText(kind), got.text());
      if (got.kind != kind) {
         return;
      }
      if (port) {
         r.check(got.port == *port, "egress port", port->stringValue(), got.port.stringValue());
      }
      if (vrf) {
         r.check(got.vrf == *vrf, "vrf", *vrf, got.vrf);
      }
      if (flood) {
         r.check(got.flood == *flood, "flood", *flood ? "true" : "false",
                 got.flood ? "true" : "false");
      }
      auto vlanText = [](std::optional<std::uint16_t> v) {
         return v ? std::to_string(*v) : std::string("none");
      };
      if (vlan) {
         r.check(got.frame.vlan == *vlan, "vlan", vlanText(*vlan), vlanText(got.frame.vlan));
      }
      if (dst) {
         r.check(got.frame.dst == *dst, "destination MAC", dst->stringValue(),
                 got.frame.dst.stringValue());
      }
      if (src) {
         r.check(got.frame.src == *src, "source MAC", src->stringValue(),
                 got.frame.src.stringValue());
      }
      if (labels) {
         auto want = *labels;
         if (!labelTtls) {
            // Labels given as numbers: the TTLs are not checked.
            for (std::size_t i = 0; i < want.size() && i < got.frame.labels.size(); ++i) {
               want[i].ttl = got.frame.labels[i].ttl;
            }
         }
         r.check(got.frame.labels == want, "label stack", labelsText(want),
                 labelsText(got.frame.labels));
      }
      auto ip = ipFields(got.frame.payload);
      bool isIp =
          ip && got.frame.labels.empty() && got.frame.payloadKind() != PayloadKind::ethernet;
      if (ipDst) {
         r.check(isIp && ip->dst == *ipDst, "inner IP destination", *ipDst,
                 isIp ? ip->dst : "no IP packet");
      }
      if (ipTtl) {
         r.check(isIp && ip->ttl == *ipTtl, "inner IP TTL", std::to_string(*ipTtl),
                 isIp ? std::to_string(ip->ttl) : "no IP packet");
      }
   };
}

}  // namespace sim
