// Decimal text to double.
#pragma once

#include <string_view>

#include "comnlib/types.h"

namespace comnlib {

struct ParsedFloat {
  CS_RETCODE code;  // CS_SUCCEED, CS_CVT_SYNTAX, CS_CVT_OVERFLOW (largest double of the sign) or
                    // CS_CVT_UNDERFLOW (zero of the sign)
  double value;
};

// Reads the whole of ASCII `text`, blanks around it allowed, as a decimal floating literal with an
// optional sign, point and exponent, or as "inf", "infinity" or "nan" in any case.
ParsedFloat parse_float(std::string_view text);

}  // namespace comnlib
