// Numbers of 128 bits, which money and short numerics pass through.
#pragma once

#include "exact/limbs.h"

namespace comnlib {

struct DoubleWord {
  std::uint64_t high;
  std::uint64_t low;
};

// Whether a limb is half of such a word, and not all of it.
constexpr bool kLimbIsHalf = kLimbBytes < sizeof(std::uint64_t);

constexpr Limb high_half(std::uint64_t value) {
  return static_cast<Limb>(value >> 32);
}
constexpr Limb low_half(std::uint64_t value) {
  return static_cast<Limb>(value & 0xFFFFFFFF);
}
constexpr std::uint64_t join(Limb high, Limb low) {
  return std::uint64_t{high} << 32 | low;
}

constexpr bool is_zero(DoubleWord value) {
  return (value.high | value.low) == 0;
}

constexpr int compare(DoubleWord a, DoubleWord b) {
  if (a.high != b.high) return a.high < b.high ? -1 : 1;
  return (a.low > b.low) - (a.low < b.low);
}

// a + b and a - b, modulo 2^128.
constexpr DoubleWord sum(DoubleWord a, DoubleWord b) {
  const std::uint64_t low = a.low + b.low;
  return {a.high + b.high + (low < a.low), low};
}
constexpr DoubleWord difference(DoubleWord a, DoubleWord b) {
  return {a.high - b.high - (a.low < b.low), a.low - b.low};
}

inline DoubleWord multiply_words(std::uint64_t a, std::uint64_t b) {
  if constexpr (!kLimbIsHalf) {
    const Wide product = Wide{a} * b;
    return {static_cast<std::uint64_t>(product >> 32 >> 32), static_cast<std::uint64_t>(product)};
  }
  const std::uint64_t low = std::uint64_t{low_half(a)} * low_half(b);
  if ((high_half(a) | high_half(b)) == 0) return {0, low};
  const std::uint64_t cross = std::uint64_t{high_half(a)} * low_half(b) + high_half(low);
  const std::uint64_t middle = std::uint64_t{low_half(a)} * high_half(b) + low_half(cross);
  return {std::uint64_t{high_half(a)} * high_half(b) + high_half(cross) + high_half(middle),
          join(low_half(middle), low_half(low))};
}

// One half of a quotient: (rest, next) / divisor for a divisor whose top bit is set, rest <
// divisor. Leaves the remainder in `rest`.
inline Limb divide_step(std::uint64_t& rest, Limb next, std::uint64_t divisor) {
  const Limb top[] = {next, low_half(rest), high_half(rest)};
  const Limb digit = estimate_digit(top, high_half(divisor), low_half(divisor));
  // The true remainder is below the divisor, so computing modulo 2^64 gives it.
  rest = (rest << 32 | next) - digit * divisor;
  return digit;
}

// value / divisor, for value.high < divisor.
inline std::uint64_t divide_words(DoubleWord value, std::uint64_t divisor,
                                  std::uint64_t& remainder) {
  require(value.high < divisor);
  Limb rest;
  if constexpr (!kLimbIsHalf) {
    const auto quotient = divide_wide(static_cast<Limb>(value.high), static_cast<Limb>(value.low),
                                      static_cast<Limb>(divisor), rest);
    remainder = rest;
    return quotient;
  }
  if (high_half(divisor) == 0) {
    const Limb by = low_half(divisor);
    const Limb upper = divide_wide(low_half(value.high), high_half(value.low), by, rest);
    const Limb lower = divide_wide(rest, low_half(value.low), by, rest);
    remainder = rest;
    return join(upper, lower);
  }
  const int shift = std::countl_zero(divisor);
  remainder = value.high << shift;
  if (shift != 0) remainder |= value.low >> (64 - shift);
  const std::uint64_t low = value.low << shift;
  const Limb upper = divide_step(remainder, high_half(low), divisor << shift);
  const Limb lower = divide_step(remainder, low_half(low), divisor << shift);
  remainder >>= shift;
  return join(upper, lower);
}

}  // namespace comnlib
