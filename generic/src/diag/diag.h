// What every other room needs of the diagnostics: thin inline checks around the public routines.
// The place they report is the caller's, so a routine that states a precondition calls them itself.
#pragma once

#include <atomic>
#include <source_location>

#include "comnlib/diag.h"

namespace comnlib {

using Place = std::source_location;

namespace internal {
// Level of com_errset; read on every return, so kept where the check is one load.
[[gnu::visibility("hidden")]] extern std::atomic<CS_INT> trace_level;
}  // namespace internal

// Stops the process. For states that no argument and no data can bring about.
[[noreturn]] inline void stop(Place place = Place::current()) {
  com_bomb(place.file_name(), static_cast<CS_INT>(place.line()));
}

// Stops the process unless a precondition holds.
inline void require(bool condition, Place place = Place::current()) {
  if (!condition) [[unlikely]]
    stop(place);
}

inline void check_pointer(const void* pointer, Place place = Place::current()) {
  if (pointer != nullptr) [[likely]]
    return;
  com_chkptr(pointer, place.file_name(), static_cast<CS_INT>(place.line()));
  __builtin_unreachable();
}

// com_perr of a formatted text, which has room for two paths and the words around them.
[[gnu::format(printf, 1, 2)]] void print_error(const char* format, ...);

// Passes a result code through the error trace: the last thing a public routine does.
inline CS_RETCODE trace(CS_RETCODE code, Place place = Place::current()) {
  if (internal::trace_level.load(std::memory_order_relaxed) == COM_TRACE_NONE) [[likely]]
    return code;
  return com_errtrace(code, place.file_name(), static_cast<CS_INT>(place.line()));
}

}  // namespace comnlib
