#include "LfibTypes.h"

#include <ostream>

namespace Mpls {

const Kor::EnumRegistry<LfibViaType>& lfibViaTypeRegistry() {
   static const Kor::EnumRegistry<LfibViaType> registry(
       "Mpls::LfibViaType", {{viaTypeInvalid_, "viaTypeInvalid"},
                             {viaTypeMplsIp_, "viaTypeMplsIp"},
                             {viaTypeNexthopGroup_, "viaTypeNexthopGroup"},
                             {viaTypeIpLookup_, "viaTypeIpLookup"},
                             {viaTypeVlan_, "viaTypeVlan"},
                             {viaTypeEvpnVlanAware_, "viaTypeEvpnVlanAware"},
                             {viaTypeEvpnEthernetSegment_, "viaTypeEvpnEthernetSegment"},
                             {viaTypeEvpnVlanFlood_, "viaTypeEvpnVlanFlood"},
                             {viaTypeEvpnVlanAwareFlood_, "viaTypeEvpnVlanAwareFlood"},
                             {viaTypePseudowire_, "viaTypePseudowire"},
                             {viaTypeExternalFec_, "viaTypeExternalFec"},
                             {viaTypeMplsTunnel_, "viaTypeMplsTunnel"}});
   return registry;
}

const Kor::EnumRegistry<LfibViaSetType>& lfibViaSetTypeRegistry() {
   static const Kor::EnumRegistry<LfibViaSetType> registry(
       "Mpls::LfibViaSetType", {{viaSetTypeUnknown_, "viaSetTypeUnknown"},
                                {viaSetTypeEcmp_, "viaSetTypeEcmp"},
                                {viaSetTypeWeightedEcmp_, "viaSetTypeWeightedEcmp"},
                                {viaSetTypePrimaryBackup_, "viaSetTypePrimaryBackup"}});
   return registry;
}

const Kor::EnumRegistry<PayloadType>& payloadTypeRegistry() {
   static const Kor::EnumRegistry<PayloadType> registry(
       "Mpls::PayloadType", {{payloadTypeAutoDecide_, "payloadTypeAutoDecide"},
                             {payloadTypeIpv4_, "payloadTypeIpv4"},
                             {payloadTypeIpv6_, "payloadTypeIpv6"},
                             {payloadTypeMpls_, "payloadTypeMpls"},
                             {payloadTypeEthernet_, "payloadTypeEthernet"}});
   return registry;
}

const Kor::EnumRegistry<LfibSource>& lfibSourceRegistry() {
   static const Kor::EnumRegistry<LfibSource> registry("Mpls::LfibSource",
                                                       {{lfibSourceUnknown_, "unknown"},
                                                        {lfibSourceStatic_, "static"},
                                                        {lfibSourceLdp_, "ldp"},
                                                        {lfibSourceBgp_, "bgp"},
                                                        {lfibSourceIsisSr_, "isisSr"},
                                                        {lfibSourceOspfSr_, "ospfSr"},
                                                        {lfibSourceRsvp_, "rsvp"},
                                                        {lfibSourceEvpn_, "evpn"},
                                                        {lfibSourcePseudowire_, "pseudowire"}});
   return registry;
}

const Kor::EnumRegistry<LfibHwProgrammingReturnCode>& lfibHwProgrammingReturnCodeRegistry() {
   static const Kor::EnumRegistry<LfibHwProgrammingReturnCode> registry(
       "Mpls::LfibHwProgrammingReturnCode",
       {{lfibHwProgrammingSuccess_, "lfibHwProgrammingSuccess"},
        {lfibHwProgrammingResourceFull_, "lfibHwProgrammingResourceFull"},
        {lfibHwProgrammingFailed_, "lfibHwProgrammingFailed"},
        {lfibHwProgrammingNotReady_, "lfibHwProgrammingNotReady"}});
   return registry;
}

const Kor::EnumRegistry<AdjacencyType>& adjacencyTypeRegistry() {
   static const Kor::EnumRegistry<AdjacencyType> registry(
       "Mpls::AdjacencyType", {{adjacencyTypeInvalid_, "adjacencyTypeInvalid"},
                               {adjacencyTypeMpls_, "adjacencyTypeMpls"},
                               {adjacencyTypeExtFec_, "adjacencyTypeExtFec"},
                               {adjacencyTypePseudowire_, "adjacencyTypePseudowire"}});
   return registry;
}

std::string stringValue(LfibViaType v) {
   return lfibViaTypeRegistry().name(v);
}
std::string stringValue(LfibViaSetType v) {
   return lfibViaSetTypeRegistry().name(v);
}
std::string stringValue(PayloadType v) {
   return payloadTypeRegistry().name(v);
}
std::string stringValue(LfibSource v) {
   return lfibSourceRegistry().name(v);
}
std::string stringValue(LfibHwProgrammingReturnCode v) {
   return lfibHwProgrammingReturnCodeRegistry().name(v);
}
std::string stringValue(AdjacencyType v) {
   return adjacencyTypeRegistry().name(v);
}

std::ostream& operator<<(std::ostream& os, LfibViaType v) {
   return os << stringValue(v);
}
std::ostream& operator<<(std::ostream& os, LfibViaSetType v) {
   return os << stringValue(v);
}
std::ostream& operator<<(std::ostream& os, PayloadType v) {
   return os << stringValue(v);
}
std::ostream& operator<<(std::ostream& os, LfibSource v) {
   return os << stringValue(v);
}
std::ostream& operator<<(std::ostream& os, LfibHwProgrammingReturnCode v) {
   return os << stringValue(v);
}
std::ostream& operator<<(std::ostream& os, AdjacencyType v) {
   return os << stringValue(v);
}

}  // namespace Mpls
