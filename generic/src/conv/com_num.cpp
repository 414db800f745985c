// The conversions from CS_NUMERIC and CS_DECIMAL.
#include "conv/number_family.h"
#include "conv/to_numeric.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeric.h"

using namespace comnlib;

namespace {

using SourceRecord = const constant&;

constexpr bool in_domain(const CS_NUMERIC& numeric) {
  return is_precision(numeric.precision) && is_scale(numeric.scale);
}

struct NumericToLong : FixedTarget<CS_LONG_TYPE, sizeof(std::int64_t)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    std::int64_t integer = 0;
    const CS_INT status = to_integer(value, integer);
    store(call.dest, integer);
    return exact_code(status);
  }
};

struct NumericToBit : FixedTarget<CS_BIT_TYPE, sizeof(CS_BIT)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    store(call.dest, static_cast<CS_BIT>(com__exctnume_intcmp(&value, 0) == 0));
    return CS_SUCCEED;
  }
};

CS_FLOAT nearest_double(SourceRecord value) {
  CS_FLOAT number = 0;
  // No numeric is outside the range of a double.
  require(com__subexctnumetoflt8(&value, &number) == kExactOk);
  return number;
}

// By way of a double, and so with its digits: 1.99999999999999999999 is 2.
template <std::integral T, CS_INT Datatype>
struct NumericToInteger : FixedTarget<Datatype, sizeof(T)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    return ToInteger<T, Datatype>::convert(nearest_double(value), call);
  }
};

struct NumericToFlt8 : FixedTarget<CS_FLOAT_TYPE, sizeof(CS_FLOAT)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    store(call.dest, nearest_double(value));
    return CS_SUCCEED;
  }
};

struct NumericToFlt4 : FixedTarget<CS_REAL_TYPE, sizeof(CS_REAL)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    return ToFlt4::convert(nearest_double(value), call);
  }
};

// The limit that the value passed is stored with an overflow, as for integers.
CS_INT to_money(SourceRecord value, CS_MONEY& money) {
  const CS_INT status = com__exctnumetomny8(&value, &money);
  if (status != kExactOk) value.value[0] != 0 ? com__maxnegmny(&money) : com__maxposmny(&money);
  return status;
}

struct NumericToMoney : FixedTarget<CS_MONEY_TYPE, sizeof(CS_MONEY)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    CS_MONEY money;
    const CS_INT status = to_money(value, money);
    store(call.dest, money);
    return exact_code(status);
  }
};

struct NumericToMoney4 : FixedTarget<CS_MONEY4_TYPE, sizeof(CS_MONEY4)> {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    CS_MONEY money;
    CS_MONEY4 narrow;
    const CS_INT status = to_money(value, money);
    const CS_INT narrowing = com__mnytomny4(&money, &narrow);
    store(call.dest, narrow);
    return status == kExactOk && narrowing == kExactOk ? CS_SUCCEED : CS_CVT_OVERFLOW;
  }
};

// A sign, "0." and 77 decimals, or a sign, 78 digits and a point.
using TextBuffer = std::array<CS_CHAR, 80>;

std::string_view text_of(SourceRecord value, TextBuffer& buffer) {
  CS_INT length = 0;
  require(com__subexctnumetochar(&value, buffer.data(), static_cast<CS_INT>(buffer.size()),
                                 &length) == kExactOk);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

struct NumericToCharacter : ToCharacter {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    TextBuffer buffer;
    return place_text(text_of(value, buffer), call);
  }
};

struct NumericToVarchar : ToVarchar {
  static CS_RETCODE convert(SourceRecord value, const Conversion& call) {
    TextBuffer buffer;
    return place_varchar(text_of(value, buffer), call);
  }
};

struct NumericToBinary : ToBinary {
  static CS_RETCODE convert(SourceRecord, const Conversion& call) {
    return ToBinary::convert(load<CS_NUMERIC>(call.src), call);
  }
};

struct NumericToVarbinary : ToVarbinary {
  static CS_RETCODE convert(SourceRecord, const Conversion& call) {
    return ToVarbinary::convert(load<CS_NUMERIC>(call.src), call);
  }
};

using NumericToI1 = NumericToInteger<CS_TINYINT, CS_TINYINT_TYPE>;
using NumericToI2 = NumericToInteger<CS_SMALLINT, CS_SMALLINT_TYPE>;
using NumericToI4 = NumericToInteger<CS_INT, CS_INT_TYPE>;

// The body of every member. The source is copied, so a destination may share its bytes.
template <class Target>
CS_RETCODE convert_numeric(const Conversion& call, Place place = Place::current()) {
  check_pointers(call, place);
  require(is_numeric(call.srcfmt->datatype), place);
  require(Target::serves(call.destfmt->datatype), place);
  *call.destlen = Target::kLength;
  const auto value = load<CS_NUMERIC>(call.src);
  if (!in_domain(value)) return trace(CS_CVT_DOMAIN, place);
  return trace(Target::convert(record_of(value), call), place);
}

}  // namespace

#define COMNLIB_NUMERIC_MEMBER(routine, target)                                     \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {                               \
    return convert_numeric<target>({context, srcfmt, src, destfmt, dest, destlen}); \
  }

COMNLIB_NUMERIC_MEMBER(comn_numtobit, NumericToBit)
COMNLIB_NUMERIC_MEMBER(comn_numtoi1, NumericToI1)
COMNLIB_NUMERIC_MEMBER(comn_numtoi2, NumericToI2)
COMNLIB_NUMERIC_MEMBER(comn_numtoi4, NumericToI4)
COMNLIB_NUMERIC_MEMBER(comn_numtoi8, NumericToLong)
COMNLIB_NUMERIC_MEMBER(comn_numtoflt4, NumericToFlt4)
COMNLIB_NUMERIC_MEMBER(comn_numtoflt8, NumericToFlt8)
COMNLIB_NUMERIC_MEMBER(comn_numtonum, NumericToNumeric)
COMNLIB_NUMERIC_MEMBER(comn_numtomoney, NumericToMoney)
COMNLIB_NUMERIC_MEMBER(comn_numtomny4, NumericToMoney4)
COMNLIB_NUMERIC_MEMBER(comn_numtochar, NumericToCharacter)
COMNLIB_NUMERIC_MEMBER(comn_numtovarchar, NumericToVarchar)
COMNLIB_NUMERIC_MEMBER(comn_numtobin, NumericToBinary)
COMNLIB_NUMERIC_MEMBER(comn_numtovarbin, NumericToVarbinary)
