// The arithmetic kernel. Every operation reads its operands into limbs, computes there, and writes
// the result's bytes last, so that results may share bytes with operands.
#include "exact/numemath.h"

#include <limits>

#include "exact/kernel.h"

namespace comnlib {
namespace {

// Bytes that dividend, quotient and one more may take together in a division.
constexpr std::size_t kDivisionRoom = 132;

// Unsigned long division within the room that there is for it; the divisor is not zero.
CS_INT divide_within_room(Limbs dividend, Limbs divisor, Magnitude& quotient,
                          Magnitude& remainder) {
  const std::size_t length = byte_length(dividend);
  const std::size_t divisor_length = byte_length(divisor);
  const std::size_t digits = length < divisor_length ? 0 : length - divisor_length + 1;
  if (length + digits + 1 > kDivisionRoom) return kExactOverflow;
  divide(dividend, divisor, quotient, remainder);
  return kExactOk;
}

// Divides by 10^digits and returns the last digit removed.
Limb remove_digits(Magnitude& value, int digits) {
  if (digits <= 0) return 0;
  static_cast<void>(scale_down(value, digits - 1));
  return divide_by(value, 10);
}

}  // namespace

}  // namespace comnlib

using namespace comnlib;

CS_INT com__exctnume_intadd(const constant* op1, const constant* op2, constant* result) {
  Magnitude a;
  Magnitude b;
  read(*op1, a);
  read(*op2, b);
  add(a, b, a);
  write(a, false, *result);
  return fits(a, *result) ? kExactOk : kExactOverflow;
}

CS_INT com__exctnume_intsub(const constant* op1, const constant* op2, constant* result) {
  Magnitude a;
  Magnitude b;
  read(*op1, a);
  read(*op2, b);
  if (compare(a, b) >= 0) {
    subtract(a, b, a);
    write(a, false, *result);
    return fits(a, *result) ? kExactOk : kExactOverflow;
  }
  // A borrow out of the top leaves the two's complement of b - a in the result's bytes.
  subtract(b, a, a);
  write(a, false, *result);
  unsigned carry = 1;
  const auto bytes = magnitude_bytes(*result);
  for (std::size_t at = bytes.size(); at-- > 0;) {
    carry += 255u - bytes[at];
    bytes[at] = static_cast<CS_BYTE>(carry);
    carry >>= 8;
  }
  return kExactOverflow;
}

CS_INT com__exctnume_intmul(const constant* op1, const constant* op2, constant* result) {
  Magnitude a;
  Magnitude b;
  Magnitude product;
  read(*op1, a);
  read(*op2, b);
  multiply(a, b, product);
  return write_whole(product, false, *result);
}

CS_INT com__exctnume_intdiv(const constant* dividend, const constant* divisor, constant* quot,
                            constant* remdr) {
  Magnitude a;
  Magnitude b;
  Magnitude quotient;
  Magnitude remainder;
  read(*divisor, b);
  if (b.is_zero()) return kExactDivZero;
  read(*dividend, a);
  const CS_INT status = divide_within_room(a, b, quotient, remainder);
  if (status != kExactOk) return status;
  if (!fits(quotient, *quot) || (remdr != nullptr && !fits(remainder, *remdr)))
    return kExactOverflow;
  write(quotient, false, *quot);
  if (remdr != nullptr) write(remainder, false, *remdr);
  return kExactOk;
}

CS_INT com__exctnume_addorsub(const constant* op1, const constant* op2, constant* result,
                              CS_INT opn) {
  Number a;
  Number b;
  read(*op1, a);
  read(*op2, b);
  return combine(a, op1->scale, b, op2->scale, opn, *result);
}

CS_INT com__exctnume_mul(const constant* op1, const constant* op2, constant* result) {
  return product(*op1, *op2, *result);
}

CS_INT com__exctnume_div(const constant* dividend, const constant* divisor, constant* quot,
                         constant* remdr) {
  Magnitude a;
  Magnitude b;
  Number quotient;
  Number remainder;
  read(*divisor, b);
  if (b.is_zero()) return kExactDivZero;
  read(*dividend, a);
  const bool dividend_negative = is_negative(*dividend);

  const int shift = quot->scale - dividend->scale + divisor->scale;
  if (shift > CS_MAX_SCALE || shift < -CS_MAX_SCALE) return overflow(*quot);
  if (shift > 0) scale_up(a, shift);
  if (shift < 0) scale_up(b, -shift);
  if (divide_within_room(a, b, quotient.magnitude, remainder.magnitude) != kExactOk)
    return overflow(*quot);
  quotient.negative = !quotient.magnitude.is_zero() && dividend_negative != is_negative(*divisor);
  remainder.negative = !remainder.magnitude.is_zero() && dividend_negative;
  if (remdr != nullptr && write_whole(remainder.magnitude, remainder.negative, *remdr) != kExactOk)
    return overflow(*quot);
  return finish(quotient, 0, *quot);
}

CS_INT com__exctnume_scale(constant* inval, constant* outval, CS_INT scale) {
  Number number;
  read(*inval, number);
  const CS_INT status = scale_by(number.magnitude, scale);
  constant& out = outval != nullptr ? *outval : *inval;
  if (status == kExactOverflow || !fits(number.magnitude, out)) return kExactOverflow;
  write(number.magnitude, number.negative, out);
  return status;
}

CS_INT com__exctnume_round(const constant* op, CS_INT scale, constant* result) {
  Number number;
  read(*op, number);
  // No scale is so low that the digits to remove would have to be counted beyond all precisions.
  int digits = op->scale - std::max<CS_INT>(scale, -std::numeric_limits<CS_BYTE>::max());
  if (scale <= 0) digits = std::min<int>(digits, op->prec);
  digits = std::max(digits, 0);
  if (remove_digits(number.magnitude, digits) >= 5) multiply_add(number.magnitude, 1, 1);
  result->scale = op->scale;
  if (scale_by(number.magnitude, digits) == kExactOverflow) return kExactOverflow;
  return write_whole(number.magnitude, number.negative && !number.magnitude.is_zero(), *result);
}

CS_INT com__exctnume_ceilingfloor(const constant* op, constant* result, CS_INT type) {
  Number number;
  read(*op, number);
  const bool dropped = scale_down(number.magnitude, op->scale);
  const bool away_from_zero = number.negative == (type == 0);
  if (dropped && away_from_zero) multiply_add(number.magnitude, 1, 1);
  result->prec = op->prec;
  result->scale = 0;
  return write_whole(number.magnitude, number.negative && !number.magnitude.is_zero(), *result);
}
