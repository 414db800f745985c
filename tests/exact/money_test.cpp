// Money arithmetic, its odd rules, and its conversions to and from numbers and text, against
// vectors computed elsewhere and at the rules' edges.
#include "comnlib/money.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"
#include "support/two_byte_set.h"

namespace {

constexpr CS_INT kIntMax = INT32_MAX, kIntMin = INT32_MIN;

CS_MONEY wide(std::int64_t units) {
  return {static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
}
CS_MONEY4 narrow(std::int64_t units) {
  return {static_cast<CS_INT>(units)};
}

std::int64_t units(const CS_MONEY& m) {
  return static_cast<std::int64_t>(std::uint64_t{static_cast<CS_UINT>(m.mnyhigh)} << 32 | m.mnylow);
}
std::int64_t units(const CS_MONEY4& m) {
  return m.mny4;
}

using Outcome = std::pair<CS_INT, std::int64_t>;  // a status and the value that came with it

// --- vectors

// An operation under all of its names; the result is written once beside the operands and once over
// the second one.
template <class Record, Record (*record)(std::int64_t)>
struct Arithmetic {
  const char* name;
  std::vector<CS_RETCODE (*)(const Record*, const Record*, Record*)> routines;

  void operator()(std::int64_t left, std::int64_t right, CS_INT status, std::int64_t result) const {
    SCOPED_TRACE(testing::Message() << name << ' ' << left << ' ' << right);
    const Outcome expected(comnlib::exact_code(status), result);
    for (const auto routine : routines) {
      const Record a = record(left);
      Record b = record(right), r = a;
      const CS_RETCODE code = routine(&a, &b, &r);
      EXPECT_EQ(expected, Outcome(code, units(r)));
      const CS_RETCODE over_operand = routine(&a, &b, &b);
      EXPECT_EQ(expected, Outcome(over_operand, units(b)));
    }
  }
};
using Wide = Arithmetic<CS_MONEY, wide>;
using Small = Arithmetic<CS_MONEY4, narrow>;

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
  CS_MONEY m;
  const auto length = static_cast<CS_INT>(exact.size());
  const CS_INT seen = com__mnyfromchar_mb(&m, exact.data(), length, 0, charset);
  EXPECT_EQ(Outcome(status, value), Outcome(seen, seen == 0 ? units(m) : value)) << text;
}

TEST(Money, AgreesWithVectors) {
  const Wide add8{"add8", {comn_mnyadd, com_mnyadd}}, sub8{"sub8", {comn_mnysub, com_mnysub}};
  const Wide mul8{"mul8", {comn_mnymul, com_mnymul}};
  const Wide div8{"div8", {comn_mnydivide, com_mnydivide, comn_mnyxdiv, com_mnyxdiv}};
  const Small add4{"add4", {comn_mny4add, com_mny4add}}, sub4{"sub4", {comn_mny4sub, com_mny4sub}};
  const Small mul4{"mul4", {comn_mny4mul, com_mny4mul}};
  const Small div4{"div4", {comn_mny4divide, com_mny4divide}};
#include "data/money_vectors.inc"
}

// --- the other operations

TEST(Money, ComparesHighHalvesSignedAndLowHalvesUnsigned) {
  const std::int64_t ascending[] = {INT64_MIN, -0x100000001, -0xFFFFFFFF, kIntMin,     -1,       0,
                                    1,         kIntMax,      0x80000000,  0x100000000, INT64_MAX};
  for (const std::int64_t a : ascending) {
    for (const std::int64_t b : ascending) {
      const int order = (a > b) - (a < b);
      const CS_MONEY left = wide(a), right = wide(b);
      const CS_MONEY4 left4 = narrow(a), right4 = narrow(b);
      const bool small = units(left4) == a && units(right4) == b;
      for (const bool older : {false, true}) {
        EXPECT_EQ((older ? com_mnycmp : comn_mnycmp)(&left, &right), order) << a << ' ' << b;
        const CS_INT order4 = (older ? com_mny4cmp : comn_mny4cmp)(&left4, &right4);
        EXPECT_EQ(small ? order : order4, order4) << a << ' ' << b;
      }
    }
  }
}

// An operation on one record `m`, by its current name and its older one; `other` is another record
// of the same value. mnydown returns a remainder, the others the result code of a status.
void change(const char* row, auto record, auto run, std::int64_t from, std::int64_t to,
            CS_INT status) {
  const bool answers = std::string_view(row).starts_with("mnydown");
  const Outcome expected(answers ? status : comnlib::exact_code(status), to);
  for (const bool older : {false, true}) {
    const auto other = record(from);
    auto m = other;
    const CS_INT result = run(&m, other, older);
    EXPECT_EQ(expected, Outcome(result, units(m))) << row << ' ' << from << ", older: " << older;
  }
}

#define CHANGE(record, operation, arguments, ...)                                              \
  change(                                                                                      \
      #operation #arguments, record,                                                           \
      [](auto* m, [[maybe_unused]] const auto& other, bool older) {                            \
        return older ? CS_INT{com_##operation arguments} : CS_INT{comn_##operation arguments}; \
      },                                                                                       \
      __VA_ARGS__)
#define WIDE(...) CHANGE(wide, __VA_ARGS__)
#define SMALL(...) CHANGE(narrow, __VA_ARGS__)

// A copy has to overwrite something.
auto* spoilt(auto* m) {
  std::memset(m, 77, sizeof *m);
  return m;
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
  WIDE(mnydown, (m, 0x10000 + 1000), -123456, -123, 456);
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
  const auto digits_of = [](std::int64_t value, CS_INT dropped, bool older) {
    CS_MONEY m = wide(value);
    std::string text = (older ? com_mnyinit : comn_mnyinit)(&m, dropped) == -1 ? "-" : "";
    for (CS_INT more = 1; more != 0;) {
      CS_CHAR digit = 0;
      more = (older ? com_mnyndigit : comn_mnyndigit)(&m, &digit);
      text += digit;
    }
    return text;  // the last digit first
  };
  for (const bool older : {false, true}) {
    EXPECT_EQ("-5321", digits_of(-12345, 1, older));
    EXPECT_EQ("4321", digits_of(12344, 1, older));
    EXPECT_EQ("-0", digits_of(-12345, 5, older));
    EXPECT_EQ("-1", digits_of(-52345, 5, older));
    EXPECT_EQ("7", digits_of(7, -3, older));
    EXPECT_EQ("-8085774586302733229", digits_of(INT64_MIN, 0, older));
    EXPECT_EQ("-1", digits_of(INT64_MIN, 19, older));
    EXPECT_EQ("-0", digits_of(INT64_MIN, kIntMax, older));
  }
}

// --- numbers

TEST(Money, FromFloatRoundsAUnitAndClamps) {
  const auto from = [](double value) {
    CS_MONEY m;
    const CS_INT status = com__flt8tomny(value, &m);
    return Outcome(status, units(m));
  };
  EXPECT_EQ(Outcome(0, -1), from(-0.00005));
  EXPECT_EQ(Outcome(0, 1), from(0.00015)) << "1.4999999999999998 once multiplied";
  EXPECT_EQ(Outcome(0, 0), from(0.000049999999999999996));
  EXPECT_EQ(Outcome(1, INT64_MAX), from(922337203685477.75));
  EXPECT_EQ(Outcome(0, INT64_MIN), from(-922337203685477.625));
  EXPECT_EQ(Outcome(1, INT64_MIN), from(-922337203685477.75));
  EXPECT_EQ(Outcome(1, 0), from(std::nan("")));
}

// The limits and rules are those of the conversions; small money has a status of its own.
TEST(Money, ToNumbersFromBothSizes) {
  const CS_MONEY beyond = wide(0x80000000), least = wide(-21474836490000), part = wide(-17000);
  const CS_MONEY4 small_part = narrow(-17000);
  CS_MONEY4 small;
  CS_INT whole[3];
  CS_REAL reals[2];
  EXPECT_EQ(-1, com__mnytomny4(&beyond, &small));
  EXPECT_EQ(1, com__mnytoint(&least, &whole[0]));
  EXPECT_EQ(0, com__mnytoint(&part, &whole[1]) + com__mny4toint(&small_part, &whole[2]));
  EXPECT_EQ(0, com__mnytoflt4(&part, &reals[0]) + com__mny4toflt4(&small_part, &reals[1]));
  EXPECT_EQ(std::tuple(kIntMin, -1, -1), std::tuple(whole[0], whole[1], whole[2]));
  EXPECT_EQ(std::pair(-1.7f, -1.7f), std::pair(reals[0], reals[1]));
}

// --- text

TEST(MoneyText, FlagsAndRoom) {
  const auto written = [](std::int64_t value, CS_INT flags, CS_INT room) -> std::string {
    const CS_MONEY m = wide(value);
    std::vector<CS_CHAR> buffer(static_cast<std::size_t>(room) + 1);
    const CS_CHAR* const text = com_cvtmnytochar(&m, buffer.data(), room, flags);
    return text == nullptr ? "does not fit" : text;
  };
  EXPECT_EQ("100.00", written(1000000, 1, 7)) << "two decimals by default";
  EXPECT_EQ("1,234.57", written(12345678, 1, 9));
  EXPECT_EQ("does not fit", written(12345678, 1, 8));
  EXPECT_EQ("-123.46", written(-1234567, 1, 8)) << "no comma after the sign";
  EXPECT_EQ("1234.57", written(12345678, 3, 32)) << "grouping asks for exactly 1";
  EXPECT_EQ("0.0005", written(5, -1, 32)) << "decimals beyond the sign bit";
  EXPECT_EQ("-922,337,203,685,477.5808", written(INT64_MIN, 4 << 8 | 1, 26));
  EXPECT_EQ("does not fit", written(INT64_MIN, 4 << 8 | 1, 25));
  const CS_MONEY4 small{kIntMin};
  CS_CHAR buffer[16];
  EXPECT_STREQ(com_cvtmny4tochar(&small, buffer, sizeof buffer, 4 << 8 | 1), "-214,748.3648");
  EXPECT_STREQ(com__mny4tochar(&small, buffer, sizeof buffer, 4 << 8), "-214748.3648");
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
  EXPECT_DEATH(com_cvtmny4tochar(&m4, nullptr, 8, 0), "Invalid pointer");
  EXPECT_DEATH(com_precmnytochar(&m, text, -1, 0, 2), "assertion failed");
}

}  // namespace
