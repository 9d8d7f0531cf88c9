// Capture files through libpcap.
#include "Pcap.h"

#include <pcap/pcap.h>

#include <cstdio>
#include <memory>

namespace sim {

namespace {

void readFrom(pcap_t* p, const std::string& name, const PcapFrameFn& each) {
   std::unique_ptr<pcap_t, void (*)(pcap_t*)> guard(p, pcap_close);
   bool ethernet = pcap_datalink(p) == DLT_EN10MB;
   for (std::size_t number = 1;; ++number) {
      pcap_pkthdr* hdr = nullptr;
      const u_char* data = nullptr;
      int rc = pcap_next_ex(p, &hdr, &data);
      if (rc == PCAP_ERROR_BREAK) {
         return;
      }
      std::string where = name + ": frame " + std::to_string(number) + ": ";
      if (rc != 1) {
         throw PcapError(where + "truncated (" + pcap_geterr(p) + ")");
      }
      if (!ethernet) {
         throw PcapError(where + "not an Ethernet frame (link type " +
                         std::to_string(pcap_datalink(p)) + ")");
      }
      if (hdr->caplen < 14 || hdr->caplen < hdr->len) {
         throw PcapError(where + "not a whole Ethernet frame (" + std::to_string(hdr->caplen) +
                         " of " + std::to_string(hdr->len) + " bytes captured)");
      }
      each(number, std::span<const std::uint8_t>(data, hdr->caplen));
   }
}

}  // namespace

void readPcapFile(const std::string& path, const PcapFrameFn& each) {
   char err[PCAP_ERRBUF_SIZE] = {};
   pcap_t* p = pcap_open_offline(path.c_str(), err);
   if (!p) {
      throw PcapError(path + ": not a readable pcap file (" + err + ")");
   }
   readFrom(p, path, each);
}

void readPcapBytes(std::span<const std::uint8_t> bytes, const std::string& name,
                   const PcapFrameFn& each) {
   std::FILE* f = fmemopen(const_cast<std::uint8_t*>(bytes.data()), bytes.size(), "rb");
   if (!f) {
      throw PcapError(name + ": cannot be read");
   }
   char err[PCAP_ERRBUF_SIZE] = {};
   pcap_t* p = pcap_fopen_offline(f, err);  // owns f from here, but only on success
   if (!p) {
      std::fclose(f);
      throw PcapError(name + ": not a readable pcap file (" + err + ")");
   }
   readFrom(p, name, each);
}

struct PcapWriter::Handles {
   pcap_t* dead = nullptr;
   pcap_dumper_t* dumper = nullptr;
};

PcapWriter::PcapWriter(const std::string& path) : h_(new Handles) {
   h_->dead = pcap_open_dead(DLT_EN10MB, 65535);
   h_->dumper = h_->dead ? pcap_dump_open(h_->dead, path.c_str()) : nullptr;
   if (!h_->dumper) {
      std::string why = h_->dead ? pcap_geterr(h_->dead) : "no pcap handle";
      if (h_->dead) {
         pcap_close(h_->dead);
      }
      delete h_;
      throw PcapError(path + ": cannot be written (" + why + ")");
   }
}

PcapWriter::~PcapWriter() {
   pcap_dump_close(h_->dumper);
   pcap_close(h_->dead);
   delete h_;
}

void PcapWriter::write(std::span<const std::uint8_t> frame) {
   pcap_pkthdr hdr{};
   // Frames are stamped one microsecond apart, in order.
   hdr.ts.tv_sec = static_cast<time_t>(frames_ / 1000000);
   hdr.ts.tv_usec = static_cast<suseconds_t>(frames_ % 1000000);
   hdr.caplen = hdr.len = static_cast<bpf_u_int32>(frame.size());
   pcap_dump(reinterpret_cast<u_char*>(h_->dumper), &hdr, frame.data());
   pcap_dump_flush(h_->dumper);
   ++frames_;
}

}  // namespace sim
