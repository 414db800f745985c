// The conversions from both datetime sizes, as a host calls them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "comnlib.h"
#include "intl/locdata.h"

namespace {

constexpr CS_DATETIME kAfternoon{46205, 16292775};  // 4 July 2026, 15:05:09.250
constexpr CS_DATETIME4 kSmall{46205, 905};

struct Outcome {
  CS_RETCODE code;
  CS_INT length;
  std::string bytes;  // the destination, 300 bytes of '#' beforehand
};

struct Locales {
  CS_LOCALE* context = nullptr;
  CS_LOCALE* destination = nullptr;
};

template <class Value>
Outcome convert(CS_CONV_FUNC routine, const Value& value, CS_INT desttype, CS_INT maxlength = 300,
                CS_INT format = 0, const Locales& locales = {}) {
  CS_CONTEXT context{};
  CS_DATAFMT from{}, to{};
  context.ctxlocale = locales.context;
  to.locale = locales.destination;
  from.datatype = sizeof(Value) == 8 ? CS_DATETIME_TYPE : CS_DATETIME4_TYPE;
  to.datatype = desttype;
  to.maxlength = maxlength;
  to.format = format;
  // Values stand at any address in a row buffer.
  char source[sizeof value + 1];
  std::memcpy(source + 1, &value, sizeof value);
  Outcome result{0, -7, std::string(301, '#')};
  result.code = routine(&context, &from, source + 1, &to, result.bytes.data() + 1, &result.length);
  result.bytes.erase(0, 1);
  return result;
}

template <class T>
std::string raw(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// The bytes that were written, and one behind them that was not.
void expect(const Outcome& result, CS_RETCODE code, CS_INT length, const std::string& bytes) {
  EXPECT_EQ(code, result.code) << bytes;
  EXPECT_EQ(length, result.length) << bytes;
  EXPECT_EQ(bytes + '#', result.bytes.substr(0, bytes.size() + 1));
}

TEST(DateConversions, BetweenTheSizes) {
  expect(convert(comn_datetodate, kAfternoon, CS_DATETIME_TYPE), CS_SUCCEED, 8, raw(kAfternoon));
  expect(convert(comn_datetodate4, kAfternoon, CS_DATETIME4_TYPE, 0), CS_SUCCEED, 4, raw(kSmall));
  expect(convert(comn_date4todate, kSmall, CS_DATETIME_TYPE), CS_SUCCEED, 8,
         raw(CS_DATETIME{46205, 905 * 18000}));
  expect(convert(comn_date4todate4, kSmall, CS_DATETIME4_TYPE), CS_SUCCEED, 4, raw(kSmall));
  expect(convert(comn_datetodate4, CS_DATETIME{65535, 25911000}, CS_DATETIME4_TYPE),
         CS_CVT_OVERFLOW, 0, "");
}

TEST(DateConversions, ToText) {
  const std::string text = "Jul  4 2026  3:05PM";
  const struct {
    CS_INT datatype, maxlength, format;
    CS_RETCODE code;
    CS_INT length;
    std::string bytes;
  } rows[] = {
      {CS_CHAR_TYPE, 19, 0, CS_SUCCEED, 19, text},
      {CS_TEXT_TYPE, 20, CS_DFMT_NULLTERM, CS_SUCCEED, 20, text + '\0'},
      {CS_BOUNDARY_TYPE, 21, CS_DFMT_PADBLANK, CS_SUCCEED, 21, text + "  "},
      {CS_CHAR_TYPE, 19, CS_DFMT_NULLTERM, CS_CVT_OVERFLOW, 2, {"*\0", 2}},
      {CS_LONGCHAR_TYPE, 18, 0, CS_CVT_OVERFLOW, 1, {"*\0", 2}},
      {CS_SENSITIVITY_TYPE, 1, 0, CS_CVT_OVERFLOW, 1, ""},
      {CS_CHAR_TYPE, 30, CS_DFMT_PADNULL | CS_DFMT_PADBLANK, CS_CVT_FORMAT, 19, text},
  };
  for (const auto& row : rows) {
    expect(convert(comn_datetochar, kAfternoon, row.datatype, row.maxlength, row.format), row.code,
           row.length, row.bytes);
    expect(convert(comn_date4tochar, kSmall, row.datatype, row.maxlength, row.format), row.code,
           row.length, row.bytes);
  }
  const std::string record = std::string("\x13\0", 2) + text + '\0';
  expect(convert(comn_datetovarchar, kAfternoon, CS_VARCHAR_TYPE, 3), CS_SUCCEED, 258, record);
  expect(convert(comn_date4tovarchar, kSmall, CS_VARCHAR_TYPE, 3), CS_SUCCEED, 258, record);
  const CS_DATETIME never{3000000, 0};
  expect(convert(comn_datetochar, never, CS_CHAR_TYPE), CS_CVT_DOMAIN, 0, "");
  expect(convert(comn_datetovarchar, never, CS_VARCHAR_TYPE), CS_CVT_DOMAIN, 258,
         std::string(3, '\0'));
}

TEST(DateConversions, ToBytes) {
  expect(convert(comn_datetobin, kAfternoon, CS_BINARY_TYPE, 5), CS_CVT_TRUNCATED, 5,
         raw(kAfternoon).substr(0, 5));
  expect(convert(comn_date4tobin, kSmall, CS_IMAGE_TYPE, 6, CS_DFMT_PADNULL), CS_SUCCEED, 6,
         raw(kSmall) + std::string(2, '\0'));
  expect(convert(comn_datetovarbin, kAfternoon, CS_VARBINARY_TYPE), CS_SUCCEED, 258,
         std::string("\x08\0", 2) + raw(kAfternoon));
  expect(convert(comn_date4tovarbin, kSmall, CS_VARBINARY_TYPE), CS_SUCCEED, 258,
         std::string("\x04\0", 2) + raw(kSmall));
}

TEST(DateConversions, TellTheStyle) {
  for (const CS_INT datatype : {CS_CHAR_TYPE, CS_VARCHAR_TYPE, CS_UNICHAR_TYPE})
    expect(convert(comn_get_datetochar_fmt, kSmall, datatype, 0), CS_SUCCEED, 4,
           raw(CS_INT{COM_DATESTYLE_DEFAULT}));
}

TEST(DateConversions, FollowTheDestinationsLocaleOrElseTheContexts) {
  CsDateInfo iso{}, odd{};
  iso.conventions = odd.conventions = comnlib::kUsEnglish;
  iso.conventions.style = COM_DATESTYLE_ISO;
  odd.conventions.style = 9;
  CsLocCache entries[3] = {};
  CS_LOCALE locales[4] = {};
  for (int i = 0; i < 3; ++i) locales[i].timeptr = &entries[i];
  entries[0].locdateinfo = &iso;
  entries[1].locdateinfo = &odd;
  CS_LOCALE *const in_iso = &locales[0], *const in_odd = &locales[1];
  const std::string iso_text = "2026-07-04T15:05:00.000", text = "Jul  4 2026  3:05PM";
  for (const Locales& use : {Locales{in_iso, nullptr}, Locales{in_odd, in_iso}}) {
    expect(convert(comn_date4tochar, kSmall, CS_CHAR_TYPE, 300, 0, use), CS_SUCCEED, 23, iso_text);
    expect(convert(comn_get_datetochar_fmt, kSmall, CS_CHAR_TYPE, 300, 0, use), CS_SUCCEED, 4,
           raw(CS_INT{COM_DATESTYLE_ISO}));
  }
  for (CS_LOCALE* nothing_loaded : {&locales[2], &locales[3]})
    expect(convert(comn_date4tochar, kSmall, CS_CHAR_TYPE, 300, 0, {in_iso, nothing_loaded}),
           CS_SUCCEED, 19, text);
  expect(convert(comn_date4tochar, kSmall, CS_CHAR_TYPE, 300, 0, {in_odd}), CS_CVT_STYLE, 0, "");
  expect(convert(comn_get_datetochar_fmt, kSmall, CS_CHAR_TYPE, 300, 0, {in_odd}), CS_CVT_STYLE, 4,
         raw(CS_INT{9}));
}

TEST(DateConversions, UnicodeKeepsTheNamesOfTheLocale) {
  CsDateInfo french{};
  french.conventions = comnlib::kUsEnglish;
  french.conventions.short_months[6] = "juil\xE9";
  french.conventions.order = comnlib::DateOrder::day_month_year;
  CsLocCache entry{};
  entry.locdateinfo = &french;
  CS_LOCALE locale{};
  locale.timeptr = &entry;
  const Locales use{nullptr, &locale};
  const std::u16string text = u" 4 juil\u00E9 2026  3:05PM";
  const std::string bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
  const auto length = static_cast<CS_INT>(bytes.size());
  expect(convert(comn_datetimetounichar, kAfternoon, CS_UNICHAR_TYPE, 300, 0, use), CS_SUCCEED,
         length, bytes);
  expect(convert(comn_date4tounichar, kSmall, CS_UNICHAR_TYPE, length - 1, 0, use), CS_CVT_OVERFLOW,
         2, {"*\0\0\0", 4});

  CS_CONTEXT context{};
  CS_DATAFMT from{}, to{};
  from.datatype = CS_UNICHAR_TYPE;
  from.maxlength = length;
  from.locale = &locale;
  to.datatype = CS_DATETIME4_TYPE;
  CS_DATETIME4 again{};
  CS_INT written = 0;
  EXPECT_EQ(CS_SUCCEED, comn_unichartodate4(&context, &from, text.data(), &to, &again, &written));
  EXPECT_EQ(raw(kSmall), raw(again));
}

TEST(DateConversionsDeathTest, StopsOnWrongDatatypes) {
  const char* const place = "assertion failed, file 'generic/src/conv/com_dat";
  EXPECT_DEATH(convert(comn_datetodate, kSmall, CS_DATETIME_TYPE), place);
  EXPECT_DEATH(convert(comn_date4todate, kSmall, CS_DATETIME4_TYPE), place);
  EXPECT_DEATH(convert(comn_datetochar, kAfternoon, CS_VARCHAR_TYPE), place);
  EXPECT_DEATH(convert(comn_datetovarchar, kAfternoon, CS_CHAR_TYPE), place);
  EXPECT_DEATH(convert(comn_datetobin, kAfternoon, CS_VARBINARY_TYPE), place);
  EXPECT_DEATH(convert(comn_date4tovarbin, kSmall, CS_BINARY_TYPE), place);
  EXPECT_DEATH(convert(comn_get_datetochar_fmt, kSmall, CS_INT_TYPE), place);
  CS_DATAFMT format{};
  CS_INT length;
  EXPECT_DEATH(comn_datetochar(nullptr, &format, &format, &format, &format, &length),
               "Invalid pointer 0x0, file 'generic/src/conv/com_date.cpp'");
}

}  // namespace
