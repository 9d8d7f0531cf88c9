#include "EthAddr.h"

#include <cstdio>
#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextScan.h>

namespace Wire {

std::uint64_t EthAddr::value() const {
   std::uint64_t v = 0;
   for (std::uint8_t b : bytes_) {
      v = (v << 8) | b;
   }
   return v;
}

std::size_t EthAddr::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value()));
}

std::string EthAddr::stringValue() const {
   char buf[18];
   std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", bytes_[0], bytes_[1], bytes_[2],
                 bytes_[3], bytes_[4], bytes_[5]);
   return buf;
}

EthAddr EthAddr::parse(std::string_view text) {
   Bytes bytes{};
   bool ok = text.size() == 17;
   for (std::size_t i = 0; ok && i < 6; ++i) {
      int hi = Kor::hexDigitValue(text[3 * i]);
      int lo = Kor::hexDigitValue(text[3 * i + 1]);
      ok = hi >= 0 && lo >= 0 && (i == 5 || text[3 * i + 2] == ':');
      bytes[i] = static_cast<std::uint8_t>((hi << 4) | lo);
   }
   if (!ok) {
      throw Kor::ParseError("cannot parse '" + std::string(text) + "' as EthAddr");
   }
   return EthAddr(bytes);
}

std::ostream& operator<<(std::ostream& os, const EthAddr& addr) {
   return os << addr.stringValue();
}

}  // namespace Wire
