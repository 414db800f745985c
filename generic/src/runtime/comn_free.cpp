// Weak default of the host allocator's comn_free, in a module of its own so that a host's
// definition wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void comn_free(void* block) {
  std::free(block);
}
