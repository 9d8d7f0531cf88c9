#pragma once

#include <stdexcept>
#include <string>

namespace Kor {

// A value outside the bounds of a ranged type; the text names the bound that was broken.
class RangeError : public std::out_of_range {
 public:
   explicit RangeError(const std::string& what) : std::out_of_range(what) {}
};

// A text that does not parse as the value it was meant to be.
class ParseError : public std::invalid_argument {
 public:
   explicit ParseError(const std::string& what) : std::invalid_argument(what) {}
};

// A number or name that an enumeration registry does not know.
class EnumError : public std::invalid_argument {
 public:
   explicit EnumError(const std::string& what) : std::invalid_argument(what) {}
};

}  // namespace Kor
