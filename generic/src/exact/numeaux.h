// The working record of exact arithmetic, its three tables, and the small operations on one
// magnitude. A record's `value` holds a sign byte (0 positive, anything else negative) and a
// big-endian magnitude of len - 1 bytes; sums and products of magnitudes are never wider than
// kMaxRecordLength bytes, and a longer record stops the process.
#pragma once

#include <array>

#include "comnlib/result.h"
#include "comnlib/types.h"

struct constant {
  CS_INT len;  // bytes at `value`, the sign byte included
  CS_BYTE prec;
  CS_BYTE scale;
  CS_BYTE* value;
};

namespace comnlib {

// Status of every kernel operation and conversion of exact numerics and money.
enum : CS_INT {
  kExactOk = 0,
  kExactOverflow = 1,   // does not fit the destination's length or precision
  kExactSyntax = 2,     // text is not a number
  kExactDivZero = 3,    // division by zero
  kExactRange = 5,      // beyond the range of a double
  kExactTruncated = 6,  // nonzero digits were dropped
};

constexpr CS_INT kMaxRecordLength = 133;

// Flags of a comparison.
enum : CS_INT { kCompareSigns = 1, kCompareScales = 2 };

// In a record that text is parsed into: take the precision, or the scale, that the text needs.
constexpr CS_BYTE kFromText = 255;

// The result code of a public operation that ended with `status`; dropped digits count as overflow.
constexpr CS_RETCODE exact_code(CS_INT status) {
  switch (status) {
    case kExactOverflow:
    case kExactTruncated:
      return CS_CVT_OVERFLOW;
    case kExactSyntax:
      return CS_CVT_SYNTAX;
    case kExactDivZero:
      return CS_CVT_DIVZERO;
    default:
      return CS_SUCCEED;
  }
}

constexpr bool is_precision(CS_INT precision) {
  return precision >= 1 && precision <= CS_MAX_PREC;
}
constexpr bool is_scale(CS_INT scale) {
  return scale >= 0 && scale <= CS_MAX_SCALE;
}

}  // namespace comnlib

extern "C" {

// Bytes of a value of precision 0 to 77: the sign byte and as many as 10^p - 1 needs, at least 2.
extern const std::array<CS_BYTE, 78> Com__Nume_Prec_To_Len;
// Largest precision that a length holds, indexed by length - 2; 255 for the lengths 34 to 36.
extern const std::array<CS_BYTE, 35> Com__Nume_Len_To_Prec;
// Entry i: the length n of 10^i, then its n bytes, sign byte first.
extern const std::array<std::array<CS_BYTE, 34>, 78> Com__Nume_Byte_Power_Array;

// Compares: -1, 0 or 1. Flag 1 considers signs (zeros are equal whatever their signs), flag 2
// aligns scales: the operand with the smaller scale is scaled up, unless its precision plus the
// larger scale exceeds 77; then the other one is scaled down, and what it loses does not count.
CS_INT com__exctnume_cmp(const constant* op1, const constant* op2, CS_INT flag);

// 1 when the magnitude is 10^prec or more, else 0.
CS_INT com__exctnume_checkprecision(const constant* val);

// 1 when the magnitude is the byte `i`, else 0; the zero test with i = 0.
CS_INT com__exctnume_intcmp(const constant* val, CS_INT i);

// Copies sign and magnitude into `out`, right-aligned in its length. Overflow when nonzero bytes do
// not fit; nothing is written then.
CS_INT com__exctnume_copy(const constant* in, constant* out);

// Divides the magnitude by 10 in place and returns the remainder; leading zero bytes are dropped
// (val->len shrinks, the rest moves up) while the length stays above 2.
CS_INT com__exctnume_divby10(constant* val);

// val = val * 10 + digit on the magnitude; 1 on a carry out of the top byte, which is lost.
CS_INT com__exctnume_mulby10_add(constant* val, CS_INT digit);

// Adds 1 to the magnitude; 1 on a carry out of the top byte, which is lost.
CS_INT com__exctnume_inc(constant* val);

// 1 when every magnitude byte is 255, so that an increment needs one byte more.
CS_INT com__exctnume_needsbyte(const constant* val);
}
