// What every kind of source becomes: in destinations of every kind, at the edges of their ranges,
// rooms and formats.
#include <cmath>
#include <limits>

#include "comnlib/datetime.h"
#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "conv/conversion.h"
#include "conv/newutils.h"
#include "conv/textcopy.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

constexpr CS_INT kTerm = CS_DFMT_NULLTERM, kNulls = CS_DFMT_PADNULL, kBlanks = CS_DFMT_PADBLANK;
constexpr CS_INT kQuotes = CS_DFMT_ESCQUOTE;
constexpr CS_RETCODE kDone = CS_SUCCEED, kOver = CS_CVT_OVERFLOW, kCut = CS_CVT_TRUNCATED;
constexpr CS_RETCODE kDomain = CS_CVT_DOMAIN;

using Padding = CS_RETCODE (*)(CS_INT, const CS_DATAFMT*, CS_VOID*, CS_INT*);

using Placed = std::pair<CS_RETCODE, std::string>;

// What a padding makes of a text that counts as `n` bytes.
Placed padded(Padding pad, const std::string& text, CS_INT room, CS_INT format, CS_INT n = -1) {
  std::string buffer = text + std::string(20, '#');
  const CS_DATAFMT to = format_of(CS_CHAR_TYPE, room, format);
  auto length = static_cast<CS_INT>(text.size());
  const CS_RETCODE code = pad(n < 0 ? length : n, &to, buffer.data(), &length);
  const auto size = static_cast<std::size_t>(length);
  const std::size_t end = std::max(size, text.size());
  EXPECT_EQ(std::string(buffer.size() - end, '#'), buffer.substr(end));
  return {code, buffer.substr(0, size)};
}

TEST(Padding, FollowsTheFormat) {
  const Padding chars = comn__padchar, bytes = comn__padbin, units = comn__padunichar;
  EXPECT_EQ(Placed(kDone, "abc  \0"s), padded(chars, "abc", 6, kBlanks | kTerm));
  EXPECT_EQ(Placed(kDone, "abc\0\0"s), padded(chars, "abc", 5, kNulls | kTerm));
  EXPECT_EQ(Placed(kDone, "abc\0"s), padded(chars, "abc", 4, kTerm));
  EXPECT_EQ(Placed(kDone, "abc"), padded(chars, "abc", 3, kBlanks));
  EXPECT_EQ(Placed(kOver, "ab\0"s), padded(chars, "abc", 3, kTerm));
  EXPECT_EQ(Placed(CS_CVT_FORMAT, "abc"), padded(chars, "abc", 6, kBlanks | kNulls));
  EXPECT_EQ(Placed(kOver, "ab\0"s), padded(chars, "abc", 3, kBlanks | kNulls | kTerm));
  EXPECT_EQ(Placed(kOver, "abc"), padded(chars, "abc", 3, kBlanks, 4));
  EXPECT_EQ(Placed(kDone, "abc  "), padded(chars, "abc", 5, kBlanks, 1));
  EXPECT_EQ(Placed(kOver, ""), padded(chars, "", 0, kTerm));
  EXPECT_EQ(Placed(kDone, "abc\0\0"s), padded(bytes, "abc", 5, kNulls | kBlanks | kTerm));
  EXPECT_EQ(Placed(kDone, "abc"), padded(bytes, "abc", 5, kBlanks | kTerm));
  EXPECT_EQ(Placed(kDone, "a\0 \0 \0"s), padded(units, "a\0"s, 7, kBlanks));
  EXPECT_EQ(Placed(kDone, "a\0\0\0"s), padded(units, "a\0"s, 4, kTerm));
  EXPECT_EQ(Placed(kDone, "a\0\0\0"s), padded(units, "a", 4, kTerm)) << "half a unit";
  EXPECT_EQ(Placed(kOver, "\0\0"s), padded(units, "a\0"s, 3, kTerm)) << "half a NUL";
}

CS_DATAFMT to(CS_INT type, CS_INT room = 8, CS_INT format = 0) {
  return format_of(type, room, format);
}

CS_DATAFMT sized(CS_INT precision, CS_INT scale) {
  return numeric_format(precision, scale);
}

CS_DATAFMT decimals(CS_INT precision) {
  CS_DATAFMT format = to(CS_CHAR_TYPE, 10);
  format.precision = precision;
  return format;
}

Encoded money4(CS_INT units) {
  return value_of(CS_MONEY4_TYPE, CS_MONEY4{units});
}

Encoded money(std::int64_t units) {
  const CS_MONEY value{static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
  return value_of(CS_MONEY_TYPE, value);
}

// The numeric that a text makes, of the size that it needs or of another one.
Encoded exact(const std::string& text, CS_INT precision = CS_USE_SRCVALUE,
              CS_INT scale = CS_USE_SRCVALUE) {
  Context context;
  const Encoded source = text_as(CS_CHAR_TYPE, text);
  std::string bytes = convert(context, source, numeric_format(precision, scale)).text();
  bytes.resize(sizeof(CS_NUMERIC));
  return {format_of(CS_NUMERIC_TYPE), bytes};
}

// The same value as each datatype holds it that is converted alike.
std::vector<Encoded> alike(const Encoded& source) {
  const std::string& bytes = source.bytes;
  CS_MONEY4 amount{};
  CS_DATETIME4 date{};
  switch (source.format.datatype) {
    case CS_DATETIME4_TYPE:
      std::memcpy(&date, bytes.data(), sizeof date);
      return {source, value_of(CS_DATETIME_TYPE, CS_DATETIME{date.days, 18000 * date.minutes})};
    case CS_MONEY4_TYPE:
      std::memcpy(&amount, bytes.data(), sizeof amount);
      return {source, money(amount.mny4)};
    case CS_BINARY_TYPE:
      return {source, text_as(CS_VARBINARY_TYPE, bytes)};
    case CS_CHAR_TYPE:
      return {source, text_as(CS_VARCHAR_TYPE, bytes)};
    default:
      return {source};
  }
}

// With the members for which the matrix has no cell. A text goes alike into other character types.
void check_rows(const std::vector<Row>& rows) {
  Context context;
  com_conv_install(&context, CS_NUMERIC_TYPE, CS_LONG_TYPE, comn_numtoi8);
  com_conv_install(&context, CS_MONEY_TYPE, CS_LONG_TYPE, comn_moneytoi8);
  com_conv_install(&context, CS_MONEY4_TYPE, CS_LONG_TYPE, comn_mny4toi8);
  com_conv_install(&context, CS_DATETIME_TYPE, CS_BINARY_TYPE, comn_datetobin);
  com_conv_install(&context, CS_DATETIME4_TYPE, CS_BINARY_TYPE, comn_date4tobin);
  for (Row row : rows) {
    const bool text = row.source.format.datatype == CS_CHAR_TYPE && row.to.datatype == CS_CHAR_TYPE;
    for (const Encoded& source : alike(row.source)) {
      row.source = source;
      check(context, row);
      if (!text) continue;
      for (const CS_INT type : {CS_TEXT_TYPE, CS_SENSITIVITY_TYPE, CS_CHAR_TYPE}) {
        row.to.datatype = type;
        check(context, row);
      }
    }
  }
}

TEST(Placement, OfEveryKindOfSource) {
  const Encoded number = value_of(CS_INT_TYPE, -12345), letters = value_of(CS_INT_TYPE, 0x41424344);
  const Encoded digit = value_of(CS_INT_TYPE, 7), bit = value_of(CS_BIT_TYPE, CS_BIT{1});
  const Encoded price = money4(12345678), zero = exact("0", 77, 40);
  const Encoded date = value_of(CS_DATETIME4_TYPE, CS_DATETIME4{46205, 905});
  const Encoded never = value_of(CS_DATETIME_TYPE, CS_DATETIME{3000000, 0});
  const Encoded bytes = text_as(CS_BINARY_TYPE, "\0\x1F\xAB"s), text = text_as(CS_CHAR_TYPE, "abc");
  const Encoded quoted = text_as(CS_CHAR_TYPE, "it's"), two = text_as(CS_CHAR_TYPE, "''");
  const Encoded ended = text_as(CS_CHAR_TYPE, "it's\0tail"s);
  const Encoded hex = text_as(CS_LONGCHAR_TYPE, std::string(600, 'a'));
  const Encoded many = text_as(CS_IMAGE_TYPE, std::string(257, '\xAA'));
  const std::string day = "Jul  4 2026  3:05PM", full(256, '\xAA');
  check_rows({
      // Numbers become "*".
      {number, to(CS_CHAR_TYPE, 6, kTerm), kOver, "*\0"s},
      {number, to(CS_LONGCHAR_TYPE, 7, kTerm), kDone, "-12345\0"s},
      {number, to(CS_TEXT_TYPE, 8, kBlanks), kDone, "-12345  "},
      {number, to(CS_CHAR_TYPE, 5), kOver, "*\0"s, 1},
      {number, to(CS_CHAR_TYPE, 5, kBlanks), kOver, "*    "},
      {number, to(CS_CHAR_TYPE, 5, kBlanks | kNulls), kOver, "*\0"s, 1},
      {number, to(CS_CHAR_TYPE, 2, kNulls), kOver, "*\0"s},
      {number, to(CS_CHAR_TYPE, 1, kBlanks), kOver, "", 1},
      {digit, to(CS_CHAR_TYPE, 1, kTerm), kOver, "", 1},
      {value_of(CS_FLOAT_TYPE, 0.1), to(CS_CHAR_TYPE, 17), kOver, "*\0"s, 1},
      {zero, to(CS_CHAR_TYPE, 42), kDone, "0." + std::string(40, '0')},
      {zero, to(CS_CHAR_TYPE, 41), kOver, "*\0"s, 1},
      {date, to(CS_TEXT_TYPE, 20, kTerm), kDone, day + '\0'},
      {date, to(CS_CHAR_TYPE, 18), kOver, "*\0"s, 1},
      {never, to(CS_CHAR_TYPE, 30), kDomain, ""},
      // A bit has no "*" and always counts its digit; money is cut.
      {bit, to(CS_CHAR_TYPE, 0, kTerm), kOver, "", 1},
      {bit, to(CS_CHAR_TYPE, 1, kTerm), kOver, "\0"s, 1},
      {bit, to(CS_CHAR_TYPE, 3, kBlanks | kNulls), CS_CVT_FORMAT, "1"},
      {price, to(CS_TEXT_TYPE, 3), kOver, "123"},
      {price, to(CS_CHAR_TYPE, 0), kOver, ""},
      {price, to(CS_CHAR_TYPE, 7, kTerm), kOver, "1234.5\0"s},
      {price, to(CS_CHAR_TYPE, 9, kBlanks | kNulls), CS_CVT_FORMAT, "1234.57"},
      // Units of two bytes: one byte to spare holds no terminator and is not padded with a blank.
      {number, to(CS_UNICHAR_TYPE, 10), kOver, "*\0\0\0"s, 2},
      {digit, to(CS_UNICHAR_TYPE, 3, kTerm), kOver, "", 2},
      {digit, to(CS_UNICHAR_TYPE, 5, kTerm), kDone, "7\0\0\0"s},
      {number, to(CS_UNICHAR_TYPE, 13, kTerm), kOver, "*\0\0\0"s},
      {digit, to(CS_UNICHAR_TYPE, 7, kBlanks), kDone, "7\0 \0 \0"s},
      {bit, to(CS_UNICHAR_TYPE, 1), kOver, "", 1},
      {price, to(CS_UNICHAR_TYPE, 9, kTerm), kOver, "1\0002\0003\0\0\0"s},
      {price, to(CS_UNICHAR_TYPE, 15, kTerm), kOver, "1\0002\0003\0004\0.\0005\0\0\0"s},
      {price, to(CS_UNICHAR_TYPE, 16, kTerm), kDone, "1\0002\0003\0004\0.\0005\0007\0\0\0"s},
      {text_as(CS_CHAR_TYPE, "ab"), to(CS_UNICHAR_TYPE, 9, kBlanks | kTerm), kDone,
       "a\0b\0 \0\0\0"s},
      // Bytes are cut, as digits by whole bytes.
      {letters, to(CS_LONGBINARY_TYPE, 3, kNulls), kCut, "DCB"},
      {letters, to(CS_IMAGE_TYPE, 6, kNulls), kDone, "DCBA\0\0"s},
      {letters, to(CS_BINARY_TYPE, 0), kCut, ""},
      {bytes, to(CS_BINARY_TYPE, 2), kCut, "\0\x1F"s},
      {bytes, to(CS_IMAGE_TYPE, 4, kNulls), kDone, "\0\x1F\xAB\0"s},
      {bytes, to(CS_CHAR_TYPE, 6, kTerm), kCut, "001F\0"s},
      {bytes, to(CS_CHAR_TYPE, 7, kTerm), kDone, "001FAB\0"s},
      {bytes, to(CS_CHAR_TYPE, 5), kCut, "001F"},
      {bytes, to(CS_CHAR_TYPE, 0, kTerm), kCut, ""},
      {bytes, to(CS_CHAR_TYPE, 1, kTerm), kCut, "\0"s},
      {bytes, to(CS_UNICHAR_TYPE, 11), kCut, "0\0000\0001\0F\0"s},
      // Records take neither a room nor padding.
      {number, to(CS_VARCHAR_TYPE, 1, kBlanks), kDone, "\6\0-12345\0"s, 258},
      {price, to(CS_VARCHAR_TYPE, 2, kBlanks), kDone, "\7\0001234.57\0"s, 258},
      {date, to(CS_VARCHAR_TYPE, 3), kDone, "\x13\0"s + day + '\0', 258},
      {letters, to(CS_VARBINARY_TYPE, 1, kNulls), kDone, "\4\0DCBA"s, 258},
      {never, to(CS_VARCHAR_TYPE), kDomain, "\0\0\0"s, 258},
      {hex, to(CS_VARCHAR_TYPE), kCut, "\0\1"s + std::string(256, 'a'), 258},
      {hex, to(CS_VARBINARY_TYPE), kCut, "\0\1"s + full, 258},
      {many, to(CS_VARBINARY_TYPE), kCut, "\0\1"s + full, 258},
      {many, to(CS_VARCHAR_TYPE), kCut, "\0\1"s + std::string(256, 'A'), 258},
      {text_as(CS_VARCHAR_TYPE, "1", -1), to(CS_CHAR_TYPE), kDomain, ""},
      {text_as(CS_VARCHAR_TYPE, "1", 257), to(CS_CHAR_TYPE), kDomain, ""},
      {text_as(CS_VARBINARY_TYPE, "1", -1), to(CS_CHAR_TYPE), kDomain, ""},
      {text_as(CS_VARBINARY_TYPE, "1", 257), to(CS_CHAR_TYPE), kDomain, ""},
      // Text is cut by whole characters, its quotes are doubled.
      {text, to(CS_CHAR_TYPE, 10, kTerm), kDone, "abc\0"s},
      {text, to(CS_CHAR_TYPE, 3, kTerm), kCut, "ab\0"s},
      {text, to(CS_CHAR_TYPE, 3), kDone, "abc"},
      {text, to(CS_CHAR_TYPE, 6, kBlanks | kTerm), kDone, "abc  \0"s},
      {text, to(CS_CHAR_TYPE, 5, kNulls | kBlanks | kTerm), CS_CVT_FORMAT, "abc"},
      {text, to(CS_CHAR_TYPE, 0, kTerm), kCut, ""},
      {text_as(CS_VARCHAR_TYPE, ""), to(CS_CHAR_TYPE, 4, kBlanks), kDone, "    "},
      {quoted, to(CS_CHAR_TYPE, 4, kQuotes), kCut, "it''"},
      {quoted, to(CS_CHAR_TYPE, 3, kQuotes), kCut, "it"},
      // Only a full destination gives its last byte to the NUL.
      {quoted, to(CS_CHAR_TYPE, 4, kQuotes | kTerm), kCut, "it'\0"s},
      {quoted, to(CS_CHAR_TYPE, 3, kQuotes | kTerm), kCut, "it"},
      {two, to(CS_CHAR_TYPE, 5, kQuotes | kTerm), kDone, "''''\0"s},
      // A NUL ends a text that is to be terminated; it gets no second one.
      {ended, to(CS_CHAR_TYPE, 20, kQuotes | kTerm), kDone, "it''s\0"s},
      {ended, to(CS_CHAR_TYPE, 20, kQuotes), kDone, "it''s\0tail"s},
      {ended, to(CS_CHAR_TYPE, 12, kQuotes | kTerm | kBlanks), kDone, "it''s\0     \0"s},
      {ended, to(CS_CHAR_TYPE, 6, kQuotes | kTerm), kCut, "it''s\0"s},
  });
  // What the conversions use, where any size may be given.
  CS_CHAR dest[4];
  CS_VARBINARY record;
  CS_INT length = 0;
  const CS_DATAFMT four = to(CS_CHAR_TYPE, 4), varbinary = to(CS_VARBINARY_TYPE);
  EXPECT_EQ(kCut, comn__escchar(nullptr, &four, "it's", &four, dest, &length));
  EXPECT_EQ("it''", std::string(dest, static_cast<std::size_t>(length)));
  Context context;
  EXPECT_EQ(kOver, comn_fixedtovarbin(&context, &four, hex.bytes.data(), &varbinary, &record,
                                      &length, 300));
  EXPECT_EQ(std::pair(258, CS_SMALLINT{256}), std::pair(length, record.len));
}

// Short copies and fills are words that overlap.
TEST(Placement, EveryLengthAndRoom) {
  Context context;
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (std::size_t length = 1; length < 40; ++length) {
    const Encoded source = text_as(CS_CHAR_TYPE, letters.substr(0, length));
    EXPECT_EQ(source.bytes, convert(context, source, to(CS_VARCHAR_TYPE)).text().substr(2, length));
    for (std::size_t spare = 1; spare < 40; ++spare) {
      const std::pair<CS_INT, std::string> ends[] = {
          {0, ""},
          {kTerm, "\0"s},
          {kNulls, std::string(spare, '\0')},
          {kNulls | kTerm, std::string(spare, '\0')},
          {kBlanks, std::string(spare, ' ')},
          {kBlanks | kTerm, std::string(spare - 1, ' ') + '\0'}};
      const auto room = static_cast<CS_INT>(length + spare);
      for (const auto& [format, end] : ends)
        check(context, {source, to(CS_CHAR_TYPE, room, format), kDone, source.bytes + end});
    }
  }
}

TEST(Values, AtTheEdgesOfTheirTypes) {
  const CS_DATAFMT tiny = to(CS_TINYINT_TYPE), small = to(CS_SMALLINT_TYPE),
                   integer = to(CS_INT_TYPE);
  const CS_DATAFMT long8 = to(CS_LONG_TYPE), real = to(CS_REAL_TYPE), number = to(CS_FLOAT_TYPE);
  const CS_DATAFMT amount = to(CS_MONEY_TYPE), amount4 = to(CS_MONEY4_TYPE), bit = to(CS_BIT_TYPE);
  const CS_DATAFMT own = numeric_format(CS_USE_SRCVALUE, CS_USE_SRCVALUE);
  const auto flt8 = [](CS_FLOAT value) { return value_of(CS_FLOAT_TYPE, value); };
  const auto date = [](CS_INT day, CS_INT time) {
    return value_of(CS_DATETIME_TYPE, CS_DATETIME{day, time});
  };
  const auto bytes = [](const char* stored, std::size_t size) {
    return text_as(CS_BINARY_TYPE, std::string(stored, size));
  };
  check_rows({
      // Each record of money has a formula of its own; the low half of the last one is zero.
      {value_of(CS_MONEY4_TYPE, CS_MONEY4{12345}), number, kDone, bytes_of(1.2345)},
      {money(-12345), number, kDone, bytes_of(-429496.7296 + 4294954951U / 10000.0)},
      {money(0x100000000), bit, kDone, "\1"},
      // Of money the range is judged after the cut of a fraction, of a numeric before it, but for
      // CS_LONG on the nearest double.
      {money4(2555000), tiny, kDone, "\xFF"},
      {money4(-2500), tiny, kDone, "\0"s},
      {money4(-5000), small, kDone, "\xFF\xFF"},
      {money4(-5000), long8, kDone, bytes_of(std::int64_t{-1})},
      {money(INT64_MIN), long8, kDone, bytes_of(std::int64_t{-922337203685477})},
      {money(-42949672965000), long8, kDone, bytes_of(std::int64_t{-4294967297})},
      {money(-42949672964999), long8, kDone, bytes_of(std::int64_t{-4294967296})},
      {money4(-7000), integer, kDone, bytes_of(-1)},
      {money4(-4999), integer, kDone, bytes_of(0)},
      {money4(-17000), integer, kDone, bytes_of(-1)},
      {money4(INT32_MIN), integer, kDone, bytes_of(-214748)},
      {money(-21474836489999), integer, kDone, bytes_of(INT32_MIN)},
      {money(-21474836490000), integer, kOver, bytes_of(INT32_MIN)},
      {money4(19999), real, kDone, bytes_of(1.9999f)},
      {money4(INT32_MIN), real, kDone, bytes_of(-214748.3648f)},
      {money(0x80000000), amount4, kOver, bytes_of(CS_MONEY4{INT32_MAX})},
      {money(-0x100000000), amount4, kOver, bytes_of(CS_MONEY4{INT32_MIN})},
      {exact("255.5"), tiny, kOver, "\xFF"},
      {exact("-0.25"), tiny, kOver, "\0"s},
      {exact("-0.0"), tiny, kDone, "\0"s},
      {exact("-32768.00000000001"), small, kOver, bytes_of(CS_SMALLINT{-32768})},
      {exact("-6.99999999999999999999"), small, kDone, bytes_of(CS_SMALLINT{-7})},
      {exact("1e40"), small, kOver, bytes_of(CS_SMALLINT{32767})},
      {exact("2147483647.00000000000000000001"), integer, kDone, bytes_of(INT32_MAX)},
      {exact("9223372036854775807"), long8, kDone, bytes_of(INT64_MAX)},
      {exact("-9223372036854775808"), long8, kDone, bytes_of(INT64_MIN)},
      {exact("6.99999999999999999999"), long8, kDone, bytes_of(std::int64_t{6})},
      {exact("9223372036854775807.5"), long8, kOver, bytes_of(INT64_MAX)},
      {exact("-9223372036854775809"), long8, kOver, bytes_of(INT64_MIN)},
      {exact("-18446744073709551616"), long8, kOver, bytes_of(INT64_MIN)},
      {exact("1e-77"), bit, kDone, "\1"},
      {exact("-0.00"), bit, kDone, "\0"s},
      {exact("-1e40"), real, kOver, bytes_of(-std::numeric_limits<CS_REAL>::max())},
      {exact("12.34567"), amount, kDone, bytes_of(CS_MONEY{0, 123456})},
      {exact("-1e60"), amount, kOver, bytes_of(CS_MONEY{INT32_MIN, 0})},
      {exact("1e60"), amount4, kOver, bytes_of(CS_MONEY4{INT32_MAX})},
      {exact("214748.36479"), amount4, kDone, bytes_of(CS_MONEY4{INT32_MAX})},
      // Numbers fill the whole record of a numeric, money the bytes of its precision.
      {value_of(CS_INT_TYPE, -7), sized(5, 2), kDone, exact("-7", 5, 2).bytes},
      {value_of(CS_INT_TYPE, 100), sized(2, 0), kOver, exact("0", 2, 0).bytes},
      {value_of(CS_SMALLINT_TYPE, CS_SMALLINT{10}), sized(3, 2), kOver, exact("0", 3, 2).bytes},
      {value_of(CS_TINYINT_TYPE, CS_TINYINT{200}), sized(77, 74), kDone,
       exact("200", 77, 74).bytes},
      {value_of(CS_REAL_TYPE, 0.1f), sized(20, 18), kDone,
       exact("0.10000000149011612", 20, 18).bytes},
      {flt8(-2.5), sized(3, 0), kDone, exact("-3", 3, 0).bytes},
      {flt8(9.996), sized(3, 2), kOver, exact("0", 3, 2).bytes},
      {flt8(HUGE_VAL), sized(5, 2), CS_CVT_SYNTAX, exact("0", 5, 2).bytes},
      {money4(1), own, kDone, "\x13\4\0\0\0\0\0\0\0\0\1"s},
      {money4(1), sized(266, 0), CS_CVT_PRECISION, ""},
      {money4(-99), sized(3, 0), kCut, "\3\0\1\0\0"s},
      {money4(-70000), sized(3, 2), kDone, "\3\2\1\2\xBC"s},
      {money4(123400), sized(3, 2), kOver, "\3\2\0\0\0"s},
      {money4(50000), sized(5, 4), kDone, "\5\4\0\0\xC3\x50"s},
      {money4(50000), sized(5, 5), kOver, "\5\5\0\0\0\0"s},
      {money(INT64_MIN), sized(19, 4), kDone,
       "\x13\4\1\x80\0\0\0\0\0\0\0"s},  // Halves of the last decimal are rounded away from zero.
      {flt8(-0.00005), amount, kDone, bytes_of(CS_MONEY{-1, 0xFFFFFFFF})},
      {flt8(-0.00005), amount4, kDone, bytes_of(CS_MONEY4{-1})},
      {money4(-49), decimals(0), kDone, "-0.00"},
      {money4(12345), decimals(0x1000000), kDone, "1.2345"},
      {money4(12345), decimals(CS_USE_SRCVALUE), kDone, "1.23"},
      {money4(123499), decimals(1), kDone, "12.3"},
      // Bytes that are no value of their type.
      {bytes("\2", 1), bit, kDomain, ""},
      {bytes("\x4E\0\0\1", 4), own, kDomain, ""},  // precision 78
      {bytes("\2\x4E\0\1", 4), own, kDomain, ""},  // scale 78
      {bytes("\2\0\0\x64", 4), own, kDomain, ""},  // 100
      {bytes("\2\0\2\x63", 4), own, kDomain, ""},  // sign 2
      {bytes("\2\0\1\x63", 4), own, kDone, "\2\0\1\x63"s + std::string(31, '\0')},
      {date(1, 2), to(CS_BINARY_TYPE), kDone, "\1\0\0\0\2\0\0\0"s},
      {date(65535, 25911000), to(CS_DATETIME4_TYPE), kOver, ""},
  });
}

TEST(PaddingDeathTest, NegativeLengthsStop) {
  CS_DATAFMT format = format_of(CS_CHAR_TYPE, 4);
  char room[4];
  CS_INT length = 0;
  const auto aborted = testing::KilledBySignal(SIGABRT);
  for (const Padding pad : {comn__padchar, comn__padbin, comn__padunichar}) {
    format.maxlength = 4;
    EXPECT_EXIT(pad(-1, &format, room, &length), aborted, "assertion failed.*newutils.cpp");
    format.maxlength = -1;
    EXPECT_EXIT(pad(0, &format, room, &length), aborted, "assertion failed.*newutils.cpp");
  }
}

}  // namespace
