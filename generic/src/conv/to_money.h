// The money targets of every family whose value is a number or an amount of money.
#pragma once

#include <concepts>

#include "conv/number_family.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"

namespace comnlib {

// Self::put makes the amount of every source.
template <class Self, class Amount, CS_INT Datatype>
struct AmountTarget : FixedTarget<Datatype, sizeof(Amount)> {
  static CS_RETCODE convert(auto value, const Conversion& call) {
    Amount money;
    const CS_INT status = Self::put(value, &money);
    store(call.dest, money);
    return exact_code(status);
  }
};

struct ToMoney : AmountTarget<ToMoney, CS_MONEY, CS_MONEY_TYPE> {
  static CS_INT put(std::integral auto value, CS_MONEY* m) { return com__inttomny(value, m); }
  static CS_INT put(CS_REAL value, CS_MONEY* m) { return com__flt4tomny(value, m); }
  static CS_INT put(CS_FLOAT value, CS_MONEY* m) { return com__flt8tomny(value, m); }
  static CS_INT put(const CS_MONEY& value, CS_MONEY* m) { return com__mnycopy(&value, m); }
  static CS_INT put(const CS_MONEY4& value, CS_MONEY* m) { return com__mny4tomny(&value, m); }
};

struct ToMoney4 : AmountTarget<ToMoney4, CS_MONEY4, CS_MONEY4_TYPE> {
  static CS_INT put(std::integral auto value, CS_MONEY4* m) { return com__inttomny4(value, m); }
  static CS_INT put(CS_REAL value, CS_MONEY4* m) { return com__flt4tomny4(value, m); }
  static CS_INT put(CS_FLOAT value, CS_MONEY4* m) { return com__flt8tomny4(value, m); }
  static CS_INT put(const CS_MONEY4& value, CS_MONEY4* m) { return com__mny4copy(&value, m); }
  // A clamped value is an overflow to callers.
  static CS_INT put(const CS_MONEY& value, CS_MONEY4* m) {
    return com__mnytomny4(&value, m) == kExactOk ? kExactOk : kExactOverflow;
  }
};

}  // namespace comnlib
