// The public layer over the calendar: checks pointers and forwards.
#include <array>
#include <cstring>

#include "comnlib/datetime.h"
#include "comnlib/result.h"
#include "diag/diag.h"
#include "time/datetext.h"
#include "time/datetime.h"

using namespace comnlib;

namespace {

template <class T>
constexpr CS_INT order(T a, T b) {
  return (a > b) - (a < b);
}

// US English in each style.
constexpr auto kStyles = [] {
  std::array<DateConventions, COM_DATESTYLE_ISO + 1> styles;
  styles.fill(kUsEnglish);
  for (std::size_t style = 0; style < styles.size(); ++style)
    styles[style].style = static_cast<CS_INT>(style);
  return styles;
}();

}  // namespace

CS_RETCODE com_datecrack(const CS_DATETIME* dt, CS_DATEREC* rec) {
  check_pointer(dt);
  check_pointer(rec);
  com__datecrack(dt, rec);
  return trace(CS_SUCCEED);
}

CS_RETCODE com_timecrack(const CS_DATETIME* dt, CS_DATEREC* rec) {
  check_pointer(dt);
  check_pointer(rec);
  com__timecrack(dt, rec);
  return trace(CS_SUCCEED);
}

CS_INT com_datepart(CS_INT part, const CS_DATETIME* dt, CS_INT firstday) {
  check_pointer(dt);
  return com__datepart(part, dt, firstday);
}

CS_INT com_datename(CS_INT part, const CS_DATETIME* dt, CS_CHAR* text, const CS_CHAR* const* months,
                    const CS_CHAR* const* days) {
  check_pointer(dt);
  check_pointer(text);
  return com__datename(part, dt, text, months, days);
}

CS_INT com_datecmp(const CS_DATETIME* a, const CS_DATETIME* b) {
  check_pointer(a);
  check_pointer(b);
  return a->dtdays != b->dtdays ? order(a->dtdays, b->dtdays) : order(a->dttime, b->dttime);
}

CS_INT com_date4cmp(const CS_DATETIME4* a, const CS_DATETIME4* b) {
  check_pointer(a);
  check_pointer(b);
  return a->days != b->days ? order(a->days, b->days) : order(a->minutes, b->minutes);
}

CS_RETCODE com_datezero(CS_DATETIME* dt) {
  check_pointer(dt);
  *dt = {};
  return trace(CS_SUCCEED);
}

CS_RETCODE com_date4zero(CS_DATETIME4* dt4) {
  check_pointer(dt4);
  *dt4 = {};
  return trace(CS_SUCCEED);
}

CS_RETCODE com_setdatetime(CS_DATETIME* dt, CS_INT days, CS_INT ticks) {
  check_pointer(dt);
  *dt = {days, ticks};
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_datetime_text(const CS_DATETIME* value, CS_INT style, CS_CHAR* buffer, CS_INT room,
                              CS_INT* length) {
  check_pointer(value);
  check_pointer(buffer);
  check_pointer(length);
  require(room >= 0);
  *length = 0;
  if (!is_date_style(style)) return trace(CS_CVT_STYLE);
  char text[kDateTextRoom];
  const FormattedDate result =
      format_datetime(*value, kStyles[static_cast<std::size_t>(style)], text);
  if (result.status != DateText::done) return trace(CS_CVT_DOMAIN);
  const auto size = static_cast<CS_INT>(result.length);
  if (size > room) return trace(CS_CVT_OVERFLOW);
  std::memcpy(buffer, text, result.length);
  if (size < room) buffer[size] = '\0';
  *length = size;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_datetime_parse(const CS_CHAR* text, CS_INT length, CS_DATETIME* value) {
  check_pointer(text);
  check_pointer(value);
  require(length >= 0 || length == CS_NULLTERM);
  const std::string_view whole =
      length == CS_NULLTERM ? text : std::string_view(text, static_cast<std::size_t>(length));
  const ParsedDate result = parse_datetime(whole, kUsEnglish);
  *value = result.status == DateText::done ? result.value : CS_DATETIME{};
  if (result.status == DateText::done) return trace(CS_SUCCEED);
  return trace(result.status == DateText::out_of_range ? CS_CVT_OVERFLOW : CS_CVT_SYNTAX);
}
