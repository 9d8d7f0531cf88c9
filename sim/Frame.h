#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <mplsfwd/wire/EthAddr.h>

namespace sim {

// One MPLS label stack entry as it is on the wire: 20-bit label, 3-bit traffic class, the
// bottom-of-stack bit and the 8-bit TTL.
struct LabelEntry {
   std::uint32_t label = 0;
   std::uint8_t tc = 0;
   bool bottom = false;
   std::uint8_t ttl = 64;
   bool operator==(const LabelEntry&) const = default;
};

// What follows the label stack (or the Ethernet header of an unlabelled frame), told apart by its
// first nibble the way a chip guesses an MPLS payload: 4 is IPv4, 6 is IPv6, anything else an
// Ethernet frame (no control word).
enum class PayloadKind { ipv4, ipv6, ethernet };

inline constexpr std::uint16_t etherTypeVlan = 0x8100;
inline constexpr std::uint16_t etherTypeIpv4 = 0x0800;
inline constexpr std::uint16_t etherTypeIpv6 = 0x86dd;
inline constexpr std::uint16_t etherTypeMpls = 0x8847;

// An Ethernet frame as the forwarding model sees it: the MAC addresses, one optional 802.1Q tag
// (VLAN id; priority and DEI kept), the label stack (outermost first) and the bytes after it. An
// unlabelled frame keeps its EtherType in etherType; a labelled one is written with 0x8847 (a frame
// whose last label was popped tells its payload by the first nibble until etherType is set).
struct Frame {
   Wire::EthAddr dst;
   Wire::EthAddr src;
   std::optional<std::uint16_t> vlan;
   std::uint8_t vlanPcp = 0;
   std::uint16_t etherType = etherTypeMpls;
   std::vector<LabelEntry> labels;
   std::vector<std::uint8_t> payload;

   PayloadKind payloadKind() const;
   // The wire bytes, padded to the 60-byte Ethernet minimum.
   std::vector<std::uint8_t> bytes() const;
   // "00:..:02 > 00:..:01 vlan 10 mpls [100 ttl 64 s]..., ipv4 10.1.0.1 > 10.2.0.1".
   std::string text() const;
};

// A frame that cannot be read: too short for its headers, or a label stack without a bottom
// entry. The text says which.
class FrameError : public std::runtime_error {
 public:
   explicit FrameError(const std::string& what) : std::runtime_error(what) {}
};

// Reads an Ethernet frame. Throws FrameError.
Frame parseFrame(std::span<const std::uint8_t> bytes);

// Fields of an IP payload that the model looks at or rewrites.
struct IpFields {
   PayloadKind kind = PayloadKind::ethernet;
   std::string src;
   std::string dst;
   std::uint8_t protocol = 0;
   std::uint16_t srcPort = 0;
   std::uint16_t dstPort = 0;
   std::uint8_t ttl = 0;
};
// The header fields of an IPv4 or IPv6 packet; nullopt when the bytes are no such packet.
std::optional<IpFields> ipFields(std::span<const std::uint8_t> packet);
// Builds an IPv4 or IPv6 packet (by kind) from the fields, with an 8-byte UDP or a 20-byte TCP
// header for protocols 17 and 6 and 8 zero bytes for others; addresses in text form, of the
// packet's family. Throws Kor::ParseError for an address that is not one.
std::vector<std::uint8_t> ipPacket(const IpFields& fields);
// Writes the TTL (hop limit) of an IPv4 or IPv6 packet, the IPv4 header checksum included.
void ipTtlIs(std::vector<std::uint8_t>& packet, std::uint8_t ttl);

}  // namespace sim
