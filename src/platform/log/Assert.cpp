#include "Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Log {

void falAssertFail(std::string_view text) {
   std::fwrite(text.data(), 1, text.size(), stderr);
   std::fputc('\n', stderr);
   std::fflush(stderr);
   std::abort();
}

}  // namespace Log
