#include "MplsLabel.h"

#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>
#include <mplsfwd/kor/TextForm.h>

namespace Wire {

MplsLabel::MplsLabel(std::uint32_t value) : value_(value) {
   if (value > kNoLabel) {
      throw Kor::RangeError("MplsLabel::value < MplsLabel::min or > MplsLabel::max not allowed");
   }
}

std::size_t MplsLabel::hash() const {
   return static_cast<std::size_t>(Kor::mixInt(value_));
}

std::string MplsLabel::stringValue() const {
   return std::to_string(value_);
}

MplsLabel MplsLabel::parse(std::string_view text) {
   return MplsLabel(static_cast<std::uint32_t>(Kor::parseUnsigned(text, kNoLabel, "MplsLabel")));
}

std::ostream& operator<<(std::ostream& os, const MplsLabel& label) {
   return os << label.value();
}

}  // namespace Wire
