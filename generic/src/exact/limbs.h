// Arithmetic on magnitudes in 32-bit limbs, least significant first. A Magnitude is normal: its top
// limb is not zero, and zero has no limbs. Work is sized by the limbs that are there. The byte
// layout of records is known to unpack and pack alone.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

#include "comnlib/types.h"

namespace comnlib {

using Limb = std::uint32_t;
using Wide = std::uint64_t;
using Limbs = std::span<const Limb>;

class Magnitude {
 public:
  // The product of the two longest records takes 66 limbs; nothing here is longer.
  static constexpr std::size_t kCapacity = 68;

  Magnitude() : size_(0) {}
  // Copying would move the whole capacity.
  Magnitude(const Magnitude&) = delete;
  Magnitude& operator=(const Magnitude&) = delete;

  operator Limbs() const { return {limb_, size_}; }
  std::size_t size() const { return size_; }
  bool is_zero() const { return size_ == 0; }
  Limb operator[](std::size_t at) const { return limb_[at]; }

  void assign(Limbs from) {
    std::ranges::copy(from, limb_);
    size_ = from.size();
  }
  void assign(Wide value) {
    limb_[0] = static_cast<Limb>(value);
    limb_[1] = static_cast<Limb>(value >> 32);
    size_ = limb_[1] != 0 ? 2 : limb_[0] != 0 ? 1 : 0;
  }

  // For the operations of this module: raw access, and the cut to the normal form.
  Limb* data() { return limb_; }
  void trim(std::size_t size) {
    while (size > 0 && limb_[size - 1] == 0) --size;
    size_ = size;
  }

 private:
  std::size_t size_;
  Limb limb_[kCapacity];  // beyond size_ never read
};

// Quotient of high * 2^32 + low by a divisor above `high`. The processor's own division: the
// compiler would call the 64-bit library routine.
inline Limb divide_wide(Limb high, Limb low, Limb divisor, Limb& remainder) {
  Limb quotient;
  __asm__("divl %4" : "=a"(quotient), "=d"(remainder) : "a"(low), "d"(high), "rm"(divisor) : "cc");
  return quotient;
}

// One step of a sum or difference; `carry` and `borrow`, 0 or 1, go in and come out. Adding 255 to
// them sets the processor's carry, which the compiler does not use by itself, and whose built-in
// routines take every sum through memory.
inline Limb add_with_carry(Limb a, Limb b, unsigned char& carry) {
  __asm__("addb $-1, %[carry]\n\tadcl %[b], %[a]\n\tsetc %[carry]"
          : [a] "+r"(a), [carry] "+&q"(carry)
          : [b] "r"(b)
          : "cc");
  return a;
}

inline Limb subtract_with_borrow(Limb a, Limb b, unsigned char& borrow) {
  __asm__("addb $-1, %[borrow]\n\tsbbl %[b], %[a]\n\tsetc %[borrow]"
          : [a] "+r"(a), [borrow] "+&q"(borrow)
          : [b] "r"(b)
          : "cc");
  return a;
}

inline std::size_t byte_length(Limbs value) {
  if (value.empty()) return 0;
  return value.size() * 4 - static_cast<std::size_t>(std::countl_zero(value.back())) / 8;
}

// The magnitude of a record's `count` big-endian bytes.
inline void unpack(const CS_BYTE* bytes, std::size_t count, Magnitude& to) {
  Limb* limb = to.data();
  std::size_t size = 0;
  for (; count >= 4; count -= 4) {
    Limb raw;
    std::memcpy(&raw, bytes + count - 4, 4);
    limb[size++] = __builtin_bswap32(raw);
  }
  if (count > 0) {
    Limb top = 0;
    for (std::size_t at = 0; at < count; ++at) top = top << 8 | bytes[at];
    limb[size++] = top;
  }
  to.trim(size);
}

// Writes the low `count` bytes of a magnitude, big-endian, with leading zeros.
inline void pack(Limbs value, CS_BYTE* bytes, std::size_t count) {
  const std::size_t whole = std::min(count / 4, value.size());
  CS_BYTE* to = bytes + count;
  for (std::size_t at = 0; at < whole; ++at) {
    const Limb raw = __builtin_bswap32(value[at]);
    to -= 4;
    std::memcpy(to, &raw, 4);
  }
  Limb rest = whole < value.size() ? value[whole] : 0;
  for (; rest != 0 && to != bytes; rest >>= 8) *--to = static_cast<CS_BYTE>(rest);
  while (to != bytes) *--to = 0;
}

inline int compare(Limbs a, Limbs b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (std::size_t at = a.size(); at-- > 0;) {
    if (a[at] != b[at]) return a[at] < b[at] ? -1 : 1;
  }
  return 0;
}

// sum := a + b. `sum` may be either operand.
inline void add(Limbs a, Limbs b, Magnitude& sum) {
  if (a.size() < b.size()) std::swap(a, b);
  Limb* out = sum.data();
  unsigned char carry = 0;
  std::size_t at = 0;
  for (; at < b.size(); ++at) out[at] = add_with_carry(a[at], b[at], carry);
  for (; at < a.size(); ++at) out[at] = add_with_carry(a[at], 0, carry);
  out[at] = carry;
  sum.trim(at + carry);
}

// difference := a - b for a >= b. `difference` may be either operand.
inline void subtract(Limbs a, Limbs b, Magnitude& difference) {
  Limb* out = difference.data();
  unsigned char borrow = 0;
  std::size_t at = 0;
  for (; at < b.size(); ++at) out[at] = subtract_with_borrow(a[at], b[at], borrow);
  for (; at < a.size(); ++at) out[at] = subtract_with_borrow(a[at], 0, borrow);
  difference.trim(at);
}

// product := a * b; `product` is neither operand.
void multiply(Limbs a, Limbs b, Magnitude& product);

// value := value * factor + addend, one limb longer at most.
inline void multiply_add(Magnitude& value, Limb factor, Limb addend) {
  Limb* limb = value.data();
  const std::size_t size = value.size();
  Limb carry = addend;
  for (std::size_t at = 0; at < size; ++at) {
    const Wide digit = Wide{limb[at]} * factor + carry;
    limb[at] = static_cast<Limb>(digit);
    carry = static_cast<Limb>(digit >> 32);
  }
  limb[size] = carry;
  value.trim(size + 1);
}

// value := value / divisor; returns the remainder.
inline Limb divide_by(Magnitude& value, Limb divisor) {
  Limb* limb = value.data();
  Limb remainder = 0;
  for (std::size_t at = value.size(); at-- > 0;)
    limb[at] = divide_wide(remainder, limb[at], divisor, remainder);
  value.trim(value.size());
  return remainder;
}

// quotient := dividend / divisor, remainder := the rest, for a divisor that is not zero. Neither
// result is an operand.
void divide(Limbs dividend, Limbs divisor, Magnitude& quotient, Magnitude& remainder);

struct Power {
  std::uint32_t size;
  std::array<Limb, 8> limb;
};

consteval std::array<Power, CS_MAX_PREC + 1> powers_of_ten() {
  std::array<Power, CS_MAX_PREC + 1> table{};
  table[0] = {1, {1}};
  for (std::size_t n = 1; n < table.size(); ++n) {
    Power& power = table[n];
    power.size = table[n - 1].size;
    Wide carry = 0;
    for (std::size_t at = 0; at < power.size; ++at) {
      carry += Wide{table[n - 1].limb[at]} * 10;
      power.limb[at] = static_cast<Limb>(carry);
      carry >>= 32;
    }
    if (carry != 0) power.limb[power.size++] = static_cast<Limb>(carry);
  }
  return table;
}

inline constexpr std::array<Power, CS_MAX_PREC + 1> kPowers = powers_of_ten();

// 10^exponent for exponents of 0 to 77.
inline Limbs power_of_ten(int exponent) {
  const Power& power = kPowers[static_cast<std::size_t>(exponent)];
  return {power.limb.data(), power.size};
}

// value := value * 10^exponent, for exponents of 0 to 77.
void scale_up(Magnitude& value, int exponent);

// value := value / 10^exponent for any exponent from 0 on; whether nonzero digits were dropped.
bool scale_down(Magnitude& value, int exponent);

// Whether value >= 10^precision; nothing that a record holds reaches a power above 77.
inline bool exceeds(Limbs value, int precision) {
  return precision <= CS_MAX_PREC && compare(value, power_of_ten(precision)) >= 0;
}

}  // namespace comnlib
