// Money arithmetic, its odd rules, and its conversions to and from numbers and text, against
// vectors computed elsewhere and against tables of the rules' edges.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"
#include "support/two_byte_set.h"

namespace {

constexpr CS_INT kIntMax = INT32_MAX, kIntMin = INT32_MIN;

CS_MONEY wide(std::int64_t units) {
  return {static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
}

std::int64_t units(const CS_MONEY& m) {
  return static_cast<std::int64_t>(std::uint64_t{static_cast<CS_UINT>(m.mnyhigh)} << 32 | m.mnylow);
}

std::int64_t units(const CS_MONEY4& m) {
  return m.mny4;
}

template <class Record>
Record record(std::int64_t value) {
  if constexpr (std::same_as<Record, CS_MONEY>)
    return wide(value);
  else
    return {static_cast<CS_INT>(value)};
}

// --- vectors

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
  EXPECT_EQ(kOlder(&a, &b, &b), comnlib::exact_code(status)) << row;
  EXPECT_EQ(units(b), expected) << row << " over an operand";
}

void format(std::int64_t value, CS_INT decimals, CS_INT grouped, const char* text) {
  const CS_MONEY m = wide(value);
  CS_CHAR buffer[26];
  EXPECT_STREQ(com_precmnytochar(&m, buffer, sizeof buffer, grouped, decimals), text);
}

// The value is compared only on success.
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
      const int order = (a > b) - (a < b);
      const CS_MONEY left = wide(a), right = wide(b);
      for (const auto compare : {comn_mnycmp, com_mnycmp})
        EXPECT_EQ(compare(&left, &right), order) << a << ' ' << b;
    }
  }
  const CS_MONEY4 least{kIntMin}, largest{kIntMax};
  for (const auto compare : {comn_mny4cmp, com_mny4cmp})
    EXPECT_EQ((std::array{-1, 1, 0}),
              (std::array{compare(&least, &largest), compare(&largest, &least),
                          compare(&least, &least)}));
}

// An operation on one record `m`, by its current name and its older one; `other` is another record
// of the same value. mnydown returns a remainder, the others the result code of a status.
template <class Record>
void change(const char* row, auto run, std::int64_t from, std::int64_t to, CS_INT expected) {
  const Record other = record<Record>(from);
  const bool answers = std::string_view(row).starts_with("mnydown");
  for (const bool older : {false, true}) {
    Record m = other;
    const CS_INT result = run(&m, other, older);
    EXPECT_EQ(result, answers ? expected : comnlib::exact_code(expected)) << row;
    EXPECT_EQ(units(m), to) << row << ' ' << from << (older ? ", older name" : "");
  }
}

#define CHANGE(Record, operation, arguments, ...)                                              \
  change<Record>(                                                                              \
      #operation #arguments,                                                                   \
      []([[maybe_unused]] Record* m, [[maybe_unused]] const Record& other, bool older) {       \
        return older ? CS_INT{com_##operation arguments} : CS_INT{comn_##operation arguments}; \
      },                                                                                       \
      __VA_ARGS__)
#define WIDE(...) CHANGE(CS_MONEY, __VA_ARGS__)
#define SMALL(...) CHANGE(CS_MONEY4, __VA_ARGS__)

// A copy has to overwrite something.
template <class Record>
Record* spoilt(Record* m) {
  return *m = record<Record>(77), m;
}

TEST(Money, OperationsOnOneValue) {
  WIDE(mnyzero, (m), -7, 0, 0);
  WIDE(mnymaxpos, (m), 5, INT64_MAX, 0);
  WIDE(mnymaxneg, (m), 5, INT64_MIN, 0);
  WIDE(mnycopy, (&other, spoilt(m)), -0x123456789, -0x123456789, 0);
  WIDE(mnyminus, (&other, spoilt(m)), -7, 7, 0);
  WIDE(mnyminus, (&other, spoilt(m)), INT64_MIN, INT64_MIN, 1);
  WIDE(mnyinc, (m), 0xFFFFFFFF, 0x100000000, 0);
  WIDE(mnyinc, (m), INT64_MAX, INT64_MIN, 1);
  WIDE(mnydec, (m), 0x100000000, 0xFFFFFFFF, 0);
  WIDE(mnydec, (m), INT64_MIN, INT64_MAX, 1);
  SMALL(mny4zero, (m), 5, 0, 0);
  SMALL(mny4copy, (&other, spoilt(m)), -5, -5, 0);
  SMALL(mny4minus, (&other, spoilt(m)), 5, -5, 0);
  SMALL(mny4minus, (&other, spoilt(m)), kIntMin, kIntMin, 1);
  // The divisor has sixteen bits; the remainder is that of the magnitude.
  WIDE(mnydown, (m, 1000), -123456, -123, 456);
  WIDE(mnydown, (m, 0x10000 + 1000), 123456, 123, 456);
  WIDE(mnydown, (m, 0x10000), 99, 99, 0);
  WIDE(mnydown, (m, 10), INT64_MIN, -922337203685477580, 8);
  WIDE(mnydown, (m, -1), INT64_MAX, 140739635871744, 65535 - 32768);
  // The multiplier is unsigned, and the magnitude stays below bit 63.
  WIDE(mnyscale, (m, 10, 3), -12, -123, 0);
  WIDE(mnyscale, (m, -1, 0), 3, 3 * 0xFFFFFFFFLL, 0);
  WIDE(mnyscale, (m, 0, -5), 123, -5, 0);
  WIDE(mnyscale, (m, 10, 8), -922337203685477580, -922337203685477580, 1);
  WIDE(mnyscale, (m, 10, 7), -922337203685477580, -INT64_MAX, 0);
  WIDE(mnyscale, (m, 1, -3), 10, 7, 0);
  WIDE(mnyscale, (m, 1, -3), 2, 2, 1);
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
    for (const bool older : {false, true}) {
      CS_MONEY m = wide(row.from);
      EXPECT_EQ((older ? com_mnyinit : comn_mnyinit)(&m, row.ndigits), row.sign) << row.from;
      std::string digits;
      CS_CHAR digit = 0;
      CS_INT more = 0;
      do {
        more = (older ? com_mnyndigit : comn_mnyndigit)(&m, &digit);
        digits += digit;
      } while (more != 0);
      EXPECT_EQ(digits, row.reversed) << row.from;
    }
  }
}

// --- numbers

TEST(Money, FromFloatRoundsAUnitAndClamps) {
  const struct {
    double from;
    std::int64_t to;
    CS_INT status;
  } rows[] = {
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

// Small money has a status of its own; an integer is cut before its range is judged.
TEST(Money, Narrows) {
  const struct {
    std::int64_t from;
    CS_INT to, status;
  } rows[] = {
      {kIntMax, kIntMax, 0},      {kIntMin, kIntMin, 0},       {0x80000000, kIntMax, -1},
      {0x100000000, kIntMax, -1}, {-0x100000000, kIntMin, -1},
  };
  for (const auto& row : rows) {
    const CS_MONEY m = wide(row.from);
    CS_MONEY4 small;
    EXPECT_EQ(com__mnytomny4(&m, &small), row.status) << row.from;
    EXPECT_EQ(small.mny4, row.to) << row.from;
  }
  const CS_MONEY least = wide(-21474836489999), less = wide(-21474836490000);
  CS_INT whole = 0;
  EXPECT_EQ(0, com__mnytoint(&least, &whole));
  EXPECT_EQ(kIntMin, whole);
  EXPECT_EQ(1, com__mnytoint(&less, &whole));
  EXPECT_EQ(kIntMin, whole);
}

// A negative value that a half or more is cut from goes down by one where nothing is left of it.
TEST(Money, ToIntegerAndRealFromBothSizes) {
  for (const auto& [from, integer, real] : {std::tuple{19999, 1, 1.9999f},
                                            {-7000, -1, -0.7f},
                                            {-4999, 0, -0.4999f},
                                            {-17000, -1, -1.7f},
                                            {kIntMin, -214748, -214748.3648f}}) {
    const CS_MONEY m = wide(from);
    const CS_MONEY4 small{from};
    CS_INT integers[2];
    CS_REAL reals[2];
    EXPECT_EQ(0, com__mnytoint(&m, &integers[0]) + com__mny4toint(&small, &integers[1]));
    EXPECT_EQ(0, com__mnytoflt4(&m, &reals[0]) + com__mny4toflt4(&small, &reals[1]));
    EXPECT_EQ(std::pair(integer, integer), std::pair(integers[0], integers[1])) << from;
    EXPECT_EQ(std::pair(real, real), std::pair(reals[0], reals[1])) << from;
  }
}

// --- text

TEST(MoneyText, FlagsAndRoom) {
  const struct {
    const char* label;
    std::int64_t value;
    CS_INT flags, room;
    const char* text;  // null: does not fit
  } rows[] = {
      {"two decimals by default", 1000000, 1, 7, "100.00"},
      {"one comma", 12345678, 1, 9, "1,234.57"},
      {"one comma, one short", 12345678, 1, 8, nullptr},
      {"no comma after the sign", -1234567, 1, 8, "-123.46"},
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
  EXPECT_STREQ(com__mny4tochar(&small, buffer, sizeof buffer, 4 << 8), "-214748.3648");
  const CS_MONEY m = wide(-12345);
  EXPECT_STREQ(com_precmnytochar(&m, buffer, sizeof buffer, 3 << 8, -2562), "-1.23");
  EXPECT_STREQ(com__mnytochar(&m, buffer, sizeof buffer, 4 << 8), "-1.2345");
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
  parse("-9223372036854775808", 1);
  parse("9223372036854775808x", 1);
  for (const std::string_view bad :
       {"1,23,456", ",1", "1.2,3", "1.2.3", "+-1", "$$1", "1$", "1 2", ". 5", "\t1", "1e3"})
    parse(bad, 2);
  parse({"1\0", 2}, 2);
  const TwoByteSet set;  // whole characters
  parse("\201- \201E\20112\201.\2015\201 ", 0, -125000, set.attrib());
  for (const std::string_view bad : {"\201E$1", "1\201", "\201", "1\202", "\201x"})
    parse(bad, 2, 0, set.attrib());
}

// --- stops

TEST(MoneyDeathTest, NullPointersAndNegativeRoom) {
  CS_MONEY m{};
  CS_MONEY4 m4{};
  CS_CHAR text[8];
  EXPECT_DEATH(comn_mnyadd(&m, nullptr, &m), "Invalid pointer 0x0, file '.*src/exact/mnyfuncs.cpp");
  EXPECT_DEATH(comn_mnysub(&m, &m, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_mnyndigit(&m, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_mny4cmp(nullptr, &m4), "Invalid pointer");
  EXPECT_DEATH(com_mnydivide(&m, &m, nullptr), "Invalid pointer");
  EXPECT_DEATH(com_cvtmny4tochar(&m4, nullptr, 8, 0), "Invalid pointer");
  EXPECT_DEATH(com_precmnytochar(&m, text, -1, 0, 2), "assertion failed");
}

}  // namespace
