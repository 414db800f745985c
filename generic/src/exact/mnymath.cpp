// The parts of money arithmetic that follow an unusual rule.
#include "exact/mnymath.h"

namespace comnlib::money {

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
