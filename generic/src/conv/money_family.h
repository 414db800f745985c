// The targets of the two money families: what a money value becomes, whichever of the two records
// it stands in.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "conv/newutils.h"
#include "conv/to_money.h"
#include "conv/to_numeric.h"
#include "exact/cvtmny.h"
#include "exact/mnymath.h"

namespace comnlib {

template <std::integral T, CS_INT Datatype>
struct MoneyToInteger : FixedTarget<Datatype, sizeof(T)> {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return ToInteger<T, Datatype>::convert(money::integer_part(money::units(value)), call);
  }
};

struct MoneyToFlt8 : FixedTarget<CS_FLOAT_TYPE, sizeof(CS_FLOAT)> {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    store(call.dest, number(value));
    return CS_SUCCEED;
  }

  static CS_FLOAT number(const CS_MONEY& value) {
    CS_FLOAT number;
    com__mnytoflt8(&value, &number);
    return number;
  }
  static CS_FLOAT number(const CS_MONEY4& value) {
    CS_FLOAT number;
    com__mny4toflt8(&value, &number);
    return number;
  }
};

// Every money value is in the range of a single.
struct MoneyToFlt4 : FixedTarget<CS_REAL_TYPE, sizeof(CS_REAL)> {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    store(call.dest, static_cast<CS_REAL>(MoneyToFlt8::number(value)));
    return CS_SUCCEED;
  }
};

struct MoneyToBit : FixedTarget<CS_BIT_TYPE, sizeof(CS_BIT)> {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return ToBit::convert(money::units(value), call);
  }
};

// Markers take the precision and scale that hold every money value.
struct MoneyToNumeric : NumericToNumeric {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    constexpr CS_INT kPrecisionOfMoney = 19;
    const CS_MONEY wide = money::record(money::units(value));
    return place_numeric(kPrecisionOfMoney, money::kDecimals, call,
                         [&](constant& record) { return com__mny8toexctnume(&wide, &record); });
  }
};

// A value as text, with as many decimals as the destination's precision asks for. Without grouping
// no text fills the buffer.
class MoneyText {
 public:
  MoneyText(const auto& value, const CS_DATAFMT& destfmt) {
    first_ = money::format_backwards(money::units(value), buffer_.data(), buffer_.size(),
                                     money::decimal_flags(destfmt.precision));
  }
  MoneyText(const MoneyText&) = delete;
  MoneyText& operator=(const MoneyText&) = delete;

  operator std::string_view() const { return {first_, buffer_.data() + buffer_.size() - 1}; }

 private:
  std::array<CS_CHAR, 24> buffer_;
  const CS_CHAR* first_;
};

// Text that does not fit is cut, not replaced by a "*".
struct MoneyToCharacter : ToCharacter {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    const MoneyText holder(value, *call.destfmt);
    const std::string_view text = holder;
    const auto length = static_cast<CS_INT>(text.size());
    require(call.destfmt->maxlength >= 0);
    *call.destlen = std::min(length, call.destfmt->maxlength);
    text.copy(static_cast<CS_CHAR*>(call.dest), static_cast<std::size_t>(*call.destlen));
    return comn__padchar(length, call.destfmt, call.dest, call.destlen);
  }
};

struct MoneyToVarchar : ToVarchar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return place_varchar(MoneyText(value, *call.destfmt), call);
  }
};

using MoneyToI1 = MoneyToInteger<CS_TINYINT, CS_TINYINT_TYPE>;
using MoneyToI2 = MoneyToInteger<CS_SMALLINT, CS_SMALLINT_TYPE>;
using MoneyToI4 = MoneyToInteger<CS_INT, CS_INT_TYPE>;
using MoneyToI8 = MoneyToInteger<std::int64_t, CS_LONG_TYPE>;

}  // namespace comnlib
