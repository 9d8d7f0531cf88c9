#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/MplsLabel.h>

#include "Frame.h"

namespace sim {

class Agent;

// Why the model dropped a frame.
enum class DropReason {
   none,
   noRoute,                // nothing is programmed for the top label
   routeUnprogrammed,      // the chip refused the label's route for want of room
   adjacencyUnprogrammed,  // the route's adjacency (L2 adjacency or FEC) cannot forward
   interfaceNotReady,      // the egress (or ingress) interface is not ready
   ttlExpired,             // the TTL would reach 0
   badFrame,               // unreadable, unlabelled, or a payload the route cannot take
   noConnector,            // a pseudowire label whose pseudowire has no local connector
};
// "no route", "route unprogrammed", "adjacency unprogrammed", "interface not ready",
// "TTL expired", "bad frame", "no connector".
const char* dropReasonText(DropReason r);
// Reverse of dropReasonText; false for an unknown text.
bool parseDropReason(const std::string& text, DropReason& out);

// How TTLs cross label pushes and pops. uniform: every pushed label takes the decremented TTL
// and a pop copies it into what is below; pipe: labels pushed under the swapped one carry 255
// and a pop leaves the inner TTL alone.
enum class TtlMode { uniform, pipe };

struct ForwarderOptions {
   Wire::EthAddr routerMac = Wire::EthAddr::parse("00:1c:73:00:00:01");
   TtlMode ttlMode = TtlMode::uniform;
};

// What happened to one frame. A frame that leaves (forwarded, or decapsulated by a pseudowire)
// has an egress port; a frame delivered to a VRF or bridged into a VLAN names it. `frame` is what
// leaves or is delivered: the rewritten frame, the inner IP packet in an Ethernet frame from the
// router MAC (VRF), or the inner Ethernet frame tagged with its VLAN (bridged).
struct ForwardResult {
   enum class Kind { dropped, forwarded, toVrf, toVlan };
   Kind kind = Kind::dropped;
   DropReason reason = DropReason::none;
   Wire::IntfId port;
   std::string vrf;
   std::uint16_t vlan = 0;
   bool flood = false;
   Frame frame;

   bool dropped() const { return kind == Kind::dropped; }
   // "forwarded Ethernet2 <frame>", "vrf red <frame>", "vlan 100 flood <frame>",
   // "dropped: no route".
   std::string text() const;
};

// The forwarding model of the simulated chip: it sends a frame through exactly what the platform
// holds (the chip's programmed routes and L2 adjacencies, the route helper's routes with the FEC
// tables and their hardware FEC ids, the decap helper's mappings, the pseudowire decap table with
// the pseudowires' connectors, the chip's interface readiness) and nothing of what the library
// only wants programmed. MPLS routes live in the default VRF, so every ingress port looks up there.
//
// Lookup of the top label, first match wins: a programmed transit route of the chip; a route of
// the route helper (forwarded into a FEC); a VRF, VLAN or dot1q decap mapping; a pseudowire decap
// entry.
//
// ECMP: the member of an L2 adjacency (or of a FEC's usable vias) is chosen by FNV-1a (64 bit)
// over every label of the received stack (label values only, outermost first) and, for an IP
// payload, its source and destination address, protocol and TCP/UDP ports; the member index is
// the hash modulo the member count, members in the adjacency's own order. Equal inputs pick the
// same member on every run.
//
// Reads the agent's platform objects; holds nothing of its own between frames.
class Forwarder {
 public:
   explicit Forwarder(const Agent& agent, ForwarderOptions options = ForwarderOptions());

   const ForwarderOptions& options() const { return options_; }
   ForwardResult forward(const Frame& frame, Wire::IntfId ingress) const;
   // Parses and forwards wire bytes; an unreadable frame is dropped as a bad frame.
   ForwardResult forwardBytes(std::span<const std::uint8_t> bytes, Wire::IntfId ingress) const;

   // The hash that picks ECMP members (documented above).
   static std::uint64_t flowHash(const Frame& frame);

 private:
   ForwardResult transit(const Frame& in, Wire::IntfId ingress) const;
   ForwardResult decap(const Frame& in, Wire::MplsLabel label) const;

   const Agent& agent_;
   ForwarderOptions options_;
};

}  // namespace sim
