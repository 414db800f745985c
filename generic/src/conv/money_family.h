// The targets of the two money families.
#pragma once

#include <array>
#include <string_view>

#include "conv/number_family.h"
#include "exact/cvtmny.h"
#include "exact/mnymath.h"

namespace comnlib {

template <class Type>
struct MoneyToInteger : Type {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return ToInteger<Type>::convert(money::integer_part(money::units(value)), call);
  }
};

inline CS_FLOAT number_of(const CS_MONEY& value) {
  CS_FLOAT number;
  com__mnytoflt8(&value, &number);
  return number;
}
inline CS_FLOAT number_of(const CS_MONEY4& value) {
  CS_FLOAT number;
  com__mny4toflt8(&value, &number);
  return number;
}

// Every money value is in the range of a single.
template <class Type>
struct MoneyToFloat : Type {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    store(call.dest, static_cast<typename Type::Value>(number_of(value)));
    return CS_SUCCEED;
  }
};

struct MoneyToBit : Bit {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return ToBit::convert(money::units(value), call);
  }
};

// CS_USE_SRCVALUE takes the precision and scale that hold every money value.
struct MoneyToNumeric : ExactToNumeric {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    constexpr CS_INT kPrecisionOfMoney = 19;
    const CS_MONEY wide = money::record(money::units(value));
    return place_numeric(kPrecisionOfMoney, money::kDecimals, call,
                         [&](constant& record) { return com__mny8toexctnume(&wide, &record); });
  }
};

// Has as many decimals as the destination's precision asks for. Without grouping no text fills the
// buffer.
struct MoneyText {
  static constexpr bool kCut = true;
  using Buffer = std::array<CS_CHAR, 24>;
  static std::string_view of(const auto& value, const CS_DATAFMT& destfmt, Buffer& buffer) {
    const auto room = static_cast<CS_INT>(buffer.size());
    const CS_CHAR* const first = money::format_backwards(money::units(value), buffer.data(), room,
                                                         money::decimal_flags(destfmt.precision));
    return {first, buffer.data() + buffer.size() - 1};
  }
};

}  // namespace comnlib
