// The calendar against std::chrono: every day, every tick, additions and differences; and what lies
// outside both.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <random>
#include <string>

#include "support/stride.h"
#include "time/datetime.h"

namespace {

using namespace std::chrono;
using Ticks = duration<std::int64_t, std::ratio<1, 300>>;

const CS_INT kStride = stride::between_values();
constexpr auto kMin = std::numeric_limits<CS_INT>::min();
constexpr auto kMax = std::numeric_limits<CS_INT>::max();
constexpr sys_days kEpoch = 1900y / January / 1;

sys_days day_of(const CS_DATETIME& dt) {
  return kEpoch + days{dt.dtdays};
}
auto moment_of(const CS_DATETIME& dt) {
  return day_of(dt) + Ticks{dt.dttime};
}
CS_INT part(CS_INT code, CS_INT dtdays) {
  const CS_DATETIME dt{dtdays, 0};
  return com__datepart(code, &dt, 0);
}

CS_DATAFMT format_of(CS_INT datatype) {
  CS_DATAFMT format{};
  format.datatype = datatype;
  return format;
}

// Numbers that are compared and printed together.
auto list(auto... numbers) {
  return std::array{static_cast<std::int64_t>(numbers)...};
}

TEST(Calendar, EveryDayAgreesWithChronoAndRemakes) {
  CS_INT week = 0;
  for (CS_INT dtdays = COM_DTDAYS_MIN; dtdays <= COM_DTDAYS_MAX; ++dtdays) {
    const sys_days day = kEpoch + days{dtdays};
    const year_month_day date = day;
    const bool new_year = date.month() == January && date.day() == 1d;
    const unsigned from_sunday = weekday{day}.c_encoding();
    week = new_year ? 1 : week + (from_sunday == 0 ? 1 : 0);
    if ((dtdays - COM_DTDAYS_MIN) % kStride != 0) continue;

    const CS_DATETIME dt{dtdays, 0};
    CS_DATEREC rec{0, 0, 0, 0, 0, 1, 2, 3, 4, 0};
    com__datecrack(&dt, &rec);
    const auto day_of_year = (day - sys_days{date.year() / January / 1}).count() + 1;
    const sys_days thursday = day - days{(from_sunday + 6) % 7} + days{3};
    const year iso_year = year_month_day{thursday}.year();
    const auto iso_week = (thursday - sys_days{iso_year / January / 1}).count() / 7 + 1;
    CS_DATETIME made{77, 88};
    const CS_INT status = com__datemake(&made, &rec);
    const auto seen = list(rec.dateyear, rec.datemonth + 1, rec.datedmonth, rec.datedyear,
                           rec.datedweek, part(COM_PART_WEEK, dtdays),
                           part(COM_PART_ISOYEAR, dtdays), part(COM_PART_ISOWEEK, dtdays),
                           part(COM_PART_ISOWEEKDAY, dtdays), leapyear(rec.dateyear - 1753), status,
                           made.dtdays, made.dttime, rec.datehour, rec.datemsecond, rec.datetzone);
    const auto expected =
        list(int{date.year()}, unsigned{date.month()}, unsigned{date.day()}, day_of_year,
             from_sunday, week, int{iso_year}, iso_week, weekday{day}.iso_encoding(),
             date.year().is_leap(), 0, dtdays, 88, 1, 4, 0);
    ASSERT_EQ(expected, seen) << "dtdays " << dtdays;
  }
}

TEST(Calendar, EveryTickCracksAndRemakes) {
  for (CS_INT tick = 0; tick <= COM_DTTIME_MAX; tick += kStride) {
    const CS_DATETIME dt{0, tick};
    CS_DATEREC rec{};
    com__timecrack(&dt, &rec);
    const hh_mm_ss clock{floor<milliseconds>(Ticks{tick})};
    CS_DATETIME made{5, 0};
    const CS_INT status = com__timemake(&made, &rec);
    const auto seen = list(rec.datehour, rec.dateminute, rec.datesecond, rec.datemsecond, status,
                           made.dttime, made.dtdays);
    const auto expected = list(clock.hours().count(), clock.minutes().count(),
                               clock.seconds().count(), clock.subseconds().count(), 0, tick, 5);
    ASSERT_EQ(expected, seen) << "tick " << tick;
  }
}

TEST(Calendar, DaysAndTicksOutsideTheRangeCrackWithinBounds) {
  for (const CS_INT days : {kMin, -54056, -54055, -53692, -53691, 2958464, 2958829, kMax}) {
    for (const CS_INT ticks : {kMin, -1, 25'920'000, kMax}) {
      const CS_DATETIME dt{days, ticks};
      CS_DATEREC rec{};
      com_datecrack(&dt, &rec);
      com_timecrack(&dt, &rec);
      const CS_INT n = rec.dateyear - 1753;
      const auto& month = (leapyear(n) ? lmonthdays : monthdays)[rec.datemonth];
      EXPECT_EQ(days, 365LL * n + com__leapcnt(n) + COM_DTDAYS_MIN + rec.datedyear - 1) << days;
      EXPECT_EQ(rec.datedyear, month[1] + rec.datedmonth) << days;
      EXPECT_GE(rec.datedmonth, 1) << days;
      EXPECT_LE(rec.datedmonth, month[0]) << days;
      EXPECT_EQ((ticks & 0x1FFFFFF) / 1080000, rec.datehour) << ticks;
      for (CS_INT code = 0; code <= 13; ++code) com__datepart(code, &dt, kMin);
      CS_DATETIME sum = dt;
      CS_INT diff = 7;
      EXPECT_NE(0, com__date_add(COM_PART_DAY, 0, &sum));
      EXPECT_NE(0, com__datediff(COM_PART_YEAR, &dt, &dt, &diff));
      EXPECT_EQ(7, diff);
    }
  }
}

// A status, and what it left in fields that were 77.
TEST(Making, RefusesFieldsInOrder) {
  const auto make = [](CS_INT year, CS_INT month, CS_INT day, CS_INT hour = 0, CS_INT minute = 0,
                       CS_INT second = 0, CS_INT millisecond = 0) {
    const CS_DATEREC rec{year, month, day, 0, 0, hour, minute, second, millisecond, 0};
    CS_DATETIME dt{77, 77};
    CS_INT status = com__datemake(&dt, &rec);
    if (status == 0) status = com__timemake(&dt, &rec);
    return list(status, dt.dtdays, dt.dttime);
  };
  EXPECT_EQ(list(1, 0, 77), make(1752, 12, 1));
  EXPECT_EQ(list(1, 0, 77), make(10000, 0, 0));
  EXPECT_EQ(list(2, 77, 77), make(2000, 12, 0));
  EXPECT_EQ(list(3, 77, 77), make(1900, 1, 29));
  EXPECT_EQ(list(4, 0, 77), make(1900, 0, 1, 24, 60, 60, 1000));
  EXPECT_EQ(list(5, 0, 77), make(1900, 0, 1, 23, 60, 60, 1000));
  EXPECT_EQ(list(6, 0, 77), make(1900, 0, 1, 23, 59, 60, 1000));
  EXPECT_EQ(list(7, 0, 77), make(1900, 0, 1, 23, 59, 59, 1000));
  EXPECT_EQ(list(0, 0, 25919999), make(1900, 0, 1, 23, 59, 59, 999));
  EXPECT_EQ(list(0, 0, -1080300), make(1900, 0, 1, -1, 0, 0, -999));
}

TEST(Parts, NumbersAndNames) {
  const CS_DATETIME dt{46205, 15 * 1080000 + 5 * 18000 + 9 * 300 + 75};  // Sat 4 July 2026
  const char* const months[12] = {"", "", "", "", "", "", "Messidor, the month of the harvests"};
  const char* const days[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  const char* const names[] = {"2026", "3",  "Messidor, the month of the har",
                               "Sat",  "4",  "185",
                               "15",   "5",  "9",
                               "250",  "27", "2026",
                               "27",   "Sat"};
  char text[COM_DATENAME_SIZE + 1];
  text[COM_DATENAME_SIZE] = '#';
  for (CS_INT code = 0; code <= 13; ++code) {
    const CS_INT length = com_datename(code, &dt, text, months, days);
    EXPECT_EQ(names[code], std::string(text, static_cast<std::size_t>(length)));
    const CS_INT number = com_datepart(code, &dt, 0);
    EXPECT_TRUE(code == 2 || code == 3 || code == 13 || names[code] == std::to_string(number));
  }
  EXPECT_EQ('#', text[COM_DATENAME_SIZE]);
  for (const CS_INT code : {-1, 14, +COM_PART_MONTH})
    EXPECT_EQ(0, com_datename(code, &dt, text, nullptr, days));
  for (CS_INT day = 0; day < 7; ++day) {  // from Monday, 1 January 1900, on
    const CS_DATETIME monday_on{day, 0};
    EXPECT_EQ(day + 1, com_datepart(COM_PART_WEEKDAY, &monday_on, 1));
    EXPECT_EQ((day + 1) % 7 + 1, com_datepart(COM_PART_WEEKDAY, &monday_on, 0));
  }
}

TEST(Comparing, DaysThenTimeAndTheSmallFormUnsigned) {
  const CS_DATETIME low{kMin, 5}, high{kMax, 4}, later{kMax, 6};
  const CS_DATETIME4 first{1, 9}, last{65535, 0};
  EXPECT_EQ(-1, com_datecmp(&low, &high));
  EXPECT_EQ(1, com_datecmp(&later, &high));
  EXPECT_EQ(0, com_datecmp(&low, &low));
  EXPECT_EQ(2, com__datecmp(&later, &high));
  EXPECT_EQ(kMin, com__datecmp(&low, &high));
  EXPECT_EQ(-1, com_date4cmp(&first, &last));
  CS_DATETIME dt{};
  CS_DATETIME4 dt4 = first;
  EXPECT_EQ(CS_SUCCEED, com_setdatetime(&dt, kMin, 5));
  EXPECT_EQ(list(kMin, 5), list(dt.dtdays, dt.dttime));
  EXPECT_EQ(list(1, 1), list(com_datezero(&dt), com_date4zero(&dt4)));
  EXPECT_EQ(list(0, 0, 0, 0), list(dt.dtdays, dt.dttime, dt4.days, dt4.minutes));
}

TEST(SmallForm, RoundsToTheMinuteAndIsValidated) {
  const auto narrow = [](CS_INT days, CS_INT ticks) {
    const CS_DATETIME dt{days, ticks};
    CS_DATETIME4 small{77, 77};
    const CS_INT status = com__dttodate4(&dt, &small);
    return list(status, small.days, small.minutes);
  };
  EXPECT_EQ(list(0, 0, 0), narrow(0, 8999));
  EXPECT_EQ(list(0, 0, 1), narrow(0, 9000));
  EXPECT_EQ(list(0, 2, 0), narrow(1, 25911000));
  EXPECT_EQ(list(0, 65535, 1439), narrow(65535, 25910999));
  for (const CS_DATETIME& dt :
       {CS_DATETIME{65535, 25911000}, {-1, 0}, {65536, 0}, {5, kMax}, {5, kMin}})
    EXPECT_EQ(list(1, 77, 77), narrow(dt.dtdays, dt.dttime)) << dt.dtdays << ' ' << dt.dttime;

  const CS_DATAFMT large = format_of(CS_DATETIME_TYPE), small = format_of(CS_DATETIME4_TYPE);
  const auto valid = [&](CS_INT days, CS_INT ticks) {
    const CS_DATETIME dt{days, ticks};
    return com__valid_datetime(&large, &dt) != 0;
  };
  EXPECT_TRUE(valid(COM_DTDAYS_MIN, 0));
  EXPECT_TRUE(valid(COM_DTDAYS_MAX, COM_DTTIME_MAX));
  EXPECT_FALSE(valid(COM_DTDAYS_MIN - 1, 0));
  EXPECT_FALSE(valid(COM_DTDAYS_MAX + 1, 0));
  EXPECT_FALSE(valid(0, -1));
  EXPECT_FALSE(valid(0, COM_DTTIME_MAX + 1));
  const CS_DATETIME4 last{65535, 1439}, beyond{0, 1440};
  EXPECT_TRUE(com__valid_datetime(&small, &last));
  EXPECT_FALSE(com__valid_datetime(&small, &beyond));
}

CS_INT uniform(CS_INT low, CS_INT high) {
  static std::mt19937 random{1753};
  return std::uniform_int_distribution<CS_INT>(low, high)(random);
}
CS_DATETIME any() {
  return {uniform(COM_DTDAYS_MIN, COM_DTDAYS_MAX), uniform(0, COM_DTTIME_MAX)};
}

constexpr CS_INT kMonthsOf[14] = {12, 3, 1, 0, 0, 0, 0, 0, 0, 0, 0, 12, 0, 0};
constexpr CS_INT kDaysOf[14] = {0, 0, 0, 1, 1, 1, 0, 0, 0, 0, 7, 0, 7, 1};
constexpr CS_INT kSecondsOf[14] = {0, 0, 0, 0, 0, 0, 3600, 60, 1};

TEST(Arithmetic, AddsLikeChrono) {
  for (int round = 0; round < 400'000 / kStride; ++round) {
    const CS_DATETIME dt = any();
    const CS_INT code = uniform(0, 13);
    const CS_INT bound = kMax >> uniform(0, 30);  // small amounts, and ones that leave the range
    const CS_INT count = uniform(-bound, bound);
    auto expected =
        moment_of(dt) + std::int64_t{count} * (days{kDaysOf[code]} + seconds{kSecondsOf[code]});
    bool in_range = true;
    if (kMonthsOf[code] != 0) {
      const year_month_day date{day_of(dt)};
      const auto month = (int{date.year()} * 12LL + unsigned{date.month()} - 1) +
                         std::int64_t{count} * kMonthsOf[code];
      in_range = month >= 1753 * 12 && month < 10000 * 12;
      const auto target = year{int(month / 12)} / std::chrono::month(unsigned(month % 12 + 1));
      if (in_range)
        expected += sys_days{target / std::min(date.day(), (target / last).day())} - day_of(dt);
    } else if (code == COM_PART_MILLISECOND) {
      const CS_INT rest = count % 1000;
      expected += seconds{count / 1000};
      expected += rest == 999 ? Ticks{299} : Ticks{(rest * 3 + (rest < 0 ? -5 : 5)) / 10};
    }
    const auto day = floor<days>(expected);
    in_range = in_range && day >= sys_days{1753y / 1 / 1} && day < sys_days{year{10000} / 1 / 1};
    CS_DATETIME sum = dt;
    const CS_INT status = com__date_add(code, count, &sum);
    const auto moment = (in_range ? expected : moment_of(dt)) - kEpoch;
    const auto whole_days = floor<days>(moment);
    ASSERT_EQ(list(in_range ? 0 : 1, int(whole_days.count()), int((moment - whole_days).count())),
              list(status, sum.dtdays, sum.dttime))
        << dt.dtdays << ' ' << dt.dttime << " part " << code << " + " << count;
  }
}

TEST(Arithmetic, EdgesOfADayAndOfTheRange) {
  const auto add = [](CS_INT part, CS_INT amount, CS_DATETIME dt) {
    const CS_INT status = com__date_add(part, amount, &dt);
    return list(status, dt.dtdays, dt.dttime);
  };
  EXPECT_EQ(list(0, 9, 0), add(COM_PART_HOUR, -24, {10, 0}));
  EXPECT_EQ(list(0, 9, COM_DTTIME_MAX), add(COM_PART_MILLISECOND, -3, {10, 0}));
  EXPECT_EQ(list(0, 11, 0), add(COM_PART_HOUR, 1, {10, 23 * 1080000}));
  EXPECT_EQ(list(1, COM_DTDAYS_MAX, 5), add(COM_PART_MONTH, 1, {COM_DTDAYS_MAX, 5}));
  EXPECT_EQ(list(1, COM_DTDAYS_MIN, 5), add(COM_PART_MONTH, -1, {COM_DTDAYS_MIN, 5}));
  EXPECT_EQ(list(1, COM_DTDAYS_MIN, 0), add(COM_PART_MINUTE, -1, {COM_DTDAYS_MIN, 0}));
}

// By part, how many boundaries lie between a fixed moment and this one.
std::array<std::int64_t, 14> boundaries_before(const CS_DATETIME& dt) {
  const sys_days day = day_of(dt);
  const year_month_day date = day;
  const std::int64_t year = int{date.year()}, d = dt.dtdays;
  const std::int64_t month = year * 12 + unsigned{date.month()} - 1;
  const std::int64_t week = floor<weeks>(day - sys_days{1752y / December / 31}).count();
  const auto passed = [&]<class Unit>(Unit) { return floor<Unit>(moment_of(dt) - kEpoch).count(); };
  const std::int64_t hour = passed(hours{}), minute = passed(minutes{});
  const std::int64_t second = passed(seconds{}), millisecond = passed(milliseconds{});
  return {year, month / 3, month, d, d, d, hour, minute, second, millisecond, week, year, week, d};
}

TEST(Arithmetic, DifferencesCountBoundaries) {
  ASSERT_EQ(Sunday, weekday{sys_days{1752y / December / 31}});
  for (int round = 0; round < 400'000 / kStride; ++round) {
    const CS_DATETIME from = any();
    CS_DATETIME to = any();
    if (round % 2 == 0)
      to.dtdays = std::clamp(from.dtdays + uniform(-9, 9), +COM_DTDAYS_MIN, +COM_DTDAYS_MAX);
    const CS_INT code = uniform(0, 13);
    const auto part = static_cast<std::size_t>(code);
    const std::int64_t expected = boundaries_before(to)[part] - boundaries_before(from)[part];
    const bool fits = expected == static_cast<CS_INT>(expected);
    CS_INT diff = 0;
    ASSERT_EQ(fits ? 0 : 1, com__datediff(code, &from, &to, &diff)) << code;
    ASSERT_EQ(fits ? expected : 0, diff) << code << ": " << from.dtdays << ' ' << to.dtdays;
  }
}

TEST(AddingBoth, NarrowsAndRefuses) {
  const CS_DATAFMT large = format_of(CS_DATETIME_TYPE), small = format_of(CS_DATETIME4_TYPE);
  const CS_DATETIME dt{30, 9000};  // 31 January 1900, 30 seconds past midnight
  CS_DATETIME4 narrow{7, 7};
  EXPECT_EQ(1, com__dateadd_both(COM_PART_MONTH, -1, &large, &dt, &small, &narrow)) << "1899";
  EXPECT_EQ(1, com__dateadd_both(COM_PART_DAY, 1, &small, &narrow, &small, &narrow));
  EXPECT_EQ(list(0, 7, 7), list(0, narrow.days, narrow.minutes));
  CS_INT status = com__dateadd_both(COM_PART_MONTH, 1, &large, &dt, &small, &narrow);
  EXPECT_EQ(list(0, 58, 1), list(status, narrow.days, narrow.minutes)) << "28 February";
  CS_DATETIME sum{};
  status = com__dateadd_both(COM_PART_DAY, -31, &large, &dt, &large, &sum);
  EXPECT_EQ(list(0, -1, 9000), list(status, sum.dtdays, sum.dttime));
}

TEST(CalendarDeathTest, StopsOnNullAndUnknownParts) {
  CS_DATETIME dt{};
  const CS_DATAFMT text = format_of(CS_CHAR_TYPE);
  EXPECT_DEATH(com__valid_datetime(&text, &dt), "assertion failed");
  EXPECT_DEATH(com_datepart(14, &dt, 0), "assertion failed, file '.*src/time/");
  EXPECT_DEATH(com__date_add(-1, 0, &dt), "assertion failed");
  EXPECT_DEATH(com_datecrack(&dt, nullptr), "Invalid pointer");
}

}  // namespace
