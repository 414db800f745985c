// Null values: defaults, what hosts set, the differing bounds, and the unlinking rule.
#include "comnlib/memory.h"
#include "conv/conversion.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

Result null_of(const CS_CONTEXT& context, const CS_DATAFMT& format, CS_INT destlen) {
  Result result;
  result.bytes.assign(static_cast<std::size_t>(destlen) + kGuard, kCanary);
  result.code = com_null_get(&context, &format, result.bytes.data(), destlen, &result.length);
  return result;
}

TEST(Null, DefaultsOfTheBuiltInTypes) {
  const Context context;
  const struct {
    std::vector<CS_INT> types;
    CS_INT size;
    CS_INT padtype;
  } rows[] = {{{0, 2, 4, 21, 22}, 0, 1}, {{1, 3, 5}, 0, 2},      {{6, 11}, 1, 3},
              {{7, 24}, 2, 3},           {{8, 9, 20, 23}, 4, 3}, {{10, 12, 13, 14, 15}, 8, 3},
              {{16, 17}, 35, 3},         {{18, 19}, 258, 3},     {{25}, 1, 4}};
  for (const auto& row : rows) {
    std::string expected(static_cast<std::size_t>(row.size), '\0');
    if (row.size == 35) expected[0] = 18;
    for (const CS_INT type : row.types) {
      const CsDefVal& entry = context.ctxnulls.nullvals[type];
      EXPECT_EQ(row.size, entry.dvsize) << type;
      EXPECT_EQ(row.padtype, entry.dvpadtype) << type;
      ASSERT_NE(nullptr, entry.dventity) << type;
      EXPECT_EQ(expected, std::string(static_cast<char*>(entry.dventity), expected.size())) << type;
    }
  }
}

TEST(Null, ValuesAreCutAndPadded) {
  const Context context;
  const struct {
    CS_DATAFMT format;
    CS_INT destlen;
    CS_RETCODE code;
    std::string bytes;
  } rows[] = {{format_of(0, 4, CS_DFMT_PADBLANK), 4, CS_SUCCEED, "    "},
              {format_of(21, 4, CS_DFMT_PADBLANK | CS_DFMT_PADNULL), 4, CS_CVT_FORMAT, ""},
              {format_of(2, 0, CS_DFMT_NULLTERM), 0, CS_CVT_OVERFLOW, ""},
              {format_of(3, 3, CS_DFMT_PADNULL), 3, CS_SUCCEED, std::string(3, '\0')},
              {format_of(CS_DATETIME4_TYPE), 4, CS_SUCCEED, std::string(4, '\0')}};
  for (const auto& row : rows) {
    const Result result = null_of(context, row.format, row.destlen);
    EXPECT_EQ(row.code, result.code) << row.format.datatype;
    EXPECT_EQ(row.bytes, result.text()) << row.format.datatype;
    EXPECT_TRUE(result.untouched_from(static_cast<std::size_t>(row.destlen)));
  }
}

TEST(Null, NumericsTakeTheDestinationsPrecision) {
  Context context;
  const struct {
    CS_INT precision, destlen, length;
  } rows[] = {{2, 35, 4},   {3, 35, 5},   {77, 35, 35}, {0, 35, 35},
              {78, 35, 35}, {77, 20, 20}, {10, 1, 1},   {10, 0, 0}};
  for (const auto& row : rows) {
    const Result result = null_of(context, numeric_format(row.precision, 2), row.destlen);
    EXPECT_EQ(CS_SUCCEED, result.code);
    EXPECT_EQ(row.length, result.length) << row.precision;
    EXPECT_EQ(row.destlen > 0 ? row.precision : kCanary, result.bytes[0]);
    EXPECT_EQ(row.destlen > 1 ? 2 : kCanary, result.bytes[1]);
    EXPECT_TRUE(result.untouched_from(static_cast<std::size_t>(row.length))) << row.precision;
  }
  // What a stored value lacks is zero.
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_NUMERIC_TYPE, "\x05\x01\x01", 3));
  EXPECT_EQ("\5\0\1\0\0\0"s, null_of(context, numeric_format(5, 0), 35).text());
}

TEST(Null, IsWhatVoidConvertsTo) {
  Context context;
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_INT_TYPE, "\x2A\0\0\0", 4));
  EXPECT_EQ(42, convert(context, CS_VOID_TYPE, 'x', format_of(CS_INT_TYPE, 1)).as<CS_INT>());
  EXPECT_EQ(CS_SUCCEED, comn_voidtovoid(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

// A value of the type at the bound goes to the list, but the table answers.
TEST(Null, BoundsBetweenTableAndListDiffer) {
  Context context;
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_USHORT_TYPE, "ab", 2));
  EXPECT_EQ(nullptr, context.ctxusrnulls);
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_UNICHAR_TYPE, "ab", 2));
  ASSERT_NE(nullptr, context.ctxusrnulls);
  EXPECT_EQ(std::string(1, 0), null_of(context, format_of(CS_UNICHAR_TYPE, 2), 2).text());
  ASSERT_EQ(CS_SUCCEED, com_null_reinstall(&context, CS_UNICHAR_TYPE));
  EXPECT_EQ(nullptr, context.ctxusrnulls);
}

TEST(Null, SetAndReinstallBuiltInValues) {
  Context context;
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_CHAR_TYPE, "none", 4));
  EXPECT_EQ("none  ", null_of(context, format_of(0, 6, CS_DFMT_PADBLANK), 6).text());
  ASSERT_EQ(CS_SUCCEED, com_null_reinstall(&context, CS_CHAR_TYPE));
  EXPECT_EQ("", null_of(context, format_of(0, 6), 6).text());

  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_FLOAT_TYPE, "\x7F", 1));
  EXPECT_EQ("\x7F", null_of(context, format_of(CS_FLOAT_TYPE), 8).text());
  ASSERT_EQ(CS_SUCCEED, com_null_reinstall(&context, CS_FLOAT_TYPE)) << "grows the buffer";
  EXPECT_EQ(std::string(8, '\0'), null_of(context, format_of(CS_FLOAT_TYPE), 8).text());

  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_FLOAT_TYPE, "", 0));
  EXPECT_EQ(nullptr, context.ctxnulls.nullvals[CS_FLOAT_TYPE].dventity);
  EXPECT_EQ(0, null_of(context, format_of(CS_FLOAT_TYPE), 8).length);
}

TEST(Null, UserValuesEndInACountedNul) {
  Context context;
  EXPECT_EQ(0, null_of(context, format_of(40), 10).length) << "without a value";
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, 40, "abc", 3));
  EXPECT_EQ("abc\0"s, null_of(context, format_of(40), 10).text());
  EXPECT_EQ("abc\0"s, null_of(context, format_of(40), 3).text()) << "dest[destlen]";
  EXPECT_EQ("ab\0"s, null_of(context, format_of(40), 2).text());
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, 40, "", 0));
  EXPECT_EQ("\0"s, null_of(context, format_of(40), 2).text());
  // Here, and once more by the context's end.
  EXPECT_TRUE(com_null_free(&context) == CS_SUCCEED && context.ctxnulls.nulldim == 0);
  EXPECT_TRUE(com_conv_free(&context) == CS_SUCCEED && context.ctxcvttbl.cvtdim == 0);
}

TEST(Null, RemovingTheSecondUserValueLosesTheFirst) {
  const struct {
    CS_INT removed;
    std::vector<CS_INT> left;
  } rows[] = {{43, {42, 41, 40}},
              {42, {41, 40}},
              {41, {43, 42, 40}},
              {40, {43, 42, 41}},
              {99, {43, 42, 41, 40}}};
  for (const auto& row : rows) {
    Context context;
    for (CS_INT type = 40; type <= 43; ++type)
      ASSERT_EQ(CS_SUCCEED, com_null_set(&context, type, "x", 0));
    CsUsrNull* const first = context.ctxusrnulls;
    ASSERT_EQ(CS_SUCCEED, com_null_reinstall(&context, row.removed));
    std::vector<CS_INT> left;
    for (const CsUsrNull* node = context.ctxusrnulls; node != nullptr; node = node->nextnull)
      left.push_back(node->dttype);
    EXPECT_EQ(row.left, left) << row.removed;
    if (row.removed == 42) comn_free(first);
  }
}

TEST(NullDeathTest, BrokenPreconditionsStop) {
  Context context;
  CS_DATAFMT format = format_of(CS_CHAR_TYPE, 4);
  CS_INT length = 0;
  char room[8];
  const auto bombed = testing::KilledBySignal(SIGABRT);
  const char* const place = "assertion failed, file '.*com_null.cpp'";
  EXPECT_EXIT(com_null_get(&context, &format, room, -1, &length), bombed, place);
  EXPECT_EXIT(com_null_set(&context, -1, room, 1), bombed, place);
  EXPECT_EXIT(com_null_set(&context, 1, room, -1), bombed, place);
  EXPECT_EXIT(com_null_reinstall(&context, -1), bombed, place);
  EXPECT_EXIT(com_null_set(&context, 1, nullptr, 1), bombed, "Invalid pointer");
  ASSERT_EQ(CS_SUCCEED, com_null_set(&context, CS_INT_TYPE, room, 0));
  EXPECT_EXIT(com_null_reinstall(&context, CS_INT_TYPE), bombed, "Invalid pointer");
  format.datatype = -1;
  EXPECT_EXIT(com_null_get(&context, &format, room, 4, &length), bombed, place);
}

}  // namespace
