#pragma once

#include <ostream>
#include <string>

namespace sim {

struct ForwardCommandOptions {
   std::string scenario;
   std::string in;
   std::string out;
   // Where the per-frame report goes; empty: the command's output stream.
   std::string report;
   std::string ingress = "Ethernet1";
};

// `mplsfwd-sim forward FILE --in in.pcap --out out.pcap`: replays the scenario, then sends every
// frame of `in` through the forwarding model on the ingress port and writes each frame that
// leaves (forwarded, delivered to a VRF or bridged) to `out`, in input order. The report has one
// line per input frame: "frame 3: forwarded Ethernet2 ...", "frame 4: dropped: no route".
// Exit codes: 0 done (drops included); 1 the scenario's own expectations failed (the frames are
// still forwarded); 2 a bad scenario, ingress port or pcap (the frames before a bad one are
// written); 3 an error while the scenario ran.
int forwardCommand(const ForwardCommandOptions& options, std::ostream& out, std::ostream& err);

}  // namespace sim
