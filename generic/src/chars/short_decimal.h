// Decimal numbers of few digits, which most columns of text hold. They are read in one register,
// with any blanks around them, and almost without branches that depend on the digits.
#pragma once

#include <emmintrin.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

#include "chars/ascii.h"
#include "chars/text.h"

namespace comnlib {

// The number `digits` / 10^`decimals`. Zero may have a sign too.
struct ShortDecimal {
  std::uint64_t digits;
  int decimals;
  bool negative;
};

namespace internal {

template <class Word>
Word load_as(const CS_BYTE* from) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// Loads up to 16 bytes, with zeros after them. Two words that may overlap hold them all; the bytes
// that the second word repeats are shifted out of it.
inline __m128i load_padded(const CS_BYTE* bytes, std::size_t size) {
  const auto low_quad = [](const CS_BYTE* from) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
  };
  const auto shift = [](std::size_t spare) {
    return _mm_cvtsi32_si128(static_cast<int>(8 * spare));
  };
  if (size >= 8) {
    const __m128i last = _mm_srl_epi64(low_quad(bytes + size - 8), shift(16 - size));
    return _mm_unpacklo_epi64(low_quad(bytes), last);
  }
  if (size >= 4) {
    const auto half = [](const CS_BYTE* from) { return _mm_cvtsi32_si128(load_as<int>(from)); };
    const __m128i last = _mm_srl_epi64(half(bytes + size - 4), shift(8 - size));
    return _mm_unpacklo_epi32(half(bytes), last);
  }
  if (size == 0) return _mm_setzero_si128();
  const std::size_t middle = size / 2;
  const std::size_t last = size - 1;
  return _mm_cvtsi32_si128(bytes[0] | bytes[middle] << 8 * middle | bytes[last] << 8 * last);
}

// Moves 16 bytes up by `count` places, 0 to 16. SSE2 shifts by more bits than a word has give zero.
inline __m128i move_up(__m128i bytes, unsigned count) {
  const int bits = static_cast<int>(8 * count);
  const __m128i low_half = _mm_slli_si128(bytes, 8);
  return _mm_or_si128(_mm_sll_epi64(bytes, _mm_cvtsi32_si128(bits)),
                      _mm_or_si128(_mm_srl_epi64(low_half, _mm_cvtsi32_si128(64 - bits)),
                                   _mm_sll_epi64(low_half, _mm_cvtsi32_si128(bits - 64))));
}

// The number that 16 digits make: pairs, then fours, then eights.
inline std::uint64_t sixteen_digits_value(__m128i digits) {
  const __m128i tens = _mm_mullo_epi16(digits, _mm_set1_epi16(10));
  const __m128i pairs =
      _mm_and_si128(_mm_add_epi16(tens, _mm_srli_epi16(digits, 8)), _mm_set1_epi16(0xFF));
  const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
  const __m128i eights =
      _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10'000));
  const auto high = static_cast<std::uint32_t>(_mm_cvtsi128_si32(eights));
  const auto low = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_epi64(eights, 32)));
  return std::uint64_t{high} * 100'000'000 + low;
}

// 16 bytes of ones before as many zeros.
inline constexpr auto kOnesBeforeZeros = [] {
  std::array<CS_BYTE, 32> bytes{};
  for (std::size_t at = 0; at < 16; ++at) bytes[at] = 0xFF;
  return bytes;
}();

// Takes outer blanks, and then a sign, off a text that is too long for the register. False when it
// is still too long.
[[gnu::always_inline]] inline bool shorten(const CS_BYTE*& at, std::size_t& size, bool& negative) {
  constexpr std::size_t kMost = sizeof(__m128i);
  while (size > kMost && *at == ' ') ++at, --size;
  while (size > kMost && at[size - 1] == ' ') --size;
  const bool has_sign = *at == '-' || *at == '+';
  if (size == kMost + 1 && has_sign && (is_digit(at[1]) || at[1] == '.')) {
    negative = *at == '-';
    ++at, --size;
  }
  return size <= kMost;
}

// Moves the digits before a point up to its place. `decimals` digits follow the point.
[[gnu::always_inline]] inline __m128i close_point(__m128i digits, unsigned decimals) {
  const __m128i before =
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(kOnesBeforeZeros.data() + decimals));
  return _mm_or_si128(_mm_and_si128(before, _mm_slli_si128(digits, 1)),
                      _mm_andnot_si128(before, digits));
}

}  // namespace internal

// Reads a text that consists of blanks, a sign, digits with or without a point, and blanks, in up
// to 16 bytes besides outer blanks and the sign. False for any other text, which may still be a
// number.
template <bool kWithPoint>
[[gnu::always_inline]] inline bool read_short_decimal(std::span<const CS_BYTE> text,
                                                      ShortDecimal& number) {
  constexpr std::size_t kMost = sizeof(__m128i);
  const CS_BYTE* at = text.data();
  std::size_t size = text.size();
  bool negative = false;
  if (size > kMost) [[unlikely]] {
    if (!internal::shorten(at, size, negative)) return false;
  }
  const auto mask_of = [](__m128i bytes) {
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
  };
  const __m128i bytes = internal::load_padded(at, size);
  const __m128i values = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
  const __m128i in_digits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
  const unsigned digits = mask_of(in_digits);
  if (digits == 0) return false;
  const unsigned point = kWithPoint ? mask_of(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('.'))) : 0;
  const unsigned number_bytes = digits | point;
  const unsigned first = number_bytes & -number_bytes;
  // The bytes must follow each other, with one point at most.
  if (((number_bytes + first) & number_bytes) != 0 || (point & (point - 1)) != 0) return false;
  const unsigned others =
      (number_bytes | mask_of(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(' ')))) ^ ((1U << size) - 1);
  if (others != 0) {
    if (others != first >> 1) return false;
    const CS_BYTE sign = at[std::countr_zero(others)];
    if (sign != '-' && sign != '+') return false;
    negative = sign == '-';
  }
  const auto end = static_cast<unsigned>(std::bit_width(number_bytes));
  __m128i aligned = internal::move_up(_mm_and_si128(values, in_digits), kMost - end);
  number.decimals = 0;
  if (kWithPoint && point != 0) {
    const unsigned decimals = end - static_cast<unsigned>(std::bit_width(point));
    aligned = internal::close_point(aligned, decimals);
    number.decimals = static_cast<int>(decimals);
  }
  number.digits = internal::sixteen_digits_value(aligned);
  number.negative = negative;
  return true;
}

// The same for text in a character set, if its ASCII characters read like plain bytes.
template <bool kWithPoint>
[[gnu::always_inline]] inline bool read_short_decimal(const Text& text, ShortDecimal& number) {
  const bool has_ascii = text.attrib == nullptr ? !text.utf16 : text.ascii_based;
  return has_ascii && read_short_decimal<kWithPoint>(text.bytes, number);
}

}  // namespace comnlib
