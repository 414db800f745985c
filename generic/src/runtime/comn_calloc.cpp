// Weak default of the host allocator's comn_calloc, alone in its module so that a host's own wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void* comn_calloc(size_t count, size_t size) {
  return std::calloc(count, size);
}
