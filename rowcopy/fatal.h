// What ends a run with exit status 2: wrong usage, a file that cannot be used, a layout that does
// not fit. The text is one line and names the file, line and column concerned.
#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace rowcopy {

struct Fatal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A Fatal of the command line: its line is followed by a hint at --help.
struct UsageError : Fatal {
  using Fatal::Fatal;
};

// A failed call on a file, for the reason that errno holds.
[[noreturn]] inline void fail_at_file(const char* action, const std::string& name) {
  const int error = errno;
  throw Fatal(std::string("cannot ") + action + " " + name + ": " + std::strerror(error));
}

}  // namespace rowcopy
