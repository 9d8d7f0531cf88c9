// The explanation of a label reads the machines without changing them, names what holds a route
// back, and comes with the label's own trace lines; the timeline follows the hardware's counts.
#include <gtest/gtest.h>

#include <sstream>

#include <mplsfwd/log/FastLog.h>
#include <mplsfwd/sim/Explain.h>
#include <mplsfwd/sim/Report.h>
#include <mplsfwd/sim/RunCommand.h>
#include <mplsfwd/sim/Runner.h>
#include <mplsfwd/sim/Scenario.h>
#include <mplsfwd/sim/Timeline.h>

namespace {

std::string example(const char* name) {
   return std::string(MPLSFWD_SOURCE_DIR) + "/examples/" + name;
}

// Everything explaining could disturb: the hardware state, the trace streams, the armed timers.
std::string observable(const sim::Runner& runner) {
   const sim::Agent& a = runner.agent();
   auto vrf = a.mplsSm()->mplsState(L3::VrfName::defaultVrf());
   std::string queues = vrf ? std::to_string(vrf->routeKeyForReviewSet().size()) + "/" +
                                  std::to_string(vrf->routeKeyForPublishSet().size()) + "/" +
                                  std::to_string(vrf->l3AdjForReviewSet().size()) + "/" +
                                  std::to_string(vrf->routes())
                            : "none";
   return sim::toJson(sim::snapshot(a)).dump() + " queues " + queues + " decap " +
          std::to_string(a.decapSm()->routeViaTypeMap().size()) + " pw " +
          std::to_string(a.lFibSm()->labelToDecapInfos()) + " traces " +
          std::to_string(runner.timedLines().size()) + " fastlog " +
          std::to_string(Log::FastLog::instance().added()) + " wakeups " +
          std::to_string(a.loop()->armedWakeUps()) + " next " +
          std::to_string(a.loop()->nextWakeUp()) + " clock " +
          std::to_string(a.mplsSm()->clock()->timeMin());
}

TEST(SimExplain, AskingChangesNothingInAnyMachine) {
   for (const char* file : {"explain-transit.json", "explain-decap.json", "explain-pseudowire.json",
                            "explain-transit-fec.json"}) {
      SCOPED_TRACE(file);
      auto scenario = sim::Scenario::load(example(file));
      scenario.config.trace = "MplsSm,MplsDecapSm,LFibSm";
      scenario.config.fastLog = true;
      sim::Runner runner(scenario);
      runner.run();
      ASSERT_TRUE(runner.failures().empty()) << runner.failures().front().what;
      const std::string before = observable(runner);
      for (std::uint32_t label = 0; label < 1100; ++label) {
         Mpls::RouteKey key{Wire::MplsLabel(label)};
         (void)runner.agent().mplsSm()->explainRoute(key);
         (void)runner.agent().decapSm()->explainRoute(key);
         (void)runner.agent().lFibSm()->explainRoute(key);
         std::ostringstream words;
         sim::writeExplanation(words, runner.agent(), key);
      }
      EXPECT_EQ(observable(runner), before);
   }
}

TEST(SimExplain, TheAnswerComesWithTheFactsAndTheLabelsOwnTimedTraceLines) {
   std::ostringstream out;
   std::ostringstream err;
   ASSERT_EQ(
       sim::explainCommand(example("explain-transit.json"), 101, std::nullopt, false, out, err),
       sim::exitPassed)
       << err.str();
   const std::string text = out.str();
   for (const char* fact :
        {"Label 101: transit route, held back: no next hop of its via set is resolved",
         "cause: nextHopUnresolved", "via 0: push [3000] to 10.0.0.9 on Ethernet1: unresolved",
         "] MplsSm/"}) {
      EXPECT_NE(text.find(fact), std::string::npos) << fact << "\n" << text;
   }
   EXPECT_EQ(text.find("'topLabel': 100}"), std::string::npos) << "only label 101's lines";

   std::ostringstream never;
   EXPECT_EQ(sim::explainCommand(example("explain-transit.json"), 4242, 3, false, never, err),
             sim::exitPassed);
   EXPECT_NE(never.str().find("was never written"), std::string::npos) << never.str();
   EXPECT_EQ(sim::explainCommand(example("explain-transit.json"), 1048576, {}, false, never, err),
             sim::exitBadScenario);
}

TEST(SimExplain, TraceTextsNameALabelOnlyAsAWholeNumber) {
   struct Case {
      const char* text;
      std::uint32_t label;
      bool names;
   };
   for (const Case& c : std::initializer_list<Case>{
            {"prog routeKey Value('Mpls::RouteKey', ** {'topLabel': 100}) l2 adj 1", 100, true},
            {"prog routeKey Value('Mpls::RouteKey', ** {'topLabel': 1000}) l2 adj 1", 100, false},
            {"create 500/20 rc: 0", 500, true},
            {"create 1500/20 rc: 0", 500, false},
            {"handleLFibRoute: decapLabel:801: port pw", 801, true},
            {"add entry (0, 10.0.0.100, Ethernet1)", 100, false}}) {
      EXPECT_EQ(sim::textNamesLabel(c.text, c.label), c.names) << c.text;
   }
}

TEST(SimTimeline, RowsFollowEveryChangeAndEndAtTheFinalCounts) {
   auto scenario = sim::Scenario::load(example("explain-transit.json"));
   sim::Runner runner(scenario);
   sim::Timeline timeline(runner.agent());
   runner.run();
   timeline.sample();
   const auto& rows = timeline.rows();
   ASSERT_GT(rows.size(), 3u);
   for (std::size_t i = 1; i < rows.size(); ++i) {
      EXPECT_LE(rows[i - 1].time, rows[i].time);
      EXPECT_FALSE(rows[i - 1] == rows[i]) << "a row only when a count changed";
   }
   sim::State s = sim::snapshot(runner.agent());
   EXPECT_EQ(rows.back().programmed, s.routesIn(sim::RouteState::programmed));
   EXPECT_EQ(rows.back().unprogrammed, s.routesIn(sim::RouteState::unprogrammed));
   EXPECT_EQ(rows.back().pending, s.routesIn(sim::RouteState::pending));
   bool sawUnprogrammed = false;
   for (const auto& r : rows) {
      sawUnprogrammed |= r.unprogrammed > 0;
   }
   EXPECT_TRUE(sawUnprogrammed) << "the refused route shows up on the way";
}

}  // namespace
