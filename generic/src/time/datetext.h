// Datetime values as text: pure cores that know no context, no format and no character set tables.
// docs/datetime.md shows the accepted and the written forms.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "time/dateinfo.h"

namespace comnlib {

enum class DateText {
  done,
  syntax,        // the text is not in any of the accepted forms
  out_of_range,  // it has, but names a date or time that does not exist or leaves the range
  domain,        // the value is not a valid datetime
  style          // the style is unknown, a name it needs is empty, or the text exceeds the room
};

struct ParsedDate {
  DateText status;  // done, syntax or out_of_range
  CS_DATETIME value;
};

// Reads the whole text; blanks may surround it. The value of a status other than done is zero.
ParsedDate parse_datetime(std::string_view text, const DateConventions& conventions);

struct FormattedDate {
  DateText status;     // done, domain or style
  std::size_t length;  // characters written; 0 unless done
};

// Writes the value in the style of the conventions. No NUL is added; nothing is written unless all
// of the text fits. kDateTextRoom is enough for every style with names of ordinary length.
FormattedDate format_datetime(const CS_DATETIME& value, const DateConventions& conventions,
                              std::span<char> room);

inline constexpr std::size_t kDateTextRoom = 256;

}  // namespace comnlib
