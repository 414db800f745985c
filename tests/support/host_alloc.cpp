#include "support/host_alloc.h"

#include <atomic>
#include <cstdlib>

#include "comnlib/memory.h"

namespace {

std::atomic<std::size_t> live{0};
std::atomic<std::size_t> asked{0};
std::atomic<std::size_t> countdown{0};  // 0: nothing fails
std::atomic<bool> keep_failing{false};
std::atomic<bool> has_failed{false};

bool fails_now() {
  ++asked;
  if (has_failed.load()) return keep_failing.load();
  std::size_t left = countdown.load();
  while (left != 0 && !countdown.compare_exchange_weak(left, left - 1)) {
  }
  if (left != 1) return false;
  has_failed.store(true);
  return true;
}

void* counted(void* block) {
  if (block != nullptr) ++live;
  return block;
}

}  // namespace

namespace host_alloc {

std::size_t live_blocks() {
  return live.load();
}

std::size_t allocations() {
  return asked.load();
}

Failing::Failing(std::size_t first, Mode mode) {
  has_failed.store(false);
  keep_failing.store(mode == Mode::kFromThereOn);
  countdown.store(first);
}

Failing::~Failing() {
  countdown.store(0);
  has_failed.store(false);
  keep_failing.store(false);
}

bool Failing::reached() const {
  return has_failed.load();
}

}  // namespace host_alloc

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
