// Numbers as text.
#include "conv/number_text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "chars/decimal.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

// Enough to tell every double from its neighbours.
constexpr int kSignificantDigits = 17;

// Puts two digits in front of `before` and returns where they start.
char* put_pair(char* before, CS_UINT n) {
  return std::copy_n(&kDigitPairs[2 * n], 2, before - 2) - 2;
}

}  // namespace

std::string_view text_of(CS_INT value, NumberBuffer& buffer) {
  char* const end = buffer.end();
  char* begin = end;
  CS_UINT rest = value < 0 ? -static_cast<CS_UINT>(value) : static_cast<CS_UINT>(value);
  for (; rest >= 100; rest /= 100) begin = put_pair(begin, rest % 100);
  if (rest >= 10) {
    begin = put_pair(begin, rest);
  } else {
    *--begin = static_cast<char>('0' + rest);
  }
  if (value < 0) *--begin = '-';
  return {begin, end};
}

std::string_view text_of(CS_FLOAT value, NumberBuffer& buffer) {
  if (value == 0) return "0.0";
  constexpr std::string_view suffix = ".0";
  char* const limit = buffer.end() - suffix.size();
  const auto [end, error] =
      std::to_chars(buffer.begin(), limit, value, std::chars_format::general, kSignificantDigits);
  require(error == std::errc{});

  if (buffer[0] == '0' && buffer[1] == '.') return {buffer.begin() + 1, end};
  const auto marks_a_float = [](char mark) { return mark == '.' || mark == 'e'; };
  if (std::any_of(buffer.begin(), end, marks_a_float)) return {buffer.begin(), end};
  return {buffer.begin(), std::ranges::copy(suffix, end).out};
}

}  // namespace comnlib
