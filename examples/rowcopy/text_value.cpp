#include "text_value.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "comnlib.h"

namespace rowcopy {
namespace {

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

template <class T>
std::errc parse(std::string_view text, T& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return end == text.data() + text.size() ? error : std::errc::invalid_argument;
}

// Of a number that no double holds: whether it is too small rather than too large. Its first
// nonzero digit tells, counted from the point and moved by the exponent.
bool is_tiny(std::string_view number) {
  const std::size_t e = std::min(number.find_first_of("eE"), number.size());
  const std::string_view mantissa = number.substr(0, e);
  const std::string_view exponent = number.substr(std::min(e + 1, number.size()));
  const bool negative = exponent.starts_with('-');
  int shift = 0;
  if (!exponent.empty() &&
      parse(exponent.substr(exponent.starts_with('+') ? 1 : 0), shift) != std::errc{}) {
    return negative;  // more digits than any mantissa makes up for
  }
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t first = mantissa.find_first_of("123456789");
  return static_cast<long long>(point) + shift < static_cast<long long>(first);
}

constexpr int nibble(char c) {
  if (is_digit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

CS_RETCODE read_float(std::string_view text, CS_FLOAT& value) {
  const std::errc error = parse(text, value);
  if (error == std::errc{}) return CS_SUCCEED;
  if (error != std::errc::result_out_of_range) return CS_CVT_SYNTAX;
  return is_tiny(text) ? CS_CVT_UNDERFLOW : CS_CVT_OVERFLOW;
}

}  // namespace

CS_RETCODE read_number(std::string_view text, TextForm form, Number& number) {
  text = trim(text);
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return CS_CVT_SYNTAX;
  }
  const std::size_t digits = text.starts_with('-') ? 1 : 0;
  if (text.size() == digits || (!is_digit(text[digits]) && text[digits] != '.'))
    return CS_CVT_SYNTAX;

  number.code = CS_INT_TYPE;
  if (form == TextForm::kInteger) {
    const std::errc error = parse(text, number.integer);
    if (error == std::errc{}) return CS_SUCCEED;
    if (error != std::errc::result_out_of_range) return CS_CVT_SYNTAX;
  }
  number.code = CS_FLOAT_TYPE;
  return read_float(text, number.floating);
}

CS_RETCODE read_hexadecimal(std::string_view text, std::vector<char>& bytes) {
  bytes.clear();
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  if (text.size() % 2 != 0) return CS_CVT_SYNTAX;
  for (std::size_t at = 0; at < text.size(); at += 2) {
    const int high = nibble(text[at]);
    const int low = nibble(text[at + 1]);
    if (high < 0 || low < 0) return CS_CVT_SYNTAX;
    bytes.push_back(static_cast<char>(high * 16 + low));
  }
  return CS_SUCCEED;
}

void append_hexadecimal(std::string_view bytes, std::string& text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  text += "0x";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
}

}  // namespace rowcopy
