// The six number families against wider arithmetic and, for text, the C library's printf.
#include <bit>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <utility>

#include "conv/conversion.h"

namespace {

using namespace conversion;

constexpr CS_INT kMin = INT_MIN;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

template <class T>
T from_bits(auto bits) {
  return std::bit_cast<T>(bits);
}

std::vector<int64_t> whole_numbers() {
  std::vector<int64_t> all;
  for (const int64_t edge : {int64_t{0}, int64_t{10}, int64_t{100}, int64_t{127}, int64_t{255},
                             int64_t{256}, int64_t{9999}, int64_t{32767}, int64_t{40000},
                             int64_t{65536}, int64_t{16777216}, int64_t{INT_MAX}}) {
    for (int64_t value = edge - 2; value <= edge + 2; ++value) {
      all.push_back(value);
      all.push_back(-value);
    }
  }
  return all;
}

template <std::integral T>
std::vector<T> samples() {
  std::vector<T> all;
  for (const int64_t value : whole_numbers())
    if (std::in_range<T>(value)) all.push_back(static_cast<T>(value));
  std::mt19937 random(1);
  for (int n = 0; n < 2000; ++n) all.push_back(static_cast<T>(random() >> random() % 31));
  return all;
}

template <std::floating_point T>
std::vector<T> samples() {
  using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
  std::vector<T> all = {T(-0.0),
                        T(0.1),
                        T(0.25),
                        T(1) / 3,
                        T(1e16),
                        T(1e17),
                        T(1e-5),
                        T(1e20),
                        T(kInfinity),
                        T(-kInfinity),
                        T(kNan),
                        -T(kNan),
                        std::numeric_limits<T>::max(),
                        std::numeric_limits<T>::lowest(),
                        std::numeric_limits<T>::denorm_min(),
                        -std::numeric_limits<T>::denorm_min(),
                        T(FLT_MAX)};
  for (const int64_t value : whole_numbers()) {
    const T exact = static_cast<T>(value);
    for (const T near : {exact, exact + T(0.5), exact - T(0.5), std::nextafter(exact, T(kInfinity)),
                         std::nextafter(exact, T(-kInfinity))})
      all.push_back(near);
  }
  std::mt19937_64 random(2);
  for (int n = 0; n < 3000; ++n) all.push_back(from_bits<T>(static_cast<Bits>(random())));
  return all;
}

// What a conversion to an integer must give, in arithmetic wide enough for every source.
template <class To>
std::pair<CS_RETCODE, To> to_integer(long double value) {
  if (std::isnan(value)) return {CS_SUCCEED, static_cast<To>(kMin)};
  if (value < std::numeric_limits<To>::min())
    return {CS_CVT_OVERFLOW, std::numeric_limits<To>::min()};
  if (value > std::numeric_limits<To>::max())
    return {CS_CVT_OVERFLOW, std::numeric_limits<To>::max()};
  return {CS_SUCCEED, static_cast<To>(std::trunc(value))};
}

std::string text_of(auto value) {
  char text[64];
  if constexpr (std::integral<decltype(value)>) {
    std::snprintf(text, sizeof text, "%ld", static_cast<long>(value));
    return text;
  } else {
    std::snprintf(text, sizeof text, "%.17g", value == 0 ? 0.0 : static_cast<double>(value));
    std::string result = text;
    if (result.starts_with("0.")) result.erase(0, 1);
    if (result.find_first_of(".e") == std::string::npos) result += ".0";
    return result;
  }
}

template <class To, class From>
void check_integer(Context& context, CS_INT srctype, CS_INT desttype, From value) {
  const auto [code, stored] = to_integer<To>(static_cast<long double>(value));
  const Result result = convert(context, srctype, value, format_of(desttype));
  EXPECT_EQ(code, result.code) << +value << " to " << desttype;
  EXPECT_EQ(stored, result.as<To>()) << +value << " to " << desttype;
  EXPECT_EQ(CS_INT{sizeof(To)}, result.length);
}

// Compared as bits: NaN payloads and zero signs count.
template <class From>
void check_floats(Context& context, CS_INT srctype, From value) {
  const Result wide = convert(context, srctype, value, format_of(CS_FLOAT_TYPE));
  EXPECT_EQ(std::bit_cast<uint64_t>(static_cast<double>(value)), wide.as<uint64_t>()) << +value;
  EXPECT_EQ(CS_SUCCEED, wide.code);
  EXPECT_EQ(8, wide.length);

  const double exact = static_cast<double>(value);
  const bool fits = !(std::fabs(exact) > 3.4028234663852886e38) || std::same_as<From, float>;
  const uint32_t limit = std::signbit(exact) ? 0xFF7FFFFF : 0x7F7FFFFF;
  const Result narrow = convert(context, srctype, value, format_of(CS_REAL_TYPE));
  EXPECT_EQ(fits ? std::bit_cast<uint32_t>(static_cast<float>(value)) : limit,
            narrow.as<uint32_t>())
      << +value;
  EXPECT_EQ(fits ? CS_SUCCEED : CS_CVT_OVERFLOW, narrow.code) << +value;
  EXPECT_EQ(4, narrow.length);
}

template <class From>
void check_family(CS_INT srctype, const std::vector<From>& values) {
  Context context;
  for (const From value : values) {
    check_integer<CS_TINYINT>(context, srctype, CS_TINYINT_TYPE, value);
    check_integer<CS_SMALLINT>(context, srctype, CS_SMALLINT_TYPE, value);
    check_integer<CS_INT>(context, srctype, CS_INT_TYPE, value);
    check_floats(context, srctype, value);

    const Result bit = convert(context, srctype, value, format_of(CS_BIT_TYPE));
    EXPECT_EQ(value != From{0}, bit.as<CS_BIT>()) << +value;

    const std::string text = text_of(value);
    EXPECT_EQ(text, convert(context, srctype, value, format_of(CS_TEXT_TYPE, 64)).text());
    const Result varchar = convert(context, srctype, value, format_of(CS_VARCHAR_TYPE));
    EXPECT_EQ(258, varchar.length);
    EXPECT_EQ(static_cast<CS_SMALLINT>(text.size()), varchar.as<CS_SMALLINT>());
    EXPECT_STREQ(text.c_str(), varchar.text().substr(2).c_str());

    const std::string bytes(reinterpret_cast<const char*>(&value), sizeof value);
    EXPECT_EQ(bytes, convert(context, srctype, value, format_of(CS_BINARY_TYPE, 20)).text());
    const Result varbinary = convert(context, srctype, value, format_of(CS_VARBINARY_TYPE));
    EXPECT_EQ(258, varbinary.length);
    EXPECT_EQ(CS_SMALLINT{sizeof value}, varbinary.as<CS_SMALLINT>());
    EXPECT_EQ(bytes, varbinary.text().substr(2, sizeof value));
    if (testing::Test::HasFailure()) return;
  }
}

TEST(Numbers, Tinyint) {
  check_family(CS_TINYINT_TYPE, samples<CS_TINYINT>());
}
TEST(Numbers, Smallint) {
  check_family(CS_SMALLINT_TYPE, samples<CS_SMALLINT>());
}
TEST(Numbers, Int) {
  check_family(CS_INT_TYPE, samples<CS_INT>());
}
TEST(Numbers, Real) {
  check_family(CS_REAL_TYPE, samples<CS_REAL>());
}
TEST(Numbers, Float) {
  check_family(CS_FLOAT_TYPE, samples<CS_FLOAT>());
}
TEST(Numbers, Bit) {
  check_family(CS_BIT_TYPE, std::vector<CS_BIT>{0, 1});
}

// Where a plausible reading goes wrong, with literal outcomes.
TEST(Numbers, Edges) {
  Context context;
  const struct {
    double value;
    CS_INT desttype;
    CS_RETCODE code;
    CS_INT stored;
  } rows[] = {{-0.5, 6, CS_CVT_OVERFLOW, 0},
              {-0.0, 6, CS_SUCCEED, 0},
              {-4.9e-324, 6, CS_CVT_OVERFLOW, 0},
              {255.5, 6, CS_CVT_OVERFLOW, 255},
              {254.9, 6, CS_SUCCEED, 254},
              {2147483647.0, 8, CS_SUCCEED, INT_MAX},
              {2147483647.5, 8, CS_CVT_OVERFLOW, INT_MAX},
              {-2147483648.0, 8, CS_SUCCEED, kMin},
              {-2.7, 8, CS_SUCCEED, -2},
              {kNan, 8, CS_SUCCEED, kMin}};
  for (const auto& row : rows) {
    const Result result = convert(context, CS_FLOAT_TYPE, row.value, format_of(row.desttype));
    EXPECT_EQ(row.code, result.code) << row.value;
    EXPECT_EQ(row.stored, row.desttype == 6 ? result.as<CS_TINYINT>() : result.as<CS_INT>());
  }
  const struct {
    double value;
    const char* text;
  } texts[] = {{0.5, ".5"},
               {100, "100.0"},
               {-0.0, "0.0"},
               {-0.25, "-0.25"},
               {1e16, "10000000000000000.0"},
               {1e17, "1e+17"},
               {1e20, "1e+20"},
               {kInfinity, "inf.0"},
               {-kInfinity, "-inf.0"},
               {kNan, "nan.0"}};
  for (const auto& row : texts)
    EXPECT_EQ(row.text, convert(context, CS_FLOAT_TYPE, row.value, format_of(0, 30)).text());
  EXPECT_EQ(".10000000149011612", convert(context, CS_REAL_TYPE, 0.1F, format_of(0, 30)).text());
  EXPECT_EQ(1, convert(context, CS_FLOAT_TYPE, kNan, format_of(CS_BIT_TYPE)).as<CS_BIT>());
  EXPECT_EQ(1, convert(context, CS_INT_TYPE, 256, format_of(CS_BIT_TYPE)).as<CS_BIT>());
  // A signaling NaN is copied, not computed with.
  const auto signaling = from_bits<CS_FLOAT>(0x7FF0000000000001ULL);
  EXPECT_EQ(0x7FF0000000000001ULL,
            convert(context, CS_FLOAT_TYPE, signaling, format_of(CS_FLOAT_TYPE)).as<uint64_t>());
}

TEST(Numbers, ABitOutsideItsDomainWritesNothing) {
  Context context;
  for (const CS_INT desttype : {0, 1, 6, 7, 8, 9, 10, 11, 18, 19}) {
    for (const CS_BIT value : {CS_BIT{2}, CS_BIT{255}}) {
      const Result result = convert(context, CS_BIT_TYPE, value, format_of(desttype, 10));
      EXPECT_EQ(CS_CVT_DOMAIN, result.code) << desttype;
      EXPECT_TRUE(result.untouched_from(0)) << desttype;
    }
  }
}

TEST(Numbers, TextIgnoresTheLocale) {
  const char* const names[] = {"de_DE.UTF-8", "de_DE",       "fr_FR.UTF-8",
                               "fr_FR",       "es_ES.UTF-8", "ru_RU.UTF-8"};
  const bool found = std::any_of(std::begin(names), std::end(names), [](const char* name) {
    return std::setlocale(LC_ALL, name) != nullptr && *std::localeconv()->decimal_point == ',';
  });
  if (!found) GTEST_SKIP() << "no locale with a decimal comma is installed";
  Context context;
  EXPECT_EQ("1234567.25", convert(context, CS_FLOAT_TYPE, 1234567.25, format_of(0, 30)).text());
  std::setlocale(LC_ALL, "C");
}

struct Member {
  CS_CONV_FUNC routine;
  CS_INT source, destination;
};

#define MEMBERS(from, code)                                                                   \
  {comn_##from##tobit, code, 11}, {comn_##from##toi1, code, 6}, {comn_##from##toi2, code, 7}, \
      {comn_##from##toi4, code, 8}, {comn_##from##toflt4, code, 9},                           \
      {comn_##from##toflt8, code, 10}, {comn_##from##tochar, code, 0},                        \
      {comn_##from##tobin, code, 1}, {comn_##from##tovarchar, code, 18}, {                    \
    comn_##from##tovarbin, code, 19                                                           \
  }
const Member kMembers[] = {MEMBERS(i1, 6),   MEMBERS(i2, 7),    MEMBERS(i4, 8),
                           MEMBERS(flt4, 9), MEMBERS(flt8, 10), MEMBERS(bit, 11)};

constexpr bool serves(CS_INT own, CS_INT code) {
  if (own == 0) return code == 0 || code == 2 || code == 4 || code == 21 || code == 22;
  if (own == 1) return code == 1 || code == 3 || code == 5;
  return own == code;
}

std::string stop_of(CS_CONV_FUNC routine, CS_INT source, CS_INT destination,
                    int null_argument = -1) {
  Context context;
  const CS_DATAFMT from = format_of(source);
  const CS_DATAFMT to = format_of(destination, 40);
  const double value = 0;
  char room[300];
  CS_INT length = 0;
  const auto unless = [&](int at, auto* pointer) {
    return null_argument == at ? nullptr : pointer;
  };
  return stop_text([&] {
    routine(unless(0, &context), unless(1, &from), unless(2, &value), unless(3, &to),
            unless(4, &room[0]), unless(5, &length));
  });
}

bool names_a_family(const std::string& text, const char* beginning) {
  return text.starts_with(std::string("\n\r") + beginning + ", file 'generic/src/conv/com_");
}

TEST(NumbersDeathTest, ForeignDatatypesAndNullPointersStop) {
  for (const Member& member : kMembers) {
    for (CS_INT code = -1; code <= CS_BUILTIN_TYPES; ++code) {
      // Every code for one family; for the others, which share the check, the neighbours.
      if (member.source != CS_INT_TYPE && code != member.destination + 1) continue;
      if (serves(member.destination, code)) continue;
      EXPECT_TRUE(names_a_family(stop_of(member.routine, member.source, code), "assertion failed"))
          << member.source << " to " << member.destination << " called for " << code;
    }
    const CS_INT foreign = member.source == CS_BIT_TYPE ? CS_TINYINT_TYPE : member.source + 1;
    EXPECT_TRUE(
        names_a_family(stop_of(member.routine, foreign, member.destination), "assertion failed"))
        << member.source << " to " << member.destination << " called from " << foreign;
  }
  for (int missing = 0; missing < 6; ++missing) {
    const std::string text = stop_of(comn_i4toflt8, CS_INT_TYPE, CS_FLOAT_TYPE, missing);
    EXPECT_TRUE(names_a_family(text, "Invalid pointer 0x0")) << missing << text;
  }
}

TEST(NumbersDeathTest, LongMembersStopAtTwoLines) {
  const Member members[] = {{comn_i1toi8, 6, 20},    {comn_i2toi8, 7, 20},
                            {comn_i4toi8, 8, 20},    {comn_flt4toi8, 9, 20},
                            {comn_flt8toi8, 10, 20}, {comn_bittoi8, 11, 20}};
  for (const Member& member : members) {
    const std::string to_long = stop_of(member.routine, member.source, CS_LONG_TYPE);
    const std::string to_other = stop_of(member.routine, member.source, CS_INT_TYPE);
    EXPECT_TRUE(names_a_family(to_long, "assertion failed")) << member.source;
    EXPECT_TRUE(names_a_family(to_other, "assertion failed")) << member.source;
    EXPECT_NE(to_long, to_other) << member.source;
    EXPECT_EQ(to_other, stop_of(member.routine, member.source, CS_CHAR_TYPE)) << member.source;
  }
}

}  // namespace
