#include "IpGenAddr.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextScan.h>

namespace Wire {

namespace {

[[noreturn]] void fail(std::string_view text, const char* type) {
   throw Kor::ParseError("cannot parse '" + std::string(text) + "' as " + type);
}

bool parseV4(std::string_view text, std::uint32_t& out) {
   std::uint32_t value = 0;
   int parts = 0;
   std::size_t pos = 0;
   while (true) {
      std::size_t start = pos;
      std::uint32_t part = 0;
      while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
         part = part * 10 + static_cast<std::uint32_t>(text[pos] - '0');
         if (part > 255 || pos - start >= 3) {
            return false;
         }
         ++pos;
      }
      std::size_t len = pos - start;
      if (len == 0 || (len > 1 && text[start] == '0')) {
         return false;
      }
      value = (value << 8) | part;
      ++parts;
      if (parts == 4) {
         break;
      }
      if (pos >= text.size() || text[pos] != '.') {
         return false;
      }
      ++pos;
   }
   if (pos != text.size()) {
      return false;
   }
   out = value;
   return true;
}

// Parses groups separated by ':' (no "::" inside), appending 16-bit words; a trailing dotted quad
// is allowed when `allowV4Tail` and gives two words.
bool parseGroups(std::string_view text, bool allowV4Tail, std::vector<std::uint16_t>& words) {
   if (text.empty()) {
      return true;
   }
   std::size_t pos = 0;
   while (true) {
      std::size_t end = text.find(':', pos);
      std::string_view group = text.substr(pos, end == std::string_view::npos ? end : end - pos);
      if (end == std::string_view::npos && allowV4Tail &&
          group.find('.') != std::string_view::npos) {
         std::uint32_t v4;
         if (!parseV4(group, v4)) {
            return false;
         }
         words.push_back(static_cast<std::uint16_t>(v4 >> 16));
         words.push_back(static_cast<std::uint16_t>(v4 & 0xFFFF));
         return true;
      }
      if (group.empty() || group.size() > 4) {
         return false;
      }
      std::uint16_t w = 0;
      for (char c : group) {
         int d = Kor::hexDigitValue(c);
         if (d < 0) {
            return false;
         }
         w = static_cast<std::uint16_t>((w << 4) | d);
      }
      words.push_back(w);
      if (end == std::string_view::npos) {
         return true;
      }
      pos = end + 1;
   }
}

bool parseV6(std::string_view text, IpGenAddr::Bytes& bytes) {
   std::vector<std::uint16_t> head;
   std::vector<std::uint16_t> tail;
   std::size_t gap = text.find("::");
   if (gap == std::string_view::npos) {
      if (!parseGroups(text, true, head) || head.size() != 8) {
         return false;
      }
   } else {
      if (text.find("::", gap + 1) != std::string_view::npos) {
         return false;
      }
      if (!parseGroups(text.substr(0, gap), false, head) ||
          !parseGroups(text.substr(gap + 2), true, tail) || head.size() + tail.size() > 7) {
         return false;
      }
   }
   std::array<std::uint16_t, 8> words{};
   std::copy(head.begin(), head.end(), words.begin());
   std::copy(tail.begin(), tail.end(), words.end() - static_cast<std::ptrdiff_t>(tail.size()));
   for (std::size_t i = 0; i < 8; ++i) {
      bytes[2 * i] = static_cast<std::uint8_t>(words[i] >> 8);
      bytes[2 * i + 1] = static_cast<std::uint8_t>(words[i] & 0xFF);
   }
   return true;
}

}  // namespace

std::string stringValue(AddressFamily af) {
   switch (af) {
      case AddressFamily::ipv4:
         return "ipv4";
      case AddressFamily::ipv6:
         return "ipv6";
      case AddressFamily::ipunknown:
         break;
   }
   return "ipunknown";
}

std::ostream& operator<<(std::ostream& os, AddressFamily af) {
   return os << stringValue(af);
}

std::size_t IpAddr::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::string IpAddr::stringValue() const {
   char buf[16];
   std::snprintf(buf, sizeof buf, "%u.%u.%u.%u", value_ >> 24, (value_ >> 16) & 0xFF,
                 (value_ >> 8) & 0xFF, value_ & 0xFF);
   return buf;
}

IpAddr IpAddr::parse(std::string_view text) {
   std::uint32_t v;
   if (!parseV4(text, v)) {
      fail(text, "IpAddr");
   }
   return IpAddr(v);
}

std::ostream& operator<<(std::ostream& os, const IpAddr& addr) {
   return os << addr.stringValue();
}

IpGenAddr::IpGenAddr(IpAddr v4) : af_(AddressFamily::ipv4) {
   std::uint32_t v = v4.value();
   for (int i = 0; i < 4; ++i) {
      bytes_[i] = static_cast<std::uint8_t>(v >> (24 - 8 * i));
   }
}

IpGenAddr IpGenAddr::ipv6(const Bytes& bytes) {
   IpGenAddr a;
   a.af_ = AddressFamily::ipv6;
   a.bytes_ = bytes;
   return a;
}

IpAddr IpGenAddr::v4Addr() const {
   if (af_ != AddressFamily::ipv4) {
      return IpAddr();
   }
   return IpAddr((std::uint32_t(bytes_[0]) << 24) | (std::uint32_t(bytes_[1]) << 16) |
                 (std::uint32_t(bytes_[2]) << 8) | std::uint32_t(bytes_[3]));
}

bool IpGenAddr::isZero() const {
   return std::all_of(bytes_.begin(), bytes_.end(), [](std::uint8_t b) { return b == 0; });
}

bool IpGenAddr::operator<(const IpGenAddr& o) const {
   if (af_ != o.af_) {
      return af_ < o.af_;
   }
   return bytes_ < o.bytes_;
}

std::size_t IpGenAddr::hash() const {
   // Each half of the address as one big-endian word, loaded whole: the table lookups of next
   // hops hash addresses all the time, and assembling the words byte by byte was most of it.
   std::size_t h = Kor::mixInt(static_cast<std::uint64_t>(af_));
   for (std::size_t i = 0; i < 16; i += 8) {
      std::uint64_t word;
      std::memcpy(&word, bytes_.data() + i, sizeof word);
      if constexpr (std::endian::native == std::endian::little) {
         word = __builtin_bswap64(word);
      }
      h = Kor::hashCombine(h, word);
   }
   return h;
}

std::string IpGenAddr::stringValue() const {
   if (af_ == AddressFamily::ipunknown) {
      return "";
   }
   if (af_ == AddressFamily::ipv4) {
      return v4Addr().stringValue();
   }
   std::array<std::uint16_t, 8> words;
   for (std::size_t i = 0; i < 8; ++i) {
      words[i] = static_cast<std::uint16_t>((bytes_[2 * i] << 8) | bytes_[2 * i + 1]);
   }
   int bestStart = -1;
   int bestLen = 1;  // a single zero group is not shortened
   for (int i = 0; i < 8;) {
      if (words[i] != 0) {
         ++i;
         continue;
      }
      int j = i;
      while (j < 8 && words[j] == 0) {
         ++j;
      }
      if (j - i > bestLen) {
         bestStart = i;
         bestLen = j - i;
      }
      i = j;
   }
   std::string s;
   char buf[8];
   for (int i = 0; i < 8; ++i) {
      if (i == bestStart) {
         s += "::";
         i += bestLen - 1;
         continue;
      }
      if (!s.empty() && s.back() != ':') {
         s += ':';
      }
      std::snprintf(buf, sizeof buf, "%x", static_cast<unsigned>(words[i]));
      s += buf;
   }
   return s;
}

IpGenAddr IpGenAddr::parse(std::string_view text) {
   if (text.empty()) {
      return IpGenAddr();
   }
   if (text.find(':') == std::string_view::npos) {
      std::uint32_t v;
      if (!parseV4(text, v)) {
         fail(text, "IpGenAddr");
      }
      return IpGenAddr(IpAddr(v));
   }
   Bytes bytes{};
   if (!parseV6(text, bytes)) {
      fail(text, "IpGenAddr");
   }
   return ipv6(bytes);
}

std::ostream& operator<<(std::ostream& os, const IpGenAddr& addr) {
   return os << addr.stringValue();
}

}  // namespace Wire
