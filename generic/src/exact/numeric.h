// Conversions of exact numerics to and from integers, doubles, money and text, and the one
// rescaling that arithmetic and the conversion between numerics share. Each returns a kernel
// status. Destination records come with their length, precision and scale set; the value is kept
// and brought to that scale. Overflow zeroes a destination record's bytes, a syntax error does
// not touch them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "exact/numeaux.h"

extern "C" {

CS_INT com__longtoexctnume(CS_INT value, constant* dest);
CS_INT com__longlongtoexctnume(std::int64_t value, constant* dest);

// Through the text of 17 significant digits, rounded half away from zero at the destination's
// scale. Precision and scale may be kFromText, as for text. An infinity or NaN is a syntax error.
CS_INT com__doubletoexctnume(CS_FLOAT value, constant* dest);

// The nearest double. A record of up to 33 bytes never gives the range error (5).
CS_INT com__subexctnumetoflt8(const constant* src, CS_FLOAT* dest);

// To ten-thousandths, further decimals dropped; overflow outside -2^63 .. 2^63 - 1 units, with
// *dest left alone.
CS_INT com__exctnumetomny8(const constant* src, CS_MONEY* dest);

// From ten-thousandths. Overflow when the value at the destination's scale exceeds its precision or
// length; dropped nonzero digits otherwise give truncation with the cut value stored.
CS_INT com__mny8toexctnume(const CS_MONEY* src, constant* dest);

// "-" for a set sign byte, at least one integer digit, and for a scale above 0 a "." and exactly
// `scale` digits. *outlen is the length; a NUL follows when the buffer has room for it. Overflow
// when the text is longer than `buflen`; nothing is written then and *outlen is 0.
CS_INT com__subexctnumetochar(const constant* src, CS_CHAR* buf, CS_INT buflen, CS_INT* outlen);

// Reads `length` bytes: blanks, a sign, digits with at most one ".", an exponent, white space.
// Digits beyond the scale are rounded half away from zero when `rounding` is 1; otherwise nonzero
// ones give truncation with the cut value stored. A precision of kFromText is replaced by the
// number of digits in the text without leading zeros, at least 1, the scale and what the value
// needs; a scale of kFromText by the number of decimals, at most 77. Both stay as they were when
// the status is overflow or syntax. The value is right-aligned in dest->len bytes.
CS_INT com__subchartoexctnume(const CS_CHAR* text, CS_INT length, constant* dest, CS_INT rounding);
}

namespace comnlib {

// The record over a CS_NUMERIC, with the length of its precision; a precision beyond 77 takes the
// whole array. The value is not copied.
inline constant record_of(CS_NUMERIC& numeric) {
  const std::size_t precision = std::min<CS_BYTE>(numeric.precision, CS_MAX_PREC);
  return {Com__Nume_Prec_To_Len[precision], numeric.precision, numeric.scale, numeric.array};
}
inline const constant record_of(const CS_NUMERIC& numeric) {
  return record_of(const_cast<CS_NUMERIC&>(numeric));
}

// Brings src's value to the precision and scale of `dest`, whose length is that of its precision:
// the magnitude is copied into that length first (overflow), then scaled (overflow, or truncation
// with the cut value stored, which comes before the precision check), then checked against the
// precision (overflow). Overflow zeroes the bytes of `dest`.
CS_INT rescale(const constant& src, constant& dest);

// Parses text into a numeric, as com__subchartoexctnume does: precision and scale are in range or
// kFromText. The record gets the resulting precision and scale, and the value at the front of its
// array. After a syntax error, and after an overflow with kFromText, the record is as it was; any
// other overflow leaves zero.
CS_INT parse_numeric(std::string_view text, CS_BYTE precision, CS_BYTE scale, bool rounding,
                     CS_NUMERIC& dest);

// The value as an integer, truncated towards zero. The range is checked before truncation: a value
// outside it gives overflow and the limit that it passed.
CS_INT to_integer(const constant& src, std::int64_t& value);

}  // namespace comnlib
