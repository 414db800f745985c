// Numbers as text.
#include "conv/number_text.h"

#include <charconv>
#include <system_error>

#include "diag/diag.h"

namespace comnlib {
namespace {

// Enough to tell every double from its neighbours.
constexpr int kSignificantDigits = 17;

}  // namespace

std::string_view text_of(CS_INT value, NumberBuffer& buffer) {
  const auto [end, error] = std::to_chars(buffer.begin(), buffer.end(), value);
  require(error == std::errc{});
  return {buffer.begin(), end};
}

std::string_view text_of(CS_FLOAT value, NumberBuffer& buffer) {
  if (value == 0) return "0.0";
  constexpr std::string_view suffix = ".0";
  char* const limit = buffer.end() - suffix.size();
  const auto [end, error] =
      std::to_chars(buffer.begin(), limit, value, std::chars_format::general, kSignificantDigits);
  require(error == std::errc{});

  const std::string_view text(buffer.begin(), end);
  if (text.starts_with("0.")) return text.substr(1);
  if (text.find_first_of(".e") != text.npos) return text;
  suffix.copy(end, suffix.size());
  return {buffer.begin(), end + suffix.size()};
}

}  // namespace comnlib
