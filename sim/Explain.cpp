#include "Explain.h"

#include <cctype>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <vector>

#include "RunCommand.h"
#include "Runner.h"
#include "Scenario.h"

#include <mplsfwd/kor/TextForm.h>

namespace sim {

namespace {

using Json = nlohmann::json;

std::string seconds(double t) {
   if (!std::isfinite(t)) {
      return "none scheduled";
   }
   std::ostringstream os;
   os << std::fixed << std::setprecision(6) << t << " s";
   return os.str();
}

std::string yesNo(bool b) {
   return b ? "yes" : "no";
}

bool isDecapType(Mpls::LfibViaType t) {
   return t >= Mpls::viaTypeIpLookup_ && t <= Mpls::viaTypeEvpnVlanAwareFlood_;
}

// ---- Transit.

std::string transitSentence(const Fal::TransitExplanation& e, const Agent& agent) {
   const std::string set =
       Kor::toText(e.viaSetKey.viaType()) + " via set " + std::to_string(e.viaSetKey.index());
   switch (e.cause) {
      case Fal::TransitCause::programmed:
         return "programmed";
      case Fal::TransitCause::notInLfib:
         return "not in the LFIB";
      case Fal::TransitCause::notTransit:
         return "not a transit route: its " + set + " is neither mplsIp nor externalFec";
      case Fal::TransitCause::vrfNameMissing:
         return "held back: VRF 0 has no name in the L3 status, so the platform's MPLS routing "
                "for it cannot be read";
      case Fal::TransitCause::mplsRoutingDisabled:
         return "held back: MPLS routing is disabled in the control plane";
      case Fal::TransitCause::platformRoutingDisabled:
         return "held back: the platform has not confirmed MPLS routing for the default VRF";
      case Fal::TransitCause::viaSetMissing:
         return "held back: its " + set + " is not in the LFIB";
      case Fal::TransitCause::viaSetRejected:
         return "held back: its " + set + " is rejected (" +
                std::string(Fal::viaSetRuleName(e.rule)) + ")";
      case Fal::TransitCause::pendingReview:
         return "waiting for the next review pass";
      case Fal::TransitCause::nextHopUnresolved:
         return "held back: no next hop of its via set is resolved";
      case Fal::TransitCause::defaultRouteNotAllowed:
         return "held back: its next hop resolves only through the default route, which "
                "nexthopResolutionAllowDefaultRoute does not allow";
      case Fal::TransitCause::l2AdjacencyRefused:
         return "the chip refused its L2 adjacency " + std::to_string(e.l2Adjacency);
      case Fal::TransitCause::hwFecIdPending:
         return "waiting for the platform's hardware FEC id of FEC " + std::to_string(e.fecId);
      case Fal::TransitCause::routeHelperRefused: {
         std::string rc;
         const auto& refused = agent.routeHelper()->refusedMap();
         if (auto it = refused.find(e.routeKey); it != refused.end()) {
            rc = " with return code " + std::to_string(static_cast<unsigned>(it->second));
         }
         return "the route helper refused it" + rc + "; next retry at " + seconds(e.nextRetry);
      }
      case Fal::TransitCause::routeRefused:
         return "the chip refused it (" + Fal::stringValue(e.reason) + "); next retry at " +
                seconds(e.nextRetry);
      case Fal::TransitCause::awaitingPlatform:
         return "written as version " + std::to_string(e.versionWritten) +
                "; the platform has not answered it yet";
   }
   return "unknown";
}

std::string viaText(const Fal::ViaExplanation& v) {
   std::ostringstream os;
   os << "via " << v.position << ": " << v.action << " " << v.labels << " to " << v.nextHop;
   if (!(v.interface == Wire::IntfId())) {
      os << " on " << v.interface;
   }
   os << ": ";
   switch (v.resolution) {
      case Fal::NextHopResolution::byNeighbour:
         os << "resolved through the neighbour table";
         break;
      case Fal::NextHopResolution::byRouteResolver:
         os << "resolved by the route resolver through gateway " << v.gateway;
         break;
      case Fal::NextHopResolution::unresolved:
         os << (v.interface == Wire::IntfId() ? "unresolved (no route, or no neighbour entry for "
                                                "its gateway)"
                                              : "unresolved (no neighbour entry)");
         break;
      case Fal::NextHopResolution::defaultRouteNotAllowed:
         os << "resolves only through the default route (gateway " << v.gateway << "), not allowed";
         break;
   }
   if (v.resolution == Fal::NextHopResolution::byNeighbour ||
       v.resolution == Fal::NextHopResolution::byRouteResolver) {
      os << ", " << v.mac << " vlan " << v.vlan << " " << v.l2Interface;
   }
   return os.str();
}

void writeTransit(std::ostream& os, const Fal::TransitExplanation& e, const Agent& agent) {
   os << "Label " << e.routeKey.topLabel() << ": transit route, " << transitSentence(e, agent)
      << "\n";
   os << "  cause: " << Fal::transitCauseName(e.cause) << "\n";
   os << "  LFIB: route " << (e.inLfib ? "present" : "absent");
   if (e.inLfib) {
      os << ", " << e.viaSetKey.viaType() << " via set " << e.viaSetKey.index() << " "
         << (e.viaSetPresent ? "present" : "missing");
      if (e.viaSetPresent) {
         os << ", "
            << (e.rule == Fal::ViaSetRule::none
                    ? std::string("sane")
                    : "rejected: " + std::string(Fal::viaSetRuleName(e.rule)));
      }
   }
   os << "\n";
   os << "  VRF default: named " << yesNo(e.vrfNamed) << ", MPLS routing in the control plane "
      << (e.controlPlaneRouting ? "on" : "off") << ", confirmed by the platform "
      << yesNo(e.platformRouting) << "\n";
   os << "  followed by the transit machine: " << yesNo(e.tracked)
      << ", pending review: " << yesNo(e.pendingReview) << "\n";
   if (e.l3Adjacency) {
      os << "  L3 adjacency " << e.l3Adjacency
         << (e.l3AdjacencyUnprogrammed ? " (unprogrammed)" : " (programmed)") << ", way "
         << (e.path.empty() ? "none yet" : e.path) << "\n";
   } else {
      os << "  L3 adjacency: none\n";
   }
   for (const auto& v : e.vias) {
      os << "  " << viaText(v) << "\n";
   }
   if (e.path == "fec") {
      os << "  FEC " << e.fecId << ": hardware FEC id "
         << (e.hwFecIdRequested ? "asked" : "not asked") << ", "
         << (e.hwFecId ? "answered " + std::to_string(e.hwFecId) : "not answered")
         << "; route helper " << (e.routeHelperRefused ? "refused it" : "holds it or was not asked")
         << "\n";
   } else if (e.l2Adjacency) {
      os << "  L2 adjacency " << e.l2Adjacency << ": taken by the chip "
         << yesNo(e.l2AdjacencyProgrammed) << (e.l2AdjacencyRefused ? ", refused" : "") << "\n";
   } else {
      os << "  L2 adjacency: none\n";
   }
   if (e.path != "fec") {
      os << "  hardware: " << (e.configured ? "configured" : "not configured");
      if (e.configured) {
         os << ", version written " << e.versionWritten << ", answered "
            << (e.versionAnswered ? std::to_string(e.versionAnswered) : std::string("none"));
      }
      os << "\n";
   }
   if (e.listedUnprogrammed) {
      os << "  listed unprogrammed: reason " << Fal::stringValue(e.reason) << ", next retry at "
         << seconds(e.nextRetry) << "\n";
   }
}

Json transitJson(const Fal::TransitExplanation& e) {
   Json vias = Json::array();
   for (const auto& v : e.vias) {
      vias.push_back(Json{{"position", v.position},
                          {"nextHop", v.nextHop.stringValue()},
                          {"interface", v.interface.stringValue()},
                          {"labels", v.labels},
                          {"action", v.action},
                          {"resolution", std::string(Fal::nextHopResolutionName(v.resolution))},
                          {"gateway", v.gateway.stringValue()},
                          {"mac", v.mac.stringValue()},
                          {"vlan", v.vlan},
                          {"l2Interface", v.l2Interface.stringValue()}});
   }
   return Json{{"family", "transit"},
               {"cause", std::string(Fal::transitCauseName(e.cause))},
               {"rule", std::string(Fal::viaSetRuleName(e.rule))},
               {"inLfib", e.inLfib},
               {"viaSetType", Kor::toText(e.viaSetKey.viaType())},
               {"viaSetIndex", e.viaSetKey.index()},
               {"viaSetPresent", e.viaSetPresent},
               {"vrfNamed", e.vrfNamed},
               {"controlPlaneRouting", e.controlPlaneRouting},
               {"platformRouting", e.platformRouting},
               {"tracked", e.tracked},
               {"pendingReview", e.pendingReview},
               {"l3Adjacency", e.l3Adjacency},
               {"l3AdjacencyUnprogrammed", e.l3AdjacencyUnprogrammed},
               {"path", e.path},
               {"vias", vias},
               {"l2Adjacency", e.l2Adjacency},
               {"l2AdjacencyProgrammed", e.l2AdjacencyProgrammed},
               {"l2AdjacencyRefused", e.l2AdjacencyRefused},
               {"fecId", e.fecId},
               {"hwFecIdRequested", e.hwFecIdRequested},
               {"hwFecId", e.hwFecId},
               {"routeHelperRefused", e.routeHelperRefused},
               {"configured", e.configured},
               {"versionWritten", e.versionWritten},
               {"versionAnswered", e.versionAnswered},
               {"listedUnprogrammed", e.listedUnprogrammed},
               {"reason", Fal::stringValue(e.reason)},
               {"nextRetry", std::isfinite(e.nextRetry) ? Json(e.nextRetry) : Json()}};
}

// ---- Decap.

bool helperHolds(const Agent& agent, Wire::MplsLabel label) {
   const DecapHelper& h = *agent.decapHelper();
   if (h.vrfMappingMap().contains(label) || h.vlanMappingMap().contains(label)) {
      return true;
   }
   for (const auto& [key, mapping] : h.dot1qMappingMap()) {
      if (key.first == label) {
         return true;
      }
   }
   return false;
}

std::string decapSentence(const Fal::DecapExplanation& e) {
   switch (e.cause) {
      case Fal::DecapCause::programmed:
         return "programmed";
      case Fal::DecapCause::notInLfib:
         return "not in the LFIB";
      case Fal::DecapCause::viaSetMissing:
         return "waiting for its via set";
      case Fal::DecapCause::viaMissing:
         return "waiting for its via";
      case Fal::DecapCause::notDecap:
         return "not a decap route";
      case Fal::DecapCause::skipped:
         return "skipped: EVPN ethernet segment vias are not programmed";
      case Fal::DecapCause::pendingBacklog:
         return "waiting in the route-key backlog";
      case Fal::DecapCause::helperRefused:
         return "the decap helper refused it with return code " + std::to_string(e.returnCode) +
                " (" + Kor::toText(static_cast<Mpls::LfibHwProgrammingReturnCode>(e.returnCode)) +
                "); next retry at " + seconds(e.nextRetry);
      case Fal::DecapCause::helperRefusedNotRetried:
         return "not programmed and not listed: the helper answered a code above 3, which is not "
                "retried until the route changes";
      case Fal::DecapCause::dot1qCollectionMissing:
         return "waiting for its dot1q collection";
      case Fal::DecapCause::dot1qTagsMissing:
         return "some dot1q tags are not programmed";
   }
   return "unknown";
}

void writeDecap(std::ostream& os, const Fal::DecapExplanation& e, const Agent& agent) {
   os << "Label " << e.routeKey.topLabel() << ": decap route, " << decapSentence(e) << "\n";
   os << "  cause: " << Fal::decapCauseName(e.cause) << "\n";
   os << "  LFIB: route " << (e.inLfib ? "present" : "absent") << ", via set "
      << (e.viaSetPresent ? "present" : "missing") << ", first via " << e.viaType << " "
      << (e.viaPresent ? "present" : "missing") << "\n";
   if (!e.mapping.empty()) {
      os << "  mapping asked for: " << e.mapping << "\n";
   }
   os << "  programmed in the machine: " << yesNo(e.programmed)
      << ", held by the helper: " << yesNo(helperHolds(agent, e.routeKey.topLabel()))
      << ", in the backlog: " << yesNo(e.inBacklog) << "\n";
   if (e.listedUnprogrammed) {
      os << "  listed unprogrammed: return code " << e.returnCode << ", next retry at "
         << seconds(e.nextRetry) << "\n";
   }
   if (e.viaType == Mpls::viaTypeEvpnVlanAware_ || e.viaType == Mpls::viaTypeEvpnVlanAwareFlood_) {
      os << "  dot1q collection " << (e.dot1qCollectionPresent ? "present" : "missing") << "\n";
      for (const auto& t : e.tags) {
         os << "  dot1q tag " << t.tag << ": vlan " << t.vlanWanted << ", "
            << (t.vlanProgrammed.empty() ? std::string("not programmed")
                                         : "programmed vlan " + t.vlanProgrammed)
            << "\n";
      }
   }
}

Json decapJson(const Fal::DecapExplanation& e, const Agent& agent) {
   Json tags = Json::array();
   for (const auto& t : e.tags) {
      tags.push_back(
          Json{{"tag", t.tag},
               {"vlan", t.vlanWanted},
               {"programmedVlan", t.vlanProgrammed.empty() ? Json() : Json(t.vlanProgrammed)}});
   }
   return Json{{"family", "decap"},
               {"cause", std::string(Fal::decapCauseName(e.cause))},
               {"inLfib", e.inLfib},
               {"viaSetPresent", e.viaSetPresent},
               {"viaType", Kor::toText(e.viaType)},
               {"viaPresent", e.viaPresent},
               {"mapping", e.mapping},
               {"programmed", e.programmed},
               {"helperHolds", helperHolds(agent, e.routeKey.topLabel())},
               {"inBacklog", e.inBacklog},
               {"listedUnprogrammed", e.listedUnprogrammed},
               {"returnCode", e.returnCode},
               {"nextRetry", std::isfinite(e.nextRetry) ? Json(e.nextRetry) : Json()},
               {"dot1qCollectionPresent", e.dot1qCollectionPresent},
               {"tags", tags}};
}

// ---- Pseudowire.

std::string pwSentence(const Fal::PwExplanation& e) {
   switch (e.cause) {
      case Fal::PwCause::programmed:
         return "decap record installed";
      case Fal::PwCause::notInLfib:
         return "not in the MPLS status";
      case Fal::PwCause::notPseudowire:
         return "not a pseudowire route";
      case Fal::PwCause::adjacencyMissing:
         return "waiting for its pseudowire adjacency " + std::to_string(e.adjacencyIndex);
      case Fal::PwCause::notDecapped:
         return "not decapsulated (no decap label, not a pseudowire interface, or no FEC tables)";
      case Fal::PwCause::hwFecIdPending:
         return "waiting for the platform's hardware FEC id of decap FEC " +
                std::to_string(e.fecId);
      case Fal::PwCause::connectorMissing:
         return "its pseudowire interface has no local connector";
   }
   return "unknown";
}

void writePw(std::ostream& os, const Fal::PwExplanation& e) {
   os << "Label " << e.routeKey.topLabel() << ": pseudowire route, " << pwSentence(e) << "\n";
   os << "  cause: " << Fal::pwCauseName(e.cause) << "\n";
   os << "  pseudowire adjacency " << e.adjacencyIndex << " "
      << (e.adjacencyPresent ? "present" : "missing") << ", interface " << e.pwInterface << " ("
      << (e.portPseudowire ? "port" : "vlan") << " pseudowire)\n";
   os << "  connector "
      << (e.connectorPresent ? "present, internal vlan " + std::to_string(e.internalVlan)
                             : std::string("missing"))
      << "\n";
   if (e.fecId) {
      os << "  decap FEC " << e.fecId << ": hardware FEC id "
         << (e.hwFecIdRequested ? "asked" : "not asked") << ", "
         << (e.hwFecIdAnswered ? "answered" : "not answered") << "\n";
   }
   os << "  decap record: " << (e.decapRecord ? "installed" : "not installed") << "\n";
}

Json pwJson(const Fal::PwExplanation& e) {
   return Json{{"family", "pseudowire"},
               {"cause", std::string(Fal::pwCauseName(e.cause))},
               {"inLfib", e.inLfib},
               {"adjacencyIndex", e.adjacencyIndex},
               {"adjacencyPresent", e.adjacencyPresent},
               {"pwInterface", e.pwInterface.stringValue()},
               {"portPseudowire", e.portPseudowire},
               {"connectorPresent", e.connectorPresent},
               {"internalVlan", e.internalVlan},
               {"fecId", e.fecId},
               {"hwFecIdRequested", e.hwFecIdRequested},
               {"hwFecIdAnswered", e.hwFecIdAnswered},
               {"decapRecord", e.decapRecord}};
}

}  // namespace

LabelFamily labelFamily(const Agent& agent, const Mpls::RouteKey& key) {
   if (const Mpls::LfibRoute* r = agent.lfib()->lfibRoutePtr(key)) {
      auto type = r->viaSetKey().viaType();
      if (type == Mpls::viaTypeMplsIp_ || type == Mpls::viaTypeExternalFec_) {
         return LabelFamily::transit;
      }
      if (isDecapType(type)) {
         return LabelFamily::decap;
      }
   }
   const bool inStatus = agent.mplsStatus()->lfibRouteHas(key);
   if (inStatus && agent.mplsStatus()->lfibRoute(key).adjacencyKey().adjType() ==
                       Mpls::adjacencyTypePseudowire_) {
      return LabelFamily::pseudowire;
   }
   if (agent.lfib()->lfibRouteHas(key)) {
      return LabelFamily::transit;
   }
   return inStatus ? LabelFamily::pseudowire : LabelFamily::none;
}

std::string blockingCause(const Agent& agent, const Mpls::RouteKey& key) {
   switch (labelFamily(agent, key)) {
      case LabelFamily::decap:
         return agent.decapSm()
                    ? std::string(Fal::decapCauseName(agent.decapSm()->explainRoute(key).cause))
                    : "";
      case LabelFamily::pseudowire:
         return agent.lFibSm()
                    ? std::string(Fal::pwCauseName(agent.lFibSm()->explainRoute(key).cause))
                    : "";
      default:
         return agent.mplsSm()
                    ? std::string(Fal::transitCauseName(agent.mplsSm()->explainRoute(key).cause))
                    : "";
   }
}

std::string labelActionOf(const Agent& agent, const Mpls::RouteKey& key) {
   const Mpls::LfibRoute* r = agent.lfib()->lfibRoutePtr(key);
   const Mpls::LfibViaSet* set = r ? agent.lfib()->viaSetPtr(r->viaSetKey()) : nullptr;
   if (!set || set->vias() == 0) {
      return "";
   }
   const Mpls::LfibViaKey& viaKey = set->via(Mpls::LfibViaIndexRange(0));
   if (viaKey.viaType() == Mpls::viaTypeMplsIp_) {
      if (const Mpls::LfibMplsVia* via = agent.lfib()->mplsViaPtr(viaKey)) {
         return Wire::stringValue(via->labelAction());
      }
   } else if (viaKey.viaType() == Mpls::viaTypeExternalFec_) {
      return Wire::stringValue(agent.lfib()->extFecVia(viaKey).labelAction());
   }
   return "";
}

void writeExplanation(std::ostream& os, const Agent& agent, const Mpls::RouteKey& key) {
   LabelFamily family = labelFamily(agent, key);
   if (family == LabelFamily::decap && agent.decapSm()) {
      writeDecap(os, agent.decapSm()->explainRoute(key), agent);
   } else if (family == LabelFamily::pseudowire && agent.lFibSm()) {
      writePw(os, agent.lFibSm()->explainRoute(key));
   } else if (agent.mplsSm()) {
      writeTransit(os, agent.mplsSm()->explainRoute(key), agent);
   } else {
      os << "Label " << key.topLabel() << ": no state machine is running to answer\n";
   }
}

Json explanationJson(const Agent& agent, const Mpls::RouteKey& key) {
   LabelFamily family = labelFamily(agent, key);
   Json j;
   if (family == LabelFamily::decap && agent.decapSm()) {
      j = decapJson(agent.decapSm()->explainRoute(key), agent);
   } else if (family == LabelFamily::pseudowire && agent.lFibSm()) {
      j = pwJson(agent.lFibSm()->explainRoute(key));
   } else if (agent.mplsSm()) {
      j = transitJson(agent.mplsSm()->explainRoute(key));
   }
   j["label"] = key.topLabel().value();
   return j;
}

bool textNamesLabel(const std::string& text, std::uint32_t label) {
   const std::string n = std::to_string(label);
   for (const std::string& p :
        {"'topLabel': " + n + "}", "decapLabel:" + n + ":", "label=" + n + ",", "label " + n}) {
      if (text.find(p) != std::string::npos) {
         return true;
      }
   }
   // The decap machine prints "<label>/<target>".
   for (std::size_t at = text.find(n + "/"); at != std::string::npos;
        at = text.find(n + "/", at + 1)) {
      if (at == 0 || !std::isdigit(static_cast<unsigned char>(text[at - 1]))) {
         return true;
      }
   }
   return false;
}

int explainCommand(const std::string& file, std::uint64_t label,
                   std::optional<std::size_t> afterStep, bool json, std::ostream& out,
                   std::ostream& err) {
   if (label > 1048575) {
      err << "mplsfwd-sim explain: --label: expected a label 0..1048575, found " << label << "\n";
      return exitBadScenario;
   }
   Scenario scenario;
   try {
      scenario = Scenario::load(file);
   } catch (const ScenarioError& e) {
      err << "mplsfwd-sim: bad scenario: " << e.what() << "\n";
      return exitBadScenario;
   }
   const std::size_t last = afterStep.value_or(scenario.steps.size());
   if (afterStep && (*afterStep == 0 || *afterStep > scenario.steps.size())) {
      err << "mplsfwd-sim explain: --after-step: expected a step 1.." << scenario.steps.size()
          << ", found " << *afterStep << "\n";
      return exitBadScenario;
   }
   // Every machine's trace, at every level, and the FastLog: the lines are filtered by label.
   scenario.config.trace = "MplsSm,MplsDecapSm,LFibSm";
   scenario.config.traceToStderr = false;
   scenario.config.fastLog = true;
   Runner runner(scenario);
   try {
      runner.run(last);
   } catch (const std::exception& e) {
      err << "mplsfwd-sim: " << file << ": error while running: " << e.what() << "\n";
      return exitRunError;
   }
   const Mpls::RouteKey key{Wire::MplsLabel(static_cast<std::uint32_t>(label))};
   const auto l = static_cast<std::uint32_t>(label);
   // A route step's text is its JSON with sorted keys: `"label":N` names the label.
   bool written = false;
   const std::string field = "\"label\":" + std::to_string(label);
   for (const auto& step : scenario.steps) {
      if (step.number <= last && step.op == "route") {
         std::size_t at = step.text.find(field);
         written |= at != std::string::npos &&
                    !std::isdigit(static_cast<unsigned char>(step.text[at + field.size()]));
      }
   }
   // A decision goes to both streams: its FastLog copy is shown once.
   std::vector<const Runner::TimedLine*> lines;
   for (const auto& line : runner.timedLines()) {
      if (!textNamesLabel(line.text, l)) {
         continue;
      }
      if (line.source == "FastLog" && !lines.empty() && lines.back()->time == line.time &&
          lines.back()->text == line.text) {
         continue;
      }
      lines.push_back(&line);
   }
   if (json) {
      Json j = written ? explanationJson(runner.agent(), key) : Json{{"label", label}};
      j["written"] = written;
      j["time"] = runner.agent().now();
      j["afterStep"] = last;
      Json trace = Json::array();
      for (const auto* line : lines) {
         trace.push_back(
             Json{{"time", line->time}, {"source", line->source}, {"text", line->text}});
      }
      j["trace"] = trace;
      out << j.dump(2) << "\n";
      return exitPassed;
   }
   out << "After step " << last << " of " << scenario.steps.size() << ", at "
       << seconds(runner.agent().now()) << ":\n";
   if (!written) {
      out << "Label " << label << " was never written by this scenario (no route step names it)\n";
      return exitPassed;
   }
   writeExplanation(out, runner.agent(), key);
   out << "\nTrace lines and FastLog texts naming label " << label << " (" << lines.size()
       << "):\n";
   for (const auto* line : lines) {
      out << "  [" << std::fixed << std::setprecision(6) << line->time << "] " << line->source
          << " " << line->text << "\n";
   }
   return exitPassed;
}

}  // namespace sim
