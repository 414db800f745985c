// What every other room needs of the diagnostics: thin inline checks around the public routines.
// They report the place of their caller, so each routine checks its preconditions itself.
#pragma once

#include <atomic>
#include <source_location>

#include "comnlib/diag.h"

namespace comnlib {

using CallSite = std::source_location;

namespace internal {
// The level of com_errset. Every return reads it, so the check is a single load.
[[gnu::visibility("hidden")]] extern std::atomic<CS_INT> trace_level;
}  // namespace internal

// Stops the process. For states that no argument and no data can cause.
[[noreturn]] inline void stop(CallSite site = CallSite::current()) {
  com_bomb(site.file_name(), static_cast<CS_INT>(site.line()));
}

// Stops the process unless a precondition holds.
inline void require(bool condition, CallSite site = CallSite::current()) {
  if (!condition) [[unlikely]]
    stop(site);
}

inline void check_pointer(const void* pointer, CallSite site = CallSite::current()) {
  if (pointer != nullptr) [[likely]]
    return;
  com_chkptr(pointer, site.file_name(), static_cast<CS_INT>(site.line()));
  __builtin_unreachable();
}

// Passes a formatted text to com_perr. There is room for two paths and the words around them.
[[gnu::format(printf, 1, 2)]] void print_error(const char* format, ...);

// Passes a result code through the error trace: the last thing a public routine does.
inline CS_RETCODE trace(CS_RETCODE code, CallSite site = CallSite::current()) {
  if (internal::trace_level.load(std::memory_order_relaxed) == COM_TRACE_NONE) [[likely]]
    return code;
  return com_errtrace(code, site.file_name(), static_cast<CS_INT>(site.line()));
}

}  // namespace comnlib
