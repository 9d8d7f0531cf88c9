#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace sim {

// Collects the violations a whole-state check finds, one line each, built from its parts.
class ViolationReport {
 public:
   template <class... A>
   void fail(const A&... parts) {
      std::ostringstream os;
      (os << ... << parts);
      lines.push_back(os.str());
   }
   std::vector<std::string> lines;
};

}  // namespace sim
