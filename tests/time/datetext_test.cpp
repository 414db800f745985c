// Datetime text: what is accepted, refused and written. That each reads the other is fuzzed.
#include "time/datetext.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "support/stride.h"
#include "support/table.h"
#include "time/datetime.h"

namespace comnlib {
namespace {

constexpr auto kFrench = [] {
  DateConventions french = kUsEnglish;
  french.months[0] = french.short_months[0] = "1\xB0 mois";
  french.months[1] = "f\xE9vrier";
  french.short_months[1] = "f\xE9vr.";
  french.am = "am";
  french.pm = "apr\xE8s";
  french.order = DateOrder::day_month_year;
  french.style = COM_DATESTYLE_LONG;
  return french;
}();

// A locale of 24 hours has no texts for the halves of the day.
constexpr auto kAllDay = [] {
  DateConventions conventions = kUsEnglish;
  conventions.am = conventions.pm = "";
  return conventions;
}();

constexpr DateConventions with(DateOrder order, CS_INT style = COM_DATESTYLE_DEFAULT) {
  DateConventions conventions = kUsEnglish;
  conventions.order = order;
  conventions.style = style;
  return conventions;
}

const std::map<std::string, DateConventions> kConventions = {
    {"", kUsEnglish},
    {"french", kFrench},
    {"24_hours", kAllDay},
    {"year_month_day", with(DateOrder::year_month_day)},
    {"year_day_month", with(DateOrder::year_day_month)},
    {"month_year_day", with(DateOrder::month_year_day)},
    {"day_month_year", with(DateOrder::day_month_year)},
    {"day_year_month", with(DateOrder::day_year_month)}};

std::string written(const CS_DATETIME& dt, const DateConventions& conventions) {
  char room[kDateTextRoom];
  const FormattedDate result = format_datetime(dt, conventions, room);
  if (result.status == DateText::style) return "style";
  if (result.status == DateText::domain) return "domain";
  return {room, result.length};
}

std::string read(const std::string& text, const DateConventions& conventions) {
  const ParsedDate result = parse_datetime(text, conventions);
  if (result.status == DateText::syntax) return "syntax";
  if (result.status == DateText::out_of_range) return "overflow";
  return written(result.value, with(DateOrder::month_day_year, COM_DATESTYLE_ISO));
}

TEST(DateText, ReadsTheAcceptedForms) {
  table::for_each_line("time/data/dates.txt", [](const table::Fields& line) {
    EXPECT_EQ(line[2], read(table::text_of(line[0]), kConventions.at(line[1])));
  });
}

// Names that look like other parts of a date, or like each other.
constexpr auto kOddNames = [] {
  DateConventions odd = kUsEnglish;
  odd.months[1] = "20240229";
  odd.months[2] = "Jul  4";
  odd.months[3] = odd.short_months[5] = "May";
  odd.short_months[8] = "[a~";
  return odd;
}();

// The paths of known layouts against the general reader, to which a blank in front leads.
TEST(DateText, ReadsKnownLayoutsLikeAllOtherText) {
  for (const std::string good :
       {"2024-02-29T15:05:09.250", "1999-12-31 23:59:59", "Jul  4 2026  3:05PM",
        "May 31 1999 12:59am", "2024-02-29 ", "20240229  ", "May  9 1999", "Jul  4 2026   "}) {
    EXPECT_EQ(DateText::done, parse_datetime(good, kUsEnglish).status);
    for (const auto* conventions : {&kUsEnglish, &kFrench, &kAllDay, &kOddNames}) {
      for (std::size_t at = 0; at < good.size(); ++at) {
        for (int byte = 0; byte < 256; byte += stride::between_values()) {
          std::string text = good;
          text[at] = static_cast<char>(byte);
          const ParsedDate fast = parse_datetime(text, *conventions);
          const ParsedDate slow = parse_datetime(' ' + text, *conventions);
          EXPECT_EQ(fast.status, slow.status) << text;
          EXPECT_EQ(0, com__datecmp(&fast.value, &slow.value)) << text;
        }
      }
    }
  }
}

TEST(DateText, WritesEachStyle) {
  table::for_each_line("time/data/written_dates.txt", [](const table::Fields& line) {
    const CS_DATETIME value{table::number(line[0]), table::number(line[1])};
    DateConventions conventions = kConventions.at(line[2]);
    if (!line[3].empty()) conventions.style = table::number(line[3]);
    EXPECT_EQ(table::text_of(line[4]), written(value, conventions));
  });
  const std::string name(kDateTextRoom, 'x');
  for (const std::string_view month : {"", name.c_str()}) {
    DateConventions conventions = kUsEnglish;
    conventions.short_months[0] = month;
    EXPECT_EQ("style", written({}, conventions)) << month;
  }
  char room[19];
  EXPECT_EQ(DateText::done, format_datetime({}, kUsEnglish, room).status);
  EXPECT_EQ(DateText::style, format_datetime({}, kUsEnglish, std::span(room, 18)).status);
}

// The public calls that no locale changes.
TEST(DateText, WhateverTheLocale) {
  using Text = std::tuple<CS_RETCODE, CS_INT, std::string>;  // with its length
  using Days = std::pair<CS_RETCODE, CS_INT>;
  const CS_DATETIME value{46205, 16292775}, never{COM_DTDAYS_MAX + 1, 0};
  const auto text_of = [](const CS_DATETIME& date, CS_INT style, CS_INT room) {
    std::string buffer(31, '#');
    CS_INT length = -1;
    const CS_RETCODE code = comn_datetime_text(&date, style, buffer.data(), room, &length);
    buffer.erase(buffer.find_last_not_of('#') + 1);
    return Text(code, length, buffer);
  };
  const std::string iso = "2026-07-04T15:05:09.250", plain = "Jul  4 2026  3:05PM";
  for (CS_INT room = 0; room <= 30; ++room) {
    const std::string ended = room > 23 ? iso + '\0' : iso;
    const Text fits(CS_SUCCEED, 23, ended), too_long(CS_CVT_OVERFLOW, 0, "");
    EXPECT_EQ(room < 23 ? too_long : fits, text_of(value, COM_DATESTYLE_ISO, room)) << room;
  }
  EXPECT_EQ(Text(CS_SUCCEED, 19, plain + '\0'), text_of(value, COM_DATESTYLE_DEFAULT, 30));
  EXPECT_EQ(Text(CS_CVT_STYLE, 0, ""), text_of(value, 3, 30));
  EXPECT_EQ(Text(CS_CVT_DOMAIN, 0, ""), text_of(never, COM_DATESTYLE_ISO, 30));

  const auto days_of = [](const char* text, CS_INT length = CS_NULLTERM) {
    CS_DATETIME date{7, 7};
    const CS_RETCODE code = comn_datetime_parse(text, length, &date);
    return Days(code, date.dtdays);
  };
  EXPECT_EQ(Days(CS_SUCCEED, 46205), days_of("2026-07-04T15:05:09.250"));
  EXPECT_EQ(Days(CS_SUCCEED, 46205), days_of("2026-07-04xxx", 10));
  EXPECT_EQ(Days(CS_SUCCEED, 46205), days_of("7/4/2026"));
  EXPECT_EQ(Days(CS_CVT_SYNTAX, 0), days_of("2026-07-04T"));
  EXPECT_EQ(Days(CS_CVT_OVERFLOW, 0), days_of("2026-02-29"));
  EXPECT_DEATH(days_of("x", -1), "assertion");
  EXPECT_DEATH(text_of(value, 0, -1), "assertion");
}

}  // namespace
}  // namespace comnlib
