// Columns: nulls, user conversions, empty text and what stops. That every pair converts a column as
// it converts single values is the sweep's to show.
#include "comnlib/column.h"

#include "conversion.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

constexpr CS_INT kUserType = CS_USER_TYPE + 4;

// Texts of a letter for each value, and "." for a null; empty is "-".
struct Texts {
  explicit Texts(const std::string& letters) : format(format_of(CS_CHAR_TYPE)) {
    for (const char letter : letters) {
      if (letter != '-') text += letter;
      lengths.push_back(letter == '.' ? -1 : letter == '-' ? 0 : 1);
      offsets.push_back(static_cast<CS_INT>(text.size()));
    }
    source.format = &format;
    source.values = text.data();
    source.offsets = offsets.data();
    source.lengths = lengths.data();
  }
  CS_DATAFMT format;
  std::string text;
  std::vector<CS_INT> offsets{0}, lengths;
  CsColumnSource source{};
};

struct Outcome {
  CS_RETCODE code;
  CS_INT faults = -1;
  std::vector<CS_RETCODE> codes;
  std::vector<CS_INT> lengths;
  std::string bytes;
};

Outcome run(Context& context, const CsColumnSource& source, const CS_DATAFMT& to, CS_INT count,
            CS_INT nulls = COMN_NULLS_AS_VALUES, CS_INT stride = 4) {
  const auto size = static_cast<std::size_t>(count);
  Outcome out{0, -1, std::vector<CS_RETCODE>(size, 9), std::vector<CS_INT>(size, 9),
              std::string(size * static_cast<std::size_t>(stride), '#')};
  CsColumnDest dest{};
  dest.format = &to;
  dest.values = out.bytes.data();
  dest.stride = stride;
  dest.lengths = out.lengths.data();
  dest.nulls = nulls;
  out.code = comn_conv_column(&context, &source, &dest, count, out.codes.data(), &out.faults);
  return out;
}

TEST(Columns, NullsBecomeNullValuesOrStayNulls) {
  Context context;
  const Texts texts("1.x.");
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_INT_TYPE, "NULL", 4));
  const Outcome values = run(context, texts.source, format_of(CS_INT_TYPE), 4);
  EXPECT_EQ(CS_SUCCEED, values.code);
  EXPECT_EQ("\1\0\0\0NULL####NULL"s, values.bytes);
  EXPECT_EQ((std::vector<CS_INT>{4, 4, 0, 4}), values.lengths);
  EXPECT_EQ((std::vector<CS_RETCODE>{CS_SUCCEED, CS_SUCCEED, CS_CVT_SYNTAX, CS_SUCCEED}),
            values.codes);
  EXPECT_EQ(1, values.faults);
  const Outcome nulls = run(context, texts.source, format_of(CS_INT_TYPE), 4, COMN_NULLS_AS_NULLS);
  EXPECT_EQ("\1\0\0\0############"s, nulls.bytes);
  EXPECT_EQ((std::vector<CS_INT>{4, -1, 0, -1}), nulls.lengths);
  // A null value has its padding and the padding's code.
  const Outcome clash =
      run(context, texts.source, format_of(CS_CHAR_TYPE, 3, CS_DFMT_PADBLANK | CS_DFMT_PADNULL), 4);
  EXPECT_EQ(4, clash.faults);
  const CS_DATAFMT no_value = format_of(CS_VOID_TYPE);
  const CsColumnSource source{&no_value, "", 0, nullptr, nullptr, nullptr};
  EXPECT_EQ("NULLNULL", run(context, source, format_of(CS_INT_TYPE), 2).bytes);
  EXPECT_EQ("", run(context, source, format_of(CS_INT_TYPE), 0).bytes);
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
  const Texts texts("a-.");
  const CS_DATAFMT to = format_of(kUserType, 3);
  EXPECT_EQ(CS_FAIL, run(context, texts.source, to, 3).code) << "no routine";
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, CS_CHAR_TYPE, kUserType, length_as_digit));
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, kUserType, "NO", 2));
  const Outcome out = run(context, texts.source, to, 3);
  EXPECT_EQ("1###0###NO\0#"s, out.bytes);
  EXPECT_EQ((std::vector<CS_INT>{1, 1, 3}), out.lengths);
  EXPECT_EQ(1, out.faults);
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, kUserType, "", 0));
  // A built-in pair that the host replaced is the host's in a column too.
  ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, CS_CHAR_TYPE, CS_CHAR_TYPE, length_as_digit));
  EXPECT_EQ("1###0#######",
            run(context, texts.source, format_of(CS_CHAR_TYPE, 4), 3, COMN_NULLS_AS_NULLS).bytes);
}

TEST(Columns, EmptyTextIsAValue) {
  Context context;
  const Texts texts("-7");
  const Outcome copied =
      run(context, texts.source, format_of(CS_CHAR_TYPE, 3, CS_DFMT_PADBLANK), 2);
  EXPECT_EQ("   #7  #", copied.bytes);
  const Outcome numbers = run(context, texts.source, format_of(CS_INT_TYPE), 2);
  EXPECT_EQ((std::vector<CS_RETCODE>{CS_CVT_SYNTAX, CS_SUCCEED}), numbers.codes);
}

TEST(ColumnsDeathTest, BrokenPreconditionsStop) {
  Context context;
  const auto aborted = testing::KilledBySignal(SIGABRT);
  const char* const here = "com_column.cpp";
  const Texts texts("12");
  const CS_DATAFMT integer = format_of(CS_INT_TYPE), text = format_of(CS_CHAR_TYPE, 4);
  char bytes[16];
  CS_INT ends[3] = {}, faults = 0;
  const CsColumnDest good{&integer, bytes, 4, nullptr, nullptr, nullptr, 0};
  const struct {
    const char* label;
    CsColumnSource source;
    CsColumnDest dest;
    CS_INT count = 2;
  } rows[] = {
      {"count", texts.source, good, -1},
      {"overlapping values", texts.source, {&integer, bytes, 3, nullptr, nullptr, nullptr, 0}},
      {"fixed length by offsets", texts.source, {&integer, bytes, 4, ends, nullptr, nullptr, 0}},
      {"nulls without a place", texts.source, {&integer, bytes, 4, nullptr, nullptr, nullptr, 1}},
      {"no such nulls", texts.source, {&integer, bytes, 4, nullptr, ends, nullptr, 2}},
      {"offsets beyond 31 bits",
       texts.source,
       {&text, bytes, 4, ends, nullptr, nullptr, 0},
       INT32_MAX / 4 + 1},
      {"stride", {&integer, bytes, -1, nullptr, nullptr, nullptr}, good},
      {"empty character data", {&texts.format, bytes, 1, nullptr, nullptr, nullptr}, good},
      {"no values", {&texts.format, nullptr, 1, nullptr, nullptr, nullptr}, good},
  };
  for (const auto& row : rows) {
    // The longest column is refused before its values are looked at.
    CsColumnSource source = row.source;
    if (row.count > 2) source.offsets = nullptr;
    EXPECT_EXIT(comn_conv_column(&context, &source, &row.dest, row.count, nullptr, &faults),
                aborted, here)
        << row.label;
  }
  const CS_INT decreasing[] = {1, 0, 1};
  CsColumnSource source = texts.source;
  source.offsets = decreasing;
  EXPECT_EXIT(comn_conv_column(&context, &source, &good, 2, nullptr, &faults), aborted, here);
  EXPECT_EXIT(comn_conv_column(&context, &texts.source, &good, 2, nullptr, nullptr), aborted, here);
}

}  // namespace
