#include "progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>

namespace rowcopy {

Progress::Progress(std::uint64_t total, bool wanted)
    : total_(total), wanted_(wanted && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::show(std::size_t rows, std::uint64_t bytes) {
  shown_ = true;
  next_ = rows + kInterval;
  std::fprintf(stderr, "\r\033[Krowcopy: %zu rows", rows);
  if (total_ == 0 || bytes == 0) return;
  const double share = static_cast<double>(bytes) / static_cast<double>(total_);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
  const auto left = std::lround(seconds / share - seconds);
  std::fprintf(stderr, ", %d %%, %ld:%02ld left", static_cast<int>(share * 100), left / 60,
               left % 60);
}

}  // namespace rowcopy
