#include "ScenarioFields.h"

#include <cmath>
#include <limits>

#include <mplsfwd/kor/Errors.h>

namespace sim {

namespace {
const std::set<std::string> commonFields = {"op", "comment"};
}

Fields::Fields(const Json& object, std::string where, const std::vector<const char*>& known)
    : object_(object), where_(std::move(where)) {
   if (!object_.is_object()) {
      throw ScenarioError(where_ + ": expected an object, found " + show(object_));
   }
   std::set<std::string> names(known.begin(), known.end());
   for (const auto& [key, value] : object_.items()) {
      if (names.contains(key) || commonFields.contains(key)) {
         continue;
      }
      std::string knownText;
      for (const char* n : known) {
         knownText += knownText.empty() ? "" : ", ";
         knownText += n;
      }
      throw ScenarioError(where_ + ": field '" + key + "': unknown field (known fields: " +
                          (knownText.empty() ? "none" : knownText) + ")");
   }
}

std::string Fields::show(const Json& value) {
   std::string text = value.dump();
   if (text.size() > 60) {
      text = text.substr(0, 57) + "...";
   }
   return text;
}

const Fields::Json* Fields::get(const char* name) const {
   auto it = object_.find(name);
   return it == object_.end() ? nullptr : &*it;
}

bool Fields::has(const char* name) const {
   return get(name) != nullptr;
}

void Fields::fail(const std::string& field, const std::string& expected, const Json* found) const {
   throw ScenarioError(where_ + ": field '" + field + "': expected " + expected + ", found " +
                       (found ? show(*found) : std::string("nothing")));
}

void Fields::onlyFields(std::initializer_list<const char*> allowed) const {
   std::set<std::string> names(allowed.begin(), allowed.end());
   for (const auto& [key, value] : object_.items()) {
      if (!names.contains(key) && !commonFields.contains(key) && key != "delete") {
         throw ScenarioError(where_ + ": field '" + key + "': not used when deleting");
      }
   }
}

void Fields::oneOf(std::initializer_list<const char*> names) const {
   std::string text;
   for (const char* n : names) {
      if (has(n)) {
         return;
      }
      text += text.empty() ? "" : "' or '";
      text += n;
   }
   throw ScenarioError(where_ + ": field '" + text +
                       "': expected at least one of them, found none");
}

std::uint64_t Fields::integer(const char* name, std::uint64_t min, std::uint64_t max) const {
   const Json* v = get(name);
   std::string expected = "an integer " + std::to_string(min) + ".." + std::to_string(max);
   if (!v || !v->is_number_integer()) {
      fail(name, expected, v);
   }
   if (v->is_number_unsigned()) {
      auto n = v->get<std::uint64_t>();
      if (n < min || n > max) {
         fail(name, expected, v);
      }
      return n;
   }
   auto n = v->get<std::int64_t>();
   if (n < 0 || static_cast<std::uint64_t>(n) < min || static_cast<std::uint64_t>(n) > max) {
      fail(name, expected, v);
   }
   return static_cast<std::uint64_t>(n);
}

std::optional<std::uint64_t> Fields::optInteger(const char* name, std::uint64_t min,
                                                std::uint64_t max) const {
   if (!has(name)) {
      return std::nullopt;
   }
   return integer(name, min, max);
}

double Fields::number(const char* name, double min, double max) const {
   const Json* v = get(name);
   std::string expected = "a number " + Json(min).dump() + ".." + Json(max).dump();
   if (!v || !v->is_number()) {
      fail(name, expected, v);
   }
   double d = v->get<double>();
   if (!std::isfinite(d) || d < min || d > max) {
      fail(name, expected, v);
   }
   return d;
}

std::optional<double> Fields::optNumber(const char* name, double min, double max) const {
   if (!has(name)) {
      return std::nullopt;
   }
   return number(name, min, max);
}

bool Fields::boolean(const char* name) const {
   const Json* v = get(name);
   if (!v || !v->is_boolean()) {
      fail(name, "true or false", v);
   }
   return v->get<bool>();
}

bool Fields::optBoolean(const char* name, bool dflt) const {
   return has(name) ? boolean(name) : dflt;
}

std::string Fields::string(const char* name) const {
   const Json* v = get(name);
   if (!v || !v->is_string()) {
      fail(name, "a string", v);
   }
   return v->get<std::string>();
}

std::optional<std::string> Fields::optString(const char* name) const {
   if (!has(name)) {
      return std::nullopt;
   }
   return string(name);
}

std::optional<std::size_t> Fields::optCapacity(const char* name) const {
   const Json* v = get(name);
   if (!v) {
      return std::nullopt;
   }
   if (v->is_string() && v->get<std::string>() == "unlimited") {
      return std::numeric_limits<std::size_t>::max();
   }
   if (!v->is_number_integer() ||
       (v->is_number_integer() && !v->is_number_unsigned() && v->get<std::int64_t>() < 0)) {
      fail(name, "a count 0.. or \"unlimited\"", v);
   }
   return static_cast<std::size_t>(v->get<std::uint64_t>());
}

Wire::MplsLabel Fields::label(const char* name) const {
   const Json* v = get(name);
   std::string expected = "a label 0..1048575";
   if (!v || !v->is_number_integer() || (!v->is_number_unsigned() && v->get<std::int64_t>() < 0) ||
       v->get<std::uint64_t>() > Wire::MplsLabel::kMax) {
      fail(name, expected, v);
   }
   return Wire::MplsLabel(static_cast<std::uint32_t>(v->get<std::uint64_t>()));
}

std::vector<Wire::MplsLabel> Fields::labels(const char* name) const {
   const Json* v = get(name);
   std::string expected = "an array of at most 8 labels 0..1048575";
   if (!v || !v->is_array() || v->size() > Wire::MplsLabelOperation::kMaxLabels) {
      fail(name, expected, v);
   }
   std::vector<Wire::MplsLabel> out;
   for (const auto& item : *v) {
      if (!item.is_number_integer() ||
          (!item.is_number_unsigned() && item.get<std::int64_t>() < 0) ||
          item.get<std::uint64_t>() > Wire::MplsLabel::kMax) {
         fail(name, expected, &item);
      }
      out.emplace_back(static_cast<std::uint32_t>(item.get<std::uint64_t>()));
   }
   return out;
}

Bridging::VlanId Fields::vlan(const char* name) const {
   return Bridging::VlanId(static_cast<std::uint16_t>(integer(name, 1, 4094)));
}

Bridging::VlanIdOrNone Fields::vlanOrNone(const char* name) const {
   const Json* v = get(name);
   if (v && v->is_string() && v->get<std::string>() == "none") {
      return Bridging::VlanIdOrNone::none();
   }
   if (!v || !v->is_number_integer() || (!v->is_number_unsigned() && v->get<std::int64_t>() < 0) ||
       v->get<std::uint64_t>() > 4094) {
      fail(name, "a VLAN 1..4094 or \"none\"", v);
   }
   return Bridging::VlanIdOrNone(static_cast<std::uint16_t>(v->get<std::uint64_t>()));
}

Bridging::VlanId Fields::tag(const char* name) const {
   return Bridging::VlanId(static_cast<std::uint16_t>(integer(name, 0, 4094)));
}

Wire::IpGenAddr Fields::ip(const char* name) const {
   const Json* v = get(name);
   std::string expected = "an IPv4 or IPv6 address";
   if (!v || !v->is_string()) {
      fail(name, expected, v);
   }
   try {
      auto addr = Wire::IpGenAddr::parse(v->get<std::string>());
      if (addr.empty()) {
         fail(name, expected, v);
      }
      return addr;
   } catch (const ScenarioError&) {
      throw;
   } catch (const std::exception&) {
      fail(name, expected, v);
   }
}

Wire::EthAddr Fields::mac(const char* name) const {
   const Json* v = get(name);
   std::string expected = "a MAC address like \"00:11:22:33:44:55\"";
   if (!v || !v->is_string()) {
      fail(name, expected, v);
   }
   try {
      return Wire::EthAddr::parse(v->get<std::string>());
   } catch (const std::exception&) {
      fail(name, expected, v);
   }
}

Wire::IntfId Fields::intf(const char* name) const {
   const Json* v = get(name);
   std::string expected =
       "an interface name like \"Ethernet1\", \"Vlan10\", \"Pseudowire3\" or \"VlanPseudowire4\"";
   if (!v || !v->is_string()) {
      fail(name, expected, v);
   }
   try {
      auto intf = Wire::IntfId::parse(v->get<std::string>());
      if (intf.empty()) {
         fail(name, expected, v);
      }
      return intf;
   } catch (const ScenarioError&) {
      throw;
   } catch (const std::exception&) {
      fail(name, expected, v);
   }
}

std::optional<Wire::IntfId> Fields::optIntf(const char* name) const {
   if (!has(name)) {
      return std::nullopt;
   }
   return intf(name);
}

L3::IpPrefix Fields::prefix(const char* name) const {
   const Json* v = get(name);
   std::string expected = "an IP prefix like \"10.0.0.0/24\"";
   if (!v || !v->is_string() || v->get<std::string>().find('/') == std::string::npos) {
      fail(name, expected, v);
   }
   try {
      auto p = L3::IpPrefix::parse(v->get<std::string>());
      if (p.empty()) {
         fail(name, expected, v);
      }
      return p;
   } catch (const ScenarioError&) {
      throw;
   } catch (const std::exception&) {
      fail(name, expected, v);
   }
}

}  // namespace sim
