#include "HardwareL2Via.h"

#include <cstdint>
#include <cstring>
#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls::Hardware {

bool L2Via::operator<(const L2Via& o) const {
   if (vlanId_ != o.vlanId_) {
      return vlanId_ < o.vlanId_;
   }
   if (l2Intf_ != o.l2Intf_) {
      return l2Intf_ < o.l2Intf_;
   }
   if (macAddr_ != o.macAddr_) {
      return macAddr_ < o.macAddr_;
   }
   if (!(labelStack_ == o.labelStack_)) {
      return labelStack_ < o.labelStack_;
   }
   return nextHop_ < o.nextHop_;
}

namespace {

// One multiply per word taken in, the runtime's finaliser once at the end: a set of these is
// hashed whenever an adjacency's resolution is looked up for sharing, and hashing each field on
// its own (the address and the labels through their own hashes) cost four times as much.
std::uint64_t absorb(std::uint64_t h, std::uint64_t word) {
   h = (h ^ word) * 0x9e3779b97f4a7c15ULL;
   return h ^ (h >> 32);
}

}  // namespace

std::size_t L2Via::hash() const {
   std::uint64_t h = (std::uint64_t(vlanId_.value()) << 32) | l2Intf_.value();
   h = absorb(h, macAddr_.value());
   const auto& bytes = nextHop_.bytes();
   std::uint64_t high;
   std::uint64_t low;
   std::memcpy(&high, bytes.data(), sizeof high);
   std::memcpy(&low, bytes.data() + 8, sizeof low);
   h = absorb(h, high);
   h = absorb(h, low ^ (std::uint64_t(nextHop_.af()) << 56));
   const std::size_t labels = labelStack_.stackSize();
   h = absorb(h, labels);
   for (std::size_t i = 0; i < labels; ++i) {
      h = absorb(h, labelStack_.labelStack()[i].value());
   }
   return static_cast<std::size_t>(Kor::mixInt(h));
}

std::string L2Via::stringValue() const {
   return "hw l2 via vlan " + vlanId_.stringValue() + " intf " + l2Intf_.stringValue() + " mac " +
          macAddr_.stringValue() + " labels " + labelStack_.stringValue() + " nexthop " +
          nextHop_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const L2Via& via) {
   return os << via.stringValue();
}

}  // namespace Mpls::Hardware
