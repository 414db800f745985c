#include "support/hosts.h"

#include <cstdlib>

namespace {

std::atomic<std::size_t> live{0};
std::atomic<std::size_t> asked{0};
std::atomic<std::size_t> failing{0};  // which one, counted like `asked`; 0: none
std::atomic<bool> keep_failing{false};

bool fails_now() {
  const std::size_t number = ++asked;
  const std::size_t first = failing.load();
  return first != 0 && (number == first || (number > first && keep_failing.load()));
}

void* counted(void* block) {
  if (block != nullptr) ++live;
  return block;
}

}  // namespace

namespace hosts {

const char* const kShippedHome = COMNLIB_HOME;

std::size_t live_blocks() {
  return live.load();
}

std::size_t allocations() {
  return asked.load();
}

Failing::Failing(std::size_t first, Mode mode) {
  keep_failing.store(mode == Mode::kFromThereOn);
  failing.store(asked.load() + first);
}

Failing::~Failing() {
  failing.store(0);
}

bool Failing::reached() const {
  return asked.load() >= failing.load();
}

}  // namespace hosts

void* comn_malloc(std::size_t size) {
  return fails_now() ? nullptr : counted(std::malloc(size));
}

void* comn_calloc(std::size_t count, std::size_t size) {
  return fails_now() ? nullptr : counted(std::calloc(count, size));
}

// The library never hands out null blocks: what a host's allocator makes of them is not known.
void* comn_realloc(void* block, std::size_t size) {
  if (block == nullptr) std::abort();
  return fails_now() ? nullptr : std::realloc(block, size);
}

void comn_free(void* block) {
  if (block == nullptr) std::abort();
  --live;
  std::free(block);
}
