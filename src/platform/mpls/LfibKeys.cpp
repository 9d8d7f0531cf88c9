#include "LfibKeys.h"

#include <ostream>
#include <tuple>
#include <utility>

#include <mplsfwd/kor/Hash.h>

namespace Mpls {

namespace {

std::size_t hashKey(std::uint64_t tag, LfibViaType viaType, std::uint32_t index,
                    LfibSource source) {
   std::size_t h = Kor::hashCombine(tag, viaType);
   h = Kor::hashCombine(h, index);
   return Kor::hashCombine(h, source);
}

}  // namespace

bool LfibViaSetKey::operator<(const LfibViaSetKey& o) const {
   return std::tie(viaType_, index_, source_) < std::tie(o.viaType_, o.index_, o.source_);
}

std::size_t LfibViaSetKey::hash() const {
   return hashKey(0x5e7, viaType_, index_, source_);
}

std::string LfibViaSetKey::stringValue() const {
   return "index " + std::to_string(index_) + " source " + Mpls::stringValue(source_) +
          " viaType " + Mpls::stringValue(viaType_);
}

std::ostream& operator<<(std::ostream& os, const LfibViaSetKey& key) {
   return os << key.stringValue();
}

bool LfibViaKey::operator<(const LfibViaKey& o) const {
   return std::tie(viaType_, index_, source_) < std::tie(o.viaType_, o.index_, o.source_);
}

std::size_t LfibViaKey::hash() const {
   return hashKey(0x71a, viaType_, index_, source_);
}

std::string LfibViaKey::stringValue() const {
   return "via " + Mpls::stringValue(viaType_) + " index " + std::to_string(index_) + " source " +
          Mpls::stringValue(source_);
}

std::ostream& operator<<(std::ostream& os, const LfibViaKey& key) {
   return os << key.stringValue();
}

std::size_t LfibDot1qTagToVlanKey::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(index_));
}

std::string LfibDot1qTagToVlanKey::stringValue() const {
   return std::to_string(index_);
}

std::ostream& operator<<(std::ostream& os, const LfibDot1qTagToVlanKey& key) {
   return os << key.stringValue();
}

bool AdjacencyKey::operator<(const AdjacencyKey& o) const {
   return std::pair(adjType_, index()) < std::pair(o.adjType_, o.index());
}

std::size_t AdjacencyKey::hash() const {
   return Kor::hashCombine(Kor::mixInt(adjType_), index());
}

std::string AdjacencyKey::stringValue() const {
   return Mpls::stringValue(adjType_) + " " + std::to_string(index());
}

std::ostream& operator<<(std::ostream& os, const AdjacencyKey& key) {
   return os << key.stringValue();
}

}  // namespace Mpls
