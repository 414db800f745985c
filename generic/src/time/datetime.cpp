// The calendar and the clock. Here years are counted from 1753 (n = 0) and days of the year from 0.
// Only locate() knows that years before 1753 have 365 days each.
#include "time/datetime.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "diag/diag.h"

namespace comnlib {
namespace {

constexpr CS_INT month_length(CS_INT month, bool leap) {
  if (month == 1) return leap ? 29 : 28;
  return (month + month / 7) % 2 == 0 ? 31 : 30;
}

constexpr CS_SMALLINT days_in(CS_INT month, bool leap) {
  return static_cast<CS_SMALLINT>(month_length(month, leap));
}

constexpr CS_SMALLINT days_before(CS_INT month, bool leap) {
  CS_INT days = 0;
  for (CS_INT m = 0; m < month; ++m) days += month_length(m, leap);
  return static_cast<CS_SMALLINT>(days);
}

// ISO week 1 is the week, Monday to Sunday, that holds the year's first Thursday.
constexpr CS_INT to_week_one(CS_INT weekday) {
  return weekday <= 4 ? 1 - weekday : 8 - weekday;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

#define COMNLIB_MONTH(m, leap) \
  { days_in(m, leap), days_before(m, leap) }
#define COMNLIB_MONTHS(leap)                                                                      \
  COMNLIB_MONTH(0, leap), COMNLIB_MONTH(1, leap), COMNLIB_MONTH(2, leap), COMNLIB_MONTH(3, leap), \
      COMNLIB_MONTH(4, leap), COMNLIB_MONTH(5, leap), COMNLIB_MONTH(6, leap),                     \
      COMNLIB_MONTH(7, leap), COMNLIB_MONTH(8, leap), COMNLIB_MONTH(9, leap),                     \
      COMNLIB_MONTH(10, leap), COMNLIB_MONTH(11, leap)
constinit const CS_SMALLINT monthdays[12][2] = {COMNLIB_MONTHS(false)};
constinit const CS_SMALLINT lmonthdays[12][2] = {COMNLIB_MONTHS(true)};
#undef COMNLIB_MONTHS
#undef COMNLIB_MONTH

constinit const CS_INT week_one_offset[7] = {to_week_one(0), to_week_one(1), to_week_one(2),
                                             to_week_one(3), to_week_one(4), to_week_one(5),
                                             to_week_one(6)};

namespace comnlib {
namespace {

constexpr CS_INT kDaysPer400Years = 146097;
constexpr CS_INT kDaysPer4Years = 1461;
// The Gregorian cycle of 400 years that 1753 lies in begins on 1 January 1601.
constexpr CS_INT kYearsInCycle = kFirstYear - 1601;
constexpr CS_INT kDaysInCycle =
    kYearsInCycle * 365 + kYearsInCycle / 4 - 1;  // 1700 had no leap day
// Day 0 of the week count: the Sunday before 1 January 1753.
constexpr CS_INT kSundayZero = COM_DTDAYS_MIN - 1;

struct YearDay {
  CS_INT n;    // year 1753 + n
  CS_INT day;  // of the year, from 0
};

// The largest n whose first day is not after `dtdays`.
YearDay locate(CS_INT dtdays) {
  if (dtdays < COM_DTDAYS_MIN) [[unlikely]] {
    const CS_INT days = dtdays - COM_DTDAYS_MIN;
    const CS_INT n = -((364 - days) / 365);
    return {n, days - 365 * n};
  }
  // Every dtdays fits, and so does four times what is left after the whole cycles.
  auto days = static_cast<CS_UINT>(dtdays) - COM_DTDAYS_MIN + kDaysInCycle;
  CS_UINT cycles = 0;
  if (dtdays > COM_DTDAYS_MAX) [[unlikely]] {
    cycles = days / kDaysPer400Years;
    days %= kDaysPer400Years;
  }
  // Centuries of 36524.25 days, then years of 365.25 days. This is exact, since the long ones end
  // each cycle.
  const CS_UINT quarters = 4 * days + 3;
  const CS_UINT century = quarters / kDaysPer400Years;
  const CS_UINT rest = quarters % kDaysPer400Years | 3U;
  const CS_UINT year = 400 * cycles + 100 * century + rest / kDaysPer4Years;
  return {static_cast<CS_INT>(year) - kYearsInCycle,
          static_cast<CS_INT>(rest % kDaysPer4Years / 4)};
}

// 0 (Sunday) to 6, for days before 1753 too.
CS_INT weekday(std::int64_t dtdays) {
  const std::int64_t day = (dtdays - kSundayZero) % 7;
  return static_cast<CS_INT>(day < 0 ? day + 7 : day);
}

// dtdays of 1 January of year 1753 + n.
std::int64_t first_of_year(CS_INT n) {
  return std::int64_t{n} * 365 + com__leapcnt(n) + COM_DTDAYS_MIN;
}

// dtdays of the Monday of ISO week 1.
std::int64_t week_one(CS_INT n) {
  const std::int64_t first = first_of_year(n);
  return first + week_one_offset[weekday(first)];
}

struct IsoWeek {
  CS_INT year;
  CS_INT week;
};

// Uses years only, so that the last days of the range need no date beyond it.
IsoWeek iso_week(CS_INT dtdays) {
  CS_INT n = locate(dtdays).n;
  if (dtdays < week_one(n)) {
    --n;
  } else if (dtdays >= week_one(n + 1)) {
    ++n;
  }
  return {kFirstYear + n, static_cast<CS_INT>((dtdays - week_one(n)) / 7 + 1)};
}

CS_DATEREC crack(const CS_DATETIME& dt) {
  CS_DATEREC rec{};
  com__datecrack(&dt, &rec);
  com__timecrack(&dt, &rec);
  return rec;
}

bool date_in_range(std::int64_t dtdays) {
  return dtdays >= COM_DTDAYS_MIN && dtdays <= COM_DTDAYS_MAX;
}

bool time_in_range(CS_INT dttime) {
  return dttime >= 0 && dttime <= COM_DTTIME_MAX;
}

// What one unit of a part amounts to in additions and differences.
struct Step {
  enum Unit : CS_BYTE { months, days, ticks, milliseconds } unit;
  CS_INT size;
};

constexpr auto kSteps = [] {
  std::array<Step, COM_PART_ISOWEEKDAY + 1> steps{};
  for (const int part : {COM_PART_YEAR, COM_PART_ISOYEAR}) steps[part] = {Step::months, 12};
  steps[COM_PART_QUARTER] = {Step::months, 3};
  steps[COM_PART_MONTH] = {Step::months, 1};
  for (const int part : {COM_PART_DAY, COM_PART_WEEKDAY, COM_PART_DAYOFYEAR, COM_PART_ISOWEEKDAY})
    steps[part] = {Step::days, 1};
  for (const int part : {COM_PART_WEEK, COM_PART_ISOWEEK}) steps[part] = {Step::days, 7};
  steps[COM_PART_HOUR] = {Step::ticks, kTicksPerHour};
  steps[COM_PART_MINUTE] = {Step::ticks, kTicksPerMinute};
  steps[COM_PART_SECOND] = {Step::ticks, kTicksPerSecond};
  steps[COM_PART_MILLISECOND] = {Step::milliseconds, 1};
  return steps;
}();

constexpr bool is_part(CS_INT part) {
  return part >= 0 && part <= COM_PART_ISOWEEKDAY;
}

const Step& step_of(CS_INT part) {
  require(is_part(part));
  return kSteps[static_cast<std::size_t>(part)];
}

constexpr bool counts_time(const Step& step) {
  return step.unit == Step::ticks || step.unit == Step::milliseconds;
}

bool valid_for(const Step& step, const CS_DATETIME& dt) {
  return date_in_range(dt.dtdays) && (!counts_time(step) || time_in_range(dt.dttime));
}

CS_INT add_months(std::int64_t months, CS_DATETIME& dt) {
  CS_DATEREC rec{};
  com__datecrack(&dt, &rec);
  const std::int64_t target = std::int64_t{rec.dateyear} * 12 + rec.datemonth + months;
  if (target < kFirstYear * 12 || target >= (kLastYear + 1) * 12) return kDateFailed;
  rec.dateyear = static_cast<CS_INT>(target / 12);
  rec.datemonth = static_cast<CS_INT>(target % 12);
  const bool leap = is_leap(static_cast<CS_UINT>(rec.dateyear));
  rec.datedmonth = std::min(rec.datedmonth, month_length(rec.datemonth, leap));
  require(com__datemake(&dt, &rec) == kFieldsDone);
  return kDateDone;
}

CS_INT add_days(std::int64_t days, CS_DATETIME& dt) {
  const std::int64_t sum = dt.dtdays + days;
  if (!date_in_range(sum)) return kDateFailed;
  dt.dtdays = static_cast<CS_INT>(sum);
  return kDateDone;
}

CS_INT add_ticks(std::int64_t ticks, CS_DATETIME& dt) {
  const std::int64_t sum = dt.dttime + ticks;
  std::int64_t days = sum / kTicksPerDay;
  if (sum % kTicksPerDay < 0) --days;
  if (add_days(days, dt) != kDateDone) return kDateFailed;
  dt.dttime = static_cast<CS_INT>(sum - days * kTicksPerDay);
  return kDateDone;
}

// How many boundaries of the part lie between a fixed origin and a valid datetime.
std::int64_t position(const Step& step, const CS_DATETIME& dt) {
  if (step.unit == Step::months) {
    CS_DATEREC rec{};
    com__datecrack(&dt, &rec);
    return (rec.dateyear * 12 + rec.datemonth) / step.size;
  }
  const std::int64_t days = std::int64_t{dt.dtdays} - kSundayZero;
  if (step.unit == Step::days) return days / step.size;
  const std::int64_t ticks = days * kTicksPerDay + dt.dttime;
  return step.unit == Step::ticks ? ticks / step.size : ticks * 10 / 3;
}

CS_INT copy_name(const CS_CHAR* const* names, CS_INT index, CS_CHAR* text) {
  if (names == nullptr || names[index] == nullptr) return 0;
  const std::size_t length = strnlen(names[index], COM_DATENAME_SIZE);
  std::memcpy(text, names[index], length);
  if (length < COM_DATENAME_SIZE) text[length] = '\0';
  return static_cast<CS_INT>(length);
}

CS_INT number_text(CS_INT number, CS_CHAR* text) {
  char* const end = std::to_chars(text, text + COM_DATENAME_SIZE - 1, number).ptr;
  *end = '\0';
  return static_cast<CS_INT>(end - text);
}

}  // namespace
}  // namespace comnlib

CS_INT leapyear(CS_INT n) {
  // 1753 + n may not fit, but the calendar repeats every 400 years.
  return is_leap(static_cast<CS_UINT>(n % 400 + kFirstYear)) ? 1 : 0;
}

CS_INT com__leapcnt(CS_INT n) {
  return n < 0 ? 0 : static_cast<CS_INT>(leap_count(static_cast<CS_UINT>(n)));
}

CS_VOID com__datecrack(const CS_DATETIME* dt, CS_DATEREC* rec) {
  const CS_INT dtdays = dt->dtdays;
  const auto [n, day] = locate(dtdays);
  const bool leap = n < 0 ? leapyear(n) != 0 : is_leap(static_cast<CS_UINT>(kFirstYear + n));
  const auto& months = leap ? lmonthdays : monthdays;
  // Counting in months of 32 days falls behind by less than one month in a year.
  CS_INT month = day / 32;
  if (month < 11 && day >= months[month + 1][1]) ++month;
  rec->dateyear = kFirstYear + n;
  rec->datemonth = month;
  rec->datedmonth = day - months[month][1] + 1;
  rec->datedyear = day + 1;
  rec->datedweek = dtdays >= kSundayZero
                       ? static_cast<CS_INT>((static_cast<CS_UINT>(dtdays) - kSundayZero) % 7)
                       : weekday(dtdays);
}

CS_VOID com__timecrack(const CS_DATETIME* dt, CS_DATEREC* rec) {
  const CS_UINT ticks = static_cast<CS_UINT>(dt->dttime) & 0x1FFFFFF;
  rec->datehour = static_cast<CS_INT>(ticks / kTicksPerHour);
  rec->dateminute = static_cast<CS_INT>(ticks / kTicksPerMinute % 60);
  rec->datesecond = static_cast<CS_INT>(ticks / kTicksPerSecond % 60);
  rec->datemsecond = static_cast<CS_INT>(ticks % kTicksPerSecond * 10 / 3);
}

CS_INT com__datemake(CS_DATETIME* dt, const CS_DATEREC* rec) {
  const FieldStatus status = make_days(rec->dateyear, rec->datemonth, rec->datedmonth, dt->dtdays);
  if (status == kBadYear) dt->dtdays = 0;
  return status;
}

CS_INT com__timemake(CS_DATETIME* dt, const CS_DATEREC* rec) {
  if (rec->datehour > 23) return kBadHour;
  if (rec->dateminute > 59) return kBadMinute;
  if (rec->datesecond > 59) return kBadSecond;
  if (rec->datemsecond > 999) return kBadMillisecond;
  const std::int64_t ticks = std::int64_t{rec->datehour} * kTicksPerHour +
                             std::int64_t{rec->dateminute} * kTicksPerMinute +
                             std::int64_t{rec->datesecond} * kTicksPerSecond +
                             ticks_of_milliseconds(rec->datemsecond);
  dt->dttime = static_cast<CS_INT>(ticks);
  return kFieldsDone;
}

CS_INT com__datepart(CS_INT part, const CS_DATETIME* dt, CS_INT firstday) {
  const CS_DATEREC rec = crack(*dt);
  switch (part) {
    case COM_PART_YEAR:
      return rec.dateyear;
    case COM_PART_QUARTER:
      return rec.datemonth / 3 + 1;
    case COM_PART_MONTH:
      return rec.datemonth + 1;
    case COM_PART_WEEKDAY: {
      const std::int64_t day = std::int64_t{rec.datedweek} + 1 - firstday;
      return static_cast<CS_INT>(day < 1 ? day + 7 : day);
    }
    case COM_PART_DAY:
      return rec.datedmonth;
    case COM_PART_DAYOFYEAR:
      return rec.datedyear;
    case COM_PART_HOUR:
      return rec.datehour;
    case COM_PART_MINUTE:
      return rec.dateminute;
    case COM_PART_SECOND:
      return rec.datesecond;
    case COM_PART_MILLISECOND:
      return rec.datemsecond;
    case COM_PART_WEEK:
      return (weekday(std::int64_t{dt->dtdays} - rec.datedyear + 1) + rec.datedyear + 6) / 7;
    case COM_PART_ISOYEAR:
      return iso_week(dt->dtdays).year;
    case COM_PART_ISOWEEK:
      return iso_week(dt->dtdays).week;
    case COM_PART_ISOWEEKDAY:
      return rec.datedweek == 0 ? 7 : rec.datedweek;
    default:
      stop();
  }
}

CS_INT com__datename(CS_INT part, const CS_DATETIME* dt, CS_CHAR* text,
                     const CS_CHAR* const* months, const CS_CHAR* const* days) {
  if (!is_part(part)) return 0;
  const CS_DATEREC rec = crack(*dt);
  if (part == COM_PART_MONTH) return copy_name(months, rec.datemonth, text);
  if (part == COM_PART_WEEKDAY || part == COM_PART_ISOWEEKDAY)
    return copy_name(days, rec.datedweek, text);
  return number_text(com__datepart(part, dt, 0), text);
}

CS_INT com__datecmp(const CS_DATETIME* a, const CS_DATETIME* b) {
  const std::int64_t difference = a->dtdays != b->dtdays ? std::int64_t{a->dtdays} - b->dtdays
                                                         : std::int64_t{a->dttime} - b->dttime;
  using Limits = std::numeric_limits<CS_INT>;
  return static_cast<CS_INT>(
      std::clamp(difference, std::int64_t{Limits::min()}, std::int64_t{Limits::max()}));
}

CS_INT com__dttodate4(const CS_DATETIME* src, CS_DATETIME4* dst) {
  constexpr CS_INT kLastDay = std::numeric_limits<CS_USHORT>::max();
  CS_INT days = src->dtdays;
  if (days < 0 || days > kLastDay) return kDateFailed;
  auto minutes =
      static_cast<CS_INT>((std::int64_t{src->dttime} + kTicksPerMinute / 2) / kTicksPerMinute);
  if (minutes >= 24 * 60) {
    if (days == kLastDay) return kDateFailed;
    ++days;
    minutes -= 24 * 60;
  }
  // Only ticks that are not a time of day leave such minutes.
  if (minutes < 0 || minutes >= 24 * 60) return kDateFailed;
  *dst = {static_cast<CS_USHORT>(days), static_cast<CS_USHORT>(minutes)};
  return kDateDone;
}

CS_INT com__date4todt(const CS_DATETIME4* src, CS_DATETIME* dst) {
  *dst = {src->days, src->minutes * kTicksPerMinute};
  return kDateDone;
}

CS_INT com__valid_datetime(const CS_DATAFMT* format, const CS_VOID* value) {
  CS_DATETIME dt;
  if (format->datatype == CS_DATETIME4_TYPE) {
    CS_DATETIME4 small;
    std::memcpy(&small, value, sizeof small);
    com__date4todt(&small, &dt);
  } else {
    require(format->datatype == CS_DATETIME_TYPE);
    std::memcpy(&dt, value, sizeof dt);
  }
  // Adding a part of the date checks only the date; a part of the time checks the time too.
  return com__date_add(COM_PART_YEAR, 0, &dt) == kDateDone &&
         com__date_add(COM_PART_MINUTE, 0, &dt) == kDateDone;
}

CS_INT com__date_add(CS_INT part, CS_INT amount, CS_DATETIME* dt) {
  const Step& step = step_of(part);
  if (!valid_for(step, *dt)) return kDateFailed;
  const std::int64_t count = std::int64_t{amount} * step.size;
  switch (step.unit) {
    case Step::months:
      return add_months(count, *dt);
    case Step::days:
      return add_days(count, *dt);
    case Step::ticks:
      return add_ticks(count, *dt);
    case Step::milliseconds:
      return add_ticks(count / 1000 * kTicksPerSecond + ticks_of_milliseconds(count % 1000), *dt);
  }
  stop();
}

CS_INT com__dateadd_both(CS_INT part, CS_INT amount, const CS_DATAFMT* srcfmt,
                         const CS_VOID* source, const CS_DATAFMT* destfmt, CS_VOID* destination) {
  if (srcfmt->datatype != CS_DATETIME_TYPE) return kDateFailed;
  CS_DATETIME dt;
  std::memcpy(&dt, source, sizeof dt);
  if (com__date_add(part, amount, &dt) != kDateDone) return kDateFailed;
  if (destfmt->datatype == CS_DATETIME_TYPE) {
    std::memcpy(destination, &dt, sizeof dt);
    return kDateDone;
  }
  CS_DATETIME4 small;
  if (destfmt->datatype != CS_DATETIME4_TYPE || com__dttodate4(&dt, &small) != kDateDone)
    return kDateFailed;
  std::memcpy(destination, &small, sizeof small);
  return kDateDone;
}

CS_INT com__datediff(CS_INT part, const CS_DATETIME* from, const CS_DATETIME* to, CS_INT* diff) {
  const Step& step = step_of(part);
  if (!valid_for(step, *from) || !valid_for(step, *to)) return kDateFailed;
  const std::int64_t difference = position(step, *to) - position(step, *from);
  const auto narrow = static_cast<CS_INT>(difference);
  if (narrow != difference) return kDateFailed;
  *diff = narrow;
  return kDateDone;
}
