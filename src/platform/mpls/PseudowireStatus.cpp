#include "PseudowireStatus.h"

#include <array>
#include <cstdio>
#include <sstream>

#include <mplsfwd/kor/AttrOps.h>

namespace Pseudowire {

namespace {

// The record as it lies in shared memory: a size word, then the parent interface, the dot1q tag
// and the internal VLAN, little-endian.
constexpr std::uint32_t kPayloadSize = 8;
using RecordBytes = std::array<std::uint8_t, 4 + kPayloadSize>;

void putLe(RecordBytes& bytes, std::size_t at, std::uint64_t value, std::size_t width) {
   for (std::size_t i = 0; i < width; ++i) {
      bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
   }
}

RecordBytes encode(std::uint32_t sizeWord, const LocalConnectorInfo& info) {
   RecordBytes bytes{};
   putLe(bytes, 0, sizeWord, 4);
   putLe(bytes, 4, info.parentIntfId().value(), 4);
   putLe(bytes, 8, info.dot1qTag().value(), 2);
   putLe(bytes, 10, info.internalVlan().value(), 2);
   return bytes;
}

}  // namespace

LocalConnectorInfo Status::localConnectorInfo(Wire::IntfId pwIntfId) const {
   if (corrupt_.contains(pwIntfId)) [[unlikely]] {
      throwCorruption(pwIntfId);
   }
   return Kor::mapValueOr(localConnectorInfo_, pwIntfId);
}

void Status::throwCorruption(Wire::IntfId pwIntfId) const {
   // A corrupt record is one whose size word was overwritten; its complement of the real size
   // stands for the garbage a stray writer leaves.
   const std::uint32_t badSize = ~kPayloadSize;
   const RecordBytes bytes = encode(badSize, Kor::mapValueOr(localConnectorInfo_, pwIntfId));
   std::ostringstream os;
   os << "PodArray::set expected size <= " << kPayloadSize << ", instead got " << badSize
      << ". Buffer is at address: " << static_cast<const void*>(bytes.data()) << " with contents:";
   for (std::uint8_t b : bytes) {
      char hex[4];
      std::snprintf(hex, sizeof(hex), " %02x", b);
      os << hex;
   }
   throw CorruptionError(os.str());
}

void Status::localConnectorInfoIs(Wire::IntfId pwIntfId, const LocalConnectorInfo& info) {
   bool changed = Kor::mapAssignIfChanged(localConnectorInfo_, pwIntfId, info);
   changed = corrupt_.erase(pwIntfId) != 0 || changed;
   if (changed) {
      notify(&NotifieeConst::onLocalConnectorInfo, pwIntfId);
   }
}

void Status::localConnectorInfoDel(Wire::IntfId pwIntfId) {
   bool changed = localConnectorInfo_.erase(pwIntfId) != 0;
   changed = corrupt_.erase(pwIntfId) != 0 || changed;
   if (changed) {
      notify(&NotifieeConst::onLocalConnectorInfo, pwIntfId);
   }
}

void Status::localConnectorInfoDelAll() {
   Kor::deleteEachKey(localConnectorInfo_,
                      [this](Wire::IntfId pwIntfId) { localConnectorInfoDel(pwIntfId); });
   Kor::deleteEachMember(corrupt_,
                         [this](Wire::IntfId pwIntfId) { localConnectorInfoDel(pwIntfId); });
}

void Status::localConnectorInfoCorruptIs(Wire::IntfId pwIntfId, bool corrupt) {
   const bool changed = corrupt ? corrupt_.insert(pwIntfId).second : corrupt_.erase(pwIntfId) != 0;
   if (changed) {
      notify(&NotifieeConst::onLocalConnectorInfo, pwIntfId);
   }
}

void Status::corruptionDetected(const std::string& what) const {
   ++corruptions_;
   lastCorruption_ = what;
}

}  // namespace Pseudowire
