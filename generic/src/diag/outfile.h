// Files that diagnostics are written to.
#pragma once

#include <cstdio>

namespace comnlib {

enum class Contents { kKept, kEmptied };

// Opens `path` for writing, creates it where need be; null when that fails. A name in a directory
// that others may write to can be anything: a link is not followed, a FIFO that nobody reads is not
// waited for, and programs that the process starts do not get the file.
std::FILE* open_output(const char* path, Contents contents);

}  // namespace comnlib
