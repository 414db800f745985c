// The digits of a word, and the text of numerics.
#pragma once

#include <emmintrin.h>

#include <array>
#include <bit>
#include <string_view>

#include "chars/decimal.h"
#include "exact/short.h"

namespace comnlib {

// The digits of every word, with zeros in front.
constexpr std::size_t kWordDigits = 20;

// Takes the digits before the last sixteen off a word.
inline std::uint32_t take_leading_digits(std::uint64_t& value) {
  constexpr std::uint64_t kSixteenDigits = 10'000'000'000'000'000;
  if (value < kSixteenDigits) return 0;
  // The inverse is a little too small, and the quotient by at most one.
  constexpr std::uint64_t kInverse = 1'934'281'311;  // 2^84 / 10^16
  auto leading = static_cast<std::uint32_t>((value >> 32) * kInverse >> 52);
  value -= leading * kSixteenDigits;
  if (value >= kSixteenDigits) value -= kSixteenDigits, ++leading;
  return leading;
}

// Writes the digits of a word and returns where the first one is that is not zero; 20 for zero.
inline std::size_t put_word(std::uint64_t value, char* to) {
  const std::uint32_t leading = take_leading_digits(value);
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
// point.
using NumericBuffer = std::array<char, 80>;

// The text of any numeric.
std::string_view long_text(const CS_NUMERIC& value, NumericBuffer& buffer);

}  // namespace comnlib
