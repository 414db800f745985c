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
    {"blanks", comn__padchar, "abc", 5, kBlanks, 1, "abc  "},
    {"NULs", comn__padchar, "abc", 5, kNulls | kTerm, 1, {"abc\0\0", 5}},
    {"NUL is counted", comn__padchar, "abc", 4, kTerm, 1, {"abc\0", 4}},
    {"nothing asked", comn__padchar, "abc", 9, 0, 1, "abc"},
    {"exact fit", comn__padchar, "abc", 3, kBlanks, 1, "abc"},
    {"exact fit, NUL", comn__padchar, "abc", 3, kTerm, CS_CVT_OVERFLOW, {"ab\0", 3}},
    {"clash", comn__padchar, "abc", 6, kBlanks | kNulls, CS_CVT_FORMAT, "abc"},
    {"overflow before clash", comn__padchar, "abc", 3, 7, CS_CVT_OVERFLOW, {"ab\0", 3}},
    {"n beyond the room", comn__padchar, "abc", 3, kBlanks, CS_CVT_OVERFLOW, "abc", 4},
    {"n below the result", comn__padchar, "abc", 5, kBlanks, 1, "abc  ", 1},
    {"nowhere for the NUL", comn__padchar, "", 0, kTerm, CS_CVT_OVERFLOW, ""},
    {"binary NULs", comn__padbin, "abc", 5, kNulls | kBlanks | kTerm, 1, {"abc\0\0", 5}},
    {"binary, other bits", comn__padbin, "abc", 5, kBlanks | kTerm, 1, "abc"},
    {"binary, full", comn__padbin, "abc", 3, kNulls, 1, "abc"},
    {"units, blanks", comn__padunichar, {"a\0", 2}, 7, kBlanks, 1, {"a\0 \0 \0", 6}},
    {"units, NUL", comn__padunichar, {"a\0", 2}, 4, kTerm, 1, {"a\0\0\0", 4}},
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

// The placement rule of number text, told once more from its outcome.
struct Placed {
  CS_RETCODE code;
  std::string bytes;
};

Placed placed(const std::string& text, std::size_t room, CS_INT format) {
  const bool terminate = (format & kTerm) != 0;
  const auto finished = [&](const std::string& fitting) -> Placed {
    if ((format & kNulls) != 0 && (format & kBlanks) != 0) return {CS_CVT_FORMAT, fitting};
    std::string bytes = fitting;
    if ((format & kNulls) != 0) bytes.resize(room, '\0');
    if ((format & kBlanks) != 0) bytes.resize(room, ' ');
    if (terminate && bytes.size() < room) bytes += '\0';
    if (terminate && (format & kBlanks) != 0) bytes.back() = '\0';
    return {CS_SUCCEED, bytes};
  };
  if (text.size() + (terminate ? 1 : 0) <= room) return finished(text);
  if (room >= 2) return {CS_CVT_OVERFLOW, finished("*").bytes};
  return {CS_CVT_OVERFLOW, std::string(std::min(room, text.size()), static_cast<char>(kCanary))};
}

TEST(Placement, EveryRoomAndFormat) {
  Context context;
  for (CS_INT room = 0; room <= 40; ++room) {
    for (CS_INT format = 0; format < 8; ++format) {
      const std::string label = std::to_string(room) + " bytes, format " + std::to_string(format);
      const auto size = static_cast<std::size_t>(room);
      const CS_DATAFMT to = format_of(CS_LONGCHAR_TYPE, room, format);
      const Result results[] = {convert(context, CS_INT_TYPE, CS_INT{-12345}, to),
                                convert(context, CS_TINYINT_TYPE, CS_TINYINT{7}, to),
                                convert(context, CS_FLOAT_TYPE, 0.1, to)};
      const char* const texts[] = {"-12345", "7", ".10000000000000001"};
      for (std::size_t at = 0; at < 3; ++at) {
        const Placed expected = placed(texts[at], size, format);
        EXPECT_EQ(expected.code, results[at].code) << texts[at] << ", " << label;
        EXPECT_EQ(expected.bytes, results[at].text()) << texts[at] << ", " << label;
      }

      const Result bytes = convert(context, CS_FLOAT_TYPE, 1.5, format_of(5, room, format));
      const std::size_t whole = std::min<std::size_t>(size, 8);
      EXPECT_EQ(room < 8 ? CS_CVT_TRUNCATED : CS_SUCCEED, bytes.code) << label;
      EXPECT_EQ((format & kNulls) != 0 ? size : whole, static_cast<std::size_t>(bytes.length));
      std::string expected(reinterpret_cast<const char*>(std::to_array({1.5}).data()), whole);
      if ((format & kNulls) != 0) expected.resize(size);
      EXPECT_EQ(expected, bytes.text()) << label;
    }
  }
}

TEST(Placement, ABitHasNoStar) {
  Context context;
  const struct {
    CS_INT room, format;
    CS_RETCODE code;
    std::string bytes;  // as far as they are in the room
    CS_INT length;
  } rows[] = {{0, 0, CS_CVT_OVERFLOW, "", 1},
              {0, kTerm, CS_CVT_OVERFLOW, "", 1},
              {1, 0, CS_SUCCEED, "1", 1},
              {1, kTerm, CS_CVT_OVERFLOW, {"\0", 1}, 1},
              {2, kTerm, CS_SUCCEED, {"1\0", 2}, 2},
              {3, kBlanks, CS_SUCCEED, "1  ", 3},
              {3, kBlanks | kNulls, CS_CVT_FORMAT, "1", 1}};
  for (const auto& row : rows) {
    const Result result =
        convert(context, CS_BIT_TYPE, CS_BIT{1}, format_of(0, row.room, row.format));
    EXPECT_EQ(row.code, result.code) << row.room << ' ' << row.format;
    EXPECT_EQ(row.length, result.length) << row.room << ' ' << row.format;
    EXPECT_EQ(0, std::memcmp(row.bytes.data(), result.bytes.data(), row.bytes.size()));
  }
}

TEST(PaddingDeathTest, NegativeLengthsStop) {
  Context context;
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
  for (const CS_INT type : {CS_CHAR_TYPE, CS_BINARY_TYPE}) {
    const CS_CONV_FUNC routine = com_conv_func(&context, CS_INT_TYPE, type);
    const CS_DATAFMT from = format_of(CS_INT_TYPE);
    format = format_of(type, -1);
    EXPECT_EXIT(routine(&context, &from, room, &format, room, &length), aborted, "assertion");
  }
}

}  // namespace
