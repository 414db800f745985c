// UTF-8, read strictly: no overlong forms, no surrogates, nothing beyond U+10FFFF.
#pragma once

#include <cstddef>
#include <span>

#include "comnlib/types.h"

namespace comnlib {

struct CodePoint {
  CS_UINT value;
  std::size_t bytes;  // that it takes; 0: malformed
};

// Reads the first character of a text that is not empty.
constexpr CodePoint decode_utf8(std::span<const CS_BYTE> text) {
  const CS_BYTE first = text[0];
  if (first < 0x80) return {first, 1};
  const std::size_t bytes = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (first < 0xC2 || first > 0xF4 || text.size() < bytes) return {0, 0};
  CS_UINT value = first & (0xFFU >> (bytes + 1));
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((text[i] & 0xC0) != 0x80) return {0, 0};
    value = value << 6 | (text[i] & 0x3FU);
  }
  const bool overlong = (bytes == 3 && value < 0x800) || (bytes == 4 && value < 0x10000);
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (overlong || surrogate || value > 0x10FFFF) return {0, 0};
  return {value, bytes};
}

}  // namespace comnlib
