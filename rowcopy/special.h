// The bytes that mean something to CSV, searched sixteen at a time: fields are short, and a loop
// over their bytes would cost as much as converting them.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstring>

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
    for (; at < end; at += kBlock) {
      const unsigned found = in_block(at);
      if (found == 0) continue;
      at += __builtin_ctz(found);
      return at < end ? at : end;
    }
    return end;
  }

 private:
  friend class SpecialWalk;
  static constexpr int kBlock = 16;

  // A bit for each of the bytes from `at` on.
  unsigned in_block(const char* at) const {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i ends = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')),
                                      _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')));
    const __m128i marks =
        _mm_or_si128(_mm_cmpeq_epi8(bytes, delimiter_), _mm_cmpeq_epi8(bytes, quote_));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(ends, marks)));
  }

  __m128i delimiter_;
  __m128i quote_;
};

// Goes from one special byte to the next. After `end` kSpecialSlack bytes may be read.
class SpecialWalk {
 public:
  SpecialWalk(const Specials& specials, const char* begin, const char* end)
      : specials_(specials), end_(end), block_(begin), found_(specials.in_block(begin)) {}

  // The next special byte, or one at or after the end.
  const char* next() {
    while (found_ == 0) {
      block_ += Specials::kBlock;
      if (block_ >= end_) return end_;
      found_ = specials_.in_block(block_);
    }
    const char* const found = block_ + __builtin_ctz(found_);
    found_ &= found_ - 1;
    return found;
  }

 private:
  const Specials specials_;
  const char* const end_;
  const char* block_;
  unsigned found_;  // the special bytes of the block that are left
};

// Whether two texts have the same bytes; kSpecialSlack bytes may be read after each.
inline bool same_bytes(const char* a, const char* b, std::size_t size) {
  const auto differing = [&](std::size_t at) {
    return ~_mm_movemask_epi8(
        _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a + at)),
                       _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + at))));
  };
  if (size <= 16) return (differing(0) & ((1 << size) - 1)) == 0;
  if (size > 32) return std::memcmp(a, b, size) == 0;
  return ((differing(0) | differing(size - 16)) & 0xFFFF) == 0;
}

}  // namespace rowcopy
