// Weak default of the host allocator's comn_free, alone in its module so that a host's own wins.
#include <cstdlib>

#include "comnlib/memory.h"

__attribute__((weak)) void comn_free(void* block) {
  std::free(block);
}
