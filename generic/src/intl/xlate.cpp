// Translation of text: one loop over a decoder of the source set and an encoder of the target set,
// both inlined into it. Runs of ASCII, which most text is, are moved without decoding.
#include "intl/xlate.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <string_view>

#include "chars/utf.h"
#include "intl/convcfg.h"
#include "intl/convtable.h"
#include "intl/locking.h"

namespace comnlib {
namespace {

using Bytes = std::span<const CS_BYTE>;
using Room = std::span<CS_BYTE>;

// What an encoder says of a character that its set lacks; 0 says that the room is too small.
constexpr std::size_t kLacking = ~std::size_t{0};

// Codecs decode and encode one character each. kAsciiUnit is the size of an ASCII character where
// ASCII stands for itself.

struct Utf8Codec {
  static constexpr std::size_t kAsciiUnit = 1;
  bool ascii() const { return true; }
  Decoded decode(Bytes text) const { return decode_utf8(text); }
  std::size_t encode(char32_t code, Room room) const { return encode_utf8(code, room); }
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

// A single- or double-byte set by its table.
struct TableCodec {
  static constexpr std::size_t kAsciiUnit = 1;
  const ConvTable* table;

  bool ascii() const { return table->ascii; }
  Decoded decode(Bytes text) const {
    const CS_USHORT single = table->single[text[0]];
    if (single != kNoCharacter) return {single, 1};
    if (text.size() < 2) return {0, 0};
    const CS_USHORT pair = table->pairs.at(static_cast<CS_USHORT>(text[0] << 8 | text[1]));
    return pair == kNoCharacter ? Decoded{0, 0} : Decoded{pair, 2};
  }
  std::size_t encode(char32_t code, Room room) const {
    if (code > 0xFFFF) return kLacking;
    const CS_USHORT value = table->reverse.at(static_cast<CS_USHORT>(code));
    if (value == kNoCharacter) return kLacking;
    const std::size_t length = value > 0xFF ? 2 : 1;
    if (length > room.size()) return 0;
    if (length == 2) room[0] = static_cast<CS_BYTE>(value >> 8);
    room[length - 1] = static_cast<CS_BYTE>(value & 0xFF);
    return length;
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

// Moves the ASCII characters at the start of `text`; returns how many there were room for.
template <class From, class To>
std::size_t move_ascii(Bytes text, Room room) {
  constexpr std::size_t kIn = From::kAsciiUnit;
  constexpr std::size_t kOut = To::kAsciiUnit;
  const std::size_t limit = std::min(text.size() / kIn, room.size() / kOut);
  std::size_t count = 0;
  if constexpr (kIn == 1) {
    // Eight at a time while none has its top bit set; the widening loop vectorises.
    constexpr std::uint64_t kTopBits = 0x8080808080808080;
    for (; count + 8 <= limit; count += 8) {
      std::uint64_t block;
      std::memcpy(&block, text.data() + count, sizeof block);
      if ((block & kTopBits) != 0) break;
      for (std::size_t at = 0; at < 8; ++at)
        put_unit<kOut>(room.data() + (count + at) * kOut, text[count + at]);
    }
  }
  for (; count < limit; ++count) {
    const char32_t unit = unit_at<kIn>(text.data() + count * kIn);
    if (unit >= 0x80) break;
    put_unit<kOut>(room.data() + count * kOut, unit);
  }
  return count;
}

template <class From, class To>
Translated run(From from, To to, Bytes text, Room room, Bytes replacement) {
  const bool ascii = from.ascii() && to.ascii();
  std::size_t written = 0;
  CS_RETCODE code = CS_SUCCEED;
  while (!text.empty()) {
    if (ascii) {
      const std::size_t count = move_ascii<From, To>(text, room.subspan(written));
      text = text.subspan(count * From::kAsciiUnit);
      written += count * To::kAsciiUnit;
      if (text.empty()) break;
    }
    const Decoded character = from.decode(text);
    if (character.bytes == 0) return {CS_CVT_BADXLATE, written};
    const Room rest = room.subspan(written);
    std::size_t length = to.encode(character.code, rest);
    if (length == kLacking) {
      if (replacement.empty()) return {CS_CVT_BADXLATE, written};
      length = replacement.size() <= rest.size() ? replacement.size() : 0;
      std::ranges::copy(replacement.first(length), rest.begin());
      if (length != 0) code = CS_CVT_SUBSTITUTED;
    }
    if (length == 0) return {CS_CVT_TRUNCATED, written};
    written += length;
    text = text.subspan(character.bytes);
  }
  return {code, written};
}

// How one end is coded, with its table loaded.
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
  if (!lock.taken()) return CS_FAIL;
  const CS_RETCODE code =
      load_table(context, config.charset.data(), config.table.data(), table, {});
  if (code == CS_SUCCEED) loaded.store(table, std::memory_order_release);
  return code;
}

End open_end(CS_CONTEXT& context, const XlateEnd& end) {
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
  // Without its table a set has no route; only want of memory may pass.
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
      return use(TableCodec{end.table});
  }
  return {CS_CVT_NOXLATE, 0};
}

Bytes replacement_of(const XlateEnd& end) {
  static constexpr CS_BYTE kDefault[] = {'?'};
  if (end.utf16 || end.charset == nullptr || end.charset->conv_config == nullptr) return kDefault;
  const CsConvConfig& config = *end.charset->conv_config;
  return Bytes(config.replacement).first(static_cast<std::size_t>(config.replacement_length));
}

// A set names the conversions that it has; by way of Unicode it needs the one to utf8.
bool leads_to_unicode(const XlateEnd& end, const End& opened) {
  if (opened.coding != Coding::kTable) return true;
  return converts_to(*end.charset->conv_config, "utf8");
}

}  // namespace

Translated translate(CS_CONTEXT* context, XlateEnd from, XlateEnd to, Bytes text, Room room) {
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
