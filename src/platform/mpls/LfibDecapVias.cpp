#include "LfibDecapVias.h"

#include <ostream>

#include <mplsfwd/kor/Hash.h>

namespace Mpls {

std::size_t LfibIpLookupVia::hash() const {
   return Kor::hashCombine(Kor::hashCombine(key_.hash(), vrfName_.hash()), payloadType_);
}

std::string LfibIpLookupVia::stringValue() const {
   return "LfibIpLookupVia " + key_.stringValue() + " vrfName " + vrfName_.stringValue() +
          " payloadType " + Mpls::stringValue(payloadType_);
}

std::ostream& operator<<(std::ostream& os, const LfibIpLookupVia& via) {
   return os << via.stringValue();
}

std::size_t LfibVlanVia::hash() const {
   return Kor::hashCombine(key_.hash(), vlanId_.value());
}

std::string LfibVlanVia::stringValue() const {
   return "LfibVlanVia " + key_.stringValue() + " vlanId " + vlanId_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibVlanVia& via) {
   return os << via.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibEvpnEthernetSegmentFilterVia& via) {
   return os << via.stringValue();
}

std::size_t LfibEvpnVlanFloodVia::hash() const {
   return Kor::hashCombine(key_.hash(), vlanId_.value());
}

std::string LfibEvpnVlanFloodVia::stringValue() const {
   return "LfibEvpnVlanFloodVia " + key_.stringValue() + " vlanId " + vlanId_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibEvpnVlanFloodVia& via) {
   return os << via.stringValue();
}

std::size_t LfibEvpnVlanAwareVia::hash() const {
   return Kor::hashCombine(key_.hash(), dot1qTagToVlanKey_.hash());
}

std::string LfibEvpnVlanAwareVia::stringValue() const {
   return "LfibEvpnVlanAwareVia " + key_.stringValue() + " dot1qTagToVlanKey " +
          dot1qTagToVlanKey_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibEvpnVlanAwareVia& via) {
   return os << via.stringValue();
}

std::size_t LfibEvpnVlanAwareFloodVia::hash() const {
   return Kor::hashCombine(key_.hash(), dot1qTagToVlanKey_.hash());
}

std::string LfibEvpnVlanAwareFloodVia::stringValue() const {
   return "LfibEvpnVlanAwareFloodVia " + key_.stringValue() + " dot1qTagToVlanKey " +
          dot1qTagToVlanKey_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibEvpnVlanAwareFloodVia& via) {
   return os << via.stringValue();
}

std::size_t LfibPwVia::hash() const {
   return Kor::hashCombine(key_.hash(), pwIntfId_.value());
}

std::string LfibPwVia::stringValue() const {
   return "LfibPwVia " + key_.stringValue() + " pwIntfId " + pwIntfId_.stringValue();
}

std::ostream& operator<<(std::ostream& os, const LfibPwVia& via) {
   return os << via.stringValue();
}

}  // namespace Mpls
