// What is known of the built-in datatypes, one line each. Sizes, null values, the checks of
// datatypes and the place in the matrix are all derived from this table.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "comnlib/convert.h"

namespace comnlib {

// A family is a row of the default matrix and the column of the same name.
enum class Family : CS_BYTE {
  character,
  text,
  binary,
  image,
  tinyint,
  smallint,
  integer,
  real,
  floating,
  bit,
  datetime,
  datetime4,
  money,
  money4,
  numeric,
  varchar,
  varbinary,
  long_integer,
  sensitivity,
  boundary,
  no_value,
  ushort,
  unichar
};

// The family whose sources and targets serve the values. Text, labels and images are families of
// their own in the matrix only.
constexpr Family value_family(Family family) {
  switch (family) {
    case Family::text:
    case Family::sensitivity:
    case Family::boundary:
      return Family::character;
    case Family::image:
      return Family::binary;
    default:
      return family;
  }
}

struct Datatype {
  CS_INT code;
  Family family;
  CS_INT size;            // of a value; 0 where the caller's length counts
  CS_INT null_size;       // of the default null value, which may differ from the value's size
  CS_INT padding;         // of a null value
  CS_BYTE null_head = 0;  // first byte of the default null value; the others are zero
};

constexpr CS_BYTE kNullPrecision = 18;

// clang-format off
constexpr std::array<Datatype, CS_BUILTIN_TYPES> kDatatypes = {{
    {CS_CHAR_TYPE, Family::character, 0, 0, CS_PAD_CHAR},
    {CS_BINARY_TYPE, Family::binary, 0, 0, CS_PAD_BINARY},
    {CS_LONGCHAR_TYPE, Family::character, 0, 0, CS_PAD_CHAR},
    {CS_LONGBINARY_TYPE, Family::binary, 0, 0, CS_PAD_BINARY},
    {CS_TEXT_TYPE, Family::text, 0, 0, CS_PAD_CHAR},
    {CS_IMAGE_TYPE, Family::image, 0, 0, CS_PAD_BINARY},
    {CS_TINYINT_TYPE, Family::tinyint, sizeof(CS_TINYINT), 1, CS_PAD_NONE},
    {CS_SMALLINT_TYPE, Family::smallint, sizeof(CS_SMALLINT), 2, CS_PAD_NONE},
    {CS_INT_TYPE, Family::integer, sizeof(CS_INT), 4, CS_PAD_NONE},
    {CS_REAL_TYPE, Family::real, sizeof(CS_REAL), 4, CS_PAD_NONE},
    {CS_FLOAT_TYPE, Family::floating, sizeof(CS_FLOAT), 8, CS_PAD_NONE},
    {CS_BIT_TYPE, Family::bit, sizeof(CS_BIT), 1, CS_PAD_NONE},
    {CS_DATETIME_TYPE, Family::datetime, sizeof(CS_DATETIME), 8, CS_PAD_NONE},
    // The null values of the two small types are longer than the types; reading cuts them.
    {CS_DATETIME4_TYPE, Family::datetime4, sizeof(CS_DATETIME4), 8, CS_PAD_NONE},
    {CS_MONEY_TYPE, Family::money, sizeof(CS_MONEY), 8, CS_PAD_NONE},
    {CS_MONEY4_TYPE, Family::money4, sizeof(CS_MONEY4), 8, CS_PAD_NONE},
    {CS_NUMERIC_TYPE, Family::numeric, sizeof(CS_NUMERIC), 35, CS_PAD_NONE, kNullPrecision},
    {CS_DECIMAL_TYPE, Family::numeric, sizeof(CS_DECIMAL), 35, CS_PAD_NONE, kNullPrecision},
    {CS_VARCHAR_TYPE, Family::varchar, sizeof(CS_VARCHAR), 258, CS_PAD_NONE},
    {CS_VARBINARY_TYPE, Family::varbinary, sizeof(CS_VARBINARY), 258, CS_PAD_NONE},
    {CS_LONG_TYPE, Family::long_integer, 0, 4, CS_PAD_NONE},
    {CS_SENSITIVITY_TYPE, Family::sensitivity, 0, 0, CS_PAD_CHAR},
    {CS_BOUNDARY_TYPE, Family::boundary, 0, 0, CS_PAD_CHAR},
    {CS_VOID_TYPE, Family::no_value, 0, 4, CS_PAD_NONE},
    {CS_USHORT_TYPE, Family::ushort, 0, 2, CS_PAD_NONE},
    {CS_UNICHAR_TYPE, Family::unichar, sizeof(CS_UNICHAR), 1, CS_PAD_UNICHAR},
}};
// clang-format on

consteval bool codes_are_indices() {
  for (std::size_t at = 0; at < kDatatypes.size(); ++at)
    if (kDatatypes[at].code != static_cast<CS_INT>(at)) return false;
  return true;
}
static_assert(codes_are_indices());

constexpr bool is_builtin(CS_INT datatype) {
  return datatype >= 0 && datatype < CS_BUILTIN_TYPES;
}

// `datatype` is a built-in one.
constexpr const Datatype& datatype_of(CS_INT datatype) {
  return kDatatypes[static_cast<std::size_t>(datatype)];
}

// Bit n: datatype code n, of those with values of the family.
consteval CS_UINT codes_of(Family family) {
  CS_UINT codes = 0;
  for (const Datatype& each : kDatatypes)
    if (value_family(each.family) == family) codes |= CS_UINT{1} << each.code;
  return codes;
}

template <Family kFamily>
constexpr bool is_of(CS_INT datatype) {
  constexpr CS_UINT kCodes = codes_of(kFamily);
  if (datatype == std::countr_zero(kCodes)) [[likely]]
    return true;
  if constexpr (std::has_single_bit(kCodes)) return false;
  return is_builtin(datatype) && (kCodes >> datatype & 1) != 0;
}

constexpr bool is_character(CS_INT datatype) {
  return is_of<Family::character>(datatype);
}
constexpr bool is_binary(CS_INT datatype) {
  return is_of<Family::binary>(datatype);
}
constexpr bool is_numeric(CS_INT datatype) {
  return is_of<Family::numeric>(datatype);
}

// Whether stored bytes are a valid value of their type. In all other types every content is valid.
template <Family kFamily>
constexpr bool is_in_domain(const auto& value) {
  if constexpr (kFamily == Family::bit) return value <= 1;
  if constexpr (kFamily == Family::numeric)
    return value.precision >= 1 && value.precision <= CS_MAX_PREC && value.scale <= CS_MAX_SCALE;
  return true;
}

// Datatypes as sources and targets of conversions serve them. A format describes a value of fixed
// length by its datatype, any other by its length too.
template <Family kFamily, class T>
struct Fixed {
  using Value = T;
  static constexpr CS_INT kLength = sizeof(T);
  static constexpr bool serves(const CS_DATAFMT& format) { return is_of<kFamily>(format.datatype); }
  static constexpr bool contains(const T& value) { return is_in_domain<kFamily>(value); }
};

template <Family kFamily, CS_INT kShortest = 0>
struct Sized {
  static constexpr CS_INT kLength = 0;
  static constexpr bool serves(const CS_DATAFMT& format) {
    return is_of<kFamily>(format.datatype) && format.maxlength >= kShortest;
  }
};

using Tinyint = Fixed<Family::tinyint, CS_TINYINT>;
using Smallint = Fixed<Family::smallint, CS_SMALLINT>;
using Integer = Fixed<Family::integer, CS_INT>;
using Long = Fixed<Family::long_integer, std::int64_t>;
using Real = Fixed<Family::real, CS_REAL>;
using Float = Fixed<Family::floating, CS_FLOAT>;
using Bit = Fixed<Family::bit, CS_BIT>;
using Datetime = Fixed<Family::datetime, CS_DATETIME>;
using Datetime4 = Fixed<Family::datetime4, CS_DATETIME4>;
using Money = Fixed<Family::money, CS_MONEY>;
using Money4 = Fixed<Family::money4, CS_MONEY4>;
using Numeric = Fixed<Family::numeric, CS_NUMERIC>;
using Varchar = Fixed<Family::varchar, CS_VARCHAR>;
using Varbinary = Fixed<Family::varbinary, CS_VARBINARY>;
using Character = Sized<Family::character>;
using Binary = Sized<Family::binary>;
using Unichar = Sized<Family::unichar>;

}  // namespace comnlib
