// The parts of the kernel that work on unpacked magnitudes, for the routines of this room that
// would otherwise pass through bytes. The routines that end an operation are always inlined, so
// that their working records stay in registers.
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

// The last step of an operation: to the result's scale, then checked against its precision and
// length. Overflow clears the result.
[[gnu::always_inline]] inline CS_INT pack_at_scale(SignedMagnitude& value, int change,
                                                   constant& result) {
  const CS_INT status = scale_by(value.magnitude, change);
  if (status == kExactOverflow || exceeds(value.magnitude, result.prec) ||
      !fits(value.magnitude, result))
    return clear_for_overflow(result);
  pack_record(value.magnitude, value.negative, result);
  return status;
}

// result := a + b (opn 0) or a - b; see com__exctnume_addorsub. Uses up both operands.
inline CS_INT add_or_subtract(SignedMagnitude& a, int scale_a, SignedMagnitude& b, int scale_b,
                              CS_INT opn, constant& result) {
  const bool b_counts_negative = b.negative != (opn != 0);
  if (a.negative == b_counts_negative) {
    add(a.magnitude, b.magnitude, a.magnitude);
  } else {
    const int order = compare(a.magnitude, b.magnitude);
    if (order == 0) {
      clear_record(result);
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
  if (!fits(a.magnitude, result)) return clear_for_overflow(result);
  return pack_at_scale(a, result.scale - scale_a, result);
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
