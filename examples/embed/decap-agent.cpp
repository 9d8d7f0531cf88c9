// A decap forwarding agent in one file: the decap state machine with its LFIB tracking, the
// platform's decap helper, and the agent's own loop. Two routes pop their label into VRF "red";
// the helper has room for one mapping, so the second is refused and listed in the LFIB hardware
// status with the helper's return code. docs/embedding.md walks through it.
#include <mplsfwd/decap.h>

#include <iostream>
#include <map>

namespace {

// The platform's decap helper: the label-to-VRF table of the chip. The machine calls it
// synchronously; a create answers a return code (0 programmed, 1 to 3 refused and retried), a
// delete carries the values of the create it undoes. The operations this platform does not
// support keep the base class's defaults, which abort unless FAL_NOOP_AGENT is set.
class VrfDecapHelper : public FalHelper::MplsDecapHelper {
 public:
   VrfDecapHelper(const Kor::Name& name, std::size_t room)
       : FalHelper::MplsDecapHelper(name), room_(room) {}

   Mpls::LfibHwProgrammingReturnCode createLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrf,
                                                             Mpls::PayloadType) override {
      if (!table_.contains(label) && table_.size() >= room_) {
         return Mpls::lfibHwProgrammingResourceFull_;
      }
      table_[label] = vrf;
      return Mpls::lfibHwProgrammingSuccess_;
   }
   void deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName, Mpls::PayloadType) override {
      table_.erase(label);
   }

   const std::map<Wire::MplsLabel, L3::VrfName>& table() const { return table_; }

 private:
   std::size_t room_;
   std::map<Wire::MplsLabel, L3::VrfName> table_;
};

}  // namespace

int main() {
   auto loop = Kor::make<Loom::EventLoop>(Loom::EventLoop::TimeMode::monotonic);
   Log::LogFacility::timeSourceIs(loop.ptr());

   auto lfib = Kor::make<Mpls::LfibStatus>("lfib");
   auto lfibHwStatus = Kor::make<Mpls::LfibHwStatus>("lfibHwStatus");
   auto helper = Kor::make<VrfDecapHelper>("vrfDecapHelper", /*room=*/1);

   Fal::DecapTables t;
   t.mplsDecapHelper = helper;
   t.lfibStatus = lfib;
   t.scheduler = loop->scheduler();
   t.lfibHwStatus = lfibHwStatus;
   Fal::DecapMachine decap(t);

   // The control plane: one IP-lookup via into VRF "red", one via set, two routes over it.
   Mpls::LfibViaKey via(Mpls::viaTypeIpLookup_, 1);
   lfib->ipLookupViaIs(Mpls::LfibIpLookupVia(via, L3::VrfName("red"), Mpls::payloadTypeIpv4_));
   Mpls::LfibViaSetKey viaSet(Mpls::viaTypeIpLookup_, 1);
   lfib->viaSetIs(Mpls::LfibViaSet(viaSet, {via}));
   const Mpls::RouteKey first(Wire::MplsLabel(500)), second(Wire::MplsLabel(501));
   lfib->lfibRouteIs(Mpls::LfibRoute(first, viaSet));
   lfib->lfibRouteIs(Mpls::LfibRoute(second, viaSet));

   // The machine's work runs from tasks: run until nothing is ready (the retry of the refused
   // route waits 5 s on a timer, which this agent does not wait for).
   loop->runUntilIdle();

   if (helper->table().size() != 1 || !lfibHwStatus->unprogrammedRouteHas(second)) {
      std::cerr << "decap-agent: expected one mapping and one refused route\n";
      return 1;
   }
   for (const auto& [label, vrf] : helper->table()) {
      std::cout << "programmed: label " << label << " -> VRF " << vrf << "\n";
   }
   std::cout << "refused:    " << lfibHwStatus->unprogrammedRoute(second) << "\n";
   return 0;
}
