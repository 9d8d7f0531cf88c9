#pragma once

#include <cstdint>
#include <ostream>
#include <string>

namespace Fal {

// The kind of vias an L3 adjacency holds, derived from its via cache.
enum L3AdjLFibAdjType : std::uint8_t {
   adjTypeUnknown_ = 0,
   adjTypeRegular_ = 1,
   adjTypeDynamicTunnel_ = 2,
   adjTypeNexthopGroup_ = 3,
};

std::string stringValue(L3AdjLFibAdjType t);
inline std::ostream& operator<<(std::ostream& os, L3AdjLFibAdjType t) {
   return os << stringValue(t);
}

}  // namespace Fal
