// Numbers as text. One product with a power of ten gives the 17 digits of a double, unless it is
// too close to a tie to round.
#include "conv/number_text.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <system_error>

#include "chars/decimal.h"
#include "conv/powers_of_ten.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

// Enough to distinguish every double from its neighbours.
constexpr int kSignificantDigits = 17;

constexpr PowersOfTen kPowersOfTen;

// A double that is neither zero nor infinite nor a NaN: its magnitude is the significand, of 64
// bits of which the highest is set, times 2^(exponent - 63).
struct BinaryFloat {
  std::uint64_t significand;
  int exponent;
};

BinaryFloat binary_of(double value) {
  constexpr int kFractionBits = 52;
  constexpr int kBias = 1023;
  constexpr std::uint64_t kImplied = std::uint64_t{1} << kFractionBits;
  const auto bits = std::bit_cast<std::uint64_t>(value);
  const std::uint64_t fraction = bits & (kImplied - 1);
  const auto biased = static_cast<int>(bits >> kFractionBits & 0x7FF);
  constexpr int kShift = 63 - kFractionBits;
  if (biased != 0) return {(fraction | kImplied) << kShift, biased - kBias};
  const int shift = std::countl_zero(fraction);
  return {fraction << shift, kShift + 1 - kBias - shift};
}

// A magnitude as digits * 10^(exponent - 16), with exactly 17 digits.
struct DecimalFloat {
  std::uint64_t digits;
  int exponent;
};

std::uint64_t joined(std::uint32_t high, std::uint32_t low) {
  return std::uint64_t{high} << 32 | low;
}

std::uint32_t high_half(std::uint64_t n) {
  return static_cast<std::uint32_t>(n >> 32);
}

std::uint32_t low_half(std::uint64_t n) {
  return static_cast<std::uint32_t>(n);
}

std::uint64_t product(std::uint32_t a, std::uint32_t b) {
  return std::uint64_t{a} * b;
}

// The decimal exponent of a magnitude, rounded down. Between two powers of two there is at most one
// power of ten. A power that agrees with the magnitude in 64 bits may be larger, but by less than a
// unit of the last digit.
int decimal_exponent(const BinaryFloat& value) {
  const int exponent = floor_log10_of_power_of_two(value.exponent);
  const int next = exponent + 1;
  if (floor_log2_of_power_of_ten(next) != value.exponent) return exponent;
  const Significand& power = kPowersOfTen[next];
  return value.significand >= joined(power.high, power.middle) ? next : exponent;
}

// The first 96 of the 160 bits of a product, too small by less than 4.
Significand multiply(std::uint64_t significand, const Significand& power) {
  const std::uint32_t low = low_half(significand);
  const std::uint32_t high = high_half(significand);
  const std::uint64_t low_high = product(low, power.high);
  const std::uint64_t high_middle = product(high, power.middle);
  std::uint64_t sum = std::uint64_t{high_half(product(high, power.low))} +
                      high_half(product(low, power.middle)) + low_half(low_high) +
                      low_half(high_middle);
  Significand result;
  result.low = low_half(sum);
  sum = (sum >> 32) + high_half(low_high) + high_half(high_middle) + product(high, power.high);
  result.middle = low_half(sum);
  result.high = high_half(sum);
  return result;
}

// Rounds to the nearest; nothing where the product is too close to a tie.
std::optional<DecimalFloat> decimal_of(const BinaryFloat& value) {
  constexpr std::uint64_t kMost = 100'000'000'000'000'000;
  const int exponent = decimal_exponent(value);
  const int scale = kSignificantDigits - 1 - exponent;
  const Significand bits = multiply(value.significand, kPowersOfTen[scale]);
  // The first 54 to 57 bits are before the point. The error is below the last bit of `fraction`.
  const int after = (62 - value.exponent - floor_log2_of_power_of_ten(scale)) & 0xF;
  const std::uint32_t fraction = low_half(joined(bits.middle, bits.low) >> after);
  constexpr std::uint32_t kHalf = 1U << 31;
  if (fraction - (kHalf - 1) <= 1) return std::nullopt;
  const std::uint64_t digits = (joined(bits.high, bits.middle) >> after) + (fraction >> 31);
  if (digits == kMost) return DecimalFloat{kMost / 10, exponent + 1};
  return DecimalFloat{digits, exponent};
}

constexpr std::uint32_t kEightDigits = 100'000'000;

// The first nine of 17 digits and the last eight. The product with an inverse of 10^8 is at most
// two too small.
struct SplitDigits {
  std::uint32_t nine;
  std::uint32_t eight;
};

SplitDigits split_digits(std::uint64_t digits) {
  constexpr std::uint32_t kInverse = (std::uint64_t{1} << 57) / kEightDigits;
  SplitDigits parts{high_half(product(low_half(digits >> 25), kInverse)), 0};
  parts.eight = low_half(digits) - parts.nine * kEightDigits;
  while (parts.eight >= kEightDigits) {
    parts.eight -= kEightDigits;
    ++parts.nine;
  }
  return parts;
}

// Writes the 17 digits, and 16 zeros after them. Returns how many digits there are without the
// zeros at their end.
int write_digits(std::uint64_t digits, char* to) {
  const SplitDigits parts = split_digits(digits);
  const std::uint32_t first = parts.nine / kEightDigits;
  const __m128i rest = sixteen_digits(parts.nine - first * kEightDigits, parts.eight);
  const __m128i zeros = _mm_set1_epi8('0');
  *to = static_cast<char>('0' + first);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 1), rest);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 17), zeros);
  const int zero_digits = _mm_movemask_epi8(_mm_cmpeq_epi8(rest, zeros));
  return 1 + static_cast<int>(std::bit_width(static_cast<unsigned>(zero_digits) ^ 0xFFFF));
}

// Writes d.ddde+xx and returns its end.
char* write_scientific(const DecimalFloat& decimal, char* at) {
  const int count = write_digits(decimal.digits, at + 1);
  at[0] = at[1];
  at[1] = '.';
  at += count == 1 ? 1 : count + 1;
  *at++ = 'e';
  *at++ = decimal.exponent < 0 ? '-' : '+';
  const auto exponent = static_cast<CS_UINT>(std::abs(decimal.exponent));
  char* const end = at + (exponent >= 100 ? 3 : 2);
  put_digits(exponent, static_cast<int>(end - at), end);
  return end;
}

// Writes the digits after a point and zeros, or with a point among them, and returns their end.
// Bytes after the end may be overwritten.
char* write_fixed(const DecimalFloat& decimal, char* at) {
  if (decimal.exponent < 0) {
    std::string_view(".000").copy(at, 4);
    at -= decimal.exponent;
    return at + write_digits(decimal.digits, at);
  }
  const int count = write_digits(decimal.digits, at);
  char* point = at + decimal.exponent + 1;
  std::memmove(point + 1, point, 16);
  *point = '.';
  return at + std::max(count, decimal.exponent + 2) + 1;
}

std::string_view write_decimal(bool negative, const DecimalFloat& decimal, NumberBuffer& buffer) {
  char* at = buffer.data();
  if (negative) *at++ = '-';
  if (decimal.exponent < -4 || decimal.exponent >= kSignificantDigits)
    return {buffer.data(), write_scientific(decimal, at)};
  // Only text that begins with "0." loses its zero.
  if (negative && decimal.exponent < 0) *at++ = '0';
  return {buffer.data(), write_fixed(decimal, at)};
}

// Infinities, NaNs and values halfway between two texts.
std::string_view text_by_library(double value, NumberBuffer& buffer) {
  constexpr std::string_view kSuffix = ".0";
  char* const limit = buffer.end() - kSuffix.size();
  const auto [end, error] =
      std::to_chars(buffer.begin(), limit, value, std::chars_format::general, kSignificantDigits);
  require(error == std::errc{});

  if (buffer[0] == '0' && buffer[1] == '.') return {buffer.begin() + 1, end};
  const auto marks_a_float = [](char mark) { return mark == '.' || mark == 'e'; };
  if (std::any_of(buffer.begin(), end, marks_a_float)) return {buffer.begin(), end};
  return {buffer.begin(), std::ranges::copy(kSuffix, end).out};
}

}  // namespace

std::string_view text_of(CS_FLOAT value, NumberBuffer& buffer) {
  if (value == 0) return "0.0";
  if (std::isfinite(value))
    if (const auto decimal = decimal_of(binary_of(value)))
      return write_decimal(std::signbit(value), *decimal, buffer);
  return text_by_library(value, buffer);
}

}  // namespace comnlib
