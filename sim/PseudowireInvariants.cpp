#include "PseudowireInvariants.h"

#include <sstream>

#include "Agent.h"
#include "ViolationReport.h"

namespace sim {

namespace {

using Report = ViolationReport;

}  // namespace

PseudowireParts pseudowireParts(const Agent& agent) {
   PseudowireParts p;
   p.sm = agent.lFibSm();
   p.lfib = agent.mplsStatus();
   p.ipStatus = agent.mplsIpStatus();
   p.decap = agent.decapInfoTable();
   p.fecRequest = agent.pwFecRequest();
   p.fecResponse = agent.pwFecResponse();
   return p;
}

std::vector<std::string> pseudowireInvariantViolations(const PseudowireParts& parts) {
   Report r;
   const auto& sm = parts.sm;
   if (!sm) {
      return r.lines;
   }
   if (sm->numAllocatorStatus()->allocated() != sm->fecIdToDecapInfos()) {
      r.fail(sm->numAllocatorStatus()->allocated(), " FEC indices allocated for ",
             sm->fecIdToDecapInfos(), " decap FECs");
   }
   for (const auto& [fecId, info] : sm->fecIdToDecapInfoMap()) {
      if (fecId.adjType() != Memtab::Fib::AdjType::pwDecapAdj_) {
         r.fail("decap FEC ", fecId, " is not of the pseudowire decap kind");
      }
      if (!sm->numAllocator()->isAllocated(fecId.index())) {
         r.fail("decap FEC ", fecId, " has no allocated index");
      }
      if (!info) {
         r.fail("decap FEC ", fecId, " has no decap info");
      }
   }
   const auto& req = parts.fecRequest;
   if (req->hwFecIdRequestMap().size() != sm->dstPortFecRequesteds() ||
       req->fecMap().size() != sm->dstPortFecRequesteds()) {
      r.fail(req->hwFecIdRequestMap().size(), " FEC id requests and ", req->fecMap().size(),
             " FECs written for ", sm->dstPortFecRequesteds(), " requested labels");
   }
   for (const auto& [label, fecId] : sm->dstPortFecRequestedMap()) {
      const Wire::IntfId intf = sm->decapLabelToPwIntfId(label);
      if (!Wire::PseudowireIntfId::isVlanPseudowireIntfId(intf)) {
         r.fail("label ", label, " requests a FEC for ", intf, ", not a VLAN pseudowire");
      }
      if (!sm->labelToDecapInfo(label)) {
         r.fail("label ", label, " requests FEC ", fecId, " without decap info");
      }
      if (!(sm->fecIdToDecapInfo(fecId) == FalPw::PwDecapInfo(label, intf))) {
         r.fail("FEC ", fecId, " of label ", label, " decapsulates something else");
      }
      const auto fecs = sm->pwIntfIdToFecId(intf);
      if (!fecs || !fecs->fecId(fecId)) {
         r.fail("FEC ", fecId, " of label ", label, " is not recorded for ", intf);
      }
      if (req->fec(fecId).vias() != 1u) {
         r.fail("FEC ", fecId, " of label ", label, " is written with ", req->fec(fecId).vias(),
                " vias");
      }
      if (!(req->hwFecIdRequest(fecId) == Fal::HwFecIdRequest(fecId))) {
         r.fail("FEC ", fecId, " of label ", label, " is not requested");
      }
      const bool answered = parts.fecResponse->hwFecId(fecId) != Fal::FecToHwFecId();
      if (parts.decap->labelToPwDecapInfoHas(label) != answered) {
         r.fail("label ", label,
                answered ? " is not decapsulated though FEC " : " is decapsulated though FEC ",
                fecId, answered ? " is answered" : " is not answered");
      }
   }
   for (const auto& [label, info] : parts.decap->labelToPwDecapInfoMap()) {
      if (!(info.label() == label) || !sm->labelToDecapInfo(label) ||
          !(sm->decapLabelToPwIntfId(label) == info.pwIntfId())) {
         r.fail("decap record of label ", label, " has no decap state for ", info.pwIntfId());
      }
   }
   for (const auto& [key, route] : parts.ipStatus->lfibRouteMap()) {
      if (!(parts.lfib->lfibRoute(key) == route)) {
         r.fail("written-back route ", key, " is not the LFIB's");
      }
   }
   return r.lines;
}

}  // namespace sim
