#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Errors.h"

namespace Kor {

// Names and numbers of one enumeration, for text forms, parsing and reflection.
template <class E>
class EnumRegistry {
 public:
   EnumRegistry(std::string typeName, std::initializer_list<std::pair<E, const char*>> members)
       : typeName_(std::move(typeName)) {
      for (const auto& [value, name] : members) {
         members_.emplace_back(value, name);
      }
   }

   const std::string& typeName() const { return typeName_; }

   bool known(E value) const {
      for (const auto& m : members_) {
         if (m.first == value) {
            return true;
         }
      }
      return false;
   }
   // The name of a member; an unknown value prints as the type name and its number.
   std::string name(E value) const {
      for (const auto& m : members_) {
         if (m.first == value) {
            return m.second;
         }
      }
      return typeName_ + "(" + std::to_string(static_cast<long long>(value)) + ")";
   }
   E instance(unsigned long long number) const {
      for (const auto& m : members_) {
         if (static_cast<unsigned long long>(m.first) == number) {
            return m.first;
         }
      }
      throw EnumError(typeName_ + ": no member has the value " + std::to_string(number));
   }
   E instance(std::string_view text) const {
      for (const auto& m : members_) {
         if (text == m.second) {
            return m.first;
         }
      }
      throw EnumError(typeName_ + ": no member is named '" + std::string(text) + "'");
   }
   const std::vector<std::pair<E, std::string>>& members() const { return members_; }

 private:
   std::string typeName_;
   std::vector<std::pair<E, std::string>> members_;
};

}  // namespace Kor
