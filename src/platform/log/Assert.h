#pragma once

#include <string_view>

namespace Log {

// The programming-error path: writes `text` (the condition's text) and an end of line to standard
// error, unbuffered, and aborts the process. Bad or unsupported input never comes here: it is
// traced and skipped. Never returns.
[[noreturn]] void falAssertFail(std::string_view text);

}  // namespace Log

// FAL_ASSERT(cond): when `cond` is false, fails with the condition's own text.
// FAL_ASSERT(cond, text): the same with a text of its own, for the assertions whose message names
// the condition otherwise than the code spells it (e.g. FAL_ASSERT(vrfName == defaultVrf,
// "vrf == L3::VrfName::defaultVrf()")). The text is evaluated only on failure.
#define FAL_ASSERT(...) \
   MPLSFWD_ASSERT_PICK(__VA_ARGS__, MPLSFWD_ASSERT_TEXT, MPLSFWD_ASSERT_COND, )(__VA_ARGS__)
#define MPLSFWD_ASSERT_PICK(a, b, name, ...) name
#define MPLSFWD_ASSERT_COND(cond) MPLSFWD_ASSERT_TEXT(cond, #cond)
#define MPLSFWD_ASSERT_TEXT(cond, text) \
   do {                                 \
      if (!(cond)) [[unlikely]] {       \
         ::Log::falAssertFail(text);    \
      }                                 \
   } while (false)
