#include "support/hosts.h"

#include <cstdlib>

using namespace hosts;

std::atomic<std::size_t> hosts::blocks{0}, hosts::requests{0};
const char* const hosts::kShippedHome = COMNLIB_HOME;

namespace {

// A new block of the C library's, or null when this allocation is to fail.
template <class Allocate>
void* count(Allocate allocate) {
  const std::size_t number = ++requests;
  const Failing* const failing = Failing::current;
  void* const block = failing != nullptr && failing->hits(number) ? nullptr : allocate();
  if (block != nullptr) ++blocks;
  return block;
}

}  // namespace

void* comn_malloc(std::size_t size) {
  return count([=] { return std::malloc(size); });
}

void* comn_calloc(std::size_t items, std::size_t size) {
  return count([=] { return std::calloc(items, size); });
}

// The library never hands out null blocks: what a host's allocator makes of them is not known.
void* comn_realloc(void* block, std::size_t size) {
  if (block == nullptr) std::abort();
  void* const moved = count([=] { return std::realloc(block, size); });
  if (moved != nullptr) --blocks;
  return moved;
}

void comn_free(void* block) {
  if (block == nullptr) std::abort();
  --blocks;
  std::free(block);
}
