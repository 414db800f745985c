// Unicode encoding forms, strict in both directions: no overlong forms, no surrogates as
// characters, nothing beyond U+10FFFF.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>

#include "comnlib/types.h"

namespace comnlib {

// A decoded character and the bytes it took; 0 bytes: the text is malformed or cut here.
struct Decoded {
  char32_t code;
  std::size_t bytes;
};

constexpr bool is_surrogate(char32_t code) {
  return code >= 0xD800 && code <= 0xDFFF;
}

constexpr bool is_high_surrogate(char32_t code) {
  return code >= 0xD800 && code <= 0xDBFF;
}

constexpr bool is_trail(CS_BYTE byte) {
  return (byte & 0xC0) == 0x80;
}

// The first character of a text that is not empty.
inline Decoded decode_utf8(std::span<const CS_BYTE> text) {
  const CS_BYTE lead = text[0];
  if (lead < 0x80) return {lead, 1};
  const auto trails = [text](std::size_t count) {
    if (text.size() <= count) return false;
    for (std::size_t at = 1; at <= count; ++at)
      if (!is_trail(text[at])) return false;
    return true;
  };
  const auto bits = [text](std::size_t at) { return text[at] & char32_t{0x3F}; };
  constexpr Decoded kMalformed{0, 0};
  // Overlong forms are codes below the smallest one of their length.
  if (lead < 0xE0) {
    if (lead < 0xC2 || !trails(1)) return kMalformed;
    return {(lead & char32_t{0x1F}) << 6 | bits(1), 2};
  }
  if (lead < 0xF0) {
    if (!trails(2)) return kMalformed;
    const char32_t code = (lead & char32_t{0xF}) << 12 | bits(1) << 6 | bits(2);
    return code < 0x800 || is_surrogate(code) ? kMalformed : Decoded{code, 3};
  }
  if (lead > 0xF4 || !trails(3)) return kMalformed;
  const char32_t code = (lead & char32_t{7}) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3);
  return code < 0x10000 || code > 0x10FFFF ? kMalformed : Decoded{code, 4};
}

// The bytes of the longest character in either form; encoders have room for so many.
inline constexpr std::size_t kMostBytes = 4;

// Returns the number of bytes written. `code` is a character.
inline std::size_t encode_utf8(char32_t code, CS_BYTE* to) {
  const auto trail = [code](int shift) {
    return static_cast<CS_BYTE>(0x80 | (code >> shift & 0x3F));
  };
  if (code < 0x80) {
    to[0] = static_cast<CS_BYTE>(code);
    return 1;
  }
  if (code < 0x800) {
    to[0] = static_cast<CS_BYTE>(0xC0 | code >> 6);
    to[1] = trail(0);
    return 2;
  }
  if (code < 0x10000) {
    to[0] = static_cast<CS_BYTE>(0xE0 | code >> 12);
    to[1] = trail(6);
    to[2] = trail(0);
    return 3;
  }
  to[0] = static_cast<CS_BYTE>(0xF0 | code >> 18);
  to[1] = trail(12);
  to[2] = trail(6);
  to[3] = trail(0);
  return 4;
}

// UTF-16 in host byte order, at any address; of a text that is not empty.
inline Decoded decode_utf16(std::span<const CS_BYTE> text) {
  CS_UNICHAR high;
  if (text.size() < sizeof high) return {0, 0};
  std::memcpy(&high, text.data(), sizeof high);
  if (!is_surrogate(high)) return {high, sizeof high};
  CS_UNICHAR low;
  if (!is_high_surrogate(high) || text.size() < 2 * sizeof low) return {0, 0};
  std::memcpy(&low, text.data() + sizeof high, sizeof low);
  if (low < 0xDC00 || low > 0xDFFF) return {0, 0};
  return {0x10000 + ((char32_t{high} - 0xD800) << 10) + (low - 0xDC00U), 2 * sizeof low};
}

// Whether a text is UTF-16 throughout, without an unpaired surrogate or half a unit.
inline bool is_utf16(std::span<const CS_BYTE> text) {
  while (!text.empty()) {
    const Decoded character = decode_utf16(text);
    if (character.bytes == 0) return false;
    text = text.subspan(character.bytes);
  }
  return true;
}

// As encode_utf8, in host byte order.
inline std::size_t encode_utf16(char32_t code, CS_BYTE* to) {
  const auto put = [to](std::size_t at, char32_t unit) {
    const auto value = static_cast<CS_UNICHAR>(unit);
    std::memcpy(to + at, &value, sizeof value);
  };
  if (code < 0x10000) {
    put(0, code);
    return 2;
  }
  const char32_t offset = code - 0x10000;
  put(0, 0xD800 + (offset >> 10));
  put(2, 0xDC00 + (offset & 0x3FF));
  return 4;
}

}  // namespace comnlib
