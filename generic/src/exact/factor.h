// Numerics of at most 38 digits, whose magnitudes are factors of 16 bytes. Their products are made
// in the processor's registers, without a loop. Words are read from and written to records as in
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

[[gnu::always_inline]] inline void load_factor(const CS_NUMERIC& from, std::size_t length,
                                               Factor& to) {
  require(length >= 1 && length <= sizeof to);
  const CS_BYTE* end = from.array + 1 + length;
#pragma GCC unroll 4
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

inline bool is_zero(const Product& value) {
  Limb bits = 0;
  for (const Limb limb : value) bits |= limb;
  return bits == 0;
}

// Whether value >= 10^precision, for precisions up to 77.
[[gnu::always_inline]] inline bool exceeds(const Product& value, int precision) {
  const auto& power = kPowers[static_cast<std::size_t>(precision)].limb;
  for (std::size_t at = value.size(); at-- > 0;) {
    if (value[at] != power[at]) return value[at] > power[at];
  }
  return true;
}

}  // namespace comnlib
