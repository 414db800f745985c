// The public operations on money: thin routines around mnycnvt.
#include "comnlib/money.h"
#include "exact/mnycall.h"
#include "exact/mnycnvt.h"
#include "exact/mnymath.h"

using namespace comnlib;
using namespace comnlib::money;

namespace {

// Addition and subtraction stand here themselves: a call would take longer than they do.
CS_RETCODE put(std::optional<Units> value, CS_MONEY* r, Place place = Place::current()) {
  if (!value) [[unlikely]] {
    *r = record(0);
    return trace(CS_CVT_OVERFLOW, place);
  }
  *r = record(*value);
  return trace(CS_SUCCEED, place);
}

}  // namespace

CS_RETCODE comn_mnycopy(const CS_MONEY* src, CS_MONEY* dst) {
  return call_for_code<com__mnycopy>(Place::current(), src, dst);
}

CS_RETCODE comn_mnyzero(CS_MONEY* m) {
  return call_for_code<com__mnyzero>(Place::current(), m);
}

CS_RETCODE comn_mnymaxpos(CS_MONEY* m) {
  return call_for_code<com__maxposmny>(Place::current(), m);
}

CS_RETCODE comn_mnymaxneg(CS_MONEY* m) {
  return call_for_code<com__maxnegmny>(Place::current(), m);
}

CS_INT comn_mnycmp(const CS_MONEY* a, const CS_MONEY* b) {
  return call<com__mnycmp>(Place::current(), a, b);
}

CS_RETCODE comn_mnyminus(const CS_MONEY* src, CS_MONEY* dst) {
  return call_for_code<com__mnyminus>(Place::current(), src, dst);
}

CS_RETCODE comn_mnyinc(CS_MONEY* m) {
  return call_for_code<com__mnyinc>(Place::current(), m);
}

CS_RETCODE comn_mnydec(CS_MONEY* m) {
  return call_for_code<com__mnydec>(Place::current(), m);
}

CS_RETCODE comn_mnyadd(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  check_pointer(a);
  check_pointer(b);
  check_pointer(r);
  return put(sum(units(*a), units(*b)), r);
}

CS_RETCODE comn_mnysub(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  check_pointer(a);
  check_pointer(b);
  check_pointer(r);
  return put(difference(units(*a), units(*b)), r);
}

CS_RETCODE comn_mnymul(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return call_for_code<com__mnymul>(Place::current(), a, b, r);
}

CS_RETCODE comn_mnydivide(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return call_for_code<com__mnydiv>(Place::current(), a, b, r);
}

CS_RETCODE comn_mnyxdiv(const CS_MONEY* a, const CS_MONEY* b, CS_MONEY* r) {
  return call_for_code<comn__mny16div>(Place::current(), a, b, r);
}

CS_INT comn_mnydown(CS_MONEY* m, CS_INT divisor) {
  return call<com__mnydown>(Place::current(), m, divisor);
}

CS_RETCODE comn_mnyscale(CS_MONEY* m, CS_INT multiplier, CS_INT addend) {
  return call_for_code<com__mnyscale>(Place::current(), m, multiplier, addend);
}

CS_INT comn_mnyinit(CS_MONEY* m, CS_INT ndigits) {
  return call<com__mnyinit>(Place::current(), m, ndigits);
}

CS_INT comn_mnyndigit(CS_MONEY* m, CS_CHAR* digit) {
  return call<com__mnyndigit>(Place::current(), m, digit);
}
