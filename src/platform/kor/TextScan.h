#pragma once

#include <string_view>

namespace Kor {

// `s` without the blanks (spaces and tabs) at either end.
inline std::string_view trimBlanks(std::string_view s) {
   while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) {
      s.remove_prefix(1);
   }
   while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) {
      s.remove_suffix(1);
   }
   return s;
}

// The value of a hexadecimal digit of either case, or -1 for any other character.
inline int hexDigitValue(char c) {
   if (c >= '0' && c <= '9') {
      return c - '0';
   }
   if (c >= 'a' && c <= 'f') {
      return c - 'a' + 10;
   }
   if (c >= 'A' && c <= 'F') {
      return c - 'A' + 10;
   }
   return -1;
}

}  // namespace Kor
