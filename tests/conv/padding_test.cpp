// Padding and placement: what stands in the destination for every room and every format bit.
#include "conv/conversion.h"
#include "conv/newutils.h"

namespace {

using namespace conversion;

constexpr CS_INT kTerm = CS_DFMT_NULLTERM;
constexpr CS_INT kNulls = CS_DFMT_PADNULL;
constexpr CS_INT kBlanks = CS_DFMT_PADBLANK;

using Padding = CS_RETCODE (*)(CS_INT, const CS_DATAFMT*, CS_VOID*, CS_INT*);

struct Row {
  const char* label;
  Padding pad;
  std::string text;
  CS_INT maxlength;
  CS_INT format;
  CS_RETCODE code;
  std::string bytes;   // the result's
  CS_INT length = -1;  // given where n is not the text's length
};

const Row kRows[] = {
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
  for (const Row& row : kRows) {
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

// What a conversion leaves in the room, and the length it reports; '#' is a byte as it was before.
struct Placed {
  CS_INT source;
  double value;
  CS_INT desttype, room, format;
  CS_RETCODE code;
  std::string bytes;
  CS_INT length;
};

const Placed kPlaced[] = {
    {8, -12345, 2, 6, kTerm, CS_CVT_OVERFLOW, {"*\0####", 6}, 2},
    {8, -12345, 4, 8, kBlanks, CS_SUCCEED, "-12345  ", 8},
    {8, -12345, 0, 5, 0, CS_CVT_OVERFLOW, {"*\0###", 5}, 1},
    {8, -12345, 0, 5, kBlanks, CS_CVT_OVERFLOW, "*    ", 5},
    {8, -12345, 0, 5, kBlanks | kNulls, CS_CVT_OVERFLOW, {"*\0###", 5}, 1},
    {8, -12345, 0, 2, kNulls, CS_CVT_OVERFLOW, {"*\0", 2}, 2},
    {8, -12345, 0, 1, kBlanks, CS_CVT_OVERFLOW, "#", 1},
    {8, 7, 0, 1, kTerm, CS_CVT_OVERFLOW, "#", 1},
    {10, 0.1, 0, 17, 0, CS_CVT_OVERFLOW, {"*\0###############", 17}, 1},
    {8, 0x41424344, 3, 3, kNulls, CS_CVT_TRUNCATED, "DCB", 3},
    {8, 0x41424344, 5, 6, kNulls, CS_SUCCEED, {"DCBA\0\0", 6}, 6},
    {8, 0x41424344, 1, 0, 0, CS_CVT_TRUNCATED, "", 0},
    {8, -12345, 18, 9, 0, CS_SUCCEED, {"\6\0-12345\0", 9}, 258},
    {8, 0x41424344, 19, 7, 0, CS_SUCCEED, {"\4\0DCBA#", 7}, 258},
    // A bit has no "*" and always counts its digit.
    {11, 1, 0, 0, kTerm, CS_CVT_OVERFLOW, "", 1},
    {11, 1, 0, 1, kTerm, CS_CVT_OVERFLOW, {"\0", 1}, 1},
    {11, 1, 0, 3, kBlanks | kNulls, CS_CVT_FORMAT, "1##", 1},
};

TEST(Placement, OfNumbers) {
  Context context;
  for (const Placed& row : kPlaced) {
    const CS_DATAFMT to = format_of(row.desttype, row.room, row.format);
    SCOPED_TRACE(testing::Message() << row.value << " into " << row.room << ", " << row.format);
    const Result result = row.source == CS_FLOAT_TYPE
                              ? convert(context, row.source, row.value, to)
                              : convert(context, row.source, static_cast<CS_INT>(row.value), to);
    std::string bytes = result.first(static_cast<std::size_t>(row.room));
    std::ranges::replace(bytes, static_cast<char>(kCanary), '#');
    EXPECT_EQ(row.code, result.code);
    EXPECT_EQ(row.bytes, bytes);
    EXPECT_EQ(row.length, result.length);
  }
  const CS_NUMERIC zero{77, 40, {}};
  const Result longest = convert(context, CS_NUMERIC_TYPE, zero, format_of(CS_CHAR_TYPE, 42));
  EXPECT_EQ("0." + std::string(40, '0'), longest.text());
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
