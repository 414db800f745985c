// Money as one native number, a count of ten-thousandths: the records, the four operations and
// rounding. Only units() and record() know how a CS_MONEY holds its value. Nothing here knows
// contexts or result codes.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <optional>

#include "comnlib/types.h"
#include "exact/wide.h"

namespace comnlib::money {

using Units = std::int64_t;
using Absolute = std::uint64_t;  // of every Units, the smallest included

constexpr int kDecimals = 4;
constexpr std::uint32_t kUnitsOfOne = 10000;
constexpr Units kLargest = std::numeric_limits<Units>::max();
constexpr Units kSmallest = std::numeric_limits<Units>::min();
constexpr Absolute kSmallestAbsolute = Absolute{1} << 63;

// The high half comes first in memory: the record is a native number with its halves exchanged.
constexpr Units units(const CS_MONEY& record) {
  return static_cast<Units>(std::rotl(std::bit_cast<Absolute>(record), 32));
}
constexpr Units units(const CS_MONEY4& record) {
  return record.mny4;
}

constexpr CS_MONEY record(Units value) {
  return std::bit_cast<CS_MONEY>(std::rotl(static_cast<Absolute>(value), 32));
}

constexpr Absolute absolute(Units value) {
  return value < 0 ? -static_cast<Absolute>(value) : static_cast<Absolute>(value);
}

// The value of a magnitude and a sign, without a check: 2^63 wraps.
constexpr Units signed_value(Absolute absolute, bool negative) {
  return static_cast<Units>(negative ? -absolute : absolute);
}

// Nothing when the value lies outside the range of CS_MONEY.
constexpr std::optional<Units> checked_value(Absolute absolute, bool negative) {
  if (absolute >= kSmallestAbsolute + negative) [[unlikely]]
    return std::nullopt;
  return signed_value(absolute, negative);
}

// value := value / divisor, which is not zero; returns the remainder. With short words it uses the
// processor's own division, since the compiler would call a library routine.
inline Limb divide_small(Absolute& value, Limb divisor) {
  Limb remainder;
  if constexpr (sizeof(Limb) == sizeof(Absolute)) {
    remainder = static_cast<Limb>(value % divisor);
    value /= divisor;
  } else {
    remainder = static_cast<Limb>(value >> 32);
    Limb upper = 0;
    if (remainder >= divisor) upper = divide_wide(0, remainder, divisor, remainder);
    const Limb lower = divide_wide(remainder, static_cast<Limb>(value), divisor, remainder);
    value = Absolute{upper} << 32 | lower;
  }
  return remainder;
}

// Sum and difference, nothing on overflow.
inline std::optional<Units> sum(Units a, Units b) {
  Units result;
  if (__builtin_add_overflow(a, b, &result)) [[unlikely]]
    return std::nullopt;
  return result;
}
inline std::optional<Units> difference(Units a, Units b) {
  Units result;
  if (__builtin_sub_overflow(a, b, &result)) [[unlikely]]
    return std::nullopt;
  return result;
}

// a * b in units, halves away from zero. Nothing on overflow. Inline like all of these, since a
// result that may be nothing would be returned through memory.
inline std::optional<Units> product(Units a, Units b) {
  const DoubleWord exact = multiply_words(absolute(a), absolute(b));
  Absolute cut = exact.low;
  Absolute remainder;
  if (exact.high == 0) {
    remainder = divide_small(cut, kUnitsOfOne);
  } else {
    if (exact.high >= kUnitsOfOne) [[unlikely]]
      return std::nullopt;
    cut = divide_words(exact, kUnitsOfOne, remainder);
    if (cut > kSmallestAbsolute) [[unlikely]]
      return std::nullopt;
  }
  return checked_value(cut + rounds_up(static_cast<Limb>(remainder), kUnitsOfOne),
                       (a < 0) != (b < 0));
}

// a / b in units, toward zero; b is not zero. Nothing on overflow.
inline std::optional<Units> quotient(Units a, Units b) {
  require(b != 0);
  const DoubleWord dividend = multiply_words(absolute(a), kUnitsOfOne);
  const Absolute divisor = absolute(b);
  if (dividend.high >= divisor) [[unlikely]]
    return std::nullopt;
  Absolute remainder;
  return checked_value(divide_words(dividend, divisor, remainder), (a < 0) != (b < 0));
}

// |value| / 10^ndigits, rounded up when the last removed digit is 5 or more.
Absolute rounded_absolute(Units value, CS_INT ndigits);

// A money value as an integer: toward zero, but a negative value whose removed part is one half or
// more goes one further down when the low 32 bits of its integer part are 0. So -0.5 becomes -1,
// but -1.5 becomes -1 too; callers depend on it.
Units integer_part(Units value);

}  // namespace comnlib::money
