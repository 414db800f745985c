// The numeric targets: of the integer, float and bit families, and of values that are exact.
#pragma once

#include <concepts>

#include "conv/number_family.h"
#include "exact/numeric.h"

namespace comnlib {

// The whole record is counted, though only the bytes of the format's precision are written. A
// marker that asks for the source's precision fails the check: these sources have none.
struct ToNumeric {
  static constexpr CS_INT kLength = sizeof(CS_NUMERIC);
  static constexpr bool serves(CS_INT datatype) { return is_numeric(datatype); }

  static CS_RETCODE convert(auto value, const Conversion& call) {
    const CS_DATAFMT& format = *call.destfmt;
    if (!is_precision(format.precision)) return CS_CVT_PRECISION;
    if (!is_scale(format.scale)) return CS_CVT_SCALE;
    auto* numeric = static_cast<CS_NUMERIC*>(call.dest);
    numeric->precision = static_cast<CS_BYTE>(format.precision);
    numeric->scale = static_cast<CS_BYTE>(format.scale);
    constant record = record_of(*numeric);
    return exact_code(put(value, record));
  }

 private:
  static CS_INT put(std::integral auto value, constant& record) {
    return com__longtoexctnume(value, &record);
  }
  static CS_INT put(std::floating_point auto value, constant& record) {
    return com__doubletoexctnume(CS_FLOAT{value}, &record);
  }
};

// Of an exact value: a marker in the format takes the source's precision or scale. The bytes of the
// format's precision are written and counted. `fill` stores the value in a record of that size.
template <class Fill>
CS_RETCODE place_numeric(CS_INT source_precision, CS_INT source_scale, const Conversion& call,
                         Fill fill) {
  const CS_DATAFMT& format = *call.destfmt;
  const CS_INT precision =
      format.precision == CS_USE_SRCVALUE ? source_precision : format.precision;
  const CS_INT scale = format.scale == CS_USE_SRCVALUE ? source_scale : format.scale;
  if (!is_precision(precision)) return CS_CVT_PRECISION;
  if (!is_scale(scale)) return CS_CVT_SCALE;
  auto* numeric = static_cast<CS_NUMERIC*>(call.dest);
  numeric->precision = static_cast<CS_BYTE>(precision);
  numeric->scale = static_cast<CS_BYTE>(scale);
  constant record = record_of(*numeric);
  *call.destlen = static_cast<CS_INT>(offsetof(CS_NUMERIC, array)) + record.len;
  const CS_INT status = fill(record);
  return status == kExactTruncated ? CS_CVT_TRUNCATED : exact_code(status);
}

struct NumericToNumeric {
  static constexpr CS_INT kLength = 0;
  static constexpr bool serves(CS_INT datatype) { return is_numeric(datatype); }

  static CS_RETCODE convert(const constant& value, const Conversion& call) {
    return place_numeric(value.prec, value.scale, call,
                         [&](constant& record) { return rescale(value, record); });
  }
};

}  // namespace comnlib
