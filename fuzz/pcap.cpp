// The pcap reader and the frame reader behind `mplsfwd-sim forward`: any bytes either read as
// frames or give a PcapError or FrameError, and a frame that reads writes back to bytes that read
// again and write back to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include <mplsfwd/sim/Frame.h>
#include <mplsfwd/sim/Pcap.h>

namespace {

void frameRoundTrip(std::span<const std::uint8_t> bytes) {
   sim::Frame frame;
   try {
      frame = sim::parseFrame(bytes);
   } catch (const sim::FrameError&) {
      return;
   }
   (void)frame.text();
   (void)sim::ipFields(frame.payload);
   auto written = frame.bytes();
   sim::Frame again = sim::parseFrame(written);  // what was written must read
   if (again.bytes() != written) {
      std::fprintf(stderr, "frame %s writes back differently once read again\n",
                   frame.text().c_str());
      std::abort();
   }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
   try {
      sim::readPcapBytes(
          std::span<const std::uint8_t>(data, size), "fuzz.pcap",
          [](std::size_t, std::span<const std::uint8_t> frame) { frameRoundTrip(frame); });
   } catch (const sim::PcapError&) {
   }
   return 0;
}
