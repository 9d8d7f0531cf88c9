#include "MonitoredNexthopSm.h"

#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Errors.h>

namespace Fal {

void MonitoredNexthopSm::addEntry(VrfId vrfId, const Wire::IpGenAddr& nextHop,
                                  Wire::IntfId l3Intf) {
   if (nextHop.empty()) {
      throw Kor::RangeError("MonitoredNexthopSm::addEntry needs an IPv4 or IPv6 next hop");
   }
   EntryKey key{vrfId, NextHopKey(nextHop, l3Intf)};
   auto [it, inserted] = entry_.try_emplace(key, 0);
   ++it->second;
   if (inserted) {
      notify(&NotifieeConst::onEntry, key.nextHopKey, vrfId);
   }
}

void MonitoredNexthopSm::removeEntry(VrfId vrfId, const Wire::IpGenAddr& nextHop,
                                     Wire::IntfId l3Intf) {
   EntryKey key{vrfId, NextHopKey(nextHop, l3Intf)};
   auto it = entry_.find(key);
   if (it == entry_.end()) {
      return;
   }
   if (--it->second == 0) {
      entryDel(key);
   }
}

void MonitoredNexthopSm::entryDel(const EntryKey& key) {
   if (entry_.erase(key)) {
      notify(&NotifieeConst::onEntry, key.nextHopKey, key.vrfId);
   }
}

void MonitoredNexthopSm::entryDelAll() {
   Kor::deleteEachKey(entry_, [this](const EntryKey& k) { entryDel(k); });
}

bool MonitoredNexthopSm::entryHas(VrfId vrfId, const Wire::IpGenAddr& nextHop,
                                  Wire::IntfId l3Intf) const {
   return entry_.contains(EntryKey{vrfId, NextHopKey(nextHop, l3Intf)});
}

std::uint32_t MonitoredNexthopSm::entryRefs(VrfId vrfId, const Wire::IpGenAddr& nextHop,
                                            Wire::IntfId l3Intf) const {
   return Kor::mapValueOr(entry_, EntryKey{vrfId, NextHopKey(nextHop, l3Intf)});
}

}  // namespace Fal
