// The numeric targets: of the integer, float and bit families, and of values that are exact.
#pragma once

#include <concepts>
#include <span>

#include "conv/frame.h"
#include "exact/numeric.h"

namespace comnlib {

// Begins a destination record with the format's precision and scale. CS_CVT_PRECISION or
// CS_CVT_SCALE, with nothing written, when they are not valid.
inline CS_RETCODE open_numeric(CS_INT precision, CS_INT scale, CS_NUMERIC& numeric) {
  if (!is_precision(precision)) return CS_CVT_PRECISION;
  if (!is_scale(scale)) return CS_CVT_SCALE;
  numeric.precision = static_cast<CS_BYTE>(precision);
  numeric.scale = static_cast<CS_BYTE>(scale);
  return CS_SUCCEED;
}

// The whole record is written and counted; after the magnitude it is zero. CS_USE_SRCVALUE is not
// valid, since these sources have no precision.
struct ToNumeric : Numeric {
  static CS_RETCODE convert(auto value, const Conversion& call) {
    auto& numeric = *static_cast<CS_NUMERIC*>(call.dest);
    const CS_RETCODE opened = open_numeric(call.destfmt->precision, call.destfmt->scale, numeric);
    if (opened != CS_SUCCEED) return opened;
    std::memset(numeric.array, 0, sizeof numeric.array);
    constant record = record_of(numeric);
    return exact_code(fill(value, record));
  }

 private:
  static CS_INT fill(std::integral auto value, constant& record) {
    return com__longtoexctnume(value, &record);
  }
  static CS_INT fill(std::floating_point auto value, constant& record) {
    return com__doubletoexctnume(CS_FLOAT{value}, &record);
  }
};

struct ExactToNumeric : Numeric {
  static constexpr CS_INT kLength = 0;
};

// Places an exact value; CS_USE_SRCVALUE in the format takes the source's precision or scale. The
// bytes of the precision are written and counted. `fill` stores the value in a record of that size.
template <class Fill>
CS_RETCODE place_numeric(CS_INT source_precision, CS_INT source_scale, const Conversion& call,
                         Fill fill) {
  const CS_DATAFMT& format = *call.destfmt;
  auto& numeric = *static_cast<CS_NUMERIC*>(call.dest);
  const CS_RETCODE opened =
      open_numeric(format.precision == CS_USE_SRCVALUE ? source_precision : format.precision,
                   format.scale == CS_USE_SRCVALUE ? source_scale : format.scale, numeric);
  if (opened != CS_SUCCEED) return opened;
  constant record = record_of(numeric);
  *call.destlen = static_cast<CS_INT>(offsetof(CS_NUMERIC, array)) + record.len;
  const CS_INT status = fill(record);
  return status == kExactTruncated ? CS_CVT_TRUNCATED : exact_code(status);
}

}  // namespace comnlib
