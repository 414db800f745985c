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

// Returns the number of bytes written; 0 when the room is too small. `code` is a character.
inline std::size_t encode_utf8(char32_t code, std::span<CS_BYTE> room) {
  const std::size_t length = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
  if (length > room.size()) return 0;
  const auto trail = [code](int shift) {
    return static_cast<CS_BYTE>(0x80 | (code >> shift & 0x3F));
  };
  switch (length) {
    case 1:
      room[0] = static_cast<CS_BYTE>(code);
      break;
    case 2:
      room[0] = static_cast<CS_BYTE>(0xC0 | code >> 6);
      room[1] = trail(0);
      break;
    case 3:
      room[0] = static_cast<CS_BYTE>(0xE0 | code >> 12);
      room[1] = trail(6);
      room[2] = trail(0);
      break;
    default:
      room[0] = static_cast<CS_BYTE>(0xF0 | code >> 18);
      room[1] = trail(12);
      room[2] = trail(6);
      room[3] = trail(0);
  }
  return length;
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
inline std::size_t encode_utf16(char32_t code, std::span<CS_BYTE> room) {
  const bool pair = code >= 0x10000;
  const std::size_t length = pair ? 4 : 2;
  if (length > room.size()) return 0;
  const char32_t offset = code - 0x10000;
  const auto first = static_cast<CS_UNICHAR>(pair ? 0xD800 + (offset >> 10) : code);
  std::memcpy(room.data(), &first, sizeof first);
  if (pair) {
    const auto second = static_cast<CS_UNICHAR>(0xDC00 + (offset & 0x3FF));
    std::memcpy(room.data() + sizeof first, &second, sizeof second);
  }
  return length;
}

}  // namespace comnlib
