// What every kind of source becomes: in destinations of every kind, at the edges of their ranges,
// rooms and formats.
#include <cmath>
#include <limits>
#include <map>

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
  const std::map<std::string, Padding> paddings = {
      {"text", comn__padchar}, {"bytes", comn__padbin}, {"units", comn__padunichar}};
  table::for_each_line("conv/data/paddings.txt", [&](const table::Fields& line) {
    const CS_INT counted = line[2].empty() ? -1 : table::number(line[2]);
    EXPECT_EQ(Placed(code_of(line[6]), table::text_of(line[5])),
              padded(paddings.at(line[0]), table::text_of(line[1]), table::number(line[3]),
                     format_bits(line[4]), counted));
  });
}

CS_DATAFMT to(CS_INT type, CS_INT room = 8, CS_INT format = 0) {
  return format_of(type, room, format);
}

// Each line as its table says, see there.
TEST(Conversions, OfTheTable) {
  Context context;
  com_conv_install(&context, CS_NUMERIC_TYPE, CS_LONG_TYPE, comn_numtoi8);
  com_conv_install(&context, CS_MONEY_TYPE, CS_LONG_TYPE, comn_moneytoi8);
  com_conv_install(&context, CS_MONEY4_TYPE, CS_LONG_TYPE, comn_mny4toi8);
  com_conv_install(&context, CS_DATETIME_TYPE, CS_BINARY_TYPE, comn_datetobin);
  table::for_each_line("conv/data/conversions.txt", [&](table::Fields line) {
    check(context, row_of(line));
    const std::string target = line[2];
    if (line[0] == "char" && target == "char") {
      for (const char* const alike : {"text", "sensitivity", "boundary"}) {
        line[2] = alike;
        check(context, row_of(line));
      }
    }
    line[2] = target;
    for (const auto& [type, alike] :
         {std::pair{"char", "varchar"}, {"binary", "varbinary"}, {"money4", "money"}}) {
      if (line[0] != type) continue;
      line[0] = alike;
      check(context, row_of(line));
      break;
    }
  });
}

// "code[,precision,scale,value]" is what a numeric becomes.
TEST(Conversions, OfNumericsToOtherSizes) {
  Context context;
  table::for_each_line("exact/data/numeric_rescalings.tsv", [&](const table::Fields& line) {
    const std::size_t code_end = std::min(line[2].find(','), line[2].size() - 1) + 1;
    Row row = row_of(
        {"numeric", line[0], "decimal", line[1], "", line[2].substr(code_end), "", "CS_SUCCEED"});
    row.code = table::number(line[2]);
    check(context, row);
  });
}

// What no line of the table can say: texts that fill a record, records of a length that is not
// valid, and what the conversions use, where any size may be given.
TEST(Conversions, OfFullAndBadRecords) {
  Context context;
  const Encoded hex = text_as(CS_LONGCHAR_TYPE, std::string(600, 'a'));
  const Encoded many = text_as(CS_IMAGE_TYPE, std::string(257, '\xAA'));
  const std::string full(256, '\xAA');
  for (const Row& row : std::initializer_list<Row>{
           {hex, to(CS_VARCHAR_TYPE), kCut, "\0\1"s + std::string(256, 'a'), 258},
           {hex, to(CS_VARBINARY_TYPE), kCut, "\0\1"s + full, 258},
           {many, to(CS_VARBINARY_TYPE), kCut, "\0\1"s + full, 258},
           {many, to(CS_VARCHAR_TYPE), kCut, "\0\1"s + std::string(256, 'A'), 258},
           {text_as(CS_VARCHAR_TYPE, "1", -1), to(CS_CHAR_TYPE), kDomain, ""},
           {text_as(CS_VARCHAR_TYPE, "1", 257), to(CS_CHAR_TYPE), kDomain, ""},
           {text_as(CS_VARBINARY_TYPE, "1", -1), to(CS_CHAR_TYPE), kDomain, ""},
           {text_as(CS_VARBINARY_TYPE, "1", 257), to(CS_CHAR_TYPE), kDomain, ""}})
    check(context, row);
  CS_CHAR dest[4];
  CS_VARBINARY record;
  CS_INT length = 0;
  const CS_DATAFMT four = to(CS_CHAR_TYPE, 4), varbinary = to(CS_VARBINARY_TYPE);
  EXPECT_EQ(kCut, comn__escchar(nullptr, &four, "it's", &four, dest, &length));
  EXPECT_EQ("it''", std::string(dest, static_cast<std::size_t>(length)));
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
