// All 676 pairs of the matrix: telling values go from every source into every destination that the
// source has, and are compared with an exact oracle; in the end no pair with a routine is left out.
#include <cmath>
#include <ctime>
#include <limits>
#include <optional>
#include <set>
#include <sstream>

#include "comnlib/datetime.h"
#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "conversion.h"

namespace {

using namespace conversion;

constexpr CS_INT kPrecision = 30;
constexpr CS_INT kScale = 4;
constexpr CS_INT kRoom = 60;

constexpr CS_INT kIntegers[] = {CS_TINYINT_TYPE, CS_SMALLINT_TYPE, CS_INT_TYPE};
constexpr CS_INT kBinaries[] = {CS_BINARY_TYPE, CS_LONGBINARY_TYPE, CS_IMAGE_TYPE,
                                CS_VARBINARY_TYPE};
constexpr CS_INT kNumerics[] = {CS_NUMERIC_TYPE, CS_DECIMAL_TYPE};
constexpr CS_INT kLabels[] = {CS_SENSITIVITY_TYPE, CS_BOUNDARY_TYPE};
constexpr CS_INT kTexts[] = {CS_CHAR_TYPE, CS_LONGCHAR_TYPE, CS_TEXT_TYPE, CS_VARCHAR_TYPE,
                             CS_UNICHAR_TYPE};

bool among(const auto& types, CS_INT type) {
  return std::ranges::find(types, type) != std::end(types);
}

class Sweep {
 public:
  Result run(const Encoded& source, CS_INT to) {
    CS_DATAFMT format = format_of(to, kRoom);
    format.precision = among(kNumerics, to) ? kPrecision : 4;
    format.scale = kScale;
    tried_.insert({source.format.datatype, to});
    return convert(context_, source, format);
  }
  bool has(CS_INT from, CS_INT to) { return com_conv_func(&context_, from, to) != nullptr; }
  const std::set<std::pair<CS_INT, CS_INT>>& tried() const { return tried_; }

  // The text of a character, varchar or Unicode-character destination.
  static std::string text_of(const Result& result, CS_INT type) {
    if (type == CS_VARCHAR_TYPE)
      return {result.bytes.begin() + 2, result.bytes.begin() + 2 + result.as<CS_SMALLINT>()};
    std::string text = result.text();
    if (type != CS_UNICHAR_TYPE) return text;
    std::string narrow;
    for (std::size_t at = 0; at < text.size(); at += 2) narrow += text[at];
    return narrow;
  }
  static std::string binary_of(const Result& result, CS_INT type) {
    return type == CS_VARBINARY_TYPE ? text_of(result, CS_VARCHAR_TYPE) : result.text();
  }

  void numbers();
  void dates();
  void binaries();
  void texts();
  void malformed();
  void nulls();

 private:
  void number_to(const Encoded& source, const struct Number& number, CS_INT to);
  Context context_;
  std::set<std::pair<CS_INT, CS_INT>> tried_;
};

// A number of at most four decimals, with its ten-thousandths, exact in 64 bits of mantissa.
struct Number {
  explicit Number(std::string written) : text(std::move(written)) {
    const std::size_t point = std::min(text.find('.'), text.size() - 1);
    std::string digits = text;
    std::erase(digits, '.');
    const std::size_t decimals = text.find('.') == std::string::npos ? 0 : text.size() - 1 - point;
    units = std::strtold((digits + std::string(4 - decimals, '0')).c_str(), nullptr);
  }
  std::string text;
  long double units;
  long double value() const { return units / 10000; }
  bool whole() const { return text.find('.') == std::string::npos; }
};

template <class T>
bool holds(long double value) {
  using Limits = std::numeric_limits<T>;
  return value >= static_cast<long double>(Limits::min()) &&
         value <= static_cast<long double>(Limits::max());
}

CS_NUMERIC numeric_of(long double units) {
  CS_NUMERIC numeric{static_cast<CS_BYTE>(kPrecision), static_cast<CS_BYTE>(kScale), {}};
  numeric.array[0] = units < 0 ? 1 : 0;
  auto magnitude = std::fabs(units);
  for (int at = comn_num_getlen(kPrecision) - 1; at > 0; --at) {
    const long double rest = std::floor(magnitude / 256);
    numeric.array[at] = static_cast<CS_BYTE>(magnitude - rest * 256);
    magnitude = rest;
  }
  return numeric;
}

CS_MONEY money_of(long double units) {
  const auto whole = static_cast<std::int64_t>(units);
  return {static_cast<CS_INT>(whole >> 32), static_cast<CS_UINT>(whole)};
}

// The number as a source of that type; none where the type cannot hold it exactly.
std::optional<Encoded> number_as(CS_INT type, const Number& number) {
  const auto fixed = [type](const auto& value) {
    return Encoded{format_of(type), bytes_of(value)};
  };
  const long double value = number.value();
  if (among(kTexts, type)) return text_as(type, number.text);
  const auto integer = [&]<class T>(T) -> std::optional<Encoded> {
    if (!number.whole() || !holds<T>(value)) return std::nullopt;
    return fixed(static_cast<T>(value));
  };
  const auto floating = [&]<class T>(T) -> std::optional<Encoded> {
    const T nearest = static_cast<T>(value);
    if (static_cast<long double>(nearest) * 10000 != number.units) return std::nullopt;
    return fixed(nearest);
  };
  if (type == CS_TINYINT_TYPE) return integer(CS_TINYINT{});
  if (type == CS_SMALLINT_TYPE) return integer(CS_SMALLINT{});
  if (type == CS_INT_TYPE) return integer(CS_INT{});
  if (type == CS_REAL_TYPE) return floating(CS_REAL{});
  if (type == CS_FLOAT_TYPE) return floating(CS_FLOAT{});
  if (type == CS_BIT_TYPE && (value == 0 || value == 1)) return fixed(static_cast<CS_BIT>(value));
  if (type == CS_MONEY_TYPE && holds<std::int64_t>(number.units))
    return fixed(money_of(number.units));
  if (type == CS_MONEY4_TYPE && holds<CS_INT>(number.units))
    return fixed(CS_MONEY4{static_cast<CS_INT>(number.units)});
  if (among(kNumerics, type)) return fixed(numeric_of(number.units));
  return std::nullopt;
}

// Ranges are judged before a fraction is dropped, but those of money behind it, which makes -1 of
// what lies between -1 and -0.5.
template <class T>
void expect_integer(const Result& result, const Number& number, bool money) {
  const long double value = number.value();
  long double whole = std::trunc(value);
  if (money && value > -1 && value <= -0.5L) whole = -1;
  const bool fits = holds<T>(money ? whole : value);
  if (!fits)
    whole = static_cast<long double>(value < 0 ? std::numeric_limits<T>::min()
                                               : std::numeric_limits<T>::max());
  EXPECT_EQ(fits ? CS_SUCCEED : CS_CVT_OVERFLOW, result.code);
  EXPECT_EQ(static_cast<CS_INT>(sizeof(T)), result.length);
  EXPECT_EQ(static_cast<T>(whole), result.as<T>());
}

void Sweep::number_to(const Encoded& source, const Number& number, CS_INT to) {
  const CS_INT from = source.format.datatype;
  SCOPED_TRACE(number.text + " from " + std::to_string(from) + " to " + std::to_string(to));
  const Result result = run(source, to);
  const bool text = among(kTexts, from);
  const bool money = from == CS_MONEY_TYPE || from == CS_MONEY4_TYPE;
  if (text && (among(kIntegers, to) || to == CS_BIT_TYPE || to == CS_LONG_TYPE) &&
      !number.whole()) {
    EXPECT_EQ(CS_CVT_SYNTAX, result.code);
    EXPECT_EQ(0, result.length);
    return;
  }
  if (to == CS_TINYINT_TYPE) return expect_integer<CS_TINYINT>(result, number, money);
  if (to == CS_SMALLINT_TYPE) return expect_integer<CS_SMALLINT>(result, number, money);
  if (to == CS_INT_TYPE) return expect_integer<CS_INT>(result, number, money);
  if (to == CS_LONG_TYPE) return expect_integer<std::int64_t>(result, number, money);
  if (to == CS_BIT_TYPE) {
    EXPECT_EQ(number.units != 0, result.as<CS_BIT>());
    return;
  }
  bool fits = true;
  if (to == CS_FLOAT_TYPE || to == CS_REAL_TYPE) {
    const double nearest = std::strtod(number.text.c_str(), nullptr);
    if (to == CS_REAL_TYPE) {
      EXPECT_FLOAT_EQ(static_cast<float>(nearest), result.as<float>());
    } else if (money) {
      EXPECT_DOUBLE_EQ(nearest, result.as<double>());
    } else {
      EXPECT_EQ(nearest, result.as<double>());
    }
  } else if (to == CS_MONEY_TYPE || to == CS_MONEY4_TYPE) {
    fits = to == CS_MONEY_TYPE ? holds<std::int64_t>(number.units) : holds<CS_INT>(number.units);
    const std::string expected =
        to == CS_MONEY_TYPE ? bytes_of(money_of(number.units))
                            : bytes_of(CS_MONEY4{static_cast<CS_INT>(fits ? number.units : 0)});
    if (fits) {
      EXPECT_EQ(expected, result.text());
    }
  } else if (among(kNumerics, to)) {
    const auto length = static_cast<std::size_t>(comn_num_getlen(kPrecision)) + 2;
    EXPECT_EQ(bytes_of(numeric_of(number.units)).substr(0, length), result.first(length));
  } else if (among(kBinaries, to)) {
    if (!text) {
      EXPECT_EQ(source.bytes, binary_of(result, to));
    }
    return;
  } else {
    const std::string written = text_of(result, to);
    if (text) {
      EXPECT_EQ(number.text, written);
    } else if (from == CS_REAL_TYPE || from == CS_FLOAT_TYPE) {
      EXPECT_EQ(number.value(), std::strtold(written.c_str(), nullptr));
    } else {
      EXPECT_EQ(number.units, Number(written).units);
    }
  }
  EXPECT_EQ(fits ? CS_SUCCEED : CS_CVT_OVERFLOW, result.code);
}

void Sweep::numbers() {
  std::istringstream texts(
      "0 1 -1 5 127 255 256 -32768 -32769 32767 32768 16777216 2147483647 -2147483648 2147483648 "
      "-2147483649 0.5 -0.5 -0.25 255.5 0.0001 12345.6789 214748.3647 214748.3648 -214748.3648 "
      "-214748.3649 922337203685477.5807 922337203685477.5808 -922337203685477.5808 "
      "-922337203685477.5809 123456789012");
  for (std::string text; texts >> text;) {
    const Number number(text);
    for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
      const auto source = number_as(from, number);
      if (!source) continue;
      for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
        const bool date = to == CS_DATETIME_TYPE || to == CS_DATETIME4_TYPE;
        if (has(from, to) && !date && !among(kLabels, to)) number_to(*source, number, to);
      }
    }
  }
}

// Between the sizes, from ISO text, into the default text, and as bytes.
void Sweep::dates() {
  constexpr CS_INT kUnixDays = 25567;
  for (const auto& [day, minute] :
       {std::pair{0, 0}, {45, 754}, {65535, 1439}, {-53690, 0}, {2958463, 1}}) {
    const CS_DATETIME date{day, 18000 * minute};
    const std::time_t time = std::time_t{date.dtdays - kUnixDays} * 86400 + date.dttime / 300;
    std::tm fields{};
    ASSERT_NE(nullptr, gmtime_r(&time, &fields));
    char iso[40], written[40];
    std::strftime(iso, sizeof iso, "%Y-%m-%d %H:%M", &fields);
    std::strftime(written, sizeof written, "%b %e %Y %I:%M%p", &fields);
    if (written[12] == '0') written[12] = ' ';
    const bool fits = day >= 0 && day <= 65535;
    const CS_DATETIME4 small{static_cast<CS_USHORT>(day), static_cast<CS_USHORT>(minute)};
    std::vector<Encoded> sources{{format_of(CS_DATETIME_TYPE), bytes_of(date)}};
    for (const CS_INT type : kTexts) sources.push_back(text_as(type, iso));
    for (const CS_INT type : kBinaries) sources.push_back(text_as(type, bytes_of(date)));
    if (fits) sources.push_back({format_of(CS_DATETIME4_TYPE), bytes_of(small)});
    for (const Encoded& source : sources) {
      const CS_INT from = source.format.datatype;
      SCOPED_TRACE(std::string(iso) + " from " + std::to_string(from));
      EXPECT_EQ(bytes_of(date), run(source, CS_DATETIME_TYPE).text());
      if (among(kBinaries, from)) continue;
      const Result narrow = run(source, CS_DATETIME4_TYPE);
      EXPECT_EQ(fits ? CS_SUCCEED : CS_CVT_OVERFLOW, narrow.code);
      EXPECT_EQ(fits ? bytes_of(small) : "", narrow.text());
      if (among(kTexts, from)) continue;
      for (const CS_INT to : kTexts) EXPECT_EQ(written, text_of(run(source, to), to)) << to;
      EXPECT_EQ(source.bytes, binary_of(run(source, CS_VARBINARY_TYPE), CS_VARBINARY_TYPE));
    }
  }
}

// The stored bytes of the fixed-length types: whole, without their last byte, with surplus zeros
// and with another surplus byte.
void Sweep::binaries() {
  const std::string money("\x01\x02\x03\x04\x05\x06\x07", 7);
  for (const CS_INT from : kBinaries) {
    for (CS_INT to = CS_TINYINT_TYPE; to <= CS_DECIMAL_TYPE; ++to) {
      SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
      const auto size = static_cast<std::size_t>(comn_typelen(to, 0));
      std::string value = (money + std::string(40, '\0')).substr(0, size);
      if (to == CS_BIT_TYPE) value = "\x01";
      if (among(kNumerics, to)) value = bytes_of(CS_NUMERIC{2, 1, {1, 99}});
      const Result whole = run(text_as(from, value), to);
      EXPECT_EQ(CS_SUCCEED, whole.code);
      EXPECT_EQ(value, whole.text());
      const Result cut = run(text_as(from, value.substr(0, size - 1)), to);
      EXPECT_EQ(value.substr(0, size - 1) + '\0', cut.text());
      EXPECT_EQ(CS_SUCCEED, run(text_as(from, value + std::string(3, '\0')), to).code);
      const Result surplus = run(text_as(from, value + std::string("\0\x01", 2)), to);
      EXPECT_EQ(CS_CVT_OVERFLOW, surplus.code);
      EXPECT_EQ(value, surplus.text());
    }
    const std::string bytes("\x00\x9F\xFF'", 4);
    for (const CS_INT to : kTexts) {
      const std::string hex = text_of(run(text_as(from, bytes), to), to);
      EXPECT_EQ("009FFF27", hex);
      for (const CS_INT back : kBinaries) {
        EXPECT_EQ(bytes, binary_of(run(text_as(to, "0x" + hex), back), back)) << to << " " << back;
        EXPECT_EQ(bytes, binary_of(run(text_as(from, bytes), back), back));
        EXPECT_EQ("", binary_of(run(text_as(from, ""), back), back));
      }
    }
  }
}

void Sweep::texts() {
  const std::string text = "It's 'quoted', \t100%";
  for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
    if (!among(kTexts, from) && !among(kLabels, from)) continue;
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      if (!has(from, to) || (!among(kTexts, to) && !among(kLabels, to))) continue;
      const Result result = run(text_as(from, text), to);
      EXPECT_EQ(CS_SUCCEED, result.code);
      EXPECT_EQ(text, text_of(result, to)) << from << " to " << to;
    }
  }
}

void Sweep::malformed() {
  for (const CS_INT from : kTexts) {
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      if (!has(from, to) || among(kTexts, to) || among(kLabels, to)) continue;
      for (const char* bad : {"x", "1x", "--1", "1 2", "12\x80", "\xFF\xFF", "1'", "0x1g"}) {
        const Result result = run(text_as(from, bad), to);
        EXPECT_EQ(CS_CVT_SYNTAX, result.code) << bad << " from " << from << " to " << to;
        EXPECT_EQ(0, result.length);
        if (!among(kBinaries, to)) {
          EXPECT_TRUE(result.untouched_from(0)) << bad << " from " << from << " to " << to;
        }
      }
    }
  }
}

void Sweep::nulls() {
  for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
    const Result result = run({format_of(CS_VOID_TYPE), " "}, to);
    EXPECT_EQ(CS_SUCCEED, result.code);
    if (to == CS_VOID_TYPE) continue;
    const std::string text = result.text();
    const bool numeric = among(kNumerics, to);
    EXPECT_EQ(std::string::npos, text.find_first_not_of('\0', numeric ? 2 : 0)) << to;
  }
}

TEST(Matrix, EveryPairConverts) {
  Sweep sweep;
  sweep.numbers();
  sweep.dates();
  sweep.binaries();
  sweep.texts();
  sweep.malformed();
  sweep.nulls();
  int gaps = 0;
  for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      const bool tried = sweep.tried().contains({from, to});
      EXPECT_EQ(sweep.has(from, to), tried) << from << " to " << to;
      gaps += tried ? 0 : 1;
    }
  }
  EXPECT_EQ(238, gaps);
}

}  // namespace
