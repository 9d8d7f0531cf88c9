#include "MplsHwConfig.h"
#include "MplsHwStatus.h"

namespace Fal {

Kor::Ptr<MplsHwConfig> mplsHwConfigFactory(const Kor::Name& name) {
   return Kor::make<MplsHwConfig>(name);
}

Kor::Ptr<MplsHwStatus> mplsHwStatusFactory(const Kor::Name& name) {
   return Kor::make<MplsHwStatus>(name);
}

}  // namespace Fal
