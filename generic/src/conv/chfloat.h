// Decimal text to double.
#pragma once

#include "chars/text.h"
#include "comnlib/types.h"

namespace comnlib {

struct ParsedFloat {
  CS_RETCODE code;  // CS_SUCCEED, CS_CVT_SYNTAX, CS_CVT_OVERFLOW (largest double of the sign) or
                    // CS_CVT_UNDERFLOW (the nearest double, a denormal number or zero)
  double value;
};

// Reads the whole of `text`, or what precedes its first NUL, as a decimal floating literal with an
// optional sign, point and exponent, or as "inf", "infinity" or "nan" in any case. Blanks may
// surround it. A literal may be of any length.
ParsedFloat parse_float(const Text& text);

}  // namespace comnlib
