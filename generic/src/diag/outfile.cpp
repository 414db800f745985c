#include "diag/outfile.h"

#include <fcntl.h>
#include <unistd.h>

namespace comnlib {

std::FILE* open_output(const char* path, Contents contents) {
  const bool emptied = contents == Contents::kEmptied;
  constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const int descriptor = ::open(path, kFlags | (emptied ? O_TRUNC : O_APPEND), 0666);
  if (descriptor < 0) return nullptr;
  std::FILE* const file = ::fdopen(descriptor, emptied ? "w" : "a");
  if (file == nullptr) ::close(descriptor);
  return file;
}

}  // namespace comnlib
