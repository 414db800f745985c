// Text of money values: formatting and parsing shared by all money routines.
#pragma once

#include <string_view>

#include "comnlib/charset.h"
#include "exact/mnymath.h"

namespace comnlib::money {

// Formats at the end of the `buflen` bytes at `buf`, as com_cvtmnytochar does; null when text and
// NUL do not fit.
CS_CHAR* format_backwards(Units value, CS_CHAR* buf, CS_INT buflen, CS_INT flags);

// A number of decimals as the flags hold it: no more than four are ever written, and a negative
// number asks for the usual two.
CS_INT decimal_flags(CS_INT decimals);

struct Parsed {
  Units value;
  CS_INT status;  // kExactOk, kExactSyntax or kExactOverflow
};

// Reads a value as com__mnyfromchar_mb does.
Parsed parse(std::basic_string_view<CS_CHAR> text, const char_attrib* charset);

}  // namespace comnlib::money
