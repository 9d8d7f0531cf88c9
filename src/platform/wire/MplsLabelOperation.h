#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>

#include "MplsLabel.h"

namespace Wire {

// The labels that a via pushes or swaps in: a small fixed stack. Position 0 is the outermost
// label (the top of the stack after the operation); positions 0 to stackSize()-1 are in use and
// every position from stackSize() on holds the no-label value, so two operations with the same
// labels are equal whatever was done to them before. An operation with no labels is valid (the
// empty stack of a pop or of a drop via).
class MplsLabelOperation {
 public:
   static constexpr std::size_t kMaxLabels = 8;
   using LabelStack = std::array<MplsLabel, kMaxLabels>;

   MplsLabelOperation() = default;
   // Throws Kor::RangeError for more than kMaxLabels labels or for the no-label value.
   MplsLabelOperation(std::initializer_list<MplsLabel> labels);

   std::uint8_t stackSize() const { return stackSize_; }
   const LabelStack& labelStack() const { return labelStack_; }
   // The label at a position, or the no-label value past the end of the stack.
   MplsLabel labelStack(std::size_t position) const;
   bool empty() const { return stackSize_ == 0; }

   // Adds a label below those already held. Throws Kor::RangeError when the stack is full or when
   // the label is the no-label value (it would be indistinguishable from an empty position).
   void push(MplsLabel label);
   void clear();

   bool operator==(const MplsLabelOperation& o) const;
   bool operator<(const MplsLabelOperation& o) const;
   std::size_t hash() const;

   // "[16, 17]", outermost first; "[]" when empty.
   std::string stringValue() const;
   // Reverse of stringValue(); throws Kor::ParseError (or Kor::RangeError for too many labels).
   static MplsLabelOperation parse(std::string_view text);

 private:
   LabelStack labelStack_{};
   std::uint8_t stackSize_ = 0;
};

std::ostream& operator<<(std::ostream& os, const MplsLabelOperation& op);

}  // namespace Wire
