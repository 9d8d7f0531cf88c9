#include "L3Status.h"

#include <mplsfwd/kor/AttrOps.h>

namespace Fal {

NextHopInfo L3Status::nextHopInfo(const NextHopKey& key) const {
   return Kor::mapValueOr(nextHopInfo_, key);
}

void L3Status::nextHopInfoIs(const NextHopKey& key, const NextHopInfo& info) {
   if (Kor::mapAssignIfChanged(nextHopInfo_, key, info)) {
      notify(&NotifieeConst::onNextHopInfo, key);
   }
}

void L3Status::nextHopInfoDel(const NextHopKey& key) {
   if (nextHopInfo_.erase(key)) {
      notify(&NotifieeConst::onNextHopInfo, key);
   }
}

void L3Status::nextHopInfoDelAll() {
   Kor::deleteEachKey(nextHopInfo_, [this](const NextHopKey& k) { nextHopInfoDel(k); });
}

VrfId L3Status::l3IntfArpVrfId(Wire::IntfId intf) const {
   return Kor::mapValueOr(l3IntfArpVrfId_, intf);
}

void L3Status::l3IntfArpVrfIdIs(Wire::IntfId intf, VrfId vrfId) {
   if (Kor::mapAssignIfChanged(l3IntfArpVrfId_, intf, vrfId)) {
      notify(&NotifieeConst::onL3IntfArpVrfId, intf);
   }
}

void L3Status::l3IntfArpVrfIdDel(Wire::IntfId intf) {
   if (l3IntfArpVrfId_.erase(intf)) {
      notify(&NotifieeConst::onL3IntfArpVrfId, intf);
   }
}

void L3Status::l3IntfArpVrfIdDelAll() {
   Kor::deleteEachKey(l3IntfArpVrfId_, [this](Wire::IntfId k) { l3IntfArpVrfIdDel(k); });
}

std::uint32_t L3Status::intfIdToL3Id(Wire::IntfId intf) const {
   return Kor::mapValueOr(intfIdToL3Id_, intf);
}

void L3Status::intfIdToL3IdIs(Wire::IntfId intf, std::uint32_t l3Id) {
   if (Kor::mapAssignIfChanged(intfIdToL3Id_, intf, l3Id)) {
      notify(&NotifieeConst::onIntfIdToL3Id, intf);
   }
}

void L3Status::intfIdToL3IdDel(Wire::IntfId intf) {
   if (intfIdToL3Id_.erase(intf)) {
      notify(&NotifieeConst::onIntfIdToL3Id, intf);
   }
}

void L3Status::intfIdToL3IdDelAll() {
   Kor::deleteEachKey(intfIdToL3Id_, [this](Wire::IntfId k) { intfIdToL3IdDel(k); });
}

ResolvedNexthop L3Status::resolvedV4(const VrfAndIpAddr& key) const {
   return Kor::mapValueOr(resolvedV4_, key);
}

void L3Status::resolvedV4Is(const VrfAndIpAddr& key, const ResolvedNexthop& resolved) {
   if (Kor::mapAssignIfChanged(resolvedV4_, key, resolved)) {
      notify(&NotifieeConst::onResolvedV4, key);
   }
}

void L3Status::resolvedV4Del(const VrfAndIpAddr& key) {
   if (resolvedV4_.erase(key)) {
      notify(&NotifieeConst::onResolvedV4, key);
   }
}

void L3Status::resolvedV4DelAll() {
   Kor::deleteEachKey(resolvedV4_, [this](const VrfAndIpAddr& k) { resolvedV4Del(k); });
}

ResolvedNexthop L3Status::resolvedV6(const VrfAndIpGenAddr& key) const {
   return Kor::mapValueOr(resolvedV6_, key);
}

void L3Status::resolvedV6Is(const VrfAndIpGenAddr& key, const ResolvedNexthop& resolved) {
   if (Kor::mapAssignIfChanged(resolvedV6_, key, resolved)) {
      notify(&NotifieeConst::onResolvedV6, key);
   }
}

void L3Status::resolvedV6Del(const VrfAndIpGenAddr& key) {
   if (resolvedV6_.erase(key)) {
      notify(&NotifieeConst::onResolvedV6, key);
   }
}

void L3Status::resolvedV6DelAll() {
   Kor::deleteEachKey(resolvedV6_, [this](const VrfAndIpGenAddr& k) { resolvedV6Del(k); });
}

L3::VrfName L3Status::vrfName(VrfId vrfId) const {
   return Kor::mapValueOr(vrfName_, vrfId);
}

void L3Status::vrfNameIs(VrfId vrfId, const L3::VrfName& name) {
   auto [it, inserted] = vrfName_.try_emplace(vrfId, name);
   if (!inserted) {
      if (it->second == name) {
         return;
      }
      auto old = vrfIdByName_.find(it->second);
      old->second.erase(vrfId);
      if (old->second.empty()) {
         vrfIdByName_.erase(old);
      }
      it->second = name;
   }
   vrfIdByName_[name].insert(vrfId);
   notify(&NotifieeConst::onVrfName, vrfId);
}

void L3Status::vrfNameDel(VrfId vrfId) {
   auto it = vrfName_.find(vrfId);
   if (it == vrfName_.end()) {
      return;
   }
   auto byName = vrfIdByName_.find(it->second);
   byName->second.erase(vrfId);
   if (byName->second.empty()) {
      vrfIdByName_.erase(byName);
   }
   vrfName_.erase(it);
   notify(&NotifieeConst::onVrfName, vrfId);
}

void L3Status::vrfNameDelAll() {
   Kor::deleteEachKey(vrfName_, [this](VrfId k) { vrfNameDel(k); });
}

std::optional<VrfId> L3Status::vrfIdOf(const L3::VrfName& name) const {
   auto it = vrfIdByName_.find(name);
   if (it == vrfIdByName_.end()) {
      return std::nullopt;
   }
   return *it->second.begin();
}

}  // namespace Fal
