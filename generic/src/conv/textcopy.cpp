// Copies of text. Nothing is lost silently: text is cut only where the destination is shorter, and
// then CS_CVT_TRUNCATED says so.
#include "conv/textcopy.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

#include "chars/text.h"
#include "chars/utf.h"
#include "conv/newutils.h"

namespace comnlib {
namespace {

struct Copied {
  CS_RETCODE code;  // CS_SUCCEED, CS_CVT_SUBSTITUTED, CS_CVT_TRUNCATED or a failure
  CS_INT length;    // bytes written
  CS_INT needed;    // bytes of the whole text: more than the room when it was cut
};

CS_INT size_of(Bytes bytes) {
  return static_cast<CS_INT>(bytes.size());
}

// How many bytes at the front of a text are single-byte characters other than quotes and NULs. The
// result may be too small, but never too large.
std::size_t simple_bytes(const Text& text) {
  if (text.attrib != nullptr && !text.ascii_based) return 0;
  const bool any_byte = text.attrib == nullptr;
  constexpr std::size_t kBlock = sizeof(__m128i);
  const std::size_t size = text.bytes.size();
  const CS_BYTE* bytes = text.bytes.data();
  std::size_t at = 0;
  for (; size - at >= kBlock; at += kBlock) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
    const __m128i stops = _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\'')),
                                       _mm_cmpeq_epi8(block, _mm_setzero_si128()));
    const int stopped = _mm_movemask_epi8(any_byte ? stops : _mm_or_si128(stops, block));
    if (stopped != 0)
      return at + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(stopped)));
  }
  const auto is_simple = [any_byte](CS_BYTE byte) {
    return byte != '\'' && byte != 0 && (any_byte || byte < 0x80);
  };
  while (at < size && is_simple(bytes[at])) ++at;
  return at;
}

// How many bytes of a text go into `room` bytes: all of them where they fit, even if the last
// character is cut off by the end of the text; else as many whole characters as do.
CS_INT fitting_bytes(Text text, CS_INT room) {
  if (size_of(text.bytes) <= room) return size_of(text.bytes);
  const CS_BYTE* widths = text.attrib == nullptr ? nullptr : text.attrib->cs_width_map;
  if (widths == nullptr) return room;
  const Text fitting{text.bytes.first(static_cast<std::size_t>(room)), text.attrib, false,
                     text.ascii_based};
  auto length = static_cast<CS_INT>(simple_bytes(fitting));
  while (length < room) {
    const int width = std::max(widths[text.bytes[static_cast<std::size_t>(length)]] & 0xF, 1);
    if (width > room - length) break;
    length += width;
  }
  return length;
}

// The same for UTF-16. A cut never keeps half a unit or the first half of a pair.
CS_INT fitting_utf16(Bytes text, CS_INT room) {
  constexpr CS_INT kUnit = sizeof(CS_UNICHAR);
  if (size_of(text) <= room) return size_of(text);
  const CS_INT length = room - room % kUnit;
  if (length == 0) return 0;
  const auto last = load<CS_UNICHAR>(text.data() + length - kUnit);
  return is_high_surrogate(last) ? length - kUnit : length;
}

// Copies text within one encoding.
Copied copy_text(Text text, std::span<CS_BYTE> room) {
  const auto limit = static_cast<CS_INT>(room.size());
  const CS_INT needed = size_of(text.bytes);
  const CS_INT length = text.utf16 ? fitting_utf16(text.bytes, limit) : fitting_bytes(text, limit);
  std::memmove(room.data(), text.bytes.data(), static_cast<std::size_t>(length));
  return {needed <= limit ? CS_SUCCEED : CS_CVT_TRUNCATED, length, needed};
}

[[gnu::always_inline]] inline Copied translate_text(Bytes text, const Encoding& from,
                                                    const Encoding& to, std::span<CS_BYTE> room,
                                                    CS_CONTEXT* context) {
  if (text.empty()) return {CS_SUCCEED, 0, 0};
  if (from.utf16 && text.size() % sizeof(CS_UNICHAR) != 0) return {CS_CVT_BADXLATE, 0, 0};
  const Translated result = translate(context, from, to, text, room);
  const auto written = static_cast<CS_INT>(result.written);
  const bool cut = result.code == CS_CVT_TRUNCATED;
  return {result.code, written, cut ? std::numeric_limits<CS_INT>::max() : written};
}

// How far the doubling of quotes goes within `room` bytes.
struct Doubling {
  std::size_t taken;    // bytes of the source
  std::size_t written;  // bytes that they become
  bool cut;
  bool ended_by_nul;
};

bool is_quote(const TextChar& character) {
  return character.ascii == '\'';
}

// A character that is cut off by the end of the text is not a quote and is copied like any other.
Doubling measure_doubling(Text text, std::size_t room, bool nul_ends) {
  Doubling result{0, 0, false, false};
  while (true) {
    const std::size_t simple = std::min(simple_bytes(text), room - result.written);
    result.taken += simple;
    result.written += simple;
    text.bytes = text.bytes.subspan(simple);
    if (text.bytes.empty()) break;
    const TextChar character = first_char(text);
    const std::size_t width = character.bytes.size();
    const std::size_t output = is_quote(character) ? 2 * width : width;
    if (output > room - result.written) {
      result.cut = true;
      break;
    }
    result.taken += width;
    result.written += output;
    text.bytes = text.bytes.subspan(width);
    if (nul_ends && width == 1 && character.bytes[0] == 0) {
      result.ended_by_nul = true;
      break;
    }
  }
  return result;
}

// Writes the text with its quotes doubled. `dest` may be before the text in the same buffer, by as
// many bytes as the doubling adds.
void write_doubled(Text text, CS_BYTE* dest) {
  while (true) {
    const std::size_t simple = simple_bytes(text);
    std::memmove(dest, text.bytes.data(), simple);
    dest += simple;
    text.bytes = text.bytes.subspan(simple);
    if (text.bytes.empty()) break;
    const TextChar character = first_char(text);
    const std::size_t width = character.bytes.size();
    const bool quote = is_quote(character);
    std::array<CS_BYTE, 16> held;
    std::memcpy(held.data(), character.bytes.data(), width);
    text.bytes = text.bytes.subspan(width);
    for (int copies = quote ? 2 : 1; copies > 0; --copies, dest += width)
      std::memcpy(dest, held.data(), width);
  }
}

// Copies the text with its quotes doubled, as far as whole characters fit. The text may be in the
// room itself: it is first moved to the end of the bytes that it becomes, so that each character is
// read before it is overwritten.
Doubling copy_doubling(Text text, std::span<CS_BYTE> room, bool nul_ends) {
  const Doubling doubling = measure_doubling(text, room.size(), nul_ends);
  CS_BYTE* moved = room.data() + (doubling.written - doubling.taken);
  std::memmove(moved, text.bytes.data(), doubling.taken);
  if (doubling.written != doubling.taken)
    write_doubled({{moved, doubling.taken}, text.attrib, false, text.ascii_based}, room.data());
  return doubling;
}

// Terminates and pads a text destination of `Unit`s; copied.needed decides whether the text fits.
template <class Unit>
CS_RETCODE finish_text(const Copied& copied, const Conversion& call) {
  constexpr CS_INT kUnit = sizeof(Unit);
  const CS_INT room = call.destfmt->maxlength - call.destfmt->maxlength % kUnit;
  *call.destlen = copied.length;
  constexpr CS_INT kPadding = CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  if ((call.destfmt->format & kPadding) == 0 && copied.needed <= room) return copied.code;
  if (terminates(*call.destfmt) && copied.length >= room - copied.length % kUnit) {
    if (room == 0) return CS_CVT_TRUNCATED;
    store(static_cast<CS_BYTE*>(call.dest) + room - kUnit, Unit{0});
    *call.destlen = room;
    return CS_CVT_TRUNCATED;
  }
  const CS_RETCODE padded =
      kUnit == 1 ? comn__padchar(copied.needed, call.destfmt, call.dest, call.destlen)
                 : comn__padunichar(copied.needed, call.destfmt, call.dest, call.destlen);
  if (padded == CS_CVT_OVERFLOW) return CS_CVT_TRUNCATED;
  return padded == CS_SUCCEED ? copied.code : padded;
}

bool is_failure(CS_RETCODE code) {
  return code != CS_SUCCEED && code != CS_CVT_SUBSTITUTED && code != CS_CVT_TRUNCATED;
}

CS_RETCODE store_length(CS_RETCODE code, const Copied& copied, const Conversion& call) {
  *call.destlen = copied.length;
  return code;
}

std::span<CS_BYTE> room_of(const Conversion& call) {
  require(call.destfmt->maxlength >= 0);
  return {static_cast<CS_BYTE*>(call.dest), static_cast<std::size_t>(call.destfmt->maxlength)};
}

// A text that ended with its own NUL gets no second one. A cut is returned as it is, but a full
// destination still ends in the NUL that was asked for.
CS_RETCODE finish_doubled(Copied copied, const Doubling& doubling, const Conversion& call) {
  copied.length = static_cast<CS_INT>(doubling.written);
  const CS_INT room = call.destfmt->maxlength;
  if (doubling.cut) {
    if (terminates(*call.destfmt) && copied.length == room)
      store(static_cast<CS_BYTE*>(call.dest) + room - 1, '\0');
    return store_length(CS_CVT_TRUNCATED, copied, call);
  }
  constexpr CS_INT kPadding = CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  const bool padded = (call.destfmt->format & kPadding) != 0;
  const bool fits = std::max(copied.needed, copied.length) < room;
  if (!doubling.ended_by_nul || padded || !fits) return finish_text<CS_CHAR>(copied, call);
  *call.destlen = copied.length;
  return copied.code;
}

CS_RETCODE copy_doubled(Text text, const Conversion& call) {
  const Doubling doubling = copy_doubling(text, room_of(call), terminates(*call.destfmt));
  return finish_doubled({CS_SUCCEED, 0, size_of(text.bytes)}, doubling, call);
}

CS_RETCODE copy_translated(Bytes text, const Encoding& from, const Encoding& to,
                           const Conversion& call) {
  const std::span<CS_BYTE> room = room_of(call);
  Copied copied = translate_text(text, from, to, room, call.context);
  if (is_failure(copied.code)) return store_length(copied.code, copied, call);
  if ((call.destfmt->format & CS_DFMT_ESCQUOTE) == 0) return finish_text<CS_CHAR>(copied, call);
  const Text translated = text_in(to, room.first(static_cast<std::size_t>(copied.length)));
  const Doubling doubling = copy_doubling(translated, room, terminates(*call.destfmt));
  if (copied.code != CS_CVT_TRUNCATED) copied.needed = static_cast<CS_INT>(doubling.written);
  return finish_doubled(copied, doubling, call);
}

}  // namespace

CS_RETCODE internal::copy_any_to_character(const CS_BYTE* bytes, std::size_t size, bool utf16,
                                           COMNLIB_CONVERSION_PARAMETERS) {
  const Bytes text(bytes, size);
  const Conversion call{context, srcfmt, src, destfmt, dest, destlen};
  const std::span<CS_BYTE> room = room_of(call);
  if (text.empty() || room.empty())
    return finish_text<CS_CHAR>({CS_SUCCEED, 0, size_of(text)}, call);
  const Encoding from = source_encoding(utf16, call);
  const Encoding to = encoding_of(*call.context, *call.destfmt);
  if (!same_encoding(from, to)) return copy_translated(text, from, to, call);
  const Text source = text_in(from, text);
  if ((call.destfmt->format & CS_DFMT_ESCQUOTE) != 0) return copy_doubled(source, call);
  return finish_text<CS_CHAR>(copy_text(source, room), call);
}

CS_RETCODE copy_to_unichar(const Text& text, const Conversion& call) {
  const std::span<CS_BYTE> room = room_of(call);
  if (text.utf16) return finish_text<CS_UNICHAR>(copy_text(text, room), call);
  const std::size_t units = room.size() - room.size() % sizeof(CS_UNICHAR);
  const Encoding from = source_encoding(false, call);
  const Copied copied = translate_text(text.bytes, from, kUtf16, room.first(units), call.context);
  if (is_failure(copied.code)) return store_length(copied.code, copied, call);
  return finish_text<CS_UNICHAR>(copied, call);
}

CS_RETCODE internal::copy_any_to_varchar(const CS_BYTE* bytes, std::size_t size, bool utf16,
                                         COMNLIB_CONVERSION_PARAMETERS) {
  const Bytes text(bytes, size);
  const Conversion call{context, srcfmt, src, destfmt, dest, destlen};
  const Encoding from = source_encoding(utf16, call);
  const Encoding to = encoding_of(*call.context, *call.destfmt);
  const std::span<CS_BYTE> room(record_bytes(call.dest), CS_MAX_CHAR);
  const Copied copied = same_encoding(from, to)
                            ? copy_text(text_in(from, text), room)
                            : translate_text(text, from, to, room, call.context);
  store(call.dest, static_cast<CS_SMALLINT>(copied.length));
  *call.destlen = sizeof(CS_VARCHAR);
  return copied.code;
}

}  // namespace comnlib

using namespace comnlib;

CS_INT comnb_truncate_chars(const char_attrib* attrib, const CS_CHAR* src, CS_INT srclen,
                            CS_INT destlen) {
  check_pointer(src);
  require(srclen >= 0 && destlen >= 0);
  const auto* bytes = reinterpret_cast<const CS_BYTE*>(src);
  return fitting_bytes({{bytes, static_cast<std::size_t>(srclen)}, attrib}, destlen);
}

CS_RETCODE comn__escchar(const char_attrib* attrib, const CS_DATAFMT* srcfmt, const CS_VOID* src,
                         const CS_DATAFMT* destfmt, CS_VOID* dest, CS_INT* destlen) {
  require(srcfmt->maxlength >= 0 && destfmt->maxlength >= 0);
  const Text text{{static_cast<const CS_BYTE*>(src), static_cast<std::size_t>(srcfmt->maxlength)},
                  attrib};
  const std::span room(static_cast<CS_BYTE*>(dest), static_cast<std::size_t>(destfmt->maxlength));
  const Doubling doubling = copy_doubling(text, room, terminates(*destfmt));
  *destlen = static_cast<CS_INT>(doubling.written);
  return trace(doubling.cut ? CS_CVT_TRUNCATED : CS_SUCCEED);
}
