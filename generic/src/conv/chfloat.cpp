// Decimal text to double through std::from_chars, which does not depend on the process's locale. It
// reads plain bytes in place. For any other text, and for a literal at an end of double's range,
// the digits that decide the value are collected first: the result code depends on more than the
// nearest double.
#include "conv/chfloat.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

#include "comnlib/result.h"

namespace comnlib {
namespace {

constexpr double kSmallestNormal = std::numeric_limits<double>::min();

// The number a quarter of a unit below the smallest normal one, in the form of Decimal. A literal
// below it is in the denormal range, even where its nearest double is the smallest normal one.
constexpr std::string_view kSmallestNormalDigits =
    "22250738585072012595738212570207680200770177634";
constexpr long long kSmallestNormalExponent = -307;

template <class Reader>
bool at_end(const Reader& reader) {
  return reader.done() || reader.nul();
}

template <class Reader>
bool at_digit(const Reader& reader) {
  return !at_end(reader) && reader.ascii() >= '0' && reader.ascii() <= '9';
}

template <class Reader>
bool skip_if(Reader& reader, char wanted) {
  if (at_end(reader) || reader.ascii() != wanted) return false;
  reader.skip();
  return true;
}

// Skips a sign; true for a minus sign.
template <class Reader>
bool skip_sign(Reader& reader) {
  if (skip_if(reader, '-')) return true;
  skip_if(reader, '+');
  return false;
}

// A decimal literal as 0.DIGITS times ten to the `exponent`, the first digit not being zero. The
// value of a double is decided by 768 digits and by whether any digit after them is not zero.
class Decimal {
 public:
  template <class Reader>
  bool read(Reader& reader) {
    bool any = take_digits(reader, 1, 0);
    if (skip_if(reader, '.')) any |= take_digits(reader, 0, -1);
    if (!any) return false;
    const bool scientific = skip_if(reader, 'e') || skip_if(reader, 'E');
    return !scientific || take_exponent(reader);
  }

  ParsedFloat value() {
    if (count_ == 0) return {CS_SUCCEED, 0};
    char* end = literal_.data() + kPoint.size() + count_;
    if (more_) *end++ = '1';
    *end++ = 'e';
    end = std::to_chars(end, literal_.data() + literal_.size(), exponent_).ptr;
    double value = 0;
    if (std::from_chars(literal_.data(), end, value).ec != std::errc{}) {
      if (exponent_ > 0) return {CS_CVT_OVERFLOW, std::numeric_limits<double>::max()};
      return {CS_CVT_UNDERFLOW, 0};
    }
    return {value <= kSmallestNormal && is_denormal(value) ? CS_CVT_UNDERFLOW : CS_SUCCEED, value};
  }

 private:
  static constexpr std::string_view kPoint = "0.";
  static constexpr std::size_t kDeciding = 800;
  static constexpr long long kBeyondAny = 1LL << 40;

  // Adds `zero` to the exponent for each zero before the first other digit, then `digit` for each
  // digit.
  template <class Reader>
  bool take_digits(Reader& reader, int digit, int zero) {
    const bool any = at_digit(reader);
    for (; at_digit(reader); reader.skip()) {
      const char next = static_cast<char>(reader.ascii());
      if (count_ == 0 && next == '0') {
        exponent_ += zero;
        continue;
      }
      exponent_ += digit;
      if (count_ < kDeciding)
        literal_[kPoint.size() + count_++] = next;
      else
        more_ |= next != '0';
    }
    return any;
  }

  template <class Reader>
  bool take_exponent(Reader& reader) {
    const bool negative = skip_sign(reader);
    if (!at_digit(reader)) return false;
    long long exponent = 0;
    for (; at_digit(reader); reader.skip())
      exponent = std::min(exponent * 10 + (reader.ascii() - '0'), kBeyondAny);
    exponent_ += negative ? -exponent : exponent;
    return true;
  }

  bool is_denormal(double value) const {
    if (value < kSmallestNormal) return true;
    const std::string_view digits(literal_.data() + kPoint.size(), count_);
    return exponent_ == kSmallestNormalExponent && digits < kSmallestNormalDigits;
  }

  std::array<char, kPoint.size() + kDeciding + 24> literal_{'0', '.'};
  std::size_t count_ = 0;
  bool more_ = false;
  long long exponent_ = 0;
};

// "inf", "infinity" or "nan", as from_chars reads them.
template <class Reader>
ParsedFloat read_word(Reader& reader) {
  std::array<char, 64> word;
  char* end = word.data();
  for (; !at_end(reader) && !reader.space(); reader.skip()) {
    if (end == word.data() + word.size()) return {CS_CVT_SYNTAX, 0};
    *end++ = static_cast<char>(reader.ascii());
  }
  double value = 0;
  const auto [stop, error] = std::from_chars(word.data(), end, value);
  return {stop == end && error == std::errc{} ? CS_SUCCEED : CS_CVT_SYNTAX, value};
}

template <class Reader>
ParsedFloat read_magnitude(Reader& reader) {
  if (!at_end(reader) && (reader.ascii() | 0x20) >= 'a') return read_word(reader);
  Decimal decimal;
  if (!decimal.read(reader)) return {CS_CVT_SYNTAX, 0};
  return decimal.value();
}

// A second sign is an error, though from_chars would read it.
ParsedFloat read_magnitude(PlainReader& reader) {
  const auto* begin = reinterpret_cast<const char*>(reader.rest().data());
  const char* end = begin + reader.rest().size();
  double value = 0;
  const auto [stop, error] = std::from_chars(begin, end, value);
  const bool in_range = value > kSmallestNormal || value == 0;
  if (error != std::errc{} || !in_range || *begin == '-') return read_magnitude<>(reader);
  reader.skip(static_cast<std::size_t>(stop - begin));
  return {CS_SUCCEED, value};
}

template <class Reader>
ParsedFloat read_float(Reader reader) {
  skip_blanks(reader);
  const bool negative = skip_sign(reader);
  ParsedFloat result = read_magnitude(reader);
  skip_blanks(reader);
  if (!at_end(reader)) result.code = CS_CVT_SYNTAX;
  if (negative) result.value = -result.value;
  return result;
}

}  // namespace

ParsedFloat parse_float(const Text& text) {
  return with_reader(text, [](auto reader) { return read_float(reader); });
}

}  // namespace comnlib
