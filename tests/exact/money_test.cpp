// Money arithmetic, its odd rules, and its conversions to and from numbers and text, against
// vectors computed elsewhere and at the rules' edges.
#include "comnlib/money.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"
#include "support/table.h"
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

// --- tables: arithmetic and other operations under all of their names, and text

template <class Record>
struct Call {
  const Record *left, *right;
  Record* result;  // holds the left operand at first
  CS_INT argument, more;
};

template <class Record>
using Operations = std::map<std::string, std::vector<CS_INT (*)(const Call<Record>&)>>;

// Where the result of an operation is written over its right operand.
auto* over_right(const auto& c) {
  *c.result = *c.right;
  return c.result;
}

// A copy has to overwrite something.
auto* spoilt(const auto& c) {
  std::memset(c.result, 77, sizeof *c.result);
  return c.result;
}

#define NAMED(name, ...) [](const auto& c) -> CS_INT { return name(__VA_ARGS__); }
#define BOTH(name, ...) NAMED(comn_##name, __VA_ARGS__), NAMED(com_##name, __VA_ARGS__)
#define ARITHMETIC(name) \
  BOTH(name, c.left, c.right, c.result), BOTH(name, c.left, over_right(c), c.result)

const Operations<CS_MONEY> kWide = {
    {"add8", {ARITHMETIC(mnyadd)}},
    {"sub8", {ARITHMETIC(mnysub)}},
    {"mul8", {ARITHMETIC(mnymul)}},
    {"div8", {ARITHMETIC(mnydivide), ARITHMETIC(mnyxdiv)}},
    {"zero8", {BOTH(mnyzero, c.result)}},
    {"maxpos8", {BOTH(mnymaxpos, c.result)}},
    {"maxneg8", {BOTH(mnymaxneg, c.result)}},
    {"copy8", {BOTH(mnycopy, c.left, spoilt(c))}},
    {"minus8", {BOTH(mnyminus, c.left, spoilt(c))}},
    {"inc8", {BOTH(mnyinc, c.result)}},
    {"dec8", {BOTH(mnydec, c.result)}},
    {"down8", {BOTH(mnydown, c.result, c.argument)}},
    {"scale8", {BOTH(mnyscale, c.result, c.argument, c.more)}},
};
const Operations<CS_MONEY4> kSmall = {
    {"add4", {ARITHMETIC(mny4add)}},
    {"sub4", {ARITHMETIC(mny4sub)}},
    {"mul4", {ARITHMETIC(mny4mul)}},
    {"div4", {ARITHMETIC(mny4divide)}},
    {"zero4", {BOTH(mny4zero, c.result)}},
    {"copy4", {BOTH(mny4copy, c.left, spoilt(c))}},
    {"minus4", {BOTH(mny4minus, c.left, spoilt(c))}},
};

// The result code of each status.
constexpr CS_RETCODE kCodes[] = {CS_SUCCEED, CS_CVT_OVERFLOW, CS_CVT_SYNTAX, CS_CVT_DIVZERO};

// "operation, value, other operand or arguments, status, result". mnydown returns a remainder, the
// others the result code of a status.
template <class Record>
void check_operation(const Operations<Record>& operations, Record (*record)(std::int64_t),
                     const table::Fields& line) {
  const int status = table::number(line[3]);
  const Outcome expected(line[0] == "down8" ? status : kCodes[status], std::stoll(line[4]));
  const table::Fields arguments = table::split(line[2], ',');
  for (const auto routine : operations.at(line[0])) {
    const Record left = record(std::stoll(line[1])), right = record(std::atoll(line[2].c_str()));
    Record result = left;
    const CS_INT code =
        routine({&left, &right, &result, table::number(arguments[0]), table::number(arguments[1])});
    EXPECT_EQ(expected, Outcome(code, units(result)));
  }
}

std::string text_of(const CS_CHAR* text) {
  return text == nullptr ? "does not fit" : text;
}

// "text, status, value", which is compared only on success.
void check_parsed(const table::Fields& line, const char_attrib* charset) {
  // The exact size on the heap: a sanitizer sees every byte read beyond.
  const std::string text = table::text_of(line[1]);
  const std::vector<CS_CHAR> exact(text.begin(), text.end());
  CS_MONEY m;
  const CS_INT status =
      com__mnyfromchar_mb(&m, exact.data(), static_cast<CS_INT>(exact.size()), 0, charset);
  const std::int64_t value = std::stoll(line[3]);
  EXPECT_EQ(Outcome(table::number(line[2]), value),
            Outcome(status, status == 0 ? units(m) : value));
}

// The last digit first.
std::string digits_of(CS_MONEY m, CS_INT dropped, bool older) {
  std::string text = (older ? com_mnyinit : comn_mnyinit)(&m, dropped) == -1 ? "-" : "";
  for (CS_INT more = 1; more != 0;) {
    CS_CHAR digit = 0;
    more = (older ? com_mnyndigit : comn_mnyndigit)(&m, &digit);
    text += digit;
  }
  return text;
}

void check_line(const table::Fields& line) {
  static const TwoByteSet two_byte_set;
  if (kWide.contains(line[0])) return check_operation(kWide, wide, line);
  if (kSmall.contains(line[0])) return check_operation(kSmall, narrow, line);
  if (line[0] == "parse") return check_parsed(line, nullptr);
  if (line[0] == "parse_two_bytes") return check_parsed(line, two_byte_set.attrib());
  const CS_MONEY m = wide(std::stoll(line[1]));
  const CS_INT first = table::number(line[2]), second = table::number(line[3]);
  if (line[0] == "digits") {
    EXPECT_EQ(line[3], digits_of(m, first, false));
    EXPECT_EQ(line[3], digits_of(m, first, true));
  } else if (line[0] == "format") {
    CS_CHAR buffer[26];
    EXPECT_EQ(line[4], com_precmnytochar(&m, buffer, sizeof buffer, second, first));
  } else {
    ASSERT_EQ("write", line[0]);
    std::vector<CS_CHAR> buffer(static_cast<std::size_t>(second) + 1);
    EXPECT_EQ(line[4], text_of(com_cvtmnytochar(&m, buffer.data(), second, first)));
  }
}

TEST(Money, AgreesWithVectors) {
  table::for_each_line("exact/data/money_vectors.tsv", check_line);
  table::for_each_line("exact/data/money_cases.txt", check_line);
}

// --- what no line of the tables says

TEST(Money, ComparesHighHalvesSignedAndLowHalvesUnsigned) {
  const std::int64_t ascending[] = {INT64_MIN, -0x100000001, -0xFFFFFFFF, kIntMin,     -1,       0,
                                    1,         kIntMax,      0x80000000,  0x100000000, INT64_MAX};
  for (const std::int64_t a : ascending) {
    for (const std::int64_t b : ascending) {
      const int order = (a > b) - (a < b);
      const CS_MONEY left = wide(a), right = wide(b);
      const CS_MONEY4 left4 = narrow(a), right4 = narrow(b);
      EXPECT_EQ(std::pair(order, order),
                std::pair(comn_mnycmp(&left, &right), com_mnycmp(&left, &right)))
          << a << ' ' << b;
      if (units(left4) != a || units(right4) != b) continue;
      EXPECT_EQ(std::pair(order, order),
                std::pair(comn_mny4cmp(&left4, &right4), com_mny4cmp(&left4, &right4)))
          << a << ' ' << b;
    }
  }
}

TEST(Money, ShiftsOnceForEachBit) {
  for (const auto& [n, shifts] :
       {std::pair{0, 0}, {1, 1}, {3, 2}, {4, 3}, {kIntMax, 31}, {-1, 32}}) {
    CS_MONEY m = wide(-2);
    com__mnyshift(&m, n);
    EXPECT_EQ(static_cast<std::uint64_t>(units(m)), 0xFFFFFFFFFFFFFFFEU >> shifts) << n;
  }
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

TEST(MoneyText, OfTheSmallSizeAndWithFewDecimals) {
  const CS_MONEY4 small{kIntMin};
  CS_CHAR buffer[16];
  EXPECT_STREQ(com_cvtmny4tochar(&small, buffer, sizeof buffer, 4 << 8 | 1), "-214,748.3648");
  EXPECT_STREQ(com__mny4tochar(&small, buffer, sizeof buffer, 4 << 8), "-214748.3648");
  const CS_MONEY m = wide(-12345);
  EXPECT_STREQ(com_precmnytochar(&m, buffer, sizeof buffer, 3 << 8, -2562), "-1.23");
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
