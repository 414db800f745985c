// What exact numerics promise beyond single results: tables, text rules, odd records, stops, and
// the conversions of the matrix.
#include "comnlib/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "comnlib/convert.h"
#include "exact/numemath.h"
#include "exact/numeric.h"

using namespace comnlib;

namespace {

// A numeric of a size from text that fits it.
CS_NUMERIC numeric(std::string_view text, int precision = kFromText, int scale = kFromText) {
  CS_NUMERIC value{};
  EXPECT_EQ(parse_numeric(text, static_cast<CS_BYTE>(precision), static_cast<CS_BYTE>(scale), false,
                          value),
            kExactOk)
      << text;
  return value;
}

std::string text(const CS_NUMERIC& value) {
  std::array<CS_CHAR, 80> buffer;
  CS_INT length = 0;
  const constant record = record_of(value);
  EXPECT_EQ(com__subexctnumetochar(&record, buffer.data(), buffer.size(), &length), kExactOk);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

TEST(NumericTables, FollowTheirRules) {
  EXPECT_EQ(Com__Nume_Prec_To_Len[0], 2);
  for (const auto& [precision, length] :
       {std::pair{1, 2}, {2, 2}, {3, 3}, {4, 3}, {5, 4}, {19, 9}, {38, 17}, {77, 33}})
    EXPECT_EQ(comn_num_getlen(precision), length) << precision;
  for (const auto& [length, precision] :
       {std::pair{0, 0}, {1, 0}, {2, 2}, {3, 4}, {4, 7}, {5, 9}, {6, 12}, {7, 14}, {33, 77}})
    EXPECT_EQ(comn_num_getprec(length), precision) << length;
  for (const std::size_t length : {34, 35, 36}) EXPECT_EQ(Com__Nume_Len_To_Prec[length - 2], 255);
  const auto& powers = Com__Nume_Byte_Power_Array;
  EXPECT_EQ((std::array<CS_BYTE, 3>{powers[0][0], powers[0][1], powers[0][2]}),
            (std::array<CS_BYTE, 3>{2, 0, 1}));
  EXPECT_EQ((std::array<CS_BYTE, 4>{powers[3][0], powers[3][1], powers[3][2], powers[3][3]}),
            (std::array<CS_BYTE, 4>{3, 0, 3, 0xE8}));
  for (int exponent = 1; exponent < CS_MAX_PREC; ++exponent) {
    const auto& entry = powers[static_cast<std::size_t>(exponent)];
    ASSERT_EQ(entry[0], comn_num_getlen(exponent)) << exponent;
    const CS_NUMERIC power = numeric("1e" + std::to_string(exponent), CS_MAX_PREC, 0);
    const std::size_t digits = entry[0] - 1u;
    EXPECT_EQ(std::memcmp(entry.data() + 2, std::end(power.array) - digits, digits), 0) << exponent;
  }
}

TEST(NumericKernel, SmallOperations) {
  std::array<CS_BYTE, 4> bytes{1, 0x01, 0xFF, 0xFF};
  constant record{4, 9, 0, bytes.data()};
  EXPECT_EQ(com__exctnume_inc(&record), 0);
  EXPECT_EQ(bytes, (std::array<CS_BYTE, 4>{1, 0x02, 0, 0}));
  EXPECT_EQ(com__exctnume_mulby10_add(&record, 7), 0);
  EXPECT_EQ(bytes, (std::array<CS_BYTE, 4>{1, 0x14, 0, 7}));
  EXPECT_EQ(com__exctnume_mulby10_add(&record, 9), 0);
  EXPECT_EQ(com__exctnume_mulby10_add(&record, 9), 1) << "the carry is lost";
  EXPECT_EQ(com__exctnume_needsbyte(&record), 0);

  bytes = {0, 0xFF, 0xFF, 0xFF};
  EXPECT_EQ(com__exctnume_needsbyte(&record), 1);
  EXPECT_EQ(com__exctnume_inc(&record), 1);
  EXPECT_EQ(com__exctnume_intcmp(&record, 0), 1);

  bytes = {1, 0, 1, 0x05};
  EXPECT_EQ(com__exctnume_divby10(&record), 1);
  EXPECT_EQ(record.len, 2);
  EXPECT_EQ(com__exctnume_intcmp(&record, 26), 1);
  EXPECT_EQ(com__exctnume_divby10(&record), 6);
  EXPECT_EQ(com__exctnume_divby10(&record), 2);
  EXPECT_EQ(record.len, 2) << "one magnitude byte stays";

  std::array<CS_BYTE, 2> small{9, 9};
  constant target{2, 2, 0, small.data()};
  bytes = {1, 0, 1, 0};
  record.len = 4;
  EXPECT_EQ(com__exctnume_copy(&record, &target), 1);
  EXPECT_EQ(small, (std::array<CS_BYTE, 2>{9, 9}));
  bytes = {1, 0, 0, 99};
  EXPECT_EQ(com__exctnume_copy(&record, &target), 0);
  EXPECT_EQ(small, (std::array<CS_BYTE, 2>{1, 99}));
  EXPECT_EQ(com__exctnume_checkprecision(&target), 0);
  small[1] = 100;
  EXPECT_NE(com__exctnume_checkprecision(&target), 0);
  EXPECT_EQ(com__exctnume_scale(&target, nullptr, -1), 0) << "in place";
  EXPECT_EQ(small, (std::array<CS_BYTE, 2>{1, 10}));
  EXPECT_EQ(com__exctnume_cmp(&target, &record, 0), -1) << "flag 0 compares magnitudes";
  EXPECT_EQ(com__exctnume_cmp(&target, &record, kCompareSigns), 1);
}

TEST(NumericKernel, DivisionGivesTheRemainder) {
  CS_NUMERIC a = numeric("-17.5", 5, 1);
  CS_NUMERIC b = numeric("3", 1, 0);
  CS_NUMERIC q = numeric("0", 5, 0);
  CS_NUMERIC r = numeric("0", 5, 1);
  constant dividend = record_of(a), divisor = record_of(b), quotient = record_of(q),
           remainder = record_of(r);
  EXPECT_EQ(com__exctnume_div(&dividend, &divisor, &quotient, &remainder), 0);
  EXPECT_EQ(text(q), "-5");
  EXPECT_EQ(text(r), "-2.5");
}

struct TextCase {
  const char* text;
  CS_INT status;
  int precision, scale;  // what the markers become
  const char* value;
};

class NumericText : public testing::TestWithParam<TextCase> {};

TEST_P(NumericText, WithMarkers) {
  const TextCase& row = GetParam();
  CS_NUMERIC value{99, 99, {}};
  EXPECT_EQ(parse_numeric(row.text, kFromText, kFromText, false, value), row.status) << row.text;
  EXPECT_EQ(value.precision, row.precision) << row.text;
  EXPECT_EQ(value.scale, row.scale) << row.text;
  if (row.value != nullptr) {
    EXPECT_EQ(text(value), row.value) << row.text;
  }
}

constexpr TextCase kTexts[] = {
    {"0", 0, 1, 0, "0"},
    {"-0", 0, 1, 0, "-0"},
    {"007", 0, 1, 0, "7"},
    {"0.050", 0, 3, 3, "0.050"},
    {"00012.500", 0, 5, 3, "12.500"},
    {"1e3", 0, 4, 0, "1000"},
    {"-1.25e1", 0, 3, 1, "-12.5"},
    {"125E-5", 0, 5, 5, "0.00125"},
    {" \t+5.  \r\n", 0, 1, 0, "5"},
    {".5", 0, 1, 1, "0.5"},
    {"0e99999999999999999999", 0, 1, 0, "0"},
    {"1e77", 1, 99, 99, nullptr},
    {"1e99999999999999999999", 1, 99, 99, nullptr},
    {"1e-78", 6, 77, 77, nullptr},
    {"-1e-99999999999999999999", 6, 77, 77, nullptr},
    {"", 2, 99, 99, nullptr},
    {"   ", 2, 99, 99, nullptr},
    {".", 2, 99, 99, nullptr},
    {"-", 2, 99, 99, nullptr},
    {"- 5", 2, 99, 99, nullptr},
    {"+-5", 2, 99, 99, nullptr},
    {"5-", 2, 99, 99, nullptr},
    {"1.2.3", 2, 99, 99, nullptr},
    {"1,5", 2, 99, 99, nullptr},
    {"e5", 2, 99, 99, nullptr},
    {"1e", 2, 99, 99, nullptr},
    {"1e+", 2, 99, 99, nullptr},
    {"1e 5", 2, 99, 99, nullptr},
    {"1e5.0", 2, 99, 99, nullptr},
    {"5 5", 2, 99, 99, nullptr},
    {"\n5", 2, 99, 99, nullptr},
    {"0x10", 2, 99, 99, nullptr},
    {"inf", 2, 99, 99, nullptr},
};
INSTANTIATE_TEST_SUITE_P(Rows, NumericText, testing::ValuesIn(kTexts));

TEST(NumericText, OneMarkerAlone) {
  EXPECT_EQ(text(numeric("12.5", kFromText, 4)), "12.5000");
  EXPECT_EQ(numeric("12.5", kFromText, 4).precision, 6) << "what the value needs at that scale";
  EXPECT_EQ(numeric("12.5", 20, kFromText).scale, 1);
  CS_NUMERIC value{};
  EXPECT_EQ(parse_numeric("12.987", kFromText, 1, true, value), 0);
  EXPECT_EQ(text(value), "13.0");
  EXPECT_EQ(value.precision, 5) << "dropped digits stand in the text";
}

TEST(NumericText, Printing) {
  EXPECT_EQ(text(numeric("0.00007", 1, 5)), "0.00007") << "scale above the precision";
  EXPECT_EQ(text(numeric("0", 5, 2)), "0.00");
  EXPECT_EQ(text(numeric("-0", 5, 2)), "-0.00");
  CS_NUMERIC widest{255, 77, {}};
  std::fill_n(widest.array, sizeof widest.array, CS_BYTE{255});
  EXPECT_EQ(text(widest).size(), 80u);

  const CS_NUMERIC value = numeric("-12.5");
  const constant record = record_of(value);
  std::array<char, 8> buffer;
  buffer.fill('#');
  CS_INT length = -1;
  EXPECT_EQ(com__subexctnumetochar(&record, buffer.data(), 4, &length), 1);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(buffer[0], '#');
  EXPECT_EQ(com__subexctnumetochar(&record, buffer.data(), 5, &length), 0);
  EXPECT_EQ(std::string_view(buffer.data(), 6), "-12.5#") << "no room for the NUL";
  EXPECT_EQ(com__subexctnumetochar(&record, buffer.data(), 8, &length), 0);
  EXPECT_STREQ(buffer.data(), "-12.5");
}

// --- the matrix

class NumericConversion : public testing::Test {
 protected:
  NumericConversion() { com_conv_init(&context_); }
  ~NumericConversion() override { com_conv_free(&context_); }

  CS_RETCODE convert(CS_INT srctype, const void* source, CS_INT desttype, void* dest,
                     CS_INT precision = 0, CS_INT scale = 0, CS_INT maxlength = 0) {
    CS_DATAFMT from{}, to{};
    from.datatype = srctype;
    to.datatype = desttype;
    to.precision = precision;
    to.scale = scale;
    to.maxlength = maxlength;
    const CS_CONV_FUNC routine =
        desttype == CS_LONG_TYPE ? comn_numtoi8 : com_conv_func(&context_, srctype, desttype);
    EXPECT_NE(routine, nullptr);
    return routine(&context_, &from, source, &to, dest, &length_);
  }

  template <class T>
  void expect_integer(const char* value, CS_INT type, T expected, CS_RETCODE code) {
    const CS_NUMERIC source = numeric(value);
    T result{};
    EXPECT_EQ(convert(CS_DECIMAL_TYPE, &source, type, &result), code) << value;
    EXPECT_EQ(result, expected) << value;
    EXPECT_EQ(length_, static_cast<CS_INT>(sizeof(T)));
  }

  CS_CONTEXT context_{};
  CS_INT length_ = -1;
};

TEST_F(NumericConversion, ToIntegers) {
  constexpr CS_RETCODE over = CS_CVT_OVERFLOW;
  expect_integer<CS_TINYINT>("255", CS_TINYINT_TYPE, 255, CS_SUCCEED);
  expect_integer<CS_TINYINT>("255.5", CS_TINYINT_TYPE, 255, over);
  expect_integer<CS_TINYINT>("254.99", CS_TINYINT_TYPE, 254, CS_SUCCEED);
  expect_integer<CS_TINYINT>("-0.5", CS_TINYINT_TYPE, 0, over);
  expect_integer<CS_TINYINT>("-0.0", CS_TINYINT_TYPE, 0, CS_SUCCEED);
  expect_integer<CS_SMALLINT>("-32768", CS_SMALLINT_TYPE, -32768, CS_SUCCEED);
  expect_integer<CS_SMALLINT>("-32768.00000000001", CS_SMALLINT_TYPE, -32768, over);
  expect_integer<CS_SMALLINT>("-6.99999999999999999999", CS_SMALLINT_TYPE, -7, CS_SUCCEED);
  expect_integer<CS_SMALLINT>("1e40", CS_SMALLINT_TYPE, 32767, over);
  expect_integer<CS_INT>("2147483647.00000000000000000001", CS_INT_TYPE, 2147483647, CS_SUCCEED);
  expect_integer<CS_INT>("2147483647.5", CS_INT_TYPE, 2147483647, over);
  expect_integer<CS_INT>("-2.7", CS_INT_TYPE, -2, CS_SUCCEED);
  using Long = std::numeric_limits<std::int64_t>;
  expect_integer<std::int64_t>("9223372036854775807", CS_LONG_TYPE, Long::max(), CS_SUCCEED);
  expect_integer<std::int64_t>("-9223372036854775808", CS_LONG_TYPE, Long::min(), CS_SUCCEED);
  expect_integer<std::int64_t>("6.99999999999999999999", CS_LONG_TYPE, 6, CS_SUCCEED);
  expect_integer<std::int64_t>("9223372036854775807.5", CS_LONG_TYPE, Long::max(), over);
  expect_integer<std::int64_t>("-9223372036854775809", CS_LONG_TYPE, Long::min(), over);
  expect_integer<CS_BIT>("1e-77", CS_BIT_TYPE, 1, CS_SUCCEED);
  expect_integer<CS_BIT>("256", CS_BIT_TYPE, 1, CS_SUCCEED);
  expect_integer<CS_BIT>("-0.00", CS_BIT_TYPE, 0, CS_SUCCEED);
}

TEST_F(NumericConversion, ToFloats) {
  expect_integer<CS_FLOAT>("0.1", CS_FLOAT_TYPE, 0.1, CS_SUCCEED);
  expect_integer<CS_FLOAT>("9007199254740993", CS_FLOAT_TYPE, 9007199254740992.0, CS_SUCCEED);
  expect_integer<CS_REAL>("-0.1", CS_REAL_TYPE, -0.1f, CS_SUCCEED);
  expect_integer<CS_REAL>("-1e40", CS_REAL_TYPE, -std::numeric_limits<CS_REAL>::max(),
                          CS_CVT_OVERFLOW);
}

TEST_F(NumericConversion, ToMoney) {
  const auto units = [](const CS_MONEY& m) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(m.mnyhigh) << 32 | m.mnylow);
  };
  struct Row {
    const char* value;
    CS_RETCODE code;
    std::int64_t units;
    CS_RETCODE small_code;
    CS_INT small_units;
  };
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  constexpr CS_INT small_most = std::numeric_limits<CS_INT>::max();
  constexpr CS_RETCODE over = CS_CVT_OVERFLOW;
  for (const Row& row : {Row{"12.34567", 1, 123456, 1, 123456},
                         {"-7", 1, -70000, 1, -70000},
                         {"-922337203685477.5808", 1, -most - 1, over, -small_most - 1},
                         {"922337203685477.5808", over, most, over, small_most},
                         {"1e60", over, most, over, small_most},
                         {"-1e60", over, -most - 1, over, -small_most - 1},
                         {"214748.36479", 1, 2147483647, 1, 2147483647}}) {
    const CS_NUMERIC source = numeric(row.value);
    CS_MONEY money{};
    CS_MONEY4 narrow{};
    EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, CS_MONEY_TYPE, &money), row.code) << row.value;
    EXPECT_EQ(units(money), row.units) << row.value;
    EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, CS_MONEY4_TYPE, &narrow), row.small_code);
    EXPECT_EQ(narrow.mny4, row.small_units) << row.value;
  }
}

TEST_F(NumericConversion, ToTextAndBytes) {
  const CS_NUMERIC source = numeric("-12.50");
  std::array<char, 8> buffer{};
  EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, CS_CHAR_TYPE, buffer.data(), 0, 0, 8), CS_SUCCEED);
  EXPECT_EQ(length_, 6);
  EXPECT_STREQ(buffer.data(), "-12.50");
  EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, CS_TEXT_TYPE, buffer.data(), 0, 0, 5),
            CS_CVT_OVERFLOW);
  EXPECT_EQ(length_, 1);
  EXPECT_EQ(buffer[0], '*');
  CS_VARCHAR text{};
  EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, CS_VARCHAR_TYPE, &text), CS_SUCCEED);
  EXPECT_EQ(std::string_view(text.str, static_cast<std::size_t>(text.len)), "-12.50");
  CS_VARBINARY raw{};
  EXPECT_EQ(convert(CS_DECIMAL_TYPE, &source, CS_VARBINARY_TYPE, &raw), CS_SUCCEED);
  EXPECT_EQ(raw.len, 35);
  EXPECT_EQ(std::memcmp(raw.array, &source, sizeof source), 0);
  std::array<CS_BYTE, 35> bytes{};
  EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, CS_BINARY_TYPE, bytes.data(), 0, 0, 20),
            CS_CVT_TRUNCATED);
  EXPECT_EQ(length_, 20);
}

TEST_F(NumericConversion, EveryMemberRefusesARecordOutOfRange) {
  for (const auto& [precision, scale] : {std::pair{0, 0}, {78, 0}, {255, 255}, {5, 78}}) {
    const CS_NUMERIC source{static_cast<CS_BYTE>(precision), static_cast<CS_BYTE>(scale), {7}};
    for (CS_INT type = 0; type < CS_BUILTIN_TYPES; ++type) {
      if (com_conv_func(&context_, CS_NUMERIC_TYPE, type) == nullptr) continue;
      std::array<CS_BYTE, 258> dest{};
      EXPECT_EQ(convert(CS_NUMERIC_TYPE, &source, type, dest.data(), 0, 99, 0), CS_CVT_DOMAIN)
          << type;
    }
  }
}

TEST_F(NumericConversion, NumbersToNumeric) {
  CS_NUMERIC result{};
  const auto expect = [&](CS_INT type, auto value, CS_INT precision, CS_INT scale, CS_RETCODE code,
                          const char* printed) {
    std::memset(&result, 0xEE, sizeof result);
    EXPECT_EQ(convert(type, &value, CS_DECIMAL_TYPE, &result, precision, scale), code) << printed;
    EXPECT_EQ(length_, 35) << printed;
    if (*printed != '\0') {
      EXPECT_EQ(text(result), printed);
    }
  };
  expect(CS_INT_TYPE, CS_INT{-7}, 5, 2, CS_SUCCEED, "-7.00");
  expect(CS_INT_TYPE, std::numeric_limits<CS_INT>::min(), 10, 0, CS_SUCCEED, "-2147483648");
  expect(CS_INT_TYPE, CS_INT{100}, 2, 0, CS_CVT_OVERFLOW, "0");
  expect(CS_SMALLINT_TYPE, CS_SMALLINT{10}, 3, 2, CS_CVT_OVERFLOW, "0.00");
  expect(CS_TINYINT_TYPE, CS_TINYINT{200}, 77, 74, CS_SUCCEED,
         ("200." + std::string(74, '0')).c_str());
  expect(CS_BIT_TYPE, CS_BIT{1}, 1, 0, CS_SUCCEED, "1");
  expect(CS_BIT_TYPE, CS_BIT{2}, 1, 0, CS_CVT_DOMAIN, "");
  expect(CS_REAL_TYPE, 0.1f, 20, 18, CS_SUCCEED, "0.100000001490116120");
  expect(CS_FLOAT_TYPE, 2.5, 3, 0, CS_SUCCEED, "3");
  expect(CS_FLOAT_TYPE, -2.5, 3, 0, CS_SUCCEED, "-3");
  expect(CS_FLOAT_TYPE, 9.996, 3, 2, CS_CVT_OVERFLOW, "0.00");
  expect(CS_FLOAT_TYPE, 1.005, 5, 2, CS_SUCCEED, "1.00");
  expect(CS_FLOAT_TYPE, HUGE_VAL, 5, 2, CS_CVT_SYNTAX, "");
  expect(CS_INT_TYPE, CS_INT{7}, 0, 99, CS_CVT_PRECISION, "");
  expect(CS_INT_TYPE, CS_INT{7}, 266, 0, CS_CVT_PRECISION, "");
  expect(CS_INT_TYPE, CS_INT{7}, CS_USE_SRCVALUE, 0, CS_CVT_PRECISION, "");
  expect(CS_INT_TYPE, CS_INT{7}, 5, 78, CS_CVT_SCALE, "");
  expect(CS_INT_TYPE, CS_INT{7}, 5, -1, CS_CVT_SCALE, "");

  expect(CS_INT_TYPE, CS_INT{7}, 5, 2, CS_SUCCEED, "7.00");
  EXPECT_EQ(result.array[comn_num_getlen(5)], 0xEE) << "bytes behind the precision's";
}

using NumericDeathTest = NumericConversion;

TEST_F(NumericDeathTest, BrokenPreconditionsStop) {
  CS_NUMERIC value = numeric("1");
  CS_NUMERIC result{};
  EXPECT_DEATH(comn_num_getlen(0), "assertion failed");
  EXPECT_DEATH(comn_num_getlen(78), "assertion failed");
  EXPECT_DEATH(comn_num_getprec(-1), "assertion failed");
  EXPECT_DEATH(comn_num_getprec(34), "assertion failed");
  EXPECT_DEATH(comn_num_addorsub(&value, &value, &result, 2), "assertion failed");
  EXPECT_DEATH(comn_numadd(nullptr, &value, &result), "Invalid pointer");
  EXPECT_DEATH(comn_nummul(&value, nullptr, &result), "Invalid pointer");
  EXPECT_DEATH(comn_numdivide(&value, &value, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_numcmp(&value, nullptr), "Invalid pointer");
  CS_DATAFMT from{}, to{};
  from.datatype = CS_INT_TYPE;
  to.datatype = CS_NUMERIC_TYPE;
  EXPECT_DEATH(comn_numtonum(&context_, &from, &value, &to, &result, &length_), "com_num.cpp");
  EXPECT_DEATH(comn_numtonum(&context_, &to, &value, &from, &result, &length_), "com_num.cpp");
}

}  // namespace
