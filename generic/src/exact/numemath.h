// The kernel of exact arithmetic on working records: unsigned and signed operations, scaling and
// rounding. Operands are read before anything is written, so a result may share an operand's bytes;
// otherwise operands stay as they were. Precision and scale of a result are the caller's, who sets
// them before the call, except where said.
#pragma once

#include "exact/numeaux.h"

extern "C" {

// Magnitudes without their signs; a result gets the sign byte 0. Sums and differences that do not
// fit the result's length give overflow and leave their low bytes; a product or quotient that does
// not fit gives overflow and leaves the result alone.
CS_INT com__exctnume_intadd(const constant* op1, const constant* op2, constant* result);
CS_INT com__exctnume_intsub(const constant* op1, const constant* op2, constant* result);
CS_INT com__exctnume_intmul(const constant* op1, const constant* op2, constant* result);
// `remdr` may be null. A zero divisor gives division by zero before anything else. Dividend,
// quotient and one more byte share 132 bytes: significant bytes beyond that are overflow.
CS_INT com__exctnume_intdiv(const constant* dividend, const constant* divisor, constant* quot,
                            constant* remdr);

// op1 + op2 (opn 0) or op1 - op2 (opn 1) of operands with one scale, rescaled from op1's (or, when
// op2 has the larger magnitude, op2's) scale to the result's. Overflow zeroes the result bytes;
// dropped nonzero digits give truncation with the cut value stored. Equal magnitudes subtracted
// give a positive zero, two negative zeros added a negative one.
CS_INT com__exctnume_addorsub(const constant* op1, const constant* op2, constant* result,
                              CS_INT opn);

// The product at the result's scale. Unless the result has room for both precisions and the sum of
// the scales, the product passes through 33 bytes first, and one that does not fit there is
// overflow. Overflow zeroes the result bytes; dropped nonzero digits give truncation with the cut
// value stored. A zero product is positive.
CS_INT com__exctnume_mul(const constant* op1, const constant* op2, constant* result);

// The quotient at the result's scale, truncated. `remdr` may be null; it gets what is left of the
// dividend, in units of the scaled dividend, with the dividend's sign. Overflow zeroes the
// quotient's bytes; division by zero leaves everything alone. A zero quotient is positive.
CS_INT com__exctnume_div(const constant* dividend, const constant* divisor, constant* quot,
                         constant* remdr);

// Multiplies by 10^scale, or divides by 10^-scale with truncation when nonzero digits drop out (the
// cut value is stored). `outval` may be null: in place. Overflow, a scale beyond 77 either way
// included, leaves the result alone. Sign and magnitude change, precision and scale do not.
CS_INT com__exctnume_scale(constant* inval, constant* outval, CS_INT scale);

// Rounds to `scale` decimals, halves away from zero; the result keeps op's scale, which is set in
// it. With a scale of 0 or below at most op's precision in digits is removed. A zero result is
// positive. Overflow, when the result's length is too short, leaves its bytes alone.
CS_INT com__exctnume_round(const constant* op, CS_INT scale, constant* result);

// The ceiling (type nonzero) or floor (type 0): the result gets op's precision and scale 0, and a
// zero result is positive. Overflow as for rounding.
CS_INT com__exctnume_ceilingfloor(const constant* op, constant* result, CS_INT type);
}
