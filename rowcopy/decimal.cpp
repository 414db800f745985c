#include "decimal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace rowcopy {
namespace {

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

constexpr bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// Blanks and what only adorns a number. Signs are looked at on their own.
constexpr bool is_adornment(char c) {
  return is_blank(c) || c == '$' || c == '+';
}

constexpr std::size_t kGroup = 3;  // digits between two commas

// Whether a comma before the text groups digits: three follow it and no fourth. Any other comma may
// be another country's decimal point.
bool begins_group(std::string_view text) {
  return text.size() >= kGroup && std::ranges::all_of(text.substr(0, kGroup), is_digit) &&
         (text.size() == kGroup || !is_digit(text[kGroup]));
}

// The number after an "e", as far as it matters. `rest` is what follows it.
int read_exponent(std::string_view text, std::string_view& rest) {
  constexpr int kFar = 1'000'000;
  if (text.starts_with('+')) text.remove_prefix(1);
  int exponent = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
  if (error == std::errc::result_out_of_range) exponent = text.starts_with('-') ? -kFar : kFar;
  rest = {end, text.data() + text.size()};
  return std::clamp(exponent, -kFar, kFar);
}

// A number's digits without zeros at either end.
struct Digits {
  std::string digits;
  long exponent = 0;
  bool negative = false;

  bool operator==(const Digits&) const = default;
};

Digits read_digits(std::string_view text) {
  Digits number;
  bool after_point = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (is_digit(c)) {
      if (c != '0' || !number.digits.empty()) number.digits += c;
      number.exponent -= after_point ? 1 : 0;
    } else if (c == '.') {
      after_point = true;
    } else if (c == '-') {
      number.negative = true;
    } else if (c == 'e' || c == 'E') {
      number.exponent += read_exponent(text.substr(at + 1), text);
      break;
    }
  }
  while (number.digits.ends_with('0')) {
    number.digits.pop_back();
    ++number.exponent;
  }
  return number.digits.empty() ? Digits{} : number;
}

template <std::uint64_t kBase>
constexpr auto kPowersOf = [] {
  std::array<std::uint64_t, kBase == 10 ? 20 : 28> powers{1};  // those that fit
  for (std::size_t at = 1; at < powers.size(); ++at) powers[at] = powers[at - 1] * kBase;
  return powers;
}();

// Multiplies a number, not zero, by a power of 10 or 5; false when the product is too large.
template <std::uint64_t kBase>
bool scale(std::uint64_t& number, int power) {
  if (power <= 0) return true;
  const auto& powers = kPowersOf<kBase>;
  return static_cast<std::size_t>(power) < powers.size() &&
         !__builtin_mul_overflow(number, powers[static_cast<std::size_t>(power)], &number);
}

template <class Magnitude>
bool is_plain_text_in(const Exact& number, const char* at, const char* end) {
  const bool negative = *at == '-';
  if (negative) ++at;
  Magnitude magnitude = 0;
  const auto take_digits = [&] {
    const char* const begin = at;
    for (; at != end && is_digit(*at); ++at)
      magnitude = magnitude * 10 + static_cast<unsigned>(*at - '0');
    return at - begin;
  };
  if (take_digits() == 0) return false;
  std::ptrdiff_t zeros = number.scale;  // that the text leaves out
  if (at != end && *at == '.') {
    ++at;
    zeros -= take_digits();
  }
  if (at != end || zeros < 0) return false;
  magnitude *= static_cast<Magnitude>(kPowersOf<10>[static_cast<std::size_t>(zeros)]);
  return magnitude == number.magnitude && (negative == number.negative || magnitude == 0);
}

// `Magnitude` holds whatever the text's digits say, or is the widest there is.
template <class Magnitude>
Decimal read_as(std::string_view text) {
  constexpr Magnitude kMost = std::numeric_limits<Magnitude>::max() / 10 - 1;
  Decimal number;
  Magnitude magnitude = 0;
  bool after_point = false;
  std::size_t group = 0;  // digits since the last comma
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (is_digit(c)) {
      number.has_digits = true;
      ++group;
      number.wide |= magnitude > kMost;
      magnitude = magnitude * 10 + static_cast<unsigned>(c - '0');
      number.exponent -= after_point ? 1 : 0;
    } else if (c == '.') {
      after_point = true;
    } else if (c == '-') {
      number.negative = true;
    } else if (c == ',') {
      number.foreign |= after_point || group == 0 || group > kGroup || magnitude == 0 ||
                        !begins_group(text.substr(at + 1));
      group = 0;
    } else if ((c == 'e' || c == 'E') && number.has_digits) {
      number.exponent += read_exponent(text.substr(at + 1), text);
      number.foreign |= !std::ranges::all_of(text, is_blank);
      break;
    } else if (!is_adornment(c)) {
      number.foreign = true;
    }
  }
  number.magnitude = magnitude;
  return number;
}

}  // namespace

bool is_plain_text_of(const Exact& number, std::string_view text) {
  if (text.empty() || number.wide) return false;
  const auto digits = text.size() + static_cast<std::size_t>(number.scale);
  const char* const begin = text.data();
  if (digits <= std::numeric_limits<std::uint32_t>::digits10)
    return is_plain_text_in<std::uint32_t>(number, begin, begin + text.size());
  return digits <= std::numeric_limits<std::uint64_t>::digits10 &&
         is_plain_text_in<std::uint64_t>(number, begin, begin + text.size());
}

Decimal read_decimal(std::string_view text) {
  return text.size() < std::numeric_limits<std::uint32_t>::digits10 ? read_as<std::uint32_t>(text)
                                                                    : read_as<std::uint64_t>(text);
}

bool same_number(const Decimal& a, const Exact& b) {
  if (a.magnitude == 0 || b.magnitude == 0) return a.magnitude == b.magnitude;
  if (a.negative != b.negative) return false;
  const int distance = a.exponent + b.scale;
  std::uint64_t coarser = distance >= 0 ? a.magnitude : b.magnitude;
  return scale<10>(coarser, std::abs(distance)) &&
         coarser == (distance >= 0 ? b.magnitude : a.magnitude);
}

bool same_digits(std::string_view a, std::string_view b) {
  return read_digits(a) == read_digits(b);
}

bool is_near(const Decimal& said, std::string_view text, double number, double tolerance) {
  constexpr auto kPowers = [] {
    std::array<double, 23> powers{1};  // those that a double holds
    for (std::size_t at = 1; at < powers.size(); ++at) powers[at] = powers[at - 1] * 10;
    return powers;
  }();
  const auto distance = static_cast<std::size_t>(std::abs(said.exponent));
  double expected = 0;
  if (!said.wide && distance < kPowers.size()) {
    expected = static_cast<double>(said.magnitude);
    expected = said.exponent < 0 ? expected / kPowers[distance] : expected * kPowers[distance];
    if (said.negative) expected = -expected;
  } else {
    const std::size_t first = std::min(text.find_first_not_of(" \t\n\v\f\r+"), text.size());
    std::from_chars(text.data() + first, text.data() + text.size(), expected);
  }
  return std::abs(number - expected) <= tolerance * std::abs(expected);
}

bool is_binary(const Decimal& number, int digits) {
  std::uint64_t odd = number.magnitude;
  if (odd == 0) return !number.wide;
  if (number.wide) return false;
  for (int power = number.exponent; power < 0; ++power) {
    // 10^-1 is binary only where 5 divides what it scales.
    if (odd % 5 != 0) return false;
    odd /= 5;
  }
  odd >>= std::countr_zero(odd);
  return scale<5>(odd, number.exponent) && std::bit_width(odd) <= static_cast<unsigned>(digits);
}

}  // namespace rowcopy
