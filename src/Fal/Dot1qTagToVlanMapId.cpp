#include "Dot1qTagToVlanMapId.h"

#include <mplsfwd/kor/TextForm.h>

namespace Fal {

Dot1qTagToVlanMapId Dot1qTagToVlanMapId::parse(std::string_view text) {
   return Dot1qTagToVlanMapId(static_cast<std::uint32_t>(
       Kor::parseUnsigned(text, 0xFFFFFFFFu, "Fal::Dot1qTagToVlanMapId")));
}

}  // namespace Fal
