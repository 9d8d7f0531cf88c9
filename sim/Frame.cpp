// Reading and writing Ethernet frames with an optional 802.1Q tag and an MPLS label stack.
#include "Frame.h"

#include <algorithm>
#include <sstream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/wire/IpAddr.h>
#include <mplsfwd/wire/IpGenAddr.h>

namespace sim {

namespace {

std::uint16_t be16(std::span<const std::uint8_t> b, std::size_t at) {
   return static_cast<std::uint16_t>(b[at] << 8 | b[at + 1]);
}

void put16(std::vector<std::uint8_t>& out, std::uint16_t v) {
   out.push_back(static_cast<std::uint8_t>(v >> 8));
   out.push_back(static_cast<std::uint8_t>(v));
}

Wire::EthAddr mac(std::span<const std::uint8_t> b, std::size_t at) {
   Wire::EthAddr::Bytes bytes;
   std::copy_n(b.begin() + static_cast<std::ptrdiff_t>(at), bytes.size(), bytes.begin());
   return Wire::EthAddr(bytes);
}

std::string v4Text(std::span<const std::uint8_t> b, std::size_t at) {
   std::uint32_t v = std::uint32_t(b[at]) << 24 | std::uint32_t(b[at + 1]) << 16 |
                     std::uint32_t(b[at + 2]) << 8 | b[at + 3];
   return Wire::IpAddr(v).stringValue();
}

std::string v6Text(std::span<const std::uint8_t> b, std::size_t at) {
   Wire::IpGenAddr::Bytes bytes;
   std::copy_n(b.begin() + static_cast<std::ptrdiff_t>(at), bytes.size(), bytes.begin());
   return Wire::IpGenAddr::ipv6(bytes).stringValue();
}

}  // namespace

PayloadKind Frame::payloadKind() const {
   if (labels.empty() && etherType != etherTypeMpls) {
      return etherType == etherTypeIpv4   ? PayloadKind::ipv4
             : etherType == etherTypeIpv6 ? PayloadKind::ipv6
                                          : PayloadKind::ethernet;
   }
   std::uint8_t nibble = payload.empty() ? 0 : payload[0] >> 4;
   return nibble == 4 ? PayloadKind::ipv4 : nibble == 6 ? PayloadKind::ipv6 : PayloadKind::ethernet;
}

std::vector<std::uint8_t> Frame::bytes() const {
   std::vector<std::uint8_t> out;
   out.reserve(22 + labels.size() * 4 + payload.size());
   out.insert(out.end(), dst.bytes().begin(), dst.bytes().end());
   out.insert(out.end(), src.bytes().begin(), src.bytes().end());
   if (vlan) {
      put16(out, etherTypeVlan);
      put16(out, static_cast<std::uint16_t>(vlanPcp << 13 | (*vlan & 0x0fff)));
   }
   put16(out, labels.empty() ? etherType : etherTypeMpls);
   for (const auto& e : labels) {
      std::uint32_t w = (e.label & 0xfffff) << 12 | std::uint32_t(e.tc & 7) << 9 |
                        std::uint32_t(e.bottom) << 8 | e.ttl;
      put16(out, static_cast<std::uint16_t>(w >> 16));
      put16(out, static_cast<std::uint16_t>(w));
   }
   out.insert(out.end(), payload.begin(), payload.end());
   if (out.size() < 60) {
      out.resize(60, 0);
   }
   return out;
}

std::string Frame::text() const {
   std::ostringstream os;
   os << src.stringValue() << " > " << dst.stringValue();
   if (vlan) {
      os << " vlan " << *vlan;
   }
   if (!labels.empty()) {
      os << " mpls";
      for (const auto& e : labels) {
         os << " [" << e.label << " ttl " << int(e.ttl) << (e.bottom ? " s]" : "]");
      }
   }
   if (auto ip = ipFields(payload); ip && payloadKind() != PayloadKind::ethernet) {
      os << (ip->kind == PayloadKind::ipv4 ? ", ipv4 " : ", ipv6 ") << ip->src << " > " << ip->dst
         << " ttl " << int(ip->ttl);
   } else if (payloadKind() == PayloadKind::ethernet) {
      os << ", ethernet payload " << payload.size() << " bytes";
   }
   return os.str();
}

Frame parseFrame(std::span<const std::uint8_t> b) {
   if (b.size() < 14) {
      throw FrameError("frame of " + std::to_string(b.size()) +
                       " bytes is shorter than an Ethernet header");
   }
   Frame f;
   f.dst = mac(b, 0);
   f.src = mac(b, 6);
   std::size_t at = 12;
   std::uint16_t type = be16(b, at);
   if (type == etherTypeVlan) {
      if (b.size() < 18) {
         throw FrameError("frame ends inside its 802.1Q tag");
      }
      std::uint16_t tci = be16(b, 14);
      f.vlan = tci & 0x0fff;
      f.vlanPcp = static_cast<std::uint8_t>(tci >> 13);
      at = 16;
      type = be16(b, at);
   }
   at += 2;
   f.etherType = type;
   if (type == etherTypeMpls) {
      for (;;) {
         if (b.size() < at + 4) {
            throw FrameError("label stack ends without a bottom-of-stack entry");
         }
         std::uint32_t w = std::uint32_t(be16(b, at)) << 16 | be16(b, at + 2);
         at += 4;
         LabelEntry e{w >> 12, static_cast<std::uint8_t>(w >> 9 & 7), (w >> 8 & 1) != 0,
                      static_cast<std::uint8_t>(w)};
         f.labels.push_back(e);
         if (e.bottom) {
            break;
         }
      }
   }
   f.payload.assign(b.begin() + static_cast<std::ptrdiff_t>(at), b.end());
   return f;
}

std::optional<IpFields> ipFields(std::span<const std::uint8_t> p) {
   if (p.empty()) {
      return std::nullopt;
   }
   IpFields ip;
   std::size_t l4 = 0;
   if (p[0] >> 4 == 4 && p.size() >= 20) {
      ip.kind = PayloadKind::ipv4;
      ip.ttl = p[8];
      ip.protocol = p[9];
      ip.src = v4Text(p, 12);
      ip.dst = v4Text(p, 16);
      l4 = std::size_t(p[0] & 0x0f) * 4;
   } else if (p[0] >> 4 == 6 && p.size() >= 40) {
      ip.kind = PayloadKind::ipv6;
      ip.protocol = p[6];
      ip.ttl = p[7];
      ip.src = v6Text(p, 8);
      ip.dst = v6Text(p, 24);
      l4 = 40;
   } else {
      return std::nullopt;
   }
   if ((ip.protocol == 6 || ip.protocol == 17) && p.size() >= l4 + 4) {
      ip.srcPort = be16(p, l4);
      ip.dstPort = be16(p, l4 + 2);
   }
   return ip;
}

std::vector<std::uint8_t> ipPacket(const IpFields& f) {
   bool v4 = f.kind == PayloadKind::ipv4;
   auto src = Wire::IpGenAddr::parse(f.src);
   auto dst = Wire::IpGenAddr::parse(f.dst);
   if (src.af() != (v4 ? Wire::ipv4() : Wire::ipv6()) || src.af() != dst.af()) {
      throw Kor::ParseError("addresses " + f.src + " and " + f.dst + " are not both " +
                            (v4 ? "IPv4" : "IPv6"));
   }
   std::size_t l4 = f.protocol == 6 ? 20 : 8;
   std::vector<std::uint8_t> p;
   // Addresses: IPv4 sits in the first four bytes of IpGenAddr's storage.
   auto addr = [&](const Wire::IpGenAddr& a) {
      if (v4) {
         std::uint32_t v = a.v4Addr().value();
         for (int i = 3; i >= 0; --i) {
            p.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
         }
      } else {
         p.insert(p.end(), a.bytes().begin(), a.bytes().begin() + 16);
      }
   };
   if (v4) {
      put16(p, 0x4500);
      put16(p, static_cast<std::uint16_t>(20 + l4));
      put16(p, 0);
      put16(p, 0x4000);
      p.push_back(f.ttl);
      p.push_back(f.protocol);
      put16(p, 0);
   } else {
      put16(p, 0x6000);
      put16(p, 0);
      put16(p, static_cast<std::uint16_t>(l4));
      p.push_back(f.protocol);
      p.push_back(f.ttl);
   }
   addr(src);
   addr(dst);
   put16(p, f.srcPort);
   put16(p, f.dstPort);
   if (f.protocol == 6) {
      p.insert(p.end(), {0, 0, 0, 0, 0, 0, 0, 0, 0x50, 0x02, 0xff, 0xff, 0, 0, 0, 0});
   } else {
      put16(p, static_cast<std::uint16_t>(l4));
      put16(p, 0);
   }
   ipTtlIs(p, f.ttl);
   return p;
}

void ipTtlIs(std::vector<std::uint8_t>& p, std::uint8_t ttl) {
   if (p.size() >= 40 && p[0] >> 4 == 6) {
      p[7] = ttl;
   } else if (p.size() >= 20 && p[0] >> 4 == 4) {
      p[8] = ttl;
      std::size_t len = std::min<std::size_t>(std::size_t(p[0] & 0x0f) * 4, p.size());
      p[10] = p[11] = 0;
      std::uint32_t sum = 0;
      for (std::size_t i = 0; i + 1 < len; i += 2) {
         sum += be16(p, i);
      }
      while (sum >> 16) {
         sum = (sum & 0xffff) + (sum >> 16);
      }
      std::uint16_t c = static_cast<std::uint16_t>(~sum);
      p[10] = static_cast<std::uint8_t>(c >> 8);
      p[11] = static_cast<std::uint8_t>(c);
   }
}

}  // namespace sim
