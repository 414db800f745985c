// Small money inside the library.
#include "exact/mny4cnvt.h"

#include <algorithm>
#include <limits>

#include "exact/mnycnvt.h"
#include "exact/mnymath.h"
#include "exact/numeaux.h"

namespace comnlib::money {
namespace {

using MoneyOperation = CS_INT (*)(const CS_MONEY*, const CS_MONEY*, CS_MONEY*);

CS_INT store_units(bool overflow, CS_INT value, CS_MONEY4* r) {
  r->mny4 = value;
  return overflow ? kExactOverflow : kExactOk;
}

// The narrowed value of a wide step that ended with `status`. A value that had to be clamped is an
// overflow from here on.
CS_INT narrow(CS_INT status, const CS_MONEY& wide, CS_MONEY4* m) {
  const CS_INT narrowed = com__mnytomny4(&wide, m);
  return status == kExactOk && narrowed != kExactOk ? kExactOverflow : status;
}

CS_INT through_wide(MoneyOperation operation, const CS_MONEY4* a, const CS_MONEY4* b,
                    CS_MONEY4* r) {
  const CS_MONEY left = record(a->mny4);
  const CS_MONEY right = record(b->mny4);
  CS_MONEY wide;
  const CS_INT status = narrow(operation(&left, &right, &wide), wide, r);
  if (status != kExactOk) r->mny4 = 0;
  return status;
}

}  // namespace
}  // namespace comnlib::money

using namespace comnlib;
using namespace comnlib::money;

CS_INT com__mny4copy(const CS_MONEY4* src, CS_MONEY4* dst) {
  return store_units(false, src->mny4, dst);
}

CS_INT com__mny4zero(CS_MONEY4* m) {
  return store_units(false, 0, m);
}

CS_INT com__mny4cmp(const CS_MONEY4* a, const CS_MONEY4* b) {
  return (a->mny4 > b->mny4) - (a->mny4 < b->mny4);
}

CS_INT com__mny4minus(const CS_MONEY4* src, CS_MONEY4* dst) {
  CS_INT negated;
  const bool overflow = __builtin_sub_overflow(0, src->mny4, &negated);
  return store_units(overflow, negated, dst);
}

CS_INT com__mny4add(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  CS_INT sum;
  const bool overflow = __builtin_add_overflow(a->mny4, b->mny4, &sum);
  return store_units(overflow, overflow ? 0 : sum, r);
}

CS_INT com__mny4sub(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  CS_INT difference;
  const bool overflow = __builtin_sub_overflow(a->mny4, b->mny4, &difference);
  return store_units(overflow, overflow ? 0 : difference, r);
}

CS_INT com__mny4mul(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  return through_wide(com__mnymul, a, b, r);
}

CS_INT com__mny4div(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  return through_wide(com__mnydiv, a, b, r);
}

CS_INT com__mny4tomny(const CS_MONEY4* src, CS_MONEY* dst) {
  *dst = record(src->mny4);
  return kExactOk;
}

CS_INT com__mnytomny4(const CS_MONEY* src, CS_MONEY4* dst) {
  constexpr Units kLeast = std::numeric_limits<CS_INT>::min();
  constexpr Units kMost = std::numeric_limits<CS_INT>::max();
  const Units value = units(*src);
  dst->mny4 = static_cast<CS_INT>(std::clamp(value, kLeast, kMost));
  return dst->mny4 == value ? kExactOk : kMoneyNarrowed;
}

CS_INT com__inttomny4(CS_INT value, CS_MONEY4* m) {
  CS_MONEY wide;
  const CS_INT status = com__inttomny(value, &wide);
  return narrow(status, wide, m);
}

CS_INT com__mny4toint(const CS_MONEY4* m, CS_INT* value) {
  const CS_MONEY wide = record(m->mny4);
  return com__mnytoint(&wide, value);
}

CS_INT com__mny4toflt8(const CS_MONEY4* m, CS_FLOAT* value) {
  *value = m->mny4 / 10000.0;
  return kExactOk;
}

CS_INT com__mny4toflt4(const CS_MONEY4* m, CS_REAL* value) {
  *value = static_cast<CS_REAL>(m->mny4 / 10000.0);
  return kExactOk;
}

CS_INT com__flt8tomny4(CS_FLOAT value, CS_MONEY4* m) {
  CS_MONEY wide;
  const CS_INT status = com__flt8tomny(value, &wide);
  return narrow(status, wide, m);
}

CS_INT com__flt4tomny4(CS_REAL value, CS_MONEY4* m) {
  return com__flt8tomny4(value, m);
}

CS_CHAR* com__mny4tochar(const CS_MONEY4* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags) {
  const CS_MONEY wide = record(m->mny4);
  return com__mnytochar(&wide, buf, buflen, flags);
}

CS_INT com__mny4fromchar_mb(CS_MONEY4* m, const CS_CHAR* text, CS_INT length, CS_INT flags,
                            const char_attrib* charset) {
  CS_MONEY wide;
  const CS_INT status = com__mnyfromchar_mb(&wide, text, length, flags, charset);
  return narrow(status, wide, m);
}
