#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include <mplsfwd/l3/IpPrefix.h>
#include <mplsfwd/wire/EthAddr.h>
#include <mplsfwd/wire/IntfId.h>
#include <mplsfwd/wire/IpGenAddr.h>
#include <mplsfwd/wire/MplsLabel.h>
#include <mplsfwd/wire/VlanId.h>

#include "Scenario.h"

namespace sim {

// Typed, checked access to the fields of one JSON object of a scenario (a step or the config).
// Every accessor either returns a value in range or throws ScenarioError naming the place
// ("file: step 3 (route)"), the field, what was expected and what was found. The object's fields
// are checked against the list of fields the operation knows at construction, so a misspelt
// field is an error rather than silently ignored.
class Fields {
 public:
   using Json = nlohmann::json;

   Fields(const Json& object, std::string where, const std::vector<const char*>& known);

   const std::string& where() const { return where_; }
   bool has(const char* name) const;

   [[noreturn]] void fail(const std::string& field, const std::string& expected,
                          const Json* found) const;
   // With "delete": only these fields (besides op and comment) may be given.
   void onlyFields(std::initializer_list<const char*> allowed) const;
   // At least one of these fields must be given.
   void oneOf(std::initializer_list<const char*> names) const;

   std::uint64_t integer(const char* name, std::uint64_t min, std::uint64_t max) const;
   std::optional<std::uint64_t> optInteger(const char* name, std::uint64_t min,
                                           std::uint64_t max) const;
   double number(const char* name, double min, double max) const;
   std::optional<double> optNumber(const char* name, double min, double max) const;
   bool boolean(const char* name) const;
   bool optBoolean(const char* name, bool dflt) const;
   std::string string(const char* name) const;
   std::optional<std::string> optString(const char* name) const;
   // A capacity: a count, or "unlimited".
   std::optional<std::size_t> optCapacity(const char* name) const;

   Wire::MplsLabel label(const char* name) const;
   std::vector<Wire::MplsLabel> labels(const char* name) const;
   // A VLAN 1..4094.
   Bridging::VlanId vlan(const char* name) const;
   // A VLAN 1..4094 or "none" (0 is accepted as none too).
   Bridging::VlanIdOrNone vlanOrNone(const char* name) const;
   // A dot1q tag of a connector: 0 (whole port) to 4094.
   Bridging::VlanId tag(const char* name) const;
   Wire::IpGenAddr ip(const char* name) const;
   Wire::EthAddr mac(const char* name) const;
   Wire::IntfId intf(const char* name) const;
   std::optional<Wire::IntfId> optIntf(const char* name) const;
   L3::IpPrefix prefix(const char* name) const;

   // One of a list of names.
   template <class E>
   E choice(const char* name, const std::vector<std::pair<const char*, E>>& names) const {
      std::string text = string(name);
      for (const auto& [n, v] : names) {
         if (text == n) {
            return v;
         }
      }
      fail(name, "one of " + list(names), get(name));
   }
   template <class E>
   E optChoice(const char* name, const std::vector<std::pair<const char*, E>>& names,
               E dflt) const {
      return has(name) ? choice(name, names) : dflt;
   }

   const Json* get(const char* name) const;
   // The JSON text of a value, cut to a readable length.
   static std::string show(const Json& value);

 private:
   template <class E>
   static std::string list(const std::vector<std::pair<const char*, E>>& names) {
      std::string out;
      for (const auto& [n, v] : names) {
         out += out.empty() ? "" : ", ";
         out += n;
      }
      return out;
   }

   const Json& object_;
   std::string where_;
};

}  // namespace sim
