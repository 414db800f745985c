// The floating families against wider arithmetic and, for text, the C library's printf; and what
// the number families refuse.
#include <array>
#include <bit>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <utility>

#include "conv/conversion.h"
#include "conv/number_text.h"
#include "conv/powers_of_ten.h"
#include "support/scratch.h"

namespace {

using namespace conversion;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// Around every limit of the integers, odd values, and random bit patterns.
template <class T>
std::vector<T> samples() {
  using Limits = std::numeric_limits<T>;
  std::vector<T> all{T(kNan), -T(kNan), Limits::max(), Limits::denorm_min()};
  for (const double edge : {0.0, 0.1, 1.0, 127.0, 255.0, 32767.0, 32768.0, 16777216.0, 2147483647.0,
                            1e16, 1e17, 1e20, 1e-5, 3.4028234663852889e38, kInfinity}) {
    for (const T value : {static_cast<T>(edge), static_cast<T>(-edge)})
      all.insert(all.end(), {value, value + T(0.5), std::nextafter(value, T(kInfinity)),
                             std::nextafter(value, T(-kInfinity))});
  }
  using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
  std::mt19937_64 random(1);
  for (int n = 0; n < 2000; ++n) all.push_back(std::bit_cast<T>(static_cast<Bits>(random())));
  return all;
}

// In arithmetic that holds every source exactly.
template <class To>
Row as_integer(const Encoded& source, CS_INT type, long double value) {
  const CS_DATAFMT to = format_of(type);
  using Limits = std::numeric_limits<To>;
  if (std::isnan(value)) return {source, to, CS_SUCCEED, bytes_of(static_cast<To>(INT_MIN))};
  if (value < Limits::min()) return {source, to, CS_CVT_OVERFLOW, bytes_of(Limits::min())};
  if (value > Limits::max()) return {source, to, CS_CVT_OVERFLOW, bytes_of(Limits::max())};
  return {source, to, CS_SUCCEED, bytes_of(static_cast<To>(std::trunc(value)))};
}

Row as_single(const Encoded& source, auto value) {
  const CS_DATAFMT to = format_of(CS_REAL_TYPE);
  if (!std::same_as<decltype(value), float> && std::fabs(value) > 3.4028234663852886e38)
    return {source, to, CS_CVT_OVERFLOW, bytes_of(value < 0 ? 0xFF7FFFFF : 0x7F7FFFFF)};
  return {source, to, CS_SUCCEED, bytes_of(static_cast<float>(value))};
}

std::string as_text(auto value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.17g", value == 0 ? 0.0 : static_cast<double>(value));
  std::string result = text;
  if (result.starts_with("0.")) result.erase(0, 1);
  if (result.find_first_of(".e") == std::string::npos) result += ".0";
  return result;
}

void check_family(CS_INT type, const auto& values) {
  Context context;
  for (const auto value : values) {
    const Encoded source = value_of(type, value);
    const CS_DATAFMT number = format_of(CS_FLOAT_TYPE), bit = format_of(CS_BIT_TYPE);
    const Row rows[] = {as_integer<CS_TINYINT>(source, CS_TINYINT_TYPE, value),
                        as_integer<CS_SMALLINT>(source, CS_SMALLINT_TYPE, value),
                        as_integer<CS_INT>(source, CS_INT_TYPE, value),
                        as_single(source, value),
                        {source, number, CS_SUCCEED, bytes_of(static_cast<double>(value))},
                        {source, bit, CS_SUCCEED, value == 0 ? std::string(1, 0) : "\1"},
                        {source, format_of(CS_TEXT_TYPE, 64), CS_SUCCEED, as_text(value)},
                        {source, format_of(CS_BINARY_TYPE, 20), CS_SUCCEED, source.bytes}};
    for (const Row& row : rows) check(context, row);
  }
}

TEST(Numbers, AgreeWithWiderArithmeticAndPrintf) {
  check_family(CS_REAL_TYPE, samples<CS_REAL>());
  check_family(CS_FLOAT_TYPE, samples<CS_FLOAT>());
  Context context;
  const uint64_t nan = 0x7FF0000000000001;  // signals; it is copied, not computed with
  EXPECT_EQ(bytes_of(nan), convert(context, CS_FLOAT_TYPE, nan, format_of(CS_FLOAT_TYPE)).text());
}

// Around every power of ten and of two, and halfway between two texts of 17 digits.
TEST(Numbers, TextRoundsEveryMagnitude) {
  std::vector<double> values;
  for (int n = -323; n <= 308; ++n)
    values.push_back(std::strtod(("1e" + std::to_string(n)).c_str(), nullptr));
  for (int n = -1074; n <= 1023; ++n) values.push_back(std::ldexp(1.0, n));
  for (std::size_t at = values.size(); at-- > 0;)
    for (const double to : {0.0, kInfinity}) values.push_back(std::nextafter(values[at], to));
  // 18 digits, the last of them a 5, and 10^17 rounded up to.
  for (int n = 1; n < 9; n += 2) values.push_back(18982804549 + n / 128.0);
  values.insert(values.end(), {9.9999999999999995e16, -99999999999999990.0, -0.001, -1e-5});
  for (const double value : values) {
    comnlib::NumberBuffer buffer;
    ASSERT_EQ(as_text(value), comnlib::text_of(value, buffer));
  }
}

TEST(Numbers, PowersOfTenAreExactInEveryBit) {
  static constexpr comnlib::PowersOfTen kPowers;
  int count = 0;
  table::for_each_line("exact/data/numeric_powers_of_ten.tsv", [&](const table::Fields& line) {
    const comnlib::Significand& power = kPowers[table::number(line[0])];
    char bits[25];
    std::snprintf(bits, sizeof bits, "%08x%08x%08x", power.high, power.middle, power.low);
    EXPECT_EQ(line[1], bits);
    ++count;
  });
  EXPECT_EQ(kPowers.kLast - kPowers.kFirst + 1, count);
}

TEST(Numbers, SourcesOutsideTheirDomainWriteNothing) {
  Context context;
  for (const Encoded& source :
       {value_of(CS_BIT_TYPE, CS_BIT{2}), value_of(CS_BIT_TYPE, CS_BIT{255}),
        value_of(CS_NUMERIC_TYPE, CS_NUMERIC{0, 0, {}}),
        value_of(CS_NUMERIC_TYPE, CS_NUMERIC{78, 0, {}}),
        value_of(CS_NUMERIC_TYPE, CS_NUMERIC{5, 78, {}})}) {
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      if (com_conv_func(&context, source.format.datatype, to) == nullptr) continue;
      const Result result = convert(context, source, format_of(to, 10));
      EXPECT_EQ(CS_CVT_DOMAIN, result.code) << to;
      EXPECT_TRUE(result.untouched_from(0)) << to;
    }
  }
}

TEST(Numbers, TextIgnoresTheLocale) {
  const scratch::Variable locales("LOCPATH", COMNLIB_LOCALES);
  ASSERT_NE(nullptr, std::setlocale(LC_ALL, "de_DE.UTF-8"));
  ASSERT_STREQ(",", std::localeconv()->decimal_point);
  Context context;
  EXPECT_EQ("1234567.25", convert(context, CS_FLOAT_TYPE, 1234567.25, format_of(0, 30)).text());
  std::setlocale(LC_ALL, "C");
}

}  // namespace
