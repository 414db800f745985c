// Weak default of the host allocator's comn_malloc, in a module of its own so that a host's
// definition wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void* comn_malloc(size_t size) {
  return std::malloc(size);
}
