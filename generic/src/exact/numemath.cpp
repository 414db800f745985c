// The arithmetic kernel. Every operation reads its operands into limbs, computes there, and writes
// the result's bytes last, so that results may share bytes with operands.
#include "exact/numemath.h"

#include <limits>

#include "exact/kernel.h"

namespace comnlib {
namespace {

// Bytes that dividend, quotient and one more may take together in a division.
constexpr std::size_t kDivisionRoom = 132;

// Unsigned long division within the room of a division; the divisor is not zero.
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
  if (digits == 0) return 0;
  static_cast<void>(scale_down(value, digits - 1));
  return divide_by(value, 10);
}

struct Operands {
  Magnitude a;
  Magnitude b;

  Operands(const constant& op1, const constant& op2) {
    unpack_record(op1, a);
    unpack_record(op2, b);
  }
};

}  // namespace

}  // namespace comnlib

using namespace comnlib;

CS_INT com__exctnume_intadd(const constant* op1, const constant* op2, constant* result) {
  auto [a, b] = Operands(*op1, *op2);
  add(a, b, a);
  pack_record(a, false, *result);
  return fits(a, *result) ? kExactOk : kExactOverflow;
}

CS_INT com__exctnume_intsub(const constant* op1, const constant* op2, constant* result) {
  auto [a, b] = Operands(*op1, *op2);
  if (compare(a, b) >= 0) {
    subtract(a, b, a);
    pack_record(a, false, *result);
    return fits(a, *result) ? kExactOk : kExactOverflow;
  }
  // A borrow out of the top leaves the two's complement of b - a in the result's bytes.
  subtract(b, a, a);
  pack_record(a, false, *result);
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
  auto [a, b] = Operands(*op1, *op2);
  Magnitude product;
  multiply(a, b, product);
  return pack_if_it_fits(product, false, *result);
}

CS_INT com__exctnume_intdiv(const constant* dividend, const constant* divisor, constant* quot,
                            constant* remdr) {
  auto [a, b] = Operands(*dividend, *divisor);
  if (b.is_zero()) return kExactDivZero;
  Magnitude quotient;
  Magnitude remainder;
  const CS_INT status = divide_within_room(a, b, quotient, remainder);
  if (status != kExactOk) return status;
  if (!fits(quotient, *quot) || (remdr != nullptr && !fits(remainder, *remdr)))
    return kExactOverflow;
  pack_record(quotient, false, *quot);
  if (remdr != nullptr) pack_record(remainder, false, *remdr);
  return kExactOk;
}

CS_INT com__exctnume_addorsub(const constant* op1, const constant* op2, constant* result,
                              CS_INT opn) {
  SignedMagnitude a;
  SignedMagnitude b;
  unpack_record(*op1, a);
  unpack_record(*op2, b);
  return add_or_subtract(a, op1->scale, b, op2->scale, opn, *result);
}

CS_INT com__exctnume_mul(const constant* op1, const constant* op2, constant* result) {
  auto [a, b] = Operands(*op1, *op2);
  SignedMagnitude product;
  multiply(a, b, product.magnitude);
  product.negative = !product.magnitude.is_zero() && is_negative(*op1) != is_negative(*op2);

  const int scale = op1->scale + op2->scale;
  const bool straight = result->prec >= op1->prec + op2->prec && result->scale == scale;
  if (!straight && byte_length(product.magnitude) >= CS_MAX_NUMLEN)
    return clear_for_overflow(*result);
  return pack_at_scale(product, result->scale - scale, *result);
}

CS_INT com__exctnume_div(const constant* dividend, const constant* divisor, constant* quot,
                         constant* remdr) {
  auto [a, b] = Operands(*dividend, *divisor);
  if (b.is_zero()) return kExactDivZero;
  SignedMagnitude quotient;
  SignedMagnitude remainder;
  const bool dividend_negative = is_negative(*dividend);

  const int shift = quot->scale - dividend->scale + divisor->scale;
  if (shift > CS_MAX_SCALE || shift < -CS_MAX_SCALE) return clear_for_overflow(*quot);
  if (shift > 0) scale_up(a, shift);
  if (shift < 0) scale_up(b, -shift);
  if (divide_within_room(a, b, quotient.magnitude, remainder.magnitude) != kExactOk)
    return clear_for_overflow(*quot);
  quotient.negative = !quotient.magnitude.is_zero() && dividend_negative != is_negative(*divisor);
  remainder.negative = !remainder.magnitude.is_zero() && dividend_negative;
  if (remdr != nullptr &&
      pack_if_it_fits(remainder.magnitude, remainder.negative, *remdr) != kExactOk)
    return clear_for_overflow(*quot);
  return pack_at_scale(quotient, 0, *quot);
}

CS_INT com__exctnume_scale(constant* inval, constant* outval, CS_INT scale) {
  SignedMagnitude value;
  unpack_record(*inval, value);
  const CS_INT status = scale_by(value.magnitude, scale);
  constant& out = outval != nullptr ? *outval : *inval;
  if (status == kExactOverflow || !fits(value.magnitude, out)) return kExactOverflow;
  pack_record(value.magnitude, value.negative, out);
  return status;
}

CS_INT com__exctnume_round(const constant* op, CS_INT scale, constant* result) {
  SignedMagnitude value;
  unpack_record(*op, value);
  // Scales lower than this remove all digits as well; the bound keeps the difference from
  // overflowing.
  int digits = op->scale - std::max<CS_INT>(scale, -std::numeric_limits<CS_BYTE>::max());
  if (scale <= 0) digits = std::min<int>(digits, op->prec);
  digits = std::max(digits, 0);
  if (rounds_up(remove_digits(value.magnitude, digits), 10)) multiply_add(value.magnitude, 1, 1);
  result->scale = op->scale;
  if (scale_by(value.magnitude, digits) == kExactOverflow) return kExactOverflow;
  return pack_if_it_fits(value.magnitude, value.negative && !value.magnitude.is_zero(), *result);
}

CS_INT com__exctnume_ceilingfloor(const constant* op, constant* result, CS_INT type) {
  SignedMagnitude value;
  unpack_record(*op, value);
  const bool dropped = scale_down(value.magnitude, op->scale);
  const bool away_from_zero = value.negative == (type == 0);
  if (dropped && away_from_zero) multiply_add(value.magnitude, 1, 1);
  result->prec = op->prec;
  result->scale = 0;
  return pack_if_it_fits(value.magnitude, value.negative && !value.magnitude.is_zero(), *result);
}
