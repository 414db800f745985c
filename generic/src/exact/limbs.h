// Arithmetic on magnitudes in limbs, the processor's words, least significant first. A Magnitude is
// normal: its top limb is not zero, and zero has no limbs. Work is sized by the limbs that are
// there. Only unpack and pack know the byte layout of records.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

#include "diag/diag.h"
#include "exact/numeaux.h"
#include "machine.h"

namespace comnlib {

using Limbs = std::span<const Limb>;

inline constexpr std::size_t kLimbBytes = sizeof(Limb);
inline constexpr int kLimbBits = std::numeric_limits<Limb>::digits;
// 10 to this power is the largest power of ten in a limb.
inline constexpr int kLimbDigits = std::numeric_limits<Limb>::digits10;

constexpr std::size_t limbs_for(std::size_t bytes) {
  return (bytes + kLimbBytes - 1) / kLimbBytes;
}
// The longest magnitude of a record, and of a power of ten.
inline constexpr std::size_t kRecordLimbs = limbs_for(kMaxRecordLength - 1);
inline constexpr std::size_t kPowerLimbs = limbs_for(CS_MAX_NUMLEN - 1);

class Magnitude {
 public:
  // The product of the two longest records; a sum or a shifted dividend has one limb more.
  static constexpr std::size_t kCapacity = 2 * kRecordLimbs + 1;
  // A record is scaled up, and then shifted for a division.
  static_assert(kRecordLimbs + kPowerLimbs < kCapacity);

  Magnitude() : size_(0) {}
  // Copying would move the whole capacity.
  Magnitude(const Magnitude&) = delete;
  Magnitude& operator=(const Magnitude&) = delete;

  operator Limbs() const { return {limb_, size_}; }
  std::size_t size() const { return size_; }
  bool is_zero() const { return size_ == 0; }
  Limb operator[](std::size_t at) const { return limb_[at]; }

  void assign(Limbs from) {
    require(from.size() <= kCapacity);
    std::ranges::copy(from, limb_);
    size_ = from.size();
  }
  void assign(std::uint64_t value) {
    limb_[0] = static_cast<Limb>(value);
    if constexpr (kLimbBytes < sizeof value) limb_[1] = static_cast<Limb>(value >> 32);
    trim(sizeof value / kLimbBytes);
  }

  // For the operations of this module: the limbs themselves, and the cut to the normal form.
  Limb* data() { return limb_; }
  void trim(std::size_t size) {
    while (size > 0 && limb_[size - 1] == 0) --size;
    size_ = size;
  }

 private:
  std::size_t size_;
  Limb limb_[kCapacity];  // beyond size_ never read
};

// Whether the remainder of a division is at least half of the divisor. All rounding in this room,
// half away from zero on magnitudes, uses it.
constexpr bool rounds_up(Limb remainder, Limb divisor) {
  return remainder >= divisor - remainder;
}

// Quotient of high * 2^kLimbBits + low by a divisor above `high`; the processor traps for others.
// Its own division, since the compiler would call a library routine.
inline Limb divide_wide(Limb high, Limb low, Limb divisor, Limb& remainder) {
  Limb quotient;
  __asm__("div" COMNLIB_LIMB_SUFFIX " %[divisor]"
          : "=a"(quotient), "=d"(remainder)
          : "a"(low), "d"(high), [divisor] "rm"(divisor)
          : "cc");
  return quotient;
}

// One step of a sum or difference; `carry` and `borrow`, 0 or 1, go in and come out. Adding 255 to
// them sets the processor's carry, which the compiler does not use by itself, and whose built-in
// routines take every sum through memory.
inline Limb add_with_carry(Limb a, Limb b, unsigned char& carry) {
  __asm__("addb $-1, %[carry]\n\tadc %[b], %[a]\n\tsetc %[carry]"
          : [a] "+r"(a), [carry] "+&q"(carry)
          : [b] "r"(b)
          : "cc");
  return a;
}

inline Limb subtract_with_borrow(Limb a, Limb b, unsigned char& borrow) {
  __asm__("addb $-1, %[borrow]\n\tsbb %[b], %[a]\n\tsetc %[borrow]"
          : [a] "+r"(a), [borrow] "+&q"(borrow)
          : [b] "r"(b)
          : "cc");
  return a;
}

// One step of a product: the low limb of a * b + carry, whose high limb becomes the carry.
inline Limb multiply_step(Limb a, Limb b, Limb& carry) {
  Limb high;
  __asm__("mul" COMNLIB_LIMB_SUFFIX " %[b]\n\tadd %[carry], %[a]\n\tadc" COMNLIB_LIMB_SUFFIX
          " $0, %[high]"
          : [a] "+&a"(a), [high] "=&d"(high)
          : [b] "rm"(b), [carry] "r"(carry)
          : "cc");
  carry = high;
  return a;
}

// The same, added to `sum`.
inline void multiply_add_step(Limb a, Limb b, Limb& sum, Limb& carry) {
  Limb high;
  __asm__("mul" COMNLIB_LIMB_SUFFIX " %[b]\n\tadd %[carry], %[a]\n\tadc" COMNLIB_LIMB_SUFFIX
          " $0, %[high]\n\tadd %[a], %[sum]\n\tadc" COMNLIB_LIMB_SUFFIX " $0, %[high]"
          : [a] "+&a"(a), [high] "=&d"(high), [sum] "+m"(sum)
          : [b] "rm"(b), [carry] "r"(carry)
          : "cc");
  carry = high;
}

constexpr std::size_t byte_length(Limbs value) {
  if (value.empty()) return 0;
  return value.size() * kLimbBytes - static_cast<std::size_t>(std::countl_zero(value.back())) / 8;
}

// The value, when it is below 2^64.
inline std::optional<std::uint64_t> to_unsigned(Limbs value) {
  constexpr std::size_t kMost = sizeof(std::uint64_t) / kLimbBytes;
  if (value.size() > kMost) return std::nullopt;
  std::uint64_t bits = 0;
  for (std::size_t at = 0; at < kMost && at < value.size(); ++at)
    bits |= std::uint64_t{value[at]} << (32 * at);
  return bits;
}

// --- the big-endian bytes of records

constexpr Limb swap_bytes(Limb value) {
  if constexpr (kLimbBytes == sizeof(std::uint64_t))
    return static_cast<Limb>(__builtin_bswap64(value));
  else
    return static_cast<Limb>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
}

inline Limb load_word(const CS_BYTE* from) {
  Limb raw;
  std::memcpy(&raw, from, sizeof raw);
  return swap_bytes(raw);
}

inline void store_word(CS_BYTE* to, Limb value) {
  const Limb raw = swap_bytes(value);
  std::memcpy(to, &raw, sizeof raw);
}

// The number that fewer bytes than a limb's make.
inline Limb load_part(const CS_BYTE* from, std::size_t count) {
  Limb value = 0;
  if constexpr (kLimbBytes > sizeof(std::uint32_t)) {
    if (count >= sizeof(std::uint32_t)) {
      std::uint32_t raw;
      std::memcpy(&raw, from, sizeof raw);
      value = __builtin_bswap32(raw);
      from += sizeof raw;
      count -= sizeof raw;
    }
  }
  for (; count > 0; --count) value = value << 8 | *from++;
  return value;
}

// Stores the low bytes of a limb, fewer than it has.
inline void store_part(CS_BYTE* to, std::size_t count, Limb value) {
  if constexpr (kLimbBytes > sizeof(std::uint32_t)) {
    if (count >= sizeof(std::uint32_t)) {
      const std::uint32_t raw = __builtin_bswap32(static_cast<std::uint32_t>(value));
      count -= sizeof raw;
      std::memcpy(to + count, &raw, sizeof raw);
      value = static_cast<Limb>(Wide{value} >> 32);
    }
  }
  for (; count > 0; value >>= 8) to[--count] = static_cast<CS_BYTE>(value);
}

// The magnitude of a record's `count` bytes.
inline void unpack(const CS_BYTE* bytes, std::size_t count, Magnitude& to) {
  require(count < kMaxRecordLength);
  Limb* limb = to.data();
  std::size_t size = 0;
  for (; count >= kLimbBytes; count -= kLimbBytes)
    limb[size++] = load_word(bytes + count - kLimbBytes);
  if (count > 0) limb[size++] = load_part(bytes, count);
  to.trim(size);
}

// Writes the low `count` bytes of a magnitude, with leading zeros.
inline void pack(Limbs value, CS_BYTE* bytes, std::size_t count) {
  std::size_t at = 0;
  for (; count >= kLimbBytes && at < value.size(); count -= kLimbBytes)
    store_word(bytes + count - kLimbBytes, value[at++]);
  for (; count >= kLimbBytes; count -= kLimbBytes) store_word(bytes + count - kLimbBytes, 0);
  store_part(bytes, count, at < value.size() ? value[at] : 0);
}

// --- arithmetic

// The sum of the products of one column, in three limbs.
class ColumnSum {
 public:
  void add_product(Limb a, Limb b) {
    Limb high;
    __asm__("mul" COMNLIB_LIMB_SUFFIX
            " %[b]\n\tadd %[a], %[low]\n\tadc %[high], %[middle]\n\tadc" COMNLIB_LIMB_SUFFIX
            " $0, %[top]"
            : [a] "+a"(a), [high] "=&d"(high), [low] "+r"(low_), [middle] "+r"(middle_),
              [top] "+rm"(top_)
            : [b] "rm"(b)
            : "cc");
  }

  // Removes and returns the lowest limb. It passes through a register, since the compiler would
  // join two of them through memory.
  Limb shift() {
    Limb low;
    __asm__("" : "=r"(low) : "0"(low_));
    low_ = middle_;
    middle_ = top_;
    top_ = 0;
    return low;
  }

 private:
  Limb low_ = 0;
  Limb middle_ = 0;
  Limb top_ = 0;
};

inline bool is_zero(Limbs value) {
  return value.empty();
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
  require(a.size() < Magnitude::kCapacity);
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
  require(a.size() >= b.size());
  Limb* out = difference.data();
  unsigned char borrow = 0;
  std::size_t at = 0;
  for (; at < b.size(); ++at) out[at] = subtract_with_borrow(a[at], b[at], borrow);
  for (; at < a.size(); ++at) out[at] = subtract_with_borrow(a[at], 0, borrow);
  require(borrow == 0);
  difference.trim(at);
}

// product := a * b; `product` is neither operand.
void multiply(Limbs a, Limbs b, Magnitude& product);

// value := value * factor + addend, one limb longer at most.
inline void multiply_add(Magnitude& value, Limb factor, Limb addend) {
  Limb* limb = value.data();
  const std::size_t size = value.size();
  require(size < Magnitude::kCapacity);
  Limb carry = addend;
  for (std::size_t at = 0; at < size; ++at) limb[at] = multiply_step(limb[at], factor, carry);
  limb[size] = carry;
  value.trim(size + 1);
}

// value := value / divisor, which is not zero; returns the remainder.
inline Limb divide_by(Magnitude& value, Limb divisor) {
  require(divisor != 0);
  Limb* limb = value.data();
  Limb remainder = 0;
  for (std::size_t at = value.size(); at-- > 0;)
    limb[at] = divide_wide(remainder, limb[at], divisor, remainder);
  value.trim(value.size());
  return remainder;
}

// An estimate of a quotient digit that is at most one too large, from the top three limbs at `top`
// (most significant at top[2]) and the top two of the divisor, whose highest bit is set. Exact for
// a divisor of two.
inline Limb estimate_digit(const Limb* top, Limb divisor_high, Limb divisor_next) {
  Limb digit;
  Limb rest;
  if (top[2] >= divisor_high) {
    digit = ~Limb{0};
    rest = top[1] + divisor_high;
    if (rest < divisor_high) return digit;
  } else {
    digit = divide_wide(top[2], top[1], divisor_high, rest);
  }
  while (Wide{digit} * divisor_next > (Wide{rest} << kLimbBits | top[0])) {
    --digit;
    rest += divisor_high;
    if (rest < divisor_high) break;
  }
  return digit;
}

// quotient := dividend / divisor, remainder := the rest, for a divisor that is not zero. Neither
// result is an operand.
void divide(Limbs dividend, Limbs divisor, Magnitude& quotient, Magnitude& remainder);

struct Power {
  std::uint32_t size;
  std::array<Limb, kPowerLimbs> limb;
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
      carry >>= kLimbBits;
    }
    if (carry != 0) power.limb[power.size++] = static_cast<Limb>(carry);
  }
  return table;
}

inline constexpr std::array<Power, CS_MAX_PREC + 1> kPowers = powers_of_ten();

// 10^exponent for exponents of 0 to 77.
inline Limbs power_of_ten(int exponent) {
  require(exponent >= 0 && exponent <= CS_MAX_PREC);
  const Power& power = kPowers[static_cast<std::size_t>(exponent)];
  return {power.limb.data(), power.size};
}

// value := value * 10^exponent, for exponents of 0 to 77.
void scale_up(Magnitude& value, int exponent);

// value := value / 10^exponent for any exponent from 0 on; returns whether nonzero digits were
// dropped.
bool scale_down(Magnitude& value, int exponent);

// Whether value >= 10^precision; nothing that a record holds reaches a power above 77.
inline bool exceeds(Limbs value, int precision) {
  return precision <= CS_MAX_PREC && compare(value, power_of_ten(precision)) >= 0;
}

}  // namespace comnlib
