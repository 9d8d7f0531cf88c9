// Scenario parsing and the runner: bad input is refused before anything runs, with the place and
// the expectation named; expectations that fail are reported with their step and the run goes on.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include <mplsfwd/log/TraceConfig.h>
#include <mplsfwd/sim/Report.h>
#include <mplsfwd/sim/RunCommand.h>
#include <mplsfwd/sim/Runner.h>
#include <mplsfwd/sim/Scenario.h>

namespace {

std::string steps(const std::string& body) {
   return "{\"steps\": [" + body + "]}";
}

// The ScenarioError text of parsing `text`, or "" when it parses.
std::string parseError(const std::string& text) {
   try {
      sim::Scenario::parse(text, "t.json");
   } catch (const sim::ScenarioError& e) {
      return e.what();
   }
   return "";
}

// Bad JSON, unknown operations and fields, wrong types and the label and VLAN ranges are the
// command line's cases (tests/tools).
TEST(SimScenario, BadInputNamesTheStepTheFieldAndWhatWasExpected) {
   struct Case {
      std::string text;
      std::string message;
   };
   const std::vector<Case> cases = {
       {steps(R"({"seconds": 1})"), "t.json: step 1: field 'op': expected one of"},
       {steps(R"({"op": "route", "label": "100", "viaSet": 1})"),
        "t.json: step 1 (route): field 'label': expected a label 0..1048575, found \"100\""},
       {steps(R"({"op": "route", "label": -1, "viaSet": 1})"),
        "field 'label': expected a label 0..1048575, found -1"},
       {steps(R"({"op": "mplsVia", "index": 1, "nextHop": "10.0.0"})"),
        "field 'nextHop': expected an IPv4 or IPv6 address, found \"10.0.0\""},
       {steps(
            R"({"op": "neighbor", "address": "10.0.0.1", "interface": "Ether1", "mac": "00:00:00:00:00:01", "vlan": 1})"),
        "field 'interface': expected an interface name"},
       {steps(
            R"({"op": "neighbor", "address": "10.0.0.1", "interface": "Ethernet1", "mac": "00:00:00:00:01", "vlan": 1})"),
        "field 'mac': expected a MAC address"},
       {steps(R"({"op": "ipRoute", "prefix": "10.0.0.0/33", "interface": "Ethernet1"})"),
        "field 'prefix': expected an IP prefix"},
       {steps(R"({"op": "route", "label": 100, "delete": true, "viaSet": 1})"),
        "t.json: step 1 (route): field 'viaSet': not used when deleting"},
       {steps(R"({"op": "route", "label": 100})"), "field 'viaSet' or 'pwAdjacency'"},
       {steps(
            R"({"op": "expectRoute", "label": 100, "state": "programmed", "reason": "RouteFull"})"),
        "field 'reason': expected a reason only with state \"unprogrammed\""},
       {steps(R"({"op": "expectRoute", "label": 100, "state": "gone"})"),
        "field 'state': expected one of programmed, unprogrammed, pending, absent"},
       {steps(R"({"op": "expectTrace", "text": "x"})"), "set config.trace or config.fastLog"},
       {steps(R"({"op": "refuse", "target": "decap", "count": 1, "reason": "RouteFull"})"),
        "field 'reason': expected no reason for the helpers' targets"},
       {steps(R"({"op": "dot1qColl", "index": 1, "tags": {"5000": 10}})"), "field 'tags'"},
       {R"({"config": {"capacity": {"routes": -3}}, "steps": []})",
        "t.json: config.capacity: field 'routes': expected a count"},
       {R"({"config": {"trace": "MplsSm/12"}, "steps": []})", "t.json: config: field 'trace'"},
       {R"({"config": {"retry": 3}, "steps": []})", "t.json: config: field 'retry': unknown field"},
       {R"({"name": "x"})", "t.json: field 'steps': expected an array of steps, found nothing"},
   };
   for (const auto& c : cases) {
      std::string error = parseError(c.text);
      EXPECT_NE(error.find(c.message), std::string::npos)
          << "input: " << c.text << "\nerror: " << error << "\nwanted: " << c.message;
   }
}

TEST(SimScenario, ABadLastStepKeepsEveryEarlierStepFromRunning) {
   auto file = std::filesystem::temp_directory_path() / "mplsfwd-sim-bad-last.json";
   std::ofstream(file) << steps(
       R"({"op": "neighbor", "address": "10.0.0.2", "interface": "Ethernet1", "mac": "00:1c:73:00:00:02", "vlan": 10},
      {"op": "advance", "seconds": 1}, {"op": "route", "label": 2000000, "viaSet": 1})");
   std::ostringstream out, err;
   EXPECT_EQ(sim::runScenarioCommand(file.string(), false, out, err), sim::exitBadScenario);
   EXPECT_EQ(out.str(), "") << "no report: nothing ran";
   EXPECT_NE(err.str().find("step 3 (route): field 'label'"), std::string::npos) << err.str();
   std::filesystem::remove(file);
}

TEST(SimRunner, FailedExpectationsAreReportedWithTheirStepsAndTheRunGoesOn) {
   auto scenario = sim::Scenario::parse(steps(R"(
      {"op": "neighbor", "address": "10.0.0.2", "interface": "Ethernet1", "mac": "00:1c:73:00:00:02", "vlan": 10},
      {"op": "mplsVia", "index": 1, "nextHop": "10.0.0.2", "interface": "Ethernet1", "labels": [2000]},
      {"op": "viaSet", "viaType": "mplsIp", "index": 1, "vias": [1]},
      {"op": "route", "label": 100, "viaSet": 1},
      {"op": "expectRoute", "label": 100, "state": "programmed"},
      {"op": "runUntilIdle"},
      {"op": "expectRoute", "label": 100, "state": "programmed", "adjacency": {"vias": [{"mac": "00:1c:73:00:00:09"}]}},
      {"op": "expectLog", "name": "ROUTING_MPLS_RESOURCE_FULL", "count": 0})"),
                                        "t.json");
   sim::Runner runner(scenario);
   runner.run();
   ASSERT_EQ(runner.failures().size(), 2u);
   EXPECT_EQ(runner.failures()[0].step, 5u);
   EXPECT_EQ(runner.failures()[0].expected, "programmed");
   EXPECT_EQ(runner.failures()[0].found, "absent (platformRoutingDisabled)")
       << "an absent route names what holds it back";
   EXPECT_EQ(runner.failures()[1].step, 7u);
   EXPECT_EQ(runner.failures()[1].what, "adjacency vias");
   EXPECT_NE(runner.failures()[1].found.find("00:1c:73:00:00:02"), std::string::npos);
   EXPECT_EQ(runner.expectations(), 3u);

   sim::Report report(runner, sim::snapshot(runner.agent()));
   EXPECT_FALSE(report.passed());
   auto json = report.json();
   EXPECT_EQ(json["expectations"]["failed"], 2);
   ASSERT_EQ(json["routes"].size(), 1u);
   EXPECT_EQ(json["routes"][0]["state"], "programmed");
   EXPECT_EQ(json["routes"][0]["vias"][0]["mac"], "00:1c:73:00:00:02");
   std::ostringstream text;
   report.writeText(text);
   EXPECT_NE(text.str().find("FAIL: 1 transit routes (1 programmed"), std::string::npos)
       << text.str();
}

TEST(SimRunner, TracesAreKeptForExpectationsAndTheProcessSettingsAreRestored) {
   auto scenario = sim::Scenario::parse(R"({"config": {"trace": "MplsSm/1"}, "steps": [
      {"op": "runUntilIdle"},
      {"op": "expectTrace", "text": "platform enabled mplsRouting in vrf"},
      {"op": "expectTrace", "text": "no such decision", "seen": false}]})",
                                        "t.json");
   {
      sim::Runner runner(scenario);
      runner.run();
      EXPECT_TRUE(runner.failures().empty());
      EXPECT_GT(runner.traceLines(), 0u);
   }
   EXPECT_EQ(Log::TraceConfig::enabledMask("MplsSm"), 0u) << "back to the environment's setting";
}

// Every operation is documented with an example, and every example in the documentation parses.
TEST(SimScenario, TheDocumentedExamplesParseAndCoverEveryOperation) {
   std::ifstream in(std::string(MPLSFWD_SOURCE_DIR) + "/docs/scenario-format.md");
   ASSERT_TRUE(in) << "docs/scenario-format.md";
   std::stringstream ss;
   ss << in.rdbuf();
   std::string doc = ss.str();
   // Plain string search: the fenced blocks, and the first operation name in each.
   const std::string open = "```json\n";
   std::set<std::string> documented;
   std::size_t blocks = 0;
   for (std::size_t at = doc.find(open); at != std::string::npos; at = doc.find(open, at)) {
      std::size_t begin = at + open.size();
      std::size_t close = doc.find("```", begin);
      ASSERT_NE(close, std::string::npos);
      std::string body = doc.substr(begin, close - begin);
      at = close + 3;
      ++blocks;
      // A lone step runs with the in-memory trace ring on, which expectTrace needs.
      std::string text = body.find("\"steps\"") != std::string::npos
                             ? body
                             : "{\"config\": {\"fastLog\": true}, \"steps\": [" + body + "]}";
      std::string error = parseError(text);
      EXPECT_EQ(error, "") << body;
      const std::string opKey = "\"op\": \"";
      std::size_t op = body.find(opKey);
      if (op != std::string::npos) {
         std::size_t nameBegin = op + opKey.size();
         documented.insert(body.substr(nameBegin, body.find('"', nameBegin) - nameBegin));
      }
   }
   EXPECT_GT(blocks, 40u);
   for (const auto& op : sim::scenarioOperations()) {
      EXPECT_TRUE(documented.contains(op)) << op << " has no example in the documentation";
   }
}

}  // namespace
