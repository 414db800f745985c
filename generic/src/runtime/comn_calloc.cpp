// Weak default of the host allocator's comn_calloc, in a module of its own so that a host's
// definition wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void* comn_calloc(size_t count, size_t size) {
  return std::calloc(count, size);
}
