// The money families through the matrix, and the money targets of the number families.
#include <cstdint>
#include <cstring>

#include "comnlib/money.h"
#include "conversion.h"

namespace {

using conversion::Context;
using conversion::convert;
using conversion::format_of;
using conversion::Result;

CS_MONEY wide(std::int64_t units) {
  return {static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
}

std::int64_t units(const CS_MONEY& m) {
  return static_cast<std::int64_t>(std::uint64_t{static_cast<CS_UINT>(m.mnyhigh)} << 32 | m.mnylow);
}

// Converts an amount from CS_MONEY and, when it fits, from CS_MONEY4 too, which must give the same.
Result from_money(Context& context, std::int64_t amount, const CS_DATAFMT& to) {
  const CS_MONEY m = wide(amount);
  Result result = convert(context, CS_MONEY_TYPE, m, to);
  if (amount != static_cast<CS_INT>(amount)) return result;
  const CS_MONEY4 small{static_cast<CS_INT>(amount)};
  const Result other = convert(context, CS_MONEY4_TYPE, small, to);
  EXPECT_EQ(result.code, other.code) << amount;
  EXPECT_EQ(result.length, other.length) << amount;
  EXPECT_EQ(result.bytes, other.bytes) << amount;
  return result;
}

// Negative values show that each record has a formula of its own.
TEST(MoneyConversion, ToNumbers) {
  Context context;
  const CS_DATAFMT to = format_of(CS_FLOAT_TYPE);
  const CS_MONEY4 small{-12345};
  EXPECT_EQ(-1.2345, convert(context, CS_MONEY4_TYPE, small, to).as<CS_FLOAT>());
  const CS_MONEY m = wide(-12345);
  EXPECT_EQ(-429496.7296 + 4294954951U / 10000.0,
            convert(context, CS_MONEY_TYPE, m, to).as<CS_FLOAT>());
  const Result bit = from_money(context, 0x100000000, format_of(CS_BIT_TYPE));
  EXPECT_EQ(1, bit.as<CS_BIT>()) << "the low half is zero";
}

TEST(MoneyConversion, ToLongOutsideTheMatrix) {
  Context context;
  const CS_DATAFMT from = format_of(CS_MONEY_TYPE);
  const CS_DATAFMT to = format_of(CS_LONG_TYPE, 8);
  const struct {
    std::int64_t amount, value;
  } rows[] = {
      {INT64_MIN, -922337203685477},
      {-5000, -1},
      // The low half of the integer part is zero here too.
      {-42949672965000, -4294967297},
      {-42949672964999, -4294967296},
  };
  for (const auto& row : rows) {
    const CS_MONEY m = wide(row.amount);
    std::int64_t value = 0;
    CS_INT length = 0;
    EXPECT_EQ(CS_SUCCEED, comn_moneytoi8(&context, &from, &m, &to, &value, &length));
    EXPECT_EQ(row.value, value);
    EXPECT_EQ(8, length);
  }
}

TEST(MoneyConversion, ToNumericRescales) {
  Context context;
  const struct {
    const char* label;
    std::int64_t amount;
    CS_INT precision, scale;
    CS_RETCODE code;
    CS_INT length;
    std::vector<CS_BYTE> array;  // from the sign byte on
  } rows[] = {
      {"scaled up", -12345, 10, 5, CS_SUCCEED, 8, {1, 0, 0, 1, 0xE2, 0x3A}},
      {"digits dropped", 12345, 3, 2, CS_CVT_TRUNCATED, 5, {0, 0, 123}},
      {"too many digits", 1000, 2, 4, CS_CVT_OVERFLOW, 4, {0, 0}},
      {"bytes before the scale", 10000, 2, 0, CS_CVT_OVERFLOW, 4, {0, 0}},
      {"marker", 1, CS_USE_SRCVALUE, CS_USE_SRCVALUE, CS_SUCCEED, 11, {0, 0, 0, 0, 0, 0, 0, 0, 1}},
      {"wide precision", 1, 266, 0, CS_CVT_PRECISION, 0, {}},
      {"negative scale", 1, 5, -1, CS_CVT_SCALE, 0, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    CS_DATAFMT to = format_of(CS_DECIMAL_TYPE);
    to.precision = row.precision;
    to.scale = row.scale;
    const Result result = from_money(context, row.amount, to);
    EXPECT_EQ(row.code, result.code);
    EXPECT_EQ(row.length, result.length);
    EXPECT_TRUE(result.untouched_from(static_cast<std::size_t>(row.length)));
    if (row.length == 0) continue;
    EXPECT_EQ(row.precision < 0 ? 19 : row.precision, result.bytes[0]);
    EXPECT_EQ(row.scale < 0 ? 4 : row.scale, result.bytes[1]);
    EXPECT_TRUE(std::equal(row.array.begin(), row.array.end(), result.bytes.begin() + 2));
  }
}

TEST(MoneyConversion, ToCharacterCutsAndPads) {
  Context context;
  const std::string nul(1, '\0');
  const struct {
    const char* label;
    std::int64_t amount;
    CS_INT precision, room, format;
    CS_RETCODE code;
    std::string text;
  } rows[] = {
      {"two decimals", -49, 0, 10, 0, CS_SUCCEED, "-0.00"},
      {"never more than four", 12345, 0x1000000, 10, 0, CS_SUCCEED, "1.2345"},
      {"marker counts as 0", 12345, CS_USE_SRCVALUE, 10, 0, CS_SUCCEED, "1.23"},
      {"cut", 1234500, 2, 3, 0, CS_CVT_OVERFLOW, "123"},
      {"no room", 1234500, 2, 0, 0, CS_CVT_OVERFLOW, ""},
      {"no room for the NUL", 12300, 2, 4, CS_DFMT_NULLTERM, CS_CVT_OVERFLOW, "1.2" + nul},
      {"both paddings", 12300, 2, 6, CS_DFMT_PADBLANK | CS_DFMT_PADNULL, CS_CVT_FORMAT, "1.23"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    for (const CS_INT datatype : {CS_CHAR_TYPE, CS_TEXT_TYPE}) {
      CS_DATAFMT to = format_of(datatype, row.room, row.format);
      to.precision = row.precision;
      const Result result = from_money(context, row.amount, to);
      EXPECT_EQ(row.code, result.code);
      EXPECT_EQ(row.text, result.text());
    }
  }

  CS_DATAFMT to = format_of(CS_VARCHAR_TYPE, 2, CS_DFMT_PADBLANK);
  to.precision = 1;
  const Result result = from_money(context, 123499, to);
  EXPECT_EQ(CS_SUCCEED, result.code);
  EXPECT_EQ(258, result.length);
  EXPECT_EQ(4, result.as<CS_SMALLINT>());
  EXPECT_EQ("12.3", result.text().substr(2, 4));
}

// Where the sizes and the numbers behind them differ: the clamp, and the rounding of floats.
TEST(MoneyConversion, FromNumbers) {
  Context context;
  const CS_DATAFMT to_wide = format_of(CS_MONEY_TYPE);
  const CS_DATAFMT to_small = format_of(CS_MONEY4_TYPE);
  const auto check = [&](CS_INT datatype, auto value, std::int64_t expected, CS_RETCODE wide_code,
                         CS_RETCODE small_code) {
    SCOPED_TRACE(testing::Message() << datatype << ": " << expected);
    const Result wide = convert(context, datatype, value, to_wide);
    EXPECT_EQ(wide_code, wide.code);
    EXPECT_EQ(expected, units(wide.as<CS_MONEY>()));
    const Result small = convert(context, datatype, value, to_small);
    EXPECT_EQ(small_code, small.code);
    EXPECT_EQ(4, small.length);
    EXPECT_EQ(std::clamp<std::int64_t>(expected, INT32_MIN, INT32_MAX), small.as<CS_MONEY4>().mny4);
  };
  check(CS_MONEY_TYPE, wide(-0x80000001LL), -0x80000001LL, CS_SUCCEED, CS_CVT_OVERFLOW);
  check(CS_INT_TYPE, CS_INT{INT32_MIN}, -21474836480000, CS_SUCCEED, CS_CVT_OVERFLOW);
  check(CS_INT_TYPE, CS_INT{214749}, 2147490000, CS_SUCCEED, CS_CVT_OVERFLOW);
  check(CS_REAL_TYPE, 0.1F, 1000, CS_SUCCEED, CS_SUCCEED);
  check(CS_FLOAT_TYPE, -0.00005, -1, CS_SUCCEED, CS_SUCCEED);
  check(CS_FLOAT_TYPE, 1e30, INT64_MAX, CS_CVT_OVERFLOW, CS_CVT_OVERFLOW);
}

TEST(MoneyConversionDeathTest, WrongDatatypes) {
  Context context;
  const CS_MONEY m{};
  CS_BYTE dest[258];
  CS_INT length = 0;
  const CS_DATAFMT money = format_of(CS_MONEY_TYPE);
  const CS_DATAFMT small = format_of(CS_MONEY4_TYPE);
  const CS_DATAFMT text = format_of(CS_CHAR_TYPE, 10);
  const CS_DATAFMT varchar = format_of(CS_VARCHAR_TYPE);
  const CS_DATAFMT negative = format_of(CS_CHAR_TYPE, -1);
  EXPECT_DEATH(comn_moneytochar(&context, &small, &m, &text, dest, &length), "com_mony.cpp");
  EXPECT_DEATH(comn_moneytochar(&context, &money, &m, &varchar, dest, &length), "com_mony.cpp");
  EXPECT_DEATH(comn_mny4tochar(&context, &small, nullptr, &text, dest, &length), "Invalid pointer");
  EXPECT_DEATH(comn_mny4tochar(&context, &small, &m, &negative, dest, &length), "assertion failed");
}

}  // namespace
