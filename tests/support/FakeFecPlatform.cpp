#include "FakeFecPlatform.h"

namespace TestSupport {

class FakeFecIdService::RequestReactor : public Fal::FecIdToHwFecIdRequest::NotifieeConst {
 public:
   RequestReactor(Kor::Ptr<const Fal::FecIdToHwFecIdRequest> r, FakeFecIdService& service)
       : Fal::FecIdToHwFecIdRequest::NotifieeConst(std::move(r)), service_(service) {}
   void onHwFecIdRequest(Memtab::Fib::FecId fecId) override {
      service_.dirty_.insert(fecId);
      service_.task_->schedule();
   }

 private:
   FakeFecIdService& service_;
};

FakeFecIdService::FakeFecIdService(Kor::Ptr<Loom::EventLoop> loop,
                                   Kor::Ptr<Fal::FecIdToHwFecIdRequest> request,
                                   Kor::Ptr<Fal::FecIdToHwFecIdResponse> response)
    : request_(std::move(request)), response_(std::move(response)) {
   task_ = Kor::make<Loom::Task>(loop->scheduler(), "fakeFecIdService", 5, [this] { run(); });
   reactor_ = std::make_unique<RequestReactor>(request_, *this);
}

FakeFecIdService::~FakeFecIdService() {
   task_->unschedule();
}

void FakeFecIdService::answerIs(bool answer) {
   answer_ = answer;
   if (answer_) {
      task_->schedule();
   }
}

void FakeFecIdService::run() {
   if (!answer_) {
      return;
   }
   auto work = std::move(dirty_);
   dirty_.clear();
   for (const auto& fecId : work) {
      if (request_->hwFecIdRequest(fecId) == Fal::HwFecIdRequest()) {
         response_->hwFecIdDel(fecId);
         continue;
      }
      if (response_->hwFecId(fecId) == Fal::FecToHwFecId()) {
         ++answers_;
         response_->hwFecIdIs(Fal::FecToHwFecId(fecId, nextHwId_++));
      }
   }
}

Mpls::LfibHwProgrammingReturnCode FakeMplsSmHelper::updateRoute(const Mpls::RouteKey& routeKey,
                                                                Wire::MplsLabelAction labelAction,
                                                                Mpls::PayloadType payloadType,
                                                                const std::uint64_t& fecId,
                                                                Wire::AddressingMethod method) {
   ++updates_;
   if (refuse_ > 0) {
      --refuse_;
      ++refusals_;
      route_.erase(routeKey);
      return refuseCode_;
   }
   route_[routeKey] = Entry{fecId, labelAction, payloadType, method};
   return Mpls::lfibHwProgrammingSuccess_;
}

void FakeMplsSmHelper::deleteRoute(const Mpls::RouteKey& routeKey) {
   if (route_.erase(routeKey)) {
      ++deletes_;
   }
}

}  // namespace TestSupport
