// What exact numerics promise beyond single results: tables, text rules, odd records, stops, and
// the conversions of the matrix.
#include "comnlib/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "comnlib/convert.h"
#include "exact/limbs.h"
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
}

// A marked precision or scale becomes what the text needs; otherwise the value is refused.
TEST(NumericText, WithMarkers) {
  const struct {
    const char* text;
    int precision, scale;
    const char* value;
  } good[] = {
      {"0", 1, 0, "0"},
      {"-0", 1, 0, "-0"},
      {"007", 1, 0, "7"},
      {"0.050", 3, 3, "0.050"},
      {"00012.500", 5, 3, "12.500"},
      {"1e3", 4, 0, "1000"},
      {"-1.25e1", 3, 1, "-12.5"},
      {"125E-5", 5, 5, "0.00125"},
      {" \t+5.  \r\n", 1, 0, "5"},
      {".5", 1, 1, "0.5"},
      {"0e99999999999999999999", 1, 0, "0"},
  };
  for (const auto& row : good) {
    const CS_NUMERIC value = numeric(row.text);
    EXPECT_EQ(value.precision, row.precision) << row.text;
    EXPECT_EQ(value.scale, row.scale) << row.text;
    EXPECT_EQ(text(value), row.value) << row.text;
  }
  const auto expect = [](CS_INT status, std::initializer_list<const char*> texts, int left) {
    for (const char* const refused : texts) {
      CS_NUMERIC value{99, 99, {}};
      EXPECT_EQ(parse_numeric(refused, kFromText, kFromText, false, value), status) << refused;
      EXPECT_EQ(left, value.precision) << refused;
      EXPECT_EQ(left, value.scale) << refused;
    }
  };
  const std::string nines(2000, '9');  // more than any magnitude has room for
  expect(kExactOverflow, {"1e77", "1e99999999999999999999", nines.c_str()}, 99);
  expect(kExactTruncated, {"1e-78", "-1e-99999999999999999999"}, CS_MAX_PREC);
  expect(kExactSyntax,
         {"", "   ", ".", "-", "- 5", "+-5", "5-", "1.2.3", "1,5", "e5", "1e", "1e+", "1e 5",
          "1e5.0", "5 5", "\n5", "0x10", "inf"},
         99);
}

TEST(NumericText, OneMarkerAlone) {
  EXPECT_EQ(text(numeric("12.5", kFromText, 4)), "12.5000");
  EXPECT_EQ(numeric("12.5", kFromText, 4).precision, 6) << "what the value needs at that scale";
  EXPECT_EQ(numeric("12.5", 20, kFromText).scale, 1);
  CS_NUMERIC value{};
  EXPECT_EQ(parse_numeric("12.987", kFromText, 1, true, value), 0);
  EXPECT_EQ(text(value), "13.0");
  EXPECT_EQ(value.precision, 5) << "dropped digits were written";
}

TEST(NumericText, Printing) {
  EXPECT_EQ(text(numeric("0.00007", 1, 5)), "0.00007") << "scale above the precision";
  EXPECT_EQ(text(numeric("-0", 5, 2)), "-0.00");
  CS_NUMERIC widest{255, 77, {}};
  std::fill_n(widest.array, sizeof widest.array, CS_BYTE{255});
  EXPECT_EQ(text(widest).size(), 80u);

  const CS_NUMERIC value = numeric("-12.5");
  const constant record = record_of(value);
  for (const CS_INT room : {-1, 4, 5, 6}) {  // with five there is no room for the NUL
    std::string buffer(7, '#');
    CS_INT length = -1;
    EXPECT_EQ(com__subexctnumetochar(&record, buffer.data(), room, &length), room < 5) << room;
    EXPECT_EQ(length, room < 5 ? 0 : 5) << room;
    const std::string expected = room < 5 ? "" : room == 5 ? "-12.5" : std::string("-12.5\0", 6);
    EXPECT_EQ(buffer, expected + std::string(7 - expected.size(), '#')) << room;
  }
}

// --- the kernel, where a record has less room than a value

TEST(NumericKernel, DivisionWithoutRoom) {
  const CS_NUMERIC large = numeric(std::string(77, '9')), one = numeric("1");
  const CS_NUMERIC divisor = numeric("1000000");
  const constant dividend = record_of(large), small = record_of(one), million = record_of(divisor);
  std::array<CS_BYTE, 35> widest;
  widest.fill(255);
  const constant beyond{widest.size(), 77, 0, widest.data()};
  CS_NUMERIC result = numeric("0.5", 77, 77);
  constant quotient = record_of(result);
  EXPECT_EQ(com__exctnume_div(&dividend, &small, &quotient, nullptr), kExactOverflow)
      << "154 digits before they are cut";
  EXPECT_EQ(text(result), "0." + std::string(77, '0'));
  EXPECT_EQ(com__exctnume_div(&beyond, &small, &quotient, nullptr), kExactOverflow)
      << "more bytes than a division has room for";
  result = numeric("5", 77, 0);
  quotient = record_of(result);
  CS_NUMERIC rest = numeric("5", 2, 0);
  constant remainder = record_of(rest);
  EXPECT_EQ(com__exctnume_div(&dividend, &million, &quotient, &remainder), kExactOverflow)
      << "a remainder of 999999 in one byte";
  EXPECT_EQ(text(result), "0");
  EXPECT_EQ(text(rest), "5");
}

// 66 bytes by 2 leave 65: with one more byte all of the 132 that a division has. A byte less in the
// divisor is too much.
TEST(NumericKernel, DivisionInAllOfItsRoom) {
  std::array<CS_BYTE, 67> bytes, result{};
  bytes.fill(255);
  bytes[0] = 0;
  std::array<CS_BYTE, 3> divisor{0, 1, 0};
  const constant dividend{bytes.size(), 77, 0, bytes.data()};
  constant quotient{result.size(), 77, 0, result.data()};
  const constant two{3, 4, 0, divisor.data()}, one{2, 2, 0, divisor.data()};
  EXPECT_EQ(com__exctnume_intdiv(&dividend, &two, &quotient, nullptr), kExactOk);
  EXPECT_EQ(result[1], 0);
  EXPECT_EQ(result[2], 255);
  EXPECT_EQ(com__exctnume_intdiv(&dividend, &one, &quotient, nullptr), kExactOverflow);
}

TEST(NumericKernel, LongIntegers) {
  CS_NUMERIC value = numeric("0", 19, 0);
  constant record = record_of(value);
  EXPECT_EQ(com__longlongtoexctnume(INT64_MIN, &record), kExactOk);
  EXPECT_EQ(text(value), "-9223372036854775808");
  value = numeric("0", 10, 0);
  record = record_of(value);
  EXPECT_EQ(com__longlongtoexctnume(INT64_MAX, &record), kExactOverflow);
  EXPECT_EQ(com__longtoexctnume(INT32_MIN, &record), kExactOk);
  EXPECT_EQ(text(value), "-2147483648");
}

// --- the matrix, beyond what its own tests sweep

class NumericConversion : public testing::Test {
 protected:
  NumericConversion() { com_conv_init(&context_); }
  ~NumericConversion() override { com_conv_free(&context_); }

  CS_RETCODE convert(CS_INT srctype, const void* source, CS_INT desttype, void* dest,
                     CS_INT precision = 0, CS_INT scale = 0) {
    CS_DATAFMT from{}, to{};
    from.datatype = srctype;
    to.datatype = desttype;
    to.precision = precision;
    to.scale = scale;
    const CS_CONV_FUNC routine =
        desttype == CS_LONG_TYPE ? comn_numtoi8 : com_conv_func(&context_, srctype, desttype);
    return routine(&context_, &from, source, &to, dest, &length_);
  }

  // Ranges are judged before the value is cut, but for CS_LONG on its nearest double.
  template <class T>
  void expect(const char* value, CS_INT type, T expected, CS_RETCODE code = CS_SUCCEED) {
    const CS_NUMERIC source = numeric(value);
    T result{};
    EXPECT_EQ(convert(CS_DECIMAL_TYPE, &source, type, &result), code) << value;
    EXPECT_EQ(std::memcmp(&result, &expected, sizeof result), 0) << value << " to " << type;
    EXPECT_EQ(length_, static_cast<CS_INT>(sizeof(T)));
  }

  CS_CONTEXT context_{};
  CS_INT length_ = -1;
};

constexpr CS_RETCODE kOver = CS_CVT_OVERFLOW;

TEST_F(NumericConversion, ToNumbers) {
  expect<CS_TINYINT>("-0.0", CS_TINYINT_TYPE, 0);
  expect<CS_SMALLINT>("-32768.00000000001", CS_SMALLINT_TYPE, -32768, kOver);
  expect<CS_SMALLINT>("-6.99999999999999999999", CS_SMALLINT_TYPE, -7);
  expect<CS_SMALLINT>("1e40", CS_SMALLINT_TYPE, 32767, kOver);
  expect<CS_INT>("2147483647.00000000000000000001", CS_INT_TYPE, 2147483647);
  expect("9223372036854775807", CS_LONG_TYPE, INT64_MAX);
  expect("-9223372036854775808", CS_LONG_TYPE, INT64_MIN);
  expect("6.99999999999999999999", CS_LONG_TYPE, std::int64_t{6});
  expect("9223372036854775807.5", CS_LONG_TYPE, INT64_MAX, kOver);
  expect("-9223372036854775809", CS_LONG_TYPE, INT64_MIN, kOver);
  expect<CS_BIT>("1e-77", CS_BIT_TYPE, 1);
  expect<CS_BIT>("-0.00", CS_BIT_TYPE, 0);
  expect<CS_REAL>("-1e40", CS_REAL_TYPE, -std::numeric_limits<CS_REAL>::max(), kOver);
  expect("12.34567", CS_MONEY_TYPE, CS_MONEY{0, 123456});
  expect("-1e60", CS_MONEY_TYPE, CS_MONEY{INT32_MIN, 0}, kOver);
  expect("1e60", CS_MONEY4_TYPE, CS_MONEY4{INT32_MAX}, kOver);
  expect("214748.36479", CS_MONEY4_TYPE, CS_MONEY4{INT32_MAX});
}

TEST_F(NumericConversion, NumbersToNumeric) {
  CS_NUMERIC result{};
  const auto expect = [&](CS_INT type, auto value, CS_INT precision, CS_INT scale, CS_RETCODE code,
                          const std::string& printed) {
    SCOPED_TRACE(printed + " at " + std::to_string(precision) + "," + std::to_string(scale));
    std::memset(&result, 0xEE, sizeof result);
    EXPECT_EQ(convert(type, &value, CS_DECIMAL_TYPE, &result, precision, scale), code);
    EXPECT_EQ(length_, 35);
    EXPECT_EQ(text(result), printed);
    const auto magnitude = static_cast<std::size_t>(comn_num_getlen(precision));
    EXPECT_EQ(std::string(result.array + magnitude, std::end(result.array)),
              std::string(sizeof result.array - magnitude, 0))
        << "all 35 bytes are written";
  };
  expect(CS_INT_TYPE, CS_INT{-7}, 5, 2, CS_SUCCEED, "-7.00");
  expect(CS_INT_TYPE, CS_INT{100}, 2, 0, kOver, "0");
  expect(CS_SMALLINT_TYPE, CS_SMALLINT{10}, 3, 2, kOver, "0.00");
  expect(CS_TINYINT_TYPE, CS_TINYINT{200}, 77, 74, CS_SUCCEED, "200." + std::string(74, '0'));
  expect(CS_REAL_TYPE, 0.1f, 20, 18, CS_SUCCEED, "0.100000001490116120");
  expect(CS_FLOAT_TYPE, -2.5, 3, 0, CS_SUCCEED, "-3");
  expect(CS_FLOAT_TYPE, 9.996, 3, 2, kOver, "0.00");
  expect(CS_FLOAT_TYPE, HUGE_VAL, 5, 2, CS_CVT_SYNTAX, "0.00");
}

using NumericDeathTest = NumericConversion;

TEST(LimbsDeathTest, BrokenPreconditionsStop) {
  Magnitude one, two, full, result;
  one.assign(std::uint64_t{1});
  two.assign(std::uint64_t{2});
  full.assign(Limbs(std::array<Limb, Magnitude::kCapacity>{}));
  EXPECT_DEATH(add(full, one, result), "assertion failed");
  EXPECT_DEATH(subtract(one, two, result), "assertion failed");
  EXPECT_DEATH(multiply(one, two, one), "assertion failed");
  EXPECT_DEATH(multiply(full, one, result), "assertion failed");
  EXPECT_DEATH(multiply_add(full, 1, 1), "assertion failed");
  EXPECT_DEATH(divide(one, result, full, two), "assertion failed");
  EXPECT_DEATH(divide(one, two, two, result), "assertion failed");
  EXPECT_DEATH(scale_up(one, CS_MAX_PREC + 1), "assertion failed");
  EXPECT_DEATH(scale_down(one, -1), "assertion failed");
}

TEST_F(NumericDeathTest, BrokenPreconditionsStop) {
  CS_NUMERIC value = numeric("1");
  CS_NUMERIC result{};
  CS_DATAFMT from{}, to{};
  from.datatype = CS_INT_TYPE;
  to.datatype = CS_NUMERIC_TYPE;
  std::array<CS_BYTE, kMaxRecordLength + 1> bytes{};
  const constant long_record{kMaxRecordLength + 1, 77, 0, bytes.data()};
  const constant empty_record{0, 77, 0, bytes.data()};
  EXPECT_DEATH(comn_num_getlen(0), "assertion failed");
  EXPECT_DEATH(comn_num_getlen(78), "assertion failed");
  EXPECT_DEATH(comn_num_getprec(-1), "assertion failed");
  EXPECT_DEATH(comn_num_getprec(34), "assertion failed");
  EXPECT_DEATH(comn_num_addorsub(&value, &value, &result, 2), "assertion failed");
  EXPECT_DEATH(com__exctnume_inc(const_cast<constant*>(&long_record)), "assertion failed");
  EXPECT_DEATH(com__exctnume_needsbyte(&empty_record), "assertion failed");
  EXPECT_DEATH(comn_numadd(nullptr, &value, &result), "Invalid pointer");
  EXPECT_DEATH(comn_numsub(nullptr, &value, &result), "Invalid pointer");
  EXPECT_DEATH(comn_num_addorsub(nullptr, &value, &result, 0), "Invalid pointer");
  EXPECT_DEATH(comn_nummul(&value, nullptr, &result), "Invalid pointer");
  EXPECT_DEATH(comn_numdivide(&value, &value, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_numcmp(&value, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_numtonum(&context_, &from, &value, &to, &result, &length_), "com_num.cpp");
  EXPECT_DEATH(comn_numtonum(&context_, &to, &value, &from, &result, &length_), "com_num.cpp");
}

}  // namespace
