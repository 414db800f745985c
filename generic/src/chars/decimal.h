// The strings "00" to "99", for writing numbers two digits at a time.
#pragma once

#include <array>
#include <cstddef>

namespace comnlib {

inline constexpr auto kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t n = 0; n < 100; ++n) {
    pairs[2 * n] = static_cast<char>('0' + n / 10);
    pairs[2 * n + 1] = static_cast<char>('0' + n % 10);
  }
  return pairs;
}();

}  // namespace comnlib
