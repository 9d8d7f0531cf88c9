#include "MplsLabelOperation.h"

#include <algorithm>
#include <ostream>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/Hash.h>

namespace Wire {

MplsLabelOperation::MplsLabelOperation(std::initializer_list<MplsLabel> labels) {
   for (MplsLabel label : labels) {
      push(label);
   }
}

MplsLabel MplsLabelOperation::labelStack(std::size_t position) const {
   return position < kMaxLabels ? labelStack_[position] : MplsLabel();
}

void MplsLabelOperation::push(MplsLabel label) {
   if (!label.isValid()) {
      throw Kor::RangeError("MplsLabelOperation: the no-label value cannot be pushed");
   }
   if (stackSize_ >= kMaxLabels) {
      throw Kor::RangeError("MplsLabelOperation::stackSize > MplsLabelOperation::max not allowed");
   }
   labelStack_[stackSize_++] = label;
}

void MplsLabelOperation::clear() {
   *this = MplsLabelOperation();
}

bool MplsLabelOperation::operator==(const MplsLabelOperation& o) const {
   return stackSize_ == o.stackSize_ && labelStack_ == o.labelStack_;
}

bool MplsLabelOperation::operator<(const MplsLabelOperation& o) const {
   // Lexicographic over the labels in use; a stack that is a prefix of another orders first.
   return std::lexicographical_compare(labelStack_.begin(), labelStack_.begin() + stackSize_,
                                       o.labelStack_.begin(), o.labelStack_.begin() + o.stackSize_);
}

std::size_t MplsLabelOperation::hash() const {
   std::size_t h = Kor::mixInt(stackSize_);
   for (std::size_t i = 0; i < stackSize_; ++i) {
      h = Kor::hashCombine(h, labelStack_[i].value());
   }
   return h;
}

std::string MplsLabelOperation::stringValue() const {
   std::string s = "[";
   for (std::size_t i = 0; i < stackSize_; ++i) {
      if (i) {
         s += ", ";
      }
      s += labelStack_[i].stringValue();
   }
   return s + "]";
}

MplsLabelOperation MplsLabelOperation::parse(std::string_view text) {
   auto fail = [&]() -> MplsLabelOperation {
      throw Kor::ParseError("cannot parse '" + std::string(text) + "' as MplsLabelOperation");
   };
   if (text.size() < 2 || text.front() != '[' || text.back() != ']') {
      return fail();
   }
   std::string_view body = text.substr(1, text.size() - 2);
   MplsLabelOperation op;
   if (body.empty()) {
      return op;
   }
   while (true) {
      std::size_t comma = body.find(',');
      std::string_view item = body.substr(0, comma);
      if (item.empty()) {
         return fail();
      }
      MplsLabel label = MplsLabel::parse(item);
      if (!label.isValid()) {
         return fail();
      }
      op.push(label);
      if (comma == std::string_view::npos) {
         break;
      }
      body = body.substr(comma + 1);
      if (body.empty() || body.front() != ' ') {
         return fail();
      }
      body.remove_prefix(1);
   }
   return op;
}

std::ostream& operator<<(std::ostream& os, const MplsLabelOperation& op) {
   return os << op.stringValue();
}

}  // namespace Wire
