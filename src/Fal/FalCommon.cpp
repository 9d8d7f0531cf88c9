#include "FalCommon.h"

#include <mplsfwd/log/Assert.h>

namespace Fal {

void FalBaseHelper::falAssert(const Kor::String& message) const {
   Log::falAssertFail(message);
}

}  // namespace Fal
