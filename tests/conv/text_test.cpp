// Text to every type: each literal as character, varchar and UTF-16 text; sets of two-byte
// characters, Unicode, and the locale of dates. Character sets that differ are tested with the
// localization home.
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "comnlib.h"
#include "conv/chscan.h"
#include "conv/textcopy.h"
#include "conversion.h"
#include "intl/convcfg.h"
#include "intl/locdata.h"
#include "support/two_byte_set.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

constexpr CS_INT kTerm = CS_DFMT_NULLTERM, kBlanks = CS_DFMT_PADBLANK, kQuotes = CS_DFMT_ESCQUOTE;
constexpr CS_RETCODE kDone = CS_SUCCEED, kOver = CS_CVT_OVERFLOW, kUnder = CS_CVT_UNDERFLOW;
constexpr CS_RETCODE kCut = CS_CVT_TRUNCATED, kSyntax = CS_CVT_SYNTAX;

// Checks a text as each type that holds it.
void check_text(Context& context, const std::string& text, const CS_DATAFMT& to, CS_RETCODE code,
                const std::string& bytes, CS_INT format = 0) {
  for (const CS_INT type : {CS_CHAR_TYPE, CS_VARCHAR_TYPE, CS_UNICHAR_TYPE}) {
    if (type == CS_CHAR_TYPE && text.empty()) continue;  // stops
    if (type == CS_VARCHAR_TYPE && text.size() > CS_MAX_CHAR) continue;
    if (type != CS_UNICHAR_TYPE && to.datatype == CS_LONG_TYPE) continue;
    Encoded source = text_as(type, text);
    source.format.format = format;
    check(context, {source, to, code, bytes});
  }
}

// Short texts are read in one register: every length, place of the point, sign and blanks.
TEST(Literals, ShortNumbersOfEveryLayout) {
  Context context;
  for (std::size_t digits = 1; digits <= 17; ++digits) {
    for (std::size_t decimals = 0; decimals <= digits; ++decimals) {
      for (const std::string layout : {"", "-", "+", "   ", "  -", "  ", " +", "          "}) {
        std::string number = std::string("98765432109876543").substr(0, digits);
        const std::string units = (layout.ends_with('-') ? "-" : "") + number;
        const bool whole = decimals == 0 && digits % 2 == 0;  // others end with a point
        if (!whole) number.insert(digits - decimals, 1, '.');
        const Encoded text = text_as(CS_CHAR_TYPE, layout + number + std::string(digits % 3, ' '));
        const auto becomes = [&](const CS_DATAFMT& to, CS_RETCODE code, const std::string& value) {
          check(context, {text, to, code, bytes_as(to.datatype, value)});
        };
        becomes(format_of(CS_FLOAT_TYPE), kDone, layout + number);
        const std::string integer = digits < 10       ? units
                                    : units[0] == '-' ? "-2147483648"
                                                      : "2147483647";
        becomes(format_of(CS_INT_TYPE),
                !whole        ? kSyntax
                : digits < 10 ? kDone
                              : kOver,
                whole ? integer : "");
        if (decimals <= 4 && digits < 15)
          becomes(format_of(CS_MONEY_TYPE), kDone, units + std::string(4 - decimals, '0'));
        const std::string scale = std::to_string(decimals);
        becomes(numeric_format(20, static_cast<CS_INT>(decimals)), kDone,
                "20," + scale + "," + units);
      }
    }
  }
}

TEST(Literals, OfTheTable) {
  Context context;
  table::for_each_line("conv/data/literals.txt", [&](const table::Fields& line) {
    const Row row = row_of({"char", line[0], line[1], line[2], "", line[3], "", line[4]});
    check_text(context, row.source.bytes, row.to, row.code, row.bytes);
  });
}

// A float's literal has any length, and every digit of it counts; a NUL ends it.
TEST(Literals, OfAnyLength) {
  constexpr double kMax = std::numeric_limits<double>::max();
  const std::string zeros(3000, '0'), digits(1024, '0');
  // Halfway between 1 and the next double, and so rounded to 1 unless more follows.
  const std::string half = "1.00000000000000011102230246251565404236316680908203125";
  Context context;
  const auto floating = [&](const std::string& text, CS_RETCODE code, CS_FLOAT value) {
    check_text(context, text, format_of(CS_FLOAT_TYPE), code, bytes_of(value));
  };
  floating(half + zeros, kDone, 1);
  floating(half + zeros + "1", kDone, std::nextafter(1.0, 2.0));
  floating(zeros + half + zeros + "1e+0" + zeros, kDone, std::nextafter(1.0, 2.0));
  floating("1" + zeros + "e-3000", kDone, 1);
  floating("-0." + zeros + "25e" + zeros + "3001", kDone, -2.5);
  floating("1" + zeros, kOver, kMax);
  floating("0." + zeros + "1e10", kUnder, 0);
  floating(zeros + "e999999999999999999999", kDone, 0);
  floating("42\0junk"s + zeros, kDone, 42);
  for (const std::string& text : {zeros + "e", zeros + " 1"})
    check_text(context, text, format_of(CS_FLOAT_TYPE), kSyntax, "");
  // A NUL ends a numeric's text where its format says so.
  const CS_DATAFMT to = numeric_format(2, 0, CS_DECIMAL_TYPE);
  for (const std::string& text : {"42\0junk"s, "42\0junk"s + zeros}) {
    check_text(context, text, to, kDone, "\2\0\0\x2A"s, kTerm);
    check_text(context, text, to, kSyntax, "");
  }
  check_text(context, digits + ' ', to, kDone, "\2\0\0\0"s);
  check_text(context, digits + '0', to, kSyntax, "");  // a digit too many for a numeric
}

// A locale of one character set, or of one set of date conventions.
struct Locale : CS_LOCALE {
  explicit Locale(const char_attrib* attrib = nullptr) : CS_LOCALE{} {
    desc.char_attrib = const_cast<char_attrib*>(attrib);
    entry.locchardesc = &desc;
    info.conventions = comnlib::kUsEnglish;
    entry.locdateinfo = &info;
    (attrib == nullptr ? timeptr : ctypeptr) = &entry;
  }
  Locale(const Locale&) = delete;
  CsCharDesc desc{};
  CsDateInfo info{};
  CsLocCache entry{};
};

TEST(TwoByteText, WholeCharactersQuotesAndDigits) {
  const TwoByteSet set;
  Locale locale(set.attrib());
  Context context;
  context.ctxlocale = &locale;
  table::for_each_line("conv/data/two_byte_text.txt",
                       [&](const table::Fields& line) { check(context, row_of(line)); });
  // A set of single bytes has no widths; its lower-case letters are its ASCII forms.
  locale.desc.char_attrib = const_cast<char_attrib*>(com_get_charattrib());
  for (const Row& row :
       {Row{text_as(CS_CHAR_TYPE, " 42 "), format_of(CS_INT_TYPE), kDone, bytes_of(42)},
        Row{text_as(CS_CHAR_TYPE, "4E2\0x"s), format_of(CS_FLOAT_TYPE), kDone, bytes_of(400.0)}})
    check(context, row);
  const std::string text = "a\x83\x40\x83\x41";
  EXPECT_EQ(5, comnb_truncate_chars(set.attrib(), text.data(), 5, 9));
  EXPECT_EQ(4, comnb_truncate_chars(set.attrib(), text.data(), 4, 4)) << "the source cuts";
  EXPECT_EQ(3, comnb_truncate_chars(set.attrib(), text.data(), 5, 4)) << "the destination cuts";
  EXPECT_EQ(2, comnb_truncate_chars(nullptr, text.data(), 5, 2));

  CS_TINYINT tiny = 7;
  CS_SMALLINT small = 7;
  CS_INT whole = 7;
  EXPECT_EQ(comnlib::kScanned, com__chtoi2_mb(set.attrib(), "\x81\x34\x32", 3, &small));
  EXPECT_EQ(42, small);
  EXPECT_EQ(comnlib::kOutOfRange, com__chtoi2_mb(nullptr, "-32769", 6, &small));
  EXPECT_EQ(comnlib::kNoInteger, com__chtoi2_mb(nullptr, "4x", 2, &small));
  EXPECT_EQ(-32768, small) << "a syntax error stores nothing";
  EXPECT_EQ(comnlib::kOutOfRange, com__chtoi1_mb(nullptr, "-1", 2, &tiny));
  EXPECT_EQ(comnlib::kScanned, com__chtoi4_mb(nullptr, "-2147483648", 11, &whole));
  EXPECT_EQ(std::pair(CS_TINYINT{0}, INT32_MIN), std::pair(tiny, whole));
}

// ASCII goes by blocks where the set has it. One other character, at any place in them, is read,
// cut and doubled by the tables.
TEST(TwoByteText, AmongAsciiAtEveryPlace) {
  const TwoByteSet set;
  Locale locale(set.attrib());
  CsConvConfig config{};
  config.ascii_based = true;
  locale.desc.conv_config = &config;
  Context context;
  context.ctxlocale = &locale;
  for (std::size_t place = 0; place < 40; ++place) {
    for (const std::size_t after : {0, 2, 5, 20}) {
      const std::string zeros(after, '0');
      const std::string text = std::string(place, '0') + "\x81\x34" + zeros;
      check(context, {text_as(CS_CHAR_TYPE, text), format_of(CS_FLOAT_TYPE), kDone,
                      bytes_of(std::stod("4" + zeros))});
    }
    for (const std::string other : {"\x81'", "'", "\x83'"}) {
      const bool quote = other != "\x83'";
      for (const CS_INT room : {15, 16, 17, 31, 32, 33, 38, 39}) {
        for (const CS_INT format : {0, kQuotes}) {
          const std::string middle = format != 0 && quote ? other + other : other;
          const auto fits = static_cast<std::size_t>(room);
          std::string kept = std::string(std::min(place, fits), 'a');
          if (place + middle.size() <= fits) kept += middle + std::string(39 - place, 'a');
          check(context, {text_as(CS_CHAR_TYPE,
                                  std::string(place, 'a') + other + std::string(39 - place, 'a')),
                          format_of(CS_CHAR_TYPE, room, format), kCut, kept.substr(0, fits)});
        }
      }
    }
  }
}

// Descriptors of two contexts, say. Without a number, or with no configuration of their own,
// nothing leads from one set to the other.
TEST(TwoByteText, OneObjectIdIsOneCharacterSet) {
  const TwoByteSet set;
  Locale first(set.attrib()), second(set.attrib());
  Context context;
  Encoded source = text_as(CS_CHAR_TYPE, "it's \x83");
  source.format.locale = &first;
  for (const auto& [from, into] : {std::pair<CsOid, CsOid>{5, 5}, {5, 6}, {0, 0}}) {
    first.desc.oid = from;
    second.desc.oid = into;
    const bool same = from == into && from != 0;
    const CS_RETCODE code = same ? kDone : CS_CVT_NOXLATE;
    CS_DATAFMT to = format_of(CS_CHAR_TYPE, 9);
    to.locale = &second;
    check(context, {source, to, code, same ? source.bytes : ""});
    to.datatype = CS_VARCHAR_TYPE;
    EXPECT_EQ(code, convert(context, source, to).code) << from;
  }
}

TEST(UnicharText, PairsStayWholeAndMalformedTextIsReported) {
  Context context;
  const auto unichar = [](CS_INT room, CS_INT format = 0) {
    return format_of(CS_UNICHAR_TYPE, room, format);
  };
  const Encoded text = utf16_of(u"a\U0001F600b");
  Encoded odd = utf16_of(u"12");
  odd.format.maxlength = 3;
  odd.bytes.pop_back();
  const Row rows[] = {
      {text, unichar(12, kTerm), kDone, text.bytes + "\0\0"s},
      {text, unichar(5, kBlanks), kCut, "a\0"s},
      {odd, unichar(3, kBlanks), kDone, "1\0002"s},
      {odd, unichar(5, kTerm), kCut, "1\0\0\0"s},
      {odd, unichar(7, kTerm), kDone, "1\0002\0\0\0"s},
      {odd, unichar(7, kBlanks), kDone, "1\0002\0 \0"s},
      {utf16_of(u"\uFF0D\uFF11\uFF12\u3000"), format_of(CS_INT_TYPE), kDone, bytes_of(-12)},
      {utf16_of(u"\uFF5E\uFF5F"), format_of(CS_INT_TYPE), kSyntax, ""},
  };
  for (const Row& row : rows) check(context, row);
  EXPECT_EQ("\0\0"s, convert(context, odd, unichar(3, kTerm)).text());
  for (const Encoded& bad :
       {utf16_of({u'a', 0xD800}), utf16_of({0xDC00, 0xD800}), utf16_of({0xD800, u'z'}), odd}) {
    for (const CS_INT type : {CS_CHAR_TYPE, CS_VARCHAR_TYPE, CS_INT_TYPE, CS_BINARY_TYPE}) {
      const Result result = convert(context, bad, format_of(type, 20));
      EXPECT_EQ(CS_CVT_BADXLATE, result.code) << type;
      EXPECT_GE(type == CS_VARCHAR_TYPE ? 258 : 2, result.length) << type;
    }
    // Between Unicode texts nothing is lost where it fits; a cut leaves whole units.
    const CS_INT length = bad.format.maxlength;
    check(context, {bad, unichar(length), kDone, bad.bytes});
    for (const CS_INT room : {length - 1, length - 2}) {
      const Result shorter = convert(context, bad, unichar(room));
      EXPECT_EQ(std::pair(kCut, 0), std::pair(shorter.code, shorter.length % 2));
      EXPECT_EQ(bad.bytes.substr(0, static_cast<std::size_t>(shorter.length)), shorter.text());
    }
  }
}

TEST(DateText, FollowsTheDestinationsLocaleOrElseTheContexts) {
  Locale iso, odd, bare;
  iso.info.conventions.style = COM_DATESTYLE_ISO;
  odd.info.conventions.style = 9;
  bare.entry.locdateinfo = nullptr;
  const CS_DATETIME4 afternoon{46205, 905};
  const struct {
    CS_LOCALE *context, *destination;
    CS_RETCODE code;
    std::string text;
    CS_INT style;
  } rows[] = {{&iso, nullptr, kDone, "2026-07-04T15:05:00.000", COM_DATESTYLE_ISO},
              {&odd, &iso, kDone, "2026-07-04T15:05:00.000", COM_DATESTYLE_ISO},
              {&iso, &bare, kDone, "Jul  4 2026  3:05PM", COM_DATESTYLE_DEFAULT},
              {&odd, nullptr, CS_CVT_STYLE, "", 9}};
  for (const auto& row : rows) {
    Context context;
    context.ctxlocale = row.context;
    CS_DATAFMT from = format_of(CS_DATETIME4_TYPE), to = format_of(CS_CHAR_TYPE, 30);
    to.locale = row.destination;
    check(context, {value_of(CS_DATETIME4_TYPE, afternoon), to, row.code, row.text});
    CS_INT style = 7, length = 0;
    EXPECT_EQ(row.code, comn_get_datetochar_fmt(&context, &from, &afternoon, &to, &style, &length));
    EXPECT_EQ(std::pair(row.style, 4), std::pair(style, length)) << row.text;
  }
}

}  // namespace
