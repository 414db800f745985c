// Money inside the library: the operations of comnlib/money.h with their statuses, and the
// conversions between money and integers, floats and text. Pointers are not checked. Statuses are
// those of exact/numeaux.h, and kMoneyNarrowed.
#pragma once

#include "comnlib/charset.h"
#include "comnlib/types.h"

namespace comnlib {

// Only com__mnytomny4 returns this status: the value was clamped to the range of small money. It
// must not reach exact_code(), which takes it for success.
constexpr CS_INT kMoneyNarrowed = -1;

}  // namespace comnlib

extern "C" {

// The operations: arguments, results and what is stored on failure are those of comnlib/money.h.
CS_INT com__mnycopy(const CS_MONEY* src, CS_MONEY* dst);
CS_INT com__mnyzero(CS_MONEY* m);
CS_INT com__maxposmny(CS_MONEY* m);
CS_INT com__maxnegmny(CS_MONEY* m);
CS_INT com__mnycmp(const CS_MONEY* a, const CS_MONEY* b);
CS_INT com__mnyminus(const CS_MONEY* src, CS_MONEY* dst);
CS_INT com__mnyinc(CS_MONEY* m);
CS_INT com__mnydec(CS_MONEY* m);
CS_INT com__mnyadd(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
CS_INT com__mnysub(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
CS_INT com__mnymul(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
CS_INT com__mnydiv(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
CS_INT comn__mny16div(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r);
CS_INT com__mnydown(CS_MONEY* m, CS_INT divisor);
CS_INT com__mnyscale(CS_MONEY* m, CS_INT multiplier, CS_INT addend);
CS_INT com__mnyinit(CS_MONEY* m, CS_INT ndigits);
CS_INT com__mnyndigit(CS_MONEY* m, CS_CHAR* digit);

// Shifts the 64 bits right once for each significant bit of `n` (1: once, 2 or 3: twice, 4 to 7:
// three times, negative: 32 times), zeros coming in at the top even for negative values.
CS_INT com__mnyshift(CS_MONEY* m, CS_INT n);

// Between money and numbers. An overflow stores the limit that the value passed.
// com__mnytoint: toward zero, but -0.5 to -0.9999 become -1.
// com__flt8tomny: value * 10000 as a double, rounded to a unit, halves away from zero; -2^63 units
// are in range, 2^63 are not. A NaN is an overflow and stores zero.
CS_INT com__inttomny(CS_INT value, CS_MONEY* m);
CS_INT com__mnytoint(const CS_MONEY* m, CS_INT* value);
CS_INT com__mnytoflt8(const CS_MONEY* m, CS_FLOAT* value);
CS_INT com__mnytoflt4(const CS_MONEY* m, CS_REAL* value);
CS_INT com__flt8tomny(CS_FLOAT value, CS_MONEY* m);
CS_INT com__flt4tomny(CS_REAL value, CS_MONEY* m);

// Text of a value, as com_cvtmnytochar gives it; null when it does not fit.
CS_CHAR* com__mnytochar(const CS_MONEY* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags);

// The value of `length` bytes of text in the character set `charset` (null: ISO 8859-1); two-byte
// characters count as their ASCII forms. `flags` is not used. A negative length stops the process.
//   text:      prefix digits fraction white-space
//   prefix:    blanks, at most one sign and at most one currency symbol, in any order
//   digits:    a "," may follow the first group of digits, and every further group of exactly three
//   fraction:  a "." and decimals: the fifth rounds, later ones do not count
// Text without a digit is 0. Syntax for other text, overflow for a value out of range, whichever is
// met first; the digits read so far are then stored, as a count of the last one's units.
CS_INT com__mnyfromchar_mb(CS_MONEY* m, const CS_CHAR* text, CS_INT length, CS_INT flags,
                           const char_attrib* charset);
}
