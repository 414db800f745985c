// Magnitudes of at most 16 bytes, those of all numerics of up to 38 digits, as factors. Products
// and sums are made of them without a loop. Words are read from and written to records as in
// short.h: up to three bytes in front of a magnitude are the record's own too.
#pragma once

#include <utility>

#include "exact/short.h"

namespace comnlib {

inline constexpr int kFactorPrecision = 38;
inline constexpr std::size_t kFactorLimbs = 16 / kLimbBytes;

using Factor = std::array<Limb, kFactorLimbs>;
using Product = std::array<Limb, 2 * kFactorLimbs>;
static_assert(std::tuple_size_v<Product> == kPowerLimbs);
// A factor times a power of ten of one limb, or the sum of it and a factor.
using Scaled = std::array<Limb, kFactorLimbs + 1>;

// Whether a magnitude of more digits begins with so many zeros that it is a factor.
inline bool is_factor(const CS_NUMERIC& from, std::size_t length) {
  if (length <= sizeof(Factor)) return true;
  const CS_BYTE* at = from.array + 1 + length - sizeof(Factor);
  Limb bits = 0;
  for (length -= sizeof(Factor); length > kLimbBytes; length -= kLimbBytes)
    bits |= load_word(at -= kLimbBytes);
  return (bits | load_top(at, length)) == 0;
}

// The last `to.size()` limbs of a magnitude.
template <std::size_t kLimbs>
[[gnu::always_inline]] inline void load_limbs(const CS_NUMERIC& from, std::size_t length,
                                              std::array<Limb, kLimbs>& to) {
  require(length >= 1);
  const CS_BYTE* end = from.array + 1 + length;
#pragma GCC unroll 5
  for (Limb& limb : to) {
    if (length >= kLimbBytes) {
      limb = load_word(end -= kLimbBytes);
      length -= kLimbBytes;
    } else {
      limb = length == 0 ? 0 : load_top(end, length);
      length = 0;
    }
  }
}

template <std::size_t kColumn>
[[gnu::always_inline]] inline void add_column(const Factor& a, const Factor& b, ColumnSum& sum) {
  constexpr std::size_t kFirst = kColumn < kFactorLimbs ? 0 : kColumn - kFactorLimbs + 1;
  [&]<std::size_t... at>(std::index_sequence<at...>) {
    (sum.add_product(a[kFirst + at], b[kColumn - kFirst - at]), ...);
  }
  (std::make_index_sequence<kColumn - 2 * kFirst + 1>());
}

[[gnu::always_inline]] inline void multiply(const Factor& a, const Factor& b, Product& product) {
  ColumnSum sum;
  [&]<std::size_t... column>(std::index_sequence<column...>) {
    ((add_column<column>(a, b, sum), product[column] = sum.shift()), ...);
  }
  (std::make_index_sequence<2 * kFactorLimbs - 1>());
  product.back() = sum.shift();
}

// value := value * 10^exponent, for a factor and a power that is a limb.
[[gnu::always_inline]] inline void scale_up(Scaled& value, int exponent) {
  require(exponent >= 0 && exponent <= kLimbDigits);
  const Limb power = kPowers[static_cast<std::size_t>(exponent)].limb[0];
  Limb carry = 0;
#pragma GCC unroll 5
  for (Limb& limb : value) limb = multiply_step(limb, power, carry);
}

// sum := a + b, of which one is a factor and the other one has room left.
[[gnu::always_inline]] inline void add(const Scaled& a, const Scaled& b, Scaled& sum) {
  unsigned char carry = 0;
#pragma GCC unroll 5
  for (std::size_t at = 0; at < sum.size(); ++at) sum[at] = add_with_carry(a[at], b[at], carry);
}

// difference := a - b for a >= b.
[[gnu::always_inline]] inline void subtract(const Scaled& a, const Scaled& b, Scaled& difference) {
  unsigned char borrow = 0;
#pragma GCC unroll 5
  for (std::size_t at = 0; at < difference.size(); ++at)
    difference[at] = subtract_with_borrow(a[at], b[at], borrow);
}

inline int compare(const Scaled& a, const Scaled& b) {
  for (std::size_t at = a.size(); at-- > 0;) {
    if (a[at] != b[at]) return a[at] < b[at] ? -1 : 1;
  }
  return 0;
}

template <std::size_t kLimbs>
bool is_zero(const std::array<Limb, kLimbs>& value) {
  Limb bits = 0;
  for (const Limb limb : value) bits |= limb;
  return bits == 0;
}

// Whether value >= 10^precision, for precisions up to 77.
template <std::size_t kLimbs>
[[gnu::always_inline]] inline bool exceeds(const std::array<Limb, kLimbs>& value, int precision) {
  const Power& power = kPowers[static_cast<std::size_t>(precision)];
  if (kLimbs < kPowerLimbs && power.size > kLimbs) return false;
  for (std::size_t at = kLimbs; at-- > 0;) {
    if (value[at] != power.limb[at]) return value[at] > power.limb[at];
  }
  return true;
}

// Stores the low `length` bytes, as for limbs of any number.
template <std::size_t kLimbs>
[[gnu::always_inline]] inline void store_limbs(const std::array<Limb, kLimbs>& value,
                                               CS_NUMERIC& to, std::size_t length) {
  require(length >= 1 && length < CS_MAX_NUMLEN);
  CS_BYTE* end = to.array + 1 + length;
#pragma GCC unroll 8
  for (const Limb limb : value) {
    if (length < kLimbBytes) {
      if (length > sizeof(std::uint32_t)) {
        store_word(end - kLimbBytes, limb);
      } else if (length > 0) {
        store_quarter(end - sizeof(std::uint32_t), limb);
      }
      return;
    }
    store_word(end -= kLimbBytes, limb);
    length -= kLimbBytes;
  }
  std::memset(end - length, 0, length);
}

}  // namespace comnlib
