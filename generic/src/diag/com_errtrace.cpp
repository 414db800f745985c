// The error trace and the debug output. Owns two process-wide states: the trace level and the debug
// output file.
#include <pthread.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>

#include "comnlib/list.h"
#include "diag/diag.h"
#include "diag/outfile.h"
#include "diag/uncancelled.h"

namespace comnlib {

std::atomic<CS_INT> internal::trace_level{COM_TRACE_NONE};

namespace {

struct NamedCode {
  CS_RETCODE code;
  const char* name;
};

#define COMNLIB_NAMED(code) \
  NamedCode {               \
    code, #code             \
  }
// The trace prints the names of these codes.
constexpr std::array kGeneralCodes = {
    COMNLIB_NAMED(CS_SUCCEED),       COMNLIB_NAMED(CS_FAIL),        COMNLIB_NAMED(CS_MEM_ERROR),
    COMNLIB_NAMED(CS_PENDING),       COMNLIB_NAMED(CS_QUIET),       COMNLIB_NAMED(CS_BUSY),
    COMNLIB_NAMED(CS_INTERRUPT),     COMNLIB_NAMED(CS_CANCELED),    COMNLIB_NAMED(CS_ROW_FAIL),
    COMNLIB_NAMED(CS_END_DATA),      COMNLIB_NAMED(CS_END_RESULTS), COMNLIB_NAMED(CS_END_ITEM),
    COMNLIB_NAMED(CS_NOMSG),         COMNLIB_NAMED(CS_TIMED_OUT),   COMNLIB_NAMED(CS_PASSTHRU_EOM),
    COMNLIB_NAMED(CS_PASSTHRU_MORE), COMNLIB_NAMED(CS_TRYING),
};
// The trace prints the numbers of these.
constexpr std::array kOtherCodes = {
    COMNLIB_NAMED(CS_CVT_OVERFLOW),    COMNLIB_NAMED(CS_CVT_UNDERFLOW),
    COMNLIB_NAMED(CS_CVT_PRECISION),   COMNLIB_NAMED(CS_CVT_SCALE),
    COMNLIB_NAMED(CS_CVT_SYNTAX),      COMNLIB_NAMED(CS_CVT_FORMAT),
    COMNLIB_NAMED(CS_CVT_DOMAIN),      COMNLIB_NAMED(CS_CVT_DIVZERO),
    COMNLIB_NAMED(CS_CVT_TRUNCATED),   COMNLIB_NAMED(CS_CVT_STYLE),
    COMNLIB_NAMED(CS_CVT_BADXLATE),    COMNLIB_NAMED(CS_CVT_NOXLATE),
    COMNLIB_NAMED(CS_CVT_SUBSTITUTED), COMNLIB_NAMED(CS_INTL_LIBERR),
    COMNLIB_NAMED(CS_INTL_NOFILE),     COMNLIB_NAMED(LM_NOTFOUND),
};
#undef COMNLIB_NAMED

// Null when the code is not among them.
const char* name_among(std::span<const NamedCode> codes, CS_RETCODE code) {
  const auto found = std::ranges::find(codes, code, &NamedCode::code);
  return found == codes.end() ? nullptr : found->name;
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

// Guards debug_file, which must not be closed while a writer uses it.
pthread_mutex_t debug_mutex = PTHREAD_MUTEX_INITIALIZER;
std::FILE* debug_file = nullptr;

// A child of fork has only the calling thread: a lock that another thread held would never be
// released there.
void remake_lock() {
  debug_mutex = PTHREAD_MUTEX_INITIALIZER;
}
[[gnu::constructor]] void remake_lock_after_fork() {
  pthread_atfork(nullptr, nullptr, remake_lock);
}

// In place of std::mutex and std::lock_guard, which report failure by an exception.
class DebugLock {
 public:
  DebugLock() { pthread_mutex_lock(&debug_mutex); }
  ~DebugLock() { pthread_mutex_unlock(&debug_mutex); }
  DebugLock(const DebugLock&) = delete;
  DebugLock& operator=(const DebugLock&) = delete;

 private:
  Uncancelled uncancelled_;
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

  if (const char* name = name_among(kGeneralCodes, code)) {
    comn_debug_print("(%s) file %s, line %d\n", name, base_name(file), static_cast<int>(line));
  } else {
    comn_debug_print("(%ld) file %s, line %d\n", static_cast<long>(code), base_name(file),
                     static_cast<int>(line));
  }
  return code;
}

const CS_CHAR* comn_result_name(CS_RETCODE code) {
  const char* name = name_among(kGeneralCodes, code);
  if (name == nullptr) name = name_among(kOtherCodes, code);
  return name == nullptr ? "" : name;
}

void com_errset(CS_INT level) {
  require(level == COM_TRACE_NONE || level == COM_TRACE_FAULTS || level == COM_TRACE_ALL);
  internal::trace_level.store(level, std::memory_order_relaxed);
}

CS_RETCODE comn_debug_setfile(CS_VOID*, const CS_CHAR* path, CS_BOOL on) {
  const DebugLock lock;
  close_debug_file();
  if (on == 0 || path == nullptr) return CS_SUCCEED;
  debug_file = open_output(path, Contents::kEmptied);
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
  std::fflush(output);  // the lines just before a stop matter most
}
