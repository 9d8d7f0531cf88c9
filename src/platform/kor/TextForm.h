#pragma once

#include <cstdint>
#include <initializer_list>
#include <sstream>
#include <string>
#include <string_view>

#include "Errors.h"

namespace Kor {

// The runtime's text of a raw object reference: its identity, or "None" for null.
std::string refText(const void* object);

// Joins `parts` into one string. Messages are built with it rather than with a chain of
// `"text" + std::string(x) + ...`: that chain goes through std::string's insert-at-front, in
// which GCC 12 at -O3 reports a false -Wrestrict overlap.
std::string concat(std::initializer_list<std::string_view> parts);

// Stream-based text form of anything with operator<<.
template <class T>
std::string toText(const T& value) {
   std::ostringstream os;
   os << value;
   return os.str();
}

// Reader for the reflection text forms "Value('Type', ** {'a': x, 'b': y})". Fields are read in
// declaration order; each value runs up to the next top-level ", '" or the closing "})", with
// brackets and quotes nesting so that a field may itself be a Value(...) text.
class ValueTextReader {
 public:
   ValueTextReader(std::string_view text, std::string_view typeName);
   // The raw text of the next field, which must be named `field`.
   std::string_view field(std::string_view field);
   // Checks that nothing but the closing "})" remains.
   void finish();

 private:
   [[noreturn]] void fail(const std::string& what) const;
   std::string_view text_;
   std::string typeName_;
   std::size_t pos_ = 0;
   bool first_ = true;
};

std::uint64_t parseUnsigned(std::string_view text, std::uint64_t max, std::string_view what);

}  // namespace Kor
