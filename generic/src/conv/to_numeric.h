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

// Of a working record: precision and scale are brought to what the format asks for, a marker taking
// the record's own. The bytes of the format's precision are written and counted.
struct NumericToNumeric {
  static constexpr CS_INT kLength = 0;
  static constexpr bool serves(CS_INT datatype) { return is_numeric(datatype); }

  static CS_RETCODE convert(const constant& value, const Conversion& call) {
    const CS_DATAFMT& format = *call.destfmt;
    const CS_INT precision =
        format.precision == CS_USE_SRCVALUE ? CS_INT{value.prec} : format.precision;
    const CS_INT scale = format.scale == CS_USE_SRCVALUE ? CS_INT{value.scale} : format.scale;
    if (!is_precision(precision)) return CS_CVT_PRECISION;
    if (!is_scale(scale)) return CS_CVT_SCALE;
    auto* numeric = static_cast<CS_NUMERIC*>(call.dest);
    numeric->precision = static_cast<CS_BYTE>(precision);
    numeric->scale = static_cast<CS_BYTE>(scale);
    constant record = record_of(*numeric);
    *call.destlen = static_cast<CS_INT>(offsetof(CS_NUMERIC, array)) + record.len;
    const CS_INT status = rescale(value, record);
    return status == kExactTruncated ? CS_CVT_TRUNCATED : exact_code(status);
  }
};

}  // namespace comnlib
