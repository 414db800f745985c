// Null values: defaults, what hosts set, the differing bounds, and the unlinking rule.
#include "comnlib/memory.h"
#include "conv/conversion.h"
#include "support/stops.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

constexpr CS_INT kHosts = 40;  // a datatype of the host

// What com_null_get leaves in `destlen` bytes, with the byte after them for a user value's NUL.
void expect(const CS_CONTEXT& context, const CS_DATAFMT& format, CS_INT destlen,
            const std::string& bytes, CS_RETCODE code = CS_SUCCEED) {
  SCOPED_TRACE(testing::Message() << format.datatype << " of " << destlen << ", format "
                                  << format.format << ", precision " << format.precision);
  Result result;
  result.bytes.assign(static_cast<std::size_t>(destlen) + kGuard, kCanary);
  result.code = com_null_get(&context, &format, result.bytes.data(), destlen, &result.length);
  EXPECT_EQ(code, result.code);
  EXPECT_EQ(bytes, result.text());
  EXPECT_TRUE(result.untouched_from(bytes.size()));
}

void set(Context& context, CS_INT type, const std::string& value) {
  EXPECT_EQ(CS_SUCCEED,
            com_null_set(&context, type, value.data(), static_cast<CS_INT>(value.size())));
}

void reinstall(Context& context, CS_INT type) {
  EXPECT_EQ(CS_SUCCEED, com_null_reinstall(&context, type));
}

TEST(Null, DefaultsOfTheBuiltInTypes) {
  const Context context;
  table::for_each_line("conv/data/null_values.txt", [&](const table::Fields& line) {
    const CsDefVal& entry = context.ctxnulls.nullvals[type_of(line[0])];
    std::string value = table::text_of(line[3]);
    value.resize(static_cast<std::size_t>(table::number(line[1])));
    EXPECT_EQ(line[1], std::to_string(entry.dvsize));
    EXPECT_EQ(line[2], std::to_string(entry.dvpadtype));
    EXPECT_EQ(value, std::string(static_cast<char*>(entry.dventity), value.size()));
  });
}

TEST(Null, ValuesAreCutAndPadded) {
  Context context;
  const auto blanks = CS_DFMT_PADBLANK, nulls = CS_DFMT_PADNULL;
  expect(context, format_of(CS_CHAR_TYPE, 4, blanks), 4, "    ");
  expect(context, format_of(CS_SENSITIVITY_TYPE, 4, blanks | nulls), 4, "", CS_CVT_FORMAT);
  expect(context, format_of(CS_LONGCHAR_TYPE, 0, CS_DFMT_NULLTERM), 0, "", CS_CVT_OVERFLOW);
  expect(context, format_of(CS_LONGBINARY_TYPE, 3, nulls), 3, "\0\0\0"s);
  expect(context, format_of(CS_DATETIME4_TYPE), 4, "\0\0\0\0"s);
  // A numeric takes the destination's precision and scale, as far as there is room for them.
  for (const auto& [precision, destlen, length] : {std::array{2, 35, 4},
                                                   {3, 35, 5},
                                                   {77, 35, 35},
                                                   {0, 35, 35},
                                                   {78, 35, 35},
                                                   {77, 20, 20},
                                                   {10, 2, 2},
                                                   {10, 1, 1},
                                                   {10, 0, 0}}) {
    std::string value = {static_cast<char>(precision), 2};
    value.resize(static_cast<std::size_t>(length));
    expect(context, numeric_format(precision, 2), destlen, value);
  }
  // What a stored value lacks is zero.
  set(context, CS_NUMERIC_TYPE, "\5\1\1");
  expect(context, numeric_format(5, 0), 35, "\5\0\1\0\0\0"s);
}

TEST(Null, IsWhatVoidConvertsTo) {
  Context context;
  set(context, CS_INT_TYPE, "\x2A\0\0\0"s);
  EXPECT_EQ(42, convert(context, CS_VOID_TYPE, 'x', format_of(CS_INT_TYPE, 1)).as<CS_INT>());
  EXPECT_EQ(CS_SUCCEED, comn_voidtovoid(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
}

TEST(Null, BuiltInValuesAreSetAndReinstalled) {
  Context context;
  set(context, CS_CHAR_TYPE, "none");
  expect(context, format_of(CS_CHAR_TYPE, 6, CS_DFMT_PADBLANK), 6, "none  ");
  reinstall(context, CS_CHAR_TYPE);
  expect(context, format_of(CS_CHAR_TYPE, 6), 6, "");

  set(context, CS_FLOAT_TYPE, "\x7F");
  expect(context, format_of(CS_FLOAT_TYPE), 8, "\x7F");
  reinstall(context, CS_FLOAT_TYPE);  // grows the buffer
  expect(context, format_of(CS_FLOAT_TYPE), 8, std::string(8, '\0'));
  set(context, CS_FLOAT_TYPE, "");
  EXPECT_EQ(nullptr, context.ctxnulls.nullvals[CS_FLOAT_TYPE].dventity);
  expect(context, format_of(CS_FLOAT_TYPE), 8, "");

  // A value of the type at the bound goes to the list, but the table answers.
  set(context, CS_USHORT_TYPE, "ab");
  EXPECT_EQ(nullptr, context.ctxusrnulls);
  set(context, CS_UNICHAR_TYPE, "ab");
  EXPECT_NE(nullptr, context.ctxusrnulls);
  expect(context, format_of(CS_UNICHAR_TYPE, 2), 2, "\0"s);
  reinstall(context, CS_UNICHAR_TYPE);
  EXPECT_EQ(nullptr, context.ctxusrnulls);
}

TEST(Null, UserValuesEndInACountedNul) {
  Context context;
  expect(context, format_of(kHosts), 10, "");
  set(context, kHosts, "abc");
  expect(context, format_of(kHosts), 10, "abc\0"s);
  expect(context, format_of(kHosts), 3, "abc\0"s);  // at dest[destlen]
  expect(context, format_of(kHosts), 2, "ab\0"s);
  set(context, kHosts, "");
  expect(context, format_of(kHosts), 2, "\0"s);
  // Here, and once more by the context's end.
  EXPECT_EQ(CS_SUCCEED, com_null_free(&context));
  EXPECT_EQ(0, context.ctxnulls.nulldim);
  EXPECT_EQ(CS_SUCCEED, com_conv_free(&context));
  EXPECT_EQ(0, context.ctxcvttbl.cvtdim);
}

TEST(Null, RemovingTheSecondUserValueLosesTheFirst) {
  const std::pair<CS_INT, std::vector<CS_INT>> rows[] = {{43, {42, 41, 40}},
                                                         {42, {41, 40}},
                                                         {41, {43, 42, 40}},
                                                         {40, {43, 42, 41}},
                                                         {99, {43, 42, 41, 40}}};
  for (const auto& [removed, expected] : rows) {
    Context context;
    for (CS_INT type = 40; type <= 43; ++type) set(context, type, "");
    CsUsrNull* const first = context.ctxusrnulls;
    reinstall(context, removed);
    std::vector<CS_INT> left;
    for (const CsUsrNull* node = context.ctxusrnulls; node != nullptr; node = node->nextnull)
      left.push_back(node->dttype);
    EXPECT_EQ(expected, left) << removed;
    if (removed == 42) comn_free(first);
  }
}

TEST(NullDeathTest, BrokenPreconditionsStop) {
  Context context;
  const CS_DATAFMT format = format_of(CS_CHAR_TYPE, 4), none = format_of(-1, 4);
  CS_INT length = 0;
  char room[8];
  const char* const place = "assertion failed, file '.*com_null.cpp'";
  set(context, CS_INT_TYPE, "");
  stops::expect({
      STOP(place, com_null_get(&context, &format, room, -1, &length)),
      STOP(place, com_null_get(&context, &none, room, 4, &length)),
      STOP(place, com_null_set(&context, -1, room, 1)),
      STOP(place, com_null_set(&context, 1, room, -1)),
      STOP(stops::kPointer, com_null_set(&context, 1, nullptr, 1)),
      STOP(place, com_null_reinstall(&context, -1)),
      STOP(stops::kPointer, com_null_reinstall(&context, CS_INT_TYPE)),
  });
}

}  // namespace
