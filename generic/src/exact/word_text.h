// The digits of a word, and the text of numerics whose magnitude is one.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include "chars/decimal.h"
#include "exact/short.h"

namespace comnlib {

// The digits of every word, with zeros in front.
constexpr std::size_t kWordDigits = 20;

// Writes the digits of a word and returns where the first one is that is not zero; 20 for zero.
inline std::size_t put_word(std::uint64_t value, char* to) {
  constexpr std::uint64_t kSixteenDigits = 10'000'000'000'000'000;
  std::uint32_t leading = 0;
  if (value >= kSixteenDigits) {
    // The inverse is a little too small, and the quotient by at most one.
    constexpr std::uint64_t kInverse = 1'934'281'311;  // 2^84 / 10^16
    leading = static_cast<std::uint32_t>((value >> 32) * kInverse >> 52);
    value -= leading * kSixteenDigits;
    if (value >= kSixteenDigits) value -= kSixteenDigits, ++leading;
  }
  const __m128i digits = sixteen_digits(value);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 4), digits);
  if (leading != 0) {
    put_digits(leading, 4, to + 4);
    std::size_t first = 0;
    while (to[first] == '0') ++first;
    return first;
  }
  std::memset(to, '0', 4);
  const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_set1_epi8('0')));
  // The bit after those of the digits ends the search.
  return 4 + static_cast<std::size_t>(std::countr_zero(~static_cast<unsigned>(zeros) | 0x10000U));
}

// Room for the text of every numeric: a sign, "0." and 77 decimals, or a sign, 78 digits and a
// point. A word has fewer digits, after which bytes may be overwritten.
using NumericBuffer = std::array<char, 80>;

// The text of a numeric whose magnitude is a word, with at most 16 decimals. One instruction moves
// these to make room for the point; the bytes after them, which it moves too, do not matter.
[[gnu::always_inline]] inline std::string_view word_text(std::uint64_t magnitude, bool negative,
                                                         std::size_t scale, NumericBuffer& buffer) {
  char* const digits = buffer.data() + 1;
  char* const point = digits + kWordDigits - scale;
  char* first = digits + std::min(put_word(magnitude, digits), kWordDigits - 1 - scale);
  const __m128i decimals = _mm_loadu_si128(reinterpret_cast<const __m128i*>(point));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(point + 1), decimals);
  *point = '.';
  first[-1] = '-';
  if (negative) --first;
  return {first, digits + kWordDigits + (scale != 0 ? 1 : 0)};
}

// The text of any other numeric.
std::string_view long_text(const CS_NUMERIC& value, NumericBuffer& buffer);

[[gnu::always_inline]] inline std::string_view text_of(const CS_NUMERIC& value,
                                                       NumericBuffer& buffer) {
  constexpr CS_BYTE kMovedDecimals = 16;
  if (value.precision > kShortPrecision || value.scale > kMovedDecimals)
    return long_text(value, buffer);
  const auto length = static_cast<std::size_t>(bytes_of_precision(value.precision));
  return word_text(load_short(value, length), value.array[0] != 0, value.scale, buffer);
}

}  // namespace comnlib
