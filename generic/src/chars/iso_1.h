// The rule of the two built-in ISO 8859-1 tables, and the tables themselves.
#pragma once

#include <array>

#include "comnlib/charset.h"

extern "C" {
// Type map of the default attributes: one table of 256 entries.
extern const char_map ISO_1_type_map[256];
// The older table: no lexical classes, the graphic bit on every printable byte.
extern const char_map Com_charmap[256];
}

namespace comnlib::latin1 {

constexpr bool in(int byte, int first, int last) {
  return first <= byte && byte <= last;
}

constexpr bool is_upper(int byte) {
  return in(byte, 'A', 'Z') || (in(byte, 0xC0, 0xDE) && byte != 0xD7);
}

// The ordinal signs, the micro sign, sharp s and y with diaeresis have no capital in this set.
constexpr bool is_lower(int byte) {
  return in(byte, 'a', 'z') || (in(byte, 0xDF, 0xFF) && byte != 0xF7) || byte == 0xAA ||
         byte == 0xB5 || byte == 0xBA;
}

constexpr bool has_capital(int byte) {
  return is_lower(byte) && is_upper(byte - 0x20);
}
constexpr bool is_digit(int byte) {
  return in(byte, '0', '9');
}
constexpr bool is_xdigit(int byte) {
  return is_digit(byte) || in(byte, 'A', 'F') || in(byte, 'a', 'f');
}
constexpr bool is_space(int byte) {
  return in(byte, '\t', '\r') || byte == ' ' || byte == 0xA0;
}
constexpr bool is_control(int byte) {
  return byte < 0x20 || in(byte, 0x7F, 0x9F);
}
// For the routines that read money, since the table has no lexical class for currency signs.
constexpr bool is_currency(int byte) {
  return byte == '$' || in(byte, 0xA2, 0xA5);
}

constexpr int classes(int byte) {
  const int bits = is_xdigit(byte) ? COMN_CT_XDIGIT : 0;
  if (is_upper(byte)) return bits | COMN_CT_UPPER;
  if (is_lower(byte)) return bits | COMN_CT_LOWER;
  if (is_digit(byte)) return bits | COMN_CT_DIGIT;
  if (is_space(byte)) return bits | COMN_CT_SPACE;
  return is_control(byte) ? 0 : COMN_CT_PUNCT;
}

constexpr int lexical_class(int byte) {
  const int type = classes(byte);
  if ((type & COMN_CT_ALPHA) != 0) return COMN_LEX_LETTER;
  if ((type & COMN_CT_DIGIT) != 0) return COMN_LEX_DIGIT;
  if ((type & COMN_CT_PUNCT) == 0) return COMN_LEX_SPACE;
  return COMN_LEX_PUNCT;
}

constexpr char_map entry(int byte, int lex, int type) {
  return {static_cast<CS_BYTE>(has_capital(byte) ? byte - 0x20 : byte),
          static_cast<CS_BYTE>(is_upper(byte) ? byte + 0x20 : byte), static_cast<CS_BYTE>(lex),
          static_cast<CS_BYTE>(type)};
}

constexpr char_map default_entry(int byte) {
  return entry(byte, lexical_class(byte), classes(byte));
}

constexpr char_map older_entry(int byte) {
  const bool printable = !is_control(byte);
  return entry(byte, 0, classes(byte) | (printable ? COMN_CT_GRAPH : 0));
}

}  // namespace comnlib::latin1
