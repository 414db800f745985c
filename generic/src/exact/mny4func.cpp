// The public operations on small money.
#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycall.h"

using namespace comnlib;

// clang-format off
MONEY_COPY(comn_mny4copy, com__mny4copy, CS_MONEY4)
MONEY_IN_PLACE(comn_mny4zero, com__mny4zero, CS_MONEY4)
MONEY_COMPARE(comn_mny4cmp, com__mny4cmp, CS_MONEY4)
MONEY_COPY(comn_mny4minus, com__mny4minus, CS_MONEY4)
MONEY_COMPUTE(comn_mny4add, com__mny4add, CS_MONEY4)
MONEY_COMPUTE(comn_mny4sub, com__mny4sub, CS_MONEY4)
MONEY_COMPUTE(comn_mny4mul, com__mny4mul, CS_MONEY4)
MONEY_COMPUTE(comn_mny4divide, com__mny4div, CS_MONEY4)
// clang-format on
