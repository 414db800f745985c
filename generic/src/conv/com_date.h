// The conversions whose source is a datetime, one body for both sizes, and the choice of the locale
// conventions that datetime text follows.
#pragma once

#include <array>

#include "comnlib/locale.h"
#include "conv/frame.h"
#include "time/datetext.h"
#include "time/datetime.h"

namespace comnlib {

// Conventions of the text that `format` describes: those of its locale, or else of the context's,
// or else US English.
const DateConventions& date_conventions(const CS_CONTEXT& context, const CS_DATAFMT& format);

// The character set that their texts are written in; null is the built-in default.
const CsCharDesc* date_charset(const CS_CONTEXT& context, const CS_DATAFMT& format);

// What tells the sizes apart. Statuses are those of com__dttodate4.
template <class Record>
struct DateSize;

template <>
struct DateSize<CS_DATETIME> {
  static constexpr CS_INT datatype = CS_DATETIME_TYPE;
  static CS_DATETIME widen(const CS_DATETIME& value) { return value; }
  static CS_INT narrow(const CS_DATETIME& value, CS_DATETIME& result) {
    result = value;
    return kDateDone;
  }
};

template <>
struct DateSize<CS_DATETIME4> {
  static constexpr CS_INT datatype = CS_DATETIME4_TYPE;
  static CS_DATETIME widen(const CS_DATETIME4& value) {
    CS_DATETIME result;
    com__date4todt(&value, &result);
    return result;
  }
  static CS_INT narrow(const CS_DATETIME& value, CS_DATETIME4& result) {
    return com__dttodate4(&value, &result);
  }
};

template <class From>
void open_date(const Conversion& call, Place place) {
  check_pointers(call, place);
  require(call.srcfmt->datatype == DateSize<From>::datatype, place);
}

template <class From, class To>
CS_RETCODE date_to_date(const Conversion& call, Place place = Place::current()) {
  open_date<From>(call, place);
  require(call.destfmt->datatype == DateSize<To>::datatype, place);
  const auto value = load<From>(call.src);
  *call.destlen = sizeof(To);
  if constexpr (std::is_same_v<From, To>) {
    store(call.dest, value);
    return CS_SUCCEED;
  } else {
    To result;
    if (DateSize<To>::narrow(DateSize<From>::widen(value), result) != kDateDone) {
      *call.destlen = 0;
      return CS_CVT_OVERFLOW;
    }
    store(call.dest, result);
    return CS_SUCCEED;
  }
}

struct DateTextBuffer {
  std::array<char, kDateTextRoom> characters;
  std::string_view text;
};

// CS_SUCCEED, CS_CVT_STYLE or CS_CVT_DOMAIN.
CS_RETCODE format_for(const CS_DATETIME& value, const Conversion& call, DateTextBuffer& buffer);

template <class From>
CS_RETCODE date_to_char(const Conversion& call, Place place = Place::current()) {
  open_date<From>(call, place);
  require(is_character(call.destfmt->datatype), place);
  DateTextBuffer buffer;
  const CS_RETCODE code = format_for(DateSize<From>::widen(load<From>(call.src)), call, buffer);
  if (code == CS_SUCCEED) return place_text(buffer.text, call);
  *call.destlen = 0;
  return code;
}

template <class From>
CS_RETCODE date_to_varchar(const Conversion& call, Place place = Place::current()) {
  open_date<From>(call, place);
  require(call.destfmt->datatype == CS_VARCHAR_TYPE, place);
  DateTextBuffer buffer;
  const CS_RETCODE code = format_for(DateSize<From>::widen(load<From>(call.src)), call, buffer);
  const CS_RETCODE placed = place_varchar(buffer.text, call);
  return code == CS_SUCCEED ? placed : code;
}

// Places formatted text, in UTF-16, in a Unicode-character destination.
CS_RETCODE place_date_unichar(std::string_view text, const Conversion& call);

template <class From>
CS_RETCODE date_to_unichar(const Conversion& call, Place place = Place::current()) {
  open_date<From>(call, place);
  require(call.destfmt->datatype == CS_UNICHAR_TYPE, place);
  DateTextBuffer buffer;
  const CS_RETCODE code = format_for(DateSize<From>::widen(load<From>(call.src)), call, buffer);
  if (code == CS_SUCCEED) return place_date_unichar(buffer.text, call);
  *call.destlen = 0;
  return code;
}

template <class From>
CS_RETCODE date_to_binary(const Conversion& call, Place place = Place::current()) {
  open_date<From>(call, place);
  require(is_binary(call.destfmt->datatype), place);
  return comn_fixedtobin(call.context, call.srcfmt, call.src, call.destfmt, call.dest, call.destlen,
                         sizeof(From));
}

template <class From>
CS_RETCODE date_to_varbinary(const Conversion& call, Place place = Place::current()) {
  open_date<From>(call, place);
  require(call.destfmt->datatype == CS_VARBINARY_TYPE, place);
  return comn_fixedtovarbin(call.context, call.srcfmt, call.src, call.destfmt, call.dest,
                            call.destlen, sizeof(From));
}

}  // namespace comnlib

#define COMNLIB_DATE_MEMBER(routine, body)                                       \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {                            \
    return comnlib::trace(body({context, srcfmt, src, destfmt, dest, destlen})); \
  }

#define COMNLIB_DATE_FAMILY(prefix, From)                                           \
  COMNLIB_DATE_MEMBER(prefix##todate, (comnlib::date_to_date<From, CS_DATETIME>))   \
  COMNLIB_DATE_MEMBER(prefix##todate4, (comnlib::date_to_date<From, CS_DATETIME4>)) \
  COMNLIB_DATE_MEMBER(prefix##tochar, comnlib::date_to_char<From>)                  \
  COMNLIB_DATE_MEMBER(prefix##tovarchar, comnlib::date_to_varchar<From>)            \
  COMNLIB_DATE_MEMBER(prefix##tobin, comnlib::date_to_binary<From>)                 \
  COMNLIB_DATE_MEMBER(prefix##tovarbin, comnlib::date_to_varbinary<From>)
