#pragma once

#include <cstdint>
#include <memory>

#include <mplsfwd/Fal/FecIdToHwFecIdRequest.h>
#include <mplsfwd/Fal/MplsSmHelper.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/Task.h>

namespace TestSupport {

// The platform's FEC id service for tests: it watches the request table and, one loop step later
// as a platform would, answers every request with a hardware FEC id of its own numbering, and
// withdraws the answer when the request goes. Answering can be paused to look at the state
// before the answers arrive.
class FakeFecIdService {
 public:
   FakeFecIdService(Kor::Ptr<Loom::EventLoop> loop, Kor::Ptr<Fal::FecIdToHwFecIdRequest> request,
                    Kor::Ptr<Fal::FecIdToHwFecIdResponse> response);
   ~FakeFecIdService();

   // Paused: requests pile up unanswered until answering is resumed.
   void answerIs(bool answer);
   std::uint64_t answers() const { return answers_; }
   Fal::HwFecId hwFecId(Memtab::Fib::FecId fecId) const {
      return response_->hwFecId(fecId).hwFecId();
   }

 private:
   class RequestReactor;
   void run();

   Kor::Ptr<Fal::FecIdToHwFecIdRequest> request_;
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> response_;
   std::unique_ptr<RequestReactor> reactor_;
   Kor::Ptr<Loom::Task> task_;
   Kor::HashSet<Memtab::Fib::FecId> dirty_;
   bool answer_ = true;
   Fal::HwFecId nextHwId_ = 0x1000;
   std::uint64_t answers_ = 0;
};

// The platform's route helper for routes forwarded into FECs: an in-memory table of the routes
// it was asked to program, each with the FEC and label action it was given, and refusals on
// demand.
class FakeMplsSmHelper : public FalHelper::MplsSmHelper {
 public:
   struct Entry {
      std::uint64_t fecId = 0;
      Wire::MplsLabelAction labelAction = Wire::MplsLabelAction::none;
      Mpls::PayloadType payloadType = Mpls::payloadTypeAutoDecide_;
      Wire::AddressingMethod addressingMethod = Wire::AddressingMethod::unknown;
   };

   FakeMplsSmHelper() : FalHelper::MplsSmHelper("fakeMplsSmHelper") {}

   Mpls::LfibHwProgrammingReturnCode updateRoute(const Mpls::RouteKey& routeKey,
                                                 Wire::MplsLabelAction labelAction,
                                                 Mpls::PayloadType payloadType,
                                                 const std::uint64_t& fecId,
                                                 Wire::AddressingMethod method) override;
   void deleteRoute(const Mpls::RouteKey& routeKey) override;
   std::vector<Mpls::RouteKey> routeKeys() const override {
      std::vector<Mpls::RouteKey> keys;
      for (const auto& [key, entry] : route_) {
         keys.push_back(key);
      }
      return keys;
   }

   // The next n updates fail with `code`.
   void refuseNextIs(std::size_t n, Mpls::LfibHwProgrammingReturnCode code =
                                        Mpls::lfibHwProgrammingResourceFull_) {
      refuse_ = n;
      refuseCode_ = code;
   }
   bool has(const Mpls::RouteKey& k) const { return route_.contains(k); }
   Entry entry(const Mpls::RouteKey& k) const { return Kor::mapValueOr(route_, k); }
   std::size_t routes() const { return route_.size(); }
   const Kor::HashMap<Mpls::RouteKey, Entry>& routeMap() const { return route_; }
   std::uint64_t updates() const { return updates_; }
   std::uint64_t refusals() const { return refusals_; }
   std::uint64_t deletes() const { return deletes_; }

 private:
   Kor::HashMap<Mpls::RouteKey, Entry> route_;
   std::size_t refuse_ = 0;
   Mpls::LfibHwProgrammingReturnCode refuseCode_ = Mpls::lfibHwProgrammingResourceFull_;
   std::uint64_t updates_ = 0;
   std::uint64_t refusals_ = 0;
   std::uint64_t deletes_ = 0;
};

}  // namespace TestSupport
