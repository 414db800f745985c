// Magnitudes of one length, compared, added and subtracted in the byte layout itself, a word at a
// time. Operands of one size are the common case, and taking them into limbs and back would cost
// more than the arithmetic.
#pragma once

#include "exact/limbs.h"

namespace comnlib {

// The first words of two magnitudes that differ; the last ones, if none do.
struct Words {
  Limb a;
  Limb b;
};
inline Words first_difference(const CS_BYTE* a, const CS_BYTE* b, std::size_t count) {
  std::size_t at = 0;
  for (; at + kLimbBytes <= count; at += kLimbBytes) {
    const Words words = {load_word(a + at), load_word(b + at)};
    if (words.a != words.b) return words;
  }
  return {load_part(a + at, count - at), load_part(b + at, count - at)};
}

inline int compare_bytes(const CS_BYTE* a, const CS_BYTE* b, std::size_t count) {
  const Words words = first_difference(a, b, count);
  return (words.a > words.b) - (words.a < words.b);
}

// The carry out of to := a + b. `to` may be an operand, or begin one byte after its start: each
// word is read before it or what lies above it is written.
inline unsigned char add_bytes(const CS_BYTE* a, const CS_BYTE* b, CS_BYTE* to, std::size_t count) {
  unsigned char carry = 0;
  for (; count >= kLimbBytes; count -= kLimbBytes)
    store_word(to + count - kLimbBytes, add_with_carry(load_word(a + count - kLimbBytes),
                                                       load_word(b + count - kLimbBytes), carry));
  if (count == 0) return carry;
  const Limb sum = load_part(a, count) + load_part(b, count) + carry;
  store_part(to, count, sum);
  return static_cast<unsigned char>(sum >> (8 * count));
}

// to := a - b for a >= b; `to` as above.
inline void subtract_bytes(const CS_BYTE* a, const CS_BYTE* b, CS_BYTE* to, std::size_t count) {
  unsigned char borrow = 0;
  for (; count >= kLimbBytes; count -= kLimbBytes)
    store_word(to + count - kLimbBytes,
               subtract_with_borrow(load_word(a + count - kLimbBytes),
                                    load_word(b + count - kLimbBytes), borrow));
  const Limb left = load_part(a, count);
  const Limb right = load_part(b, count) + borrow;
  require(left >= right);
  store_part(to, count, left - right);
}

}  // namespace comnlib
