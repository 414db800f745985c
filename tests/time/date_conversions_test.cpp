// The conversions from both datetime sizes, as a host calls them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "comnlib.h"

namespace {

constexpr CS_DATETIME kAfternoon{46205, 16292775};  // 4 July 2026, 15:05:09.250
constexpr CS_DATETIME4 kSmall{46205, 905};

struct Outcome {
  CS_RETCODE code;
  CS_INT length;
  std::string bytes;  // the destination, 300 bytes of '#' beforehand
};

template <class Value>
Outcome convert(CS_CONV_FUNC routine, const Value& value, CS_INT desttype, CS_INT maxlength = 300,
                CS_INT format = 0) {
  CS_CONTEXT context{};
  CS_DATAFMT from{}, to{};
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

TEST(DateConversions, BetweenTheSizes) {
  const Outcome same = convert(comn_datetodate, kAfternoon, CS_DATETIME_TYPE);
  EXPECT_EQ(CS_SUCCEED, same.code);
  EXPECT_EQ(raw(kAfternoon) + "#", same.bytes.substr(0, 9));
  EXPECT_EQ(8, same.length);
  const Outcome narrow = convert(comn_datetodate4, kAfternoon, CS_DATETIME4_TYPE, 0);
  EXPECT_EQ(CS_SUCCEED, narrow.code);
  EXPECT_EQ(raw(kSmall) + "#", narrow.bytes.substr(0, 5));
  EXPECT_EQ(4, narrow.length);
  const Outcome wide = convert(comn_date4todate, kSmall, CS_DATETIME_TYPE);
  EXPECT_EQ(raw(CS_DATETIME{46205, 905 * 18000}) + "#", wide.bytes.substr(0, 9));
  EXPECT_EQ(8, wide.length);
  EXPECT_EQ(raw(kSmall) + "#",
            convert(comn_date4todate4, kSmall, CS_DATETIME4_TYPE).bytes.substr(0, 5));
  const Outcome late = convert(comn_datetodate4, CS_DATETIME{65535, 25911000}, CS_DATETIME4_TYPE);
  EXPECT_EQ(CS_CVT_OVERFLOW, late.code);
  EXPECT_EQ(0, late.length);
  EXPECT_EQ('#', late.bytes[0]);
}

TEST(DateConversions, ToText) {
  const struct {
    const char* label;
    CS_INT datatype, maxlength, format;
    CS_RETCODE code;
    CS_INT length;
    std::string bytes;
  } rows[] = {
      {"fits", CS_CHAR_TYPE, 19, 0, CS_SUCCEED, 19, "Jul  4 2026  3:05PM#"},
      {"terminated", CS_TEXT_TYPE, 20, 1, CS_SUCCEED, 20, {"Jul  4 2026  3:05PM\0#", 21}},
      {"padded", CS_BOUNDARY_TYPE, 21, 4, CS_SUCCEED, 21, "Jul  4 2026  3:05PM  #"},
      {"no room for the NUL", CS_CHAR_TYPE, 19, 1, CS_CVT_OVERFLOW, 2, {"*\0#", 3}},
      {"star", CS_LONGCHAR_TYPE, 18, 0, CS_CVT_OVERFLOW, 1, {"*\0#", 3}},
      {"no room for a star", CS_SENSITIVITY_TYPE, 1, 0, CS_CVT_OVERFLOW, 1, "#"},
      {"both paddings", CS_CHAR_TYPE, 30, 6, CS_CVT_FORMAT, 19, "Jul  4 2026  3:05PM#"},
  };
  for (const auto& row : rows) {
    for (const Outcome& result :
         {convert(comn_datetochar, kAfternoon, row.datatype, row.maxlength, row.format),
          convert(comn_date4tochar, kSmall, row.datatype, row.maxlength, row.format)}) {
      EXPECT_EQ(row.code, result.code) << row.label;
      EXPECT_EQ(row.length, result.length) << row.label;
      EXPECT_EQ(row.bytes, result.bytes.substr(0, row.bytes.size())) << row.label;
    }
  }
  const std::string record{"\x13\0Jul  4 2026  3:05PM\0#", 23};
  for (const Outcome& result : {convert(comn_datetovarchar, kAfternoon, CS_VARCHAR_TYPE, 3),
                                convert(comn_date4tovarchar, kSmall, CS_VARCHAR_TYPE, 3)}) {
    EXPECT_EQ(CS_SUCCEED, result.code);
    EXPECT_EQ(258, result.length);
    EXPECT_EQ(record, result.bytes.substr(0, record.size()));
  }
  const Outcome never = convert(comn_datetochar, CS_DATETIME{3000000, 0}, CS_CHAR_TYPE);
  EXPECT_EQ(CS_CVT_DOMAIN, never.code);
  EXPECT_EQ(0, never.length);
  EXPECT_EQ('#', never.bytes[0]);
  const Outcome record_never =
      convert(comn_datetovarchar, CS_DATETIME{3000000, 0}, CS_VARCHAR_TYPE);
  EXPECT_EQ(CS_CVT_DOMAIN, record_never.code);
  EXPECT_EQ(258, record_never.length);
  EXPECT_EQ(std::string(2, '\0'), record_never.bytes.substr(0, 2));
}

TEST(DateConversions, ToBytes) {
  const Outcome cut = convert(comn_datetobin, kAfternoon, CS_BINARY_TYPE, 5);
  EXPECT_EQ(CS_CVT_TRUNCATED, cut.code);
  EXPECT_EQ(raw(kAfternoon).substr(0, 5) + "#", cut.bytes.substr(0, 6));
  const Outcome padded = convert(comn_date4tobin, kSmall, CS_IMAGE_TYPE, 6, CS_DFMT_PADNULL);
  EXPECT_EQ(6, padded.length);
  EXPECT_EQ(raw(kSmall) + std::string("\0\0#", 3), padded.bytes.substr(0, 7));
  EXPECT_EQ(std::string("\x08\0", 2) + raw(kAfternoon),
            convert(comn_datetovarbin, kAfternoon, CS_VARBINARY_TYPE).bytes.substr(0, 10));
  EXPECT_EQ(258, convert(comn_date4tovarbin, kSmall, CS_VARBINARY_TYPE).length);
}

TEST(DateConversions, TellTheStyle) {
  for (const CS_INT datatype : {CS_CHAR_TYPE, CS_VARCHAR_TYPE, CS_UNICHAR_TYPE}) {
    const Outcome result = convert(comn_get_datetochar_fmt, kSmall, datatype, 0);
    EXPECT_EQ(CS_SUCCEED, result.code);
    EXPECT_EQ(4, result.length);
    EXPECT_EQ(raw(CS_INT{COM_DATESTYLE_DEFAULT}) + "#", result.bytes.substr(0, 5));
  }
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
