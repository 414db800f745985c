// Hexadecimal text of binary data: two digits a byte, written with upper-case letters.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "comnlib/types.h"

namespace comnlib {

inline constexpr std::array<CS_CHAR, 16> kHexDigits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                                       '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};

struct HexPair {
  CS_CHAR high, low;
};

constexpr HexPair hex_of(CS_BYTE byte) {
  return {kHexDigits[byte >> 4], kHexDigits[byte & 0xF]};
}

// The value of an ASCII hexadecimal digit of either case.
constexpr std::optional<CS_BYTE> hex_value(int digit) {
  if (digit >= '0' && digit <= '9') return static_cast<CS_BYTE>(digit - '0');
  if (digit >= 'A' && digit <= 'F') return static_cast<CS_BYTE>(digit - 'A' + 10);
  if (digit >= 'a' && digit <= 'f') return static_cast<CS_BYTE>(digit - 'a' + 10);
  return std::nullopt;
}

// Reads hexadecimal text into bytes; false unless it has exactly their digits.
constexpr bool decode_hex(std::string_view digits, std::span<CS_BYTE> bytes) {
  if (digits.size() != 2 * bytes.size()) return false;
  for (CS_BYTE& byte : bytes) {
    const auto high = hex_value(digits[0]);
    const auto low = hex_value(digits[1]);
    if (!high || !low) return false;
    byte = static_cast<CS_BYTE>(*high << 4 | *low);
    digits.remove_prefix(2);
  }
  return true;
}

}  // namespace comnlib
