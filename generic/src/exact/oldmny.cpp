// The older names of the money operations: the internal routines behind a check of the pointers.
#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycall.h"
#include "exact/mnycnvt.h"

using namespace comnlib;
using namespace comnlib::money;

#define OLDER_NAME(name, internal, parameters, ...)       \
  CS_INT name parameters {                                \
    return call<internal>(Place::current(), __VA_ARGS__); \
  }

// By what the operation takes.
#define IN_PLACE(name, internal, Record) OLDER_NAME(name, internal, (Record * m), m)
#define COPY(name, internal, Record) \
  OLDER_NAME(name, internal, (const Record* src, Record* dst), src, dst)
#define COMPARE(name, internal, Record) \
  OLDER_NAME(name, internal, (const Record* a, const Record* b), a, b)
#define COMPUTE(name, internal, Record) \
  OLDER_NAME(name, internal, (const Record* a, const Record* b, Record* r), a, b, r)

// clang-format off
COPY(com_mnycopy, com__mnycopy, CS_MONEY)
IN_PLACE(com_mnyzero, com__mnyzero, CS_MONEY)
IN_PLACE(com_mnymaxpos, com__maxposmny, CS_MONEY)
IN_PLACE(com_mnymaxneg, com__maxnegmny, CS_MONEY)
COMPARE(com_mnycmp, com__mnycmp, CS_MONEY)
COPY(com_mnyminus, com__mnyminus, CS_MONEY)
IN_PLACE(com_mnyinc, com__mnyinc, CS_MONEY)
IN_PLACE(com_mnydec, com__mnydec, CS_MONEY)
COMPUTE(com_mnyadd, com__mnyadd, CS_MONEY)
COMPUTE(com_mnysub, com__mnysub, CS_MONEY)
COMPUTE(com_mnymul, com__mnymul, CS_MONEY)
COMPUTE(com_mnydivide, com__mnydiv, CS_MONEY)
COMPUTE(com_mnyxdiv, comn__mny16div, CS_MONEY)
OLDER_NAME(com_mnydown, com__mnydown, (CS_MONEY* m, CS_INT divisor), m, divisor)
OLDER_NAME(com_mnyscale, com__mnyscale, (CS_MONEY* m, CS_INT multiplier, CS_INT addend), m, multiplier, addend)
OLDER_NAME(com_mnyinit, com__mnyinit, (CS_MONEY* m, CS_INT ndigits), m, ndigits)
OLDER_NAME(com_mnyndigit, com__mnyndigit, (CS_MONEY* m, CS_CHAR* digit), m, digit)
COPY(com_mny4copy, com__mny4copy, CS_MONEY4)
IN_PLACE(com_mny4zero, com__mny4zero, CS_MONEY4)
COMPARE(com_mny4cmp, com__mny4cmp, CS_MONEY4)
COPY(com_mny4minus, com__mny4minus, CS_MONEY4)
COMPUTE(com_mny4add, com__mny4add, CS_MONEY4)
COMPUTE(com_mny4sub, com__mny4sub, CS_MONEY4)
COMPUTE(com_mny4mul, com__mny4mul, CS_MONEY4)
COMPUTE(com_mny4divide, com__mny4div, CS_MONEY4)
// clang-format on
