// The conversions of text to every type, one template for character data (com_char), varchar
// (com_varc) and Unicode-character data (com_uchr).
//
// A Source tells which datatypes it serves, where a value's bytes lie and how they are encoded; a
// Target converts a text. Targets that read a number or a date go by the ASCII forms of characters,
// so that all three families share one body.
#pragma once

#include "chars/text.h"
#include "chars/utf.h"
#include "conv/chscan.h"
#include "conv/textcopy.h"

namespace comnlib::text_family {

// Source text as it is. Fails where a record's own length is impossible.
struct Source {
  CS_RETCODE code;
  Text text;
  Encoding encoding;
};

inline Source source_of(const Conversion& call, const CS_BYTE* bytes, std::size_t length) {
  const Encoding encoding = encoding_of(*call.context, *call.srcfmt);
  return {CS_SUCCEED, {{bytes, length}, attributes_of(encoding)}, encoding};
}

struct CharacterSource {
  static constexpr bool serves(CS_INT datatype) { return is_character(datatype); }
  static Source read(const Conversion& call) {
    require(call.srcfmt->maxlength >= 1);
    return source_of(call, static_cast<const CS_BYTE*>(call.src),
                     static_cast<std::size_t>(call.srcfmt->maxlength));
  }
};

struct VarcharSource {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_VARCHAR_TYPE; }
  static Source read(const Conversion& call) {
    const CS_SMALLINT length = record_length(call.src);
    if (length < 0 || length > CS_MAX_CHAR) return {CS_CVT_DOMAIN, {}, {}};
    return source_of(call, record_bytes(call.src), static_cast<std::size_t>(length));
  }
};

struct UnicharSource {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_UNICHAR_TYPE; }
  static Source read(const Conversion& call) {
    require(call.srcfmt->maxlength >= 0);
    const auto length = static_cast<std::size_t>(call.srcfmt->maxlength);
    return {CS_SUCCEED, {{static_cast<const CS_BYTE*>(call.src), length}, nullptr, true}, kUtf16};
  }
};

// Text from which a number, a date or hexadecimal digits are read.
struct Literal {
  const Text& text;
  const Conversion& call;
};

CS_RETCODE syntax_error(const Conversion& call);

template <class Value, CS_INT Code>
struct ToInteger {
  static constexpr bool serves(CS_INT datatype) { return datatype == Code; }
  static CS_RETCODE convert(const Literal& literal) {
    Value value{};
    const ScanStatus status = scan_integer(literal.text, value);
    if (status == kNoInteger) return syntax_error(literal.call);
    *literal.call.destlen = sizeof(Value);
    store(literal.call.dest, value);
    return status == kOutOfRange ? CS_CVT_OVERFLOW : CS_SUCCEED;
  }
};

// The other targets of a literal; each knows its datatype and converts as convert.h says.
#define COMNLIB_LITERAL_TARGET(Target, condition)                       \
  struct Target {                                                       \
    static constexpr bool serves(CS_INT datatype) { return condition; } \
    static CS_RETCODE convert(const Literal& literal);                  \
  }
COMNLIB_LITERAL_TARGET(ToBit, datatype == CS_BIT_TYPE);
COMNLIB_LITERAL_TARGET(ToReal, datatype == CS_REAL_TYPE);
COMNLIB_LITERAL_TARGET(ToFloat, datatype == CS_FLOAT_TYPE);
COMNLIB_LITERAL_TARGET(ToNumeric, is_numeric(datatype));
COMNLIB_LITERAL_TARGET(ToMoney, datatype == CS_MONEY_TYPE);
COMNLIB_LITERAL_TARGET(ToMoney4, datatype == CS_MONEY4_TYPE);
COMNLIB_LITERAL_TARGET(ToDatetime, datatype == CS_DATETIME_TYPE);
COMNLIB_LITERAL_TARGET(ToDatetime4, datatype == CS_DATETIME4_TYPE);
COMNLIB_LITERAL_TARGET(ToBinary, is_binary(datatype));
COMNLIB_LITERAL_TARGET(ToVarbinary, datatype == CS_VARBINARY_TYPE);
#undef COMNLIB_LITERAL_TARGET

// Targets that copy the text.
struct ToCharacter {
  static constexpr bool serves(CS_INT datatype) { return is_character(datatype); }
  static constexpr auto convert = copy_to_character;
};
struct ToVarchar {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_VARCHAR_TYPE; }
  static constexpr auto convert = copy_to_varchar;
};
struct ToUnichar {
  static constexpr bool serves(CS_INT datatype) { return datatype == CS_UNICHAR_TYPE; }
  static constexpr auto convert = copy_to_unichar;
};

template <class From, class Target>
CS_RETCODE convert(const Conversion& call, Place place = Place::current()) {
  check_pointers(call, place);
  require(From::serves(call.srcfmt->datatype) && Target::serves(call.destfmt->datatype), place);
  const Source source = From::read(call);
  if (source.code != CS_SUCCEED) {
    *call.destlen = 0;
    return trace(source.code, place);
  }
  if constexpr (requires { Target::convert(source.text.bytes, source.encoding, call); }) {
    return trace(Target::convert(source.text.bytes, source.encoding, call), place);
  } else {
    if (source.text.utf16 && !is_utf16(source.text.bytes)) {
      *call.destlen = 0;
      return trace(CS_CVT_BADXLATE, place);
    }
    return trace(Target::convert({source.text, call}), place);
  }
}

}  // namespace comnlib::text_family

#define COMNLIB_TEXT_MEMBER(routine, From, ...)              \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {        \
    return comnlib::text_family::convert<From, __VA_ARGS__>( \
        {context, srcfmt, src, destfmt, dest, destlen});     \
  }

// The family of conversions from one text source, under their public names; the members into
// CS_LONG and those of single datatypes stand beside it.
#define COMNLIB_TEXT_FAMILY(source, From)                                                  \
  COMNLIB_TEXT_MEMBER(comn_##source##tochar, From, ToCharacter)                            \
  COMNLIB_TEXT_MEMBER(comn_##source##tobin, From, ToBinary)                                \
  COMNLIB_TEXT_MEMBER(comn_##source##toi1, From, ToInteger<CS_TINYINT, CS_TINYINT_TYPE>)   \
  COMNLIB_TEXT_MEMBER(comn_##source##toi2, From, ToInteger<CS_SMALLINT, CS_SMALLINT_TYPE>) \
  COMNLIB_TEXT_MEMBER(comn_##source##toi4, From, ToInteger<CS_INT, CS_INT_TYPE>)           \
  COMNLIB_TEXT_MEMBER(comn_##source##toflt4, From, ToReal)                                 \
  COMNLIB_TEXT_MEMBER(comn_##source##toflt8, From, ToFloat)                                \
  COMNLIB_TEXT_MEMBER(comn_##source##tobit, From, ToBit)                                   \
  COMNLIB_TEXT_MEMBER(comn_##source##todatetime, From, ToDatetime)                         \
  COMNLIB_TEXT_MEMBER(comn_##source##todate4, From, ToDatetime4)                           \
  COMNLIB_TEXT_MEMBER(comn_##source##tomoney, From, ToMoney)                               \
  COMNLIB_TEXT_MEMBER(comn_##source##tomny4, From, ToMoney4)                               \
  COMNLIB_TEXT_MEMBER(comn_##source##tonum, From, ToNumeric)                               \
  COMNLIB_TEXT_MEMBER(comn_##source##tovarchar, From, ToVarchar)                           \
  COMNLIB_TEXT_MEMBER(comn_##source##tovarbin, From, ToVarbinary)                          \
  COMNLIB_TEXT_MEMBER(comn_##source##tounichar, From, ToUnichar)
