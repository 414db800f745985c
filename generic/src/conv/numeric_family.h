// The targets of CS_NUMERIC and CS_DECIMAL.
#pragma once

#include "conv/number_family.h"
#include "conv/numeric_text.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"

namespace comnlib {

inline CS_FLOAT nearest_double(const CS_NUMERIC& value) {
  const constant record = record_of(value);
  CS_FLOAT number = 0;
  // No numeric is outside the range of a double.
  require(com__subexctnumetoflt8(&record, &number) == kExactOk);
  return number;
}

// By way of the nearest double: 1.99999999999999999999 is 2.
template <class Type>
struct NumericToInteger : Type {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    return ToInteger<Type>::convert(nearest_double(value), call);
  }
};

struct NumericToLong : Long {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    std::int64_t integer = 0;
    const CS_INT status = to_integer(record_of(value), integer);
    store(call.dest, integer);
    return exact_code(status);
  }
};

struct NumericToBit : Bit {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    const constant record = record_of(value);
    store(call.dest, static_cast<CS_BIT>(com__exctnume_intcmp(&record, 0) == 0));
    return CS_SUCCEED;
  }
};

template <class Type>
struct NumericToFloat : Type {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    return ToFloat<Type>::convert(nearest_double(value), call);
  }
};

// The limit that the value passed is stored with an overflow, as for integers.
inline CS_INT clamped_money(const CS_NUMERIC& value, CS_MONEY& money) {
  const constant record = record_of(value);
  const CS_INT status = com__exctnumetomny8(&record, &money);
  if (status != kExactOk) value.array[0] != 0 ? com__maxnegmny(&money) : com__maxposmny(&money);
  return status;
}

struct NumericToMoney : Money {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    CS_MONEY money;
    const CS_INT status = clamped_money(value, money);
    store(call.dest, money);
    return exact_code(status);
  }
};

struct NumericToMoney4 : Money4 {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    CS_MONEY money;
    CS_MONEY4 narrow;
    const CS_INT status = clamped_money(value, money);
    const CS_INT narrowing = com__mnytomny4(&money, &narrow);
    store(call.dest, narrow);
    return status == kExactOk && narrowing == kExactOk ? CS_SUCCEED : CS_CVT_OVERFLOW;
  }
};

struct NumericToNumeric : ExactToNumeric {
  static CS_RETCODE convert(const CS_NUMERIC& value, const Conversion& call) {
    return place_numeric(value.precision, value.scale, call,
                         [&](constant& record) { return rescale(record_of(value), record); });
  }
};

}  // namespace comnlib
