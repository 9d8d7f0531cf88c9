#pragma once

#include <string_view>

namespace Log {

// The programming-error path: writes `text` (the condition's text) and an end of line to standard
// error, unbuffered, and aborts the process. Bad or unsupported input never comes here: it is
// traced and skipped. Never returns.
[[noreturn]] void falAssertFail(std::string_view text);

}  // namespace Log

// FAL_ASSERT(cond, "text"): when `cond` is false, fails with `text`, which names the condition as
// the reader should see it (e.g. FAL_ASSERT(vrf == L3::VrfName::defaultVrf(),
// "vrf == L3::VrfName::defaultVrf()")). The text is evaluated only on failure.
#define FAL_ASSERT(cond, text)       \
   do {                              \
      if (!(cond)) [[unlikely]] {    \
         ::Log::falAssertFail(text); \
      }                              \
   } while (false)
