#include "L3AdjLFibAdjType.h"

namespace Fal {

std::string stringValue(L3AdjLFibAdjType t) {
   switch (t) {
      case adjTypeUnknown_:
         return "adjTypeUnknown";
      case adjTypeRegular_:
         return "adjTypeRegular";
      case adjTypeDynamicTunnel_:
         return "adjTypeDynamicTunnel";
      case adjTypeNexthopGroup_:
         return "adjTypeNexthopGroup";
   }
   return "L3AdjLFibAdjType(" + std::to_string(static_cast<unsigned>(t)) + ")";
}

}  // namespace Fal
