// Seeded random sequences over the whole agent (transit, decap and pseudowire machines on the
// simulated platform), written as scenario steps. At every checkpoint the world is made healthy
// (room everywhere, no refusals, interfaces ready, routing on, every deleted record back), the
// agent is left to settle, and what the platform holds is compared with what the LFIB and the
// status tables ask for, computed here from those tables alone:
// - every route is programmed: a transit route by its path (the chip through an L2 adjacency
//   whose vias carry the neighbours' current MACs, or the route helper into the FEC of its via
//   set, with the backup's FEC as the FEC's backup), a decap route by its helper mappings, a
//   pseudowire route by its decap record;
// - nothing else is: no chip route, helper route, decap mapping, decap record or FEC request that
//   no route asks for;
// - the resource logs alternate FULL and NORMAL and end on NORMAL;
// - the transit and pseudowire machines' whole-state invariants hold.
// A failing sequence is written out as a scenario file; MPLSFWD_REPLAY=<file> runs it again with
// the same checks (AgentRandomReplay.Replay), and `mplsfwd-sim run <file>` shows what it does.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include <mplsfwd/sim/PseudowireInvariants.h>
#include <mplsfwd/sim/Runner.h>
#include <mplsfwd/sim/State.h>

#include "support/TransitInvariants.h"

namespace {

using Json = nlohmann::json;

// ------------------------------------------------------------------------------------------------
// The generator: valid control-plane, L3, pseudowire and platform events over a small world, so
// that they meet each other often.

struct NextHop {
   const char* addr;
   const char* intf;  // empty: resolved through the IP routes
};
const NextHop kNextHops[] = {{"10.1.0.1", "Vlan10"}, {"10.1.0.2", "Vlan10"}, {"10.1.0.3", "Vlan10"},
                             {"10.2.0.1", "Vlan20"}, {"10.2.0.2", "Vlan20"}, {"10.9.0.1", ""},
                             {"10.9.0.2", ""},       {"10.8.0.1", ""},       {"10.8.0.2", ""}};
// The neighbours: the next hops on their interfaces, and the resolver's hosts on Vlan40.
const NextHop kNeighbours[] = {
    {"10.1.0.1", "Vlan10"}, {"10.1.0.2", "Vlan10"}, {"10.1.0.3", "Vlan10"}, {"10.2.0.1", "Vlan20"},
    {"10.2.0.2", "Vlan20"}, {"10.9.0.1", "Vlan40"}, {"10.9.0.2", "Vlan40"}, {"10.9.0.3", "Vlan40"}};
const char* const kMacs[] = {"00:00:00:00:00:01", "00:00:00:00:00:02", "00:00:00:00:00:03"};
const char* const kPwIntfs[] = {"Pseudowire1", "Pseudowire2", "VlanPseudowire3", "VlanPseudowire4"};
const char* const kDecapVias[] = {"ipLookupVia", "vlanVia", "evpnVlanFloodVia", "evpnVlanAwareVia",
                                  "evpnVlanAwareFloodVia"};
const char* const kDecapTypes[] = {"ipLookup", "vlan", "evpnVlanFlood", "evpnVlanAware",
                                   "evpnVlanAwareFlood"};
constexpr unsigned kLabels = 40, kFirstLabel = 1000, kVias = 16, kSets = 8, kFirstBackup = 9,
                   kBackups = 3, kFirstExt = 20, kDecapIndices = 2, kColls = 2, kPwAdjs = 3;

// What a sequence may do besides the common events.
struct Features {
   bool fec = false;       // the platform forwards into FECs: SR via sets, backups, external FECs
   bool restarts = false;  // the agent restarts now and then
   bool inPlace = false;   // the InPlaceMplsAdjacencyUpdate toggle
};

class Generator {
 public:
   Generator(std::uint32_t seed, Features features)
       : rng_(seed), fec_(features.fec), features_(features) {}

   Json scenario(std::size_t events, std::size_t checkEvery) {
      Json steps = Json::array();
      out_ = &steps;
      world();
      for (std::size_t i = 1; i <= events; ++i) {
         event();
         if (i % checkEvery == 0 || i == events) {
            heal();
         }
      }
      return Json{{"name", "random sequence"},
                  {"config",
                   {{"fecForwarding", fec_},
                    {"toggles", {{"InPlaceMplsAdjacencyUpdate", features_.inPlace}}}}},
                  {"steps", std::move(steps)}};
   }

 private:
   unsigned pick(unsigned n) { return std::uniform_int_distribution<unsigned>(0, n - 1)(rng_); }
   bool chance(unsigned percent) { return pick(100) < percent; }

   void emit(Json step) { out_->push_back(std::move(step)); }
   static Json platformRouting(bool on) { return {{"op", "platformRouting"}, {"enabled", on}}; }
   // A record of the world: remembered so that a checkpoint can bring it back once deleted.
   void write(const std::string& id, Json step) {
      last_[id] = step;
      deleted_.erase(id);
      emit(std::move(step));
   }
   void erase(const std::string& id, Json step) {
      if (last_.contains(id)) {
         deleted_.insert(id);
      }
      emit(std::move(step));
   }

   // A via of either source a via set may have: a set's vias carry its source.
   void mplsVia(unsigned i, bool sr) {
      const NextHop& nh = kNextHops[pick(std::size(kNextHops))];
      Json v = {{"op", "mplsVia"},
                {"index", i},
                {"source", sr ? "ospfSr" : "static"},
                {"nextHop", nh.addr},
                {"labels", Json::array({100 + pick(3)})}};
      if (*nh.intf) {
         v["interface"] = nh.intf;
      }
      write(std::string(sr ? "srVia" : "mplsVia") + std::to_string(i), v);
   }
   std::string setSource(unsigned i) const {
      return fec_ && i % 2 == 1 && i < kFirstBackup ? "ospfSr" : "static";
   }
   void viaSet(unsigned i) {
      Json vias = Json::array();
      for (unsigned n = 1 + pick(i >= kFirstBackup ? 2 : 3); n > 0; --n) {
         vias.push_back(1 + pick(kVias));
      }
      Json s = {{"op", "viaSet"},
                {"viaType", "mplsIp"},
                {"index", i},
                {"source", setSource(i)},
                {"vias", vias}};
      // A backup is a set of the same source: the backups are static sets, so only the static
      // primaries name one.
      if (fec_ && i < kFirstBackup && setSource(i) == "static" && chance(50)) {
         s["setType"] = "primaryBackup";
         s["backup"] = kFirstBackup + pick(kBackups);
      }
      write("viaSet" + std::to_string(i), s);
   }
   void extFecSet(unsigned i) {
      write("extFecVia" + std::to_string(i),
            {{"op", "extFecVia"}, {"index", i}, {"fecIndex", 5 + pick(2)}});
      write(
          "extSet" + std::to_string(i),
          {{"op", "viaSet"}, {"viaType", "externalFec"}, {"index", i}, {"vias", Json::array({i})}});
   }
   void decapVia(unsigned type, unsigned i) {
      Json v = {{"op", kDecapVias[type]}, {"index", i}};
      if (type == 0) {
         v["vrf"] = pick(2) ? "red" : "default";
         v["payloadType"] = pick(2) ? "ipv4" : "ipv6";
      } else if (type <= 2) {
         v["vlan"] = 100 + pick(4);
      } else {
         v["dot1qColl"] = 1 + pick(kColls);
      }
      write(std::string(kDecapVias[type]) + std::to_string(i), v);
   }
   void dot1qColl(unsigned i) {
      Json tags = Json::object();
      for (unsigned n = 1 + pick(3); n > 0; --n) {
         tags[std::to_string(5 + pick(3))] = pick(4) == 0 ? Json("none") : Json(200 + pick(2));
      }
      write("coll" + std::to_string(i), {{"op", "dot1qColl"}, {"index", i}, {"tags", tags}});
   }
   void neighbour(unsigned n) {
      const NextHop& nb = kNeighbours[n];
      write("nb" + std::to_string(n), {{"op", "neighbor"},
                                       {"address", nb.addr},
                                       {"interface", nb.intf},
                                       {"mac", kMacs[pick(std::size(kMacs))]},
                                       {"vlan", 10 + pick(2)},
                                       {"l2Interface", "Ethernet" + std::to_string(1 + pick(2))}});
   }
   void ipRoute(unsigned n) {
      Json r = n == 0 ? Json{{"op", "ipRoute"}, {"prefix", "10.9.0.0/24"}, {"interface", "Vlan40"}}
                      : Json{{"op", "ipRoute"},
                             {"prefix", "10.8.0.0/24"},
                             {"gateway", "10.9.0.3"},
                             {"interface", "Vlan40"}};
      write("ipRoute" + std::to_string(n), r);
   }
   void pwAdjacency(unsigned i) {
      write("pwAdj" + std::to_string(i), {{"op", "pwAdjacency"},
                                          {"index", i},
                                          {"pwInterface", kPwIntfs[pick(std::size(kPwIntfs))]}});
   }
   void connector(unsigned i) {
      write("conn" + std::to_string(i), {{"op", "connector"},
                                         {"pwInterface", kPwIntfs[i]},
                                         {"parent", "Ethernet3"},
                                         {"dot1qTag", pick(3)},
                                         {"internalVlan", 300 + pick(4)}});
   }
   void route() {
      unsigned label = kFirstLabel + pick(kLabels);
      Json r = {{"op", "route"}, {"label", label}};
      unsigned kind = pick(10);
      if (kind < 5) {
         if (fec_ && chance(15)) {
            r["viaType"] = "externalFec";
            r["viaSet"] = kFirstExt + pick(2);
         } else {
            unsigned set = 1 + pick(kSets);
            r["viaSet"] = set;
            r["source"] = setSource(set);
         }
      } else if (kind < 8) {
         r["viaType"] = kDecapTypes[pick(std::size(kDecapTypes))];
         r["viaSet"] = 1 + pick(kDecapIndices);
      } else {
         r["pwAdjacency"] = 1 + pick(kPwAdjs);
      }
      emit(r);
   }

   // Every record once, so that a checkpoint always has a value to bring back.
   void world() {
      for (unsigned n = 0; n < std::size(kNeighbours); ++n) {
         neighbour(n);
      }
      ipRoute(0);
      ipRoute(1);
      for (unsigned i = 1; i <= kVias; ++i) {
         mplsVia(i, false);
         if (fec_) {
            mplsVia(i, true);
         }
      }
      for (unsigned i = 1; i < kFirstBackup + kBackups; ++i) {
         viaSet(i);
      }
      if (fec_) {
         extFecSet(kFirstExt);
         extFecSet(kFirstExt + 1);
      }
      for (unsigned i = 1; i <= kColls; ++i) {
         dot1qColl(i);
      }
      for (unsigned type = 0; type < std::size(kDecapVias); ++type) {
         for (unsigned i = 1; i <= kDecapIndices; ++i) {
            decapVia(type, i);
            write(std::string("decapSet") + kDecapTypes[type] + std::to_string(i),
                  {{"op", "viaSet"},
                   {"viaType", kDecapTypes[type]},
                   {"index", i},
                   {"vias", Json::array({i})}});
         }
      }
      for (unsigned i = 1; i <= kPwAdjs; ++i) {
         pwAdjacency(i);
      }
      for (unsigned i = 0; i < std::size(kPwIntfs); ++i) {
         connector(i);
      }
   }

   void event() {
      unsigned kind = pick(100);
      if (kind < 22) {
         route();
      } else if (kind < 30) {
         emit({{"op", "route"}, {"label", kFirstLabel + pick(kLabels)}, {"delete", true}});
      } else if (kind < 37) {
         mplsVia(1 + pick(kVias), fec_ && chance(50));
      } else if (kind < 43) {
         viaSet(1 + pick(kFirstBackup + kBackups - 1));
      } else if (kind < 45) {
         unsigned i = 1 + pick(kFirstBackup + kBackups - 1);
         erase("viaSet" + std::to_string(i), {{"op", "viaSet"},
                                              {"viaType", "mplsIp"},
                                              {"index", i},
                                              {"source", setSource(i)},
                                              {"delete", true}});
      } else if (kind < 46) {
         unsigned i = 1 + pick(kVias);
         bool sr = fec_ && chance(50);
         erase(std::string(sr ? "srVia" : "mplsVia") + std::to_string(i),
               {{"op", "mplsVia"},
                {"index", i},
                {"source", sr ? "ospfSr" : "static"},
                {"delete", true}});
      } else if (kind < 51) {
         decapVia(pick(std::size(kDecapVias)), 1 + pick(kDecapIndices));
      } else if (kind < 54) {
         dot1qColl(1 + pick(kColls));
      } else if (kind < 55) {
         unsigned i = 1 + pick(kColls);
         erase("coll" + std::to_string(i), {{"op", "dot1qColl"}, {"index", i}, {"delete", true}});
      } else if (kind < 63) {
         neighbour(pick(std::size(kNeighbours)));
      } else if (kind < 67) {
         unsigned n = pick(std::size(kNeighbours));
         erase("nb" + std::to_string(n), {{"op", "neighbor"},
                                          {"address", kNeighbours[n].addr},
                                          {"interface", kNeighbours[n].intf},
                                          {"delete", true}});
      } else if (kind < 68) {
         unsigned n = pick(2);
         erase(
             "ipRoute" + std::to_string(n),
             {{"op", "ipRoute"}, {"prefix", n ? "10.8.0.0/24" : "10.9.0.0/24"}, {"delete", true}});
      } else if (kind < 70) {
         pwAdjacency(1 + pick(kPwAdjs));
      } else if (kind < 71) {
         unsigned i = 1 + pick(kPwAdjs);
         erase("pwAdj" + std::to_string(i),
               {{"op", "pwAdjacency"}, {"index", i}, {"delete", true}});
      } else if (kind < 73) {
         connector(pick(std::size(kPwIntfs)));
      } else if (kind < 74) {
         unsigned i = pick(std::size(kPwIntfs));
         erase("conn" + std::to_string(i),
               {{"op", "connector"}, {"pwInterface", kPwIntfs[i]}, {"delete", true}});
      } else if (kind < 76) {
         static const char* const what[] = {"routes", "l2Adjacencies", "fecs", "decapMappings"};
         roomChanged_ = true;
         emit({{"op", "capacity"},
               {what[pick(4)], pick(3) == 0 ? Json("unlimited") : Json(2 + pick(12))}});
      } else if (kind < 79) {
         static const char* const targets[] = {"routes", "adjacencies", "decap", "fecRoutes"};
         emit({{"op", "refuse"}, {"target", targets[pick(4)]}, {"count", 1 + pick(3)}});
      } else if (kind < 80) {
         roomChanged_ = true;
         emit({{"op", "interface"},
               {"name", "Ethernet" + std::to_string(1 + pick(2))},
               {"ready", chance(50)}});
      } else if (kind < 81) {
         emit({{"op", "mplsRouting"}, {"enabled", chance(50)}});
      } else if (kind < 82) {
         platformOff_ = !platformOff_;
         emit(platformRouting(!platformOff_));
      } else if (kind < 83) {
         emit({{"op", "answerDelay"},
               {"target", pick(2) ? "chip" : "fec"},
               {"seconds", pick(3) == 0 ? 0.0 : 0.001 * (1 + pick(20))}});
      } else if (kind < 84) {
         if (features_.restarts) {
            emit({{"op", "restart"}});
         }
      } else if (kind < 97) {
         emit({{"op", "advance"}, {"seconds", 0.001 * pick(30)}});
      } else {
         emit({{"op", "runUntilIdle"}, {"maxSeconds", 12}});
      }
   }

   // A healthy world, then a settled agent, then the checks. Room and interfaces are only
   // restored when they changed: restoring them makes the chip look at everything again, which
   // would hide a refusal that nothing retries.
   void heal() {
      if (roomChanged_) {
         emit({{"op", "capacity"},
               {"routes", "unlimited"},
               {"l2Adjacencies", "unlimited"},
               {"fecs", "unlimited"},
               {"decapMappings", "unlimited"}});
         emit({{"op", "interface"}, {"name", "Ethernet1"}, {"ready", true}});
         emit({{"op", "interface"}, {"name", "Ethernet2"}, {"ready", true}});
         roomChanged_ = false;
      }
      for (const char* target : {"routes", "adjacencies", "decap", "fecRoutes"}) {
         emit({{"op", "refuse"}, {"target", target}, {"count", 0}});
      }
      emit({{"op", "mplsRouting"}, {"enabled", true}});
      if (platformOff_) {
         emit(platformRouting(true));
         platformOff_ = false;
      }
      for (const auto& id : std::set<std::string>(deleted_)) {
         write(id, last_[id]);
      }
      emit({{"op", "runUntilIdle"}, {"maxSeconds", 120}, {"comment", "check"}});
   }

   std::mt19937 rng_;
   bool fec_;
   Features features_;
   bool roomChanged_ = false;
   bool platformOff_ = false;
   Json* out_ = nullptr;
   std::map<std::string, Json> last_;
   std::set<std::string> deleted_;
};

// ------------------------------------------------------------------------------------------------
// The properties, from the agent's tables alone.

class Checker {
 public:
   Checker(sim::Agent& a, TestSupport::AdjacencyIndexHistory& history) : a_(a), history_(history) {}

   std::vector<std::string> check() {
      problems_.clear();
      transit();
      decap();
      pseudowire();
      logs();
      for (const auto& line : sim::transitInvariantViolations(sim::transitParts(a_, history_))) {
         fail("transit invariant: " + line);
      }
      for (const auto& line : sim::pseudowireInvariantViolations(sim::pseudowireParts(a_))) {
         fail("pseudowire invariant: " + line);
      }
      return problems_;
   }

 private:
   template <class... A>
   void fail(const A&... parts) {
      std::ostringstream os;
      (os << ... << parts);
      problems_.push_back(os.str());
   }

   // The neighbour a next hop resolves to: itself on its interface, or through the IP routes.
   Fal::NextHopKey neighbourOf(const Mpls::LfibMplsVia& via) const {
      if (!via.intf().empty()) {
         return Fal::NextHopKey(via.nextHop(), via.intf());
      }
      auto text = via.nextHop().stringValue();
      auto gw = text.rfind("10.8.0.", 0) == 0 ? Wire::IpGenAddr::parse("10.9.0.3") : via.nextHop();
      return Fal::NextHopKey(gw, Wire::IntfId::vlan(40));
   }

   static std::string viaText(const Wire::IpGenAddr& nh, const Wire::EthAddr& mac,
                              const Wire::MplsLabelOperation& labels) {
      return nh.stringValue() + " " + mac.stringValue() + " " + labels.stringValue();
   }

   std::vector<Mpls::LfibMplsVia> vias(const Mpls::LfibViaSet& set) const {
      std::vector<Mpls::LfibMplsVia> out;
      for (std::uint32_t i = 0; i < set.vias(); ++i) {
         out.push_back(a_.lfib()->mplsVia(set.via(Mpls::LfibViaIndexRange(i))));
      }
      return out;
   }

   void transit() {
      const auto& lfib = *a_.lfib();
      auto config = a_.defaultVrfConfig();
      auto status = a_.defaultVrfStatus();
      if (!config || !status) {
         fail("the default VRF has no hardware configuration or status");
         return;
      }
      const auto& helper = *a_.routeHelper();
      std::set<Mpls::RouteKey> chipRoutes, helperRoutes;
      std::set<Memtab::Fib::FecId> needed;
      std::map<Memtab::Fib::FecId, const Mpls::LfibViaSet*> fecOfSet;
      for (const auto& [key, route] : lfib.lfibRouteMap()) {
         const auto& setKey = route.viaSetKey();
         bool ext = setKey.viaType() == Mpls::viaTypeExternalFec_;
         if (setKey.viaType() != Mpls::viaTypeMplsIp_ && !ext) {
            continue;
         }
         const Mpls::LfibViaSet* set = lfib.viaSetPtr(setKey);
         if (!set) {
            fail("route ", key, ": its via set ", setKey, " is missing after healing");
            continue;
         }
         bool fecWay = ext || set->hasBackup() || setKey.source() == Mpls::lfibSourceOspfSr_;
         sim::RouteView view = sim::routeView(a_, key);
         if (view.state != sim::RouteState::programmed) {
            fail("route ", key, " of ", setKey, " is ", sim::routeStateName(view.state), " ",
                 view.reason);
            continue;
         }
         if (fecWay) {
            helperRoutes.insert(key);
            Memtab::Fib::FecId fecId(view.fecId);
            if (view.path != "fec") {
               fail("route ", key, " of ", setKey, " is programmed by ", view.path,
                    ", not into a FEC");
               continue;
            }
            needed.insert(fecId);
            if (ext) {
               auto want = lfib.extFecVia(set->via(Mpls::LfibViaIndexRange(0))).fecId();
               if (fecId != want) {
                  fail("route ", key, " forwards into FEC ", fecId, ", not ", want);
               }
               continue;
            }
            auto [it, fresh] = fecOfSet.emplace(fecId, set);
            if (!fresh && !(it->second->key() == setKey)) {
               fail("FEC ", fecId, " serves via sets ", it->second->key(), " and ", setKey);
            }
            fecMatches(key, fecId, *set, needed);
            continue;
         }
         chipRoutes.insert(key);
         if (view.path != "adjacency" || !config || !status ||
             !(status->route(key) == config->route(key))) {
            fail("route ", key, " of ", setKey, " is not programmed with its configuration");
            continue;
         }
         std::set<std::string> want, found;
         for (const auto& via : vias(*set)) {
            auto info = a_.l3Status()->nextHopInfo(neighbourOf(via));
            want.insert(viaText(via.nextHop(), info.macAddr(), via.labelStack()));
         }
         for (const auto& v : view.vias) {
            found.insert(viaText(v.nextHop(), v.macAddr(), v.labelStack()));
         }
         if (want != found) {
            fail("route ", key, " of ", setKey, " forwards to [", join(found), "], not to [",
                 join(want), "]");
         }
      }
      // Every configured L2 adjacency is in the chip as configured (an in-place update too).
      for (const auto& [adj, count] : config->l2AdjacencyMap()) {
         const auto& held = status->l2AdjacencyMap();
         auto it = held.find(adj);
         if (it == held.end() || it->second != count) {
            fail("L2 adjacency ", adj->index(), " is not in the chip at programming count ", count);
         }
      }
      if (config && config->routes() != chipRoutes.size()) {
         fail("the chip is configured with ", config->routes(), " routes, the LFIB asks for ",
              chipRoutes.size());
      }
      for (const auto& [key, r] : helper.routeMap()) {
         if (!helperRoutes.contains(key)) {
            fail("the route helper holds route ", key, " (FEC ", r.fecId,
                 ") that the LFIB does not forward into a FEC");
         }
      }
      for (const auto& v : sim::fecRequestViews(a_)) {
         if (v.table == "transit" && !needed.contains(v.fecId)) {
            fail("FEC ", v.fecId, " is requested but no route uses it");
         }
      }
   }

   // Whether a published FEC holds the vias of a via set, in order.
   bool holds(const Memtab::Fib::Fec& fec, const Mpls::LfibViaSet& set) const {
      auto want = vias(set);
      if (fec.vias() != want.size()) {
         return false;
      }
      for (std::size_t i = 0; i < want.size(); ++i) {
         auto via = fec.via(Memtab::Fib::ViaIndex(static_cast<std::uint32_t>(i)));
         if (!(via.nextHop() == want[i].nextHop()) || !(via.intf() == want[i].intf()) ||
             !(via.labelStack() == want[i].labelStack())) {
            return false;
         }
      }
      return true;
   }

   // The FEC of a via set holds its vias, is answered, and names its backup set's FEC.
   void fecMatches(const Mpls::RouteKey& key, Memtab::Fib::FecId fecId, const Mpls::LfibViaSet& set,
                   std::set<Memtab::Fib::FecId>& needed) {
      const auto* fec = a_.fecRequest()->fecPtr(fecId);
      if (!fec || a_.fecResponse()->hwFecId(fecId).hwFecId() == 0) {
         fail("route ", key, ": FEC ", fecId, " is not published and answered");
         return;
      }
      if (!holds(*fec, set)) {
         fail("FEC ", fecId, " of ", set.key(), " does not hold its vias");
      }
      Memtab::Fib::FecId backup = fec->backupFecId();
      if (!set.hasBackup()) {
         if (backup.isValid()) {
            fail("FEC ", fecId, " of ", set.key(), " names backup FEC ", backup,
                 " it has no backup");
         }
         return;
      }
      const auto* backupSet = a_.lfib()->viaSetPtr(set.backupViaSetKey());
      const auto* backupFec = backup.isValid() ? a_.fecRequest()->fecPtr(backup) : nullptr;
      if (!backupSet || !backupFec || !holds(*backupFec, *backupSet) ||
          a_.fecResponse()->hwFecId(backup).hwFecId() == 0) {
         fail("FEC ", fecId, " of ", set.key(), " names backup FEC ", backup,
              ", which is not the answered FEC of ", set.backupViaSetKey());
         return;
      }
      needed.insert(backup);
   }

   void decap() {
      using Vrf = std::map<Wire::MplsLabel, sim::VrfMapping>;
      using Vlan = std::map<Wire::MplsLabel, sim::VlanMapping>;
      using Dot1q = std::map<sim::DecapHelper::Dot1qKey, sim::Dot1qMapping>;
      Vrf vrf;
      Vlan vlan;
      Dot1q dot1q;
      const auto& lfib = *a_.lfib();
      for (const auto& [key, route] : lfib.lfibRouteMap()) {
         const auto* set = lfib.viaSetPtr(route.viaSetKey());
         if (!set || set->vias() == 0) {
            continue;
         }
         auto label = key.topLabel();
         auto via = set->via(Mpls::LfibViaIndexRange(0));
         switch (via.viaType()) {
            case Mpls::viaTypeIpLookup_: {
               auto v = lfib.ipLookupVia(via);
               vrf[label] = {v.vrfName(), v.payloadType()};
               break;
            }
            case Mpls::viaTypeVlan_:
               vlan[label] = {lfib.vlanVia(via).vlanId(), false};
               break;
            case Mpls::viaTypeEvpnVlanFlood_:
               vlan[label] = {lfib.evpnVlanFloodVia(via).vlanId(), true};
               break;
            case Mpls::viaTypeEvpnVlanAware_:
            case Mpls::viaTypeEvpnVlanAwareFlood_: {
               bool flood = via.viaType() == Mpls::viaTypeEvpnVlanAwareFlood_;
               auto coll = lfib.dot1qTagToVlanColl(
                   flood ? lfib.evpnVlanAwareFloodVia(via).dot1qTagToVlanKey()
                         : lfib.evpnVlanAwareVia(via).dot1qTagToVlanKey());
               if (coll) {
                  for (const auto& [tag, to] : coll->dot1qTagToVlanIdMap()) {
                     dot1q[{label, tag}] = {to, flood};
                  }
               }
               break;
            }
            default:
               break;
         }
      }
      const auto& helper = *a_.decapHelper();
      compareMaps("label-to-VRF", vrf, helper.vrfMappingMap());
      compareMaps("label-to-VLAN", vlan, helper.vlanMappingMap());
      compareMaps("label-and-tag-to-VLAN", dot1q, helper.dot1qMappingMap());
      if (helper.mismatchedDeletes() != 0) {
         fail("the decap helper saw ", helper.mismatchedDeletes(),
              " deletes with wrong values: ", helper.mismatches().front());
      }
   }

   template <class Want, class Found>
   void compareMaps(const char* what, const Want& want, const Found& found) {
      for (const auto& [k, v] : want) {
         auto it = found.find(k);
         if (it == found.end() || !(it->second == v)) {
            fail(what, " mapping of ", keyText(k), it == found.end() ? " is missing" : " differs");
         }
      }
      for (const auto& [k, v] : found) {
         if (!want.contains(k)) {
            fail(what, " mapping of ", keyText(k), " is held but no route asks for it");
         }
      }
   }
   static std::string keyText(const Wire::MplsLabel& l) { return l.stringValue(); }
   static std::string keyText(const sim::DecapHelper::Dot1qKey& k) {
      return k.first.stringValue() + " tag " + k.second.stringValue();
   }

   void pseudowire() {
      std::map<Wire::MplsLabel, Wire::IntfId> want;
      std::size_t vlanPws = 0;
      const auto& status = *a_.mplsStatus();
      for (const auto& [key, route] : status.lfibRouteMap()) {
         auto adj = route.adjacencyKey();
         if (!status.lfibPwAdjacencyHas(adj.index())) {
            fail("pseudowire route ", key, ": its adjacency is missing after healing");
            continue;
         }
         auto intf = status.lfibPwAdjacency(adj.index()).pwIntfId();
         want[key.topLabel()] = intf;
         vlanPws += intf.stringValue().rfind("VlanPseudowire", 0) == 0;
      }
      const auto& held = a_.pwDecapTable().entryMap();
      for (const auto& [label, intf] : want) {
         auto it = held.find(label);
         if (it == held.end() || !(it->second.pwIntfId() == intf)) {
            fail("pseudowire route ", label, " has no decap record for ", intf);
         }
      }
      for (const auto& [label, info] : held) {
         if (!want.contains(label)) {
            fail("decap record ", info, " is held but no pseudowire route asks for it");
         }
      }
      std::size_t requests = 0;
      for (const auto& v : sim::fecRequestViews(a_)) {
         requests += v.table == "pseudowire";
      }
      if (requests != vlanPws) {
         fail(requests, " pseudowire FEC requests for ", vlanPws, " VLAN pseudowire routes");
      }
   }

   void logs() {
      std::string last = "ROUTING_MPLS_RESOURCE_NORMAL";
      for (const auto& r : a_.logSink().records()) {
         if (r.name == "ROUTING_MPLS_RESOURCE_FULL" || r.name == "ROUTING_MPLS_RESOURCE_NORMAL") {
            if (r.name == last) {
               fail(r.name, " logged twice in a row at ", r.time, " s");
            }
            last = r.name;
         }
      }
      if (last != "ROUTING_MPLS_RESOURCE_NORMAL") {
         fail("the resource log ends on ", last, " in a healthy world");
      }
   }

   static std::string join(const std::set<std::string>& s) {
      std::string out;
      for (const auto& x : s) {
         out += (out.empty() ? "" : ", ") + x;
      }
      return out;
   }

   sim::Agent& a_;
   TestSupport::AdjacencyIndexHistory& history_;
   std::vector<std::string> problems_;
};

// Runs a scenario with the checks after each step marked "check"; answers the problems found,
// each with its step.
std::vector<std::string> runChecked(const Json& doc, const std::string& name) {
   sim::Scenario scenario = sim::Scenario::parse(doc.dump(), name);
   std::vector<std::string> problems;
   TestSupport::AdjacencyIndexHistory history;
   std::vector<sim::Step> steps;
   for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
      steps.push_back(std::move(scenario.steps[i]));
      std::string comment = doc["steps"][i].value("comment", "");
      sim::Step extra;
      extra.number = i + 1;
      extra.op = comment;
      if (comment == "check") {
         extra.run = [&problems, &history, number = i + 1](sim::Runner& r) {
            if (!problems.empty()) {
               return;  // the first failing checkpoint says it all
            }
            for (const auto& p : Checker(r.agent(), history).check()) {
               problems.push_back("after step " + std::to_string(number) + ": " + p);
            }
         };
      } else {
         continue;
      }
      steps.push_back(std::move(extra));
   }
   scenario.steps = std::move(steps);
   sim::Runner runner(scenario);
   runner.run();
   return problems;
}

// Events per seed. Each CI build runs its own range of seeds (tests/sim/CMakeLists.txt);
// MPLSFWD_RANDOM_OFFSET=N shifts them (scripts/soak.sh).
constexpr std::size_t kEvents = 5000;
constexpr std::size_t kCheckEvery = 250;

void runSeed(std::uint32_t seed, Features features) {
   Json doc = Generator(seed, features).scenario(kEvents, kCheckEvery);
   std::string name = "agent-random-" + std::to_string(seed) + (features.fec ? "-fec" : "") +
                      (features.restarts ? "-restarts" : "") + (features.inPlace ? "-inplace" : "");
   auto problems = runChecked(doc, name + ".json");
   if (problems.empty()) {
      return;
   }
   auto file = std::filesystem::temp_directory_path() / (name + ".json");
   std::ofstream(file) << doc.dump(1) << "\n";
   std::string text;
   for (std::size_t i = 0; i < problems.size() && i < 12; ++i) {
      text += "\n  " + problems[i];
   }
   ADD_FAILURE() << name << ":" << text << "\nreplay: MPLSFWD_REPLAY=" << file.string()
                 << " sim_tests --gtest_filter=AgentRandomReplay.*   (mplsfwd-sim run "
                 << file.string() << " shows the run)";
}

std::uint32_t seedOf(std::uint32_t param) {
   const char* offset = std::getenv("MPLSFWD_RANDOM_OFFSET");
   return param + (offset ? static_cast<std::uint32_t>(std::atol(offset)) : 0);
}

class AgentRandom : public ::testing::TestWithParam<std::uint32_t> {};

// The seeds take turns: the adjacency way, the FEC way, and restarts (on either way), each with
// and without the in-place update.
TEST_P(AgentRandom, Sequence) {
   std::uint32_t seed = seedOf(GetParam());
   switch (seed % 3) {
      case 0:
         runSeed(seed, {.inPlace = seed % 2 == 1});
         break;
      case 1:
         runSeed(seed, {.fec = true, .inPlace = seed % 2 == 1});
         break;
      default:
         runSeed(seed, {.fec = seed % 2 == 0, .restarts = true, .inPlace = seed % 4 < 2});
         break;
   }
}

INSTANTIATE_TEST_SUITE_P(Seeds, AgentRandom,
                         ::testing::Range(std::uint32_t(MPLSFWD_RANDOM_FIRST_SEED),
                                          std::uint32_t(MPLSFWD_RANDOM_FIRST_SEED +
                                                        MPLSFWD_RANDOM_SEEDS)));

TEST(AgentRandomReplay, Replay) {
   const char* file = std::getenv("MPLSFWD_REPLAY");
   if (!file) {
      GTEST_SKIP() << "set MPLSFWD_REPLAY to a scenario written by a failing seed";
   }
   std::ifstream in(file);
   Json doc = Json::parse(in);
   for (const auto& p : runChecked(doc, file)) {
      ADD_FAILURE() << p;
   }
}

}  // namespace
