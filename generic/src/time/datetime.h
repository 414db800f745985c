// The calendar and the clock: cracking, making, parts, names, both sizes, addition and difference.
// Internal to the library, with C linkage so that each routine can be called and tested alone. All
// are reentrant and defined for every dtdays and dttime; pointers are not checked here.
#pragma once

#include <cstdint>

#include "comnlib/datetime.h"

namespace comnlib {

inline constexpr CS_INT kFirstYear = 1753;
inline constexpr CS_INT kLastYear = 9999;

inline constexpr CS_INT kTicksPerSecond = 300;
inline constexpr CS_INT kTicksPerMinute = 60 * kTicksPerSecond;
inline constexpr CS_INT kTicksPerHour = 60 * kTicksPerMinute;
inline constexpr CS_INT kTicksPerDay = 24 * kTicksPerHour;
static_assert(kTicksPerDay == COM_DTTIME_MAX + 1);

// Ticks of 0 to 999 milliseconds, rounded half up (negative ones half down). 999 is rounded down,
// so that a time never reaches the next second.
constexpr std::int64_t ticks_of_milliseconds(std::int64_t ms) {
  if (ms == 999) return 299;
  return (ms * 3 + (ms < 0 ? -5 : 5)) / 10;
}

// Statuses of adding, narrowing and differences.
enum DateStatus : CS_INT { kDateDone = 0, kDateFailed = 1 };

// Statuses of making a date or a time: the first field out of range.
enum FieldStatus : CS_INT {
  kFieldsDone = 0,
  kBadYear = 1,
  kBadMonth = 2,
  kBadDay = 3,
  kBadHour = 4,
  kBadMinute = 5,
  kBadSecond = 6,
  kBadMillisecond = 7,
};

// A year divisible by 25 is a leap year only if 16 divides it too; any other year if 4 does.
// Branch-free, since the outcome is too irregular to be predicted.
constexpr bool is_leap(CS_UINT year) {
  return (year & (year % 25 == 0 ? 15U : 3U)) == 0;
}

// Leap years among the n years from 1753 on, n not negative.
constexpr CS_UINT leap_count(CS_UINT n) {
  const CS_UINT centuries = (n + 52) / 100;
  return n / 4 - centuries + (centuries + 1) / 4;
}

// Leap years up to and including `year`, from the year 1 on.
constexpr CS_UINT leaps_through(CS_UINT year) {
  return year / 4 - year / 100 + year / 400;
}

// The day number of a date by the rules of com__datemake: kFieldsDone with dtdays set, or the
// status.
FieldStatus make_days(CS_INT year, CS_INT month, CS_INT day, CS_INT& dtdays);

}  // namespace comnlib

extern "C" {

// By month from 0 (January): days in the month, days of the year before it.
extern const CS_SMALLINT monthdays[12][2];
extern const CS_SMALLINT lmonthdays[12][2];

// By weekday of 1 January (0 Sunday): what leads from it to the Monday of ISO week 1.
extern const CS_INT week_one_offset[7];

// 1 when year 1753 + n is a leap year.
CS_INT leapyear(CS_INT n);

// Leap years among the n years from 1753 on; 0 for negative n.
CS_INT com__leapcnt(CS_INT n);

// As their public forwarders.
CS_VOID com__datecrack(const CS_DATETIME* dt, CS_DATEREC* rec);
CS_VOID com__timecrack(const CS_DATETIME* dt, CS_DATEREC* rec);
CS_INT com__datepart(CS_INT part, const CS_DATETIME* dt, CS_INT firstday);
CS_INT com__datename(CS_INT part, const CS_DATETIME* dt, CS_CHAR* text,
                     const CS_CHAR* const* months, const CS_CHAR* const* days);

// Sets dt->dtdays from year, month and day of the month: 0, or kBadYear (dtdays becomes 0),
// kBadMonth or kBadDay (dtdays stays).
CS_INT com__datemake(CS_DATETIME* dt, const CS_DATEREC* rec);

// Sets dt->dttime from hour, minute, second and millisecond: 0, or kBadHour..kBadMillisecond
// (dttime stays). Only upper limits are checked: callers make times before midnight from negative
// fields.
CS_INT com__timemake(CS_DATETIME* dt, const CS_DATEREC* rec);

// a - b in days, or in ticks when the days are equal; held at the limits of CS_INT.
CS_INT com__datecmp(const CS_DATETIME* a, const CS_DATETIME* b);

// Narrows with rounding to the minute: kDateDone, or kDateFailed with *dst left alone.
CS_INT com__dttodate4(const CS_DATETIME* src, CS_DATETIME4* dst);
// Widens; always kDateDone.
CS_INT com__date4todt(const CS_DATETIME4* src, CS_DATETIME* dst);

// Nonzero when the value, of either size as format->datatype says, is a valid datetime. Another
// datatype stops the process.
CS_INT com__valid_datetime(const CS_DATAFMT* format, const CS_VOID* value);

// Adds `amount` parts in place. Years, quarters and months keep the day, cut to the target month's
// last; the parts of the time carry into the days; milliseconds count whole seconds and the rest by
// ticks_of_milliseconds. kDateDone, or kDateFailed with *dt left alone when the date, or for a part
// of the time also the time, is not valid before or after. A code that is not a part stops the
// process.
CS_INT com__date_add(CS_INT part, CS_INT amount, CS_DATETIME* dt);

// com__date_add of an 8-byte source into a destination of either size, which is left alone on
// failure. A source or destination of another datatype is a failure.
CS_INT com__dateadd_both(CS_INT part, CS_INT amount, const CS_DATAFMT* srcfmt,
                         const CS_VOID* source, const CS_DATAFMT* destfmt, CS_VOID* destination);

// The signed number of boundaries of the part that lie between two values; weeks begin on Sunday.
// kDateDone, or kDateFailed with *diff left alone when a value is not valid, as for com__date_add,
// or the number does not fit. A code that is not a part stops the process.
CS_INT com__datediff(CS_INT part, const CS_DATETIME* from, const CS_DATETIME* to, CS_INT* diff);
}

inline comnlib::FieldStatus comnlib::make_days(CS_INT year, CS_INT month, CS_INT day,
                                               CS_INT& dtdays) {
  if (year < kFirstYear || year > kLastYear) return kBadYear;
  if (month < 0 || month > 11) return kBadMonth;
  if (day < 1) return kBadDay;
  if (day > monthdays[month][0]) [[unlikely]] {
    const bool leap_day = month == 1 && day == 29 && is_leap(static_cast<CS_UINT>(year));
    if (!leap_day) return kBadDay;
  }
  // The leap day of the year itself counts from March on. Day 0 is 1 January 1900.
  constexpr CS_INT kDayZero = 365 * 1900 + leaps_through(1899) + 1;
  const CS_UINT leaps = leaps_through(static_cast<CS_UINT>(year - (month < 2 ? 1 : 0)));
  dtdays = 365 * year + static_cast<CS_INT>(leaps) + monthdays[month][1] + day - kDayZero;
  return kFieldsDone;
}
