// Text and binary data to every type, from all their sources: each row runs as character, varchar
// and UTF-16 text. Character sets that differ are tested with the localization home.
#include <cmath>
#include <limits>

#include "comnlib/charset.h"
#include "comnlib/locale.h"
#include "comnlib/numeric.h"
#include "conv/chscan.h"
#include "conv/textcopy.h"
#include "conversion.h"

namespace {

using conversion::Context;
using conversion::convert;
using conversion::format_of;
using conversion::Result;

CS_VARCHAR varchar_of(const std::string& text) {
  CS_VARCHAR record{};
  record.len = static_cast<CS_SMALLINT>(text.size());
  text.copy(record.str, sizeof record.str);
  return record;
}

std::u16string widened(const std::string& text) {
  std::u16string wide;
  for (const char c : text) wide.push_back(static_cast<unsigned char>(c));
  return wide;
}

Result from_char(Context& context, const std::string& text, const CS_DATAFMT& to,
                 CS_INT format = 0) {
  const CS_DATAFMT from = format_of(CS_CHAR_TYPE, static_cast<CS_INT>(text.size()), format);
  return convert(context, from, text.data(), text.size(), to);
}

Result from_varchar(Context& context, const std::string& text, const CS_DATAFMT& to) {
  return convert(context, CS_VARCHAR_TYPE, varchar_of(text), to);
}

Result from_unichar(Context& context, const std::u16string& text, const CS_DATAFMT& to) {
  const CS_DATAFMT from = format_of(CS_UNICHAR_TYPE, static_cast<CS_INT>(2 * text.size()));
  return convert(context, from, text.data(), 2 * text.size(), to);
}

// Runs `check` on the conversion of one text from each kind of source.
template <class Check>
void from_each(Context& context, const std::string& text, const CS_DATAFMT& to, Check check) {
  SCOPED_TRACE("text \"" + text + "\" to " + std::to_string(to.datatype));
  if (!text.empty()) {
    SCOPED_TRACE("char");
    check(from_char(context, text, to));
  }
  if (text.size() <= 256) {
    SCOPED_TRACE("varchar");
    check(from_varchar(context, text, to));
  }
  SCOPED_TRACE("unichar");
  check(from_unichar(context, widened(text), to));
}

TEST(TextToInteger, ValuesRangesAndSyntax) {
  struct Row {
    const char* text;
    CS_INT datatype;
    CS_RETCODE code;
    long long value;
  };
  const Row rows[] = {
      {"0", CS_TINYINT_TYPE, CS_SUCCEED, 0},
      {" 255 ", CS_TINYINT_TYPE, CS_SUCCEED, 255},
      {"256", CS_TINYINT_TYPE, CS_CVT_OVERFLOW, 255},
      {"-1", CS_TINYINT_TYPE, CS_CVT_OVERFLOW, 0},
      {"-0", CS_TINYINT_TYPE, CS_SUCCEED, 0},
      {"+00000000000000000000000000032767", CS_SMALLINT_TYPE, CS_SUCCEED, 32767},
      {"-32768", CS_SMALLINT_TYPE, CS_SUCCEED, -32768},
      {"-32769", CS_SMALLINT_TYPE, CS_CVT_OVERFLOW, -32768},
      {"2147483647\t\n", CS_INT_TYPE, CS_SUCCEED, 2147483647},
      {"2147483648", CS_INT_TYPE, CS_CVT_OVERFLOW, 2147483647},
      {"-2147483648", CS_INT_TYPE, CS_SUCCEED, -2147483648LL},
      {"-99999999999999999999999999", CS_INT_TYPE, CS_CVT_OVERFLOW, -2147483648LL},
      {"18446744073709551617", CS_INT_TYPE, CS_CVT_OVERFLOW, 2147483647},
      {"5", CS_BIT_TYPE, CS_SUCCEED, 1},
      {"-256", CS_BIT_TYPE, CS_SUCCEED, 1},
      {"0000", CS_BIT_TYPE, CS_SUCCEED, 0},
      {"", CS_INT_TYPE, CS_CVT_SYNTAX, 0},
      {"   ", CS_INT_TYPE, CS_CVT_SYNTAX, 0},
      {"- 5", CS_INT_TYPE, CS_CVT_SYNTAX, 0},
      {"+-5", CS_INT_TYPE, CS_CVT_SYNTAX, 0},
      {"-", CS_SMALLINT_TYPE, CS_CVT_SYNTAX, 0},
      {"1 2", CS_TINYINT_TYPE, CS_CVT_SYNTAX, 0},
      {"5x", CS_BIT_TYPE, CS_CVT_SYNTAX, 0},
      {"1.0", CS_INT_TYPE, CS_CVT_SYNTAX, 0},
  };
  Context context;
  for (const Row& row : rows) {
    from_each(context, row.text, format_of(row.datatype), [&row](const Result& result) {
      EXPECT_EQ(row.code, result.code);
      if (row.code == CS_CVT_SYNTAX) {
        EXPECT_EQ(0, result.length);
        EXPECT_TRUE(result.untouched_from(0));
        return;
      }
      EXPECT_EQ(comn_typelen(row.datatype, row.datatype == CS_BIT_TYPE ? 1 : 0), result.length);
      const long long value = row.datatype == CS_SMALLINT_TYPE ? result.as<CS_SMALLINT>()
                              : row.datatype == CS_INT_TYPE    ? result.as<CS_INT>()
                                                               : result.as<CS_TINYINT>();
      EXPECT_EQ(row.value, value);
    });
  }
}

TEST(TextToInteger, SixtyFourBitsFromUnicodeAlone) {
  struct Row {
    const char16_t* text;
    CS_RETCODE code;
    std::int64_t value;
  };
  using Limits = std::numeric_limits<std::int64_t>;
  const Row rows[] = {{u"-9223372036854775808", CS_SUCCEED, Limits::min()},
                      {u"9223372036854775807", CS_SUCCEED, Limits::max()},
                      {u"9223372036854775808", CS_CVT_OVERFLOW, Limits::max()},
                      {u"99999999999999999999999", CS_CVT_OVERFLOW, Limits::max()},
                      {u"\uFF0D\uFF11\uFF12\u3000", CS_SUCCEED, -12}};
  Context context;
  for (const Row& row : rows) {
    const Result result = from_unichar(context, row.text, format_of(CS_LONG_TYPE, 8));
    EXPECT_EQ(row.code, result.code);
    EXPECT_EQ(8, result.length);
    EXPECT_EQ(row.value, result.as<std::int64_t>());
  }
}

TEST(TextToFloat, ValuesAndRangeErrors) {
  constexpr double kMax = std::numeric_limits<double>::max();
  const struct {
    const char* text;
    CS_RETCODE code;
    double value;
  } rows[] = {
      {"0.1", CS_SUCCEED, 0.1},
      {" -1.5e3 ", CS_SUCCEED, -1500},
      {"+.25", CS_SUCCEED, 0.25},
      {"5.", CS_SUCCEED, 5},
      {"4.9406564584124654e-324", CS_SUCCEED, 4.9406564584124654e-324},
      {"1e309", CS_CVT_OVERFLOW, kMax},
      {"-1e99999999999999999999", CS_CVT_OVERFLOW, -kMax},
      {"1e9223372036854775807", CS_CVT_OVERFLOW, kMax},
      {"1e-400", CS_CVT_UNDERFLOW, 0},
      {"-0.00000001e-320", CS_CVT_UNDERFLOW, 0},
      {"1000000000000e-99999999999999999999", CS_CVT_UNDERFLOW, 0},
      {"", CS_CVT_SYNTAX, 0},
      {".", CS_CVT_SYNTAX, 0},
      {"1e", CS_CVT_SYNTAX, 0},
      {"1,5", CS_CVT_SYNTAX, 0},
      {"--1", CS_CVT_SYNTAX, 0},
      {"+-1", CS_CVT_SYNTAX, 0},
      {"0x10", CS_CVT_SYNTAX, 0},
  };
  Context context;
  for (const auto& row : rows) {
    from_each(context, row.text, format_of(CS_FLOAT_TYPE), [&row](const Result& result) {
      EXPECT_EQ(row.code, result.code);
      EXPECT_EQ(row.code == CS_CVT_SYNTAX ? 0 : 8, result.length);
      if (row.code != CS_CVT_SYNTAX) {
        EXPECT_EQ(row.value, result.as<double>());
      }
    });
  }
  const Result single = from_char(context, "-1e39", format_of(CS_REAL_TYPE));
  EXPECT_EQ(CS_CVT_OVERFLOW, single.code);
  EXPECT_EQ(-std::numeric_limits<float>::max(), single.as<float>());
  const Result ended = from_char(context, std::string("2.5\0x", 5), format_of(CS_FLOAT_TYPE));
  EXPECT_EQ(CS_SUCCEED, ended.code) << "a NUL ends the text";
  EXPECT_EQ(2.5, ended.as<double>());
}

std::string array_of(const Result& result, std::size_t length) {
  std::string hex;
  for (std::size_t at = 0; at < length; ++at) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    hex += kDigits[result.bytes[at] >> 4];
    hex += kDigits[result.bytes[at] & 0xF];
  }
  return hex;
}

TEST(TextToNumeric, PrecisionScaleMarkersAndCodes) {
  constexpr CS_INT kOwn = CS_USE_SRCVALUE;
  struct Row {
    const char* text;
    CS_INT precision, scale;
    CS_RETCODE code;
    CS_INT length;
    const char* bytes;
  };
  const Row rows[] = {
      {"12.34", 4, 2, CS_SUCCEED, 5, "04020004D2"},
      {" -1 ", 2, 0, CS_SUCCEED, 4, "02000101"},
      {"12.345", 5, 2, CS_CVT_TRUNCATED, 6, "0502000004D2"},
      {"12.340", 5, 2, CS_SUCCEED, 6, "0502000004D2"},
      {"123.45", 4, 2, CS_CVT_OVERFLOW, 5, "0402000000"},
      {"-1e77", 77, kOwn, CS_CVT_OVERFLOW, 0, nullptr},
      {"0012.50", kOwn, kOwn, CS_SUCCEED, 5, "04020004E2"},
      {"7", kOwn, 0, CS_SUCCEED, 4, "01000007"},
      {"1e2", 5, 0, CS_SUCCEED, 6, "050000000064"},
      {"1..2", 5, 2, CS_CVT_SYNTAX, 0, nullptr},
      {"", 5, 2, CS_CVT_SYNTAX, 0, nullptr},
      {"1", 0, 0, CS_CVT_PRECISION, 0, nullptr},
      {"1", 266, 0, CS_CVT_PRECISION, 0, nullptr},
      {"1", 5, 78, CS_CVT_SCALE, 0, nullptr},
      {"1", 5, -1, CS_CVT_SCALE, 0, nullptr},
  };
  Context context;
  for (const Row& row : rows) {
    CS_DATAFMT to = format_of(CS_NUMERIC_TYPE);
    to.precision = row.precision;
    to.scale = row.scale;
    from_each(context, row.text, to, [&row](const Result& result) {
      EXPECT_EQ(row.code, result.code) << row.precision << "," << row.scale;
      EXPECT_EQ(row.length, result.length);
      if (row.bytes != nullptr) {
        EXPECT_EQ(row.bytes, array_of(result, static_cast<std::size_t>(row.length)));
      }
    });
  }
  CS_DATAFMT to = format_of(CS_DECIMAL_TYPE);
  to.precision = 2;
  const std::string ended("42\0junk", 7);
  EXPECT_EQ(CS_SUCCEED, from_char(context, ended, to, CS_DFMT_NULLTERM).code);
  EXPECT_EQ(CS_CVT_SYNTAX, from_char(context, ended, to).code);
  const std::string buffer = ended + std::string(2000, '#');
  EXPECT_EQ(CS_SUCCEED, from_char(context, buffer, to, CS_DFMT_NULLTERM).code)
      << "what lies behind the NUL does not count";
  EXPECT_EQ(CS_SUCCEED, from_char(context, buffer, format_of(CS_FLOAT_TYPE)).code);
}

TEST(TextToMoneyAndDate, CodesAndLengths) {
  Context context;
  const auto expect = [&context](const char* text, CS_INT datatype, CS_RETCODE code,
                                 CS_INT length) {
    from_each(context, text, format_of(datatype), [=](const Result& result) {
      EXPECT_EQ(code, result.code);
      EXPECT_EQ(length, result.length);
    });
  };
  expect("$1,234.5", CS_MONEY_TYPE, CS_SUCCEED, 8);
  expect("-214748.3648", CS_MONEY4_TYPE, CS_SUCCEED, 4);
  expect("abc", CS_MONEY_TYPE, CS_CVT_SYNTAX, 0);
  expect("2000-02-29 23:59:59.999", CS_DATETIME_TYPE, CS_SUCCEED, 8);
  expect("Feb 3 1999 4:05PM", CS_DATETIME4_TYPE, CS_SUCCEED, 4);
  expect("1900-02-29", CS_DATETIME_TYPE, CS_CVT_OVERFLOW, 0);
  expect("3000-01-01", CS_DATETIME4_TYPE, CS_CVT_OVERFLOW, 0);
  expect("yesterday", CS_DATETIME_TYPE, CS_CVT_SYNTAX, 0);
  from_each(context, "-0.0001", format_of(CS_MONEY_TYPE), [](const Result& result) {
    EXPECT_EQ(-1, result.as<CS_MONEY>().mnyhigh);
    EXPECT_EQ(0xFFFFFFFFU, result.as<CS_MONEY>().mnylow);
  });
  EXPECT_EQ(CS_CVT_OVERFLOW, from_char(context, "214748.3648", format_of(CS_MONEY4_TYPE)).code);
}

TEST(TextToBinary, HexadecimalDigits) {
  Context context;
  const struct {
    const char* text;
    CS_INT room;
    CS_RETCODE code;
    const char* bytes;
  } rows[] = {{"0x1aF", 8, CS_SUCCEED, "01AF"},
              {"00ff", 8, CS_SUCCEED, "00FF"},
              {"0x", 8, CS_SUCCEED, ""},
              {"0X12", 8, CS_SUCCEED, "12"},
              {"123456", 2, CS_CVT_TRUNCATED, "1234"},
              {"12345", 2, CS_CVT_TRUNCATED, "0123"},
              {"12345g", 2, CS_CVT_SYNTAX, ""},
              {"x12", 8, CS_CVT_SYNTAX, ""},
              {" 12", 8, CS_CVT_SYNTAX, ""},
              {"0x0x1", 8, CS_CVT_SYNTAX, ""}};
  for (const auto& row : rows) {
    from_each(context, row.text, format_of(CS_BINARY_TYPE, row.room), [&row](const Result& r) {
      EXPECT_EQ(row.code, r.code);
      EXPECT_EQ(row.bytes, array_of(r, static_cast<std::size_t>(r.length)));
    });
  }
  const Result padded = from_char(context, "ff", format_of(CS_IMAGE_TYPE, 3, CS_DFMT_PADNULL));
  EXPECT_EQ("FF0000", array_of(padded, 3));
  EXPECT_EQ(3, padded.length);
  const std::string digits(600, 'a');
  const Result record = from_char(context, digits, format_of(CS_VARBINARY_TYPE));
  EXPECT_EQ(CS_CVT_TRUNCATED, record.code);
  EXPECT_EQ(256, record.as<CS_SMALLINT>());
  EXPECT_EQ(0xAA, record.bytes[257]);
}

TEST(TextToText, PaddingAndTruncation) {
  Context context;
  const struct {
    const char* text;
    CS_INT room, format;
    CS_RETCODE code;
    CS_INT length;
    std::string bytes;
  } rows[] = {
      {"abc", 10, CS_DFMT_NULLTERM, CS_SUCCEED, 4, std::string("abc\0", 4)},
      {"0123456789", 5, 0, CS_CVT_TRUNCATED, 5, "01234"},
      {"0123456789", 5, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, 5, std::string("0123\0", 5)},
      {"abc", 3, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, 3, std::string("ab\0", 3)},
      {"abc", 3, 0, CS_SUCCEED, 3, "abc"},
      {"abc", 5, CS_DFMT_PADBLANK, CS_SUCCEED, 5, "abc  "},
      {"abc", 6, CS_DFMT_PADBLANK | CS_DFMT_NULLTERM, CS_SUCCEED, 6, std::string("abc  \0", 6)},
      {"abc", 5, CS_DFMT_PADNULL, CS_SUCCEED, 5, std::string("abc\0\0", 5)},
      {"abc", 5, CS_DFMT_PADNULL | CS_DFMT_PADBLANK, CS_CVT_FORMAT, 3, "abc"},
      {"abc", 0, 0, CS_CVT_TRUNCATED, 0, ""},
      {"abc", 0, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, 0, ""},
      {"it's", 9, CS_DFMT_ESCQUOTE, CS_SUCCEED, 5, "it''s"},
      {"it's", 4, CS_DFMT_ESCQUOTE, CS_CVT_TRUNCATED, 4, "it''"},
      {"it's", 3, CS_DFMT_ESCQUOTE, CS_CVT_TRUNCATED, 2, "it"},
      {"''", 5, CS_DFMT_ESCQUOTE | CS_DFMT_NULLTERM, CS_SUCCEED, 5, std::string("''''\0", 5)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " room " + std::to_string(row.room) + " format " +
                 std::to_string(row.format));
    for (const CS_INT type : {CS_CHAR_TYPE, CS_TEXT_TYPE, CS_SENSITIVITY_TYPE}) {
      const CS_DATAFMT to = format_of(type, row.room, row.format);
      for (const Result& result :
           {from_char(context, row.text, to), from_varchar(context, row.text, to)}) {
        EXPECT_EQ(row.code, result.code);
        EXPECT_EQ(row.length, result.length);
        EXPECT_EQ(row.bytes, result.text());
      }
    }
  }
  const std::string nul_ended("it's\0tail", 9);
  const Result ended = from_char(context, nul_ended,
                                 format_of(CS_CHAR_TYPE, 20, CS_DFMT_ESCQUOTE | CS_DFMT_NULLTERM));
  EXPECT_EQ(CS_SUCCEED, ended.code);
  EXPECT_EQ(std::string("it''s\0", 6), ended.text()) << "no second NUL";

  const Result record = from_char(context, std::string(300, 'x'), format_of(CS_VARCHAR_TYPE));
  EXPECT_EQ(CS_CVT_TRUNCATED, record.code);
  EXPECT_EQ(258, record.length);
  EXPECT_EQ(256, record.as<CS_SMALLINT>());
  const Result empty = from_varchar(context, "", format_of(CS_CHAR_TYPE, 4, CS_DFMT_PADBLANK));
  EXPECT_EQ(CS_SUCCEED, empty.code);
  EXPECT_EQ("    ", empty.text());
}

// A double-byte set in which 0x81 leads, 0x81 0x27 has no ASCII form, 0x82 0x66 is a full-width
// apostrophe and 0x82 0x4F.. are full-width digits.
class DoubleByte {
 public:
  DoubleByte() {
    widths_.fill(0x11);
    widths_[0x81] = widths_[0x82] = 0x22;
    for (std::size_t byte = 0; byte < 256; ++byte) {
      types_[byte] = com_get_typemap()[byte];
      norms_[byte] = static_cast<CS_BYTE>(byte);
    }
    types_[0x81] = {1, 0, 0, COMN_CT_LEAD};
    types_[0x82] = {1, 0, 0, COMN_CT_LEAD};
    norms_[0x81] = 0;
    norms_[0x82] = 1;
    norms_[256 + 0x66] = '\'';
    for (std::size_t digit = 0; digit < 10; ++digit)
      norms_[256 + 0x4F + digit] = static_cast<CS_BYTE>('0' + digit);
    attrib_.cs_class = COMN_CS_MULTIBYTE;
    attrib_.cs_maxcharlen = 2;
    attrib_.cs_ncharsize = 2;
    attrib_.cs_nnorm = 2;
    attrib_.cs_ntype = 2;
    attrib_.cs_width_map = widths_.data();
    attrib_.cs_norm_map = norms_.data();
    attrib_.cs_type_map = types_.data();
    charset_.char_attrib = &attrib_;
    entry_.locchardesc = &charset_;
    locale_.ctypeptr = &entry_;
  }
  const char_attrib* attributes() const { return &attrib_; }
  CS_LOCALE* locale() { return &locale_; }

 private:
  std::array<CS_BYTE, 256> widths_{};
  std::array<CS_BYTE, 512> norms_{};
  std::array<char_map, 512> types_{};
  char_attrib attrib_{};
  CsCharDesc charset_{};
  CsLocCache entry_{};
  CS_LOCALE locale_{};
};

TEST(DoubleByteText, WholeCharactersQuotesAndDigits) {
  DoubleByte set;
  Context context;
  context.ctxlocale = set.locale();
  const std::string text = "a\x81\x40\x81\x41";
  const Result cut = from_char(context, text, format_of(CS_CHAR_TYPE, 4, CS_DFMT_NULLTERM));
  EXPECT_EQ(CS_CVT_TRUNCATED, cut.code);
  EXPECT_EQ("a\x81\x40", cut.text()) << "no half character, though a byte of room is left";
  EXPECT_EQ(5, comnb_truncate_chars(set.attributes(), text.data(), 5, 9));
  EXPECT_EQ(3, comnb_truncate_chars(set.attributes(), text.data(), 4, 9)) << "the source cuts";

  const CS_DATAFMT quoting = format_of(CS_CHAR_TYPE, 20, CS_DFMT_ESCQUOTE);
  EXPECT_EQ("\x82\x66\x82\x66", from_char(context, "\x82\x66", quoting).text());
  EXPECT_EQ("\x81\x27", from_char(context, "\x81\x27", quoting).text()) << "a second byte 0x27";
  const Result half = from_char(context, "\x82\x66", format_of(CS_CHAR_TYPE, 3, CS_DFMT_ESCQUOTE));
  EXPECT_EQ(CS_CVT_TRUNCATED, half.code);
  EXPECT_EQ(0, half.length) << "a doubled quote is written whole or not at all";

  EXPECT_EQ(42, from_char(context, "\x82\x53\x82\x51 ", format_of(CS_INT_TYPE)).as<CS_INT>());
  EXPECT_EQ(CS_CVT_SYNTAX, from_char(context, "4\x82", format_of(CS_INT_TYPE)).code)
      << "a cut character";
  EXPECT_EQ(4.5, from_char(context, "\x82\x53.5", format_of(CS_FLOAT_TYPE)).as<double>());
}

TEST(UnicharText, PairsStayWholeAndMalformedTextIsTold) {
  Context context;
  const std::u16string text = u"a\U0001F600b";
  const Result all = from_unichar(context, text, format_of(CS_UNICHAR_TYPE, 12, CS_DFMT_NULLTERM));
  EXPECT_EQ(CS_SUCCEED, all.code);
  EXPECT_EQ(10, all.length);
  const Result cut = from_unichar(context, text, format_of(CS_UNICHAR_TYPE, 5));
  EXPECT_EQ(CS_CVT_TRUNCATED, cut.code);
  EXPECT_EQ(2, cut.length);
  for (const auto& bad : {u"a\xD800", u"\xDC00\xD800", u"\xD800z"}) {
    for (const CS_INT type : {CS_UNICHAR_TYPE, CS_CHAR_TYPE, CS_INT_TYPE, CS_BINARY_TYPE}) {
      EXPECT_EQ(CS_CVT_BADXLATE, from_unichar(context, bad, format_of(type, 20)).code) << type;
    }
  }
  const CS_DATAFMT odd = format_of(CS_UNICHAR_TYPE, 3);
  EXPECT_EQ(CS_CVT_BADXLATE, convert(context, odd, u"1", 3, format_of(CS_INT_TYPE)).code);

  const Result padded =
      from_char(context, "ab", format_of(CS_UNICHAR_TYPE, 9, CS_DFMT_PADBLANK | CS_DFMT_NULLTERM));
  EXPECT_EQ(std::string("a\0b\0 \0\0\0", 8), padded.text());
  const Result number =
      convert(context, CS_INT_TYPE, CS_INT{-12345}, format_of(CS_UNICHAR_TYPE, 10));
  EXPECT_EQ(CS_CVT_OVERFLOW, number.code);
  EXPECT_EQ(std::string("*\0", 2), number.text());
  const Result money = convert(context, CS_MONEY4_TYPE, CS_MONEY4{12345678},
                               format_of(CS_UNICHAR_TYPE, 9, CS_DFMT_NULLTERM));
  EXPECT_EQ(CS_CVT_OVERFLOW, money.code) << "1234.57";
  EXPECT_EQ(std::string("1\0002\0003\0\0\0", 8), money.text()) << "cut as the text of money is";
}

TEST(BinaryTo, TextAndStoredBytes) {
  Context context;
  const std::string bytes("\x00\x1F\xAB", 3);
  const CS_DATAFMT from = format_of(CS_BINARY_TYPE, 3);
  const auto to = [&](const CS_DATAFMT& format) {
    return convert(context, from, bytes.data(), bytes.size(), format);
  };
  const struct {
    CS_INT room, format;
    CS_RETCODE code;
    std::string text;
  } rows[] = {{6, 0, CS_SUCCEED, "001FAB"},
              {6, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, std::string("001F\0", 5)},
              {7, CS_DFMT_NULLTERM, CS_SUCCEED, std::string("001FAB\0", 7)},
              {5, 0, CS_CVT_TRUNCATED, "001F"},
              {8, CS_DFMT_PADBLANK, CS_SUCCEED, "001FAB  "},
              {0, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, ""},
              {1, CS_DFMT_NULLTERM, CS_CVT_TRUNCATED, std::string(1, '\0')}};
  for (const auto& row : rows) {
    const Result result = to(format_of(CS_CHAR_TYPE, row.room, row.format));
    EXPECT_EQ(row.code, result.code) << row.room;
    EXPECT_EQ(row.text, result.text()) << row.room;
  }
  EXPECT_EQ(CS_CVT_TRUNCATED, to(format_of(CS_BINARY_TYPE, 2)).code);
  EXPECT_EQ(0x00AB1F00, to(format_of(CS_INT_TYPE)).as<CS_INT>()) << "missing bytes are zero";
  EXPECT_EQ(CS_CVT_OVERFLOW, to(format_of(CS_SMALLINT_TYPE)).code);
  EXPECT_EQ(CS_CVT_OVERFLOW, to(format_of(CS_BIT_TYPE)).code);
  const CS_DATAFMT two = format_of(CS_VARBINARY_TYPE);
  CS_VARBINARY record{2, {2, 0}};
  const Result bad_bit = convert(context, two, &record, sizeof record, format_of(CS_BIT_TYPE));
  EXPECT_EQ(CS_CVT_DOMAIN, bad_bit.code);
  EXPECT_TRUE(bad_bit.untouched_from(0));
  EXPECT_EQ(0, bad_bit.length);
  record = {4, {78, 0, 0, 1}};
  EXPECT_EQ(CS_CVT_DOMAIN,
            convert(context, two, &record, sizeof record, format_of(CS_NUMERIC_TYPE)).code);
  record = {4, {2, 0, 0, 100}};
  EXPECT_EQ(CS_CVT_DOMAIN,
            convert(context, two, &record, sizeof record, format_of(CS_NUMERIC_TYPE)).code);
  record = {4, {2, 0, 1, 99}};
  EXPECT_EQ(CS_SUCCEED,
            convert(context, two, &record, sizeof record, format_of(CS_NUMERIC_TYPE)).code);
  for (const CS_SMALLINT len : {CS_SMALLINT{-1}, CS_SMALLINT{257}}) {
    record.len = len;
    const Result result = convert(context, two, &record, sizeof record, format_of(CS_CHAR_TYPE, 9));
    EXPECT_EQ(CS_CVT_DOMAIN, result.code);
    EXPECT_EQ(0, result.length);
  }
}

TEST(TextDeathTest, EmptySourcesAndLongIntegersStop) {
  Context context;
  const CS_DATAFMT empty = format_of(CS_CHAR_TYPE, 0);
  const CS_DATAFMT to = format_of(CS_INT_TYPE);
  const CS_DATAFMT from = format_of(CS_CHAR_TYPE, 1);
  const CS_DATAFMT to_long = format_of(CS_LONG_TYPE, 8);
  CS_INT dest = 0, length = 0;
  EXPECT_DEATH(comn_chartoi4(&context, &empty, "1", &to, &dest, &length), "assertion failed");
  EXPECT_DEATH(comn_chartoi4(&context, &to, "1", &to, &dest, &length), "assertion failed");
  EXPECT_DEATH(comn_chartoi4(&context, &from, "1", &from, &dest, &length), "assertion failed");
  EXPECT_DEATH(comn_chartoi8(&context, &from, "1", &to_long, &dest, &length), "assertion failed");
  const CS_DATAFMT varchar = format_of(CS_VARCHAR_TYPE);
  const CS_VARCHAR value = varchar_of("1");
  EXPECT_DEATH(comn_varchartoi8(&context, &varchar, &value, &to, &dest, &length),
               "assertion failed");
}

}  // namespace
