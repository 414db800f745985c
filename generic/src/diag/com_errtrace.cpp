// The error trace and the debug output. Owns two process-wide states: the trace level and the debug
// output file.
#include <pthread.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "diag/diag.h"

namespace comnlib {

std::atomic<CS_INT> internal::trace_level{COM_TRACE_NONE};

namespace {

struct NamedCode {
  CS_RETCODE code;
  const char* name;
};

#define COMNLIB_NAMED(code) \
  { code, #code }
constexpr std::array kNamedCodes = {
    NamedCode COMNLIB_NAMED(CS_SUCCEED),      NamedCode COMNLIB_NAMED(CS_FAIL),
    NamedCode COMNLIB_NAMED(CS_MEM_ERROR),    NamedCode COMNLIB_NAMED(CS_PENDING),
    NamedCode COMNLIB_NAMED(CS_QUIET),        NamedCode COMNLIB_NAMED(CS_BUSY),
    NamedCode COMNLIB_NAMED(CS_INTERRUPT),    NamedCode COMNLIB_NAMED(CS_CANCELED),
    NamedCode COMNLIB_NAMED(CS_ROW_FAIL),     NamedCode COMNLIB_NAMED(CS_END_DATA),
    NamedCode COMNLIB_NAMED(CS_END_RESULTS),  NamedCode COMNLIB_NAMED(CS_END_ITEM),
    NamedCode COMNLIB_NAMED(CS_NOMSG),        NamedCode COMNLIB_NAMED(CS_TIMED_OUT),
    NamedCode COMNLIB_NAMED(CS_PASSTHRU_EOM), NamedCode COMNLIB_NAMED(CS_PASSTHRU_MORE),
    NamedCode COMNLIB_NAMED(CS_TRYING),
};
#undef COMNLIB_NAMED

const char* name_of(CS_RETCODE code) {
  const auto* found = std::ranges::find(kNamedCodes, code, &NamedCode::code);
  return found == kNamedCodes.end() ? nullptr : found->name;
}

// Codes that belong to normal work and are left out at COM_TRACE_FAULTS.
constexpr bool is_routine(CS_RETCODE code) {
  return code == CS_SUCCEED || code == CS_PENDING || code == CS_INTERRUPT || code == CS_END_DATA ||
         code == CS_END_RESULTS || code == CS_END_ITEM;
}

const char* base_name(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

// Guards debug_file: a writer must not see it closed under its hands.
pthread_mutex_t debug_mutex = PTHREAD_MUTEX_INITIALIZER;
std::FILE* debug_file = nullptr;

// In place of std::mutex and std::lock_guard, which report failure by an exception. Output is a
// cancellation point: a thread that ended there would keep the lock for ever.
class DebugLock {
 public:
  DebugLock() {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
    pthread_mutex_lock(&debug_mutex);
  }
  ~DebugLock() {
    pthread_mutex_unlock(&debug_mutex);
    pthread_setcancelstate(cancel_state_, nullptr);
  }
  DebugLock(const DebugLock&) = delete;
  DebugLock& operator=(const DebugLock&) = delete;

 private:
  int cancel_state_ = PTHREAD_CANCEL_ENABLE;
};

void close_debug_file() {
  if (debug_file != nullptr) std::fclose(debug_file);
  debug_file = nullptr;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com_errtrace(CS_RETCODE code, const CS_CHAR* file, CS_INT line) {
  check_pointer(file);
  const CS_INT level = internal::trace_level.load(std::memory_order_relaxed);
  if (level == COM_TRACE_NONE || (level == COM_TRACE_FAULTS && is_routine(code))) return code;

  if (const char* name = name_of(code)) {
    comn_debug_print("(%s) file %s, line %d\n", name, base_name(file), static_cast<int>(line));
  } else {
    comn_debug_print("(%ld) file %s, line %d\n", static_cast<long>(code), base_name(file),
                     static_cast<int>(line));
  }
  return code;
}

void com_errset(CS_INT level) {
  require(level == COM_TRACE_NONE || level == COM_TRACE_FAULTS || level == COM_TRACE_ALL);
  internal::trace_level.store(level, std::memory_order_relaxed);
}

CS_RETCODE comn_debug_setfile(CS_VOID*, const CS_CHAR* path, CS_BOOL on) {
  const DebugLock lock;
  close_debug_file();
  if (on == 0 || path == nullptr) return CS_SUCCEED;
  debug_file = std::fopen(path, "w");
  return debug_file == nullptr ? CS_FAIL : CS_SUCCEED;
}

void comn_debug_print(const CS_CHAR* format, ...) {
  va_list args;
  va_start(args, format);
  comn_debug_vprint(format, args);
  va_end(args);
}

void comn_debug_vprint(const CS_CHAR* format, va_list args) {
  check_pointer(format);
  const DebugLock lock;
  std::FILE* const output = debug_file == nullptr ? stdout : debug_file;
  std::vfprintf(output, format, args);
  std::fflush(output);  // the lines before a stop are the ones that are wanted
}
