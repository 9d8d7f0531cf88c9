// The bench's measure of the forwarding model: frames over the converged transit routes.
#include <chrono>

#include "Forwarder.h"
#include "ScaleHarness.h"

namespace sim {

void ScaleHarness::measureForwarding(ScaleResult& r, std::size_t packets) const {
   if (options_.routes == 0 || !agent_) {
      return;
   }
   Forwarder forwarder(*agent_);
   Frame f;
   f.dst = forwarder.options().routerMac;
   f.labels = {{16, 0, true, 64}};
   f.payload = ipPacket({PayloadKind::ipv4, "192.0.2.1", "198.51.100.1", 17, 1, 4789, 64});
   std::vector<std::uint8_t> bytes = f.bytes();
   std::size_t forwarded = 0;
   auto start = std::chrono::steady_clock::now();
   for (std::size_t i = 0; i < packets; ++i) {
      // Label (bytes 14..16) and UDP source port vary, so every route and ECMP member is used.
      auto label = static_cast<std::uint32_t>(16 + i % options_.routes);
      bytes[14] = static_cast<std::uint8_t>(label >> 12);
      bytes[15] = static_cast<std::uint8_t>(label >> 4);
      bytes[16] = static_cast<std::uint8_t>((label & 0xf) << 4 | 1);
      bytes[38] = static_cast<std::uint8_t>(i);
      ForwardResult out = forwarder.forwardBytes(bytes, Wire::IntfId::ethernet(1));
      forwarded += out.dropped() ? 0 : out.frame.bytes().size() > 0;
   }
   double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
   r.forwardedPackets = forwarded;
   r.packetsPerSecond = seconds > 0 ? static_cast<double>(packets) / seconds : 0.0;
}

}  // namespace sim
