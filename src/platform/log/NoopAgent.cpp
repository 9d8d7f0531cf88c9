#include "NoopAgent.h"

#include <cstdlib>

namespace Log {

bool noopAgent() {
   return std::getenv(noopAgentVariable) != nullptr;
}

}  // namespace Log
