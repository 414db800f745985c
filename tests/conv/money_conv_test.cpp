// The money families through the matrix, and the money targets of the number families.
#include <cstdint>

#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "conversion.h"

namespace {

using namespace conversion;
using namespace std::string_literals;

CS_MONEY wide(std::int64_t units) {
  return {static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
}

// Converts an amount from CS_MONEY and, when it fits, from CS_MONEY4 too, which must give the same.
Result from_money(Context& context, std::int64_t amount, const CS_DATAFMT& to) {
  Result result = convert(context, CS_MONEY_TYPE, wide(amount), to);
  if (amount != static_cast<CS_INT>(amount)) return result;
  const CS_MONEY4 small{static_cast<CS_INT>(amount)};
  const Result other = convert(context, CS_MONEY4_TYPE, small, to);
  EXPECT_EQ(result.code, other.code) << amount;
  EXPECT_EQ(result.length, other.length) << amount;
  EXPECT_EQ(result.bytes, other.bytes) << amount;
  return result;
}

// Negative values show that each record has a formula of its own.
TEST(MoneyConversion, ToFloatByEachRecordsFormula) {
  Context context;
  const CS_DATAFMT to = format_of(CS_FLOAT_TYPE);
  EXPECT_EQ(-1.2345, convert(context, CS_MONEY4_TYPE, CS_MONEY4{-12345}, to).as<CS_FLOAT>());
  EXPECT_EQ(-429496.7296 + 4294954951U / 10000.0,
            convert(context, CS_MONEY_TYPE, wide(-12345), to).as<CS_FLOAT>());
  const Result bit = from_money(context, 0x100000000, format_of(CS_BIT_TYPE));
  EXPECT_EQ(1, bit.as<CS_BIT>()) << "the low half is zero";
}

// Ranges of integers are judged behind the cut of a fraction, but those of numerics before it.
TEST(MoneyConversion, ToIntegersCutsTheFractionFirst) {
  Context context;
  const CS_DATAFMT tiny = format_of(CS_TINYINT_TYPE);
  EXPECT_EQ("\xFF", from_money(context, 2555000, tiny).text());
  EXPECT_EQ(CS_SUCCEED, from_money(context, 2555000, tiny).code);
  EXPECT_EQ(CS_SUCCEED, from_money(context, -2500, tiny).code);
  EXPECT_EQ(-1, from_money(context, -5000, format_of(CS_SMALLINT_TYPE)).as<CS_SMALLINT>());
  for (const CS_NUMERIC& numeric : {CS_NUMERIC{4, 1, {0, 0x09, 0xFB}}, {2, 2, {1, 25}}})
    EXPECT_EQ(CS_CVT_OVERFLOW, convert(context, CS_NUMERIC_TYPE, numeric, tiny).code);
}

TEST(MoneyConversion, ToLongOutsideTheMatrix) {
  const auto check = [](CS_CONV_FUNC routine, CS_INT type, const auto& value, CS_RETCODE code,
                        std::int64_t expected) {
    Context context;
    ASSERT_EQ(CS_SUCCEED, com_conv_install(&context, type, CS_LONG_TYPE, routine));
    const Result result = convert(context, type, value, format_of(CS_LONG_TYPE, 8));
    EXPECT_EQ(code, result.code) << expected;
    EXPECT_EQ(bytes_of(expected), result.text());
  };
  // The low half of the integer part is zero in the last two.
  for (const auto& [amount, expected] : {std::pair{INT64_MIN, -922337203685477},
                                         {-5000, -1},
                                         {-42949672965000, -4294967297},
                                         {-42949672964999, -4294967296}})
    check(comn_moneytoi8, CS_MONEY_TYPE, wide(amount), CS_SUCCEED, expected);
  check(comn_mny4toi8, CS_MONEY4_TYPE, CS_MONEY4{-5000}, CS_SUCCEED, -1);
  const CS_NUMERIC numeric{20, 0, {1, 1, 0, 0, 0, 0, 0, 0, 0, 0}};
  check(comn_numtoi8, CS_NUMERIC_TYPE, numeric, CS_CVT_OVERFLOW, INT64_MIN);
}

TEST(MoneyConversion, ToNumericByTheFormat) {
  Context context;
  constexpr CS_INT kOwn = CS_USE_SRCVALUE;
  const struct {
    const char* label;
    std::int64_t amount;
    CS_INT precision, scale;
    CS_RETCODE code;
    std::string bytes;
  } rows[] = {
      {"marker", 1, kOwn, kOwn, CS_SUCCEED, "\x13\4\0\0\0\0\0\0\0\0\1"s},
      {"wide precision", 1, 266, 0, CS_CVT_PRECISION, ""},
  };
  for (const auto& row : rows) {
    const CS_DATAFMT to = numeric_format(row.precision, row.scale, CS_DECIMAL_TYPE);
    const Result result = from_money(context, row.amount, to);
    EXPECT_EQ(row.code, result.code) << row.label;
    EXPECT_EQ(row.bytes, result.text()) << row.label;
    EXPECT_TRUE(result.untouched_from(row.bytes.size())) << row.label;
  }
}

// The bytes of a numeric whose magnitude is a decimal text.
std::string numeric_bytes(CS_INT precision, CS_INT scale, bool negative,
                          const std::string& magnitude) {
  std::string bytes(static_cast<std::size_t>(comn_num_getlen(precision)), '\0');
  for (const char digit : magnitude) {
    int carry = digit - '0';
    for (std::size_t at = bytes.size(); at-- > 1; carry >>= 8) {
      carry += static_cast<unsigned char>(bytes[at]) * 10;
      bytes[at] = static_cast<char>(carry);
    }
  }
  bytes[0] = negative ? 1 : 0;
  return std::string{static_cast<char>(precision), static_cast<char>(scale)} + bytes;
}

// Every precision and scale, against the digits of the amount as text.
TEST(MoneyConversion, ToNumericWheneverTheResultFits) {
  Context context;
  for (const std::int64_t amount :
       {std::int64_t{0}, std::int64_t{1}, std::int64_t{-99}, std::int64_t{100}, std::int64_t{50000},
        std::int64_t{123400}, std::int64_t{-70000}, std::int64_t{16777216},
        std::int64_t{-1234560000}, INT64_MAX, INT64_MIN}) {
    std::string digits = std::to_string(amount);
    const bool negative = amount < 0;
    digits.erase(0, negative ? 1 : 0);
    for (CS_INT scale = 0; scale <= CS_MAX_SCALE; ++scale) {
      const auto kept = static_cast<std::size_t>(
          std::max(static_cast<CS_INT>(digits.size()) - std::max(4 - scale, 0), 0));
      const bool cut = digits.find_first_not_of('0', kept) != std::string::npos;
      std::string magnitude = digits.substr(0, kept);
      if (amount != 0) magnitude.append(static_cast<std::size_t>(std::max(scale - 4, 0)), '0');
      if (amount == 0) magnitude.clear();
      for (CS_INT precision = 1; precision <= CS_MAX_PREC; ++precision) {
        SCOPED_TRACE(std::to_string(amount) + " at " + std::to_string(precision) + "," +
                     std::to_string(scale));
        const bool fits = magnitude.size() <= static_cast<std::size_t>(precision);
        const Result result = from_money(context, amount, numeric_format(precision, scale));
        EXPECT_EQ(!fits ? CS_CVT_OVERFLOW : cut ? CS_CVT_TRUNCATED : CS_SUCCEED, result.code);
        EXPECT_EQ(numeric_bytes(precision, scale, fits && negative, fits ? magnitude : ""),
                  result.text());
      }
    }
  }
}

TEST(MoneyConversion, ToTextWithTheDecimalsOfTheFormat) {
  Context context;
  const struct {
    std::int64_t amount;
    CS_INT precision;
    std::string text;
  } rows[] = {{-49, 0, "-0.00"},
              {12345, 0x1000000, "1.2345"},
              {12345, CS_USE_SRCVALUE, "1.23"},
              {123499, 1, "12.3"}};
  for (const auto& row : rows) {
    CS_DATAFMT to = format_of(CS_CHAR_TYPE, 10);
    to.precision = row.precision;
    EXPECT_EQ(row.text, from_money(context, row.amount, to).text());
  }
}

TEST(MoneyConversion, FromFloatRoundsHalvesAway) {
  Context context;
  EXPECT_EQ(bytes_of(wide(-1)),
            convert(context, CS_FLOAT_TYPE, -0.00005, format_of(CS_MONEY_TYPE)).text());
  EXPECT_EQ(bytes_of(CS_MONEY4{-1}),
            convert(context, CS_FLOAT_TYPE, -0.00005, format_of(CS_MONEY4_TYPE)).text());
}

}  // namespace
