// How far apart the values are that a test takes of very many.
#pragma once

#include <cstdlib>

namespace stride {

// 1, so all of them, unless that would take too long: AddressSanitizer makes it more, and so does
// the environment, for valgrind. A prime number, which meets the values of all loops in turn.
inline int between_values() {
#ifdef __SANITIZE_ADDRESS__
  constexpr int kUsual = 23;
#else
  constexpr int kUsual = 1;
#endif
  const char* given = std::getenv("COMNLIB_TEST_STRIDE");
  return given == nullptr ? kUsual : std::atoi(given);
}

}  // namespace stride
