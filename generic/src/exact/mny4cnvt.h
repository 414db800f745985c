// Small money inside the library: the operations of comnlib/money.h with their statuses, and
// the conversions. Multiplication, division and text go through the 64-bit forms of mnycnvt.h.
#pragma once

#include "comnlib/charset.h"
#include "comnlib/types.h"

extern "C" {

// The operations: arguments, results and what is stored on failure are those of comnlib/money.h.
CS_INT com__mny4copy(const CS_MONEY4* src, CS_MONEY4* dst);
CS_INT com__mny4zero(CS_MONEY4* m);
CS_INT com__mny4cmp(const CS_MONEY4* a, const CS_MONEY4* b);
CS_INT com__mny4minus(const CS_MONEY4* src, CS_MONEY4* dst);
CS_INT com__mny4add(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
CS_INT com__mny4sub(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
CS_INT com__mny4mul(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);
CS_INT com__mny4div(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r);

// Between the two sizes. com__mnytomny4 clamps a value out of range and returns kMoneyNarrowed.
CS_INT com__mny4tomny(const CS_MONEY4* src, CS_MONEY* dst);
CS_INT com__mnytomny4(const CS_MONEY* src, CS_MONEY4* dst);

// Between small money and numbers, as the 64-bit forms do it. A value that small money cannot hold
// is clamped, with status kExactOverflow.
CS_INT com__inttomny4(CS_INT value, CS_MONEY4* m);
CS_INT com__mny4toint(const CS_MONEY4* m, CS_INT* value);
CS_INT com__mny4toflt8(const CS_MONEY4* m, CS_FLOAT* value);
CS_INT com__mny4toflt4(const CS_MONEY4* m, CS_REAL* value);
CS_INT com__flt8tomny4(CS_FLOAT value, CS_MONEY4* m);
CS_INT com__flt4tomny4(CS_REAL value, CS_MONEY4* m);

CS_CHAR* com__mny4tochar(const CS_MONEY4* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags);
CS_INT com__mny4fromchar_mb(CS_MONEY4* m, const CS_CHAR* text, CS_INT length, CS_INT flags,
                            const char_attrib* charset);
}
