#pragma once

#include <stdexcept>
#include <string_view>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/kor/TextForm.h>

namespace Fal {

// Assembly check of a state machine's tables: a missing one is the agent's mistake, reported with
// the machine's and the table's names before anything is built.
template <class T>
void requireTable(const Kor::Ptr<T>& table, std::string_view machine, std::string_view name) {
   if (!table) {
      throw std::invalid_argument(
          Kor::concat({machine, " machine: table '", name, "' is missing"}));
   }
}

}  // namespace Fal
