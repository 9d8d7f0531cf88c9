#include "IntfId.h"

#include <array>
#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace Wire {

namespace {

struct KindInfo {
   IntfKind kind;
   std::string_view name;
   std::uint32_t min;
   std::uint32_t max;
};

// Longer names that share a prefix with shorter ones come first, so that parsing "VlanPseudowire"
// is not taken for "Vlan" followed by garbage.
constexpr std::array<KindInfo, 8> kKinds{{
    {IntfKind::vlanPseudowire, "VlanPseudowire", 0, IntfId::kNumberMask},
    {IntfKind::ethernet, "Ethernet", 1, IntfId::kNumberMask},
    {IntfKind::portChannel, "Port-Channel", 1, IntfId::kNumberMask},
    {IntfKind::vlan, "Vlan", 1, 4094},
    {IntfKind::loopback, "Loopback", 0, IntfId::kNumberMask},
    {IntfKind::nexthopGroup, "NexthopGroup", 0, IntfId::kNumberMask},
    {IntfKind::dynamicTunnel, "DynamicTunnel", 0, IntfId::kNumberMask},
    {IntfKind::portPseudowire, "Pseudowire", 0, IntfId::kNumberMask},
}};

const KindInfo* info(IntfKind kind) {
   for (const auto& k : kKinds) {
      if (k.kind == kind) {
         return &k;
      }
   }
   return nullptr;
}

[[noreturn]] void badId(const std::string& what) {
   throw Kor::RangeError("IntfId " + what + " names no interface");
}

}  // namespace

IntfId::IntfId(std::uint32_t value) : value_(value) {
   if (value_ == 0) {
      return;
   }
   const KindInfo* k = info(kind());
   if (!k || number() < k->min || number() > k->max) {
      badId(std::to_string(value));
   }
}

IntfId::IntfId(IntfKind kind, std::uint32_t number) {
   const KindInfo* k = info(kind);
   if (!k || number < k->min || number > k->max) {
      badId("of kind " + std::to_string(static_cast<unsigned>(kind)) + " and number " +
            std::to_string(number));
   }
   value_ = (static_cast<std::uint32_t>(kind) << kNumberBits) | number;
}

std::string_view IntfId::kindName(IntfKind kind) {
   const KindInfo* k = info(kind);
   return k ? k->name : std::string_view();
}

std::uint32_t IntfId::minNumber(IntfKind kind) {
   const KindInfo* k = info(kind);
   return k ? k->min : 0;
}

std::uint32_t IntfId::maxNumber(IntfKind kind) {
   const KindInfo* k = info(kind);
   return k ? k->max : 0;
}

std::size_t IntfId::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::string IntfId::stringValue() const {
   if (empty()) {
      return "";
   }
   return std::string(kindName(kind())) + std::to_string(number());
}

IntfId IntfId::parse(std::string_view text) {
   if (text.empty()) {
      return IntfId();
   }
   for (const auto& k : kKinds) {
      if (text.substr(0, k.name.size()) != k.name) {
         continue;
      }
      std::string_view digits = text.substr(k.name.size());
      // Leading zeros would give a second spelling of the same id.
      if (digits.size() > 1 && digits.front() == '0') {
         break;
      }
      std::uint64_t n = Kor::parseUnsigned(digits, k.max, "IntfId");
      if (n < k.min) {
         break;
      }
      return IntfId(k.kind, static_cast<std::uint32_t>(n));
   }
   throw Kor::ParseError("cannot parse '" + std::string(text) + "' as IntfId");
}

std::ostream& operator<<(std::ostream& os, const IntfId& intf) {
   return os << intf.stringValue();
}

}  // namespace Wire
