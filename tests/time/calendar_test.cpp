// The calendar against std::chrono: every day, every tick, additions and differences; and what lies
// outside both.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "time/datetime.h"

namespace {

using namespace std::chrono;
using Ticks = duration<std::int64_t, std::ratio<1, 300>>;

#ifdef __SANITIZE_ADDRESS__
constexpr CS_INT kStride = 23;
#else
constexpr CS_INT kStride = 1;
#endif
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
CS_DATEREC clock(CS_INT hour, CS_INT minute, CS_INT second, CS_INT ms) {
  return {0, 0, 0, 0, 0, hour, minute, second, ms, 0};
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
    CS_DATEREC rec = clock(1, 2, 3, 4);
    com__datecrack(&dt, &rec);
    const auto day_of_year = (day - sys_days{date.year() / January / 1}).count() + 1;
    const sys_days thursday = day - days{(from_sunday + 6) % 7} + days{3};
    const year iso_year = year_month_day{thursday}.year();
    const auto iso_week = (thursday - sys_days{iso_year / January / 1}).count() / 7 + 1;
    CS_DATETIME made{77, 88};
    ASSERT_TRUE(rec.dateyear == int{date.year()} &&
                rec.datemonth + 1 == int(unsigned{date.month()}) &&
                rec.datedmonth == int(unsigned{date.day()}) && rec.datedyear == day_of_year &&
                rec.datedweek == int(from_sunday) && com__datemake(&made, &rec) == 0 &&
                made.dtdays == dtdays && made.dttime == 88 && part(COM_PART_WEEK, dtdays) == week &&
                part(COM_PART_ISOYEAR, dtdays) == int{iso_year} &&
                part(COM_PART_ISOWEEK, dtdays) == iso_week &&
                part(COM_PART_ISOWEEKDAY, dtdays) == int(weekday{day}.iso_encoding()) &&
                leapyear(rec.dateyear - 1753) == (date.year().is_leap() ? 1 : 0))
        << "dtdays " << dtdays;
    ASSERT_TRUE(rec.datehour == 1 && rec.datemsecond == 4 && rec.datetzone == 0);
  }
}

TEST(Calendar, EveryTickCracksAndRemakes) {
  for (CS_INT tick = 0; tick <= COM_DTTIME_MAX; tick += kStride) {
    const CS_DATETIME dt{0, tick};
    CS_DATEREC rec{};
    com__timecrack(&dt, &rec);
    const hh_mm_ss clock{floor<milliseconds>(Ticks{tick})};
    CS_DATETIME made{5, 0};
    ASSERT_TRUE(rec.datehour == clock.hours().count() &&
                rec.dateminute == clock.minutes().count() &&
                rec.datesecond == clock.seconds().count() &&
                rec.datemsecond == clock.subseconds().count() && com__timemake(&made, &rec) == 0 &&
                made.dttime == tick && made.dtdays == 5)
        << "tick " << tick;
  }
}

TEST(Calendar, DaysAndTicksOutsideTheRangeCrackWithinBounds) {
  const auto start = [](CS_INT n) { return 365LL * n + com__leapcnt(n) + COM_DTDAYS_MIN; };
  for (const CS_INT dtdays : {kMin, -2'000'000'000, -54056, -54055, -53692, -53691, 2958464,
                              2958829, 1'500'000'000, kMax}) {
    for (const CS_INT dttime : {kMin, -1, 25'920'000, 0x1FFFFFF, 0x2000000, kMax}) {
      const CS_DATETIME dt{dtdays, dttime};
      CS_DATEREC rec{};
      com_datecrack(&dt, &rec);
      com_timecrack(&dt, &rec);
      const CS_INT n = rec.dateyear - 1753;
      const auto& month = (leapyear(n) ? lmonthdays : monthdays)[rec.datemonth];
      EXPECT_TRUE(start(n) <= dtdays && dtdays < start(n + 1)) << dtdays;
      EXPECT_EQ(dtdays - start(n) + 1, rec.datedyear) << dtdays;
      EXPECT_EQ(rec.datedyear, month[1] + rec.datedmonth) << dtdays;
      EXPECT_TRUE(rec.datedmonth >= 1 && rec.datedmonth <= month[0]) << dtdays;
      EXPECT_EQ(int(weekday{kEpoch + days{dtdays}}.c_encoding()), rec.datedweek) << dtdays;
      EXPECT_EQ((dttime & 0x1FFFFFF) / 1080000, rec.datehour) << dttime;
      for (CS_INT code = 0; code <= 13; ++code) com__datepart(code, &dt, 0);
      CS_DATETIME sum = dt;
      CS_INT diff = 7;
      EXPECT_NE(0, com__date_add(COM_PART_DAY, 0, &sum));
      EXPECT_NE(0, com__datediff(COM_PART_YEAR, &dt, &dt, &diff));
      EXPECT_EQ(7, diff);
    }
  }
  EXPECT_EQ(0, com__leapcnt(-1));
  EXPECT_EQ(leapyear(247), leapyear(247 + 400 * 5'000'000));
  const std::int64_t last = std::int64_t{kMax} + 1752;
  EXPECT_EQ(last / 4 - last / 100 + last / 400 - 425, com__leapcnt(kMax));
}

TEST(Making, RefusesFieldsInOrder) {
  using Made = std::pair<CS_INT, CS_INT>;  // status and field, which was 77
  const auto days_of = [](CS_INT year, CS_INT month, CS_INT day) {
    CS_DATETIME dt{77, 0};
    const CS_DATEREC rec{year, month, day, 0, 0, 0, 0, 0, 0, 0};
    const CS_INT status = com__datemake(&dt, &rec);
    return Made(status, dt.dtdays);
  };
  EXPECT_EQ(Made(0, -53690), days_of(1753, 0, 1));
  EXPECT_EQ(Made(1, 0), days_of(1752, 12, 1));
  EXPECT_EQ(Made(1, 0), days_of(10000, 0, 0));
  EXPECT_EQ(Made(2, 77), days_of(2000, 12, 0));
  EXPECT_EQ(Made(2, 77), days_of(2000, -1, 1));
  EXPECT_EQ(Made(3, 77), days_of(2000, 0, 0));
  EXPECT_EQ(Made(3, 77), days_of(1900, 1, 29));
  EXPECT_EQ(Made(0, 36583), days_of(2000, 1, 29));
  const auto ticks_of = [](CS_INT hour, CS_INT minute, CS_INT second, CS_INT ms) {
    CS_DATETIME dt{0, 77};
    const CS_DATEREC rec = clock(hour, minute, second, ms);
    const CS_INT status = com__timemake(&dt, &rec);
    return Made(status, dt.dttime);
  };
  EXPECT_EQ(Made(4, 77), ticks_of(24, 60, 60, 1000));
  EXPECT_EQ(Made(5, 77), ticks_of(23, 60, 60, 1000));
  EXPECT_EQ(Made(6, 77), ticks_of(23, 59, 60, 1000));
  EXPECT_EQ(Made(7, 77), ticks_of(23, 59, 59, 1000));
  EXPECT_EQ(Made(0, 25919999), ticks_of(23, 59, 59, 999));
  EXPECT_EQ(Made(0, -1080300), ticks_of(-1, 0, 0, -999));
  EXPECT_EQ(Made(0, -644245094), ticks_of(kMin, 0, 0, kMin));
}

TEST(Parts, NumbersAndNames) {
  const CS_DATETIME dt{46205, 15 * 1080000 + 5 * 18000 + 9 * 300 + 75};  // Sat 4 July 2026
  const CS_INT numbers[] = {2026, 3, 7, 7, 4, 185, 15, 5, 9, 250, 27, 2026, 27, 6};
  const char* const months[12] = {"", "", "", "", "", "", "Messidor, the month of the harvests"};
  const char* const days[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  for (CS_INT code = 0; code <= 13; ++code) {
    EXPECT_EQ(numbers[code], com_datepart(code, &dt, 0)) << code;
    const std::string expected = code == 2                 ? "Messidor, the month of the har"
                                 : code == 3 || code == 13 ? "Sat"
                                                           : std::to_string(numbers[code]);
    char text[COM_DATENAME_SIZE + 1] = {};
    text[COM_DATENAME_SIZE] = '#';
    EXPECT_EQ(int(expected.size()), com_datename(code, &dt, text, months, days)) << code;
    EXPECT_EQ(expected, std::string(text, expected.size())) << code;
    EXPECT_EQ('#', text[COM_DATENAME_SIZE]);
    EXPECT_TRUE(code == 2 || text[expected.size()] == 0);
  }
  for (CS_INT day = 0; day < 7; ++day) {  // from Monday, 1 January 1900, on
    const CS_DATETIME monday_on{day, 0};
    EXPECT_EQ(day + 1, com_datepart(COM_PART_WEEKDAY, &monday_on, 1));
    EXPECT_EQ((day + 1) % 7 + 1, com_datepart(COM_PART_WEEKDAY, &monday_on, 0));
  }
  char text[COM_DATENAME_SIZE] = "x";
  const char* const none[12] = {};
  for (const CS_INT code : {-1, 14}) EXPECT_EQ(0, com_datename(code, &dt, text, months, days));
  EXPECT_EQ(0, com_datename(COM_PART_MONTH, &dt, text, nullptr, days));
  EXPECT_EQ(0, com_datename(COM_PART_WEEKDAY, &dt, text, months, nullptr));
  EXPECT_EQ(0, com_datename(COM_PART_MONTH, &dt, text, none, days));
  EXPECT_STREQ("x", text);
}

TEST(Comparing, DaysThenTimeAndTheSmallFormUnsigned) {
  const CS_DATETIME low{kMin, 5}, high{kMax, 4}, later{kMax, 6};
  const CS_DATETIME4 first{1, 9}, last{65535, 0}, evening{65535, 60000};
  EXPECT_TRUE(com_datecmp(&low, &high) == -1 && com_datecmp(&later, &high) == 1);
  EXPECT_TRUE(com_datecmp(&low, &low) == 0 && com__datecmp(&later, &high) == 2);
  EXPECT_TRUE(com__datecmp(&low, &high) == kMin && com__datecmp(&high, &low) == kMax);
  EXPECT_TRUE(com_date4cmp(&first, &last) == -1 && com_date4cmp(&evening, &last) == 1);
  CS_DATETIME dt = low;
  CS_DATETIME4 small = last;
  EXPECT_TRUE(com_datezero(&dt) == CS_SUCCEED && dt.dtdays == 0 && dt.dttime == 0);
  EXPECT_TRUE(com_date4zero(&small) == CS_SUCCEED && small.days == 0 && small.minutes == 0);
  EXPECT_TRUE(com_setdatetime(&dt, -5, 9) == CS_SUCCEED && dt.dtdays == -5 && dt.dttime == 9);
}

TEST(SmallForm, RoundsToTheMinuteAndIsValidated) {
  using Narrow = std::array<CS_INT, 3>;  // status, days and minutes, which were 7
  const auto narrow = [](CS_INT days, CS_INT ticks) {
    const CS_DATETIME dt{days, ticks};
    CS_DATETIME4 small{7, 7};
    const CS_INT status = com__dttodate4(&dt, &small);
    return Narrow{status, small.days, small.minutes};
  };
  EXPECT_EQ((Narrow{0, 0, 0}), narrow(0, 8999));
  EXPECT_EQ((Narrow{0, 0, 1}), narrow(0, 9000));
  EXPECT_EQ((Narrow{0, 2, 0}), narrow(1, 25911000));
  EXPECT_EQ((Narrow{0, 65535, 1439}), narrow(65535, 25910999));
  EXPECT_EQ((Narrow{1, 7, 7}), narrow(65535, 25911000));
  EXPECT_EQ((Narrow{1, 7, 7}), narrow(-1, 0));
  EXPECT_EQ((Narrow{1, 7, 7}), narrow(65536, 0));
  EXPECT_EQ((Narrow{1, 7, 7}), narrow(5, kMax));
  EXPECT_EQ((Narrow{1, 7, 7}), narrow(5, kMin));

  const auto valid = [](CS_INT datatype, const auto& value) {
    const CS_DATAFMT format = format_of(datatype);
    return com__valid_datetime(&format, &value) != 0;
  };
  EXPECT_TRUE(valid(CS_DATETIME_TYPE, CS_DATETIME{COM_DTDAYS_MIN, 0}));
  EXPECT_TRUE(valid(CS_DATETIME_TYPE, CS_DATETIME{COM_DTDAYS_MAX, COM_DTTIME_MAX}));
  EXPECT_FALSE(valid(CS_DATETIME_TYPE, CS_DATETIME{COM_DTDAYS_MIN - 1, 0}));
  EXPECT_FALSE(valid(CS_DATETIME_TYPE, CS_DATETIME{COM_DTDAYS_MAX + 1, 0}));
  EXPECT_FALSE(valid(CS_DATETIME_TYPE, CS_DATETIME{0, -1}));
  EXPECT_FALSE(valid(CS_DATETIME_TYPE, CS_DATETIME{0, COM_DTTIME_MAX + 1}));
  EXPECT_TRUE(valid(CS_DATETIME4_TYPE, CS_DATETIME4{65535, 1439}));
  EXPECT_FALSE(valid(CS_DATETIME4_TYPE, CS_DATETIME4{0, 1440}));
}

class Arithmetic : public testing::Test {
 protected:
  CS_INT uniform(CS_INT low, CS_INT high) {
    return std::uniform_int_distribution<CS_INT>(low, high)(random_);
  }
  CS_DATETIME any() {
    return {uniform(COM_DTDAYS_MIN, COM_DTDAYS_MAX), uniform(0, COM_DTTIME_MAX)};
  }
  // Small amounts, and ones that leave the range.
  CS_INT amount() {
    const CS_INT bound = kMax >> uniform(0, 30);
    return uniform(-bound, bound);
  }

 private:
  std::mt19937 random_{1753};
};

constexpr CS_INT kMonthsOf[14] = {12, 3, 1, 0, 0, 0, 0, 0, 0, 0, 0, 12, 0, 0};
constexpr CS_INT kDaysOf[14] = {0, 0, 0, 1, 1, 1, 0, 0, 0, 0, 7, 0, 7, 1};
constexpr CS_INT kSecondsOf[14] = {0, 0, 0, 0, 0, 0, 3600, 60, 1};

TEST_F(Arithmetic, AddsLikeChrono) {
  for (int round = 0; round < 400'000 / kStride; ++round) {
    const CS_DATETIME dt = any();
    const CS_INT code = uniform(0, 13);
    const CS_INT count = amount();
    auto expected = moment_of(dt);
    bool in_range = true;
    if (kMonthsOf[code] != 0) {
      const year_month_day date{day_of(dt)};
      const auto month = (int{date.year()} * 12LL + unsigned{date.month()} - 1) +
                         std::int64_t{count} * kMonthsOf[code];
      in_range = month >= 1753 * 12 && month < 10000 * 12;
      if (in_range) {
        const auto target = year{int(month / 12)} / std::chrono::month(unsigned(month % 12 + 1));
        expected =
            sys_days{target / std::min(date.day(), (target / last).day())} + Ticks{dt.dttime};
      }
    } else if (code == COM_PART_MILLISECOND) {
      const CS_INT rest = count % 1000;
      expected += seconds{count / 1000};
      expected += rest == 999 ? Ticks{299} : Ticks{(rest * 3 + (rest < 0 ? -5 : 5)) / 10};
    } else {
      expected += std::int64_t{count} * (days{kDaysOf[code]} + seconds{kSecondsOf[code]});
    }
    const auto day = floor<days>(expected);
    in_range = in_range && day >= sys_days{1753y / 1 / 1} && day < sys_days{year{10000} / 1 / 1};
    CS_DATETIME sum = dt;
    ASSERT_TRUE(in_range == (com__date_add(code, count, &sum) == 0) &&
                moment_of(sum) == (in_range ? expected : moment_of(dt)) && sum.dttime >= 0 &&
                sum.dttime <= COM_DTTIME_MAX)
        << dt.dtdays << ' ' << dt.dttime << " part " << code << " + " << count;
  }
}

TEST_F(Arithmetic, DifferencesCountEveryBoundary) {
  for (int round = 0; round < 2'000 / kStride; ++round) {
    const CS_DATETIME from = any();
    CS_DATETIME to = any();
    to.dtdays = std::clamp(from.dtdays + uniform(-900, 900), +COM_DTDAYS_MIN, +COM_DTDAYS_MAX);
    const auto [first, last] = std::minmax(from.dtdays, to.dtdays);
    std::int64_t years = 0, quarters = 0, months = 0, weeks = 0;
    for (CS_INT d = first + 1; d <= last; ++d) {
      const year_month_day date = kEpoch + days{d};
      const bool month = date.day() == 1d;
      months += month;
      quarters += month && unsigned{date.month()} % 3 == 1;
      years += month && date.month() == January;
      weeks += weekday{kEpoch + days{d}} == Sunday;
    }
    const auto check = [&](std::int64_t expected, std::initializer_list<CS_INT> codes) {
      const bool fits = expected == static_cast<CS_INT>(expected);
      for (const CS_INT code : codes) {
        CS_INT diff = 0;
        EXPECT_EQ(fits ? 0 : 1, com__datediff(code, &from, &to, &diff)) << code;
        EXPECT_EQ(fits ? expected : 0, diff) << code << ": " << from.dtdays << ' ' << to.dtdays;
      }
    };
    const int sign = to.dtdays < from.dtdays ? -1 : 1;
    check(sign * years, {COM_PART_YEAR, COM_PART_ISOYEAR});
    check(sign * quarters, {COM_PART_QUARTER});
    check(sign * months, {COM_PART_MONTH});
    check(sign * weeks, {COM_PART_WEEK, COM_PART_ISOWEEK});
    check(to.dtdays - from.dtdays,
          {COM_PART_DAY, COM_PART_WEEKDAY, COM_PART_DAYOFYEAR, COM_PART_ISOWEEKDAY});
    const auto crossed = [&]<class Unit>(Unit) {
      return (floor<Unit>(moment_of(to)) - floor<Unit>(moment_of(from))).count();
    };
    check(crossed(hours{}), {COM_PART_HOUR});
    check(crossed(minutes{}), {COM_PART_MINUTE});
    check(crossed(seconds{}), {COM_PART_SECOND});
    check(crossed(milliseconds{}), {COM_PART_MILLISECOND});
  }
}

TEST(AddingBoth, NarrowsAndRefuses) {
  const CS_DATAFMT large = format_of(CS_DATETIME_TYPE), small = format_of(CS_DATETIME4_TYPE);
  const CS_DATAFMT other = format_of(CS_INT_TYPE);
  const CS_DATETIME dt{30, 9000};  // 31 January 1900, 30 seconds past midnight
  CS_DATETIME sum{};
  CS_DATETIME4 narrow{7, 7};
  EXPECT_EQ(0, com__dateadd_both(COM_PART_MONTH, 1, &large, &dt, &large, &sum));
  EXPECT_EQ(1, com__dateadd_both(COM_PART_MONTH, -1, &large, &dt, &small, &narrow)) << "1899";
  EXPECT_EQ(1, com__dateadd_both(COM_PART_DAY, 1, &small, &narrow, &large, &sum));
  EXPECT_EQ(1, com__dateadd_both(COM_PART_DAY, 1, &large, &dt, &other, &sum));
  EXPECT_TRUE(sum.dtdays == 58 && sum.dttime == 9000 && narrow.days == 7) << "28 February";
  EXPECT_EQ(0, com__dateadd_both(COM_PART_MONTH, 1, &large, &dt, &small, &narrow));
  EXPECT_TRUE(narrow.days == 58 && narrow.minutes == 1);
}

TEST(CalendarDeathTest, StopsOnNullAndUnknownParts) {
  CS_DATETIME dt{};
  CS_INT diff;
  const CS_DATAFMT other = format_of(CS_INT_TYPE);
  for (const CS_INT code : {-1, 14}) {
    EXPECT_DEATH(com_datepart(code, &dt, 0), "assertion failed, file 'generic/src/time/");
    EXPECT_DEATH(com__date_add(code, 0, &dt), "assertion failed");
    EXPECT_DEATH(com__datediff(code, &dt, &dt, &diff), "assertion failed");
  }
  EXPECT_DEATH(com__valid_datetime(&other, &dt), "assertion failed");
  EXPECT_DEATH(com_datecrack(&dt, nullptr), "Invalid pointer");
  EXPECT_DEATH(com_datecmp(nullptr, &dt), "Invalid pointer");
}

}  // namespace
