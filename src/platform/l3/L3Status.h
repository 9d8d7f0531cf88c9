#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/wire/IntfId.h>

#include "NextHopInfo.h"
#include "NextHopKey.h"
#include "ResolvedNexthop.h"
#include "VrfAndIpAddr.h"
#include "VrfAndIpGenAddr.h"
#include "VrfId.h"
#include "VrfName.h"

namespace Fal {

// The agent's L3 status, as the platform publishes it to the forwarding layers:
// - nextHopInfo: the neighbour entry of each next hop (NextHopKey -> NextHopInfo), written by the
//   platform once it resolves a next hop that is monitored;
// - l3IntfArpVrfId: the VRF in which an L3 interface's neighbours live;
// - intfIdToL3Id: the hardware L3 id of each L3 interface;
// - resolvedV4 / resolvedV6: the route resolution of each watched address, written by the route
//   resolver;
// - vrfName: the name of each VRF id, with a reverse index from name to id.
// Every mutator changes state first and notifies after, only on a real change; a keyed delete
// notifies only when an entry went; a delete-all goes entry by entry. Lookups of absent keys
// yield the default value (unresolved entries, VrfId(0), hardware id 0, the empty name).
class L3Status : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<L3Status> {
    public:
      using Kor::Notifiee<L3Status>::Notifiee;
      virtual void onNextHopInfo(const NextHopKey&) {}
      virtual void onL3IntfArpVrfId(Wire::IntfId) {}
      virtual void onIntfIdToL3Id(Wire::IntfId) {}
      virtual void onResolvedV4(const VrfAndIpAddr&) {}
      virtual void onResolvedV6(const VrfAndIpGenAddr&) {}
      virtual void onVrfName(VrfId) {}
   };

   using NextHopInfoMap = Kor::HashMap<NextHopKey, NextHopInfo>;
   using IntfVrfIdMap = Kor::HashMap<Wire::IntfId, VrfId>;
   using IntfL3IdMap = Kor::HashMap<Wire::IntfId, std::uint32_t>;
   using ResolvedV4Map = Kor::HashMap<VrfAndIpAddr, ResolvedNexthop>;
   using ResolvedV6Map = Kor::HashMap<VrfAndIpGenAddr, ResolvedNexthop>;
   using VrfNameMap = Kor::HashMap<VrfId, L3::VrfName>;

   explicit L3Status(Kor::Name name) : Kor::Entity(std::move(name)) {}

   NextHopInfo nextHopInfo(const NextHopKey& key) const;
   bool nextHopInfoHas(const NextHopKey& key) const { return nextHopInfo_.contains(key); }
   void nextHopInfoIs(const NextHopKey& key, const NextHopInfo& info);
   void nextHopInfoDel(const NextHopKey& key);
   void nextHopInfoDelAll();
   std::size_t nextHopInfos() const { return nextHopInfo_.size(); }
   const NextHopInfoMap& nextHopInfoMap() const { return nextHopInfo_; }

   // VrfId(0) for an interface without an entry.
   VrfId l3IntfArpVrfId(Wire::IntfId intf) const;
   void l3IntfArpVrfIdIs(Wire::IntfId intf, VrfId vrfId);
   void l3IntfArpVrfIdDel(Wire::IntfId intf);
   void l3IntfArpVrfIdDelAll();
   const IntfVrfIdMap& l3IntfArpVrfIdMap() const { return l3IntfArpVrfId_; }

   // 0 for an interface without an entry.
   std::uint32_t intfIdToL3Id(Wire::IntfId intf) const;
   bool intfIdToL3IdHas(Wire::IntfId intf) const { return intfIdToL3Id_.contains(intf); }
   void intfIdToL3IdIs(Wire::IntfId intf, std::uint32_t l3Id);
   void intfIdToL3IdDel(Wire::IntfId intf);
   void intfIdToL3IdDelAll();
   const IntfL3IdMap& intfIdToL3IdMap() const { return intfIdToL3Id_; }

   ResolvedNexthop resolvedV4(const VrfAndIpAddr& key) const;
   bool resolvedV4Has(const VrfAndIpAddr& key) const { return resolvedV4_.contains(key); }
   void resolvedV4Is(const VrfAndIpAddr& key, const ResolvedNexthop& resolved);
   void resolvedV4Del(const VrfAndIpAddr& key);
   void resolvedV4DelAll();
   std::size_t resolvedV4s() const { return resolvedV4_.size(); }
   const ResolvedV4Map& resolvedV4Map() const { return resolvedV4_; }

   ResolvedNexthop resolvedV6(const VrfAndIpGenAddr& key) const;
   bool resolvedV6Has(const VrfAndIpGenAddr& key) const { return resolvedV6_.contains(key); }
   void resolvedV6Is(const VrfAndIpGenAddr& key, const ResolvedNexthop& resolved);
   void resolvedV6Del(const VrfAndIpGenAddr& key);
   void resolvedV6DelAll();
   std::size_t resolvedV6s() const { return resolvedV6_.size(); }
   const ResolvedV6Map& resolvedV6Map() const { return resolvedV6_; }

   // The empty name for an unnamed VRF id.
   L3::VrfName vrfName(VrfId vrfId) const;
   bool vrfNameHas(VrfId vrfId) const { return vrfName_.contains(vrfId); }
   void vrfNameIs(VrfId vrfId, const L3::VrfName& name);
   void vrfNameDel(VrfId vrfId);
   void vrfNameDelAll();
   std::size_t vrfNames() const { return vrfName_.size(); }
   const VrfNameMap& vrfNameMap() const { return vrfName_; }
   // The VRF id that carries `name`, if any. Should the platform ever give one name to two ids
   // (briefly, while renaming), the lowest of them answers.
   std::optional<VrfId> vrfIdOf(const L3::VrfName& name) const;

 private:
   NextHopInfoMap nextHopInfo_;
   IntfVrfIdMap l3IntfArpVrfId_;
   IntfL3IdMap intfIdToL3Id_;
   ResolvedV4Map resolvedV4_;
   ResolvedV6Map resolvedV6_;
   VrfNameMap vrfName_;
   // Reverse of vrfName_: every id that carries a name, so a rename or a delete can drop exactly
   // its own id. Kept in step with vrfName_ before any notification goes out.
   Kor::HashMap<L3::VrfName, Kor::OrderedSet<VrfId>> vrfIdByName_;
};

}  // namespace Fal
