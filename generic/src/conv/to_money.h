// The money targets of every family whose value is a number or an amount of money.
#pragma once

#include <concepts>

#include "conv/frame.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"

namespace comnlib {

// Stores each kind of source as an amount.
struct MoneyAmount {
  static CS_INT store(std::integral auto value, CS_MONEY* m) { return com__inttomny(value, m); }
  static CS_INT store(CS_REAL value, CS_MONEY* m) { return com__flt4tomny(value, m); }
  static CS_INT store(CS_FLOAT value, CS_MONEY* m) { return com__flt8tomny(value, m); }
  static CS_INT store(const CS_MONEY& value, CS_MONEY* m) { return com__mnycopy(&value, m); }
  static CS_INT store(const CS_MONEY4& value, CS_MONEY* m) { return com__mny4tomny(&value, m); }
};

struct Money4Amount {
  static CS_INT store(std::integral auto value, CS_MONEY4* m) { return com__inttomny4(value, m); }
  static CS_INT store(CS_REAL value, CS_MONEY4* m) { return com__flt4tomny4(value, m); }
  static CS_INT store(CS_FLOAT value, CS_MONEY4* m) { return com__flt8tomny4(value, m); }
  static CS_INT store(const CS_MONEY4& value, CS_MONEY4* m) { return com__mny4copy(&value, m); }
  // A clamped value is an overflow to callers.
  static CS_INT store(const CS_MONEY& value, CS_MONEY4* m) {
    return com__mnytomny4(&value, m) == kExactOk ? kExactOk : kExactOverflow;
  }
};

template <class Type, class Amount>
struct ToAmount : Type {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    typename Type::Value money;
    const CS_INT status = Amount::store(value, &money);
    store(call.dest, money);
    return exact_code(status);
  }
};

using ToMoney = ToAmount<Money, MoneyAmount>;
using ToMoney4 = ToAmount<Money4, Money4Amount>;

}  // namespace comnlib
