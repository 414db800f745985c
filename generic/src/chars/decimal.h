// Decimal digits as text, two at a time by a table, sixteen at a time by SSE2. All digits of
// numbers are written here.
#pragma once

#include <emmintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace comnlib {

// The strings "00" to "99".
inline constexpr auto kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t n = 0; n < 100; ++n) {
    pairs[2 * n] = static_cast<char>('0' + n / 10);
    pairs[2 * n + 1] = static_cast<char>('0' + n % 10);
  }
  return pairs;
}();

// The characters of a number below 10^4 as they are in memory.
inline std::uint32_t four_digits(std::uint32_t value) {
  std::uint16_t first;
  std::uint16_t last;
  std::memcpy(&first, &kDigitPairs[2 * (value / 100)], sizeof first);
  std::memcpy(&last, &kDigitPairs[2 * (value % 100)], sizeof last);
  return first | std::uint32_t{last} << 16;
}

// Writes the last `count` digits of `value`, leading zeros included, so that they end at `end`.
// Returns where they begin.
inline char* put_digits(std::uint32_t value, int count, char* end) {
  for (; count >= 2; count -= 2) {
    end -= 2;
    std::memcpy(end, &kDigitPairs[2 * (value % 100)], 2);
    value /= 100;
  }
  if (count != 0) *--end = static_cast<char>('0' + value % 10);
  return end;
}

// Writes all digits of `value`, at least one, so that they end at `end`. Returns where they begin.
inline char* put_number(std::uint32_t value, char* end) {
  for (; value >= 100; value /= 100) end = put_digits(value, 2, end);
  return put_digits(value, value >= 10 ? 2 : 1, end);
}

// The characters of two numbers of eight digits each. Each step splits every number in two at a
// power of ten: the quotient, by the inverse of that power, goes to one half of the number's bits,
// and the remainder to the other. One product with the quotient is enough for both halves.
inline __m128i sixteen_digits(std::uint32_t first, std::uint32_t second) {
  const __m128i eights = _mm_set_epi32(0, static_cast<int>(second), 0, static_cast<int>(first));
  const auto inverse = _mm_set1_epi32(static_cast<int>(0xD1B71759));  // 2^45 / 10^4
  const __m128i upper_fours = _mm_srli_epi64(_mm_mul_epu32(eights, inverse), 45);
  // The quotient is the upper half here.
  const __m128i swapped_fours =
      _mm_add_epi64(eights, _mm_mul_epu32(upper_fours, _mm_set1_epi32(-10'000)));
  const __m128i fours = _mm_shuffle_epi32(swapped_fours, _MM_SHUFFLE(2, 3, 0, 1));

  const __m128i upper_halves = _mm_slli_epi32(fours, 16);
  const __m128i both_halves = _mm_or_si128(fours, upper_halves);
  const __m128i upper_pairs = _mm_srli_epi16(_mm_mulhi_epu16(both_halves, _mm_set1_epi16(5243)), 3);
  const __m128i pairs = _mm_add_epi16(
      upper_halves, _mm_mullo_epi16(upper_pairs, _mm_set1_epi32(-100 * (1 << 16) + 1)));

  const __m128i tens = _mm_mulhi_epu16(pairs, _mm_set1_epi16(6554));  // 2^16 / 10
  const __m128i digits = _mm_add_epi16(_mm_slli_epi16(pairs, 8),
                                       _mm_mullo_epi16(tens, _mm_set1_epi16(-10 * (1 << 8) + 1)));
  return _mm_add_epi8(digits, _mm_set1_epi8('0'));
}

// The two numbers of eight digits that a number below 10^16 consists of.
struct Eights {
  std::uint32_t first;
  std::uint32_t second;
};

inline Eights in_eights(std::uint32_t value) {
  constexpr std::uint32_t kEightDigits = 100'000'000;
  return {value / kEightDigits, value % kEightDigits};
}

// The quotient is estimated by a product with an inverse that is a little too small, and so by at
// most one.
inline Eights in_eights(std::uint64_t value) {
  constexpr std::uint32_t kEightDigits = 100'000'000;
  constexpr std::uint64_t kInverse = (std::uint64_t{1} << 58) / kEightDigits;
  auto first = static_cast<std::uint32_t>(static_cast<std::uint32_t>(value >> 22) * kInverse >> 36);
  std::uint32_t second = static_cast<std::uint32_t>(value) - first * kEightDigits;
  if (second >= kEightDigits) second -= kEightDigits, ++first;
  return {first, second};
}

inline __m128i sixteen_digits(Eights number) {
  return sixteen_digits(number.first, number.second);
}

// The characters of a number below 10^16.
inline __m128i sixteen_digits(std::uint64_t value) {
  return sixteen_digits(in_eights(value));
}

// Writes the eight digits of `value`, which is below 10^8, leading zeros included, at `to`.
inline void put_eight_digits(std::uint32_t value, char* to) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), sixteen_digits(value, 0));
}

}  // namespace comnlib
