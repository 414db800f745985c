// The tests' host allocator: counts live blocks and fails on demand. It replaces the library's weak
// defaults in every test binary.
#pragma once

#include <cstddef>

namespace host_alloc {

// Blocks allocated through comn_malloc, comn_calloc and comn_realloc and not yet freed.
std::size_t live_blocks();

// How often memory has been asked for, in vain or not.
std::size_t allocations();

// While it lives, makes allocations fail: the `first`-th from now on (1 is the next one), once or
// from there on. The destructor ends it.
class Failing {
 public:
  enum class Mode { kOnce, kFromThereOn };
  explicit Failing(std::size_t first, Mode mode = Mode::kOnce);
  ~Failing();
  Failing(const Failing&) = delete;
  Failing& operator=(const Failing&) = delete;

  // Whether the chosen allocation has been reached.
  bool reached() const;
};

}  // namespace host_alloc
