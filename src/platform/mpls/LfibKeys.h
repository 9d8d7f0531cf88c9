#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>

#include <mplsfwd/kor/Hash.h>

#include "LfibTypes.h"

namespace Mpls {

// The key of a via set of the LFIB: its via type (all vias of a set are of that type), an index
// unique within the type and the source that published it. The default key (invalid type,
// index 0, unknown source) means "no via set"; a set without a backup carries it as its backup
// key. Ordered by type, index, source.
class LfibViaSetKey {
 public:
   LfibViaSetKey() = default;
   LfibViaSetKey(LfibViaType viaType, std::uint32_t index, LfibSource source = lfibSourceUnknown_)
       : viaType_(viaType), index_(index), source_(source) {}

   LfibViaType viaType() const { return viaType_; }
   std::uint32_t index() const { return index_; }
   LfibSource source() const { return source_; }

   bool operator==(const LfibViaSetKey&) const = default;
   bool operator<(const LfibViaSetKey& o) const;
   std::size_t hash() const;

   // "index 5 source static viaType viaTypeMplsIp": a trace writes "lFib viaSet " before it and
   // the set's " viaSetType " after it.
   std::string stringValue() const;

 private:
   LfibViaType viaType_ = viaTypeInvalid_;
   std::uint32_t index_ = 0;
   LfibSource source_ = lfibSourceUnknown_;
};

std::ostream& operator<<(std::ostream& os, const LfibViaSetKey& key);

// The key of one via in the LFIB's table of vias of its type. A via set names its vias by these
// keys. The default key names no via.
class LfibViaKey {
 public:
   LfibViaKey() = default;
   LfibViaKey(LfibViaType viaType, std::uint32_t index, LfibSource source = lfibSourceUnknown_)
       : viaType_(viaType), index_(index), source_(source) {}

   LfibViaType viaType() const { return viaType_; }
   std::uint32_t index() const { return index_; }
   LfibSource source() const { return source_; }

   bool operator==(const LfibViaKey&) const = default;
   bool operator<(const LfibViaKey& o) const;
   std::size_t hash() const;

   // "via viaTypeMplsIp index 5 source static".
   std::string stringValue() const;

 private:
   LfibViaType viaType_ = viaTypeInvalid_;
   std::uint32_t index_ = 0;
   LfibSource source_ = lfibSourceUnknown_;
};

std::ostream& operator<<(std::ostream& os, const LfibViaKey& key);

// The hash of the LFIB's own tables of vias and via sets, whose order no one sees: one mix of the
// key's fields packed into a word, where the keys' hash() mixes three times. Tables that are walked
// keep hash(), since their order is what traces and numbering follow.
struct LfibTableHash {
   static std::size_t mixed(LfibViaType viaType, std::uint32_t index, LfibSource source) {
      return static_cast<std::size_t>(
          Kor::mixInt((std::uint64_t(viaType) << 40) | (std::uint64_t(source) << 32) | index));
   }
   std::size_t operator()(const LfibViaKey& k) const noexcept {
      return mixed(k.viaType(), k.index(), k.source());
   }
   std::size_t operator()(const LfibViaSetKey& k) const noexcept {
      return mixed(k.viaType(), k.index(), k.source());
   }
};

// The key of a dot1q-tag-to-VLAN collection of the LFIB, which VLAN-aware EVPN vias name.
class LfibDot1qTagToVlanKey {
 public:
   LfibDot1qTagToVlanKey() = default;
   explicit LfibDot1qTagToVlanKey(std::uint32_t index) : index_(index) {}

   std::uint32_t index() const { return index_; }

   bool operator==(const LfibDot1qTagToVlanKey&) const = default;
   bool operator<(const LfibDot1qTagToVlanKey& o) const { return index_ < o.index_; }
   std::size_t hash() const;

   // The index in decimal.
   std::string stringValue() const;

 private:
   std::uint32_t index_ = 0;
};

std::ostream& operator<<(std::ostream& os, const LfibDot1qTagToVlanKey& key);

// The adjacency that an LFIB route forwards to: its kind and its index in the MPLS status's
// table of that kind (regular, external-FEC or pseudowire adjacencies).
class AdjacencyKey {
 public:
   AdjacencyKey() = default;
   AdjacencyKey(AdjacencyType adjType, std::uint64_t index)
       : adjType_(adjType),
         indexLow_(static_cast<std::uint32_t>(index)),
         indexHigh_(static_cast<std::uint32_t>(index >> 32)) {}

   AdjacencyType adjType() const { return adjType_; }
   std::uint64_t index() const { return (std::uint64_t(indexHigh_) << 32) | indexLow_; }

   bool operator==(const AdjacencyKey&) const = default;
   bool operator<(const AdjacencyKey& o) const;
   std::size_t hash() const;

   // "adjacencyTypePseudowire 4".
   std::string stringValue() const;

 private:
   // The index in two halves keeps the key 4-byte aligned: every LFIB route holds one, and an
   // 8-byte aligned key would pad the route by 4 bytes.
   AdjacencyType adjType_ = adjacencyTypeInvalid_;
   std::uint32_t indexLow_ = 0;
   std::uint32_t indexHigh_ = 0;
};

static_assert(sizeof(AdjacencyKey) == 12 && alignof(AdjacencyKey) == 4);

std::ostream& operator<<(std::ostream& os, const AdjacencyKey& key);

}  // namespace Mpls
