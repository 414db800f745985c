// Text in a character set, walked character by character without reading past its end.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "chars/iso_1.h"
#include "comnlib/charset.h"

namespace comnlib {

// The bytes of a text, and how they are read: by the attributes of a character set, as plain bytes
// when there are none, or as UTF-16 in host byte order.
struct Text {
  std::span<const CS_BYTE> bytes;
  const char_attrib* attrib;
  bool utf16 = false;
  bool ascii_based = false;  // as is_ascii_based says of the attributes
};

// Whether every byte is below 0x80. Short texts are checked as two words that may overlap.
inline bool is_ascii(std::span<const CS_BYTE> bytes) {
  const auto ends_are_ascii = [bytes]<class Word>(Word) {
    Word first, last;
    std::memcpy(&first, bytes.data(), sizeof first);
    std::memcpy(&last, bytes.data() + bytes.size() - sizeof last, sizeof last);
    return ((first | last) & static_cast<Word>(0x8080808080808080)) == 0;
  };
  constexpr std::size_t kBlock = sizeof(__m128i);
  if (bytes.size() < kBlock) {
    if (bytes.size() >= 8) return ends_are_ascii(std::uint64_t{});
    if (bytes.size() >= 4) return ends_are_ascii(std::uint32_t{});
    return std::ranges::all_of(bytes, [](CS_BYTE byte) { return byte < 0x80; });
  }
  const auto block = [bytes](std::size_t at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data() + at));
  };
  __m128i all = block(bytes.size() - kBlock);
  for (std::size_t at = 0; at + kBlock < bytes.size(); at += kBlock)
    all = _mm_or_si128(all, block(at));
  return _mm_movemask_epi8(all) == 0;
}

// Whether a text reads like plain bytes: it has no character set, or only ASCII characters of a set
// in which they read like plain bytes.
inline bool is_plain(const Text& text) {
  if (text.attrib == nullptr) return !text.utf16;
  return text.ascii_based && is_ascii(text.bytes);
}

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

inline bool is_default_space(CS_BYTE byte) {
  return (ISO_1_type_map[byte].char_type & COMN_CT_SPACE) != 0;
}

// The tables read a second byte where the first byte requires it, so a character that is cut is
// completed with a zero byte first.
[[gnu::noinline]] inline TextChar first_multibyte_char(Text text) {
  const std::array<CS_BYTE, 2> head = {text.bytes[0],
                                       text.bytes.size() > 1 ? text.bytes[1] : CS_BYTE{0}};
  const auto width =
      static_cast<std::size_t>(std::max(comn_char_width(text.attrib, head.data()), CS_INT{1}));
  if (width > text.bytes.size()) return {text.bytes, 0, false, true};
  return {text.bytes.first(width), comn_to_ascii(text.attrib, head.data()),
          comn_isspace(text.attrib, head.data()) != 0, false};
}

// The first character of a text that is not UTF-16 and not empty. A single byte, the common case,
// is looked up directly.
inline TextChar first_char(const Text& text) {
  const CS_BYTE byte = text.bytes.front();
  if (text.attrib == nullptr) return {text.bytes.first(1), byte, is_default_space(byte), false};
  const char_map& entry = text.attrib->cs_type_map[byte];
  const CS_BYTE* widths = text.attrib->cs_width_map;
  const bool single = widths == nullptr || (widths[byte] & 0xF) <= 1;
  if (!single || (entry.char_type & COMN_CT_LEAD) != 0) return first_multibyte_char(text);
  const CS_BYTE* forms = text.attrib->cs_norm_map;
  return {text.bytes.first(1), forms == nullptr ? entry.char_lower : forms[byte],
          (entry.char_type & COMN_CT_SPACE) != 0, false};
}

// Readers walk a text by the ASCII forms of its characters. All have the same shape: `done`, and
// while it is false, for the character that is next, `ascii` (0: it has no ASCII form), `space`,
// `nul` and `skip`.

class TableReader {
 public:
  explicit TableReader(const Text& text)
      : attrib_(text.attrib), at_(text.bytes.data()), end_(at_ + text.bytes.size()) {
    look();
  }
  bool done() const { return at_ == end_; }
  int ascii() const { return ascii_; }
  bool space() const { return space_; }
  bool nul() const { return width_ == 1 && *at_ == 0; }
  void skip() {
    at_ += width_;
    look();
  }

 private:
  void look() {
    if (done()) return;
    const TextChar next = first_char({{at_, end_}, attrib_});
    width_ = next.bytes.size();
    ascii_ = next.ascii;
    space_ = next.space;
  }
  const char_attrib* attrib_;
  const CS_BYTE* at_;
  const CS_BYTE* end_;
  std::size_t width_ = 0;
  int ascii_ = 0;
  bool space_ = false;
};

// For sets without widths: every character is one byte.
class SingleByteReader {
 public:
  explicit SingleByteReader(const Text& text)
      : types_(text.attrib->cs_type_map),
        forms_(text.attrib->cs_norm_map),
        at_(text.bytes.data()),
        end_(at_ + text.bytes.size()) {}
  bool done() const { return at_ == end_; }
  int ascii() const { return forms_ == nullptr ? types_[*at_].char_lower : forms_[*at_]; }
  bool space() const { return (types_[*at_].char_type & COMN_CT_SPACE) != 0; }
  bool nul() const { return *at_ == 0; }
  void skip() { ++at_; }

 private:
  const char_map* types_;
  const CS_BYTE* forms_;
  const CS_BYTE* at_;
  const CS_BYTE* end_;
};

// For plain bytes, the common case in columns of numbers: no widths are needed.
class PlainReader {
 public:
  explicit PlainReader(std::span<const CS_BYTE> bytes)
      : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}
  bool done() const { return at_ == end_; }
  int ascii() const { return *at_; }
  bool space() const { return is_default_space(*at_); }
  bool nul() const { return *at_ == 0; }
  void skip() { ++at_; }
  // Only this reader has these: the bytes that are left, and a way to skip several of them.
  std::span<const CS_BYTE> rest() const { return {at_, end_}; }
  void skip(std::size_t count) { at_ += count; }

 private:
  const CS_BYTE* at_;
  const CS_BYTE* end_;
};

// Code units up to 0xFF read as ISO 8859-1, and full-width forms as their ASCII characters. The
// text has whole units.
class Utf16Reader {
 public:
  explicit Utf16Reader(std::span<const CS_BYTE> bytes)
      : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}
  bool done() const { return at_ == end_; }
  int ascii() const {
    constexpr int kFullWidth = 0xFF01 - '!';
    const int code = unit();
    if (code <= 0xFF) return code;
    return code >= '!' + kFullWidth && code <= '~' + kFullWidth ? code - kFullWidth : 0;
  }
  bool space() const {
    constexpr int kIdeographicSpace = 0x3000;
    const int code = unit();
    return code <= 0xFF ? is_default_space(static_cast<CS_BYTE>(code)) : code == kIdeographicSpace;
  }
  bool nul() const { return unit() == 0; }
  void skip() { at_ += sizeof(CS_UNICHAR); }

 private:
  int unit() const {
    CS_UNICHAR code;
    std::memcpy(&code, at_, sizeof code);
    return code;
  }
  const CS_BYTE* at_;
  const CS_BYTE* end_;
};

template <class Reader>
void skip_blanks(Reader& reader) {
  while (!reader.done() && reader.space()) reader.skip();
}

// Calls `use` with the reader that suits the text.
template <class Use>
[[gnu::always_inline]] inline auto with_reader(const Text& text, Use use) {
  if (is_plain(text)) return use(PlainReader(text.bytes));
  if (text.utf16) return use(Utf16Reader(text.bytes));
  const bool single = text.attrib->cs_width_map == nullptr;
  return single ? use(SingleByteReader(text)) : use(TableReader(text));
}

}  // namespace comnlib
