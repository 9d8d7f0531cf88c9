#include "TextForm.h"

#include <charconv>
#include <cstdio>

namespace Kor {

std::string concat(std::initializer_list<std::string_view> parts) {
   std::size_t size = 0;
   for (std::string_view p : parts) {
      size += p.size();
   }
   std::string out;
   out.reserve(size);
   for (std::string_view p : parts) {
      out.append(p);
   }
   return out;
}

std::string refText(const void* object) {
   if (!object) {
      return "None";
   }
   char buf[32];
   std::snprintf(buf, sizeof buf, "Ref(%p)", object);
   return buf;
}

ValueTextReader::ValueTextReader(std::string_view text, std::string_view typeName)
    : text_(text), typeName_(typeName) {
   std::string head = concat({"Value('", typeName_, "', ** {"});
   if (text_.substr(0, head.size()) != head) {
      fail(concat({"expected it to start with ", head}));
   }
   pos_ = head.size();
}

std::string_view ValueTextReader::field(std::string_view name) {
   if (!first_) {
      if (text_.substr(pos_, 2) != ", ") {
         fail(concat({"expected ', ' before field '", name, "'"}));
      }
      pos_ += 2;
   }
   first_ = false;
   std::string key = concat({"'", name, "': "});
   if (text_.substr(pos_, key.size()) != key) {
      fail(concat({"expected field ", key}));
   }
   pos_ += key.size();
   std::size_t start = pos_;
   int depth = 0;
   bool quoted = false;
   for (; pos_ < text_.size(); ++pos_) {
      char c = text_[pos_];
      if (quoted) {
         quoted = c != '\'';
         continue;
      }
      if (c == '\'') {
         quoted = true;
      } else if (c == '(' || c == '{' || c == '[') {
         ++depth;
      } else if (c == ')' || c == ']') {
         --depth;
      } else if (c == '}') {
         if (depth == 0) {
            break;
         }
         --depth;
      } else if (c == ',' && depth == 0) {
         break;
      }
   }
   if (pos_ >= text_.size()) {
      fail(concat({"field '", name, "' is not terminated"}));
   }
   return text_.substr(start, pos_ - start);
}

void ValueTextReader::finish() {
   if (text_.substr(pos_) != "})") {
      fail("expected the closing '})'");
   }
}

void ValueTextReader::fail(const std::string& what) const {
   throw ParseError(concat({"cannot parse '", text_, "' as ", typeName_, ": ", what}));
}

std::uint64_t parseUnsigned(std::string_view text, std::uint64_t max, std::string_view what) {
   std::uint64_t v = 0;
   auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
   if (ec != std::errc() || end != text.data() + text.size() || text.empty() || v > max) {
      throw ParseError(concat({"cannot parse '", text, "' as ", what}));
   }
   return v;
}

}  // namespace Kor
