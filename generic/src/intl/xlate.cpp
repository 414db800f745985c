// Translation of text: one loop over a decoder of the source set and an encoder of the target set,
// both inlined into it, which are the whole of the rules. Runs of ASCII and of UTF-8 of two and
// three bytes, which most text is, are moved without them.
#include "intl/xlate.h"

#include <emmintrin.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <type_traits>

#include "chars/utf.h"
#include "intl/convcfg.h"
#include "intl/convtable.h"
#include "intl/kept_status.h"
#include "intl/locking.h"

namespace comnlib {
namespace {

using Room = std::span<CS_BYTE>;

// What an encoder returns for a character that its set lacks; 0 means that the room is too small.
constexpr std::size_t kLacking = ~std::size_t{0};

// The four bytes at the front of UTF-8, the first one lowest. A lead byte below 0xC2 would make an
// overlong pair.
struct Utf8Word {
  std::uint32_t bytes;

  static Utf8Word at(const CS_BYTE* from) {
    Utf8Word word;
    std::memcpy(&word.bytes, from, sizeof word.bytes);
    return word;
  }
  bool is_pair() const { return (bytes & 0xC0E0) == 0x80C0 && (bytes & 0x1E) != 0; }
  bool is_two_pairs() const {
    return (bytes & 0xC0E0C0E0) == 0x80C080C0 && (bytes & 0x1E) != 0 && (bytes & 0x1E0000) != 0;
  }
  char32_t pair() const { return (bytes & 0x1F) << 6 | (bytes >> 8 & 0x3F); }
  char32_t second_pair() const { return Utf8Word{bytes >> 16}.pair(); }
  bool is_triple() const {
    return (bytes & 0xC0C0F0) == 0x8080E0 && triple() >= 0x800 && !is_surrogate(triple());
  }
  char32_t triple() const {
    return (bytes & 0xF) << 12 | (bytes >> 2 & 0xFC0) | (bytes >> 16 & 0x3F);
  }
};

// Codecs decode and encode one character each. kAsciiUnit is the size of an ASCII character where
// ASCII characters are themselves.

struct Utf8Codec {
  static constexpr std::size_t kAsciiUnit = 1;
  bool ascii() const { return true; }
  Decoded decode(Bytes text) const {
    if (text.size() >= sizeof(Utf8Word)) {
      const Utf8Word word = Utf8Word::at(text.data());
      if (word.is_pair()) return {word.pair(), 2};
    }
    return decode_utf8(text);
  }
  // Three bytes are the most frequent length of what comes here.
  std::size_t encode(char32_t code, Room room) const {
    if (code < 0x800 || code > 0xFFFF || room.size() < 3) return encode_utf8(code, room);
    room[0] = static_cast<CS_BYTE>(0xE0 | code >> 12);
    room[1] = static_cast<CS_BYTE>(0x80 | (code >> 6 & 0x3F));
    room[2] = static_cast<CS_BYTE>(0x80 | (code & 0x3F));
    return 3;
  }
};

struct Utf16Codec {
  static constexpr std::size_t kAsciiUnit = 2;
  bool ascii() const { return true; }
  Decoded decode(Bytes text) const { return decode_utf16(text); }
  std::size_t encode(char32_t code, Room room) const { return encode_utf16(code, room); }
};

struct Latin1Codec {
  static constexpr std::size_t kAsciiUnit = 1;
  bool ascii() const { return true; }
  Decoded decode(Bytes text) const { return {text[0], 1}; }
  std::size_t encode(char32_t code, Room room) const {
    if (code > 0xFF) return kLacking;
    if (room.empty()) return 0;
    room[0] = static_cast<CS_BYTE>(code);
    return 1;
  }
};

// A set by its table. Characters of three and four bytes, which are rare in every set, are handled
// separately.
struct TableCodec {
  static constexpr std::size_t kAsciiUnit = 1;
  const ConvTable* table;

  bool ascii() const { return table->ascii; }
  Decoded decode(Bytes text) const {
    const CS_USHORT single = table->single[text[0]];
    if (single != kNoCharacter) return {single, 1};
    if (text.size() < 2) return {0, 0};
    const CS_USHORT pair = table->pairs.at(static_cast<CS_USHORT>(text[0] << 8 | text[1]));
    if (pair != kNoCharacter) return {pair, 2};
    return table->has_longer() ? decode_longer(*table, text) : Decoded{0, 0};
  }
  std::size_t encode(char32_t code, Room room) const {
    if (code > 0xFFFF) return table->has_longer() ? put_longer(code, room) : kLacking;
    const CS_USHORT value = table->reverse.at(static_cast<CS_USHORT>(code));
    if (value == kNoCharacter) return table->has_longer() ? put_longer(code, room) : kLacking;
    const std::size_t length = value > 0xFF ? 2 : 1;
    if (length > room.size()) return 0;
    if (length == 2) room[0] = static_cast<CS_BYTE>(value >> 8);
    room[length - 1] = static_cast<CS_BYTE>(value & 0xFF);
    return length;
  }
  [[gnu::noinline]] std::size_t put_longer(char32_t code, Room room) const {
    const CS_UINT value = encode_longer(*table, code);
    if (value == 0) return kLacking;
    const std::size_t length = value > 0xFFFFFF ? 4 : 3;
    if (length > room.size()) return 0;
    for (std::size_t i = 0; i < length; ++i)
      room[i] = static_cast<CS_BYTE>(value >> 8 * (length - 1 - i));
    return length;
  }
};

// A set of single bytes by its table.
struct SingleByteCodec {
  static constexpr std::size_t kAsciiUnit = 1;
  const ConvTable* table;

  bool ascii() const { return table->ascii; }
  // kNoCharacter for a byte that is not a character.
  char32_t code_of(CS_BYTE byte) const { return table->single[byte]; }
  Decoded decode(Bytes text) const {
    const char32_t code = code_of(text[0]);
    return code == kNoCharacter ? Decoded{0, 0} : Decoded{code, 1};
  }
  std::size_t encode(char32_t code, Room room) const {
    if (code > 0xFFFF) return kLacking;
    const CS_USHORT value = table->reverse.at(static_cast<CS_USHORT>(code));
    if (value == kNoCharacter) return kLacking;
    if (room.empty()) return 0;
    room[0] = static_cast<CS_BYTE>(value);
    return 1;
  }
};

template <std::size_t Unit>
char32_t unit_at(const CS_BYTE* at) {
  if constexpr (Unit == 1) return *at;
  CS_UNICHAR unit;
  std::memcpy(&unit, at, sizeof unit);
  return unit;
}

template <std::size_t Unit>
void put_unit(CS_BYTE* at, char32_t unit) {
  if constexpr (Unit == 1) {
    *at = static_cast<CS_BYTE>(unit);
  } else {
    const auto value = static_cast<CS_UNICHAR>(unit);
    std::memcpy(at, &value, sizeof value);
  }
}

// The state of a translation. Steps take it by value and return it advanced, and are inlined, so
// that it stays in registers.
struct TranslationState {
  const CS_BYTE* in;
  const CS_BYTE* end;
  CS_BYTE* out;
  CS_BYTE* full;

  std::size_t left() const { return static_cast<std::size_t>(end - in); }
  std::size_t room() const { return static_cast<std::size_t>(full - out); }
  void advance(std::size_t read, std::size_t written) {
    in += read;
    out += written;
  }
};

// Characters that are moved at once; there is room for all of them, whichever count.
constexpr std::size_t kBlock = 16;

// Moves the ASCII characters at the front of a block and returns how many they are. The rest of the
// block's room is overwritten too.
template <std::size_t In, std::size_t Out>
std::size_t move_block(const CS_BYTE* in, CS_BYTE* out) {
  const auto load = [in](int at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in) + at);
  };
  const auto save = [out](int at, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out) + at, block);
  };
  const __m128i zero = _mm_setzero_si128();
  const __m128i first = load(0);
  unsigned beyond = 0;  // a bit for each character that is not ASCII
  if constexpr (In == 1) {
    beyond = static_cast<unsigned>(_mm_movemask_epi8(first));
    save(0, Out == 1 ? first : _mm_unpacklo_epi8(first, zero));
    if constexpr (Out == 2) save(1, _mm_unpackhi_epi8(first, zero));
  } else {
    const auto is_ascii = [zero](__m128i units) {
      return _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(~0x7F)), zero);
    };
    const __m128i second = load(1);
    const __m128i ascii = _mm_packs_epi16(is_ascii(first), is_ascii(second));
    beyond = ~static_cast<unsigned>(_mm_movemask_epi8(ascii));
    save(0, Out == 1 ? _mm_packus_epi16(first, second) : first);
    if constexpr (Out == 2) save(1, second);
  }
  return static_cast<std::size_t>(std::countr_zero(beyond | 1U << kBlock));
}

template <std::size_t In>
bool begins_with_ascii(const TranslationState& at) {
  return at.left() >= In && unit_at<In>(at.in) < 0x80;
}

// Moves the ASCII characters that come next, as far as there is room. That all of a block are ASCII
// is the common case, and the processor can go on before it knows.
template <std::size_t In, std::size_t Out>
[[gnu::always_inline]] inline TranslationState move_ascii(TranslationState at) {
  while (at.left() >= kBlock * In && at.room() >= kBlock * Out) {
    const std::size_t count = move_block<In, Out>(at.in, at.out);
    if (count < kBlock) {
      at.advance(count * In, count * Out);
      return at;
    }
    at.advance(kBlock * In, kBlock * Out);
  }
  while (at.left() >= In && at.room() >= Out) {
    const char32_t unit = unit_at<In>(at.in);
    if (unit >= 0x80) break;
    put_unit<Out>(at.out, unit);
    at.advance(In, Out);
  }
  return at;
}

// Moves the characters of two and of three bytes that come next, which most alphabets have in runs,
// as far as the target has them and there is room. Characters of two bytes are moved two at a time.
template <class To>
[[gnu::always_inline]] inline TranslationState move_utf8(TranslationState at, To to) {
  const auto move = [&at, to](char32_t code, std::size_t bytes) {
    const std::size_t length = to.encode(code, {at.out, at.full});
    if (length == 0 || length == kLacking) return false;
    at.advance(bytes, length);
    return true;
  };
  while (at.left() >= sizeof(Utf8Word)) {
    const Utf8Word word = Utf8Word::at(at.in);
    if (!word.is_two_pairs() || !move(word.pair(), 2) || !move(word.second_pair(), 2)) break;
  }
  while (at.left() >= sizeof(Utf8Word)) {
    const Utf8Word word = Utf8Word::at(at.in);
    if (!word.is_triple() || !move(word.triple(), 3)) break;
  }
  return at;
}

// Moves the characters of a single-byte set that come next, as far as they take two bytes of UTF-8
// and there is room.
[[gnu::always_inline]] inline TranslationState move_single_bytes(TranslationState at,
                                                                 SingleByteCodec from) {
  while (at.left() > 0 && at.room() >= 2) {
    const char32_t code = from.code_of(*at.in);
    if (code < 0x80 || code >= 0x800) break;
    at.out[0] = static_cast<CS_BYTE>(0xC0 | code >> 6);
    at.out[1] = static_cast<CS_BYTE>(0x80 | (code & 0x3F));
    at.advance(1, 2);
  }
  return at;
}

template <class From, class To>
Translated run(From from, To to, Bytes text, Room room, Bytes replacement) {
  const bool ascii = from.ascii() && to.ascii();
  TranslationState at{text.data(), text.data() + text.size(), room.data(),
                      room.data() + room.size()};
  const auto result = [&](CS_RETCODE code) {
    return Translated{code, static_cast<std::size_t>(at.out - room.data())};
  };
  CS_RETCODE code = CS_SUCCEED;
  while (at.in != at.end) {
    if (ascii && begins_with_ascii<From::kAsciiUnit>(at))
      at = move_ascii<From::kAsciiUnit, To::kAsciiUnit>(at);
    const CS_BYTE* const before = at.in;
    if constexpr (std::is_same_v<From, Utf8Codec>) at = move_utf8(at, to);
    if constexpr (std::is_same_v<From, SingleByteCodec> && std::is_same_v<To, Utf8Codec>)
      at = move_single_bytes(at, from);
    if (at.in == at.end) break;
    if (at.in != before) continue;
    const Decoded character = from.decode({at.in, at.end});
    if (character.bytes == 0) return result(CS_CVT_BADXLATE);
    std::size_t length = to.encode(character.code, {at.out, at.full});
    if (length == kLacking) {
      length = replacement.size() <= at.room() ? replacement.size() : 0;
      std::copy_n(replacement.data(), length, at.out);
      if (length != 0) code = CS_CVT_SUBSTITUTED;
    }
    if (length == 0) return result(CS_CVT_TRUNCATED);
    at.advance(character.bytes, length);
  }
  return result(code);
}

// How one end of a translation is coded; its table is loaded.
enum class Coding { kUtf8, kUtf16, kLatin1, kTable };

struct End {
  CS_RETCODE code;
  Coding coding;
  const ConvTable* table;
};

// The table of a set, which is looked up under the mutex once and then found in its configuration.
CS_RETCODE table_of(CS_CONTEXT& context, CsConvConfig& config, const ConvTable*& table) {
  const std::atomic_ref<const ConvTable*> loaded(config.loaded_table);
  table = loaded.load(std::memory_order_acquire);
  if (table != nullptr) return CS_SUCCEED;
  const GlobalsLock lock(context);
  const KeptStatus kept(context);
  if (!lock.taken()) return CS_FAIL;
  const CS_RETCODE code =
      load_table(context, config.charset.data(), config.table.data(), table, {});
  if (code == CS_SUCCEED) loaded.store(table, std::memory_order_release);
  return code;
}

End open_end(CS_CONTEXT& context, const Encoding& end) {
  if (end.utf16) return {CS_SUCCEED, Coding::kUtf16, nullptr};
  if (end.charset == nullptr) return {CS_SUCCEED, Coding::kLatin1, nullptr};
  CsConvConfig* config = end.charset->conv_config;
  if (config == nullptr) return {CS_CVT_NOXLATE, Coding::kTable, nullptr};
  if (config->algorithm != nullptr) {
    const bool utf8 = config->algorithm->algorithm == Algorithm::kUtf8;
    return {CS_SUCCEED, utf8 ? Coding::kUtf8 : Coding::kUtf16, nullptr};
  }
  if (config->table[0] == '\0') return {CS_CVT_NOXLATE, Coding::kTable, nullptr};
  const ConvTable* table = nullptr;
  const CS_RETCODE code = table_of(context, *config, table);
  // Without its table a set has no route; only want of memory is reported as such.
  if (code == CS_MEM_ERROR) return {CS_MEM_ERROR, Coding::kTable, nullptr};
  return {code == CS_SUCCEED ? CS_SUCCEED : CS_CVT_NOXLATE, Coding::kTable, table};
}

// Calls `use` with the codec of an end.
template <class Use>
Translated with_codec(const End& end, Use use) {
  switch (end.coding) {
    case Coding::kUtf8:
      return use(Utf8Codec{});
    case Coding::kUtf16:
      return use(Utf16Codec{});
    case Coding::kLatin1:
      return use(Latin1Codec{});
    case Coding::kTable:
      if (end.table->is_single_byte()) return use(SingleByteCodec{end.table});
      return use(TableCodec{end.table});
  }
  return {CS_CVT_NOXLATE, 0};
}

Bytes replacement_of(const Encoding& end) {
  static constexpr CS_BYTE kDefault[] = {'?'};
  if (end.utf16 || end.charset == nullptr || end.charset->conv_config == nullptr) return kDefault;
  const CsConvConfig& config = *end.charset->conv_config;
  return Bytes(config.replacement).first(static_cast<std::size_t>(config.replacement_length));
}

// A set names the conversions that it has; by way of Unicode it needs the one to utf8.
bool leads_to_unicode(const Encoding& end, const End& opened) {
  if (opened.coding != Coding::kTable) return true;
  return converts_to(*end.charset->conv_config, "utf8");
}

}  // namespace

Translated translate(CS_CONTEXT* context, const Encoding& from, const Encoding& to, Bytes text,
                     Room room) {
  const End source = open_end(*context, from);
  if (source.code != CS_SUCCEED) return {source.code, 0};
  const End target = open_end(*context, to);
  if (target.code != CS_SUCCEED) return {target.code, 0};
  if (!leads_to_unicode(from, source)) return {CS_CVT_NOXLATE, 0};

  const Bytes replacement = replacement_of(to);
  return with_codec(source, [&](auto decoder) {
    return with_codec(target,
                      [&](auto encoder) { return run(decoder, encoder, text, room, replacement); });
  });
}

}  // namespace comnlib
