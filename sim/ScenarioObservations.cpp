#include "ScenarioObservations.h"

#include <mplsfwd/decap/DecapExplanation.h>
#include <mplsfwd/pseudowire/PwExplanation.h>
#include <mplsfwd/transit/RouteExplanation.h>

#include "Explain.h"
#include "Runner.h"
#include "Scenario.h"

namespace sim {

namespace {

// Every helper call a scenario can count, and how to read its count.
const std::vector<std::pair<const char*, std::function<std::uint64_t(const Agent&)>>>& calls() {
   auto decap = [](const char* what) {
      return [what](const Agent& a) { return a.decapHelper()->calls(what); };
   };
   static const std::vector<std::pair<const char*, std::function<std::uint64_t(const Agent&)>>>
       table = {
           {"decapCreateVrf", decap("create vrf")},
           {"decapCreateVlan", decap("create vlan")},
           {"decapCreateDot1q", decap("create dot1q")},
           {"decapDeleteVrf", decap("delete vrf")},
           {"decapDeleteVlan", decap("delete vlan")},
           {"decapDeleteDot1q", decap("delete dot1q")},
           {"routeUpdate", [](const Agent& a) { return a.routeHelper()->updates(); }},
           {"routeDelete", [](const Agent& a) { return a.routeHelper()->deletes(); }},
           // Requests standing now in both FEC request tables; answers given so far.
           {"fecIdRequest",
            [](const Agent& a) {
               return a.fecRequest()->hwFecIdRequestMap().size() +
                      a.pwFecRequest()->hwFecIdRequestMap().size();
            }},
           {"fecIdAnswer", [](const Agent& a) { return a.fecIdService().answers(); }},
       };
   return table;
}

}  // namespace

ObservationAction expectExplainStep(const Fields& f) {
   Mpls::RouteKey key(f.label("label"));
   std::string cause = f.string("cause");
   if (!Fal::parseTransitCause(cause) && !Fal::parseDecapCause(cause) &&
       !Fal::parsePwCause(cause)) {
      f.fail("cause", "a transit, decap or pseudowire cause (see docs/scenario-format.md)",
             f.get("cause"));
   }
   return [=](Runner& r) {
      std::string found = blockingCause(r.agent(), key);
      r.check(found == cause, "explain label " + std::to_string(key.topLabel().value()), cause,
              found.empty() ? "no answer" : found);
   };
}

ObservationAction expectHelperCallsStep(const Fields& f) {
   std::string call = f.string("call");
   auto count = f.integer("count", 0, UINT64_MAX);
   for (const auto& [name, read] : calls()) {
      if (call == name) {
         auto reader = read;
         return [=](Runner& r) {
            std::uint64_t n = reader(r.agent());
            r.check(n == count, call + " calls", std::to_string(count), std::to_string(n));
         };
      }
   }
   std::string names;
   for (const auto& [name, read] : calls()) {
      names += (names.empty() ? "" : ", ") + std::string(name);
   }
   f.fail("call", "one of " + names, f.get("call"));
}

ObservationAction expectDecapMismatchedDeletesStep(const Fields& f) {
   auto count = f.integer("count", 0, UINT64_MAX);
   return [=](Runner& r) {
      std::uint64_t n = r.agent().decapHelper()->mismatchedDeletes();
      r.check(n == count, "mismatched decap deletes", std::to_string(count), std::to_string(n));
   };
}

// A FEC of a request table holds a via with the given fields (the others are not compared).
ObservationAction expectFecContentsStep(const Fields& f) {
   bool pw = f.optString("table").value_or("transit") == "pseudowire";
   if (f.has("table") && !pw && *f.optString("table") != "transit") {
      f.fail("table", "transit or pseudowire", f.get("table"));
   }
   auto nextHop = f.has("nextHop") ? std::optional<Wire::IpGenAddr>(f.ip("nextHop")) : std::nullopt;
   auto intf = f.optIntf("interface");
   std::optional<Wire::MplsLabelOperation> labels;
   if (f.has("labels")) {
      labels.emplace();
      for (auto l : f.labels("labels")) {
         labels->push(l);
      }
   }
   auto action = f.optString("action");
   if (action) {
      try {
         (void)Wire::parseMplsLabelAction(*action);
      } catch (const std::exception&) {
         f.fail("action", "a label action (swap, push, pop, ...)", f.get("action"));
      }
   }
   auto vlan = f.optInteger("internalVlan", 0, 4095);
   bool present = f.optBoolean("present", true);
   return [=](Runner& r) {
      const auto& table = pw ? *r.agent().pwFecRequest() : *r.agent().fecRequest();
      bool found = false;
      for (const auto& [id, fec] : table.fecMap()) {
         for (std::size_t i = 0; i < fec.vias() && !found; ++i) {
            Memtab::Fib::Via v = fec.via(Memtab::Fib::ViaIndex(static_cast<std::uint32_t>(i)));
            found = (!nextHop || v.nextHop() == *nextHop) && (!intf || v.intf() == *intf) &&
                    (!labels || v.labelStack() == *labels) &&
                    (!action || Wire::stringValue(v.labelAction()) == *action) &&
                    (!vlan || v.vlanId().value() == *vlan);
         }
      }
      r.check(found == present, "FEC via", present ? "present" : "absent",
              found ? "present" : "absent");
   };
}

// The writable MPLS status: the routes the pseudowire machine copied for the platform.
ObservationAction expectMplsIpStatusStep(const Fields& f) {
   Mpls::RouteKey key(f.label("label"));
   bool present = f.optBoolean("present", true);
   return [=](Runner& r) {
      bool has = r.agent().mplsIpStatus()->lfibRouteHas(key);
      r.check(has == present, "route in the writable MPLS status", present ? "present" : "absent",
              has ? "present" : "absent");
   };
}

}  // namespace sim
