// The public operations on small money: thin routines around mny4cnvt.
#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycall.h"

using namespace comnlib;
using namespace comnlib::money;

CS_RETCODE comn_mny4copy(const CS_MONEY4* src, CS_MONEY4* dst) {
  return call_for_code<com__mny4copy>(Place::current(), src, dst);
}

CS_RETCODE comn_mny4zero(CS_MONEY4* m) {
  return call_for_code<com__mny4zero>(Place::current(), m);
}

CS_INT comn_mny4cmp(const CS_MONEY4* a, const CS_MONEY4* b) {
  return call<com__mny4cmp>(Place::current(), a, b);
}

CS_RETCODE comn_mny4minus(const CS_MONEY4* src, CS_MONEY4* dst) {
  return call_for_code<com__mny4minus>(Place::current(), src, dst);
}

CS_RETCODE comn_mny4add(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  return call_for_code<com__mny4add>(Place::current(), a, b, r);
}

CS_RETCODE comn_mny4sub(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  return call_for_code<com__mny4sub>(Place::current(), a, b, r);
}

CS_RETCODE comn_mny4mul(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  return call_for_code<com__mny4mul>(Place::current(), a, b, r);
}

CS_RETCODE comn_mny4divide(const CS_MONEY4* a, const CS_MONEY4* b, CS_MONEY4* r) {
  return call_for_code<com__mny4div>(Place::current(), a, b, r);
}
