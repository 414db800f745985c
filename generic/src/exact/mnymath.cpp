// The places of money arithmetic where more than 64 bits are needed, or an odd rule holds. Numbers
// are taken apart in 32-bit limbs, because the processor divides 64 bits by 32 at once.
#include "exact/mnymath.h"

namespace comnlib::money {
namespace {

constexpr std::uint64_t join(Limb high, Limb low) {
  return std::uint64_t{high} << 32 | low;
}
constexpr Limb high_limb(std::uint64_t value) {
  return static_cast<Limb>(value >> 32);
}
constexpr Limb low_limb(std::uint64_t value) {
  return static_cast<Limb>(value);
}

// (high, middle, low) / divisor, for a quotient of two limbs: high < divisor.
Absolute divide_by_limb(Limb high, Limb middle, Limb low, Limb divisor, Limb& remainder) {
  const Limb upper = divide_wide(high, middle, divisor, remainder);
  return join(upper, divide_wide(remainder, low, divisor, remainder));
}

// One limb of quotient from three limbs (rest, next) by two, rest < divisor, whose top bit is set:
// an estimate from the top limb, corrected through the second one. Leaves the remainder in `rest`.
Limb divide_step(std::uint64_t& rest, Limb next, std::uint64_t divisor) {
  const Limb top = high_limb(divisor);
  Limb estimate = 0xFFFFFFFF;
  std::uint64_t left = std::uint64_t{low_limb(rest)} + top;
  if (high_limb(rest) < top) {
    Limb remainder;
    estimate = divide_wide(high_limb(rest), low_limb(rest), top, remainder);
    left = remainder;
  }
  std::uint64_t second = std::uint64_t{estimate} * low_limb(divisor);
  while (high_limb(left) == 0 && second > join(low_limb(left), next)) {
    --estimate;
    left += top;
    second -= low_limb(divisor);
  }
  // The true remainder is below the divisor, so computing modulo 2^64 gives it.
  rest = (left << 32 | next) - second;
  return estimate;
}

// (high, low) / divisor, where `high` has at most 14 bits and the divisor two limbs.
Absolute divide_by_two_limbs(Limb high, std::uint64_t low, std::uint64_t divisor) {
  const int shift = std::countl_zero(divisor);
  std::uint64_t rest = std::uint64_t{high} << shift;
  if (shift != 0) rest |= low >> (64 - shift);
  divisor <<= shift;
  low <<= shift;
  const Limb upper = divide_step(rest, high_limb(low), divisor);
  return join(upper, divide_step(rest, low_limb(low), divisor));
}

}  // namespace

std::optional<Units> product(Units a, Units b) {
  const Absolute x = absolute(a);
  const Absolute y = absolute(b);
  const std::uint64_t low = std::uint64_t{low_limb(x)} * low_limb(y);
  const std::uint64_t cross = std::uint64_t{high_limb(x)} * low_limb(y) + high_limb(low);
  const std::uint64_t middle = std::uint64_t{low_limb(x)} * high_limb(y) + low_limb(cross);
  const std::uint64_t high =
      std::uint64_t{high_limb(x)} * high_limb(y) + high_limb(cross) + high_limb(middle);
  if (high >= kUnitsOfOne) return std::nullopt;

  Limb remainder;
  const Absolute cut =
      divide_by_limb(low_limb(high), low_limb(middle), low_limb(low), kUnitsOfOne, remainder);
  if (cut > kSmallestAbsolute) return std::nullopt;
  return checked_value(cut + (remainder >= kUnitsOfOne / 2), (a < 0) != (b < 0));
}

std::optional<Units> quotient(Units a, Units b) {
  const Absolute dividend = absolute(a);
  const Absolute divisor = absolute(b);
  const std::uint64_t low = std::uint64_t{low_limb(dividend)} * kUnitsOfOne;
  const std::uint64_t high = std::uint64_t{high_limb(dividend)} * kUnitsOfOne + high_limb(low);
  const bool negative = (a < 0) != (b < 0);

  if (high_limb(divisor) != 0) {
    const std::uint64_t rest = join(low_limb(high), low_limb(low));
    return checked_value(divide_by_two_limbs(high_limb(high), rest, divisor), negative);
  }
  if (high_limb(high) >= low_limb(divisor)) return std::nullopt;
  Limb remainder;
  return checked_value(
      divide_by_limb(high_limb(high), low_limb(high), low_limb(low), low_limb(divisor), remainder),
      negative);
}

Absolute rounded_absolute(Units value, CS_INT ndigits) {
  Absolute kept = absolute(value);
  Limb last = 0;
  for (; ndigits > 0 && (kept | last) != 0; --ndigits) last = divide_small(kept, 10);
  return kept + (last >= 5);
}

Units integer_part(Units value) {
  Absolute whole = absolute(value);
  const Limb removed = divide_small(whole, kUnitsOfOne);
  if (value >= 0) return signed_value(whole, false);
  const bool one_further = removed >= kUnitsOfOne / 2 && low_limb(whole) == 0;
  return signed_value(whole, true) - one_further;
}

}  // namespace comnlib::money
