// Magnitudes of one length, compared, added and subtracted in the byte layout itself, a word at a
// time. Operands of one size are the common case, and taking them into limbs and back would cost
// more than the arithmetic.
#pragma once

#include <cstring>

#include "exact/limbs.h"

namespace comnlib {

inline Limb load_word(const CS_BYTE* from) {
  Limb raw;
  std::memcpy(&raw, from, sizeof raw);
  return __builtin_bswap32(raw);
}

inline void store_word(CS_BYTE* to, Limb value) {
  const Limb raw = __builtin_bswap32(value);
  std::memcpy(to, &raw, sizeof raw);
}

inline int compare_bytes(const CS_BYTE* a, const CS_BYTE* b, std::size_t count) {
  std::size_t at = 0;
  for (; at + 4 <= count; at += 4) {
    const Limb left = load_word(a + at);
    const Limb right = load_word(b + at);
    if (left != right) return left < right ? -1 : 1;
  }
  for (; at < count; ++at) {
    if (a[at] != b[at]) return a[at] < b[at] ? -1 : 1;
  }
  return 0;
}

// The carry out of to := a + b. `to` may be an operand, or stand one byte behind its start: each
// word is read before it or what lies above it is written.
inline unsigned char add_bytes(const CS_BYTE* a, const CS_BYTE* b, CS_BYTE* to, std::size_t count) {
  unsigned char carry = 0;
  for (; count >= 4; count -= 4)
    store_word(to + count - 4,
               add_with_carry(load_word(a + count - 4), load_word(b + count - 4), carry));
  for (; count > 0; --count) {
    const Limb sum = a[count - 1] + b[count - 1] + carry;
    to[count - 1] = static_cast<CS_BYTE>(sum);
    carry = static_cast<unsigned char>(sum >> 8);
  }
  return carry;
}

// to := a - b for a >= b; `to` as above.
inline void subtract_bytes(const CS_BYTE* a, const CS_BYTE* b, CS_BYTE* to, std::size_t count) {
  unsigned char borrow = 0;
  for (; count >= 4; count -= 4)
    store_word(to + count - 4,
               subtract_with_borrow(load_word(a + count - 4), load_word(b + count - 4), borrow));
  for (; count > 0; --count) {
    const Limb difference = a[count - 1] - b[count - 1] - borrow;
    to[count - 1] = static_cast<CS_BYTE>(difference);
    borrow = static_cast<unsigned char>(difference >> 31);
  }
}

}  // namespace comnlib
