// The calendar against std::chrono: every day, every tick, additions and differences; and what lies
// outside both.
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <random>
#include <string>

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
CS_DATEREC date(CS_INT year, CS_INT month, CS_INT day) {
  return {year, month, day, 0, 0, 0, 0, 0, 0, 0};
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
  const auto start = [](std::int64_t n) {
    return 365 * n + com__leapcnt(static_cast<CS_INT>(n)) + COM_DTDAYS_MIN;
  };
  for (const CS_INT dtdays : {kMin, kMin + 1, -2'000'000'000, -54056, -54055, -53692, -53691,
                              2958464, 2958829, 1'500'000'000, kMax - 1, kMax}) {
    for (const CS_INT dttime : {kMin, -1, 25'920'000, 0x1FFFFFF, 0x2000000, kMax}) {
      const CS_DATETIME dt{dtdays, dttime};
      CS_DATEREC rec{};
      com_datecrack(&dt, &rec);
      com_timecrack(&dt, &rec);
      const std::int64_t n = rec.dateyear - 1753;
      EXPECT_TRUE(start(n) <= dtdays && dtdays < start(n + 1)) << dtdays;
      EXPECT_EQ(dtdays - start(n) + 1, rec.datedyear);
      const auto& month = (leapyear(rec.dateyear - 1753) ? lmonthdays : monthdays)[rec.datemonth];
      EXPECT_EQ(rec.datedyear, month[1] + rec.datedmonth);
      EXPECT_TRUE(rec.datedmonth >= 1 && rec.datedmonth <= month[0]) << dtdays;
      EXPECT_EQ(int(weekday{sys_days{kEpoch + days{dtdays}}}.c_encoding()), rec.datedweek)
          << dtdays;
      EXPECT_EQ((dttime & 0x1FFFFFF) / 1080000, rec.datehour) << dttime;
      for (CS_INT code = 0; code <= 13; ++code) com__datepart(code, &dt, 0);
      EXPECT_EQ(1, com__dttodate4(&dt, nullptr)) << dtdays;
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
  const CS_INT kept = 77;
  const struct {
    const char* label;
    CS_DATEREC rec;
    CS_INT status, dtdays;
  } dates[] = {
      {"first day", date(1753, 0, 1), 0, -53690},  {"year below", date(1752, 12, 1), 1, 0},
      {"year above", date(10000, 0, 0), 1, 0},     {"month above", date(2000, 12, 0), 2, kept},
      {"month below", date(2000, -1, 1), 2, kept}, {"day 0", date(2000, 0, 0), 3, kept},
      {"29 Feb 1900", date(1900, 1, 29), 3, kept}, {"29 Feb 2000", date(2000, 1, 29), 0, 36583},
  };
  for (const auto& row : dates) {
    CS_DATETIME dt{kept, kept};
    EXPECT_EQ(row.status, com__datemake(&dt, &row.rec)) << row.label;
    EXPECT_TRUE(dt.dtdays == row.dtdays && dt.dttime == kept) << row.label;
  }
  const struct {
    const char* label;
    CS_DATEREC rec;
    CS_INT status, dttime;
  } times[] = {
      {"hour", clock(24, 60, 60, 1000), 4, kept},
      {"minute", clock(23, 60, 60, 1000), 5, kept},
      {"second", clock(23, 59, 60, 1000), 6, kept},
      {"millisecond", clock(23, 59, 59, 1000), 7, kept},
      {"last tick", clock(23, 59, 59, 999), 0, 25919999},
      {"negative", clock(-1, 0, 0, -999), 0, -1080300},
      {"lowest", clock(kMin, 0, 0, kMin), 0, -644245094},
  };
  for (const auto& row : times) {
    CS_DATETIME dt{kept, kept};
    EXPECT_EQ(row.status, com__timemake(&dt, &row.rec)) << row.label;
    EXPECT_TRUE(dt.dttime == row.dttime && dt.dtdays == kept) << row.label;
  }
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
  const struct {
    const char* label;
    CS_DATETIME from;
    CS_INT status;
    CS_DATETIME4 to;
  } rows[] = {
      {"29.996 s", {0, 8999}, 0, {0, 0}},
      {"30 s", {0, 9000}, 0, {0, 1}},
      {"carries into the day", {1, 25911000}, 0, {2, 0}},
      {"last minute", {65535, 25910999}, 0, {65535, 1439}},
      {"carries out", {65535, 25911000}, 1, {7, 7}},
      {"before", {-1, 0}, 1, {7, 7}},
      {"behind", {65536, 0}, 1, {7, 7}},
      {"no time of day", {5, kMax}, 1, {7, 7}},
      {"negative time", {5, kMin}, 1, {7, 7}},
  };
  for (const auto& row : rows) {
    CS_DATETIME4 to{7, 7};
    EXPECT_EQ(row.status, com__dttodate4(&row.from, &to)) << row.label;
    EXPECT_EQ(0, com_date4cmp(&row.to, &to)) << row.label;
  }
  const CS_DATAFMT large = format_of(CS_DATETIME_TYPE), small = format_of(CS_DATETIME4_TYPE);
  const CS_DATETIME good[] = {{COM_DTDAYS_MIN, 0}, {COM_DTDAYS_MAX, COM_DTTIME_MAX}};
  const CS_DATETIME bad[] = {
      {COM_DTDAYS_MIN - 1, 0}, {COM_DTDAYS_MAX + 1, 0}, {0, -1}, {0, 25920000}};
  const CS_DATETIME4 last{65535, 1439}, no_time{0, 1440};
  for (const auto& dt : good) EXPECT_NE(0, com__valid_datetime(&large, &dt));
  for (const auto& dt : bad) EXPECT_EQ(0, com__valid_datetime(&large, &dt));
  EXPECT_NE(0, com__valid_datetime(&small, &last));
  EXPECT_EQ(0, com__valid_datetime(&small, &no_time));
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
    const Ticks time{dt.dttime};
    auto expected = moment_of(dt);
    bool in_range = true;
    if (kMonthsOf[code] != 0) {
      const year_month_day date{day_of(dt)};
      const auto month = (int{date.year()} * 12LL + unsigned{date.month()} - 1) +
                         std::int64_t{count} * kMonthsOf[code];
      in_range = month >= 1753 * 12 && month < 10000 * 12;
      if (in_range) {
        const year_month target =
            year{int(month / 12)} / std::chrono::month(unsigned(month % 12 + 1));
        const auto last = (target / last_spec{}).day();
        expected = sys_days{target / std::min(date.day(), last)} + time;
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
    ASSERT_EQ(in_range, com__date_add(code, count, &sum) == 0)
        << dt.dtdays << ' ' << dt.dttime << " part " << code << " + " << count;
    ASSERT_EQ((in_range ? expected : moment_of(dt)).time_since_epoch().count(),
              moment_of(sum).time_since_epoch().count())
        << dt.dtdays << ' ' << dt.dttime << " part " << code << " + " << count;
    ASSERT_TRUE(sum.dttime >= 0 && sum.dttime <= COM_DTTIME_MAX);
  }
}

TEST_F(Arithmetic, DifferencesCountEveryBoundary) {
  for (int round = 0; round < 2'000 / kStride; ++round) {
    const CS_DATETIME from = any();
    CS_DATETIME to = any();
    to.dtdays = std::clamp(from.dtdays + uniform(-900, 900), +COM_DTDAYS_MIN, +COM_DTDAYS_MAX);
    const int sign = to.dtdays < from.dtdays ? -1 : 1;
    CS_INT years = 0, quarters = 0, months = 0, weeks = 0;
    for (CS_INT d = std::min(from.dtdays, to.dtdays) + 1; d <= std::max(from.dtdays, to.dtdays);
         ++d) {
      const sys_days day = kEpoch + days{d};
      const year_month_day date = day;
      const bool month = date.day() == 1d;
      months += month ? sign : 0;
      quarters += month && unsigned{date.month()} % 3 == 1 ? sign : 0;
      years += month && date.month() == January ? sign : 0;
      weeks += weekday{day} == Sunday ? sign : 0;
    }
    const CS_INT day_count = to.dtdays - from.dtdays;
    const auto crossed = [&](auto unit) {
      using Unit = decltype(unit);
      return (floor<Unit>(moment_of(to)) - floor<Unit>(moment_of(from))).count();
    };
    const std::int64_t expected[14] = {years,
                                       quarters,
                                       months,
                                       day_count,
                                       day_count,
                                       day_count,
                                       crossed(hours{}),
                                       crossed(minutes{}),
                                       crossed(seconds{}),
                                       crossed(milliseconds{}),
                                       weeks,
                                       years,
                                       weeks,
                                       day_count};
    for (CS_INT code = 0; code <= 13; ++code) {
      const bool fits = expected[code] == static_cast<CS_INT>(expected[code]);
      CS_INT diff = 0;
      ASSERT_EQ(fits ? 0 : 1, com__datediff(code, &from, &to, &diff)) << code;
      ASSERT_EQ(fits ? expected[code] : 0, diff) << code << ": " << from.dtdays << ' ' << to.dtdays;
    }
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
