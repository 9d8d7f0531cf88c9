#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <mplsfwd/decap/MplsDecapHelperWithDot1qMap.h>
#include <mplsfwd/kor/AttrOps.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/DenseIndexMap.h>

// A label's slot in the helper's label-indexed tables is its value; the no-label value has none.
template <>
struct Kor::DenseIndex<Wire::MplsLabel> {
   static constexpr std::uint32_t kCapacity = Wire::MplsLabel::kMax + 1;
   static std::uint32_t index(const Wire::MplsLabel& l) { return l.value(); }
   static Wire::MplsLabel key(std::uint32_t i) { return Wire::MplsLabel(i); }
};

namespace sim {

// What one label-to-VRF mapping carries.
struct VrfMapping {
   L3::VrfName vrfName;
   Mpls::PayloadType payloadType = Mpls::payloadTypeAutoDecide_;
   bool operator==(const VrfMapping&) const = default;
};
// What one label-to-VLAN mapping carries.
struct VlanMapping {
   Bridging::VlanId vlanId;
   bool flood = false;
   bool operator==(const VlanMapping&) const = default;
};
// What one label-plus-dot1q-tag-to-VLAN mapping carries.
struct Dot1qMapping {
   Bridging::VlanIdOrNone vlanId;
   bool flood = false;
   bool operator==(const Dot1qMapping&) const = default;
};

// The platform's decap helper: the label decapsulation tables of the simulated chip, behind the
// interface that the decap state machine calls (derived from the dot1q-map variant, so the chip
// can also name dot1q tables by small ids). The three tables share one capacity. A create of a
// key already present rewrites it in place; a create that finds no room answers
// lfibHwProgrammingResourceFull_; the next N creates can be made to fail with a chosen return
// code, or every create from now on answer one (answerIs). A delete removes its entry; a delete
// whose values differ from the entry's is counted as a mismatch (a delete must carry the values of
// the create it undoes), and still removes it.
//
// Called synchronously by the decap state machine. Its tables are hardware: they survive a
// restart of the agent's state machines. On demand it also logs the calls it receives, each as a
// short text ("createLabelToVlan(16,10,true)") with the simulated time of the call.
class DecapHelper : public FalHelper::MplsDecapHelperWithDot1qMap {
 public:
   static constexpr std::size_t unlimited() { return std::numeric_limits<std::size_t>::max(); }
   using Dot1qKey = std::pair<Wire::MplsLabel, Bridging::VlanId>;
   // By label, walked in label order: a table of the whole label space is an array, not a tree.
   using VrfMappingMap = Kor::DenseIndexMap<Wire::MplsLabel, VrfMapping>;
   using VlanMappingMap = Kor::DenseIndexMap<Wire::MplsLabel, VlanMapping>;

   DecapHelper(const Kor::Name& name, Kor::Ptr<const Loom::TimerWheel> timerWheel);

   Mpls::LfibHwProgrammingReturnCode createLabelToVlanMapping(Wire::MplsLabel label,
                                                              Bridging::VlanId vlanId,
                                                              bool flood) override;
   void deleteLabelToVlanMapping(Wire::MplsLabel label, Bridging::VlanId vlanId,
                                 bool flood) override;
   Mpls::LfibHwProgrammingReturnCode createLabelDot1qToVlanMapping(Wire::MplsLabel label,
                                                                   Bridging::VlanId dot1qTag,
                                                                   Bridging::VlanIdOrNone vlanId,
                                                                   bool flood) override;
   void deleteLabelDot1qToVlanMapping(Wire::MplsLabel label, Bridging::VlanId dot1qTag,
                                      bool flood) override;
   Mpls::LfibHwProgrammingReturnCode createLabelToVrfMapping(
       Wire::MplsLabel label, L3::VrfName vrfName, Mpls::PayloadType payloadType) override;
   void deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrfName,
                                Mpls::PayloadType payloadType) override;
   std::vector<Mapping> listMappings() const override;

   std::size_t capacity() const { return capacity_; }
   void capacityIs(std::size_t n) { capacity_ = n; }
   void refuseNextIs(std::size_t n, Mpls::LfibHwProgrammingReturnCode rc) {
      refuse_ = n;
      refuseRc_ = rc;
   }
   std::size_t refusalsLeft() const { return refuse_; }
   // Every create answers `rc` from now on (lfibHwProgrammingSuccess_: as the tables say).
   void answerIs(Mpls::LfibHwProgrammingReturnCode rc) { answer_ = rc; }

   // With the log on, the calls received since it was last taken, oldest first, and their times.
   void callLogIs(bool on) { logCalls_ = on; }
   const std::vector<std::string>& callTexts() const { return callTexts_; }
   const std::vector<double>& callTimes() const { return callTimes_; }
   std::vector<std::string> takeCalls();

   std::size_t mappings() const { return vrf_.size() + vlan_.size() + dot1q_.size(); }
   const VrfMappingMap& vrfMappingMap() const { return vrf_; }
   const VlanMappingMap& vlanMappingMap() const { return vlan_; }
   const Kor::OrderedMap<Dot1qKey, Dot1qMapping>& dot1qMappingMap() const { return dot1q_; }
   std::uint64_t creates() const { return creates_; }
   std::uint64_t deletes() const { return deletes_; }
   std::uint64_t refusals() const { return refusals_; }
   std::uint64_t mismatchedDeletes() const { return mismatchedDeletes_; }
   // Calls by operation and kind: "create vrf", "delete vlan", "create dot1q", ...
   std::uint64_t calls(const std::string& what) const;
   // Texts of the mismatched deletes, oldest first (at most 16 kept).
   const std::vector<std::string>& mismatches() const { return mismatchTexts_; }

 private:
   // The calls counted by calls(), in the order of kCallNames.
   enum Call { createVlan, deleteVlan, createDot1q, deleteDot1q, createVrf, deleteVrf, kCalls };
   static constexpr const char* kCallNames[kCalls] = {"create vlan",  "delete vlan", "create dot1q",
                                                      "delete dot1q", "create vrf",  "delete vrf"};

   Mpls::LfibHwProgrammingReturnCode admit(bool present);
   void mismatch(std::string text);
   void logCall(std::string text);

   VrfMappingMap vrf_;
   VlanMappingMap vlan_;
   Kor::OrderedMap<Dot1qKey, Dot1qMapping> dot1q_;
   std::uint64_t calls_[kCalls] = {};
   std::size_t capacity_ = unlimited();
   std::size_t refuse_ = 0;
   Mpls::LfibHwProgrammingReturnCode refuseRc_ = Mpls::lfibHwProgrammingResourceFull_;
   Mpls::LfibHwProgrammingReturnCode answer_ = Mpls::lfibHwProgrammingSuccess_;
   Kor::Ptr<const Loom::TimerWheel> wheel_;
   bool logCalls_ = false;
   std::vector<std::string> callTexts_;
   std::vector<double> callTimes_;
   std::uint64_t creates_ = 0;
   std::uint64_t deletes_ = 0;
   std::uint64_t refusals_ = 0;
   std::uint64_t mismatchedDeletes_ = 0;
   std::vector<std::string> mismatchTexts_;
};

}  // namespace sim
