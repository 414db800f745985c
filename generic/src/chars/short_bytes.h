// Copies and fills of a few bytes, for which a call of memmove or memset would take longer than the
// work. Up to twice the size of a word they are done by two words, which may overlap.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

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

// `word` is made of one byte, 16 times.
template <class Word>
[[gnu::always_inline]] inline void fill_ends(CS_BYTE* dest, __m128i word, std::size_t size) {
  std::memcpy(dest, &word, sizeof(Word));
  std::memcpy(dest + size - sizeof(Word), &word, sizeof(Word));
}

// The first and the last 16 bytes of the room are filled before the copy.
template <class Word>
[[gnu::always_inline]] inline void copy_ends_padded(CS_BYTE* dest, std::size_t room,
                                                    const CS_BYTE* src, std::size_t size,
                                                    __m128i fill) {
  Word first;
  Word last;
  std::memcpy(&first, src, sizeof first);
  std::memcpy(&last, src + size - sizeof last, sizeof last);
  fill_ends<__m128i>(dest, fill, room);
  std::memcpy(dest, &first, sizeof first);
  std::memcpy(dest + size - sizeof last, &last, sizeof last);
}

}  // namespace internal

// Copies up to 16 bytes. Source and destination may overlap.
[[gnu::always_inline]] inline void copy_few(CS_BYTE* dest, const CS_BYTE* src, std::size_t size) {
  if (size >= 8) {
    internal::copy_ends<std::uint64_t>(dest, src, size);
  } else if (size >= 4) {
    internal::copy_ends<std::uint32_t>(dest, src, size);
  } else if (size >= 2) {
    internal::copy_ends<std::uint16_t>(dest, src, size);
  } else if (size == 1) {
    *dest = *src;
  }
}

// The same for any size.
[[gnu::always_inline]] inline void copy_bytes(CS_BYTE* dest, const CS_BYTE* src, std::size_t size) {
  if (size > 32) {
    std::memmove(dest, src, size);
  } else if (size >= 16) {
    internal::copy_ends<__m128i_u>(dest, src, size);
  } else {
    copy_few(dest, src, size);
  }
}

[[gnu::always_inline]] inline void fill_bytes(CS_BYTE* dest, CS_BYTE byte, std::size_t size) {
  const __m128i word = _mm_set1_epi8(static_cast<char>(byte));
  if (size > 32) {
    std::memset(dest, byte, size);
  } else if (size >= 16) {
    internal::fill_ends<__m128i>(dest, word, size);
  } else if (size >= 8) {
    internal::fill_ends<std::uint64_t>(dest, word, size);
  } else if (size >= 4) {
    internal::fill_ends<std::uint32_t>(dest, word, size);
  } else if (size >= 2) {
    internal::fill_ends<std::uint16_t>(dest, word, size);
  } else if (size == 1) {
    *dest = byte;
  }
}

// Fills a room of 16 to 32 bytes.
[[gnu::always_inline]] inline void fill_room(CS_BYTE* dest, std::size_t room, CS_BYTE fill) {
  internal::fill_ends<__m128i>(
      dest, fill == 0 ? _mm_setzero_si128() : _mm_set1_epi8(static_cast<char>(fill)), room);
}

// Copies a text that fits in `room` bytes and fills the rest of them.
[[gnu::always_inline]] inline void copy_padded(CS_BYTE* dest, std::size_t room,
                                               std::span<const CS_BYTE> text, CS_BYTE fill) {
  const std::size_t size = text.size();
  const CS_BYTE* const src = text.data();
  if (room - 16 > 16) {
    copy_bytes(dest, src, size);
    fill_bytes(dest + size, fill, room - size);
    return;
  }
  const __m128i word = fill == 0 ? _mm_setzero_si128() : _mm_set1_epi8(static_cast<char>(fill));
  if (size >= 16) {
    internal::copy_ends_padded<__m128i_u>(dest, room, src, size, word);
  } else if (size >= 8) {
    internal::copy_ends_padded<std::uint64_t>(dest, room, src, size, word);
  } else if (size >= 4) {
    internal::copy_ends_padded<std::uint32_t>(dest, room, src, size, word);
  } else if (size >= 2) {
    internal::copy_ends_padded<std::uint16_t>(dest, room, src, size, word);
  } else if (size == 1) {
    internal::copy_ends_padded<CS_BYTE>(dest, room, src, size, word);
  } else {
    internal::fill_ends<__m128i>(dest, word, room);
  }
}

}  // namespace comnlib
