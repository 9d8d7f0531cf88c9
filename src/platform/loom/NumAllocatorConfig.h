#pragma once

#include <mplsfwd/kor/Entity.h>

#include "Range.h"

namespace Loom {

// What a NumAllocator hands out: the numbers of `range`, each released number held back for
// `expiryTime` seconds before it may be handed out again (so that whoever still knows the old
// meaning of a number has time to forget it). Fixed at construction; an allocator reads it once.
class NumAllocatorConfig : public Kor::Entity {
 public:
   NumAllocatorConfig(Range range, double expiryTime, Kor::Name name = "numAllocatorConfig")
       : Kor::Entity(std::move(name)), range_(range), expiryTime_(expiryTime) {}

   const Range& range() const { return range_; }
   double expiryTime() const { return expiryTime_; }

 private:
   Range range_;
   double expiryTime_;
};

}  // namespace Loom
