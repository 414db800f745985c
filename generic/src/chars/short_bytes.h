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

// What fills the first 16 bytes of a room of 16 to 32 bytes, and then the last 16.
struct RoomFill {
  __m128i first;
  __m128i last;
};

[[gnu::always_inline]] inline void fill_room(CS_BYTE* dest, std::size_t room, RoomFill fill) {
  std::memcpy(dest, &fill.first, sizeof fill.first);
  std::memcpy(dest + room - sizeof fill.last, &fill.last, sizeof fill.last);
}

namespace internal {
// The text may be in the room, and is read before the room is filled.
template <class Word>
[[gnu::always_inline]] inline void copy_ends_filled(CS_BYTE* dest, std::size_t room,
                                                    std::span<const CS_BYTE> text, RoomFill fill) {
  Word first;
  Word last;
  const std::size_t at = text.size() - sizeof(Word);
  std::memcpy(&first, text.data(), sizeof first);
  std::memcpy(&last, text.data() + at, sizeof last);
  fill_room(dest, room, fill);
  std::memcpy(dest, &first, sizeof first);
  std::memcpy(dest + at, &last, sizeof last);
}
}  // namespace internal

// Copies a text to such a room, in which it fits, and fills the rest.
[[gnu::always_inline]] inline void copy_filled(CS_BYTE* dest, std::size_t room,
                                               std::span<const CS_BYTE> text, RoomFill fill) {
  const std::size_t size = text.size();
  if (size >= 16) {
    internal::copy_ends_filled<__m128i_u>(dest, room, text, fill);
  } else if (size >= 8) {
    internal::copy_ends_filled<std::uint64_t>(dest, room, text, fill);
  } else if (size >= 4) {
    internal::copy_ends_filled<std::uint32_t>(dest, room, text, fill);
  } else if (size >= 2) {
    internal::copy_ends_filled<std::uint16_t>(dest, room, text, fill);
  } else if (size == 1) {
    internal::copy_ends_filled<CS_BYTE>(dest, room, text, fill);
  } else {
    fill_room(dest, room, fill);
  }
}

}  // namespace comnlib
