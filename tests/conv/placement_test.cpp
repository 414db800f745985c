// Padding and placement: what the destination holds for every kind of source, room and format bit.
#include "conv/conversion.h"
#include "conv/newutils.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

constexpr CS_INT kTerm = CS_DFMT_NULLTERM;
constexpr CS_INT kNulls = CS_DFMT_PADNULL;
constexpr CS_INT kBlanks = CS_DFMT_PADBLANK;

using Padding = CS_RETCODE (*)(CS_INT, const CS_DATAFMT*, CS_VOID*, CS_INT*);

struct PaddingRow {
  const char* label;
  Padding pad;
  std::string text;
  CS_INT maxlength;
  CS_INT format;
  CS_RETCODE code;
  std::string bytes;   // the result's
  CS_INT length = -1;  // given where n is not the text's length
};

const PaddingRow kPaddings[] = {
    {"blanks and NUL", comn__padchar, "abc", 6, kBlanks | kTerm, 1, {"abc  \0", 6}},
    {"NULs", comn__padchar, "abc", 5, kNulls | kTerm, 1, {"abc\0\0", 5}},
    {"NUL is counted", comn__padchar, "abc", 4, kTerm, 1, {"abc\0", 4}},
    {"exact fit", comn__padchar, "abc", 3, kBlanks, 1, "abc"},
    {"exact fit, NUL", comn__padchar, "abc", 3, kTerm, CS_CVT_OVERFLOW, {"ab\0", 3}},
    {"clash", comn__padchar, "abc", 6, kBlanks | kNulls, CS_CVT_FORMAT, "abc"},
    {"overflow before clash", comn__padchar, "abc", 3, 7, CS_CVT_OVERFLOW, {"ab\0", 3}},
    {"n beyond the room", comn__padchar, "abc", 3, kBlanks, CS_CVT_OVERFLOW, "abc", 4},
    {"n below the result", comn__padchar, "abc", 5, kBlanks, 1, "abc  ", 1},
    {"nowhere for the NUL", comn__padchar, "", 0, kTerm, CS_CVT_OVERFLOW, ""},
    {"binary NULs", comn__padbin, "abc", 5, kNulls | kBlanks | kTerm, 1, {"abc\0\0", 5}},
    {"binary, other bits", comn__padbin, "abc", 5, kBlanks | kTerm, 1, "abc"},
    {"units, blanks", comn__padunichar, {"a\0", 2}, 7, kBlanks, 1, {"a\0 \0 \0", 6}},
    {"units, NUL", comn__padunichar, {"a\0", 2}, 4, kTerm, 1, {"a\0\0\0", 4}},
    {"units, half a unit", comn__padunichar, "a", 4, kTerm, 1, {"a\0\0\0", 4}},
    {"units, half a NUL", comn__padunichar, {"a\0", 2}, 3, kTerm, CS_CVT_OVERFLOW, {"\0\0", 2}},
};

TEST(Padding, FollowsTheFormat) {
  for (const PaddingRow& row : kPaddings) {
    std::string buffer = row.text + std::string(20, '#');
    const CS_DATAFMT format = format_of(CS_CHAR_TYPE, row.maxlength, row.format);
    auto length = static_cast<CS_INT>(row.text.size());
    EXPECT_EQ(row.code,
              row.pad(row.length < 0 ? length : row.length, &format, buffer.data(), &length))
        << row.label;
    EXPECT_EQ(row.bytes, buffer.substr(0, static_cast<std::size_t>(length))) << row.label;
    const auto end = std::max<std::size_t>(static_cast<std::size_t>(length), row.text.size());
    EXPECT_EQ(std::string(buffer.size() - end, '#'), buffer.substr(end)) << row.label;
  }
}

TEST(Placement, OfEveryKindOfSource) {
  const Encoded number = value_of(CS_INT_TYPE, -12345), letters = value_of(CS_INT_TYPE, 0x41424344);
  const Encoded digit = value_of(CS_INT_TYPE, 7), bit = value_of(CS_BIT_TYPE, CS_BIT{1});
  const Encoded money = value_of(CS_MONEY4_TYPE, CS_MONEY4{12345678});
  const Encoded zero = value_of(CS_NUMERIC_TYPE, CS_NUMERIC{77, 40, {}});
  const Encoded date = value_of(CS_DATETIME4_TYPE, CS_DATETIME4{46205, 905});
  const Encoded bytes = text_as(CS_BINARY_TYPE, "\0\x1F\xAB"s);
  const std::string day = "Jul  4 2026  3:05PM";
  const auto to = [](CS_INT type, CS_INT room, CS_INT format = 0) {
    return format_of(type, room, format);
  };
  const Row rows[] = {
      // Numbers become "*".
      {number, to(CS_CHAR_TYPE, 6, kTerm), CS_CVT_OVERFLOW, "*\0"s},
      {number, to(CS_LONGCHAR_TYPE, 7, kTerm), CS_SUCCEED, "-12345\0"s},
      {number, to(CS_TEXT_TYPE, 8, kBlanks), CS_SUCCEED, "-12345  "},
      {number, to(CS_CHAR_TYPE, 5), CS_CVT_OVERFLOW, "*\0"s, 1},
      {number, to(CS_CHAR_TYPE, 5, kBlanks), CS_CVT_OVERFLOW, "*    "},
      {number, to(CS_CHAR_TYPE, 5, kBlanks | kNulls), CS_CVT_OVERFLOW, "*\0"s, 1},
      {number, to(CS_CHAR_TYPE, 2, kNulls), CS_CVT_OVERFLOW, "*\0"s},
      {number, to(CS_CHAR_TYPE, 1, kBlanks), CS_CVT_OVERFLOW, "", 1},
      {digit, to(CS_CHAR_TYPE, 1, kTerm), CS_CVT_OVERFLOW, "", 1},
      {value_of(CS_FLOAT_TYPE, 0.1), to(CS_CHAR_TYPE, 17), CS_CVT_OVERFLOW, "*\0"s, 1},
      {zero, to(CS_CHAR_TYPE, 42), CS_SUCCEED, "0." + std::string(40, '0')},
      {zero, to(CS_CHAR_TYPE, 41), CS_CVT_OVERFLOW, "*\0"s, 1},
      {date, to(CS_TEXT_TYPE, 20, kTerm), CS_SUCCEED, day + '\0'},
      {date, to(CS_CHAR_TYPE, 18), CS_CVT_OVERFLOW, "*\0"s, 1},
      // A bit has no "*" and always counts its digit; money is cut.
      {bit, to(CS_CHAR_TYPE, 0, kTerm), CS_CVT_OVERFLOW, "", 1},
      {bit, to(CS_CHAR_TYPE, 1, kTerm), CS_CVT_OVERFLOW, "\0"s, 1},
      {bit, to(CS_CHAR_TYPE, 3, kBlanks | kNulls), CS_CVT_FORMAT, "1"},
      {money, to(CS_TEXT_TYPE, 3), CS_CVT_OVERFLOW, "123"},
      {money, to(CS_CHAR_TYPE, 0), CS_CVT_OVERFLOW, ""},
      {money, to(CS_CHAR_TYPE, 7, kTerm), CS_CVT_OVERFLOW, "1234.5\0"s},
      {money, to(CS_CHAR_TYPE, 9, kBlanks | kNulls), CS_CVT_FORMAT, "1234.57"},
      // Units of two bytes: one byte to spare holds no terminator and is not padded with a blank.
      {number, to(CS_UNICHAR_TYPE, 10), CS_CVT_OVERFLOW, "*\0\0\0"s, 2},
      {digit, to(CS_UNICHAR_TYPE, 3, kTerm), CS_CVT_OVERFLOW, "", 2},
      {digit, to(CS_UNICHAR_TYPE, 5, kTerm), CS_SUCCEED, "7\0\0\0"s},
      {number, to(CS_UNICHAR_TYPE, 13, kTerm), CS_CVT_OVERFLOW, "*\0\0\0"s},
      {digit, to(CS_UNICHAR_TYPE, 7, kBlanks), CS_SUCCEED, "7\0 \0 \0"s},
      {bit, to(CS_UNICHAR_TYPE, 1), CS_CVT_OVERFLOW, "", 1},
      {money, to(CS_UNICHAR_TYPE, 9, kTerm), CS_CVT_OVERFLOW, "1\0002\0003\0\0\0"s},
      {money, to(CS_UNICHAR_TYPE, 15, kTerm), CS_CVT_OVERFLOW, "1\0002\0003\0004\0.\0005\0\0\0"s},
      {money, to(CS_UNICHAR_TYPE, 16, kTerm), CS_SUCCEED, "1\0002\0003\0004\0.\0005\0007\0\0\0"s},
      {text_as(CS_CHAR_TYPE, "ab"), to(CS_UNICHAR_TYPE, 9, kBlanks | kTerm), CS_SUCCEED,
       "a\0b\0 \0\0\0"s},
      // Bytes are cut, as digits by whole bytes.
      {letters, to(CS_LONGBINARY_TYPE, 3, kNulls), CS_CVT_TRUNCATED, "DCB"},
      {letters, to(CS_IMAGE_TYPE, 6, kNulls), CS_SUCCEED, "DCBA\0\0"s},
      {letters, to(CS_BINARY_TYPE, 0), CS_CVT_TRUNCATED, ""},
      {bytes, to(CS_BINARY_TYPE, 2), CS_CVT_TRUNCATED, "\0\x1F"s},
      {bytes, to(CS_IMAGE_TYPE, 4, kNulls), CS_SUCCEED, "\0\x1F\xAB\0"s},
      {bytes, to(CS_CHAR_TYPE, 6, kTerm), CS_CVT_TRUNCATED, "001F\0"s},
      {bytes, to(CS_CHAR_TYPE, 7, kTerm), CS_SUCCEED, "001FAB\0"s},
      {bytes, to(CS_CHAR_TYPE, 5), CS_CVT_TRUNCATED, "001F"},
      {bytes, to(CS_CHAR_TYPE, 0, kTerm), CS_CVT_TRUNCATED, ""},
      {bytes, to(CS_CHAR_TYPE, 1, kTerm), CS_CVT_TRUNCATED, "\0"s},
      {bytes, to(CS_UNICHAR_TYPE, 11), CS_CVT_TRUNCATED, "0\0000\0001\0F\0"s},
      // Records take neither a room nor padding.
      {number, to(CS_VARCHAR_TYPE, 1, kBlanks), CS_SUCCEED, "\6\0-12345\0"s, 258},
      {money, to(CS_VARCHAR_TYPE, 2, kBlanks), CS_SUCCEED, "\7\0001234.57\0"s, 258},
      {date, to(CS_VARCHAR_TYPE, 3), CS_SUCCEED, "\x13\0"s + day + '\0', 258},
      {letters, to(CS_VARBINARY_TYPE, 1, kNulls), CS_SUCCEED, "\4\0DCBA"s, 258},
  };
  Context context;
  for (const Row& row : rows) {
    check(context, row);
    // The two sizes of dates and of money, and both kinds of binary data, are placed alike.
    Row other = row;
    switch (row.source.format.datatype) {
      case CS_DATETIME4_TYPE:
        other.source = value_of(CS_DATETIME_TYPE, CS_DATETIME{46205, 16292775});
        break;
      case CS_MONEY4_TYPE:
        other.source = value_of(CS_MONEY_TYPE, CS_MONEY{0, 12345678});
        break;
      case CS_BINARY_TYPE:
        other.source = text_as(CS_VARBINARY_TYPE, row.source.bytes);
        break;
      default:
        continue;
    }
    check(context, other);
  }
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
