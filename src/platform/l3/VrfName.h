#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace L3 {

// The name of a VRF: a text of at most maxLength bytes. The default VRF is "default". Used as the
// key of per-VRF state and tables; ordered and hashed by its bytes. Construction from a longer
// text throws Kor::RangeError, so a VrfName in hand is always within bounds.
class VrfName {
 public:
   static constexpr std::size_t maxLength = 100;

   VrfName() = default;
   VrfName(std::string_view name);
   VrfName(const std::string& name) : VrfName(std::string_view(name)) {}
   VrfName(const char* name) : VrfName(std::string_view(name)) {}

   static const VrfName& defaultVrf();

   const std::string& stringValue() const { return name_; }
   std::size_t bytes() const { return name_.size(); }
   bool empty() const { return name_.empty(); }
   std::size_t hash() const;

   bool operator==(const VrfName& other) const = default;
   bool operator<(const VrfName& other) const { return name_ < other.name_; }

 private:
   std::string name_;
};

std::ostream& operator<<(std::ostream& os, const VrfName& name);

}  // namespace L3
