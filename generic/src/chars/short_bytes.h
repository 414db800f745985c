// Copies and fills of a few bytes, for which a call of memmove or memset would take longer than the
// work. Up to twice the size of a word they are done by two words, which may overlap.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "comnlib/types.h"

namespace comnlib {
namespace internal {

template <class Word>
void copy_ends(CS_BYTE* dest, const CS_BYTE* src, std::size_t size) {
  Word first;
  Word last;
  std::memcpy(&first, src, sizeof first);
  std::memcpy(&last, src + size - sizeof last, sizeof last);
  std::memcpy(dest, &first, sizeof first);
  std::memcpy(dest + size - sizeof last, &last, sizeof last);
}

template <class Word>
void fill_ends(CS_BYTE* dest, Word word, std::size_t size) {
  std::memcpy(dest, &word, sizeof word);
  std::memcpy(dest + size - sizeof word, &word, sizeof word);
}

}  // namespace internal

// Source and destination may overlap.
[[gnu::always_inline]] inline void copy_bytes(CS_BYTE* dest, const CS_BYTE* src, std::size_t size) {
  if (size > 32) {
    std::memmove(dest, src, size);
  } else if (size >= 16) {
    internal::copy_ends<__m128i_u>(dest, src, size);
  } else if (size >= 8) {
    internal::copy_ends<std::uint64_t>(dest, src, size);
  } else if (size >= 4) {
    internal::copy_ends<std::uint32_t>(dest, src, size);
  } else if (size >= 2) {
    internal::copy_ends<std::uint16_t>(dest, src, size);
  } else if (size == 1) {
    *dest = *src;
  }
}

[[gnu::always_inline]] inline void fill_bytes(CS_BYTE* dest, CS_BYTE byte, std::size_t size) {
  const std::uint64_t word = byte * std::uint64_t{0x0101010101010101};
  if (size > 32) {
    std::memset(dest, byte, size);
  } else if (size >= 16) {
    internal::fill_ends(dest, _mm_set1_epi8(static_cast<char>(byte)), size);
  } else if (size >= 8) {
    internal::fill_ends(dest, word, size);
  } else if (size >= 4) {
    internal::fill_ends(dest, static_cast<std::uint32_t>(word), size);
  } else if (size >= 2) {
    internal::fill_ends(dest, static_cast<std::uint16_t>(word), size);
  } else if (size == 1) {
    *dest = byte;
  }
}

}  // namespace comnlib
