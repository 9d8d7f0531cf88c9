#pragma once

#include <cstdint>
#include <deque>

#include <mplsfwd/kor/Clock.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Ptr.h>

#include "NumAllocatorConfig.h"
#include "NumAllocatorStatus.h"
#include "Range.h"

namespace Loom {

// Hands out the numbers of a range (FEC indices, dot1q map ids) and takes them back. A released
// number is quarantined for the configured expiry time, measured on the clock's time source,
// before it can be handed out again.
//
// Memory is proportional to the numbers in use and in quarantine, never to the size of the range:
// numbers never used come from a high-water mark, and numbers whose quarantine has passed go to a
// free list. Expiry is the same for every number, so the quarantine is a FIFO and only its head
// needs checking. Reuse comes first: the free list, oldest release first, then the high-water
// mark. Allocation is amortised O(1), release O(1).
//
// The number with all 64 bits set is the invalid number: allocateNumber() answers it when the
// range is exhausted, and it is never handed out even when the range includes it. Releasing a
// number that is not allocated is the caller's programming error: it is refused (false) and
// changes nothing, for the caller to assert on.
class NumAllocator : public Kor::PtrInterface {
 public:
   static constexpr std::uint64_t invalidNumber() { return UINT64_MAX; }

   // A null status gets one of the allocator's own; a null clock reads time 0 (no quarantine
   // ever expires unless the expiry time is 0).
   NumAllocator(Kor::Ptr<const NumAllocatorConfig> config, Kor::Ptr<NumAllocatorStatus> status,
                Kor::Ptr<Kor::Clock> clock);

   const Kor::Ptr<const NumAllocatorConfig>& config() const { return config_; }
   const Kor::Ptr<NumAllocatorStatus>& status() const { return status_; }
   const Kor::Ptr<Kor::Clock>& clock() const { return clock_; }

   std::uint64_t allocateNumber();
   std::uint64_t getNumber() { return allocateNumber(); }
   bool releaseNumber(std::uint64_t number);
   bool isAllocated(std::uint64_t number) const { return allocated_.contains(number); }
   // Moves every number whose quarantine has passed to the free list.
   void expireQuarantine();

 private:
   struct Quarantined {
      std::uint64_t number;
      double releasedAt;
   };

   double time() const { return clock_ ? clock_->now() : 0.0; }
   void expireAt(double now);
   void statusUpdate();

   Kor::Ptr<const NumAllocatorConfig> config_;
   Kor::Ptr<NumAllocatorStatus> status_;
   Kor::Ptr<Kor::Clock> clock_;
   std::uint64_t first_;
   std::uint64_t last_;     // the range's last, kept below the invalid number
   std::uint64_t nextNew_;  // the next never-used number; above last_ once they are all used
   bool empty_;
   double expiryTime_;
   Kor::HashSet<std::uint64_t> allocated_;
   std::deque<Quarantined> quarantine_;
   std::deque<std::uint64_t> freeList_;
};

}  // namespace Loom
