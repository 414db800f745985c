// The stops: pointer check, assertion failure and panic, and the set-up diagnostic com_perr. Their
// texts never change, since log scanners of hosts look for them.
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "diag/diag.h"
#include "diag/outfile.h"
#include "diag/uncancelled.h"

namespace {

// Standard error is closed first, so that buffered text reaches its file before the core is taken.
[[noreturn]] void abort_process() {
  std::fclose(stderr);
  std::abort();
}

}  // namespace

void com_chkptr(const CS_VOID* pointer, const CS_CHAR* file, CS_INT line) {
  if (pointer != nullptr) return;
  std::fprintf(stderr, "\n\rInvalid pointer 0x%X, file '%s' line %d\n\r", 0U, file,
               static_cast<int>(line));
  abort_process();
}

void com_bomb(const CS_CHAR* file, CS_INT line) {
  std::fprintf(stderr, "\n\rassertion failed, file '%s' line %d\n\r", file, static_cast<int>(line));
  abort_process();
}

void com_panic(const CS_CHAR* text) {
  comnlib::check_pointer(text);
  std::fprintf(stderr, "\nINTERNAL ERROR: unrecoverable error: %s\n", text);
  std::exit(-1);
}

void com_perr(const CS_CHAR* text) {
  comnlib::check_pointer(text);
  const comnlib::Uncancelled uncancelled;
  std::fputs(text, stderr);
  if (std::FILE* log = comnlib::open_output("tlvinit.err", comnlib::Contents::kKept)) {
    std::fputs(text, log);
    std::fclose(log);
  }
}

void comnlib::print_error(const char* format, ...) {
  std::array<char, 3072> text;
  va_list args;
  va_start(args, format);
  std::vsnprintf(text.data(), text.size(), format, args);
  va_end(args);
  com_perr(text.data());
}
