#include "Report.h"

#include <algorithm>
#include <iomanip>
#include <optional>
#include <sstream>

#include <mplsfwd/kor/TextForm.h>

namespace sim {

namespace {

using Json = nlohmann::json;

std::string viaLine(const Mpls::Hardware::L2Via& v) {
   std::ostringstream os;
   os << v.nextHop() << " " << v.macAddr() << " vlan " << v.vlanId() << " " << v.l2Intf() << " "
      << v.labelStack();
   return os.str();
}

std::string fecText(Memtab::Fib::FecId id) {
   return "type " + std::to_string(id.value() >> Memtab::Fib::adjTypePos()) + " index " +
          std::to_string(id.index());
}

// A plain text table: a title, a header and rows, columns padded to their widest cell.
class Table {
 public:
   Table(std::string title, std::vector<std::string> header)
       : title_(std::move(title)), header_(std::move(header)) {}
   void row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
   // The count shown in the title, when rows continue items over several lines.
   void itemsIs(std::size_t n) { items_ = n; }
   void write(std::ostream& os) const {
      os << title_ << " (" << (items_ ? *items_ : rows_.size()) << ")\n";
      if (rows_.empty()) {
         os << "  none\n\n";
         return;
      }
      std::vector<std::size_t> width(header_.size(), 0);
      auto measure = [&](const std::vector<std::string>& cells) {
         for (std::size_t i = 0; i < cells.size() && i < width.size(); ++i) {
            width[i] = std::max(width[i], cells[i].size());
         }
      };
      measure(header_);
      for (const auto& r : rows_) {
         measure(r);
      }
      auto line = [&](const std::vector<std::string>& cells) {
         std::string out = " ";
         for (std::size_t i = 0; i < cells.size(); ++i) {
            out += " ";
            out += cells[i];
            if (i + 1 < cells.size()) {
               out += std::string(width[i] - cells[i].size(), ' ');
            }
         }
         while (!out.empty() && out.back() == ' ') {
            out.pop_back();
         }
         os << out << "\n";
      };
      line(header_);
      for (const auto& r : rows_) {
         line(r);
      }
      os << "\n";
   }

 private:
   std::string title_;
   std::vector<std::string> header_;
   std::vector<std::vector<std::string>> rows_;
   std::optional<std::size_t> items_;
};

// One row per route, then one more per further ECMP via (the route's columns left blank).
void writeRouteRows(std::ostream& os, const State& s) {
   Table routes("Transit routes",
                {"label", "state", "reason", "action", "path", "l2adj", "version", "vias"});
   for (const auto& r : s.routes) {
      std::vector<std::string> vias;
      for (const auto& v : r.vias) {
         vias.push_back(viaLine(v));
      }
      if (r.path == "fec") {
         vias = {"fec " + std::to_string(r.fecId)};
      }
      routes.row({Kor::toText(r.key.topLabel()), std::string(routeStateName(r.state)),
                  r.reason.empty() ? "-" : r.reason, r.action.empty() ? "-" : r.action,
                  r.path.empty() ? "-" : r.path,
                  r.l2Adjacency ? std::to_string(*r.l2Adjacency) : "-", std::to_string(r.version),
                  vias.empty() ? "-" : vias.front()});
      for (std::size_t i = 1; i < vias.size(); ++i) {
         routes.row({"", "", "", "", "", "", "", vias[i]});
      }
   }
   routes.itemsIs(s.routes.size());
   routes.write(os);
}

}  // namespace

Json toJson(const Mpls::Hardware::L2Via& via) {
   Json labels = Json::array();
   for (std::size_t i = 0; i < via.labelStack().stackSize(); ++i) {
      labels.push_back(via.labelStack().labelStack(i).value());
   }
   return Json{{"nextHop", via.nextHop().stringValue()},
               {"mac", via.macAddr().stringValue()},
               {"vlan", via.vlanId().value()},
               {"interface", via.l2Intf().stringValue()},
               {"labels", labels}};
}

Json toJson(const State& s) {
   Json j;
   j["time"] = s.time;
   j["restarts"] = s.restarts;
   Json routes = Json::array();
   for (const auto& r : s.routes) {
      Json vias = Json::array();
      for (const auto& v : r.vias) {
         vias.push_back(toJson(v));
      }
      Json jr{{"label", r.key.topLabel().value()},
              {"state", std::string(routeStateName(r.state))},
              {"reason", r.reason.empty() ? Json() : Json(r.reason)},
              {"path", r.path.empty() ? Json() : Json(r.path)},
              {"version", r.version},
              {"action", r.action.empty() ? Json() : Json(r.action)},
              {"vias", vias}};
      jr["l2Adjacency"] = r.l2Adjacency ? Json(*r.l2Adjacency) : Json();
      if (r.path == "fec") {
         jr["fecId"] = r.fecId;
      }
      routes.push_back(jr);
   }
   j["routes"] = routes;
   Json adjs = Json::array();
   for (const auto& a : s.adjacencies) {
      Json vias = Json::array();
      for (const auto& v : a.vias) {
         vias.push_back(toJson(v));
      }
      adjs.push_back(Json{{"index", a.index},
                          {"count", a.count},
                          {"programmed", a.programmed},
                          {"reason", a.reason.empty() ? Json() : Json(a.reason)},
                          {"routes", a.routes},
                          {"vias", vias}});
   }
   j["l2Adjacencies"] = adjs;
   Json decaps = Json::array();
   for (const auto& d : s.decaps) {
      Json jd{{"label", d.label.value()}, {"kind", d.kind}};
      if (d.kind == "vrf") {
         jd["vrf"] = d.vrf.stringValue();
         jd["payloadType"] = Kor::toText(d.payloadType);
      } else {
         jd["vlan"] = d.vlan.isNone() ? Json("none") : Json(d.vlan.value());
         jd["flood"] = d.flood;
         if (d.kind == "dot1q") {
            jd["dot1qTag"] = d.dot1qTag.value();
         }
      }
      decaps.push_back(jd);
   }
   j["decapMappings"] = decaps;
   Json decapUnprog = Json::array();
   for (const auto& [key, rc] : s.decapUnprogrammed) {
      decapUnprog.push_back(Json{{"label", key.topLabel().value()}, {"returnCode", rc}});
   }
   j["decapUnprogrammed"] = decapUnprog;
   Json pw = Json::array();
   for (const auto& p : s.pwDecaps) {
      pw.push_back(Json{{"label", p.label().value()}, {"pwInterface", p.pwIntfId().stringValue()}});
   }
   j["pseudowireDecaps"] = pw;
   Json fecs = Json::array();
   for (const auto& f : s.fecRequests) {
      fecs.push_back(
          Json{{"table", f.table},
               {"fecId", f.fecId.value()},
               {"adjType", f.fecId.value() >> Memtab::Fib::adjTypePos()},
               {"index", f.fecId.index()},
               {"fec", f.fec},
               {"vias", f.vias},
               {"backupFecId", f.backupFecId.isValid() ? Json(f.backupFecId.value()) : Json()},
               {"hwFecId", f.hwFecId == 0 ? Json() : Json(f.hwFecId)}});
   }
   j["fecRequests"] = fecs;
   Json logs = Json::object();
   for (const auto& [name, n] : s.logs) {
      logs[name] = n;
   }
   j["logs"] = logs;
   j["decapMismatchedDeletes"] = s.decapMismatches;
   return j;
}

std::string Report::summary() const {
   const State& s = state_;
   std::ostringstream os;
   os << (passed() ? "PASS" : "FAIL") << ": " << s.routes.size() << " transit routes ("
      << s.routesIn(RouteState::programmed) << " programmed, "
      << s.routesIn(RouteState::unprogrammed) << " unprogrammed, "
      << s.routesIn(RouteState::pending) << " pending), " << s.adjacencies.size()
      << " L2 adjacencies, " << s.decaps.size() << " decap mappings (" << s.decapUnprogrammed.size()
      << " refused), " << s.pwDecaps.size() << " pseudowire decap records, " << s.fecRequests.size()
      << " FEC requests; "
      << runner_.expectations() - std::min(runner_.expectations(), failedSteps()) << "/"
      << runner_.expectations() << " expectations held at " << s.time << " s";
   return os.str();
}

std::size_t Report::failedSteps() const {
   std::size_t n = 0;
   std::size_t last = 0;
   for (const auto& f : runner_.failures()) {
      if (f.step != last) {
         ++n;
         last = f.step;
      }
   }
   return n;
}

void Report::writeFailures(std::ostream& os) const {
   for (const auto& f : runner_.failures()) {
      os << runner_.scenario().file << ": step " << f.step << " failed: " << f.what << "\n"
         << "    step:     " << f.stepText << "\n"
         << "    expected: " << f.expected << "\n"
         << "    found:    " << f.found << "\n";
   }
}

void Report::writeText(std::ostream& os) const {
   const State& s = state_;
   const Scenario& sc = runner_.scenario();
   os << "Scenario " << (sc.name.empty() ? sc.file : sc.name) << " (" << sc.file << ")\n";
   if (!sc.description.empty()) {
      os << "  " << sc.description << "\n";
   }
   os << "Simulated time " << s.time << " s, " << sc.steps.size() << " steps, " << s.restarts
      << " restarts, " << s.lfibRoutes << " LFIB routes\n\n";

   writeRouteRows(os, s);

   Table adjs("L2 adjacencies", {"index", "count", "programmed", "reason", "routes", "vias"});
   for (const auto& a : s.adjacencies) {
      std::string vias;
      for (const auto& v : a.vias) {
         vias += (vias.empty() ? "" : "; ") + viaLine(v);
      }
      adjs.row({std::to_string(a.index), std::to_string(a.count), a.programmed ? "yes" : "no",
                a.reason.empty() ? "-" : a.reason, std::to_string(a.routes),
                vias.empty() ? "-" : vias});
   }
   adjs.write(os);

   Table decaps("Decap mappings", {"label", "kind", "target", "details"});
   for (const auto& d : s.decaps) {
      if (d.kind == "vrf") {
         decaps.row({Kor::toText(d.label), d.kind, "vrf " + d.vrf.stringValue(),
                     "payload " + Kor::toText(d.payloadType)});
      } else {
         std::string details = std::string("flood ") + (d.flood ? "true" : "false");
         if (d.kind == "dot1q") {
            details = "dot1qTag " + Kor::toText(d.dot1qTag) + " " + details;
         }
         decaps.row({Kor::toText(d.label), d.kind, "vlan " + d.vlan.stringValue(), details});
      }
   }
   decaps.write(os);

   Table pw("Pseudowire decap records", {"label", "pwInterface"});
   for (const auto& p : s.pwDecaps) {
      pw.row({Kor::toText(p.label()), p.pwIntfId().stringValue()});
   }
   pw.write(os);

   Table fecs("FEC requests", {"table", "fec", "vias", "backup", "hwFecId"});
   for (const auto& f : s.fecRequests) {
      fecs.row({f.table, fecText(f.fecId), f.fec ? std::to_string(f.vias) : "-",
                f.backupFecId.isValid() ? fecText(f.backupFecId) : "-",
                f.hwFecId ? std::to_string(f.hwFecId) : "unanswered"});
   }
   fecs.write(os);

   Table unprog("Unprogrammed routes", {"label", "kind", "reason"});
   for (const auto& r : s.routes) {
      if (r.state == RouteState::unprogrammed) {
         unprog.row({Kor::toText(r.key.topLabel()), "transit", r.reason});
      }
   }
   for (const auto& [key, rc] : s.decapUnprogrammed) {
      unprog.row({Kor::toText(key.topLabel()), "decap",
                  Kor::toText(static_cast<Mpls::LfibHwProgrammingReturnCode>(rc)) + " (" +
                      std::to_string(rc) + ")"});
   }
   unprog.write(os);

   Table logs("Log messages", {"name", "count"});
   for (const auto& [name, n] : s.logs) {
      logs.row({name, std::to_string(n)});
   }
   logs.write(os);

   if (!s.decapMismatches.empty()) {
      os << "Decap deletes that did not match their mapping (" << s.decapMismatches.size() << ")\n";
      for (const auto& m : s.decapMismatches) {
         os << "  " << m << "\n";
      }
      os << "\n";
   }

   os << "Expectations: " << runner_.expectations() << " steps, " << runner_.checks() << " checks, "
      << runner_.failures().size() << " failed\n";
   for (const auto& f : runner_.failures()) {
      os << "  step " << f.step << " " << f.what << ": expected " << f.expected << ", found "
         << f.found << "\n";
   }
   os << "\n" << summary() << "\n";
}

Json Report::json() const {
   Json j = toJson(state_);
   const Scenario& sc = runner_.scenario();
   j["scenario"] = Json{{"name", sc.name}, {"file", sc.file}, {"steps", sc.steps.size()}};
   Json failures = Json::array();
   for (const auto& f : runner_.failures()) {
      failures.push_back(Json{{"step", f.step},
                              {"stepText", f.stepText},
                              {"what", f.what},
                              {"expected", f.expected},
                              {"found", f.found}});
   }
   j["expectations"] = Json{{"steps", runner_.expectations()},
                            {"checks", runner_.checks()},
                            {"failed", runner_.failures().size()},
                            {"failures", failures}};
   j["passed"] = passed();
   j["summary"] = summary();
   return j;
}

}  // namespace sim
