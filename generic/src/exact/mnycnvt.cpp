// Money inside the library: thin records around the arithmetic of mnymath and the text of cvtmny.
#include "exact/mnycnvt.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "diag/diag.h"
#include "exact/cvtmny.h"
#include "exact/mnymath.h"
#include "exact/numeaux.h"

namespace comnlib::money {
namespace {

// Results of the four operations: an overflow leaves zero.
CS_INT store_or_zero(std::optional<Units> value, CS_MONEY* r) {
  if (!value) [[unlikely]] {
    *r = record(0);
    return kExactOverflow;
  }
  *r = record(*value);
  return kExactOk;
}

CS_INT store_wrapped(bool overflow, Units value, CS_MONEY* r) {
  *r = record(value);
  return overflow ? kExactOverflow : kExactOk;
}

}  // namespace
}  // namespace comnlib::money

using namespace comnlib;
using namespace comnlib::money;

CS_INT com__mnycopy(const CS_MONEY* src, CS_MONEY* dst) {
  *dst = *src;
  return kExactOk;
}

CS_INT com__mnyzero(CS_MONEY* m) {
  *m = record(0);
  return kExactOk;
}

CS_INT com__maxposmny(CS_MONEY* m) {
  *m = record(kLargest);
  return kExactOk;
}

CS_INT com__maxnegmny(CS_MONEY* m) {
  *m = record(kSmallest);
  return kExactOk;
}

CS_INT com__mnycmp(const CS_MONEY* a, const CS_MONEY* b) {
  const Units left = units(*a);
  const Units right = units(*b);
  return (left > right) - (left < right);
}

CS_INT com__mnyminus(const CS_MONEY* src, CS_MONEY* dst) {
  Units negated;
  const bool overflow = __builtin_sub_overflow(Units{0}, units(*src), &negated);
  return store_wrapped(overflow, negated, dst);
}

CS_INT com__mnyinc(CS_MONEY* m) {
  Units next;
  const bool overflow = __builtin_add_overflow(units(*m), Units{1}, &next);
  return store_wrapped(overflow, next, m);
}

CS_INT com__mnydec(CS_MONEY* m) {
  Units next;
  const bool overflow = __builtin_sub_overflow(units(*m), Units{1}, &next);
  return store_wrapped(overflow, next, m);
}

CS_INT com__mnyadd(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return store_or_zero(sum(units(*a), units(*b)), r);
}

CS_INT com__mnysub(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return store_or_zero(difference(units(*a), units(*b)), r);
}

CS_INT com__mnymul(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return store_or_zero(product(units(*a), units(*b)), r);
}

CS_INT com__mnydiv(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  const Units divisor = units(*b);
  if (divisor == 0) {
    *r = record(0);
    return kExactDivZero;
  }
  return store_or_zero(quotient(units(*a), divisor), r);
}

CS_INT comn__mny16div(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return com__mnydiv(a, b, r);
}

CS_INT com__mnydown(CS_MONEY* m, CS_INT divisor) {
  const auto small_divisor = static_cast<std::uint16_t>(divisor);
  if (small_divisor == 0) return 0;
  const Units value = units(*m);
  Absolute whole = absolute(value);
  const Limb remainder = divide_small(whole, small_divisor);
  *m = record(signed_value(whole, value < 0));
  return static_cast<CS_INT>(remainder);
}

CS_INT com__mnyscale(CS_MONEY* m, CS_INT multiplier, CS_INT addend) {
  if (multiplier == 0) {
    *m = record(addend);
    return kExactOk;
  }
  const Units value = units(*m);
  Absolute scaled;
  if (__builtin_mul_overflow(absolute(value), static_cast<CS_UINT>(multiplier), &scaled) ||
      __builtin_add_overflow(scaled, addend, &scaled) || scaled >= kSmallestAbsolute) {
    return kExactOverflow;
  }
  *m = record(signed_value(scaled, value < 0));
  return kExactOk;
}

CS_INT com__mnyinit(CS_MONEY* m, CS_INT ndigits) {
  const Units value = units(*m);
  *m = record(signed_value(rounded_absolute(value, ndigits), false));
  return value < 0 ? -1 : 0;
}

CS_INT com__mnyndigit(CS_MONEY* m, CS_CHAR* digit) {
  *digit = static_cast<CS_CHAR>('0' + com__mnydown(m, 10));
  return units(*m) != 0;
}

CS_INT com__mnyshift(CS_MONEY* m, CS_INT n) {
  const auto bits = static_cast<Absolute>(units(*m));
  *m = record(static_cast<Units>(bits >> std::bit_width(static_cast<CS_UINT>(n))));
  return kExactOk;
}

CS_INT com__inttomny(CS_INT value, CS_MONEY* m) {
  *m = record(Units{value} * kUnitsOfOne);
  return kExactOk;
}

CS_INT com__mnytoint(const CS_MONEY* m, CS_INT* value) {
  constexpr Units kLeast = std::numeric_limits<CS_INT>::min();
  constexpr Units kMost = std::numeric_limits<CS_INT>::max();
  const Units whole = integer_part(units(*m));
  *value = static_cast<CS_INT>(std::clamp(whole, kLeast, kMost));
  return *value == whole ? kExactOk : kExactOverflow;
}

CS_INT com__mnytoflt8(const CS_MONEY* m, CS_FLOAT* value) {
  *value = m->mnyhigh * 429496.7296 + m->mnylow / 10000.0;
  return kExactOk;
}

CS_INT com__mnytoflt4(const CS_MONEY* m, CS_REAL* value) {
  CS_FLOAT wide;
  com__mnytoflt8(m, &wide);
  *value = static_cast<CS_REAL>(wide);
  return kExactOk;
}

CS_INT com__flt8tomny(CS_FLOAT value, CS_MONEY* m) {
  constexpr CS_FLOAT kTwoTo63 = 9223372036854775808.0;
  const CS_FLOAT scaled = value * kUnitsOfOne;
  if (scaled >= kTwoTo63) return store_wrapped(true, kLargest, m);
  if (scaled < -kTwoTo63) return store_wrapped(true, kSmallest, m);
  if (scaled != scaled) return store_wrapped(true, 0, m);
  const auto whole = static_cast<Units>(scaled);
  // Exact: a double with a fraction is below 2^52.
  const CS_FLOAT rest = scaled - static_cast<CS_FLOAT>(whole);
  *m = record(whole + (rest >= 0.5) - (rest <= -0.5));
  return kExactOk;
}

CS_INT com__flt4tomny(CS_REAL value, CS_MONEY* m) {
  return com__flt8tomny(value, m);
}

CS_CHAR* com__mnytochar(const CS_MONEY* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags) {
  return format_backwards(units(*m), buf, buflen, flags);
}

CS_INT com__mnyfromchar_mb(CS_MONEY* m, const CS_CHAR* text, CS_INT length, CS_INT /*flags*/,
                           const char_attrib* charset) {
  require(length >= 0);
  const Parsed parsed = parse({text, static_cast<std::size_t>(length)}, charset);
  *m = record(parsed.value);
  return parsed.status;
}
