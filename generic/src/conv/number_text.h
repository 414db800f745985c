// Numbers as text. Nothing here depends on the process's locale.
#pragma once

#include <emmintrin.h>

#include <array>
#include <bit>
#include <string_view>

#include "chars/decimal.h"
#include "comnlib/types.h"

namespace comnlib {

// Room for any number's text; one that needs more is an internal error.
using NumberBuffer = std::array<char, 63>;

// Decimal digits, with a "-" before a negative value. Numbers that are not short come out of one
// register, since what is stored in parts is slow to read back as a whole.
inline std::string_view text_of(CS_INT value, NumberBuffer& buffer) {
  constexpr CS_UINT kEightDigits = 100'000'000;
  const CS_UINT magnitude = value < 0 ? -static_cast<CS_UINT>(value) : static_cast<CS_UINT>(value);
  char* end = buffer.data() + 20;
  char* begin;
  if (magnitude < 100) {
    begin = put_number(magnitude, end);
  } else {
    const __m128i digits = sixteen_digits(magnitude / kEightDigits, magnitude % kEightDigits);
    begin = end - 16;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(begin), digits);
    const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_set1_epi8('0')));
    begin += std::countr_one(static_cast<unsigned>(zeros));
  }
  if (value < 0) *--begin = '-';
  return {begin, end};
}

// At most 17 significant digits, as %.17g prints them, but without the zero of a leading "0." and
// followed by ".0" where it has neither point nor exponent. Either zero is "0.0".
std::string_view text_of(CS_FLOAT value, NumberBuffer& buffer);

}  // namespace comnlib
