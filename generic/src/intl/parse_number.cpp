#include "intl/parse_number.h"

#include <charconv>
#include <cstdint>

std::optional<CS_INT> comnlib::parse_number(std::string_view text, CS_INT least, CS_INT most) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
    if (text.starts_with('-')) return std::nullopt;
  }
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc{} || stopped != end || value < least || value > most) return std::nullopt;
  return static_cast<CS_INT>(value);
}
