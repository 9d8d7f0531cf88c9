#include "FecIdService.h"

#include <algorithm>

namespace sim {

class FecIdService::RequestReactor : public Fal::FecIdToHwFecIdRequest::NotifieeConst {
 public:
   RequestReactor(Kor::Ptr<const Fal::FecIdToHwFecIdRequest> r, FecIdService& service, Pair& pair)
       : Fal::FecIdToHwFecIdRequest::NotifieeConst(std::move(r)), service_(service), pair_(pair) {}
   void onHwFecIdRequest(Memtab::Fib::FecId fecId) override {
      service_.requestChanged(pair_, fecId);
   }

 private:
   FecIdService& service_;
   Pair& pair_;
};

FecIdService::FecIdService(Kor::Ptr<Loom::EventLoop> loop) : loop_(std::move(loop)) {
   task_ = Kor::make<Loom::TimerTask>(loop_->scheduler(), "simFecIdService", 5, [this] { run(); });
}

FecIdService::~FecIdService() {
   task_->cancel();
   pairs_.clear();
}

void FecIdService::serve(Kor::Ptr<const Fal::FecIdToHwFecIdRequest> request,
                         Kor::Ptr<Fal::FecIdToHwFecIdResponse> response) {
   auto pair = std::make_unique<Pair>();
   pair->request = request;
   pair->response = std::move(response);
   pair->reactor = std::make_unique<RequestReactor>(request, *this, *pair);
   for (const auto& [fecId, r] : request->hwFecIdRequestMap()) {
      pair->dirty.insert(fecId);
   }
   // Answers without a request behind them are stale.
   for (const auto& [fecId, a] : pair->response->hwFecIdMap()) {
      pair->dirty.insert(fecId);
   }
   bool work = !pair->dirty.empty();
   pairs_.push_back(std::move(pair));
   if (work) {
      arm();
   }
}

void FecIdService::capacityIs(std::size_t n) {
   capacity_ = n;
   arm();
}

std::size_t FecIdService::waiting() const {
   std::size_t n = 0;
   for (const auto& p : pairs_) {
      n += p->waiting.size();
   }
   return n;
}

void FecIdService::requestChanged(Pair& pair, Memtab::Fib::FecId fecId) {
   pair.dirty.insert(fecId);
   arm();
}

void FecIdService::arm() {
   if (task_->pending()) {
      return;
   }
   if (answerDelay_ > 0) {
      task_->scheduleAfter(answerDelay_);
   } else {
      task_->schedule();
   }
}

Fal::HwFecId FecIdService::takeId() {
   ++inUse_;
   if (!freeIds_.empty()) {
      Fal::HwFecId id = freeIds_.back();
      freeIds_.pop_back();
      return id;
   }
   return nextId_++;
}

void FecIdService::freeId(Fal::HwFecId id) {
   --inUse_;
   freeIds_.push_back(id);
}

void FecIdService::run() {
   // Withdrawals first, so that the ids they free serve the new requests of the same run.
   for (auto& p : pairs_) {
      for (auto fecId : p->dirty) {
         bool requested = !(p->request->hwFecIdRequest(fecId) == Fal::HwFecIdRequest());
         if (requested) {
            continue;
         }
         std::erase(p->waiting, fecId);
         Fal::FecToHwFecId answer = p->response->hwFecId(fecId);
         if (!(answer == Fal::FecToHwFecId())) {
            ++withdrawals_;
            p->response->hwFecIdDel(fecId);
            freeId(answer.hwFecId());
         }
      }
   }
   for (auto& p : pairs_) {
      for (auto fecId : p->dirty) {
         bool requested = !(p->request->hwFecIdRequest(fecId) == Fal::HwFecIdRequest());
         bool answered = !(p->response->hwFecId(fecId) == Fal::FecToHwFecId());
         if (requested && !answered &&
             std::find(p->waiting.begin(), p->waiting.end(), fecId) == p->waiting.end()) {
            p->waiting.push_back(fecId);
         }
      }
      p->dirty.clear();
   }
   for (auto& p : pairs_) {
      auto it = p->waiting.begin();
      for (; it != p->waiting.end() && inUse_ < capacity_; ++it) {
         ++answers_;
         p->response->hwFecIdIs(Fal::FecToHwFecId(*it, takeId()));
      }
      p->waiting.erase(p->waiting.begin(), it);
   }
}

}  // namespace sim
