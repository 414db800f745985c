// The progress line on standard error: only on a terminal, only for long input, gone at the end.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace rowcopy {

class Progress {
 public:
  // `total` in bytes, or 0 where it is not known.
  Progress(std::uint64_t total, bool wanted);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void update(std::size_t rows, std::uint64_t bytes) {
    if (wanted_ && rows >= next_) show(rows, bytes);
  }

 private:
  static constexpr std::size_t kInterval = 50'000;  // rows

  void show(std::size_t rows, std::uint64_t bytes);

  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::uint64_t total_;
  std::size_t next_ = kInterval;
  bool wanted_;
  bool shown_ = false;
};

}  // namespace rowcopy
