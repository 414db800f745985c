// The conversions of binary data, one template for the binary family (com_bin) and for varbinary
// (com_varb). A Source tells which datatypes it serves and where a value's bytes lie.
#pragma once

#include <algorithm>
#include <optional>
#include <span>

#include "chars/hex.h"
#include "conv/frame.h"
#include "conv/newutils.h"
#include "exact/numeric.h"

namespace comnlib::binary_family {

using Bytes = std::span<const CS_BYTE>;

// The value's bytes; none for a record whose own length is impossible.
struct BinarySource {
  static constexpr bool serves(CS_INT datatype) { return is_binary(datatype); }
  static std::optional<Bytes> bytes(const Conversion& call) {
    require(call.srcfmt->maxlength >= 0);
    return Bytes(static_cast<const CS_BYTE*>(call.src),
                 static_cast<std::size_t>(call.srcfmt->maxlength));
  }
};

struct VarbinarySource {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_VARBINARY_TYPE; }
  static std::optional<Bytes> bytes(const Conversion& call) {
    const CS_SMALLINT length = record_length(call.src);
    if (length < 0 || length > CS_MAX_CHAR) return std::nullopt;
    return Bytes(record_bytes(call.src), static_cast<std::size_t>(length));
  }
};

// Writes as many whole bytes' digits as fit in `room` units; returns the number of units written.
// From the last byte to the first, so that the digits may replace the bytes themselves.
template <class Unit>
std::size_t write_hex(Bytes bytes, CS_BYTE* dest, std::size_t room) {
  const std::size_t whole = std::min(bytes.size(), room / 2);
  for (std::size_t at = whole; at-- > 0;) {
    const HexPair digits = hex_of(bytes[at]);
    store(dest + 2 * at * sizeof(Unit), static_cast<Unit>(digits.high));
    store(dest + (2 * at + 1) * sizeof(Unit), static_cast<Unit>(digits.low));
  }
  return 2 * whole;
}

// Hexadecimal text into a padded destination of `Unit`s: cut to whole bytes where it does not fit,
// with its terminator where one is asked for directly behind the last digit.
template <class Unit>
CS_RETCODE to_padded_text(Bytes bytes, const Conversion& call) {
  require(call.destfmt->maxlength >= 0);
  auto* dest = static_cast<CS_BYTE*>(call.dest);
  const auto room = static_cast<std::size_t>(call.destfmt->maxlength) / sizeof(Unit);
  const bool terminate = terminates(*call.destfmt);
  const std::size_t reserved = terminate && room > 0 ? 1 : 0;
  const std::size_t written = write_hex<Unit>(bytes, dest, room - reserved);
  *call.destlen = static_cast<CS_INT>(written * sizeof(Unit));
  if (written == 2 * bytes.size() && (!terminate || reserved == 1)) {
    if constexpr (sizeof(Unit) == 1)
      return comn__padchar(*call.destlen, call.destfmt, dest, call.destlen);
    else
      return comn__padunichar(*call.destlen, call.destfmt, dest, call.destlen);
  }
  if (reserved == 1) {
    store(dest + *call.destlen, Unit{0});
    *call.destlen += static_cast<CS_INT>(sizeof(Unit));
  }
  return CS_CVT_TRUNCATED;
}

struct ToCharacter {
  static constexpr bool serves(CS_INT datatype) { return is_character(datatype); }
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    return to_padded_text<CS_CHAR>(bytes, call);
  }
};

struct ToUnichar {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_UNICHAR_TYPE; }
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    return to_padded_text<CS_UNICHAR>(bytes, call);
  }
};

struct ToVarchar {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_VARCHAR_TYPE; }
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    std::array<CS_BYTE, CS_MAX_CHAR> text;
    const std::size_t length = write_hex<CS_CHAR>(bytes, text.data(), text.size());
    const std::string_view view(reinterpret_cast<const CS_CHAR*>(text.data()), length);
    const CS_RETCODE placed = place_varchar(view, call);
    return length < 2 * bytes.size() ? CS_CVT_TRUNCATED : placed;
  }
};

struct ToBinary {
  static constexpr bool serves(CS_INT datatype) { return is_binary(datatype); }
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    require(call.destfmt->maxlength >= 0);
    const auto length = static_cast<CS_INT>(bytes.size());
    *call.destlen = std::min(length, call.destfmt->maxlength);
    std::memmove(call.dest, bytes.data(), static_cast<std::size_t>(*call.destlen));
    if (length > call.destfmt->maxlength) return CS_CVT_TRUNCATED;
    return comn__padbin(length, call.destfmt, call.dest, call.destlen);
  }
};

struct ToVarbinary {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_VARBINARY_TYPE; }
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    const std::size_t kept = std::min<std::size_t>(bytes.size(), CS_MAX_CHAR);
    std::memmove(record_bytes(call.dest), bytes.data(), kept);
    store(call.dest, static_cast<CS_SMALLINT>(kept));
    *call.destlen = sizeof(CS_VARBINARY);
    return kept < bytes.size() ? CS_CVT_TRUNCATED : CS_SUCCEED;
  }
};

template <class Value>
bool is_valid(const Value&) {
  return true;
}

// Stored bytes of a value of type `Value` with datatype code `Code` (`Alias`: a second code of the
// same layout). Missing bytes are zero; surplus bytes that are not zero do not fit; a value outside
// its type's domain is not written.
template <class Value, CS_INT Code, CS_INT Alias = Code, bool (*Valid)(const Value&) = is_valid>
struct ToFixed {
  static constexpr bool serves(CS_INT datatype) { return datatype == Code || datatype == Alias; }
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    *call.destlen = 0;
    Value value{};
    const std::size_t kept = std::min(bytes.size(), sizeof value);
    if (kept > 0) std::memcpy(&value, bytes.data(), kept);
    if (!Valid(value)) return CS_CVT_DOMAIN;
    store(call.dest, value);
    *call.destlen = sizeof(Value);
    const auto surplus = bytes.subspan(kept);
    const bool fits = std::ranges::all_of(surplus, [](CS_BYTE byte) { return byte == 0; });
    return fits ? CS_SUCCEED : CS_CVT_OVERFLOW;
  }
};

inline bool is_valid_bit(const CS_BIT& bit) {
  return bit <= 1;
}

inline bool is_valid_numeric(const CS_NUMERIC& numeric) {
  if (!is_precision(numeric.precision) || !is_scale(numeric.scale)) return false;
  const constant value = record_of(numeric);
  return numeric.array[0] <= 1 && com__exctnume_checkprecision(&value) == 0;
}

template <class Source, class Target>
CS_RETCODE convert(const Conversion& call, Place place = Place::current()) {
  check_pointers(call, place);
  require(Source::serves(call.srcfmt->datatype) && Target::serves(call.destfmt->datatype), place);
  const auto bytes = Source::bytes(call);
  if (!bytes) {
    *call.destlen = 0;
    return trace(CS_CVT_DOMAIN, place);
  }
  return trace(Target::convert(*bytes, call), place);
}

#define COMNLIB_BINARY_MEMBER(routine, Source, ...)              \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {            \
    return comnlib::binary_family::convert<Source, __VA_ARGS__>( \
        {context, srcfmt, src, destfmt, dest, destlen});         \
  }

// The family of conversions from one binary source, under their public names.
#define COMNLIB_BINARY_FAMILY(source, Source)                                                      \
  COMNLIB_BINARY_MEMBER(comn_##source##tochar, Source, ToCharacter)                                \
  COMNLIB_BINARY_MEMBER(comn_##source##tobin, Source, ToBinary)                                    \
  COMNLIB_BINARY_MEMBER(comn_##source##toi1, Source, ToFixed<CS_TINYINT, CS_TINYINT_TYPE>)         \
  COMNLIB_BINARY_MEMBER(comn_##source##toi2, Source, ToFixed<CS_SMALLINT, CS_SMALLINT_TYPE>)       \
  COMNLIB_BINARY_MEMBER(comn_##source##toi4, Source, ToFixed<CS_INT, CS_INT_TYPE>)                 \
  COMNLIB_BINARY_MEMBER(comn_##source##toflt4, Source, ToFixed<CS_REAL, CS_REAL_TYPE>)             \
  COMNLIB_BINARY_MEMBER(comn_##source##toflt8, Source, ToFixed<CS_FLOAT, CS_FLOAT_TYPE>)           \
  COMNLIB_BINARY_MEMBER(comn_##source##tobit, Source,                                              \
                        ToFixed<CS_BIT, CS_BIT_TYPE, CS_BIT_TYPE, is_valid_bit>)                   \
  COMNLIB_BINARY_MEMBER(comn_##source##todatetime, Source, ToFixed<CS_DATETIME, CS_DATETIME_TYPE>) \
  COMNLIB_BINARY_MEMBER(comn_##source##todate4, Source, ToFixed<CS_DATETIME4, CS_DATETIME4_TYPE>)  \
  COMNLIB_BINARY_MEMBER(comn_##source##tomoney, Source, ToFixed<CS_MONEY, CS_MONEY_TYPE>)          \
  COMNLIB_BINARY_MEMBER(comn_##source##tomny4, Source, ToFixed<CS_MONEY4, CS_MONEY4_TYPE>)         \
  COMNLIB_BINARY_MEMBER(comn_##source##tonum, Source,                                              \
                        ToFixed<CS_NUMERIC, CS_NUMERIC_TYPE, CS_DECIMAL_TYPE, is_valid_numeric>)   \
  COMNLIB_BINARY_MEMBER(comn_##source##tovarchar, Source, ToVarchar)                               \
  COMNLIB_BINARY_MEMBER(comn_##source##tovarbin, Source, ToVarbinary)                              \
  COMNLIB_BINARY_MEMBER(comn_##source##tounichar, Source, ToUnichar)

}  // namespace comnlib::binary_family
