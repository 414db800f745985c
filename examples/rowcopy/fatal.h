// What ends a run with exit status 2: wrong usage, a file that cannot be used, a layout that does
// not fit. The text is one line and names the file, line and column concerned.
#pragma once

#include <stdexcept>

namespace rowcopy {

struct Fatal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A Fatal of the command line: its line is followed by a hint at --help.
struct UsageError : Fatal {
  using Fatal::Fatal;
};

}  // namespace rowcopy
