// Numerics of at most 19 digits, whose magnitudes are words of 64 bits. A word is read or written
// so that it ends where the magnitude ends; precision, scale and sign, the three bytes before the
// magnitude, may be read or overwritten with it.
#pragma once

#include <cstddef>

#include "comnlib/numeric.h"
#include "exact/wide.h"

namespace comnlib {

inline constexpr int kShortPrecision = 19;

inline constexpr auto kShortPowers = [] {
  std::array<std::uint64_t, kShortPrecision + 1> powers{1};
  for (std::size_t n = 1; n < powers.size(); ++n) powers[n] = powers[n - 1] * 10;
  return powers;
}();

// log2(10) in units of 2^-16, rounded up.
constexpr int kBit = 1 << 16;
constexpr int kBitsOfTen = 217'706;

// Bytes of a magnitude of such a precision. The table's address would take longer to find.
constexpr int bytes_of_precision(int precision) {
  return (precision * kBitsOfTen / kBit + 8) / 8;
}

inline std::uint32_t load_quarter(const CS_BYTE* from) {
  std::uint32_t raw;
  std::memcpy(&raw, from, sizeof raw);
  return __builtin_bswap32(raw);
}

inline void store_quarter(CS_BYTE* to, std::uint64_t value) {
  const std::uint32_t raw = __builtin_bswap32(static_cast<std::uint32_t>(value));
  std::memcpy(to, &raw, sizeof raw);
}

constexpr std::size_t kMagnitudeOffset = offsetof(CS_NUMERIC, array) + 1;
static_assert(kMagnitudeOffset == 3);

// Of the quarter that a magnitude of such a length begins in, the bytes that belong to it.
constexpr std::uint32_t first_quarter_mask(std::size_t length) {
  return ~std::uint32_t{0} >> 8 * (-length & 3);
}

// A magnitude of one to eight bytes.
inline std::uint64_t load_short(const CS_NUMERIC& from, std::size_t length) {
  require(length >= 1 && length <= sizeof(std::uint64_t));
  const auto* const end = reinterpret_cast<const CS_BYTE*>(&from) + kMagnitudeOffset + length;
  const std::uint32_t mask = first_quarter_mask(length);
  if (length <= 4) return load_quarter(end - 4) & mask;
  return std::uint64_t{load_quarter(end - 8) & mask} << 32 | load_quarter(end - 4);
}

// The number that the one to kLimbBytes bytes before `end` make.
inline Limb load_top(const CS_BYTE* end, std::size_t count) {
  if (count <= sizeof(std::uint32_t))
    return load_quarter(end - 4) & first_quarter_mask(count);
  return load_word(end - kLimbBytes) & ~Limb{0} >> 8 * (kLimbBytes - count);
}

// Stores a magnitude in up to 17 bytes. The caller sets the record's other bytes afterwards.
inline void store_short(DoubleWord value, CS_NUMERIC& to, std::size_t length) {
  require(length >= 1 && length <= 2 * sizeof(std::uint64_t) + 1);
  CS_BYTE* const end = reinterpret_cast<CS_BYTE*>(&to) + kMagnitudeOffset + length;
  store_quarter(end - 4, value.low);
  if (length <= 4) return;
  store_quarter(end - 8, value.low >> 32);
  if (length <= 8) return;
  store_quarter(end - 12, value.high);
  if (length <= 12) return;
  store_quarter(end - 16, value.high >> 32);
  if (length > 16) end[-17] = 0;
}

// Stores the low `length` bytes of a magnitude, with leading zeros. The caller sets the record's
// other bytes afterwards.
[[gnu::always_inline]] inline void store_limbs(Limbs value, CS_NUMERIC& to, std::size_t length) {
  require(length >= 1 && length < CS_MAX_NUMLEN);
  CS_BYTE* end = to.array + 1 + length;
  std::size_t at = 0;
  const auto next = [&] { return at < value.size() ? value[at++] : 0; };
  for (; length >= kLimbBytes; length -= kLimbBytes) store_word(end -= kLimbBytes, next());
  if (length > sizeof(std::uint32_t)) {
    store_word(end - kLimbBytes, next());
  } else if (length > 0) {
    store_quarter(end - sizeof(std::uint32_t), next());
  }
}

}  // namespace comnlib
