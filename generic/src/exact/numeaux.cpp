// The tables of exact numerics, computed from their rules, and the operations on one magnitude.
#include "exact/numeaux.h"

#include "exact/bytes.h"
#include "exact/record.h"

namespace comnlib {
namespace {

using PowerTable = std::array<std::array<CS_BYTE, 34>, CS_MAX_PREC + 1>;

consteval PowerTable byte_powers() {
  PowerTable table{};
  std::array<CS_BYTE, CS_MAX_NUMLEN - 1> digits{};  // big-endian, right-aligned
  digits.back() = 1;
  for (auto& entry : table) {
    std::size_t first = 0;
    while (digits[first] == 0) ++first;
    entry[0] = static_cast<CS_BYTE>(1 + digits.size() - first);
    std::copy(digits.begin() + first, digits.end(), entry.begin() + 2);
    unsigned carry = 0;
    for (std::size_t at = digits.size(); at-- > 0;) {
      carry += digits[at] * 10u;
      digits[at] = static_cast<CS_BYTE>(carry);
      carry >>= 8;
    }
  }
  return table;
}

constexpr PowerTable kBytePowers = byte_powers();

// 10^p - 1 needs as many bytes as 10^p, since no power of ten but 1 is a power of 256.
consteval std::array<CS_BYTE, CS_MAX_PREC + 1> lengths() {
  std::array<CS_BYTE, CS_MAX_PREC + 1> table{};
  for (std::size_t p = 0; p < table.size(); ++p) table[p] = kBytePowers[p][0];
  return table;
}

constexpr std::size_t kMinLength = 2;

// A length holds 10^p - 1, and so p digits, when it holds 10^p.
consteval std::array<CS_BYTE, 35> precisions() {
  std::array<CS_BYTE, 35> table{};
  for (std::size_t at = 0; at < table.size(); ++at) {
    const std::size_t length = at + kMinLength;
    if (length > CS_MAX_NUMLEN) {
      table[at] = 255;
      continue;
    }
    for (std::size_t p = 0; p <= CS_MAX_PREC && kBytePowers[p][0] <= length; ++p)
      table[at] = static_cast<CS_BYTE>(p);
  }
  return table;
}

// Compares magnitudes of any two lengths in the byte layout.
int compare_lengths(std::span<const CS_BYTE> a, std::span<const CS_BYTE> b) {
  for (; a.size() > b.size(); a = a.subspan(1)) {
    if (a.front() != 0) return 1;
  }
  for (; b.size() > a.size(); b = b.subspan(1)) {
    if (b.front() != 0) return -1;
  }
  return compare_bytes(a.data(), b.data(), a.size());
}

// `low` is the operand with the smaller scale. It is scaled up where the result stays within the
// digits that a record can have; otherwise the other one loses its surplus decimals.
int compare_scaled(const constant& low, const constant& high) {
  Magnitude a;
  Magnitude b;
  unpack_record(low, a);
  unpack_record(high, b);
  const int gap = high.scale - low.scale;
  if (low.prec + high.scale > CS_MAX_PREC) {
    static_cast<void>(scale_down(b, gap));
  } else {
    scale_up(a, gap);
  }
  return compare(a, b);
}

int compare_magnitudes(const constant& a, const constant& b, bool align) {
  if (!align || a.scale == b.scale) return compare_lengths(magnitude_bytes(a), magnitude_bytes(b));
  return a.scale < b.scale ? compare_scaled(a, b) : -compare_scaled(b, a);
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

constexpr std::array<CS_BYTE, 78> Com__Nume_Prec_To_Len = lengths();
constexpr std::array<CS_BYTE, 35> Com__Nume_Len_To_Prec = precisions();
constexpr std::array<std::array<CS_BYTE, 34>, 78> Com__Nume_Byte_Power_Array = kBytePowers;

CS_INT com__exctnume_cmp(const constant* op1, const constant* op2, CS_INT flag) {
  const bool with_signs = (flag & kCompareSigns) != 0;
  const bool negative = with_signs && is_negative(*op1);
  if (with_signs && negative != is_negative(*op2)) {
    if (com__exctnume_intcmp(op1, 0) != 0 && com__exctnume_intcmp(op2, 0) != 0) return 0;
    return negative ? -1 : 1;
  }
  const int order = compare_magnitudes(*op1, *op2, (flag & kCompareScales) != 0);
  return negative ? -order : order;
}

CS_INT com__exctnume_checkprecision(const constant* val) {
  Magnitude magnitude;
  unpack_record(*val, magnitude);
  return exceeds(magnitude, val->prec);
}

CS_INT com__exctnume_intcmp(const constant* val, CS_INT i) {
  const auto bytes = magnitude_bytes(*val);
  if (bytes.empty()) return i == 0;
  const auto leading = bytes.first(bytes.size() - 1);
  return bytes.back() == i && std::ranges::all_of(leading, [](CS_BYTE byte) { return byte == 0; });
}

CS_INT com__exctnume_copy(const constant* in, constant* out) {
  SignedMagnitude value;
  unpack_record(*in, value);
  return pack_if_it_fits(value.magnitude, value.negative, *out);
}

CS_INT com__exctnume_divby10(constant* val) {
  SignedMagnitude value;
  unpack_record(*val, value);
  const Limb digit = divide_by(value.magnitude, 10);
  const auto needed = static_cast<CS_INT>(std::max(1 + byte_length(value.magnitude), kMinLength));
  val->len = std::min(val->len, needed);
  pack_record(value.magnitude, value.negative, *val);
  return static_cast<CS_INT>(digit);
}

CS_INT com__exctnume_mulby10_add(constant* val, CS_INT digit) {
  SignedMagnitude value;
  unpack_record(*val, value);
  multiply_add(value.magnitude, 10, static_cast<Limb>(digit));
  pack_record(value.magnitude, value.negative, *val);
  return fits(value.magnitude, *val) ? kExactOk : kExactOverflow;
}

CS_INT com__exctnume_inc(constant* val) {
  SignedMagnitude value;
  unpack_record(*val, value);
  multiply_add(value.magnitude, 1, 1);
  pack_record(value.magnitude, value.negative, *val);
  return fits(value.magnitude, *val) ? kExactOk : kExactOverflow;
}

CS_INT com__exctnume_needsbyte(const constant* val) {
  return std::ranges::all_of(magnitude_bytes(*val), [](CS_BYTE byte) { return byte == 255; });
}
