#pragma once

#include <string>

namespace Kor {

using String = std::string;
// The name of an entity (its identity in traces and in the state database's reflection).
using Name = std::string;

}  // namespace Kor
