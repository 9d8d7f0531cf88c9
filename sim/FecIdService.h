#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerTask.h>

namespace sim {

// The platform's hardware FEC id service. It watches one or more FEC request tables
// (Fal::FecIdToHwFecIdRequest) and answers each request in the paired response table
// (Fal::FecIdToHwFecIdResponse) with a hardware FEC id from a finite pool; when a request goes, its
// answer is withdrawn and the id returns to the pool. Requests that find the pool empty wait, in
// arrival order, until an id is freed or the capacity grows.
//
// Answers are never given inside the notification of the request: the service's task gives them
// one loop step later (or answerDelay seconds later), as a platform does; the state machines rely
// on that, since they look at the response table right after writing or withdrawing a request.
//
// Invariants: a response entry exists only for a request that exists (after the task ran); hardware
// ids in use are distinct and never exceed capacity; every served pair shares the one pool.
class FecIdService {
 public:
   static constexpr std::size_t unlimited() { return std::numeric_limits<std::size_t>::max(); }

   explicit FecIdService(Kor::Ptr<Loom::EventLoop> loop);
   ~FecIdService();
   FecIdService(const FecIdService&) = delete;
   FecIdService& operator=(const FecIdService&) = delete;

   // Serves one request table, answering in `response`. Requests already present are taken up.
   void serve(Kor::Ptr<const Fal::FecIdToHwFecIdRequest> request,
              Kor::Ptr<Fal::FecIdToHwFecIdResponse> response);

   std::size_t capacity() const { return capacity_; }
   void capacityIs(std::size_t n);
   double answerDelay() const { return answerDelay_; }
   void answerDelayIs(double seconds) { answerDelay_ = seconds < 0 ? 0 : seconds; }

   std::size_t inUse() const { return inUse_; }
   // Requests that wait for a free id.
   std::size_t waiting() const;
   bool busy() const { return task_->pending(); }
   std::uint64_t answers() const { return answers_; }
   std::uint64_t withdrawals() const { return withdrawals_; }

 private:
   class RequestReactor;
   struct Pair {
      Kor::Ptr<const Fal::FecIdToHwFecIdRequest> request;
      Kor::Ptr<Fal::FecIdToHwFecIdResponse> response;
      std::unique_ptr<RequestReactor> reactor;
      Kor::OrderedSet<Memtab::Fib::FecId> dirty;
      std::vector<Memtab::Fib::FecId> waiting;
   };

   void requestChanged(Pair& pair, Memtab::Fib::FecId fecId);
   void arm();
   void run();
   Fal::HwFecId takeId();
   void freeId(Fal::HwFecId id);

   Kor::Ptr<Loom::EventLoop> loop_;
   Kor::Ptr<Loom::TimerTask> task_;
   std::vector<std::unique_ptr<Pair>> pairs_;
   std::size_t capacity_ = unlimited();
   std::size_t inUse_ = 0;
   double answerDelay_ = 0.0;
   Fal::HwFecId nextId_ = 1;
   std::vector<Fal::HwFecId> freeIds_;
   std::uint64_t answers_ = 0;
   std::uint64_t withdrawals_ = 0;
};

}  // namespace sim
