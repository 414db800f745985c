// What a text in a CSV file stands for, before any conversion: reads numbers and hexadecimal bytes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "datatype.h"

namespace rowcopy {

// A number as it stands in the text, in the datatype that its conversions start from: an integer
// that fits is a CS_INT, every other number a CS_FLOAT.
struct Number {
  CS_INT code = CS_INT_TYPE;
  union {
    CS_INT integer;
    CS_FLOAT floating;
  };

  Number() : integer(0) {}
  const void* data() const { return &floating; }
};

// Blanks around a number are left out; it may have a sign. Results: CS_SUCCEED; CS_CVT_SYNTAX when
// the text is no number of that form ("inf" and "nan" are none); CS_CVT_OVERFLOW or
// CS_CVT_UNDERFLOW when it lies beyond what a CS_FLOAT can hold.
CS_RETCODE read_number(std::string_view text, TextForm form, Number& number);

// Pairs of hexadecimal digits, after an optional "0x". CS_SUCCEED or CS_CVT_SYNTAX.
CS_RETCODE read_hexadecimal(std::string_view text, std::vector<char>& bytes);

// The text that read_hexadecimal reads, with "0x".
void append_hexadecimal(std::string_view bytes, std::string& text);

}  // namespace rowcopy
