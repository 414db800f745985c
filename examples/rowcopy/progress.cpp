#include "progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace rowcopy {

Progress::Progress(std::string activity, std::uint64_t total)
    : activity_(std::move(activity)), total_(total), on_terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::show(std::size_t rows, std::uint64_t bytes) {
  shown_ = true;
  next_ = rows + kInterval;
  if (total_ == 0) {
    std::fprintf(stderr, "\rrowcopy: %s: %zu rows", activity_.c_str(), rows);
  } else {
    std::fprintf(stderr, "\rrowcopy: %s: %zu rows, %d %%", activity_.c_str(), rows,
                 static_cast<int>(bytes * 100 / total_));
  }
}

}  // namespace rowcopy
