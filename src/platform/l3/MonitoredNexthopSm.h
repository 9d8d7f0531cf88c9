#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Entity.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>

#include "NextHopKey.h"
#include "VrfId.h"

namespace Fal {

// The next hops whose neighbour entries somebody wants resolved: each (VRF, next hop, L3
// interface) that a forwarding layer is using. Users call addEntry when they start depending on
// a next hop and removeEntry when they stop; entries are counted per user, so a next hop shared
// by two users stays monitored until both have removed it, and removing an entry that is not
// there is harmless. The platform (or a simulator) watches onEntry, which fires only when an entry
// starts or stops being monitored, and publishes the neighbour it finds as
// L3Status::nextHopInfo.
class MonitoredNexthopSm : public Kor::Entity {
 public:
   class NotifieeConst : public Kor::Notifiee<MonitoredNexthopSm> {
    public:
      using Kor::Notifiee<MonitoredNexthopSm>::Notifiee;
      virtual void onEntry(const NextHopKey&, VrfId) {}
   };

   // One monitored next hop in one VRF.
   struct EntryKey {
      VrfId vrfId;
      NextHopKey nextHopKey;
      bool operator==(const EntryKey&) const = default;
      std::size_t hash() const { return Kor::hashCombine(nextHopKey.hash(), vrfId.value()); }
   };
   // Entry -> number of users; never 0.
   using EntryMap = Kor::HashMap<EntryKey, std::uint32_t>;

   explicit MonitoredNexthopSm(Kor::Name name) : Kor::Entity(std::move(name)) {}

   // Throws Kor::RangeError when nextHop is neither IPv4 nor IPv6.
   void addEntry(VrfId vrfId, const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf);
   void removeEntry(VrfId vrfId, const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf);
   // Stops monitoring every entry whatever its count, one notification each.
   void entryDelAll();

   bool entryHas(VrfId vrfId, const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf) const;
   // How many users hold the entry; 0 when it is not monitored.
   std::uint32_t entryRefs(VrfId vrfId, const Wire::IpGenAddr& nextHop, Wire::IntfId l3Intf) const;
   // Number of distinct monitored entries.
   std::size_t entries() const { return entry_.size(); }
   const EntryMap& entryMap() const { return entry_; }

 private:
   void entryDel(const EntryKey& key);
   EntryMap entry_;
};

}  // namespace Fal
