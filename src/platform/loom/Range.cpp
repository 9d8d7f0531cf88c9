#include "Range.h"

#include <mplsfwd/kor/Hash.h>

namespace Loom {

std::size_t Range::hash() const {
   return static_cast<std::size_t>(
       Kor::hashCombine(static_cast<std::size_t>(Kor::mixInt(first_)), last_));
}

std::string Range::stringValue() const {
   return "Range(" + std::to_string(first_) + ".." + std::to_string(last_) + ")";
}

std::ostream& operator<<(std::ostream& os, const Range& r) {
   return os << r.stringValue();
}

}  // namespace Loom
