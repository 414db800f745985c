/**
 * @file
 * Money values: signed fixed-point amounts with exactly four decimals. CS_MONEY has 64 bits
 * (-922337203685477.5808 to 922337203685477.5807), CS_MONEY4 has 32 (-214748.3648 to 214748.3647).
 * A unit is 1/10000.
 *
 * - Results are written to the last record; it may be one of the operands. A null pointer stops the
 *   process. Records are the caller's. Nothing is allocated or kept between calls, and any number
 *   of threads may call at once.
 * - Functions of type CS_RETCODE return CS_SUCCEED, CS_CVT_OVERFLOW when the result does not fit,
 *   or CS_CVT_DIVZERO. Add, subtract, multiply and divide leave a zero result when they fail.
 * - Every value is exact; where digits must be dropped, each function says whether it rounds or
 *   cuts.
 */
#ifndef COMNLIB_MONEY_H
#define COMNLIB_MONEY_H

#include "result.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** dst := src. Always CS_SUCCEED. */
COMN_API CS_RETCODE comn_mnycopy(const CS_MONEY* src, CS_MONEY* dst);

/**
 * comn_mnyzero, comn_mnymaxpos, comn_mnymaxneg: store zero, the largest and the smallest value.
 * Always CS_SUCCEED.
 */
/**@{*/
COMN_API CS_RETCODE comn_mnyzero(CS_MONEY* m);
COMN_API CS_RETCODE comn_mnymaxpos(CS_MONEY* m);
COMN_API CS_RETCODE comn_mnymaxneg(CS_MONEY* m);
/**@}*/

/** -1, 0 or 1 as `a` is less than, equal to or greater than `b`. */
COMN_API CS_INT comn_mnycmp(const CS_MONEY* a, const CS_MONEY* b);

/** dst := -src. The smallest value overflows and is stored as it is. */
COMN_API CS_RETCODE comn_mnyminus(const CS_MONEY* src, CS_MONEY* dst);

/**
 * comn_mnyinc, comn_mnydec: add or subtract one unit in place. On overflow the value is left
 * wrapped to the other end of the range, not zeroed.
 */
/**@{*/
COMN_API CS_RETCODE comn_mnyinc(CS_MONEY* m);
COMN_API CS_RETCODE comn_mnydec(CS_MONEY* m);
/**@}*/

/** comn_mnyadd, comn_mnysub: r := a + b, r := a - b. */
/**@{*/
COMN_API CS_RETCODE comn_mnyadd(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_RETCODE comn_mnysub(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
/**@}*/

/** r := a * b, rounded to a unit, halves away from zero. */
COMN_API CS_RETCODE comn_mnymul(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);

/**
 * comn_mnydivide: r := a / b, cut after four decimals (toward zero). A zero divisor gives
 * CS_CVT_DIVZERO. comn_mnyxdiv gives the same.
 */
/**@{*/
COMN_API CS_RETCODE comn_mnydivide(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_RETCODE comn_mnyxdiv(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
/**@}*/

/**
 * m := m / divisor, toward zero; returns the remainder of the magnitude. Only the low 16 bits of
 * `divisor` count; when they are 0, `m` is unchanged and 0 is returned.
 */
COMN_API CS_INT comn_mnydown(CS_MONEY* m, CS_INT divisor);

/**
 * Works on the magnitude, |m| := |m| * multiplier + addend, and keeps the sign. The multiplier is
 * taken as unsigned; a multiplier of 0 makes `m` the addend, whatever it was. Overflow when the
 * magnitude would be negative or reach 2^63, for negative values too; `m` is then unchanged.
 */
COMN_API CS_RETCODE comn_mnyscale(CS_MONEY* m, CS_INT multiplier, CS_INT addend);

/**
 * Begins digit extraction: makes `m` its magnitude divided by 10^ndigits (a negative number removes
 * no digits), rounded up when the last removed digit is 5 or more. Returns -1 when `m` was negative
 * and 0 otherwise.
 */
COMN_API CS_INT comn_mnyinit(CS_MONEY* m, CS_INT ndigits);

/**
 * Takes the last decimal digit off `m` and stores it as a character. Returns nonzero while `m` is
 * not zero.
 */
COMN_API CS_INT comn_mnyndigit(CS_MONEY* m, CS_CHAR* digit);

/**
 * The routines of the same names on small money. comn_mny4mul and comn_mny4divide work in 64 bits
 * and narrow the result. comn_mny4minus of the smallest value overflows and stores it as it is.
 */
/**@{*/
COMN_API CS_RETCODE comn_mny4copy(const CS_MONEY4* src, CS_MONEY4* dst);
COMN_API CS_RETCODE comn_mny4zero(CS_MONEY4* m);
COMN_API CS_INT comn_mny4cmp(const CS_MONEY4* a, const CS_MONEY4* b);
COMN_API CS_RETCODE comn_mny4minus(const CS_MONEY4* src, CS_MONEY4* dst);
COMN_API CS_RETCODE comn_mny4add(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
COMN_API CS_RETCODE comn_mny4sub(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
COMN_API CS_RETCODE comn_mny4mul(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
COMN_API CS_RETCODE comn_mny4divide(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
/**@}*/

/**
 * Text of a value, built at the end of `buf` (`buflen` bytes) with a NUL in its last byte. Returns
 * the first character, or null when text and NUL do not fit; the bytes before the text are then
 * unspecified. A negative `buflen` stops the process.
 *
 * `flags`: bits 8 and up give the decimals, 0 means 2, more than 4 mean 4; the low byte 1 asks for
 * a "," after every third integer digit. Removed decimals are rounded, halves away from zero. There
 * is at least one integer digit; a negative value keeps its "-" when it rounds to zero.
 * com_precmnytochar takes the decimals as an argument and grouping from the low byte of `flags`; a
 * negative number of decimals counts as 0. The longest text has 26 bytes, its NUL included.
 */
/**@{*/
COMN_API CS_CHAR* com_cvtmnytochar(const CS_MONEY* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags);
COMN_API CS_CHAR* com_cvtmny4tochar(const CS_MONEY4* m4, CS_CHAR* buf, CS_INT buflen, CS_INT flags);
COMN_API CS_CHAR* com_precmnytochar(const CS_MONEY* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags,
                                    CS_INT decimals);
/**@}*/

/** Older names: each does what the routine with the prefix comn_ does and returns the same. */
/**@{*/
COMN_API CS_RETCODE com_mnycopy(const CS_MONEY* src, CS_MONEY* dst);
COMN_API CS_RETCODE com_mnyzero(CS_MONEY* m);
COMN_API CS_RETCODE com_mnymaxpos(CS_MONEY* m);
COMN_API CS_RETCODE com_mnymaxneg(CS_MONEY* m);
COMN_API CS_INT com_mnycmp(const CS_MONEY* a, const CS_MONEY* b);
COMN_API CS_RETCODE com_mnyminus(const CS_MONEY* src, CS_MONEY* dst);
COMN_API CS_RETCODE com_mnyinc(CS_MONEY* m);
COMN_API CS_RETCODE com_mnydec(CS_MONEY* m);
COMN_API CS_RETCODE com_mnyadd(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_RETCODE com_mnysub(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_RETCODE com_mnymul(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_RETCODE com_mnydivide(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_RETCODE com_mnyxdiv(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
COMN_API CS_INT com_mnydown(CS_MONEY* m, CS_INT divisor);
COMN_API CS_RETCODE com_mnyscale(CS_MONEY* m, CS_INT multiplier, CS_INT addend);
COMN_API CS_INT com_mnyinit(CS_MONEY* m, CS_INT ndigits);
COMN_API CS_INT com_mnyndigit(CS_MONEY* m, CS_CHAR* digit);
COMN_API CS_RETCODE com_mny4copy(const CS_MONEY4* src, CS_MONEY4* dst);
COMN_API CS_RETCODE com_mny4zero(CS_MONEY4* m);
COMN_API CS_INT com_mny4cmp(const CS_MONEY4* a, const CS_MONEY4* b);
COMN_API CS_RETCODE com_mny4minus(const CS_MONEY4* src, CS_MONEY4* dst);
COMN_API CS_RETCODE com_mny4add(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
COMN_API CS_RETCODE com_mny4sub(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
COMN_API CS_RETCODE com_mny4mul(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
COMN_API CS_RETCODE com_mny4divide(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
