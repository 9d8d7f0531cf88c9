#pragma once

// The decap machine's via kinds, one row each, shared by its source files: where the via is read
// and remembered, how it is programmed, and the names its traces and assertions carry.

#include <sstream>
#include <string>

#include "FalMplsDecapSm.h"

namespace Fal {

// One row per kind: where the via is read and remembered, which helper operation programs and
// undoes it, and the names its traces carry.
template <>
struct MplsDecapSm::SingleMapping<Mpls::LfibIpLookupVia> {
   using Via = Mpls::LfibIpLookupVia;
   static constexpr auto createVia = &MplsDecapSm::createIpLookupVia;
   static constexpr Mpls::LfibViaType viaType = Mpls::viaTypeIpLookup_;
   static constexpr const char* viaTypeText = "viaKey.viaType() == Mpls::viaTypeIpLookup()";
   static constexpr const char* processName = "processIpLookupVia";
   static constexpr const char* createName = "createIpLookupVia";
   static constexpr const char* deleteName = "deleteIpLookupVia";
   static constexpr auto programmed = &MplsDecapSm::routeIpLookupVia_;
   static Mpls::LfibIpLookupVia read(const Mpls::LfibStatus& lfib, const Mpls::LfibViaKey& key) {
      return lfib.ipLookupVia(key);
   }
   static Mpls::LfibHwProgrammingReturnCode create(FalHelper::MplsDecapHelper& helper,
                                                   Wire::MplsLabel label,
                                                   const Mpls::LfibIpLookupVia& via) {
      return helper.createLabelToVrfMapping(label, via.vrfName(), via.payloadType());
   }
   static void remove(FalHelper::MplsDecapHelper& helper, Wire::MplsLabel label,
                      const Mpls::LfibIpLookupVia& via) {
      helper.deleteLabelToVrfMapping(label, via.vrfName(), via.payloadType());
   }
   static std::string text(const Mpls::LfibIpLookupVia& via) {
      std::ostringstream os;
      os << via.vrfName() << "/" << via.payloadType();
      return os.str();
   }
};

template <>
struct MplsDecapSm::SingleMapping<Mpls::LfibVlanVia> {
   using Via = Mpls::LfibVlanVia;
   static constexpr auto createVia = &MplsDecapSm::createVlanVia;
   static constexpr Mpls::LfibViaType viaType = Mpls::viaTypeVlan_;
   static constexpr const char* viaTypeText = "viaKey.viaType() == Mpls::viaTypeVlan()";
   static constexpr const char* processName = "processVlanVia";
   static constexpr const char* createName = "createVlanVia";
   static constexpr const char* deleteName = "deleteVlanVia";
   static constexpr auto programmed = &MplsDecapSm::routeVlanVia_;
   static constexpr bool flood = false;
   static Mpls::LfibVlanVia read(const Mpls::LfibStatus& lfib, const Mpls::LfibViaKey& key) {
      return lfib.vlanVia(key);
   }
};

template <>
struct MplsDecapSm::SingleMapping<Mpls::LfibEvpnVlanFloodVia> {
   using Via = Mpls::LfibEvpnVlanFloodVia;
   static constexpr auto createVia = &MplsDecapSm::createEvpnVlanFloodVia;
   static constexpr Mpls::LfibViaType viaType = Mpls::viaTypeEvpnVlanFlood_;
   static constexpr const char* viaTypeText = "viaKey.viaType() == Mpls::viaTypeEvpnVlanFlood()";
   static constexpr const char* processName = "processEvpnVlanFloodVia";
   static constexpr const char* createName = "createEvpnVlanFloodVia";
   static constexpr const char* deleteName = "deleteEvpnVlanFloodVia";
   static constexpr auto programmed = &MplsDecapSm::routeEvpnVlanFloodVia_;
   static constexpr bool flood = true;
   static Mpls::LfibEvpnVlanFloodVia read(const Mpls::LfibStatus& lfib,
                                          const Mpls::LfibViaKey& key) {
      return lfib.evpnVlanFloodVia(key);
   }
};

// One row per VLAN-aware kind: where the via is read and remembered, whether it floods, and the
// names its traces and assertions carry.
template <>
struct MplsDecapSm::VlanAwareKind<Mpls::LfibEvpnVlanAwareVia> {
   using Via = Mpls::LfibEvpnVlanAwareVia;
   static constexpr auto createVia = &MplsDecapSm::createEvpnVlanAwareVia;
   static constexpr Mpls::LfibViaType viaType = Mpls::viaTypeEvpnVlanAware_;
   static constexpr const char* viaTypeText = "viaKey.viaType() == Mpls::viaTypeEvpnVlanAware_";
   static constexpr const char* processName = "processEvpnVlanAwareVia";
   static constexpr const char* createName = "createEvpnVlanAwareVia";
   static constexpr const char* deleteName = "deleteEvpnVlanAwareVia";
   static constexpr const char* sameViaText = "routeEvpnVlanAwareVia( routeKey ) == via";
   static constexpr auto programmed = &MplsDecapSm::routeEvpnVlanAwareVia_;
   static constexpr bool flood = false;
   static Mpls::LfibEvpnVlanAwareVia read(const Mpls::LfibStatus& lfib,
                                          const Mpls::LfibViaKey& key) {
      return lfib.evpnVlanAwareVia(key);
   }
};

template <>
struct MplsDecapSm::VlanAwareKind<Mpls::LfibEvpnVlanAwareFloodVia> {
   using Via = Mpls::LfibEvpnVlanAwareFloodVia;
   static constexpr auto createVia = &MplsDecapSm::createEvpnVlanAwareFloodVia;
   static constexpr Mpls::LfibViaType viaType = Mpls::viaTypeEvpnVlanAwareFlood_;
   static constexpr const char* viaTypeText =
       "viaKey.viaType() == Mpls::viaTypeEvpnVlanAwareFlood_";
   static constexpr const char* processName = "processEvpnVlanAwareFloodVia";
   static constexpr const char* createName = "createEvpnVlanAwareFloodVia";
   static constexpr const char* deleteName = "deleteEvpnVlanAwareFloodVia";
   static constexpr const char* sameViaText = "*programmed == via";
   static constexpr auto programmed = &MplsDecapSm::routeEvpnVlanAwareFloodVia_;
   static constexpr bool flood = true;
   static Mpls::LfibEvpnVlanAwareFloodVia read(const Mpls::LfibStatus& lfib,
                                               const Mpls::LfibViaKey& key) {
      return lfib.evpnVlanAwareFloodVia(key);
   }
};

}  // namespace Fal
