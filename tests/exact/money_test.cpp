// Money arithmetic, its odd rules, and its conversions to and from numbers and text, against
// vectors computed elsewhere and against tables of the rules' edges.
#include <gtest/gtest.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"
#include "support/two_byte_set.h"

namespace {

constexpr CS_INT kIntMax = INT32_MAX;
constexpr CS_INT kIntMin = INT32_MIN;

CS_MONEY wide(std::int64_t units) {
  return {static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
}

std::int64_t units(const CS_MONEY& m) {
  return static_cast<std::int64_t>(std::uint64_t{static_cast<CS_UINT>(m.mnyhigh)} << 32 | m.mnylow);
}

// --- vectors

template <class Record>
Record record(std::int64_t value) {
  if constexpr (std::same_as<Record, CS_MONEY>)
    return wide(value);
  else
    return {static_cast<CS_INT>(value)};
}

std::int64_t units(const CS_MONEY4& m) {
  return m.mny4;
}

// One operation under both names; the result is written once beside the operands and once over the
// second one.
template <class Record, auto kCurrent, auto kOlder>
void arithmetic(const char* row, std::int64_t left, std::int64_t right, CS_INT status,
                std::int64_t expected) {
  const auto a = record<Record>(left);
  auto b = record<Record>(right);
  auto r = a;
  EXPECT_EQ(kCurrent(&a, &b, &r), comnlib::exact_code(status)) << row;
  EXPECT_EQ(units(r), expected) << row;
  EXPECT_EQ(kOlder(&a, &b, &b), status) << row;
  EXPECT_EQ(units(b), expected) << row << " over an operand";
}

void format(std::int64_t value, CS_INT decimals, CS_INT grouped, const char* text) {
  const CS_MONEY m = wide(value);
  CS_CHAR buffer[26];
  EXPECT_STREQ(com_precmnytochar(&m, buffer, sizeof buffer, grouped, decimals), text);
}

// The value is looked at on success alone.
void parse(std::string_view text, CS_INT status, std::int64_t value = 0,
           const char_attrib* charset = nullptr) {
  // The exact size on the heap: a sanitizer sees every byte read beyond.
  const std::vector<CS_CHAR> exact(text.begin(), text.end());
  CS_MONEY m = wide(99);
  const auto length = static_cast<CS_INT>(exact.size());
  EXPECT_EQ(com__mnyfromchar_mb(&m, exact.data(), length, 0, charset), status) << text;
  if (status == 0) {
    EXPECT_EQ(units(m), value) << text;
  }
}

#define ARITHMETIC(operation, a, b, ...) operation(#operation " " #a " " #b, a, b, __VA_ARGS__);
#define FORMAT(...) format(__VA_ARGS__);
#define PARSE(...) parse(__VA_ARGS__);
TEST(Money, AgreesWithVectors) {
  constexpr auto add8 = arithmetic<CS_MONEY, comn_mnyadd, com_mnyadd>;
  constexpr auto sub8 = arithmetic<CS_MONEY, comn_mnysub, com_mnysub>;
  constexpr auto mul8 = arithmetic<CS_MONEY, comn_mnymul, com_mnymul>;
  const auto div8 = [](auto... row) {
    arithmetic<CS_MONEY, comn_mnydivide, com_mnydivide>(row...);
    arithmetic<CS_MONEY, comn_mnyxdiv, com_mnyxdiv>(row...);
  };
  constexpr auto add4 = arithmetic<CS_MONEY4, comn_mny4add, com_mny4add>;
  constexpr auto sub4 = arithmetic<CS_MONEY4, comn_mny4sub, com_mny4sub>;
  constexpr auto mul4 = arithmetic<CS_MONEY4, comn_mny4mul, com_mny4mul>;
  constexpr auto div4 = arithmetic<CS_MONEY4, comn_mny4divide, com_mny4divide>;
#include "data/money_vectors.inc"
}

// --- the other operations

TEST(Money, ComparesHighHalvesSignedAndLowHalvesUnsigned) {
  const std::int64_t ascending[] = {INT64_MIN, -0x100000001, -0xFFFFFFFF, -1,       0,
                                    1,         0x80000000,   0x100000000, INT64_MAX};
  for (const std::int64_t a : ascending) {
    for (const std::int64_t b : ascending) {
      const CS_MONEY left = wide(a);
      const CS_MONEY right = wide(b);
      EXPECT_EQ(comn_mnycmp(&left, &right), (a > b) - (a < b)) << a << ' ' << b;
    }
  }
  CS_MONEY least;
  CS_MONEY most;
  EXPECT_EQ(comn_mnymaxneg(&least), CS_SUCCEED);
  EXPECT_EQ(com_mnymaxpos(&most), 0);
  EXPECT_EQ(least.mnyhigh, kIntMin);
  EXPECT_EQ(units(most), INT64_MAX);
  const CS_MONEY4 small{-1};
  const CS_MONEY4 zero{0};
  EXPECT_EQ(comn_mny4cmp(&small, &zero), -1);
}

TEST(Money, OneUnitAndTheSignOverflowWithoutZeroing) {
  const auto minus = [](CS_MONEY* m) { return comn_mnyminus(m, m); };
  const struct {
    const char* label;
    CS_RETCODE (*change)(CS_MONEY*);
    std::int64_t from, to;
    CS_RETCODE code;
  } rows[] = {
      {"up wraps", comn_mnyinc, INT64_MAX, INT64_MIN, CS_CVT_OVERFLOW},
      {"down over a half", comn_mnydec, 0x100000000, 0xFFFFFFFF, CS_SUCCEED},
      {"down wraps", comn_mnydec, INT64_MIN, INT64_MAX, CS_CVT_OVERFLOW},
      {"minus", minus, -7, 7, CS_SUCCEED},
      {"minus smallest", minus, INT64_MIN, INT64_MIN, CS_CVT_OVERFLOW},
  };
  for (const auto& row : rows) {
    CS_MONEY m = wide(row.from);
    EXPECT_EQ(row.change(&m), row.code) << row.label;
    EXPECT_EQ(units(m), row.to) << row.label;
  }
  CS_MONEY4 smallest{kIntMin};
  EXPECT_EQ(comn_mny4minus(&smallest, &smallest), CS_CVT_OVERFLOW);
}

TEST(Money, DownTakesSixteenBitsOfTheDivisor) {
  const struct {
    std::int64_t from;
    CS_INT divisor;
    std::int64_t to;
    CS_INT remainder;
  } rows[] = {
      {-123456, 1000, -123, 456},
      {123456, 0x10000 + 1000, 123, 456},
      {99, 0, 99, 0},
      {INT64_MIN, 10, -922337203685477580, 8},
      {INT64_MAX, -1, 140739635871744, 65535 - 32768},
  };
  for (const auto& row : rows) {
    CS_MONEY m = wide(row.from);
    EXPECT_EQ(comn_mnydown(&m, row.divisor), row.remainder) << row.from << '/' << row.divisor;
    EXPECT_EQ(units(m), row.to) << row.from << '/' << row.divisor;
  }
}

TEST(Money, ScaleWorksOnTheMagnitude) {
  const struct {
    std::int64_t from;
    CS_INT multiplier, addend;
    std::int64_t to;
    CS_INT status;
  } rows[] = {
      {-12, 10, 3, -123, 0},
      {3, -1, 0, 3 * 0xFFFFFFFFLL, 0},
      {INT64_MAX, 1, 1, INT64_MAX, 1},
      {-922337203685477580, 10, 8, -922337203685477580, 1},
      {-922337203685477580, 10, 7, -INT64_MAX, 0},
      {10, 1, -3, 7, 0},
      {2, 1, -3, 2, 1},
  };
  for (const auto& row : rows) {
    CS_MONEY m = wide(row.from);
    EXPECT_EQ(com_mnyscale(&m, row.multiplier, row.addend), row.status) << row.from;
    EXPECT_EQ(units(m), row.to) << row.from;
  }
}

TEST(Money, ShiftsOncePerSignificantBitWithoutTheSign) {
  for (const auto& [n, shifts] :
       {std::pair{0, 0}, {1, 1}, {3, 2}, {4, 3}, {kIntMax, 31}, {-1, 32}}) {
    CS_MONEY m = wide(-2);
    com__mnyshift(&m, n);
    EXPECT_EQ(static_cast<std::uint64_t>(units(m)), 0xFFFFFFFFFFFFFFFEU >> shifts) << n;
  }
}

TEST(Money, DigitsComeFromTheRoundedMagnitude) {
  const struct {
    std::int64_t from;
    CS_INT ndigits;
    CS_INT sign;
    const char* reversed;
  } rows[] = {
      {-12345, 1, -1, "5321"},  {12344, 1, 0, "4321"},
      {-12345, 5, -1, "0"},     {-52345, 5, -1, "1"},
      {7, -3, 0, "7"},          {INT64_MIN, 0, -1, "8085774586302733229"},
      {INT64_MIN, 19, -1, "1"}, {INT64_MIN, kIntMax, -1, "0"},
  };
  for (const auto& row : rows) {
    CS_MONEY m = wide(row.from);
    EXPECT_EQ(comn_mnyinit(&m, row.ndigits), row.sign) << row.from;
    std::string digits;
    CS_CHAR digit = 0;
    CS_INT more = 0;
    do {
      more = comn_mnyndigit(&m, &digit);
      digits += digit;
    } while (more != 0);
    EXPECT_EQ(digits, row.reversed) << row.from;
  }
}

// --- numbers

TEST(Money, FromFloatRoundsAUnitAndClamps) {
  const struct {
    double from;
    std::int64_t to;
    CS_INT status;
  } rows[] = {
      {0.00005, 1, 0},
      {-0.00005, -1, 0},
      {0.00015, 1, 0},  // 1.4999999999999998 once multiplied
      {0.000049999999999999996, 0, 0},
      {922337203685477.75, INT64_MAX, 1},
      {-922337203685477.625, INT64_MIN, 0},
      {-922337203685477.75, INT64_MIN, 1},
      {std::nan(""), 0, 1},
  };
  for (const auto& row : rows) {
    CS_MONEY m;
    EXPECT_EQ(com__flt8tomny(row.from, &m), row.status) << row.from;
    EXPECT_EQ(units(m), row.to) << row.from;
  }
}

// To an integer an amount is cut, but for what makes minus one; small money has a status of its
// own.
TEST(Money, Narrows) {
  const auto to_integer = [](const CS_MONEY* m, CS_INT* value) { return com__mnytoint(m, value); };
  const auto to_small = [](const CS_MONEY* m, CS_INT* value) {
    CS_MONEY4 small;
    const CS_INT status = com__mnytomny4(m, &small);
    *value = small.mny4;
    return status;
  };
  const struct {
    CS_INT (*narrow)(const CS_MONEY*, CS_INT*);
    std::int64_t from;
    CS_INT to, status;
  } rows[] = {
      {to_integer, -4999, 0, 0},
      {to_integer, -5000, -1, 0},
      {to_integer, -19999, -1, 0},
      {to_integer, 21474836479999, kIntMax, 0},
      {to_integer, 21474836480000, kIntMax, 1},
      {to_integer, -21474836489999, kIntMin, 0},
      {to_integer, -21474836490000, kIntMin, 1},
      {to_small, kIntMax, kIntMax, 0},
      {to_small, kIntMin, kIntMin, 0},
      {to_small, 0x80000000, kIntMax, -1},
      {to_small, 0x100000000, kIntMax, -1},
      {to_small, -0x100000000, kIntMin, -1},
  };
  for (const auto& row : rows) {
    const CS_MONEY m = wide(row.from);
    CS_INT value = 99;
    EXPECT_EQ(row.narrow(&m, &value), row.status) << row.from;
    EXPECT_EQ(value, row.to) << row.from;
  }
  CS_MONEY4 small;
  EXPECT_EQ(com__inttomny4(214749, &small), 1);
  EXPECT_EQ(small.mny4, kIntMax);
  EXPECT_EQ(com__flt8tomny4(-214748.3648, &small), 0);
  EXPECT_EQ(com__flt4tomny4(-1e30F, &small), 1);
  EXPECT_EQ(small.mny4, kIntMin);
  EXPECT_EQ(com__mny4fromchar_mb(&small, "214748.36475", 12, 0, nullptr), 1);
}

// --- text

TEST(MoneyText, FlagsAndRoom) {
  const struct {
    const char* label;
    std::int64_t value;
    CS_INT flags, room;
    const char* text;  // null: does not fit
  } rows[] = {
      {"two decimals by default", 12345678951, 1, 32, "1,234,567.90"},
      {"no comma in front", 1234567, 1, 7, "123.46"},
      {"nor behind the sign", -1234567, 1, 8, "-123.46"},
      {"kept sign", -49, 2 << 8, 6, "-0.00"},
      {"grouping asks for exactly 1", 12345678, 3, 32, "1234.57"},
      {"decimals beyond the sign bit", 5, -1, 32, "0.0005"},
      {"longest", INT64_MIN, 4 << 8 | 1, 26, "-922,337,203,685,477.5808"},
      {"longest, one short", INT64_MIN, 4 << 8 | 1, 25, nullptr},
  };
  for (const auto& row : rows) {
    const CS_MONEY m = wide(row.value);
    std::vector<CS_CHAR> buffer(static_cast<std::size_t>(row.room) + 1);
    EXPECT_STREQ(com_cvtmnytochar(&m, buffer.data(), row.room, row.flags), row.text) << row.label;
  }
  const CS_MONEY4 small{kIntMin};
  CS_CHAR buffer[16];
  EXPECT_STREQ(com_cvtmny4tochar(&small, buffer, sizeof buffer, 4 << 8 | 1), "-214,748.3648");
  const CS_MONEY m = wide(-12345);
  EXPECT_STREQ(com_precmnytochar(&m, buffer, sizeof buffer, 3 << 8, -2562), "-1.23");
}

TEST(MoneyText, Reads) {
  parse("$1,234.5", 0, 12345000);
  parse(" - $ 5 ", 0, -50000);
  parse("$-5", 0, -50000);
  parse("\2437\t\n", 0, 70000);
  for (const std::string_view zero : {"", " +$", "."}) parse(zero, 0, 0);
  parse("1,", 0, 10000);
  parse("1234567,891,2", 0, 12345678912 * 10000);
  parse("1,234,.5", 0, 12345000);
  parse("-922337203685477.580809", 0, INT64_MIN);
  parse("-9223372036854775808", 1);
  parse("9223372036854775808x", 1);
  for (const std::string_view bad :
       {"1,23,456", ",1", "1.2,3", "1.2.3", "+-1", "$$1", "1$", "1 2", ". 5", "\t1", "1e3"})
    parse(bad, 2);
  parse({"1\0", 2}, 2);
}

TEST(MoneyText, ReadsWholeCharacters) {
  const TwoByteSet set;
  parse("\201- \201E\20112\201.\2015\201 ", 0, -125000, set.attrib());
  for (const std::string_view bad : {"\201E$1", "1\201", "\201", "1\202", "\201x"})
    parse(bad, 2, 0, set.attrib());
}

// --- stops

TEST(MoneyDeathTest, NullPointersAndNegativeRoom) {
  CS_MONEY m{};
  CS_MONEY4 m4{};
  CS_CHAR text[8];
  EXPECT_DEATH(comn_mnyadd(&m, nullptr, &m), "Invalid pointer 0x0, file 'generic/src/exact/mnyf");
  EXPECT_DEATH(comn_mnyndigit(&m, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_mny4cmp(nullptr, &m4), "Invalid pointer");
  EXPECT_DEATH(com_mnydivide(&m, &m, nullptr), "Invalid pointer");
  EXPECT_DEATH(com_cvtmny4tochar(&m4, nullptr, 8, 0), "Invalid pointer");
  EXPECT_DEATH(com_precmnytochar(&m, text, -1, 0, 2), "assertion failed");
}

}  // namespace
