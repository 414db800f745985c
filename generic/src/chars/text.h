// Text in a character set, walked character by character without reading past its end.
#pragma once

#include <algorithm>
#include <array>
#include <span>

#include "chars/iso_1.h"
#include "comnlib/charset.h"

namespace comnlib {

// The bytes of a text and the attributes of its character set; null attributes: plain bytes.
struct Text {
  std::span<const CS_BYTE> bytes;
  const char_attrib* attrib;
};

// Whether every byte is a character by itself.
inline bool is_single_byte(const char_attrib* attrib) {
  return attrib == nullptr || attrib->cs_maxcharlen <= 1;
}

// One character: its bytes in the text, its ASCII form (0 when it has none or is cut by the end of
// the text), and whether it is a blank.
struct TextChar {
  std::span<const CS_BYTE> bytes;
  int ascii;
  bool space;
  bool cut;
};

inline TextChar first_char(Text text) {
  if (text.attrib == nullptr) {
    const CS_BYTE byte = text.bytes.front();
    const bool space = (ISO_1_type_map[byte].char_type & COMN_CT_SPACE) != 0;
    return {text.bytes.first(1), byte, space, false};
  }
  // The tables look at a second byte where the first one asks for it, so a cut character is
  // completed here.
  const std::array<CS_BYTE, 2> head = {text.bytes[0], text.bytes.size() > 1 ? text.bytes[1] : CS_BYTE{0}};
  const auto width = static_cast<std::size_t>(comn_char_width(text.attrib, head.data()));
  if (width > text.bytes.size()) return {text.bytes, 0, false, true};
  return {text.bytes.first(width), comn_to_ascii(text.attrib, head.data()),
          comn_isspace(text.attrib, head.data()) != 0, false};
}

// Walks a text: `next` is the next character, `skip` moves behind it.
class TextReader {
 public:
  explicit TextReader(Text text) : text_(text) {}
  bool done() const { return text_.bytes.empty(); }
  TextChar next() const { return first_char(text_); }
  void skip(const TextChar& character) { text_.bytes = text_.bytes.subspan(character.bytes.size()); }
  void skip_blanks() {
    while (!done()) {
      const TextChar character = next();
      if (!character.space) return;
      skip(character);
    }
  }

 private:
  Text text_;
};

}  // namespace comnlib
