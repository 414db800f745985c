// The bytes that mean something to CSV, searched sixteen at a time: fields are short, and a loop
// over their bytes would cost as much as converting them.
#pragma once

#include <emmintrin.h>

#include <cstddef>

#include "dialect.h"

namespace rowcopy {

// Bytes that may be read after the text.
constexpr std::size_t kSpecialSlack = 16;

class Specials {
 public:
  explicit Specials(const Dialect& dialect)
      : delimiter_(_mm_set1_epi8(dialect.delimiter)),
        quote_(_mm_set1_epi8(dialect.quote.value_or(dialect.delimiter))) {}

  // The first delimiter, quote, CR or LF, or `end`.
  const char* find(const char* at, const char* end) const {
    const __m128i lf = _mm_set1_epi8('\n');
    const __m128i cr = _mm_set1_epi8('\r');
    for (; at < end; at += 16) {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
      const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, lf), _mm_cmpeq_epi8(bytes, cr));
      const __m128i marks =
          _mm_or_si128(_mm_cmpeq_epi8(bytes, delimiter_), _mm_cmpeq_epi8(bytes, quote_));
      const int found = _mm_movemask_epi8(_mm_or_si128(ends, marks));
      if (found == 0) continue;
      at += __builtin_ctz(static_cast<unsigned>(found));
      return at < end ? at : end;
    }
    return end;
  }

 private:
  __m128i delimiter_;
  __m128i quote_;
};

}  // namespace rowcopy
