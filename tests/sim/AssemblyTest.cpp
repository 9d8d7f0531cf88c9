// The machines' assembly: every missing table is named before anything is built, and the FIB FEC
// trio of the transit machine comes whole or not at all.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

#include <mplsfwd/sim/Agent.h>

namespace {

sim::AgentOptions machinesOff() {
   sim::AgentOptions o;
   o.decap = false;
   o.pseudowire = false;
   return o;
}

Fal::TransitTables transitTables(const sim::Agent& a) {
   Fal::TransitTables t;
   t.mplsStatus = a.mplsStatus();
   t.mplsRoutingInfo = a.routingInfo();
   t.transitLfib = a.lfib();
   t.falL3Status = a.l3Status();
   t.routingHwRouteStatus = a.ipRoutes();
   t.routeReactorConfig = a.routeReactorConfig();
   t.route6ReactorConfig = a.route6ReactorConfig();
   t.monitoredNhSm = a.monitoredNhSm();
   t.routingHwMplsStatus = a.hwMplsStatus();
   t.mplsHwConfig = a.hwConfig();
   t.mplsHwStatus = a.hwStatus();
   t.entityManager = Kor::make<Regdb::EntityManager>("entityManager");
   t.attrLogSm = a.attrLogSm();
   t.clock = a.clock();
   return t;
}

// Builds `build` and answers the message it threw, or "" when it built.
std::string thrown(const std::function<void()>& build) {
   try {
      build();
   } catch (const std::invalid_argument& e) {
      return e.what();
   }
   return "";
}

struct Missing {
   const char* name;
   std::function<void(Fal::TransitTables&)> clear;
};

TEST(Assembly, TransitNamesEachMissingTable) {
   sim::Agent agent(machinesOff());
   agent.stop();
   const Missing cases[] = {
       {"mplsStatus", [](auto& t) { t.mplsStatus = nullptr; }},
       {"mplsRoutingInfo", [](auto& t) { t.mplsRoutingInfo = nullptr; }},
       {"transitLfib", [](auto& t) { t.transitLfib = nullptr; }},
       {"falL3Status", [](auto& t) { t.falL3Status = nullptr; }},
       {"routingHwRouteStatus", [](auto& t) { t.routingHwRouteStatus = nullptr; }},
       {"routeReactorConfig", [](auto& t) { t.routeReactorConfig = nullptr; }},
       {"route6ReactorConfig", [](auto& t) { t.route6ReactorConfig = nullptr; }},
       {"monitoredNhSm", [](auto& t) { t.monitoredNhSm = nullptr; }},
       {"routingHwMplsStatus", [](auto& t) { t.routingHwMplsStatus = nullptr; }},
       {"mplsHwConfig", [](auto& t) { t.mplsHwConfig = nullptr; }},
       {"mplsHwStatus", [](auto& t) { t.mplsHwStatus = nullptr; }},
       {"entityManager", [](auto& t) { t.entityManager = nullptr; }},
       {"attrLogSm", [](auto& t) { t.attrLogSm = nullptr; }},
       {"clock", [](auto& t) { t.clock = nullptr; }},
   };
   for (const auto& c : cases) {
      auto t = transitTables(agent);
      c.clear(t);
      EXPECT_EQ(thrown([&] { Fal::TransitMachine m(t); }),
                std::string("transit machine: table '") + c.name + "' is missing");
   }
   EXPECT_EQ(thrown([&] { Fal::TransitMachine m(transitTables(agent)); }), "");
}

TEST(Assembly, TransitFecTablesComeTogether) {
   sim::Agent agent(machinesOff());
   agent.stop();
   auto t = transitTables(agent);
   t.hwFecIdRequest = agent.fecRequest();
   EXPECT_NE(thrown([&] { Fal::TransitMachine m(t); }).find("go together"), std::string::npos);
   t.hwFecIdResponse = agent.fecResponse();
   t.mplsSmHelper = agent.routeHelper();
   Fal::TransitMachine m(t);
   EXPECT_EQ(m.sm()->hwFecIdRequest(), agent.fecRequest());
   EXPECT_EQ(m.sm()->mplsSmHelper(), agent.routeHelper());
}

TEST(Assembly, DecapAndPseudowireNameMissingTables) {
   sim::Agent agent(machinesOff());
   Fal::DecapTables d;
   d.mplsDecapHelper = agent.decapHelper();
   d.lfibStatus = agent.lfib();
   d.lfibHwStatus = agent.lfibHwStatus();
   EXPECT_EQ(thrown([&] { Fal::DecapMachine m(d); }),
             "decap machine: table 'scheduler' is missing");
   Fal::PseudowireTables p;
   p.mplsStatus = agent.mplsStatus();
   p.pwStatus = agent.pwStatus();
   p.mplsIpStatus = agent.mplsIpStatus();
   p.decapInfoTable = agent.decapInfoTable();
   p.dstPortToHwFecIdRequest = agent.pwFecRequest();
   p.dstPortToHwFecIdResponse = agent.pwFecResponse();
   EXPECT_EQ(thrown([&] { Fal::PseudowireMachine m(p); }),
             "pseudowire machine: table 'timerWheel' is missing");
}

}  // namespace
