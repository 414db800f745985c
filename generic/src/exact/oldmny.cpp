// The older names of the money operations.
#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycall.h"
#include "exact/mnycnvt.h"

using namespace comnlib;

// clang-format off
MONEY_COPY(com_mnycopy, com__mnycopy, CS_MONEY)
MONEY_IN_PLACE(com_mnyzero, com__mnyzero, CS_MONEY)
MONEY_IN_PLACE(com_mnymaxpos, com__maxposmny, CS_MONEY)
MONEY_IN_PLACE(com_mnymaxneg, com__maxnegmny, CS_MONEY)
MONEY_COMPARE(com_mnycmp, com__mnycmp, CS_MONEY)
MONEY_COPY(com_mnyminus, com__mnyminus, CS_MONEY)
MONEY_IN_PLACE(com_mnyinc, com__mnyinc, CS_MONEY)
MONEY_IN_PLACE(com_mnydec, com__mnydec, CS_MONEY)
MONEY_COMPUTE(com_mnyadd, com__mnyadd, CS_MONEY)
MONEY_COMPUTE(com_mnysub, com__mnysub, CS_MONEY)
MONEY_COMPUTE(com_mnymul, com__mnymul, CS_MONEY)
MONEY_COMPUTE(com_mnydivide, com__mnydiv, CS_MONEY)
MONEY_COMPUTE(com_mnyxdiv, comn__mny16div, CS_MONEY)
MONEY_QUESTION(com_mnydown, com__mnydown, (CS_MONEY* m, CS_INT divisor), m, divisor)
MONEY_ROUTINE(com_mnyscale, com__mnyscale, (CS_MONEY* m, CS_INT multiplier, CS_INT addend), m, multiplier, addend)
MONEY_QUESTION(com_mnyinit, com__mnyinit, (CS_MONEY* m, CS_INT ndigits), m, ndigits)
MONEY_QUESTION(com_mnyndigit, com__mnyndigit, (CS_MONEY* m, CS_CHAR* digit), m, digit)
MONEY_COPY(com_mny4copy, com__mny4copy, CS_MONEY4)
MONEY_IN_PLACE(com_mny4zero, com__mny4zero, CS_MONEY4)
MONEY_COMPARE(com_mny4cmp, com__mny4cmp, CS_MONEY4)
MONEY_COPY(com_mny4minus, com__mny4minus, CS_MONEY4)
MONEY_COMPUTE(com_mny4add, com__mny4add, CS_MONEY4)
MONEY_COMPUTE(com_mny4sub, com__mny4sub, CS_MONEY4)
MONEY_COMPUTE(com_mny4mul, com__mny4mul, CS_MONEY4)
MONEY_COMPUTE(com_mny4divide, com__mny4div, CS_MONEY4)
// clang-format on
