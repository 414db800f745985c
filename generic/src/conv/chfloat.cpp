// Decimal text to double through std::from_chars, which the process's locale does not reach.
#include "conv/chfloat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "comnlib/result.h"

namespace comnlib {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Whether a literal out of double's range is too large rather than too small: the sign of the
// decimal exponent of its first significant digit. Such a literal has one.
bool is_too_large(std::string_view literal) {
  constexpr long long kBeyondAny = 1LL << 40;
  const std::size_t mark = literal.find_first_of("eE");
  const std::string_view mantissa = literal.substr(0, mark);
  long long exponent = 0;
  if (mark != std::string_view::npos) {
    std::string_view digits = literal.substr(mark + 1);
    if (digits.front() == '+') digits.remove_prefix(1);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    if (error == std::errc::result_out_of_range)
      exponent = digits.front() == '-' ? -kBeyondAny : kBeyondAny;
    exponent = std::clamp(exponent, -kBeyondAny, kBeyondAny);
  }
  const auto point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
  const auto leading = static_cast<long long>(mantissa.find_first_of("123456789"));
  return exponent + point - leading > 0;
}

}  // namespace

ParsedFloat parse_float(std::string_view text) {
  text = trim(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  // A second sign would be from_chars' own.
  if (text.empty() || text.front() == '-') return {CS_CVT_SYNTAX, 0};

  double magnitude = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, magnitude);
  if (stop != end || error == std::errc::invalid_argument) return {CS_CVT_SYNTAX, 0};
  CS_RETCODE code = CS_SUCCEED;
  if (error == std::errc::result_out_of_range) {
    const bool large = is_too_large(text);
    code = large ? CS_CVT_OVERFLOW : CS_CVT_UNDERFLOW;
    magnitude = large ? std::numeric_limits<double>::max() : 0;
  }
  return {code, negative ? -magnitude : magnitude};
}

}  // namespace comnlib
