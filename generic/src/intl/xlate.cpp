// Translation of text: one loop over a decoder of the source set and an encoder of the target set,
// both inlined into it, which are the whole of the rules. ASCII is moved by blocks, and characters
// of the frequent lengths without a look at how much is left or fits.
#include "intl/xlate.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
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

// Codecs decode and encode one character each; those without a table ignore theirs.
//   kAsciiUnit      the size of an ASCII character where ASCII characters are themselves, and the
//                   least of any
//   kAhead          bytes that `front` looks at
//   kMost           bytes that a source's kAsciiUnit may become, by `front`
//   front(text, ascii, take)   takes the character at the front, take(code, bytes), if its length
//   is a
//                   frequent one and it is not a letter: those are ASCII from `ascii` on.
//                   Calls `take` for each length, so that the loop around it has no variable one.
//   decode(text)    the character at the front; 0 bytes: the text is malformed or cut here
//   encode(code, to)   the bytes written, at most kMostBytes; 0: the set lacks the character

// What the character at the front is to `front`.
enum class Front { kTaken, kLetter, kOther };

// Of `front`, for a character below U+10000.
template <class Take>
[[gnu::always_inline]] inline Front take_unit(char32_t code, std::size_t bytes, char32_t ascii,
                                              Take take) {
  if (code >= 0x80) return take(code, bytes);
  return code < ascii ? take(code, bytes) : Front::kLetter;
}

struct Utf8Codec {
  static constexpr std::size_t kAsciiUnit = 1;
  static constexpr std::size_t kMost = 3;
  static constexpr std::size_t kAhead = 4;

  explicit Utf8Codec(const ConvTable* /*table*/) {}
  bool ascii() const { return true; }
  // By a word of four bytes, the first one lowest. A lead byte below 0xC2 would make an overlong
  // pair.
  template <class Take>
  [[gnu::always_inline]] Front front(const CS_BYTE* text, char32_t ascii, Take take) const {
    std::uint32_t word;
    std::memcpy(&word, text, sizeof word);
    if ((word & 0xC0E0) == 0x80C0 && (word & 0x1E) != 0)
      return take((word & 0x1F) << 6 | (word >> 8 & 0x3F), 2);
    if ((word & 0x80) == 0) return take_unit(word & 0xFF, 1, ascii, take);
    if ((word & 0xC0C0F0) != 0x8080E0) return Front::kOther;
    const char32_t code = (word & 0xF) << 12 | (word >> 2 & 0xFC0) | (word >> 16 & 0x3F);
    const bool valid = code - 0x800 < 0xD800 - 0x800 || code > 0xDFFF;
    return valid ? take(code, 3) : Front::kOther;
  }
  Decoded decode(Bytes text) const { return decode_utf8(text); }
  std::size_t encode(char32_t code, CS_BYTE* to) const { return encode_utf8(code, to); }
};

struct Utf16Codec {
  static constexpr std::size_t kAsciiUnit = 2;
  static constexpr std::size_t kMost = 2;
  static constexpr std::size_t kAhead = 2;

  explicit Utf16Codec(const ConvTable* /*table*/) {}
  bool ascii() const { return true; }
  template <class Take>
  [[gnu::always_inline]] Front front(const CS_BYTE* text, char32_t ascii, Take take) const {
    CS_UNICHAR unit;
    std::memcpy(&unit, text, sizeof unit);
    if (unit >= 0x80 && unit < 0x800) return take(unit, sizeof unit);
    if (unit < 0x80) return take_unit(unit, sizeof unit, ascii, take);
    return is_surrogate(unit) ? Front::kOther : take(unit, sizeof unit);
  }
  Decoded decode(Bytes text) const { return decode_utf16(text); }
  std::size_t encode(char32_t code, CS_BYTE* to) const { return encode_utf16(code, to); }
};

struct Latin1Codec {
  static constexpr std::size_t kAsciiUnit = 1;
  static constexpr std::size_t kMost = 1;
  static constexpr std::size_t kAhead = 1;

  explicit Latin1Codec(const ConvTable* /*table*/) {}
  bool ascii() const { return true; }
  template <class Take>
  [[gnu::always_inline]] Front front(const CS_BYTE* text, char32_t ascii, Take take) const {
    return take_unit(*text, 1, ascii, take);
  }
  Decoded decode(Bytes text) const { return {text[0], 1}; }
  std::size_t encode(char32_t code, CS_BYTE* to) const {
    if (code > 0xFF) return 0;
    *to = static_cast<CS_BYTE>(code);
    return 1;
  }
};

// A set of single bytes by its table.
struct SingleByteCodec {
  static constexpr std::size_t kAsciiUnit = 1;
  static constexpr std::size_t kMost = 1;
  static constexpr std::size_t kAhead = 1;
  const ConvTable* table;

  explicit SingleByteCodec(const ConvTable* of) : table(of) {}
  bool ascii() const { return table->ascii; }
  template <class Take>
  [[gnu::always_inline]] Front front(const CS_BYTE* text, char32_t ascii, Take take) const {
    const CS_USHORT code = table->single[*text];
    return code == kNoCharacter ? Front::kOther : take_unit(code, 1, ascii, take);
  }
  Decoded decode(Bytes text) const {
    const CS_USHORT code = table->single[text[0]];
    return {code, code == kNoCharacter ? 0U : 1U};
  }
  std::size_t encode(char32_t code, CS_BYTE* to) const {
    if (code > 0xFFFF) return 0;
    const CS_USHORT value = table->reverse.at(static_cast<CS_USHORT>(code));
    if (value == kNoCharacter) return 0;
    *to = static_cast<CS_BYTE>(value);
    return 1;
  }
};

// A set by its table. Characters of three and four bytes, which are rare in every set, are handled
// separately.
struct TableCodec {
  static constexpr std::size_t kAsciiUnit = 1;
  static constexpr std::size_t kMost = 4;
  static constexpr std::size_t kAhead = 2;
  const ConvTable* table;

  explicit TableCodec(const ConvTable* of) : table(of) {}
  bool ascii() const { return table->ascii; }
  CS_USHORT pair_at(const CS_BYTE* text) const {
    return table->pairs.at(static_cast<CS_USHORT>(text[0] << 8 | text[1]));
  }
  template <class Take>
  [[gnu::always_inline]] Front front(const CS_BYTE* text, char32_t ascii, Take take) const {
    const CS_USHORT single = table->single[*text];
    if (single != kNoCharacter) return take_unit(single, 1, ascii, take);
    const CS_USHORT pair = pair_at(text);
    return pair == kNoCharacter ? Front::kOther : take(pair, 2);
  }
  Decoded decode(Bytes text) const {
    const CS_USHORT single = table->single[text[0]];
    if (single != kNoCharacter) return {single, 1};
    if (text.size() < 2) return {0, 0};
    const CS_USHORT pair = pair_at(text.data());
    if (pair != kNoCharacter) return {pair, 2};
    return table->has_longer() ? decode_longer(*table, text) : Decoded{0, 0};
  }
  std::size_t encode(char32_t code, CS_BYTE* to) const {
    const CS_USHORT value =
        code > 0xFFFF ? kNoCharacter : table->reverse.at(static_cast<CS_USHORT>(code));
    if (value == kNoCharacter) return table->has_longer() ? put_longer(code, to) : 0;
    if (value <= 0xFF) {
      *to = static_cast<CS_BYTE>(value);
      return 1;
    }
    const auto pair = static_cast<CS_USHORT>(value << 8 | value >> 8);
    std::memcpy(to, &pair, sizeof pair);
    return 2;
  }
  [[gnu::noinline]] std::size_t put_longer(char32_t code, CS_BYTE* to) const {
    const CS_UINT value = encode_longer(*table, code);
    if (value == 0) return 0;
    const std::size_t length = value > 0xFFFFFF ? 4 : 3;
    for (std::size_t i = 0; i < length; ++i)
      to[i] = static_cast<CS_BYTE>(value >> 8 * (length - 1 - i));
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

// Characters that are moved at once; there is room for all of them, whichever count. The end of a
// text and short ones go by halves.
constexpr std::size_t kBlock = 16;
constexpr std::size_t kHalfBlock = 8;

// Moves the ASCII characters at the front of a block. The rest of the block's room is overwritten
// too. Returns a bit for each character that is not ASCII.
template <std::size_t In, std::size_t Out, std::size_t Count>
[[gnu::always_inline]] inline unsigned move_block(const CS_BYTE* in, CS_BYTE* out) {
  constexpr std::size_t kRegister = sizeof(__m128i);
  const auto load = [in](std::size_t at) {
    const auto* from = reinterpret_cast<const __m128i*>(in + at);
    return In * Count < kRegister ? _mm_loadl_epi64(from) : _mm_loadu_si128(from);
  };
  const auto save = [out](std::size_t at, __m128i block) {
    auto* to = reinterpret_cast<__m128i*>(out + at);
    if constexpr (Out * Count < kRegister) {
      _mm_storel_epi64(to, block);
    } else {
      _mm_storeu_si128(to, block);
    }
  };
  const __m128i zero = _mm_setzero_si128();
  const __m128i first = load(0);
  unsigned beyond = 0;
  if constexpr (In == 1) {
    beyond = static_cast<unsigned>(_mm_movemask_epi8(first));
    save(0, Out == 1 ? first : _mm_unpacklo_epi8(first, zero));
    if constexpr (Out * Count > kRegister) save(kRegister, _mm_unpackhi_epi8(first, zero));
  } else {
    const auto is_ascii = [zero](__m128i units) {
      return _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(~0x7F)), zero);
    };
    const __m128i second = In * Count > kRegister ? load(kRegister) : zero;
    const __m128i ascii = _mm_packs_epi16(is_ascii(first), is_ascii(second));
    beyond = ~static_cast<unsigned>(_mm_movemask_epi8(ascii));
    save(0, Out == 1 ? _mm_packus_epi16(first, second) : first);
    if constexpr (Out * Count > kRegister) save(kRegister, second);
  }
  return beyond & ((1U << Count) - 1);
}

// Moves the ASCII characters that come next one by one.
template <std::size_t In, std::size_t Out>
[[gnu::always_inline]] inline TranslationState move_units(TranslationState at) {
  while (at.left() >= In && at.room() >= Out) {
    const char32_t unit = unit_at<In>(at.in);
    if (unit >= 0x80) break;
    put_unit<Out>(at.out, unit);
    at.advance(In, Out);
  }
  return at;
}

// Moves the ASCII characters that come next where there may be no room for a block.
template <std::size_t In, std::size_t Out>
[[gnu::always_inline]] inline TranslationState move_short(TranslationState at) {
  if (at.left() >= kHalfBlock * In && at.room() >= kHalfBlock * Out) {
    const unsigned beyond = move_block<In, Out, kHalfBlock>(at.in, at.out) | 1U << kHalfBlock;
    const auto count = static_cast<std::size_t>(std::countr_zero(beyond));
    at.advance(count * In, count * Out);
  }
  return move_units<In, Out>(at);
}

// Moves the frequent character at the front, which is no letter.
template <class From, class To>
[[gnu::always_inline]] inline Front move_front(const CS_BYTE*& in, CS_BYTE*& out, From from, To to,
                                               char32_t ascii) {
  const auto take =
      [&in, &out, to ](char32_t code, std::size_t bytes) __attribute__((always_inline)) {
    const std::size_t length = to.encode(code, out);
    if (length == 0) return Front::kOther;
    in += bytes;
    out += length;
    return Front::kTaken;
  };
  return from.front(in, ascii, take);
}

// The same from single bytes to UTF-8, by the table of their forms.
[[gnu::always_inline]] inline Front move_front(const CS_BYTE*& in, CS_BYTE*& out,
                                               SingleByteCodec from, Utf8Codec /*to*/,
                                               char32_t ascii) {
  const CS_UINT form = from.table->utf8[*in];
  std::memcpy(out, &form, sizeof form);
  if (form == 0) return *in >= ascii && *in < 0x80 ? Front::kLetter : Front::kOther;
  ++in;
  out += form >> 24;
  return Front::kTaken;
}

// The places where something of that size may begin end here.
template <class Byte>
Byte* end_of_places(Byte* first, Byte* end, std::size_t size) {
  const auto all = static_cast<std::size_t>(end - first);
  return all < size ? first : first + (all - size) + 1;
}

// Moves ASCII characters by blocks, and what is between them where a block's bits show it. A block
// may begin before `in_limit` and `out_limit`, and a frequent character before `stop`. False when
// one is not frequent.
template <class From, class To>
[[gnu::always_inline]] inline bool move_blocks(const CS_BYTE*& in, CS_BYTE*& out, From from, To to,
                                               const CS_BYTE* stop, const CS_BYTE* in_limit,
                                               const CS_BYTE* out_limit) {
  constexpr std::size_t kIn = From::kAsciiUnit, kOut = To::kAsciiUnit;
  const auto advance = [&in, &out](std::size_t count) {
    in += count * kIn;
    out += count * kOut;
  };
  while (in < in_limit && out < out_limit) {
    unsigned beyond = move_block<kIn, kOut, kBlock>(in, out);
    // The common case, in which the processor can go on before it knows.
    if (beyond == 0) {
      advance(kBlock);
      continue;
    }
    while (true) {
      const auto count = static_cast<std::size_t>(std::countr_zero(beyond));
      advance(count);
      if (in >= stop) return true;
      const CS_BYTE* const before = in;
      if (move_front(in, out, from, to, 0x80) != Front::kTaken) return false;
      beyond >>= count + static_cast<std::size_t>(in - before) / kIn;
      if (beyond == 0 || in >= in_limit || out >= out_limit) break;
      move_block<kIn, kOut, kBlock>(in, out);
    }
  }
  return true;
}

// Moves what comes next as far as it is frequent: letters from `ascii` on by blocks, others one by
// one. Lengths are looked at once for as many characters as surely fit.
template <class From, class To>
[[gnu::always_inline]] inline TranslationState move_frequent(const TranslationState& at, From from,
                                                             To to, char32_t ascii) {
  constexpr std::size_t kIn = From::kAsciiUnit, kOut = To::kAsciiUnit;
  const CS_BYTE* in = at.in;
  CS_BYTE* out = at.out;
  const CS_BYTE* const in_limit = end_of_places(in, at.end, kBlock * kIn);
  const CS_BYTE* const out_limit = end_of_places(out, at.full, kBlock * kOut);
  const auto state = [&] { return TranslationState{in, at.end, out, at.full}; };
  while (state().left() >= From::kAhead && state().room() >= kMostBytes) {
    const std::size_t sure =
        std::min((state().left() - From::kAhead) / kIn, (state().room() - kMostBytes) / To::kMost);
    const CS_BYTE* const stop = in + sure * kIn + 1;
    do {
      const Front front = move_front(in, out, from, to, ascii);
      if (front == Front::kTaken) continue;
      if (front == Front::kOther ||
          !move_blocks(in, out, from, to, stop, std::min(stop, in_limit), out_limit))
        return state();
      const TranslationState moved = move_short<kIn, kOut>(state());
      in = moved.in;
      out = moved.out;
    } while (in < stop);
  }
  return state();
}

// Written for characters that a set lacks.
Bytes replacement_of(const Encoding& end) {
  static constexpr CS_BYTE kDefault[] = {'?'};
  if (end.utf16 || end.charset == nullptr || end.charset->conv_config == nullptr) return kDefault;
  const CsConvConfig& config = *end.charset->conv_config;
  return Bytes(config.replacement).first(static_cast<std::size_t>(config.replacement_length));
}

// Translates what is between two pointers into what is between two others: in 32-bit code spans
// that are passed on are read back before they are wholly written, which takes longer than a
// character. The tables are null where an end has none.
template <class From, class To>
Translated run(const ConvTable* from_table, const ConvTable* to_table, const Encoding& target,
               const CS_BYTE* in, const CS_BYTE* end, CS_BYTE* const out, CS_BYTE* full) {
  const From from(from_table);
  const To to(to_table);
  TranslationState at{in, end, out, full};
  const auto result = [&](CS_RETCODE code) {
    return Translated{code, static_cast<std::size_t>(at.out - out)};
  };
  // Letters of ASCII go by blocks, what is between words along with the words.
  const bool ascii = from.ascii() && to.ascii();
  const char32_t first_letter = ascii ? 0x40 : 0x80;
  CS_RETCODE code = CS_SUCCEED;
  while (at.in != at.end) {
    at = move_frequent(at, from, to, first_letter);
    const CS_BYTE* const before = at.in;
    if (ascii) at = move_units<From::kAsciiUnit, To::kAsciiUnit>(at);
    if (at.in == at.end) break;
    if (at.in != before) continue;
    const Decoded character = from.decode({at.in, at.end});
    if (character.bytes == 0) return result(CS_CVT_BADXLATE);
    std::array<CS_BYTE, kMostBytes> held;
    const bool fits = at.room() >= kMostBytes;
    const std::size_t length = to.encode(character.code, fits ? at.out : held.data());
    if (length == 0 || !fits) {
      const Bytes bytes = length == 0 ? replacement_of(target) : Bytes(held).first(length);
      if (bytes.size() > at.room()) return result(CS_CVT_TRUNCATED);
      if (length == 0) code = CS_CVT_SUBSTITUTED;
      std::ranges::copy(bytes, at.out);
      at.out += bytes.size();
    } else {
      at.out += length;
    }
    at.in += character.bytes;
  }
  return result(code);
}

// The codecs as numbers, in the order of kRuns.
enum class Coding { kUtf8, kUtf16, kLatin1, kSingleByte, kTable };

using Run = Translated (*)(const ConvTable*, const ConvTable*, const Encoding&, const CS_BYTE*,
                           const CS_BYTE*, CS_BYTE*, CS_BYTE*);
template <class From>
constexpr std::array<Run, 5> kRunsFrom = {run<From, Utf8Codec>, run<From, Utf16Codec>,
                                          run<From, Latin1Codec>, run<From, SingleByteCodec>,
                                          run<From, TableCodec>};
constexpr std::array<std::array<Run, 5>, 5> kRuns = {
    kRunsFrom<Utf8Codec>, kRunsFrom<Utf16Codec>, kRunsFrom<Latin1Codec>, kRunsFrom<SingleByteCodec>,
    kRunsFrom<TableCodec>};

// How one end of a translation is coded; its table is loaded.
struct End {
  CS_RETCODE code;
  Coding coding;
  const ConvTable* table;
};

// Loads the table of a set, which is looked up under the mutex once and then found in its
// configuration.
[[gnu::noinline]] CS_RETCODE load_table_of(CS_CONTEXT& context, CsConvConfig& config) {
  if (config.table[0] == '\0') return CS_CVT_NOXLATE;
  const GlobalsLock lock(context);
  const KeptStatus kept(context);
  if (!lock.taken()) return CS_CVT_NOXLATE;
  const ConvTable* table = nullptr;
  const CS_RETCODE code =
      load_table(context, config.charset.data(), config.table.data(), table, {});
  if (code == CS_SUCCEED)
    std::atomic_ref(config.loaded_table).store(table, std::memory_order_release);
  // Without its table a set has no route; only want of memory is reported as such.
  return code == CS_SUCCEED || code == CS_MEM_ERROR ? code : CS_CVT_NOXLATE;
}

[[gnu::always_inline]] inline End open_end(CS_CONTEXT& context, const Encoding& end) {
  if (end.utf16) return {CS_SUCCEED, Coding::kUtf16, nullptr};
  if (end.charset == nullptr) return {CS_SUCCEED, Coding::kLatin1, nullptr};
  CsConvConfig* config = end.charset->conv_config;
  if (config == nullptr) return {CS_CVT_NOXLATE, Coding::kTable, nullptr};
  if (config->algorithm != nullptr) {
    const bool utf8 = config->algorithm->algorithm == Algorithm::kUtf8;
    return {CS_SUCCEED, utf8 ? Coding::kUtf8 : Coding::kUtf16, nullptr};
  }
  const std::atomic_ref loaded(config->loaded_table);
  const ConvTable* table = loaded.load(std::memory_order_acquire);
  if (table == nullptr) [[unlikely]] {
    const CS_RETCODE code = load_table_of(context, *config);
    if (code != CS_SUCCEED) return {code, Coding::kTable, nullptr};
    table = loaded.load(std::memory_order_acquire);
  }
  return {CS_SUCCEED, table->single_bytes ? Coding::kSingleByte : Coding::kTable, table};
}

}  // namespace

Translated translate(CS_CONTEXT* context, const Encoding& from, const Encoding& to, Bytes text,
                     Room room) {
  const End source = open_end(*context, from);
  if (source.code != CS_SUCCEED) return {source.code, 0};
  const End target = open_end(*context, to);
  if (target.code != CS_SUCCEED) return {target.code, 0};
  // A set names the conversions that it has; by way of Unicode it needs the one to utf8.
  if (source.table != nullptr && !from.charset->conv_config->to_utf8) return {CS_CVT_NOXLATE, 0};

  const Run translated =
      kRuns[static_cast<std::size_t>(source.coding)][static_cast<std::size_t>(target.coding)];
  return translated(source.table, target.table, to, text.data(), text.data() + text.size(),
                    room.data(), room.data() + room.size());
}

}  // namespace comnlib
