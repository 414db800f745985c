// Weak default of the host allocator's comn_realloc, alone in its module so that a host's own wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void* comn_realloc(void* block, size_t size) {
  return std::realloc(block, size);
}
