// The parts of the kernel that work on magnitudes already read, for the routines of this room that
// would otherwise pass through bytes. Those that close an operation are inlined by force: their
// working records then never stand in memory.
#pragma once

#include "exact/record.h"

namespace comnlib {

// value := value * 10^change. Changes beyond the powers of ten are overflow, dropped nonzero digits
// truncation.
inline CS_INT scale_by(Magnitude& value, int change) {
  if (change > CS_MAX_SCALE || change < -CS_MAX_SCALE) return kExactOverflow;
  if (change > 0) scale_up(value, change);
  if (change < 0 && scale_down(value, -change)) return kExactTruncated;
  return kExactOk;
}

// The last step of a signed operation: to the result's scale, then checked against its precision
// and length. Overflow clears the result.
[[gnu::always_inline]] inline CS_INT finish(Number& number, int change, constant& result) {
  const CS_INT status = scale_by(number.magnitude, change);
  if (status == kExactOverflow || exceeds(number.magnitude, result.prec) ||
      !fits(number.magnitude, result))
    return overflow(result);
  write(number.magnitude, number.negative, result);
  return status;
}

// result := a + b (opn 0) or a - b; see com__exctnume_addorsub. Uses up both operands.
inline CS_INT combine(Number& a, int scale_a, Number& b, int scale_b, CS_INT opn,
                      constant& result) {
  const bool b_counts_negative = b.negative != (opn != 0);
  if (a.negative == b_counts_negative) {
    add(a.magnitude, b.magnitude, a.magnitude);
  } else {
    const int order = compare(a.magnitude, b.magnitude);
    if (order == 0) {
      clear(result);
      return kExactOk;
    }
    if (order < 0) {
      subtract(b.magnitude, a.magnitude, a.magnitude);
      a.negative = b_counts_negative;
      scale_a = scale_b;
    } else {
      subtract(a.magnitude, b.magnitude, a.magnitude);
    }
  }
  if (!fits(a.magnitude, result)) return overflow(result);
  return finish(a, result.scale - scale_a, result);
}

// result := op1 * op2; see com__exctnume_mul.
[[gnu::always_inline]] inline CS_INT product(const constant& op1, const constant& op2,
                                             constant& result) {
  Magnitude a;
  Magnitude b;
  Number number;
  read(op1, a);
  read(op2, b);
  multiply(a, b, number.magnitude);
  const bool is_zero = number.magnitude.is_zero();
  number.negative = !is_zero && is_negative(op1) != is_negative(op2);

  const int scale = op1.scale + op2.scale;
  const bool straight = result.prec >= op1.prec + op2.prec && result.scale == scale;
  if (!straight && byte_length(number.magnitude) >= CS_MAX_NUMLEN) return overflow(result);
  return finish(number, result.scale - scale, result);
}

// value := value * 10^change, to be held in `length` bytes, sign included, at `precision`. The
// unscaled value must fit that length too; truncation comes before the precision is checked.
inline CS_INT rescale(Magnitude& value, int change, int precision, std::size_t length) {
  if (byte_length(value) >= length) return kExactOverflow;
  const CS_INT status = scale_by(value, change);
  if (status != kExactOk) return status;
  return exceeds(value, precision) || byte_length(value) >= length ? kExactOverflow : kExactOk;
}

}  // namespace comnlib
