// Columns: nulls, user conversions, empty text and what stops. That every pair converts a column as
// it converts single values is the sweep's to show.
#include "comnlib/column.h"

#include "conversion.h"
#include "support/stops.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

constexpr CS_INT kUserType = CS_USER_TYPE + 4;

// A column of texts, a letter for each value, and "." for a null; empty is "-". It goes into
// `format`; what was not written is "#".
struct Texts {
  explicit Texts(const std::string& letters, const CS_DATAFMT& format)
      : from(format_of(CS_CHAR_TYPE)), to(format), bytes(4 * letters.size(), '#') {
    for (const char letter : letters) {
      if (letter != '-') text += letter;
      from_lengths.push_back(letter == '.' ? -1 : letter == '-' ? 0 : 1);
      offsets.push_back(static_cast<CS_INT>(text.size()));
    }
    lengths.assign(letters.size(), 9);
    codes.assign(letters.size(), 9);
    source = {&from, text.data(), 0, offsets.data(), from_lengths.data(), nullptr};
    dest = {&to, bytes.data(), 4, nullptr, lengths.data(), nullptr, COMN_NULLS_AS_VALUES};
  }
  Texts(const Texts&) = delete;

  CS_RETCODE convert(Context& context, CS_INT count) {
    return comn_conv_column(&context, &source, &dest, count, codes.data(), &faults);
  }
  // All of them: their bytes.
  std::string operator()(Context& context) {
    EXPECT_EQ(CS_SUCCEED, convert(context, static_cast<CS_INT>(codes.size())));
    return bytes;
  }

  CS_DATAFMT from, to;
  std::string text, bytes;
  std::vector<CS_INT> offsets{0}, from_lengths, lengths;
  std::vector<CS_RETCODE> codes;
  CsColumnSource source{};
  CsColumnDest dest{};
  CS_INT faults = -1;
};

TEST(Columns, NullsBecomeNullValuesOrStayNulls) {
  Context context;
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_INT_TYPE, "NULL", 4));
  Texts values("1.x.", format_of(CS_INT_TYPE));
  EXPECT_EQ("\1\0\0\0NULL####NULL"s, values(context));
  EXPECT_EQ((std::vector<CS_INT>{4, 4, 0, 4}), values.lengths);
  EXPECT_EQ((std::vector<CS_RETCODE>{1, 1, CS_CVT_SYNTAX, 1}), values.codes);
  EXPECT_EQ(1, values.faults);
  Texts nulls("1.x.", format_of(CS_INT_TYPE));
  nulls.dest.nulls = COMN_NULLS_AS_NULLS;
  EXPECT_EQ("\1\0\0\0############"s, nulls(context));
  EXPECT_EQ((std::vector<CS_INT>{4, -1, 0, -1}), nulls.lengths);
  Texts joined("1.x", format_of(CS_CHAR_TYPE, 4));
  joined.dest.nulls = COMN_NULLS_AS_NULLS;
  std::vector<CS_INT> ends(4);
  joined.dest.offsets = ends.data();
  EXPECT_EQ("1x", joined(context).substr(0, 2));
  EXPECT_EQ((std::vector<CS_INT>{0, 1, 1, 2}), ends);
  // A null value has its padding and the padding's code.
  Texts clash("1.x.", format_of(CS_CHAR_TYPE, 3, CS_DFMT_PADBLANK | CS_DFMT_PADNULL));
  clash(context);
  EXPECT_EQ(4, clash.faults);
  // Values of CS_VOID are nulls; none of them is nothing.
  Texts no_values("ab", format_of(CS_INT_TYPE));
  no_values.from = format_of(CS_VOID_TYPE);
  no_values.source = {&no_values.from, "", 0, nullptr, nullptr, nullptr};
  EXPECT_EQ(CS_SUCCEED, no_values.convert(context, 0));
  EXPECT_EQ("########", no_values.bytes);
  EXPECT_EQ("NULLNULL", no_values(context));
}

// Writes the length that it was given.
CS_RETCODE length_as_digit(CS_CONTEXT*, const CS_DATAFMT* from, const CS_VOID*, const CS_DATAFMT*,
                           CS_VOID* dest, CS_INT* destlen) {
  *static_cast<CS_CHAR*>(dest) = static_cast<CS_CHAR>('0' + from->maxlength);
  *destlen = 1;
  return from->maxlength == 0 ? CS_CVT_DOMAIN : CS_SUCCEED;
}

TEST(Columns, UserConversionsAndUserNullsWork) {
  Context context;
  Texts texts("a-.", format_of(kUserType, 3));
  EXPECT_EQ(CS_FAIL, texts.convert(context, 3)) << "no routine";
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, CS_CHAR_TYPE, kUserType, length_as_digit));
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, kUserType, "NO", 2));
  EXPECT_EQ("1###0###NO\0#"s, texts(context));
  EXPECT_EQ((std::vector<CS_INT>{1, 1, 3}), texts.lengths);
  EXPECT_EQ(1, texts.faults);
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, kUserType, "", 0));
  // A built-in pair that the host replaced is the host's in a column too.
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, CS_CHAR_TYPE, CS_CHAR_TYPE, length_as_digit));
  Texts replaced("a-.", format_of(CS_CHAR_TYPE, 4));
  replaced.dest.nulls = COMN_NULLS_AS_NULLS;
  EXPECT_EQ("1###0#######", replaced(context));
}

TEST(Columns, EmptyTextIsAValue) {
  Context context;
  EXPECT_EQ("   #7  #", Texts("-7", format_of(CS_CHAR_TYPE, 3, CS_DFMT_PADBLANK))(context));
  Texts numbers("-7", format_of(CS_INT_TYPE));
  EXPECT_EQ("####\7\0\0\0"s, numbers(context));
  EXPECT_EQ((std::vector<CS_RETCODE>{CS_CVT_SYNTAX, CS_SUCCEED}), numbers.codes);
}

// What is kept of a numeric's precision and scale from value to value is that of the value's own.
TEST(Columns, NumericsOfAnyShapeFollowEachOther) {
  Context context;
  constexpr CS_INT kRoom = 80;
  const std::string digits =
      "90817263549081726354908172635490817263549081726354908172635490817263549081726";
  std::string records, expected;
  std::vector<CS_INT> expected_lengths;
  const auto add = [&](CS_INT precision, CS_INT scale, const std::string& sign,
                       std::string number) {
    records += source_of(CS_NUMERIC_TYPE, std::to_string(precision) + "," + std::to_string(scale) +
                                              "," + sign + number)
                   .bytes;
    const auto decimals = static_cast<std::size_t>(scale);
    if (number.size() <= decimals) number.insert(0, decimals + 1 - number.size(), '0');
    if (scale != 0) number.insert(number.size() - decimals, ".");
    expected_lengths.push_back(static_cast<CS_INT>((sign + number).size()));
    expected += (sign + number + std::string(kRoom, '#')).substr(0, kRoom);
  };
  for (CS_INT precision = 1; precision <= static_cast<CS_INT>(digits.size()); ++precision) {
    for (const CS_INT scale : {0, precision, precision / 2, 1}) {
      add(precision, scale, "", digits.substr(0, 1));
      add(precision, scale, "-", digits.substr(0, static_cast<std::size_t>(precision)));
    }
  }
  const auto count = static_cast<CS_INT>(expected_lengths.size());
  std::string texts(expected.size(), '#');
  std::vector<CS_INT> lengths(expected_lengths.size());
  const CS_DATAFMT from = format_of(CS_NUMERIC_TYPE), to = format_of(CS_CHAR_TYPE, kRoom);
  const CsColumnSource source{&from, records.data(), sizeof(CS_NUMERIC), nullptr, nullptr, nullptr};
  const CsColumnDest dest{&to, texts.data(), kRoom, nullptr, lengths.data(), nullptr, 0};
  CS_INT faults = -1;
  EXPECT_EQ(CS_SUCCEED, comn_conv_column(&context, &source, &dest, count, nullptr, &faults));
  EXPECT_EQ(0, faults);
  EXPECT_EQ(expected, texts);
  EXPECT_EQ(expected_lengths, lengths);
}

// A column of two texts into integers, of which something is not valid.
#define COLUMN_STOP(...)                                                               \
  STOP("com_column.cpp", CS_INT count = 2; Texts column("12", format_of(CS_INT_TYPE)); \
       column.dest.lengths = nullptr; __VA_ARGS__; column.convert(context, count))

TEST(ColumnsDeathTest, BrokenPreconditionsStop) {
  Context context;
  const auto without_offsets = [](Texts& column) {
    column.source.offsets = column.source.lengths = nullptr;
  };
  stops::expect({
    COLUMN_STOP(count = -1),
        COLUMN_STOP(column.dest.stride = 3),                       // values would overlap
        COLUMN_STOP(column.dest.offsets = column.lengths.data()),  // values of fixed length
        COLUMN_STOP(column.dest.nulls = COMN_NULLS_AS_NULLS),      // nulls without a place
        COLUMN_STOP(column.dest.nulls = 2),
        COLUMN_STOP(without_offsets(column); column.source.stride = -1),
        COLUMN_STOP(without_offsets(column)),  // empty character data
        COLUMN_STOP(column.source.values = nullptr),
        COLUMN_STOP(column.offsets[1] = 5),  // decreasing
        // Offsets beyond 31 bits are refused before the values are looked at.
        COLUMN_STOP(column.to = format_of(CS_CHAR_TYPE, 4); without_offsets(column);
                    column.lengths[0] = 0; column.dest.offsets = column.lengths.data();
                    count = INT32_MAX / 4 + 1),
        STOP("com_column.cpp", Texts column("12", format_of(CS_INT_TYPE));
             comn_conv_column(&context, &column.source, &column.dest, 2, nullptr, nullptr)),
  });
}

}  // namespace
