// The public arithmetic on numerics: operands are checked, the result's precision and scale follow
// from theirs, and the kernel computes.
#include "comnlib/numeric.h"

#include <cstdlib>
#include <optional>

#include "exact/bytes.h"
#include "exact/factor.h"
#include "exact/kernel.h"
#include "exact/numemath.h"
#include "exact/numeric.h"

namespace comnlib {
namespace {

struct Size {
  int precision;
  int scale;
  friend bool operator==(const Size&, const Size&) = default;
};

constexpr int kMinQuotientScale = 6;

Size size_of(const CS_NUMERIC& numeric) {
  return {numeric.precision, numeric.scale};
}

bool in_domain(const CS_NUMERIC& numeric) {
  return is_precision(numeric.precision) && numeric.scale <= CS_MAX_SCALE;
}

// Integer digits are kept in favour of decimals. With scales far above the precisions, `digits` is
// negative and may use up the scale: one digit is left then.
inline Size limited(int digits, int scale) {
  digits = std::min<int>(digits, CS_MAX_PREC);
  scale = std::min<int>(scale, CS_MAX_SCALE);
  const int precision = std::clamp<int>(scale + digits, 1, CS_MAX_PREC);
  return {precision, std::min(scale, precision - digits)};
}

int integer_digits(Size size) {
  return size.precision - size.scale;
}

// One integer digit is added for the carry; at the limit of digits it is the first to be dropped.
Size sum_size(Size a, Size b) {
  const int digits = std::min<int>(std::max(integer_digits(a), integer_digits(b)), CS_MAX_PREC);
  const int scale = std::max(a.scale, b.scale);
  const int precision = std::min<int>(scale + digits + 1, CS_MAX_PREC);
  return {precision, std::min(scale, precision - digits)};
}

Size product_size(Size a, Size b) {
  return limited(integer_digits(a) + integer_digits(b) + 1, a.scale + b.scale);
}

Size quotient_size(Size dividend, Size divisor) {
  return limited(divisor.scale + integer_digits(dividend),
                 std::max(divisor.scale + dividend.precision + 1, kMinQuotientScale));
}

// Gives the result its size; the record over it may share its bytes with an operand's.
constant sized_result(CS_NUMERIC& result, Size size) {
  result.precision = static_cast<CS_BYTE>(size.precision);
  result.scale = static_cast<CS_BYTE>(size.scale);
  return record_of(result);
}

bool same_size(const CS_NUMERIC& a, const CS_NUMERIC& b) {
  return std::memcmp(&a, &b, offsetof(CS_NUMERIC, array)) == 0;
}

std::size_t magnitude_length(int precision) {
  return Com__Nume_Prec_To_Len[static_cast<std::size_t>(precision)] - std::size_t{1};
}

// Gives the result of operands of one size its own: one digit more, as far as that goes, and so
// their length or one byte more. Returns the length of its magnitude.
std::size_t size_sum(const CS_NUMERIC& operand, CS_NUMERIC& result) {
  const int precision = std::min(operand.precision + 1, int{CS_MAX_PREC});
  result.precision = static_cast<CS_BYTE>(precision);
  result.scale = operand.scale;
  return magnitude_length(precision);
}

CS_RETCODE overflowed(CS_NUMERIC& result, std::size_t length) {
  std::memset(result.array, 0, length + 1);
  return CS_CVT_OVERFLOW;
}

// The last step of such a sum, whose magnitude is in place. Operands of any content may have
// brought it beyond its precision.
CS_RETCODE finish_sum(CS_NUMERIC& result, std::size_t length, bool negative) {
  // A power of ten has the length of its own precision.
  const CS_BYTE* const limit = Com__Nume_Byte_Power_Array[result.precision].data() + 2;
  // The first byte decides nearly always. A word here would have to wait for stores of other sizes.
  if (result.array[1] >= limit[0] && compare_bytes(result.array + 1, limit, length) >= 0)
    return overflowed(result, length);
  result.array[0] = negative ? 1 : 0;
  return CS_SUCCEED;
}

// |op1| + |op2| with op1's sign. Not inlined, like its counterpart: together they would need more
// registers than there are.
[[gnu::noinline]] CS_RETCODE add_magnitudes(const CS_NUMERIC& op1, const CS_NUMERIC& op2,
                                            CS_NUMERIC& result) {
  const bool negative = op1.array[0] != 0;
  const std::size_t count = magnitude_length(op1.precision);
  const std::size_t length = size_sum(op1, result);
  const std::size_t surplus = length - count;
  const CS_BYTE carry = add_bytes(op1.array + 1, op2.array + 1, result.array + 1 + surplus, count);
  if (surplus > 0) {
    result.array[1] = carry;
  } else if (carry != 0) {
    return overflowed(result, length);
  }
  return finish_sum(result, length, negative);
}

// |op1| - |op2| with op1's sign, or the opposite one when op2 has the larger magnitude.
[[gnu::noinline]] CS_RETCODE subtract_magnitudes(const CS_NUMERIC& op1, const CS_NUMERIC& op2,
                                                 CS_NUMERIC& result) {
  const bool negative = op1.array[0] != 0;
  const std::size_t count = magnitude_length(op1.precision);
  const std::size_t length = size_sum(op1, result);
  const std::size_t surplus = length - count;
  const CS_BYTE* const a = op1.array + 1;
  const CS_BYTE* const b = op2.array + 1;
  const Words words = first_difference(a, b, count);
  if (words.a == words.b) {
    std::memset(result.array, 0, length + 1);
    return CS_SUCCEED;
  }
  const bool swapped = words.a < words.b;
  subtract_bytes(swapped ? b : a, swapped ? a : b, result.array + 1 + surplus, count);
  if (surplus > 0) result.array[1] = 0;
  return finish_sum(result, length, negative != swapped);
}

// --- short operands

// Two operands of at most 19 digits, neither with more digits than its precision.
struct ShortPair {
  std::uint64_t a;
  std::uint64_t b;
};

[[gnu::always_inline]] inline bool unpack_short(const CS_NUMERIC& op1, const CS_NUMERIC& op2,
                                                ShortPair& pair) {
  if (op1.precision > kShortPrecision || op2.precision > kShortPrecision) return false;
  pair.a = load_short(op1, magnitude_length(op1.precision));
  pair.b = load_short(op2, magnitude_length(op2.precision));
  return pair.a < kShortPowers[op1.precision] && pair.b < kShortPowers[op2.precision];
}

// The pair at the larger one of two scales that are not too far apart.
struct AlignedPair {
  DoubleWord a;
  DoubleWord b;
};

[[gnu::always_inline]] inline bool unpack_aligned(const CS_NUMERIC& op1, const CS_NUMERIC& op2,
                                                  AlignedPair& aligned) {
  const int gap = op1.scale - op2.scale;
  ShortPair pair;
  if (!unpack_short(op1, op2, pair) || gap > kShortPrecision || gap < -kShortPrecision)
    return false;
  aligned.a = {0, pair.a};
  aligned.b = {0, pair.b};
  if (gap < 0) aligned.a = multiply_words(pair.a, kShortPowers[static_cast<std::size_t>(-gap)]);
  if (gap > 0) aligned.b = multiply_words(pair.b, kShortPowers[static_cast<std::size_t>(gap)]);
  return true;
}

// The result of such operands always has room for the value.
[[gnu::always_inline]] inline CS_RETCODE store_short_result(DoubleWord value, bool negative,
                                                            Size size, CS_NUMERIC& result) {
  store_short(value, result, magnitude_length(size.precision));
  result.precision = static_cast<CS_BYTE>(size.precision);
  result.scale = static_cast<CS_BYTE>(size.scale);
  result.array[0] = negative ? 1 : 0;
  return CS_SUCCEED;
}

// --- operands of any sizes, whose result has room for every digit

// Whole limbs from the last one on; the first one may begin before the magnitude.
inline void unpack_operand(const CS_NUMERIC& operand, Magnitude& to) {
  const std::size_t length = magnitude_length(operand.precision);
  const CS_BYTE* at = operand.array + 1 + length;
  Limb* limb = to.data();
  std::size_t rest = length;
  std::size_t size = 0;
  for (; rest > kLimbBytes; rest -= kLimbBytes) limb[size++] = load_word(at -= kLimbBytes);
  limb[size++] = load_top(at, rest);
  to.trim(size);
}

CS_RETCODE overflowed(CS_NUMERIC& result, Size size) {
  result.precision = static_cast<CS_BYTE>(size.precision);
  result.scale = static_cast<CS_BYTE>(size.scale);
  return overflowed(result, magnitude_length(size.precision));
}

// Operands of any content may have brought the value beyond the precision.
template <class Value>
CS_RETCODE pack_result(const Value& value, bool negative, Size size, CS_NUMERIC& result) {
  if (exceeds(value, size.precision)) [[unlikely]]
    return overflowed(result, size);
  store_limbs(value, result, magnitude_length(size.precision));
  result.precision = static_cast<CS_BYTE>(size.precision);
  result.scale = static_cast<CS_BYTE>(size.scale);
  result.array[0] = negative ? 1 : 0;
  return CS_SUCCEED;
}

inline void unpack_operand(const CS_NUMERIC& operand, Scaled& to) {
  load_limbs(operand, magnitude_length(operand.precision), to);
}

// A sum in limbs: of any number, or of the few that factors need.
template <class Value>
[[gnu::noinline]] CS_RETCODE sum_in(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size,
                                    CS_INT opn, CS_NUMERIC& result) {
  const bool negative = op1.array[0] != 0;
  const bool b_counts_negative = (op2.array[0] != 0) != (opn != COMN_NUM_ADD);
  Value a;
  Value b;
  unpack_operand(op1, a);
  unpack_operand(op2, b);
  if (op1.scale < size.scale) scale_up(a, size.scale - op1.scale);
  if (op2.scale < size.scale) scale_up(b, size.scale - op2.scale);
  bool sign = negative;
  if (negative == b_counts_negative) {
    add(a, b, a);
  } else {
    const int order = compare(a, b);
    const Value& larger = order < 0 ? b : a;
    // An operand too large by itself is an overflow, whatever the difference is.
    if (exceeds(larger, size.precision)) return overflowed(result, size);
    subtract(larger, order < 0 ? a : b, a);
    sign = order < 0 ? b_counts_negative : order > 0 && negative;
  }
  return pack_result(a, sign, size, result);
}

bool are_factors(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  return op1.precision <= kFactorPrecision && op2.precision <= kFactorPrecision;
}

CS_RETCODE limb_sum(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size, CS_INT opn,
                    CS_NUMERIC& result) {
  return are_factors(op1, op2) && std::abs(op1.scale - op2.scale) <= kLimbDigits
             ? sum_in<Scaled>(op1, op2, size, opn, result)
             : sum_in<Magnitude>(op1, op2, size, opn, result);
}

[[gnu::noinline]] CS_RETCODE short_sum(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size,
                                       CS_INT opn, CS_NUMERIC& result) {
  AlignedPair pair;
  if (!unpack_aligned(op1, op2, pair)) return limb_sum(op1, op2, size, opn, result);
  const bool negative = op1.array[0] != 0;
  const bool b_counts_negative = (op2.array[0] != 0) != (opn != COMN_NUM_ADD);
  if (negative == b_counts_negative)
    return store_short_result(sum(pair.a, pair.b), negative, size, result);
  const int order = compare(pair.a, pair.b);
  if (order < 0)
    return store_short_result(difference(pair.b, pair.a), b_counts_negative, size, result);
  return store_short_result(difference(pair.a, pair.b), negative && order > 0, size, result);
}

bool are_short(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  return op1.precision <= kShortPrecision && op2.precision <= kShortPrecision;
}

// Sums whose size has room for every digit.
CS_RETCODE whole_sum(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size, CS_INT opn,
                     CS_NUMERIC& result) {
  return are_short(op1, op2) ? short_sum(op1, op2, size, opn, result)
                             : limb_sum(op1, op2, size, opn, result);
}

// Operands of any precision whose magnitudes are factors.
[[gnu::noinline]] CS_RETCODE factor_product(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size,
                                            CS_NUMERIC& result) {
  const bool opposite = (op1.array[0] != 0) != (op2.array[0] != 0);
  Factor a;
  Factor b;
  load_limbs(op1, magnitude_length(op1.precision), a);
  load_limbs(op2, magnitude_length(op2.precision), b);
  Product product;
  multiply(a, b, product);
  return pack_result(product, opposite && !is_zero(product), size, result);
}

[[gnu::noinline]] CS_RETCODE long_product(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size,
                                          CS_NUMERIC& result) {
  if (is_factor(op1, magnitude_length(op1.precision)) &&
      is_factor(op2, magnitude_length(op2.precision)))
    return factor_product(op1, op2, size, result);
  const bool opposite = (op1.array[0] != 0) != (op2.array[0] != 0);
  Magnitude a;
  Magnitude b;
  Magnitude product;
  unpack_operand(op1, a);
  unpack_operand(op2, b);
  multiply(a, b, product);
  return pack_result(product, opposite && !product.is_zero(), size, result);
}

[[gnu::noinline]] CS_RETCODE short_product(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size,
                                           CS_NUMERIC& result) {
  const bool opposite = (op1.array[0] != 0) != (op2.array[0] != 0);
  ShortPair pair;
  if (!unpack_short(op1, op2, pair)) return factor_product(op1, op2, size, result);
  const DoubleWord product = multiply_words(pair.a, pair.b);
  return store_short_result(product, opposite && !is_zero(product), size, result);
}

// Products whose size has room for every decimal.
CS_RETCODE whole_product(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size,
                         CS_NUMERIC& result) {
  if (are_short(op1, op2)) return short_product(op1, op2, size, result);
  return are_factors(op1, op2) ? factor_product(op1, op2, size, result)
                               : long_product(op1, op2, size, result);
}

// --- results that 77 digits limit

CS_INT to_size(SignedMagnitude& value, const CS_NUMERIC& from, Size size) {
  if (size_of(from) == size) return kExactOk;
  return rescale(value.magnitude, size.scale - from.scale, size.precision,
                 Com__Nume_Prec_To_Len[static_cast<std::size_t>(size.precision)]);
}

// When an operand cannot be brought to the common size, that is the operation's result. A cut there
// is truncation, while a cut in the kernel is overflow.
CS_RETCODE capped_sum(const CS_NUMERIC& op1, const CS_NUMERIC& op2, Size size, CS_INT opn,
                      CS_NUMERIC& result) {
  SignedMagnitude a;
  SignedMagnitude b;
  unpack_record(record_of(op1), a);
  unpack_record(record_of(op2), b);
  CS_INT status = to_size(a, op1, size);
  if (status == kExactOk) status = to_size(b, op2, size);
  constant record = sized_result(result, size);
  if (status != kExactOk) {
    clear_record(record);
    return status == kExactTruncated ? CS_CVT_TRUNCATED : CS_CVT_OVERFLOW;
  }
  return exact_code(add_or_subtract(a, size.scale, b, size.scale, opn, record));
}

// Not inlined, so that sums of one size do not pay for its limbs.
[[gnu::noinline]] CS_RETCODE unlike_sum(const CS_NUMERIC& op1, const CS_NUMERIC& op2,
                                        CS_NUMERIC& result, CS_INT opn) {
  const int scale = std::max(op1.scale, op2.scale);
  const int digits = std::max(op1.precision - op1.scale, op2.precision - op2.scale);
  const Size size = {scale + digits + 1, scale};
  if (size.precision <= CS_MAX_PREC) return whole_sum(op1, op2, size, opn, result);
  return capped_sum(op1, op2, sum_size(size_of(op1), size_of(op2)), opn, result);
}

inline CS_RETCODE sum_of(const CS_NUMERIC& op1, const CS_NUMERIC& op2, CS_NUMERIC& result,
                         CS_INT opn) {
  if (!in_domain(op1)) return CS_CVT_DOMAIN;
  if (same_size(op1, op2)) [[likely]] {
    const bool opposite = (op1.array[0] != 0) != (op2.array[0] != 0);
    return opposite == (opn != COMN_NUM_ADD) ? add_magnitudes(op1, op2, result)
                                             : subtract_magnitudes(op1, op2, result);
  }
  if (!in_domain(op2)) return CS_CVT_DOMAIN;
  return unlike_sum(op1, op2, result, opn);
}

[[gnu::noinline]] CS_RETCODE capped_product(const CS_NUMERIC& op1, const CS_NUMERIC& op2,
                                            CS_NUMERIC& result) {
  const constant a = record_of(op1);
  const constant b = record_of(op2);
  constant record = sized_result(result, product_size(size_of(op1), size_of(op2)));
  return exact_code(com__exctnume_mul(&a, &b, &record));
}

CS_RETCODE product_of(const CS_NUMERIC& op1, const CS_NUMERIC& op2, CS_NUMERIC& result) {
  if (!in_domain(op1) || !in_domain(op2)) return CS_CVT_DOMAIN;
  const int precision = op1.precision + op2.precision + 1;
  const int scale = op1.scale + op2.scale;
  if (precision <= CS_MAX_PREC && scale <= CS_MAX_SCALE) [[likely]]
    return whole_product(op1, op2, {precision, scale}, result);
  // Without decimals, none are dropped.
  if (scale == 0) return long_product(op1, op2, {CS_MAX_PREC, 0}, result);
  return capped_product(op1, op2, result);
}

// A quotient whose dividend has to be scaled up by 10^shift, or not at all.
CS_RETCODE scaled_quotient(const CS_NUMERIC& dividend, const CS_NUMERIC& divisor, int shift,
                           Size size, CS_NUMERIC& result) {
  const bool opposite = (dividend.array[0] != 0) != (divisor.array[0] != 0);
  Magnitude a;
  Magnitude b;
  unpack_operand(divisor, b);
  if (b.is_zero()) {
    sized_result(result, size);
    return CS_CVT_DIVZERO;
  }
  unpack_operand(dividend, a);
  Magnitude product;
  if (shift > 0) multiply(a, power_of_ten(shift), product);
  Magnitude& scaled = shift > 0 ? product : a;
  if (b.size() == 1) {
    divide_by(scaled, b[0]);
    return pack_result(scaled, opposite && !scaled.is_zero(), size, result);
  }
  Magnitude quotient;
  Magnitude remainder;
  divide(scaled, b, quotient, remainder);
  return pack_result(quotient, opposite && !quotient.is_zero(), size, result);
}

CS_RETCODE quotient_of(const CS_NUMERIC& dividend, const CS_NUMERIC& divisor, CS_NUMERIC& result) {
  if (!in_domain(dividend) || !in_domain(divisor)) return CS_CVT_DOMAIN;
  const Size size = quotient_size(size_of(dividend), size_of(divisor));
  const int shift = size.scale - dividend.scale + divisor.scale;
  if (shift >= 0 && shift <= CS_MAX_PREC)
    return scaled_quotient(dividend, divisor, shift, size, result);
  const constant a = record_of(dividend);
  const constant b = record_of(divisor);
  constant record = sized_result(result, size);
  return exact_code(com__exctnume_div(&a, &b, &record, nullptr));
}

// --- comparison

// The least precision whose magnitudes have four bytes.
constexpr int kQuarterPrecision = 8;

static_assert([] {
  for (int n = 0; n <= CS_MAX_PREC; ++n) {
    const Power& power = kPowers[static_cast<std::size_t>(n)];
    const int bytes = static_cast<int>(byte_length({power.limb.data(), power.size}));
    if (bytes_of_precision(n) != bytes || (bytes >= 4) != (n >= kQuarterPrecision)) return false;
  }
  return true;
}());

bool has_quarter(const CS_NUMERIC& numeric) {
  return numeric.precision >= kQuarterPrecision && numeric.precision <= CS_MAX_PREC;
}

// Values of one size and sign.
[[gnu::noinline]] CS_INT compare_like(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  const bool negative = op1.array[0] != 0;
  const auto count =
      static_cast<std::size_t>(bytes_of_precision(std::min<int>(op1.precision, CS_MAX_PREC)));
  const CS_BYTE* a = op1.array + 1;
  const CS_BYTE* b = op2.array + 1;
  const CS_BYTE* const end = a + count;
  const auto order = [negative](Limb left, Limb right) {
    return (left < right) != negative ? -1 : 1;
  };
  if (const std::size_t part = count % kLimbBytes; part != 0) {
    a += part;
    b += part;
    const Limb left = load_top(a, part);
    const Limb right = load_top(b, part);
    if (left != right) return order(left, right);
  }
  for (; a != end; a += kLimbBytes, b += kLimbBytes) {
    const Limb left = load_word(a);
    const Limb right = load_word(b);
    if (left != right) return order(left, right);
  }
  return 0;
}

// Whether the operand with the smaller scale can be brought to the larger one. Otherwise decimals
// of the other operand do not count.
bool can_be_aligned(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  return (op1.scale <= op2.scale ? op1.precision + op2.scale : op2.precision + op1.scale) <=
         CS_MAX_PREC;
}

// The order of two values from that of their magnitudes.
template <class Value>
CS_INT order_with_signs(bool negative1, const Value& a, bool negative2, const Value& b) {
  if (negative1 == negative2) return negative1 ? compare(b, a) : compare(a, b);
  if (is_zero(a) && is_zero(b)) return 0;
  return negative1 ? -1 : 1;
}

[[gnu::noinline]] CS_INT compare_any(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  const int gap = op1.scale - op2.scale;
  if (!in_domain(op1) || !in_domain(op2) || (gap != 0 && !can_be_aligned(op1, op2))) {
    const constant a = record_of(op1);
    const constant b = record_of(op2);
    return com__exctnume_cmp(&a, &b, kCompareSigns | kCompareScales);
  }
  Magnitude a;
  Magnitude b;
  unpack_operand(op1, a);
  unpack_operand(op2, b);
  if (gap < 0) scale_up(a, -gap);
  if (gap > 0) scale_up(b, gap);
  return order_with_signs(op1.array[0] != 0, a, op2.array[0] != 0, b);
}

// Values whose lengths do not show their order.
[[gnu::noinline]] CS_INT compare_close(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  AlignedPair pair;
  if (std::max(op1.scale, op2.scale) <= CS_MAX_PREC - kShortPrecision &&
      unpack_aligned(op1, op2, pair))
    return order_with_signs(op1.array[0] != 0, pair.a, op2.array[0] != 0, pair.b);
  return compare_any(op1, op2);
}

// Values of one sign, from the numbers of bits in their magnitudes. Both may be too large by the
// same amount, since only their difference counts.
[[gnu::always_inline]] inline CS_INT compare_by_length(const CS_NUMERIC& op1, int bits1,
                                                       const CS_NUMERIC& op2, int bits2) {
  // The logarithms' difference, not off by more than one. Where one value is more than twice the
  // other, decimals that do not count make no difference.
  const int distance = (bits1 - bits2) * kBit + (op2.scale - op1.scale) * kBitsOfTen;
  constexpr int kDoubt = 2 * kBit + 16;
  if (distance <= kDoubt && distance >= -kDoubt) [[unlikely]]
    return compare_close(op1, op2);
  return (distance > 0) != (op1.array[0] != 0) ? 1 : -1;
}

// The bits of a magnitude; 0 also where no more than its last three bytes have any.
int length_in_bits(const CS_NUMERIC& numeric) {
  const CS_BYTE* at = numeric.array + 1;
  int rest = bytes_of_precision(numeric.precision);
  for (; rest >= 4; rest -= 4, at += 4) {
    if (const std::uint32_t first = load_quarter(at)) return 8 * rest - std::countl_zero(first);
  }
  return 0;
}

// Values of one sign, of which one begins with zeros.
[[gnu::noinline]] CS_INT compare_small(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  const int bits1 = length_in_bits(op1);
  const int bits2 = length_in_bits(op2);
  if (bits1 != 0 && bits2 != 0) return compare_by_length(op1, bits1, op2, bits2);
  return compare_close(op1, op2);
}

// Values of different sizes and one sign. Nearly always their lengths show the order.
[[gnu::noinline]] CS_INT compare_unlike(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  if (!has_quarter(op1) || !has_quarter(op2)) return compare_close(op1, op2);
  const std::uint32_t first1 = load_quarter(op1.array + 1);
  const std::uint32_t first2 = load_quarter(op2.array + 1);
  if (first1 == 0 || first2 == 0) return compare_small(op1, op2);
  const auto bits = [](const CS_NUMERIC& numeric, std::uint32_t first) {
    return 8 * bytes_of_precision(numeric.precision) + (31 ^ std::countl_zero(first));
  };
  return compare_by_length(op1, bits(op1, first1), op2, bits(op2, first2));
}

// A function of its own: the place of a check needs a register, which nothing else in comn_numcmp
// does.
[[gnu::noinline, gnu::cold]] void missing_operand(const CS_NUMERIC* op1, const CS_NUMERIC* op2) {
  check_pointer(op1);
  check_pointer(op2);
}

// Values with different sign bytes.
[[gnu::noinline]] CS_INT compare_signs(const CS_NUMERIC& op1, const CS_NUMERIC& op2) {
  const bool negative = op1.array[0] != 0;
  if (negative == (op2.array[0] != 0)) return compare_unlike(op1, op2);
  const bool zeros = !has_quarter(op1) || !has_quarter(op2) ||
                     ((load_quarter(op1.array + 1) | load_quarter(op2.array + 1)) == 0 &&
                      (length_in_bits(op1) | length_in_bits(op2)) == 0);
  if (zeros) return compare_close(op1, op2);
  return negative ? -1 : 1;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn_numadd(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result) {
  check_pointer(op1);
  check_pointer(op2);
  check_pointer(result);
  return trace(sum_of(*op1, *op2, *result, COMN_NUM_ADD));
}

CS_RETCODE comn_numsub(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result) {
  check_pointer(op1);
  check_pointer(op2);
  check_pointer(result);
  return trace(sum_of(*op1, *op2, *result, COMN_NUM_SUBTRACT));
}

CS_RETCODE comn_num_addorsub(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result,
                             CS_INT opn) {
  check_pointer(op1);
  check_pointer(op2);
  check_pointer(result);
  require(opn == COMN_NUM_ADD || opn == COMN_NUM_SUBTRACT);
  return trace(sum_of(*op1, *op2, *result, opn));
}

CS_RETCODE comn_nummul(const CS_NUMERIC* op1, const CS_NUMERIC* op2, CS_NUMERIC* result) {
  check_pointer(op1);
  check_pointer(op2);
  check_pointer(result);
  return trace(product_of(*op1, *op2, *result));
}

CS_RETCODE comn_numdivide(const CS_NUMERIC* dividend, const CS_NUMERIC* divisor,
                          CS_NUMERIC* result) {
  check_pointer(dividend);
  check_pointer(divisor);
  check_pointer(result);
  return trace(quotient_of(*dividend, *divisor, *result));
}

CS_INT comn_numcmp(const CS_NUMERIC* op1, const CS_NUMERIC* op2) {
  if (op1 == nullptr || op2 == nullptr) [[unlikely]]
    missing_operand(op1, op2);
  if (op1->array[0] != op2->array[0]) return compare_signs(*op1, *op2);
  if (!same_size(*op1, *op2)) return compare_unlike(*op1, *op2);
  // The first word decides nearly always.
  if (op1->precision >= kQuarterPrecision) {
    const std::uint32_t left = load_quarter(op1->array + 1);
    const std::uint32_t right = load_quarter(op2->array + 1);
    if (left != right) return (left < right) != (op1->array[0] != 0) ? -1 : 1;
  }
  return compare_like(*op1, *op2);
}

CS_INT comn_num_getlen(CS_INT precision) {
  require(is_precision(precision));
  return Com__Nume_Prec_To_Len[static_cast<std::size_t>(precision)];
}

CS_INT comn_num_getprec(CS_INT length) {
  require(length >= 0 && length <= CS_MAX_NUMLEN);
  if (length < 2) return 0;
  return Com__Nume_Len_To_Prec[static_cast<std::size_t>(length - 2)];
}
