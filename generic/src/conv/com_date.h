// The targets of both sizes of datetime, and the choice of the locale conventions that datetime
// text follows.
#pragma once

#include <array>

#include "conv/placement.h"
#include "conv/textcopy.h"
#include "conv/to_binary.h"
#include "intl/locdata.h"
#include "time/datetext.h"
#include "time/datetime.h"

namespace comnlib {

// Conventions of the text that `format` describes: those of its locale, or else of the context's,
// or else US English. CS_CVT_STYLE or CS_MEM_ERROR when the locale's cannot be read.
struct DateStyle {
  CS_RETCODE code;
  const DateConventions& conventions;
};
DateStyle read_date_style(CS_CONTEXT& context, CsLocCache& time);

inline CsLocCache* time_entry(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CS_LOCALE* locale = locale_of(context, format);
  return locale == nullptr ? nullptr : locale->timeptr;
}

inline DateStyle date_style(CS_CONTEXT& context, const CS_DATAFMT& format) {
  CsLocCache* const time = time_entry(context, format);
  if (time == nullptr) return {CS_SUCCEED, kUsEnglish};
  if (const CsDateInfo* info = known_date_conventions(*time))
    return {CS_SUCCEED, info->conventions};
  return read_date_style(context, *time);
}

// Conventions that are looked for with the first value that needs them, and kept once found.
class KeptDateStyle {
 public:
  explicit KeptDateStyle(const Conversion&) {}

  DateStyle get(CS_CONTEXT& context, const CS_DATAFMT& format) {
    if (found_ != nullptr) return {CS_SUCCEED, *found_};
    const DateStyle style = date_style(context, format);
    if (style.code == CS_SUCCEED) found_ = &style.conventions;
    return style;
  }

 private:
  const DateConventions* found_ = nullptr;
};

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

inline CS_RETCODE code_of(const FormattedDate& date) {
  if (date.status == DateText::done) [[likely]]
    return CS_SUCCEED;
  return date.status == DateText::domain ? CS_CVT_DOMAIN : CS_CVT_STYLE;
}

// CS_SUCCEED, CS_CVT_STYLE, CS_CVT_DOMAIN or CS_MEM_ERROR.
[[gnu::always_inline]] inline CS_RETCODE format_for(const CS_DATETIME& value,
                                                    const Conversion& call, KeptDateStyle& kept,
                                                    DateTextBuffer& buffer) {
  const DateStyle style = kept.get(*call.context, *call.destfmt);
  if (style.code != CS_SUCCEED) return style.code;
  const FormattedDate result = format_datetime(value, style.conventions, buffer.characters);
  buffer.text = {buffer.characters.data(), result.length};
  return code_of(result);
}

struct DateToCharacter : Character {
  struct Setup : CharacterSetup {
    [[gnu::always_inline]] explicit Setup(const Conversion& call)
        : CharacterSetup(call), style(call) {}
    KeptDateStyle style;
  };
  [[gnu::always_inline]] static CS_RETCODE convert(const auto& value, const Conversion& call,
                                                   Setup& setup) {
    DateTextBuffer buffer;
    const CS_RETCODE code = format_for(widened(value), call, setup.style, buffer);
    return code == CS_SUCCEED ? place<false>(buffer.text, call, setup.room) : code;
  }
};

struct DateToVarchar : Varchar {
  using Setup = KeptDateStyle;
  static CS_RETCODE convert(const auto& value, const Conversion& call, Setup& setup) {
    DateTextBuffer buffer;
    const CS_RETCODE code = format_for(widened(value), call, setup, buffer);
    const CS_RETCODE placed = place_varchar(buffer.text, call.dest, call.destlen);
    return code == CS_SUCCEED ? placed : code;
  }
};

// Translates the text from the character set of the month names.
CS_RETCODE place_wide_date(std::string_view text, const Conversion& call);

struct DateToUnichar : Unichar {
  using Setup = KeptDateStyle;
  static CS_RETCODE convert(const auto& value, const Conversion& call, Setup& setup) {
    DateTextBuffer buffer;
    const CS_RETCODE code = format_for(widened(value), call, setup, buffer);
    return code == CS_SUCCEED ? place_wide_date(buffer.text, call) : code;
  }
};

}  // namespace comnlib
