#include "DecapHelper.h"

#include <sstream>

#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerWheel.h>

namespace sim {

DecapHelper::DecapHelper(const Kor::Name& name, Kor::Ptr<const Loom::TimerWheel> timerWheel)
    : FalHelper::MplsDecapHelperWithDot1qMap(name, timerWheel), wheel_(std::move(timerWheel)) {}

void DecapHelper::logCall(std::string text) {
   callTexts_.push_back(std::move(text));
   callTimes_.push_back(wheel_->loop()->now());
}

std::vector<std::string> DecapHelper::takeCalls() {
   std::vector<std::string> out;
   out.swap(callTexts_);
   callTimes_.clear();
   return out;
}

namespace {

std::string flag(bool b) {
   return b ? "true" : "false";
}

}  // namespace

std::uint64_t DecapHelper::calls(const std::string& what) const {
   for (int c = 0; c < kCalls; ++c) {
      if (what == kCallNames[c]) {
         return calls_[c];
      }
   }
   return 0;
}

Mpls::LfibHwProgrammingReturnCode DecapHelper::admit(bool present) {
   ++creates_;
   if (refuse_ > 0) {
      --refuse_;
      ++refusals_;
      return refuseRc_;
   }
   if (answer_ != Mpls::lfibHwProgrammingSuccess_) {
      ++refusals_;
      return answer_;
   }
   if (!present && mappings() >= capacity_) {
      ++refusals_;
      return Mpls::lfibHwProgrammingResourceFull_;
   }
   return Mpls::lfibHwProgrammingSuccess_;
}

void DecapHelper::mismatch(std::string text) {
   ++mismatchedDeletes_;
   if (mismatchTexts_.size() < 16) {
      mismatchTexts_.push_back(std::move(text));
   }
}

Mpls::LfibHwProgrammingReturnCode DecapHelper::createLabelToVlanMapping(Wire::MplsLabel label,
                                                                        Bridging::VlanId vlanId,
                                                                        bool flood) {
   ++calls_[createVlan];
   if (logCalls_) {
      logCall("createLabelToVlan(" + label.stringValue() + "," + vlanId.stringValue() + "," +
              flag(flood) + ")");
   }
   auto rc = admit(vlan_.contains(label));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      vlan_.insert_or_assign(label, VlanMapping{vlanId, flood});
   }
   return rc;
}

void DecapHelper::deleteLabelToVlanMapping(Wire::MplsLabel label, Bridging::VlanId vlanId,
                                           bool flood) {
   ++calls_[deleteVlan];
   if (logCalls_) {
      logCall("deleteLabelToVlan(" + label.stringValue() + "," + vlanId.stringValue() + "," +
              flag(flood) + ")");
   }
   ++deletes_;
   auto it = vlan_.find(label);
   if (it == vlan_.end()) {
      return;
   }
   if (!(it->second == VlanMapping{vlanId, flood})) {
      std::ostringstream os;
      os << "deleteLabelToVlanMapping(" << label << ", " << vlanId << ", " << flood
         << ") against vlan " << it->second.vlanId << " flood " << it->second.flood;
      mismatch(os.str());
   }
   vlan_.erase(it);
}

Mpls::LfibHwProgrammingReturnCode DecapHelper::createLabelDot1qToVlanMapping(
    Wire::MplsLabel label, Bridging::VlanId dot1qTag, Bridging::VlanIdOrNone vlanId, bool flood) {
   ++calls_[createDot1q];
   if (logCalls_) {
      logCall("createLabelDot1qToVlan(" + label.stringValue() + "," + dot1qTag.stringValue() + "," +
              vlanId.stringValue() + "," + flag(flood) + ")");
   }
   Dot1qKey key(label, dot1qTag);
   auto rc = admit(dot1q_.contains(key));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      dot1q_[key] = Dot1qMapping{vlanId, flood};
   }
   return rc;
}

void DecapHelper::deleteLabelDot1qToVlanMapping(Wire::MplsLabel label, Bridging::VlanId dot1qTag,
                                                bool flood) {
   ++calls_[deleteDot1q];
   if (logCalls_) {
      logCall("deleteLabelDot1qToVlan(" + label.stringValue() + "," + dot1qTag.stringValue() + "," +
              flag(flood) + ")");
   }
   ++deletes_;
   auto it = dot1q_.find(Dot1qKey(label, dot1qTag));
   if (it == dot1q_.end()) {
      return;
   }
   if (it->second.flood != flood) {
      std::ostringstream os;
      os << "deleteLabelDot1qToVlanMapping(" << label << ", " << dot1qTag << ", " << flood
         << ") against flood " << it->second.flood;
      mismatch(os.str());
   }
   dot1q_.erase(it);
}

Mpls::LfibHwProgrammingReturnCode DecapHelper::createLabelToVrfMapping(
    Wire::MplsLabel label, L3::VrfName vrfName, Mpls::PayloadType payloadType) {
   ++calls_[createVrf];
   if (logCalls_) {
      logCall("createLabelToVrf(" + label.stringValue() + "," + vrfName.stringValue() + "," +
              std::to_string(unsigned(payloadType)) + ")");
   }
   auto rc = admit(vrf_.contains(label));
   if (rc == Mpls::lfibHwProgrammingSuccess_) {
      vrf_.insert_or_assign(label, VrfMapping{std::move(vrfName), payloadType});
   }
   return rc;
}

void DecapHelper::deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrfName,
                                          Mpls::PayloadType payloadType) {
   ++calls_[deleteVrf];
   if (logCalls_) {
      logCall("deleteLabelToVrf(" + label.stringValue() + "," + vrfName.stringValue() + "," +
              std::to_string(unsigned(payloadType)) + ")");
   }
   ++deletes_;
   auto it = vrf_.find(label);
   if (it == vrf_.end()) {
      return;
   }
   if (!(it->second == VrfMapping{vrfName, payloadType})) {
      std::ostringstream os;
      os << "deleteLabelToVrfMapping(" << label << ", " << vrfName << ", " << payloadType
         << ") against vrf " << it->second.vrfName << " payload " << it->second.payloadType;
      mismatch(os.str());
   }
   vrf_.erase(it);
}

std::vector<DecapHelper::Mapping> DecapHelper::listMappings() const {
   std::vector<Mapping> out;
   for (const auto& [label, m] : vrf_) {
      Mapping one;
      one.kind = Mapping::Kind::vrf;
      one.label = label;
      one.vrfName = m.vrfName;
      one.payloadType = m.payloadType;
      out.push_back(one);
   }
   for (const auto& [label, m] : vlan_) {
      Mapping one;
      one.kind = Mapping::Kind::vlan;
      one.label = label;
      one.vlanId = m.vlanId;
      one.flood = m.flood;
      out.push_back(one);
   }
   for (const auto& [key, m] : dot1q_) {
      Mapping one;
      one.kind = Mapping::Kind::dot1q;
      one.label = key.first;
      one.dot1qTag = key.second;
      one.dot1qVlanId = m.vlanId;
      one.flood = m.flood;
      out.push_back(one);
   }
   return out;
}

}  // namespace sim
