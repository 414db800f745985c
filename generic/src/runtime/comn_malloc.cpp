// Weak default of the host allocator's comn_malloc, alone in its module so that a host's own wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void* comn_malloc(size_t size) {
  return std::malloc(size);
}
