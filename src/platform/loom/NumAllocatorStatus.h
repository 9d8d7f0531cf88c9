#pragma once

#include <cstdint>

#include <mplsfwd/kor/Entity.h>

namespace Loom {

class NumAllocator;

// The counts of one NumAllocator, written only by it (reset when an allocator is built on it) and
// read by anyone. The quarantine counts are as of the allocator's last operation: numbers whose
// quarantine ran out since then move to the free list at the next allocation or release.
class NumAllocatorStatus : public Kor::Entity {
 public:
   explicit NumAllocatorStatus(Kor::Name name = "numAllocatorStatus")
       : Kor::Entity(std::move(name)) {}

   // Numbers handed out and not released.
   std::uint64_t allocated() const { return allocated_; }
   // Released numbers still held back.
   std::uint64_t quarantined() const { return quarantined_; }
   // Released numbers whose quarantine has passed, ready to be handed out again.
   std::uint64_t freeListSize() const { return freeListSize_; }
   // How many numbers of the range were ever handed out: the never-used numbers start at
   // range.first + highWaterMark.
   std::uint64_t highWaterMark() const { return highWaterMark_; }
   // Allocations refused because no number was available.
   std::uint64_t exhaustions() const { return exhaustions_; }

 private:
   friend class NumAllocator;

   std::uint64_t allocated_ = 0;
   std::uint64_t quarantined_ = 0;
   std::uint64_t freeListSize_ = 0;
   std::uint64_t highWaterMark_ = 0;
   std::uint64_t exhaustions_ = 0;
};

}  // namespace Loom
