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

// Blanks and what only adorns a number. Signs are looked at on their own.
constexpr bool is_adornment(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r') || c == '$' || c == '+';
}

// Whether a comma before the text groups digits: three follow it and no fourth. Any other comma may
// be another country's decimal point.
bool begins_group(std::string_view text) {
  constexpr std::size_t kGroup = 3;
  return text.size() >= kGroup && std::ranges::all_of(text.substr(0, kGroup), is_digit) &&
         (text.size() == kGroup || !is_digit(text[kGroup]));
}

// The number behind an "e", as far as it matters.
int read_exponent(std::string_view text) {
  constexpr int kFar = 1'000'000;
  if (text.starts_with('+')) text.remove_prefix(1);
  int exponent = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
  if (error == std::errc::result_out_of_range) exponent = text.starts_with('-') ? -kFar : kFar;
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
      number.exponent += read_exponent(text.substr(at + 1));
      break;
    }
  }
  while (number.digits.ends_with('0')) {
    number.digits.pop_back();
    ++number.exponent;
  }
  return number.digits.empty() ? Digits{} : number;
}

// False when the product is too large.
bool scale(std::uint64_t& number, std::uint64_t base, int power) {
  while (power-- > 0)
    if (__builtin_mul_overflow(number, base, &number)) return false;
  return true;
}

}  // namespace

namespace {

// `Magnitude` holds whatever the text's digits say, or is the widest there is.
template <class Magnitude>
Decimal read_as(std::string_view text) {
  constexpr Magnitude kMost = std::numeric_limits<Magnitude>::max() / 10 - 1;
  Decimal number;
  Magnitude magnitude = 0;
  bool after_point = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (is_digit(c)) {
      number.has_digits = true;
      number.wide |= magnitude > kMost;
      magnitude = magnitude * 10 + static_cast<unsigned>(c - '0');
      number.exponent -= after_point ? 1 : 0;
    } else if (c == '.') {
      after_point = true;
    } else if (c == '-') {
      number.negative = true;
    } else if (c == ',') {
      number.foreign |= after_point || !number.has_digits || !begins_group(text.substr(at + 1));
    } else if ((c == 'e' || c == 'E') && number.has_digits) {
      number.exponent += read_exponent(text.substr(at + 1));
      break;
    } else if (!is_adornment(c)) {
      number.foreign = true;
    }
  }
  number.magnitude = magnitude;
  return number;
}

}  // namespace

Decimal read_decimal(std::string_view text) {
  return text.size() < std::numeric_limits<std::uint32_t>::digits10 ? read_as<std::uint32_t>(text)
                                                                    : read_as<std::uint64_t>(text);
}

bool same_number(const Decimal& a, const Decimal& b) {
  if (a.magnitude == 0 || b.magnitude == 0) return a.magnitude == b.magnitude;
  if (a.negative != b.negative) return false;
  const bool a_is_coarser = a.exponent >= b.exponent;
  std::uint64_t coarser = a_is_coarser ? a.magnitude : b.magnitude;
  const std::uint64_t finer = a_is_coarser ? b.magnitude : a.magnitude;
  return scale(coarser, 10, a_is_coarser ? a.exponent - b.exponent : b.exponent - a.exponent) &&
         coarser == finer;
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
  return scale(odd, 5, number.exponent) && std::bit_width(odd) <= static_cast<unsigned>(digits);
}

}  // namespace rowcopy
