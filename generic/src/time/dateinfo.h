// Date and time conventions of a locale: all that the text module knows of a locale. The reader of
// the files fills the record; the texts stay in the reader's memory, which outlives it.
#pragma once

#include <array>
#include <string_view>

#include "comnlib/datetime.h"

namespace comnlib {

// Order of year, month and day in numeric dates and in formatted text.
enum class DateOrder : CS_BYTE {
  month_day_year,
  day_month_year,
  year_month_day,
  year_day_month,
  month_year_day,
  day_year_month
};

// Texts are bytes of the locale's character set, of which ASCII is a part. Case is ignored only in
// ASCII letters.
struct DateConventions {
  std::array<std::string_view, 12> months;        // January first
  std::array<std::string_view, 12> short_months;  // written, and accepted beside the full names
  std::array<std::string_view, 7> days;           // Sunday first
  std::string_view am;
  std::string_view pm;
  DateOrder order = DateOrder::month_day_year;
  CS_INT style = COM_DATESTYLE_DEFAULT;  // COM_DATESTYLE_; any other number cannot be formatted
};

constexpr bool is_date_style(CS_INT style) {
  return style == COM_DATESTYLE_DEFAULT || style == COM_DATESTYLE_LONG ||
         style == COM_DATESTYLE_ISO;
}

inline constexpr DateConventions kUsEnglish = [] {
  DateConventions us{
      .months = {"January", "February", "March", "April", "May", "June", "July", "August",
                 "September", "October", "November", "December"},
      .short_months = {},
      .days = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"},
      .am = "AM",
      .pm = "PM"};
  for (std::size_t month = 0; month < 12; ++month)
    us.short_months[month] = us.months[month].substr(0, 3);
  return us;
}();

}  // namespace comnlib
