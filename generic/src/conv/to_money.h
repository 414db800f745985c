// The money targets of every family whose value is a number or an amount of money.
#pragma once

#include <concepts>

#include "conv/frame.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"

namespace comnlib {

// Self::amount makes the amount of every source.
template <class Self, class Type>
struct AmountTarget : Type {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    typename Type::Value money;
    const CS_INT status = Self::amount(value, &money);
    store(call.dest, money);
    return exact_code(status);
  }
};

struct ToMoney : AmountTarget<ToMoney, Money> {
  static CS_INT amount(std::integral auto value, CS_MONEY* m) { return com__inttomny(value, m); }
  static CS_INT amount(CS_REAL value, CS_MONEY* m) { return com__flt4tomny(value, m); }
  static CS_INT amount(CS_FLOAT value, CS_MONEY* m) { return com__flt8tomny(value, m); }
  static CS_INT amount(const CS_MONEY& value, CS_MONEY* m) { return com__mnycopy(&value, m); }
  static CS_INT amount(const CS_MONEY4& value, CS_MONEY* m) { return com__mny4tomny(&value, m); }
};

struct ToMoney4 : AmountTarget<ToMoney4, Money4> {
  static CS_INT amount(std::integral auto value, CS_MONEY4* m) { return com__inttomny4(value, m); }
  static CS_INT amount(CS_REAL value, CS_MONEY4* m) { return com__flt4tomny4(value, m); }
  static CS_INT amount(CS_FLOAT value, CS_MONEY4* m) { return com__flt8tomny4(value, m); }
  static CS_INT amount(const CS_MONEY4& value, CS_MONEY4* m) { return com__mny4copy(&value, m); }
  // A clamped value is an overflow to callers.
  static CS_INT amount(const CS_MONEY& value, CS_MONEY4* m) {
    return com__mnytomny4(&value, m) == kExactOk ? kExactOk : kExactOverflow;
  }
};

}  // namespace comnlib
