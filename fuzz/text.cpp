// Every text form with a parse(): the first byte picks the form, the rest is the text. A text
// either parses or throws one of the runtime's errors, and whatever parses prints back to a text
// that parses to the same value.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include <mplsfwd/Fal/Dot1qTagToVlanMapId.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/l3/IpPrefix.h>
#include <mplsfwd/mpls/FibFecId.h>
#include <mplsfwd/mpls/PseudowireLocalConnectorInfo.h>
#include <mplsfwd/mpls/PwDecapInfo.h>
#include <mplsfwd/mpls/RouteKey.h>
#include <mplsfwd/transit/IpAddrIntfId.h>
#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpAddr.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/MplsLabel.h>
#include <mplsfwd/wire/MplsLabelOperation.h>
#include <mplsfwd/wire/VlanId.h>

namespace {

template <class T>
void roundTrip(std::string_view text) {
   std::string printed;
   try {
      printed = T::parse(text).stringValue();
   } catch (const Kor::ParseError&) {
      return;
   } catch (const Kor::RangeError&) {
      return;
   }
   T back = T::parse(printed);
   if (back.stringValue() != printed) {
      std::fprintf(stderr, "'%.*s' prints as '%s', which parses to '%s'\n",
                   static_cast<int>(text.size()), text.data(), printed.c_str(),
                   back.stringValue().c_str());
      __builtin_trap();
   }
}

using Check = void (*)(std::string_view);
constexpr Check checks[] = {
    roundTrip<Wire::MplsLabel>,
    roundTrip<Wire::MplsLabelOperation>,
    roundTrip<Wire::IpAddr>,
    roundTrip<Wire::IpGenAddr>,
    roundTrip<L3::IpPrefix>,
    roundTrip<Wire::EthAddr>,
    roundTrip<Wire::IntfId>,
    roundTrip<Bridging::VlanId>,
    roundTrip<Bridging::VlanIdOrNone>,
    roundTrip<Mpls::RouteKey>,
    roundTrip<Memtab::Fib::FecId>,
    roundTrip<FalPw::PwDecapInfo>,
    roundTrip<Pseudowire::LocalConnectorInfo>,
    roundTrip<Fal::Dot1qTagToVlanMapId>,
    roundTrip<Fal::IpAddrIntfId>,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
   if (size == 0) {
      return 0;
   }
   std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
   checks[data[0] % std::size(checks)](text);
   return 0;
}
