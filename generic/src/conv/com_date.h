// The targets of both sizes of datetime, and the choice of the locale conventions that datetime
// text follows.
#pragma once

#include <array>

#include "conv/placement.h"
#include "conv/textcopy.h"
#include "conv/to_binary.h"
#include "time/datetext.h"
#include "time/datetime.h"

namespace comnlib {

// Conventions of the text that `format` describes: those of its locale, or else of the context's,
// or else US English. CS_CVT_STYLE or CS_MEM_ERROR when the locale's cannot be read.
struct DateStyle {
  CS_RETCODE code;
  const DateConventions& conventions;
};
DateStyle date_style(CS_CONTEXT& context, const CS_DATAFMT& format);

// The encoding of their month names: another category of the locale may name another character set.
Encoding date_encoding(const CS_CONTEXT& context, const CS_DATAFMT& format);

inline CS_DATETIME widened(const CS_DATETIME& value) {
  return value;
}
inline CS_DATETIME widened(const CS_DATETIME4& value) {
  CS_DATETIME result;
  com__date4todt(&value, &result);
  return result;
}

struct DateToDatetime : Datetime {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    return store_result(call, widened(value));
  }
};

struct DateToDatetime4 : Datetime4 {
  static constexpr CS_INT kLength = 0;
  static CS_RETCODE convert(const CS_DATETIME4& value, const Conversion& call) {
    return store_result(call, value);
  }
  static CS_RETCODE convert(const CS_DATETIME& value, const Conversion& call) {
    CS_DATETIME4 small;
    if (com__dttodate4(&value, &small) != kDateDone) return CS_CVT_OVERFLOW;
    return store_result(call, small);
  }
};

struct DateTextBuffer {
  std::array<char, kDateTextRoom> characters;
  std::string_view text;
};

// CS_SUCCEED, CS_CVT_STYLE or CS_CVT_DOMAIN.
CS_RETCODE format_for(const CS_DATETIME& value, const Conversion& call, DateTextBuffer& buffer);

struct DateToCharacter : Character {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    DateTextBuffer buffer;
    const CS_RETCODE code = format_for(widened(value), call, buffer);
    return code == CS_SUCCEED ? place_text(buffer.text, call) : code;
  }
};

struct DateToVarchar : Varchar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    DateTextBuffer buffer;
    const CS_RETCODE code = format_for(widened(value), call, buffer);
    const CS_RETCODE placed = place_varchar(buffer.text, call);
    return code == CS_SUCCEED ? placed : code;
  }
};

// Translates the text from the character set of the month names.
CS_RETCODE place_wide_date(std::string_view text, const Conversion& call);

struct DateToUnichar : Unichar {
  static CS_RETCODE convert(const auto& value, const Conversion& call) {
    DateTextBuffer buffer;
    const CS_RETCODE code = format_for(widened(value), call, buffer);
    return code == CS_SUCCEED ? place_wide_date(buffer.text, call) : code;
  }
};

}  // namespace comnlib
