// Money arithmetic, its odd rules, and its conversions to and from numbers and text, against
// vectors computed elsewhere and against tables of the rules' edges.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
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

using Operation8 = CS_INT (*)(const CS_MONEY*, const CS_MONEY*, CS_MONEY*);
using Operation4 = CS_INT (*)(const CS_MONEY4*, const CS_MONEY4*, CS_MONEY4*);

// One operation under both names, on money or on small money.
struct Operation {
  Operation8 wide, older_wide;
  Operation4 small, older_small;
};
constexpr Operation add8{comn_mnyadd, com_mnyadd, nullptr, nullptr};
constexpr Operation sub8{comn_mnysub, com_mnysub, nullptr, nullptr};
constexpr Operation mul8{comn_mnymul, com_mnymul, nullptr, nullptr};
constexpr Operation div8{comn_mnydivide, com_mnydivide, nullptr, nullptr};
constexpr Operation add4{nullptr, nullptr, comn_mny4add, com_mny4add};
constexpr Operation sub4{nullptr, nullptr, comn_mny4sub, com_mny4sub};
constexpr Operation mul4{nullptr, nullptr, comn_mny4mul, com_mny4mul};
constexpr Operation div4{nullptr, nullptr, comn_mny4divide, com_mny4divide};

struct ArithmeticVector {
  const char* name;
  Operation operation;
  std::int64_t a, b;
  CS_INT status;
  std::int64_t expected;
};
struct FormatVector {
  std::int64_t value;
  CS_INT decimals;
  CS_INT grouped;
  const char* text;
};
struct TextVector {
  std::string_view text;
  CS_INT status;
  std::int64_t value = 0;  // looked at on success alone
};

#define FORMAT(...)
#define PARSE(...)
#define ARITHMETIC(operation, ...) {#operation, operation, __VA_ARGS__},
constexpr ArithmeticVector kArithmetic[] = {
#include "data/money_vectors.inc"
};
#undef ARITHMETIC
#undef FORMAT
#define ARITHMETIC(...)
#define FORMAT(...) {__VA_ARGS__},
constexpr FormatVector kFormats[] = {
#include "data/money_vectors.inc"
};
#undef FORMAT
#undef PARSE
#define FORMAT(...)
#define PARSE(...) {__VA_ARGS__},
constexpr TextVector kTexts[] = {
#include "data/money_vectors.inc"
};

// The result is written once beside the operands and once over the second one.
template <class Record>
void check(const ArithmeticVector& row, CS_INT (*current)(const Record*, const Record*, Record*),
           CS_INT (*older)(const Record*, const Record*, Record*), Record a, Record b,
           std::int64_t (*value)(const Record&)) {
  Record r = a;
  EXPECT_EQ(current(&a, &b, &r), comnlib::exact_code(row.status));
  EXPECT_EQ(value(r), row.expected);
  EXPECT_EQ(older(&a, &b, &b), row.status);
  EXPECT_EQ(value(b), row.expected) << "over an operand";
}

TEST(MoneyVectors, Arithmetic) {
  for (const ArithmeticVector& row : kArithmetic) {
    SCOPED_TRACE(testing::Message() << row.name << ' ' << row.a << ' ' << row.b);
    const Operation& operation = row.operation;
    if (operation.wide != nullptr) {
      check<CS_MONEY>(row, operation.wide, operation.older_wide, wide(row.a), wide(row.b), units);
    } else {
      check<CS_MONEY4>(row, operation.small, operation.older_small, {static_cast<CS_INT>(row.a)},
                       {static_cast<CS_INT>(row.b)},
                       [](const CS_MONEY4& m) { return std::int64_t{m.mny4}; });
    }
  }
}

TEST(MoneyVectors, Formatting) {
  for (const FormatVector& row : kFormats) {
    const CS_MONEY m = wide(row.value);
    CS_CHAR buffer[26];
    EXPECT_STREQ(com_precmnytochar(&m, buffer, sizeof buffer, row.grouped, row.decimals), row.text);
  }
}

void check_texts(std::span<const TextVector> rows, const char_attrib* charset) {
  for (const TextVector& row : rows) {
    // The exact size on the heap: a sanitizer sees every byte read beyond.
    const std::vector<CS_CHAR> text(row.text.begin(), row.text.end());
    CS_MONEY m = wide(99);
    const auto length = static_cast<CS_INT>(text.size());
    EXPECT_EQ(com__mnyfromchar_mb(&m, text.data(), length, 0, charset), row.status) << row.text;
    if (row.status == 0) {
      EXPECT_EQ(units(m), row.value) << row.text;
    }
  }
}

TEST(MoneyVectors, Reading) {
  check_texts(kTexts, nullptr);
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
  const struct {
    const char* label;
    CS_RETCODE (*change)(CS_MONEY*);
    std::int64_t from, to;
    CS_RETCODE code;
  } rows[] = {
      {"up wraps", comn_mnyinc, INT64_MAX, INT64_MIN, CS_CVT_OVERFLOW},
      {"down over a half", comn_mnydec, 0x100000000, 0xFFFFFFFF, CS_SUCCEED},
      {"down wraps", comn_mnydec, INT64_MIN, INT64_MAX, CS_CVT_OVERFLOW},
      {"minus", [](CS_MONEY* m) { return comn_mnyminus(m, m); }, -7, 7, CS_SUCCEED},
      {"minus smallest", [](CS_MONEY* m) { return comn_mnyminus(m, m); }, INT64_MIN, INT64_MIN,
       CS_CVT_OVERFLOW},
  };
  for (const auto& row : rows) {
    CS_MONEY m = wide(row.from);
    EXPECT_EQ(row.change(&m), row.code) << row.label;
    EXPECT_EQ(units(m), row.to) << row.label;
  }
  const CS_MONEY4 smallest{kIntMin};
  CS_MONEY4 negated;
  EXPECT_EQ(comn_mny4minus(&smallest, &negated), CS_CVT_OVERFLOW);
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
      {99, 0x10000, 99, 0},
      {INT64_MIN, 1, INT64_MIN, 0},
      {INT64_MIN, 10, -922337203685477580, 8},
      {INT64_MAX, -1, 140739635871744, 65535 - 32768},
      {-9, 10, 0, 9},
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
      {INT64_MAX, 0, -5, -5, 0},
      {3, -1, 0, 3 * 0xFFFFFFFFLL, 0},
      {INT64_MAX, 1, 1, INT64_MAX, 1},
      {INT64_MIN, 1, 0, INT64_MIN, 1},
      {-922337203685477580, 10, 8, -922337203685477580, 1},
      {-922337203685477580, 10, 7, -INT64_MAX, 0},
      {INT64_MAX, 4, 0, INT64_MAX, 1},
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
  const struct {
    CS_INT n;
    int shifts;
  } rows[] = {{0, 0}, {1, 1}, {2, 2}, {3, 2}, {4, 3}, {7, 3}, {8, 4}, {kIntMax, 31}, {-1, 32}};
  for (const auto& row : rows) {
    CS_MONEY m = wide(-2);
    com__mnyshift(&m, row.n);
    EXPECT_EQ(static_cast<std::uint64_t>(units(m)), 0xFFFFFFFFFFFFFFFEU >> row.shifts) << row.n;
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

TEST(Money, TheOtherDivisionIsTheSame) {
  const CS_MONEY a = wide(-10000);
  const CS_MONEY b = wide(30000);
  const CS_MONEY zero = wide(0);
  CS_MONEY r;
  EXPECT_EQ(comn_mnyxdiv(&a, &b, &r), CS_SUCCEED);
  EXPECT_EQ(units(r), -3333);
  EXPECT_EQ(com_mnyxdiv(&a, &zero, &r), 3);
  EXPECT_EQ(units(r), 0);
}

// --- numbers

TEST(Money, ToIntegerIsCutButForMinusOneHalf) {
  const struct {
    std::int64_t from;
    CS_INT to;
    CS_INT status;
  } rows[] = {
      {-4999, 0, 0},
      {-5000, -1, 0},
      {-9999, -1, 0},
      {-15000, -1, 0},
      {-19999, -1, 0},
      {21474836479999, kIntMax, 0},
      {21474836480000, kIntMax, 1},
      {-21474836489999, kIntMin, 0},
      {-21474836490000, kIntMin, 1},
  };
  for (const auto& row : rows) {
    const CS_MONEY m = wide(row.from);
    CS_INT value = 99;
    EXPECT_EQ(com__mnytoint(&m, &value), row.status) << row.from;
    EXPECT_EQ(value, row.to) << row.from;
  }
}

TEST(Money, FromFloatRoundsAUnitAndClamps) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const struct {
    double from;
    std::int64_t to;
    CS_INT status;
  } rows[] = {
      {0.00005, 1, 0},
      {-0.00005, -1, 0},
      {0.00025, 3, 0},
      {0.00015, 1, 0},  // 1.4999999999999998 once multiplied
      {0.000049999999999999996, 0, 0},
      {922337203685477.5, 9223372036854774784, 0},
      {922337203685477.75, INT64_MAX, 1},
      {-922337203685477.625, INT64_MIN, 0},
      {-922337203685477.75, INT64_MIN, 1},
      {-kInfinity, INT64_MIN, 1},
      {std::nan(""), 0, 1},
  };
  for (const auto& row : rows) {
    CS_MONEY m;
    EXPECT_EQ(com__flt8tomny(row.from, &m), row.status) << row.from;
    EXPECT_EQ(units(m), row.to) << row.from;
  }
}

TEST(Money, SmallMoneyNarrowsWithAStatusOfItsOwn) {
  const struct {
    std::int64_t from;
    CS_INT to;
    CS_INT status;
  } rows[] = {
      {kIntMax, kIntMax, 0},        {kIntMin, kIntMin, 0},      {0x80000000, kIntMax, -1},
      {-0x80000001LL, kIntMin, -1}, {0x100000000, kIntMax, -1}, {-0x100000000, kIntMin, -1},
  };
  for (const auto& row : rows) {
    const CS_MONEY m = wide(row.from);
    CS_MONEY4 small;
    EXPECT_EQ(com__mnytomny4(&m, &small), row.status) << row.from;
    EXPECT_EQ(small.mny4, row.to) << row.from;
  }
  CS_MONEY4 small;
  EXPECT_EQ(com__inttomny4(214748, &small), 0);
  EXPECT_EQ(com__inttomny4(214749, &small), 1);
  EXPECT_EQ(small.mny4, kIntMax);
  EXPECT_EQ(com__flt8tomny4(-214748.3648, &small), 0);
  EXPECT_EQ(small.mny4, kIntMin);
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
      {"room for the NUL too", 1234567, 0, 6, nullptr},
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
  constexpr TextVector rows[] = {
      {"$1,234.5", 0, 12345000},
      {" - $ 5 ", 0, -50000},
      {"$-5", 0, -50000},
      {"\xA3"
       "7\t\n",
       0, 70000},
      {"", 0, 0},
      {" +$", 0, 0},
      {".", 0, 0},
      {"-.5", 0, -5000},
      {"1,", 0, 10000},
      {"1,23", 0, 1230000},
      {"1234567,891,2", 0, 12345678912 * 10000},
      {"1,234,.5", 0, 12345000},
      {"1.00005", 0, 10001},
      {"1,23,456", 2},
      {",1", 2},
      {"1.2,3", 2},
      {"1.2.3", 2},
      {"+-1", 2},
      {"$$1", 2},
      {"1$", 2},
      {"1 2", 2},
      {". 5", 2},
      {"\t1", 2},
      {"1e3", 2},
      {std::string_view("1\0", 2), 2},
      {"-922337203685477.58075", 0, INT64_MIN},
      {"-922337203685477.580809", 0, INT64_MIN},
      {"-922337203685477.58081", 1},
      {"922337203685477.58075", 1},
      {"-9223372036854775808", 1},
      {"9223372036854775808x", 1},
  };
  check_texts(rows, nullptr);
}

TEST(MoneyText, ReadsWholeCharacters) {
  const TwoByteSet set;
  constexpr TextVector rows[] = {
      {"\x81- \x81"
       "E\x81"
       "12\x81.\x81"
       "5\x81 ",
       0, -125000},
      {"\x81"
       "E$1",
       2},
      {"1\x81", 2},
      {"\x81", 2},
      {"1\x82", 2},
      {"\x82", 2},
      {"\x81x", 2},
  };
  check_texts(rows, set.attrib());
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
