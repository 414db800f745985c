// Weak default of the host allocator's comn_realloc, in a module of its own so that a host's
// definition wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void* comn_realloc(void* block, size_t size) {
  return std::realloc(block, size);
}
