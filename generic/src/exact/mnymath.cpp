// The parts of money arithmetic that need more than 64 bits or follow an unusual rule.
#include "exact/mnymath.h"

#include "exact/wide.h"

namespace comnlib::money {

std::optional<Units> product(Units a, Units b) {
  const DoubleWord exact = multiply_words(absolute(a), absolute(b));
  if (exact.high >= kUnitsOfOne) return std::nullopt;
  Absolute remainder;
  const Absolute cut = divide_words(exact, kUnitsOfOne, remainder);
  if (cut > kSmallestAbsolute) return std::nullopt;
  const bool up = rounds_up(static_cast<Limb>(remainder), kUnitsOfOne);
  return checked_value(cut + up, (a < 0) != (b < 0));
}

std::optional<Units> quotient(Units a, Units b) {
  require(b != 0);
  const DoubleWord dividend = multiply_words(absolute(a), kUnitsOfOne);
  const Absolute divisor = absolute(b);
  if (dividend.high >= divisor) return std::nullopt;
  Absolute remainder;
  return checked_value(divide_words(dividend, divisor, remainder), (a < 0) != (b < 0));
}

Absolute rounded_absolute(Units value, CS_INT ndigits) {
  Absolute kept = absolute(value);
  Limb last = 0;
  for (; ndigits > 0 && (kept | last) != 0; --ndigits) last = divide_small(kept, 10);
  return kept + rounds_up(last, 10);
}

Units integer_part(Units value) {
  Absolute whole = absolute(value);
  const Limb removed = divide_small(whole, kUnitsOfOne);
  const Units integer = signed_value(whole, value < 0);
  const bool one_further =
      value < 0 && rounds_up(removed, kUnitsOfOne) && static_cast<std::uint32_t>(whole) == 0;
  return integer - one_further;
}

}  // namespace comnlib::money
