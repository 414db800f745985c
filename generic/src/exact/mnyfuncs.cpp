// The public operations on money.
#include "comnlib/money.h"
#include "exact/mnycall.h"
#include "exact/mnycnvt.h"
#include "exact/mnymath.h"

using namespace comnlib;
using namespace comnlib::money;

namespace {

// Addition and subtraction are done here: a call would take longer than they do.
CS_RETCODE store_sum(std::optional<Units> value, CS_MONEY* r, CallSite site = CallSite::current()) {
  if (!value) [[unlikely]] {
    *r = record(0);
    return trace(CS_CVT_OVERFLOW, site);
  }
  *r = record(*value);
  return trace(CS_SUCCEED, site);
}

}  // namespace

// clang-format off
MONEY_COPY(comn_mnycopy, com__mnycopy, CS_MONEY)
MONEY_IN_PLACE(comn_mnyzero, com__mnyzero, CS_MONEY)
MONEY_IN_PLACE(comn_mnymaxpos, com__maxposmny, CS_MONEY)
MONEY_IN_PLACE(comn_mnymaxneg, com__maxnegmny, CS_MONEY)
MONEY_COMPARE(comn_mnycmp, com__mnycmp, CS_MONEY)
MONEY_COPY(comn_mnyminus, com__mnyminus, CS_MONEY)
MONEY_IN_PLACE(comn_mnyinc, com__mnyinc, CS_MONEY)
MONEY_IN_PLACE(comn_mnydec, com__mnydec, CS_MONEY)
// clang-format on

CS_RETCODE comn_mnyadd(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  check_pointer(a);
  check_pointer(b);
  check_pointer(r);
  return store_sum(sum(units(*a), units(*b)), r);
}

CS_RETCODE comn_mnysub(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  check_pointer(a);
  check_pointer(b);
  check_pointer(r);
  return store_sum(difference(units(*a), units(*b)), r);
}

// clang-format off
MONEY_COMPUTE(comn_mnymul, com__mnymul, CS_MONEY)
MONEY_COMPUTE(comn_mnydivide, com__mnydiv, CS_MONEY)
MONEY_COMPUTE(comn_mnyxdiv, comn__mny16div, CS_MONEY)
MONEY_QUESTION(comn_mnydown, com__mnydown, (CS_MONEY* m, CS_INT divisor), m, divisor)
MONEY_ROUTINE(comn_mnyscale, com__mnyscale, (CS_MONEY* m, CS_INT multiplier, CS_INT addend), m, multiplier, addend)
MONEY_QUESTION(comn_mnyinit, com__mnyinit, (CS_MONEY* m, CS_INT ndigits), m, ndigits)
MONEY_QUESTION(comn_mnyndigit, com__mnyndigit, (CS_MONEY* m, CS_CHAR* digit), m, digit)
// clang-format on
