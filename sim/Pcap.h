#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace sim {

// A pcap that cannot be read: not a pcap, truncated, or holding a frame that is not Ethernet.
// The text names the file and, where there is one, the frame (1-based): "in.pcap: frame 3:
// truncated (...)".
class PcapError : public std::runtime_error {
 public:
   explicit PcapError(const std::string& what) : std::runtime_error(what) {}
};

// Reads the frames of a standard (libpcap) capture file and hands each to `each` with its 1-based
// number, in order. Frames before a bad one are handed over before PcapError is thrown. `name`
// names the source in errors.
using PcapFrameFn = std::function<void(std::size_t number, std::span<const std::uint8_t> frame)>;
void readPcapFile(const std::string& path, const PcapFrameFn& each);
void readPcapBytes(std::span<const std::uint8_t> bytes, const std::string& name,
                   const PcapFrameFn& each);

// Writes an Ethernet capture file through libpcap; each frame is flushed as it is written, so a
// later failure keeps what was written. Throws PcapError when the file cannot be created.
class PcapWriter {
 public:
   explicit PcapWriter(const std::string& path);
   ~PcapWriter();
   PcapWriter(const PcapWriter&) = delete;
   PcapWriter& operator=(const PcapWriter&) = delete;

   void write(std::span<const std::uint8_t> frame);
   std::size_t frames() const { return frames_; }

 private:
   struct Handles;
   Handles* h_;
   std::size_t frames_ = 0;
};

}  // namespace sim
