#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include <mplsfwd/kor/EnumRegistry.h>

// The enumerations of the system LFIB's records. They are unscoped (members reachable as
// Mpls::viaTypeMplsIp_) because the records are read from tables that other agents publish with
// these numbers; the text of a member is its name without the trailing underscore.
namespace Mpls {

// The kind of vias that a via set holds; the LFIB keeps one table of vias per kind.
enum LfibViaType : std::uint8_t {
   viaTypeInvalid_ = 0,
   viaTypeMplsIp_ = 1,
   viaTypeNexthopGroup_ = 2,
   viaTypeIpLookup_ = 3,
   viaTypeVlan_ = 4,
   viaTypeEvpnVlanAware_ = 5,
   viaTypeEvpnEthernetSegment_ = 6,
   viaTypeEvpnVlanFlood_ = 7,
   viaTypeEvpnVlanAwareFlood_ = 8,
   viaTypePseudowire_ = 9,
   viaTypeExternalFec_ = 10,
   viaTypeMplsTunnel_ = 11,
};

// How the vias of a set share the traffic. Carried for traces; the forwarding layers do not
// interpret it.
enum LfibViaSetType : std::uint8_t {
   viaSetTypeUnknown_ = 0,
   viaSetTypeEcmp_ = 1,
   viaSetTypeWeightedEcmp_ = 2,
   viaSetTypePrimaryBackup_ = 3,
};

// What lies under the label once it is popped.
enum PayloadType : std::uint8_t {
   payloadTypeAutoDecide_ = 0,  // look at the payload's first nibble
   payloadTypeIpv4_ = 1,
   payloadTypeIpv6_ = 2,
   payloadTypeMpls_ = 3,
   payloadTypeEthernet_ = 4,
};

// The protocol or configuration that published a via set or via.
enum LfibSource : std::uint8_t {
   lfibSourceUnknown_ = 0,
   lfibSourceStatic_ = 1,
   lfibSourceLdp_ = 2,
   lfibSourceBgp_ = 3,
   lfibSourceIsisSr_ = 4,
   lfibSourceOspfSr_ = 5,
   lfibSourceRsvp_ = 6,
   lfibSourceEvpn_ = 7,
   lfibSourcePseudowire_ = 8,
};

// The answer of a label-programming helper. 0 is success; every other value says why the
// mapping is not in hardware. Callers record and retry 1 to 3 and give up on anything above, so
// the type holds any 32-bit number, named or not.
enum LfibHwProgrammingReturnCode : std::uint32_t {
   lfibHwProgrammingSuccess_ = 0,
   lfibHwProgrammingResourceFull_ = 1,
   lfibHwProgrammingFailed_ = 2,
   lfibHwProgrammingNotReady_ = 3,
};

// What kind of adjacency an LFIB route forwards to.
enum AdjacencyType : std::uint8_t {
   adjacencyTypeInvalid_ = 0,
   adjacencyTypeMpls_ = 1,
   adjacencyTypeExtFec_ = 2,
   adjacencyTypePseudowire_ = 3,
};

const Kor::EnumRegistry<LfibViaType>& lfibViaTypeRegistry();
const Kor::EnumRegistry<LfibViaSetType>& lfibViaSetTypeRegistry();
const Kor::EnumRegistry<PayloadType>& payloadTypeRegistry();
const Kor::EnumRegistry<LfibSource>& lfibSourceRegistry();
const Kor::EnumRegistry<LfibHwProgrammingReturnCode>& lfibHwProgrammingReturnCodeRegistry();
const Kor::EnumRegistry<AdjacencyType>& adjacencyTypeRegistry();

std::string stringValue(LfibViaType v);
std::string stringValue(LfibViaSetType v);
std::string stringValue(PayloadType v);
std::string stringValue(LfibSource v);
std::string stringValue(LfibHwProgrammingReturnCode v);
std::string stringValue(AdjacencyType v);

std::ostream& operator<<(std::ostream& os, LfibViaType v);
std::ostream& operator<<(std::ostream& os, LfibViaSetType v);
std::ostream& operator<<(std::ostream& os, PayloadType v);
std::ostream& operator<<(std::ostream& os, LfibSource v);
std::ostream& operator<<(std::ostream& os, LfibHwProgrammingReturnCode v);
std::ostream& operator<<(std::ostream& os, AdjacencyType v);

}  // namespace Mpls
