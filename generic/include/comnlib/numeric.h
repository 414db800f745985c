/**
 * @file
 * Exact numeric arithmetic.
 *
 * A CS_NUMERIC of precision p and scale s holds a sign byte in array[0] (0 positive, any other
 * value negative) and a big-endian magnitude up to array[L - 1], with L = comn_num_getlen(p). Its
 * value is the magnitude divided by 10^s. Bytes from L on are not part of it: they are never read
 * as digits and never written.
 *
 * Operands may have any content. A scale may be above the precision, and a magnitude may have more
 * digits than the precision says: its full value counts. A zero with the negative sign equals zero.
 *
 * The result may be the same record as an operand; otherwise operands are not changed. Results get
 * their precision and scale from the operands' (p1, s1, p2, s2), where 77 digits are the limit and
 * integer digits are kept in favour of decimals:
 *
 * | operation     | integer digits d        | scale s              | precision |
 * |---------------|-------------------------|----------------------|-----------|
 * | add, subtract | max(p1 - s1, p2 - s2)   | max(s1, s2)          | s + d + 1 |
 * | multiply      | p1 - s1 + p2 - s2 + 1   | s1 + s2              | s + d     |
 * | divide        | p1 - s1 + s2            | max(6, s2 + p1 + 1)  | s + d     |
 *
 * Here d and s are at most 77, and the precision is in 1..77; after that s is at most the precision
 * minus d.
 *
 * All routines check their pointers, keep no state and may run in several threads at once.
 */
#ifndef COMNLIB_NUMERIC_H
#define COMNLIB_NUMERIC_H

#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Operations of comn_num_addorsub. */
enum { COMN_NUM_ADD = 0, COMN_NUM_SUBTRACT = 1 };

/**
 * comn_numadd, comn_numsub: result := op1 + op2, result := op1 - op2. comn_num_addorsub: either, by
 * `opn`; any other `opn` stops the process.
 *
 * CS_SUCCEED; CS_CVT_DOMAIN when an operand's precision is not in 1..77 or its scale is above 77
 * (the result is left alone); CS_CVT_OVERFLOW; CS_CVT_TRUNCATED when an operand loses nonzero
 * decimals to the limit of 77 digits. After the last two the result is zero, with its precision and
 * scale. A value subtracted from itself is a positive zero.
 */
/**@{*/
COMN_API CS_RETCODE comn_numadd(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result);
COMN_API CS_RETCODE comn_numsub(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result);
COMN_API CS_RETCODE comn_num_addorsub(const CS_NUMERIC* op1, const CS_NUMERIC* op2,
                                      CS_NUMERIC* result, CS_INT opn);
/**@}*/

/**
 * result := op1 * op2.
 *
 * CS_SUCCEED; CS_CVT_DOMAIN as for comn_numadd; CS_CVT_OVERFLOW, with a zero result, when the
 * product has more than 32 bytes before it is brought to the result's scale, when that would drop
 * more than 77 decimals, or when more than 77 digits are left. CS_CVT_OVERFLOW, with the cut value
 * stored, when the product loses nonzero decimals to the limit of 77 digits.
 */
COMN_API CS_RETCODE comn_nummul(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result);

/**
 * result := dividend / divisor, truncated at the result's scale, never rounded. CS_SUCCEED;
 * CS_CVT_DOMAIN as for comn_numadd; CS_CVT_DIVZERO (the result gets precision and scale, its array
 * is left alone); CS_CVT_OVERFLOW (the result is zero, with its precision and scale).
 */
COMN_API CS_RETCODE comn_numdivide(const CS_NUMERIC* dividend, const CS_NUMERIC* divisor,
                                   CS_NUMERIC* result);

/**
 * -1, 0 or 1 as op1 is less than, equal to or greater than op2. Values whose scales differ are
 * compared at the larger scale, unless the precision of the value with the smaller scale plus the
 * larger scale exceeds 77. Then the surplus decimals of the other value do not count: 5 of (77,0)
 * equals 5.00001. Operands out of range are compared as their record holds them, with the whole
 * array for a precision above 77.
 */
COMN_API CS_INT comn_numcmp(const CS_NUMERIC* op1, const CS_NUMERIC* op2);

/**
 * Bytes of `array` that a value of `precision` occupies, the sign byte included: 2 to 33. A
 * precision outside 1..77 stops the process.
 */
COMN_API CS_INT comn_num_getlen(CS_INT precision);

/**
 * The largest precision that `length` bytes hold; 0 for the lengths 0 and 1. A length outside 0..33
 * stops the process.
 */
COMN_API CS_INT comn_num_getprec(CS_INT length);

#ifdef __cplusplus
}
#endif

#endif
