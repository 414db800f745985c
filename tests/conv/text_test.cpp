// Text and binary data to every type: each literal as character, varchar and UTF-16 text. Character
// sets that differ are tested with the localization home.
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "comnlib/locale.h"
#include "conv/chscan.h"
#include "conv/textcopy.h"
#include "conversion.h"
#include "intl/convcfg.h"
#include "support/two_byte_set.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

Result from_char(Context& context, const std::string& text, const CS_DATAFMT& to,
                 CS_INT format = 0) {
  Encoded source = text_as(CS_CHAR_TYPE, text);
  source.format.format = format;
  return convert(context, source, to);
}

struct Literal {
  const char* text;
  CS_DATAFMT to;
  CS_RETCODE code;
  std::string bytes;
};

Literal number(const char* text, CS_INT type, CS_RETCODE code, const auto& value) {
  return {text, format_of(type, sizeof value), code, bytes_of(value)};
}
Literal floating(const char* text, CS_RETCODE code, CS_FLOAT value) {
  return number(text, CS_FLOAT_TYPE, code, value);
}
Literal numeric(const char* text, CS_INT precision, CS_INT scale, CS_RETCODE code,
                const std::string& bytes) {
  return {text, numeric_format(precision, scale), code, bytes};
}
Literal binary(const char* text, CS_RETCODE code, const std::string& bytes) {
  return {text, format_of(CS_BINARY_TYPE, 2), code, bytes};
}

// Short texts are read in one register: every length, place of the point, sign and blanks.
TEST(Literals, ShortNumbersOfEveryLayout) {
  Context context;
  for (std::size_t digits = 1; digits <= 17; ++digits) {
    for (std::size_t decimals = 0; decimals <= digits; ++decimals) {
      for (const std::string layout : {"", "-", "+", "   ", "  -", "  ", " +", "          "}) {
        const bool negative = layout.ends_with('-');
        std::string text = std::string("98765432109876543").substr(0, digits);
        const long long value = std::stoll(text) * (negative ? -1 : 1);
        const bool whole = decimals == 0 && digits % 2 == 0;  // others end with a point
        if (!whole) text.insert(digits - decimals, 1, '.');
        text = layout + text + std::string(digits % 3, ' ');
        SCOPED_TRACE("'" + text + "'");
        const auto read = [&](const CS_DATAFMT& to) { return from_char(context, text, to); };
        EXPECT_EQ(std::strtod(text.c_str(), nullptr),
                  read(format_of(CS_FLOAT_TYPE)).as<CS_FLOAT>());
        const bool fits = value == static_cast<CS_INT>(value);
        const Result integer = read(format_of(CS_INT_TYPE));
        EXPECT_EQ(!whole ? CS_CVT_SYNTAX : fits ? CS_SUCCEED : CS_CVT_OVERFLOW, integer.code);
        if (whole && fits) {
          EXPECT_EQ(value, integer.as<CS_INT>());
        }
        if (decimals <= 4 && digits < 15) {
          const long long units = value * std::array{10000, 1000, 100, 10, 1}[decimals];
          const auto money = read(format_of(CS_MONEY_TYPE)).as<CS_MONEY>();
          EXPECT_EQ(units, static_cast<long long>(money.mnyhigh) * 0x100000000 + money.mnylow);
        }
        std::string record{20, static_cast<char>(decimals), negative ? '\1' : '\0', '\0'};
        for (int shift = 56; shift >= 0; shift -= 8)
          record += static_cast<char>(std::abs(value) >> shift);
        EXPECT_EQ(record, read(numeric_format(20, static_cast<CS_INT>(decimals))).text());
      }
    }
  }
}

TEST(Literals, ValuesRangesAndSyntax) {
  constexpr double kMax = std::numeric_limits<double>::max();
  constexpr double kSmallest = std::numeric_limits<double>::min();
  constexpr CS_INT kOwn = CS_USE_SRCVALUE;
  std::vector<Literal> rows{
      number(" 255 ", CS_TINYINT_TYPE, CS_SUCCEED, CS_TINYINT{255}),
      number("-0", CS_TINYINT_TYPE, CS_SUCCEED, CS_TINYINT{0}),
      number("+00000000000000000000000000032767", CS_SMALLINT_TYPE, CS_SUCCEED, CS_SMALLINT{32767}),
      number("-32769", CS_SMALLINT_TYPE, CS_CVT_OVERFLOW, CS_SMALLINT{-32768}),
      number("2147483647\t\n", CS_INT_TYPE, CS_SUCCEED, 2147483647),
      number("-99999999999999999999999999", CS_INT_TYPE, CS_CVT_OVERFLOW, INT32_MIN),
      number("-256", CS_BIT_TYPE, CS_SUCCEED, CS_BIT{1}),
      number("4294967296", CS_BIT_TYPE, CS_CVT_OVERFLOW, CS_BIT{1}),
      floating("0.1", CS_SUCCEED, 0.1),
      floating("+.25", CS_SUCCEED, 0.25),
      floating("5.", CS_SUCCEED, 5),
      floating("2.2250738585072014e-308", CS_SUCCEED, kSmallest),
      // Below that number, though its nearest double.
      floating("2.2250738585072012e-308", CS_CVT_UNDERFLOW, kSmallest),
      floating("-1.5e-310", CS_CVT_UNDERFLOW, -1.5e-310),
      floating("4.9e-324", CS_CVT_UNDERFLOW, std::numeric_limits<double>::denorm_min()),
      floating("1e309", CS_CVT_OVERFLOW, kMax),
      floating("0.01e+400", CS_CVT_OVERFLOW, kMax),
      floating("-1e99999999999999999999", CS_CVT_OVERFLOW, -kMax),
      floating("1e-400", CS_CVT_UNDERFLOW, 0),
      floating("-0.00000001e-320", CS_CVT_UNDERFLOW, -0.0),
      floating("1000000000000e-99999999999999999999", CS_CVT_UNDERFLOW, 0),
      number("-1e39", CS_REAL_TYPE, CS_CVT_OVERFLOW, -std::numeric_limits<float>::max()),
      number("-1e-310", CS_REAL_TYPE, CS_CVT_UNDERFLOW, -0.0F),
      number("1e-40", CS_REAL_TYPE, CS_SUCCEED, 1e-40F),
      numeric("12.34", 4, 2, CS_SUCCEED, "\4\2\0\4\xD2"s),
      numeric("12.345", 5, 2, CS_CVT_TRUNCATED, "\5\2\0\0\4\xD2"s),
      numeric("12.340", 5, 2, CS_SUCCEED, "\5\2\0\0\4\xD2"s),
      numeric("123.45", 4, 2, CS_CVT_OVERFLOW, "\4\2\0\0\0"s),
      numeric("-1e77", 77, kOwn, CS_CVT_OVERFLOW, ""),
      numeric("0012.50", kOwn, kOwn, CS_SUCCEED, "\4\2\0\4\xE2"s),
      numeric("7", kOwn, 0, CS_SUCCEED, "\1\0\0\7"s),
      numeric("1e2", 5, 0, CS_SUCCEED, "\5\0\0\0\0\x64"s),
      number("-9223372036854775808", CS_LONG_TYPE, CS_SUCCEED, INT64_MIN),
      number("9223372036854775808", CS_LONG_TYPE, CS_CVT_OVERFLOW, INT64_MAX),
      number("99999999999999999999999", CS_LONG_TYPE, CS_CVT_OVERFLOW, INT64_MAX),
      number("$1,234.5", CS_MONEY_TYPE, CS_SUCCEED, CS_MONEY{0, 12345000}),
      number("-0.0001", CS_MONEY_TYPE, CS_SUCCEED, CS_MONEY{-1, 0xFFFFFFFF}),
      number("2000-02-29 23:59:59.999", CS_DATETIME_TYPE, CS_SUCCEED, CS_DATETIME{36583, 25919999}),
      number("Feb 3 1999 4:05PM", CS_DATETIME4_TYPE, CS_SUCCEED, CS_DATETIME4{36192, 965}),
      binary("0x1aF", CS_SUCCEED, "\x01\xAF"),
      binary("00ff", CS_SUCCEED, "\0\xFF"s),
      binary("0x", CS_SUCCEED, ""),
      binary("0X12", CS_SUCCEED, "\x12"),
      binary("123456", CS_CVT_TRUNCATED, "\x12\x34"),
      binary("12345", CS_CVT_TRUNCATED, "\x01\x23"),
      {"1900-02-29", format_of(CS_DATETIME_TYPE), CS_CVT_OVERFLOW, ""}};
  const std::pair<const char*, CS_INT> refused[] = {
      {"", CS_INT_TYPE},       {"- 5", CS_INT_TYPE},     {"", CS_FLOAT_TYPE},
      {".", CS_FLOAT_TYPE},    {"1e", CS_FLOAT_TYPE},    {"1,5", CS_FLOAT_TYPE},
      {" 12", CS_BINARY_TYPE}, {"0x0x1", CS_BINARY_TYPE}};
  for (const auto& [text, type] : refused)
    rows.push_back({text, format_of(type, 2), CS_CVT_SYNTAX, ""});
  Context context;
  for (const Literal& row : rows) {
    for (const CS_INT type : {CS_CHAR_TYPE, CS_VARCHAR_TYPE, CS_UNICHAR_TYPE}) {
      if (type == CS_CHAR_TYPE && *row.text == '\0') continue;  // stops
      if (type != CS_UNICHAR_TYPE && row.to.datatype == CS_LONG_TYPE) continue;
      SCOPED_TRACE(testing::Message() << row.text << " from " << type << " to " << row.to.datatype);
      const Result result = convert(context, text_as(type, row.text), row.to);
      EXPECT_EQ(row.code, result.code);
      EXPECT_EQ(row.bytes, result.text());
      EXPECT_EQ(static_cast<CS_INT>(row.bytes.size()), result.length);
      EXPECT_TRUE(result.untouched_from(row.bytes.size()));
    }
  }
}

// A NUL ends a float's text, and a numeric's where its format says so; nothing after it counts.
TEST(Literals, NulsAndLength) {
  Context context;
  const std::string ended("42\0junk", 7);
  const std::string longer = ended + std::string(2000, '#');
  for (const std::string& text : {ended, longer}) {
    const CS_DATAFMT to = numeric_format(2, 0, CS_DECIMAL_TYPE);
    EXPECT_EQ("\2\0\0\x2A"s, from_char(context, text, to, CS_DFMT_NULLTERM).text());
    EXPECT_EQ(CS_CVT_SYNTAX, from_char(context, text, to).code);
    EXPECT_EQ(42, from_char(context, text, format_of(CS_FLOAT_TYPE)).as<double>());
    const Encoded wide = text_as(CS_UNICHAR_TYPE, text);
    EXPECT_EQ(42, convert(context, wide, format_of(CS_FLOAT_TYPE)).as<double>());
  }
  for (const CS_INT type : {CS_CHAR_TYPE, CS_UNICHAR_TYPE}) {
    const CS_DATAFMT to = numeric_format(2, 0);
    const std::string digits(1024, '0');
    EXPECT_EQ(CS_SUCCEED, convert(context, text_as(type, digits + ' '), to).code);
    EXPECT_EQ(CS_CVT_SYNTAX, convert(context, text_as(type, digits + '0'), to).code)
        << "a digit too many for a numeric";
  }
}

// A float's literal has any length, and every digit of it counts.
TEST(Literals, LongFloats) {
  Context context;
  const std::string zeros(3000, '0');
  // Halfway between 1 and the next double, and so rounded to 1 unless more follows.
  const std::string half = "1.00000000000000011102230246251565404236316680908203125";
  const double next = std::nextafter(1.0, 2.0);
  const struct {
    std::string text;
    CS_RETCODE code;
    double value;
  } rows[] = {
      {half + zeros, CS_SUCCEED, 1},
      {half + zeros + "1", CS_SUCCEED, next},
      {zeros + half + zeros + "1e+0" + zeros, CS_SUCCEED, next},
      {"1" + zeros + "e-3000", CS_SUCCEED, 1},
      {"-0." + zeros + "25e" + zeros + "3001", CS_SUCCEED, -2.5},
      {"1" + zeros, CS_CVT_OVERFLOW, std::numeric_limits<double>::max()},
      {"0." + zeros + "1e10", CS_CVT_UNDERFLOW, 0},
      {zeros + "e999999999999999999999", CS_SUCCEED, 0},
      {zeros + "e", CS_CVT_SYNTAX, 0},
      {zeros + " 1", CS_CVT_SYNTAX, 0},
  };
  for (const auto& row : rows) {
    for (const CS_INT type : {CS_CHAR_TYPE, CS_UNICHAR_TYPE}) {
      const Result result = convert(context, text_as(type, row.text), format_of(CS_FLOAT_TYPE));
      EXPECT_EQ(row.code, result.code) << row.text;
      if (row.code != CS_CVT_SYNTAX) {
        EXPECT_EQ(row.value, result.as<double>()) << row.text;
      }
    }
  }
}

TEST(TextToText, PaddingAndTruncation) {
  Context context;
  constexpr CS_INT kQuotes = CS_DFMT_ESCQUOTE;
  const std::string ended = "it's\0tail"s;
  const struct {
    std::string text;
    CS_INT room, format;
    CS_RETCODE code;
    std::string bytes;
  } rows[] = {
      {"abc", 10, CS_DFMT_NULLTERM, CS_SUCCEED, "abc\0"s},
      {"abc", 3, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "ab\0"s},
      {"abc", 3, 0, CS_SUCCEED, "abc"},
      {"abc", 6, CS_DFMT_PADBLANK | CS_DFMT_NULLTERM, CS_SUCCEED, "abc  \0"s},
      {"abc", 5, CS_DFMT_PADNULL | CS_DFMT_PADBLANK | CS_DFMT_NULLTERM, CS_CVT_FORMAT, "abc"},
      {"abc", 0, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, ""},
      {"it's", 4, kQuotes, CS_CVT_TRUNCATED, "it''"},
      {"it's", 3, kQuotes, CS_CVT_TRUNCATED, "it"},
      // Only a full destination gives its last byte to the NUL.
      {"it's", 4, kQuotes | CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "it'\0"s},
      {"it's", 3, kQuotes | CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "it"},
      {"''", 5, kQuotes | CS_DFMT_NULLTERM, CS_SUCCEED, "''''\0"s},
      // A NUL ends a text that is to be terminated; it gets no second one.
      {ended, 20, kQuotes | CS_DFMT_NULLTERM, CS_SUCCEED, "it''s\0"s},
      {ended, 20, kQuotes, CS_SUCCEED, "it''s\0tail"s},
      {ended, 12, kQuotes | CS_DFMT_NULLTERM | CS_DFMT_PADBLANK, CS_SUCCEED, "it''s\0     \0"s},
      {ended, 6, kQuotes | CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "it''s\0"s},
  };
  for (const auto& row : rows) {
    for (const CS_INT from : {CS_CHAR_TYPE, CS_VARCHAR_TYPE}) {
      for (const CS_INT to : {CS_CHAR_TYPE, CS_TEXT_TYPE, CS_SENSITIVITY_TYPE}) {
        SCOPED_TRACE(testing::Message() << row.text << " from " << from << " to " << to << " of "
                                        << row.room << ", format " << row.format);
        const CS_DATAFMT format = format_of(to, row.room, row.format);
        const Result result = convert(context, text_as(from, row.text), format);
        EXPECT_EQ(row.code, result.code);
        EXPECT_EQ(row.bytes, result.text());
        EXPECT_TRUE(result.untouched_from(row.bytes.size()));
      }
    }
  }
  const Result empty =
      convert(context, text_as(CS_VARCHAR_TYPE, ""), format_of(CS_CHAR_TYPE, 4, CS_DFMT_PADBLANK));
  EXPECT_EQ("    ", empty.text());
  const CS_DATAFMT from = format_of(CS_CHAR_TYPE, 4), to = format_of(CS_CHAR_TYPE, 4);
  char dest[4];
  CS_INT length = 0;
  EXPECT_EQ(CS_CVT_TRUNCATED, comn__escchar(nullptr, &from, "it's", &to, dest, &length));
  EXPECT_EQ("it''", std::string(dest, static_cast<std::size_t>(length)));
}

// Short copies and fills are words that overlap.
TEST(TextToText, EveryLengthAndRoom) {
  Context context;
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  constexpr CS_INT kTerm = CS_DFMT_NULLTERM;
  for (std::size_t length = 1; length < 40; ++length) {
    const Encoded source = text_as(CS_CHAR_TYPE, letters.substr(0, length));
    EXPECT_EQ(source.bytes,
              convert(context, source, format_of(CS_VARCHAR_TYPE)).text().substr(2, length));
    for (std::size_t spare = 1; spare < 40; ++spare) {
      const std::pair<CS_INT, std::string> rows[] = {
          {0, ""},
          {kTerm, "\0"s},
          {CS_DFMT_PADNULL, std::string(spare, '\0')},
          {CS_DFMT_PADNULL | kTerm, std::string(spare, '\0')},
          {CS_DFMT_PADBLANK, std::string(spare, ' ')},
          {CS_DFMT_PADBLANK | kTerm, std::string(spare - 1, ' ') + '\0'}};
      for (const auto& [format, end] : rows) {
        const auto room = static_cast<CS_INT>(length + spare);
        const Result result = convert(context, source, format_of(CS_CHAR_TYPE, room, format));
        ASSERT_EQ(CS_SUCCEED, result.code);
        ASSERT_EQ(source.bytes + end, result.text()) << room << ", " << format;
        ASSERT_TRUE(result.untouched_from(source.bytes.size() + end.size()));
      }
    }
  }
}

// Records take 256 bytes, whatever the format says, and may lie about their length.
TEST(Records, AreFilledAndChecked) {
  Context context;
  const std::string digits(600, 'a');
  for (const CS_INT type : {CS_VARCHAR_TYPE, CS_VARBINARY_TYPE}) {
    const Result result = from_char(context, digits, format_of(type));
    EXPECT_EQ(CS_CVT_TRUNCATED, result.code) << type;
    EXPECT_EQ(258, result.length) << type;
    EXPECT_EQ("\0\1"s + std::string(256, type == CS_VARCHAR_TYPE ? 'a' : '\xAA'), result.text());
    const std::string bytes(257, '\xAA');
    const Result other = convert(context, text_as(CS_BINARY_TYPE, bytes), format_of(type));
    EXPECT_EQ(CS_CVT_TRUNCATED, other.code) << type;
    EXPECT_EQ(256, other.as<CS_SMALLINT>()) << type;
    for (const auto length : {CS_SMALLINT{-1}, CS_SMALLINT{257}}) {
      const Result bad = convert(context, text_as(type, "1", length), format_of(CS_CHAR_TYPE, 9));
      EXPECT_EQ(CS_CVT_DOMAIN, bad.code) << type << ": " << length;
      EXPECT_EQ(0, bad.length) << type << ": " << length;
    }
  }
  CS_VARBINARY record;
  CS_INT length = 0;
  const CS_DATAFMT to = format_of(CS_VARBINARY_TYPE);
  EXPECT_EQ(CS_CVT_OVERFLOW,
            comn_fixedtovarbin(&context, &to, digits.data(), &to, &record, &length, 300));
  EXPECT_EQ(258, length);
  EXPECT_EQ(256, record.len);
}

// A locale of one character set.
struct Charset {
  explicit Charset(const char_attrib* attrib) {
    desc.char_attrib = const_cast<char_attrib*>(attrib);
    entry.locchardesc = &desc;
    locale.ctypeptr = &entry;
  }
  Charset(const Charset&) = delete;
  CsCharDesc desc{};
  CsLocCache entry{};
  CS_LOCALE locale{};
};

// The set of which 0x81 begins characters by their second bytes' ASCII forms, 0x83 others.
TEST(TwoByteText, WholeCharactersQuotesAndDigits) {
  const TwoByteSet set;
  Charset charset(set.attrib());
  Context context;
  context.ctxlocale = &charset.locale;
  const std::string text = "a\x83\x40\x83\x41";
  const struct {
    const char* label;
    std::string text;
    CS_INT type, room, format;
    CS_RETCODE code;
    std::string bytes;
  } rows[] = {
      {"no half character", text, 0, 4, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "a\x83\x40"},
      {"exact", text, 0, 5, 0, CS_SUCCEED, text},
      // What the source itself cuts is not lost, unless the destination is shorter.
      {"half a character", "ab\x83", 0, 3, 0, CS_SUCCEED, "ab\x83"},
      {"padded", "ab\x83", 0, 5, CS_DFMT_PADBLANK, CS_SUCCEED, "ab\x83  "},
      {"sensitivity", "ab\x83", CS_SENSITIVITY_TYPE, 9, 0, CS_SUCCEED, "ab\x83"},
      {"boundary", "ab\x83", CS_BOUNDARY_TYPE, 2, 0, CS_CVT_TRUNCATED, "ab"},
      {"varchar", "\x83", CS_VARCHAR_TYPE, 0, 0, CS_SUCCEED,
       "\1\0\x83"s + std::string(255, static_cast<char>(kCanary))},
      {"a wide quote", "\x81'", 0, 20, CS_DFMT_ESCQUOTE, CS_SUCCEED, "\x81'\x81'"},
      {"a second byte", "\x83'", 0, 20, CS_DFMT_ESCQUOTE, CS_SUCCEED, "\x83'"},
      {"half a quote", "\x81'", 0, 3, CS_DFMT_ESCQUOTE, CS_CVT_TRUNCATED, ""},
      {"cut by the source", "'\x81", 0, 9, CS_DFMT_ESCQUOTE, CS_SUCCEED, "''\x81"},
      {"no room for it", "'\x81", 0, 2, CS_DFMT_ESCQUOTE, CS_CVT_TRUNCATED, "''"},
      {"digits", "\x81\x34\x81\x32 ", 8, 0, 0, CS_SUCCEED, bytes_of(CS_INT{42})},
      {"cut digit", "4\x81", 8, 0, 0, CS_CVT_SYNTAX, ""},
      {"no digit", "\x83\x34", 8, 0, 0, CS_CVT_SYNTAX, ""},
      {"float", "\x81\x34.5", 10, 0, 0, CS_SUCCEED, bytes_of(4.5)},
      {"date", "\x81\x32\x30\x30\x30-1-2", 12, 0, 0, CS_SUCCEED, bytes_of(CS_DATETIME{36525, 0})},
  };
  for (const auto& row : rows) {
    const Result result = from_char(context, row.text, format_of(row.type, row.room, row.format));
    EXPECT_EQ(row.code, result.code) << row.label;
    EXPECT_EQ(row.bytes, result.text()) << row.label;
    if (row.format == CS_DFMT_NULLTERM) {
      EXPECT_EQ(0, result.bytes[3]) << "a NUL where a byte of room is left";
    }
  }
  CS_SMALLINT small = 7;
  EXPECT_EQ(comnlib::kScanned, com__chtoi2_mb(set.attrib(), "\x81\x34\x32", 3, &small));
  EXPECT_EQ(42, small);
  EXPECT_EQ(comnlib::kOutOfRange, com__chtoi2_mb(nullptr, "-32769", 6, &small));
  EXPECT_EQ(-32768, small);
  EXPECT_EQ(comnlib::kNoInteger, com__chtoi2_mb(nullptr, "4x", 2, &small));
  EXPECT_EQ(-32768, small) << "a syntax error stores nothing";
  CS_TINYINT tiny = 7;
  CS_INT whole = 7;
  EXPECT_EQ(comnlib::kOutOfRange, com__chtoi1_mb(nullptr, "-1", 2, &tiny));
  EXPECT_EQ(comnlib::kScanned, com__chtoi4_mb(nullptr, "-2147483648", 11, &whole));
  EXPECT_EQ(0, tiny);
  EXPECT_EQ(INT32_MIN, whole);

  // A set of single bytes has no widths; its lower-case letters are its ASCII forms.
  charset.desc.char_attrib = const_cast<char_attrib*>(com_get_charattrib());
  EXPECT_EQ(42, from_char(context, " 42 ", format_of(CS_INT_TYPE)).as<CS_INT>());
  EXPECT_EQ(400, from_char(context, "4E2\0x"s, format_of(CS_FLOAT_TYPE)).as<double>());
  EXPECT_EQ(5, comnb_truncate_chars(set.attrib(), text.data(), 5, 9));
  EXPECT_EQ(4, comnb_truncate_chars(set.attrib(), text.data(), 4, 4)) << "the source cuts";
  EXPECT_EQ(3, comnb_truncate_chars(set.attrib(), text.data(), 5, 4)) << "the destination cuts";
  EXPECT_EQ(2, comnb_truncate_chars(nullptr, text.data(), 5, 2));
}

// ASCII goes by blocks where the set has it. One other character, at any place in them, is read,
// cut and doubled by the tables.
TEST(TwoByteText, AmongAsciiAtEveryPlace) {
  const TwoByteSet set;
  Charset charset(set.attrib());
  CsConvConfig config{};
  config.ascii_based = true;
  charset.desc.conv_config = &config;
  Context context;
  context.ctxlocale = &charset.locale;
  for (std::size_t place = 0; place < 40; ++place) {
    for (const std::size_t after : {0, 2, 5, 20}) {
      const std::string zeros(after, '0');
      const std::string text = std::string(place, '0') + "\x81\x34" + zeros;
      const Result number = from_char(context, text, format_of(CS_FLOAT_TYPE));
      ASSERT_EQ(std::stod("4" + zeros), number.as<double>()) << place;
    }
    for (const std::string other : {"\x81'", "'", "\x83'"}) {
      std::vector<std::string> characters(40, "a");
      characters[place] = other;
      std::string text;
      for (const std::string& each : characters) text += each;
      for (const std::size_t room : {15, 16, 17, 31, 32, 33, 38, 39}) {
        const auto expect = [&](CS_INT format) {
          std::string expected;
          for (std::string each : characters) {
            if (format != 0 && each.back() == '\'' && each != "\x83'") each += each;
            if (expected.size() + each.size() > room) break;
            expected += each;
          }
          const auto fits = static_cast<CS_INT>(room);
          const Result result = from_char(context, text, format_of(CS_CHAR_TYPE, fits, format));
          ASSERT_EQ(CS_CVT_TRUNCATED, result.code) << place << " in " << room;
          ASSERT_EQ(expected, result.text()) << place << " in " << room;
        };
        expect(0);
        expect(CS_DFMT_ESCQUOTE);
      }
    }
  }
}

// Descriptors of two contexts, say. Without a number, or with no configuration of their own,
// nothing leads from one set to the other.
TEST(TwoByteText, OneObjectIdIsOneCharacterSet) {
  const TwoByteSet set;
  Charset first(set.attrib()), second(set.attrib());
  Context context;
  const std::string text = "it's \x83";
  const struct {
    CsOid first, second;
    CS_RETCODE code;
  } rows[] = {{5, 5, CS_SUCCEED}, {5, 6, CS_CVT_NOXLATE}, {0, 0, CS_CVT_NOXLATE}};
  for (const auto& row : rows) {
    first.desc.oid = row.first;
    second.desc.oid = row.second;
    Encoded source = text_as(CS_CHAR_TYPE, text);
    source.format.locale = &first.locale;
    CS_DATAFMT to = format_of(CS_CHAR_TYPE, 9);
    to.locale = &second.locale;
    const Result copied = convert(context, source, to);
    EXPECT_EQ(row.code, copied.code) << row.first;
    EXPECT_EQ(row.code == CS_SUCCEED ? text : "", copied.text()) << row.first;
    to.datatype = CS_VARCHAR_TYPE;
    EXPECT_EQ(row.code, convert(context, source, to).code) << row.first;
  }
}

// Within one buffer, as far as it can hold both.
TEST(InPlace, TheSourceIsReadBeforeItIsOverwritten) {
  Context context;
  const struct {
    CS_CONV_FUNC routine;
    CS_INT from, to, room, format;
    std::string source, result;
  } rows[] = {
      {comn_chartochar, 0, 0, 9, CS_DFMT_ESCQUOTE, "'a'bc'", "''a''bc''"},
      {comn_chartovarchar, 0, 18, 0, 0, "abc", "\3\0abc"s},
      {comn_varchartochar, 18, 0, 9, CS_DFMT_ESCQUOTE, "\3\0'a'"s, "''a''"},
      {comn_bintochar, 1, 0, 8, CS_DFMT_NULLTERM, "\x12\xAB\xF0", "12ABF0\0"s},
      {comn_bintounichar, 1, 25, 8, 0, "\x12\xAB", "1\0002\0A\0B\0"s},
      {comn_i4tovarbin, 8, 19, 0, 0, "abcd", "\4\0abcd"s},
  };
  for (const auto& row : rows) {
    std::string buffer = row.source;
    buffer.resize(300);
    const CS_DATAFMT from = format_of(row.from, static_cast<CS_INT>(row.source.size()));
    const CS_DATAFMT to = format_of(row.to, row.room, row.format);
    CS_INT length = 0;
    EXPECT_EQ(CS_SUCCEED, row.routine(&context, &from, buffer.data(), &to, buffer.data(), &length));
    EXPECT_EQ(row.result, buffer.substr(0, row.result.size()));
  }
}

TEST(UnicharText, PairsStayWholeAndMalformedTextIsReported) {
  Context context;
  const Encoded text = utf16_of(u"a\U0001F600b");
  EXPECT_EQ(text.bytes + "\0\0"s,
            convert(context, text, format_of(CS_UNICHAR_TYPE, 12, CS_DFMT_NULLTERM)).text());
  const Result cut = convert(context, text, format_of(CS_UNICHAR_TYPE, 5, CS_DFMT_PADBLANK));
  EXPECT_EQ(CS_CVT_TRUNCATED, cut.code);
  EXPECT_EQ("a\0"s, cut.text());
  Encoded odd = utf16_of(u"12");
  odd.format.maxlength = 3;
  odd.bytes.pop_back();
  for (const Encoded& bad :
       {utf16_of({u'a', 0xD800}), utf16_of({0xDC00, 0xD800}), utf16_of({0xD800, u'z'}), odd}) {
    for (const CS_INT type : {CS_CHAR_TYPE, CS_VARCHAR_TYPE, CS_INT_TYPE, CS_BINARY_TYPE}) {
      const Result result = convert(context, bad, format_of(type, 20));
      EXPECT_EQ(CS_CVT_BADXLATE, result.code) << type;
      EXPECT_GE(type == CS_VARCHAR_TYPE ? 258 : 2, result.length) << type;
    }
    // Between Unicode texts nothing is lost where it fits.
    const CS_INT length = bad.format.maxlength;
    const Result exact = convert(context, bad, format_of(CS_UNICHAR_TYPE, length));
    EXPECT_EQ(CS_SUCCEED, exact.code);
    EXPECT_EQ(bad.bytes, exact.text());
    for (const CS_INT room : {length - 1, length - 2}) {
      const Result shorter = convert(context, bad, format_of(CS_UNICHAR_TYPE, room));
      EXPECT_EQ(CS_CVT_TRUNCATED, shorter.code);
      EXPECT_EQ(bad.bytes.substr(0, static_cast<std::size_t>(shorter.length)), shorter.text());
      EXPECT_EQ(0, shorter.length % 2);
    }
  }
  const struct {
    CS_INT room, format;
    CS_RETCODE code;
    std::string bytes;
  } odd_rows[] = {{3, CS_DFMT_PADBLANK, CS_SUCCEED, "1\0002"s},
                  {3, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "\0\0"s},
                  {5, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, "1\0\0\0"s},
                  {7, CS_DFMT_NULLTERM, CS_SUCCEED, "1\0002\0\0\0"s},
                  {7, CS_DFMT_PADBLANK, CS_SUCCEED, "1\0002\0 \0"s}};
  for (const auto& row : odd_rows) {
    const Result result = convert(context, odd, format_of(CS_UNICHAR_TYPE, row.room, row.format));
    EXPECT_EQ(row.code, result.code) << row.room;
    EXPECT_EQ(row.bytes, result.text()) << row.room;
  }
  const Encoded wide = utf16_of(u"\uFF0D\uFF11\uFF12\u3000");
  EXPECT_EQ(-12, convert(context, wide, format_of(CS_INT_TYPE)).as<CS_INT>());
  EXPECT_EQ(CS_CVT_SYNTAX, convert(context, utf16_of(u"\uFF5E\uFF5F"), format_of(8)).code);
}

TEST(BinaryTo, ValuesThatAreNotValid) {
  Context context;
  const CS_DATAFMT numeric = format_of(CS_NUMERIC_TYPE);
  const Row rows[] = {
      {text_as(CS_BINARY_TYPE, "\2"), format_of(CS_BIT_TYPE), CS_CVT_DOMAIN, ""},
      {text_as(CS_BINARY_TYPE, "\x4E\0\0\1"s), numeric, CS_CVT_DOMAIN, ""},  // precision 78
      {text_as(CS_BINARY_TYPE, "\2\x4E\0\1"s), numeric, CS_CVT_DOMAIN, ""},  // scale 78
      {text_as(CS_BINARY_TYPE, "\2\0\0\x64"s), numeric, CS_CVT_DOMAIN, ""},  // 100
      {text_as(CS_BINARY_TYPE, "\2\0\2\x63"s), numeric, CS_CVT_DOMAIN, ""},  // sign 2
      {text_as(CS_VARBINARY_TYPE, "\2\0\1\x63"s), numeric, CS_SUCCEED,
       "\2\0\1\x63"s + std::string(31, '\0')},
  };
  for (const Row& row : rows) check(context, row);
}

}  // namespace
