// Copies of text. What was cut is always told: by CS_CVT_TRUNCATED, and by the length written.
#include "conv/textcopy.h"

#include <algorithm>
#include <limits>

#include "chars/text.h"
#include "conv/newutils.h"

namespace comnlib {
namespace {

struct Copied {
  CS_RETCODE code;  // CS_SUCCEED, CS_CVT_SUBSTITUTED, CS_CVT_TRUNCATED or a failure
  CS_INT length;    // bytes written
  CS_INT needed;    // bytes of the whole text; more than the room when it was cut
};

CS_INT size_of(Bytes bytes) {
  return static_cast<CS_INT>(bytes.size());
}

bool same_encoding(const Encoding& a, const Encoding& b) {
  return a.utf16 == b.utf16 && a.charset == b.charset;
}

// Widths alone decide, so the tables of classes and forms are not asked.
CS_INT whole_characters(Text text, CS_INT room) {
  const CS_INT limit = std::min(size_of(text.bytes), room);
  const CS_BYTE* widths = text.attrib == nullptr ? nullptr : text.attrib->cs_width_map;
  if (widths == nullptr) return limit;
  CS_INT length = 0;
  while (length < limit) {
    const int width = std::max(widths[text.bytes[static_cast<std::size_t>(length)]] & 0xF, 1);
    if (width > limit - length) break;
    length += width;
  }
  return length;
}

// A plain copy within one character set. A character that the source itself cuts is left out and
// is no truncation by the destination.
Copied copy_whole(Text text, std::span<CS_BYTE> room) {
  const auto limit = static_cast<CS_INT>(room.size());
  CS_INT length = std::min(size_of(text.bytes), limit);
  if (!is_single_byte(text.attrib)) length = whole_characters(text, limit);
  std::memmove(room.data(), text.bytes.data(), static_cast<std::size_t>(length));
  const bool fits = size_of(text.bytes) <= limit;
  return {fits ? CS_SUCCEED : CS_CVT_TRUNCATED, length, size_of(text.bytes)};
}

Copied translate_text(Bytes text, const Encoding& from, const Encoding& to, std::span<CS_BYTE> room,
                      CS_CONTEXT* context) {
  if (text.empty()) return {CS_SUCCEED, 0, 0};
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

Doubling measure_doubling(Text text, std::size_t room, bool nul_ends) {
  Doubling result{0, 0, false, false};
  while (!text.bytes.empty()) {
    const TextChar character = first_char(text);
    const std::size_t width = character.bytes.size();
    const std::size_t output = is_quote(character) ? 2 * width : width;
    if (character.cut) break;
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

// Writes the text with its quotes doubled. `dest` may lie before the text in one buffer, as far as
// the doubling needs.
void write_doubled(Text text, CS_BYTE* dest) {
  while (!text.bytes.empty()) {
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

// Doubles the quotes of the first `length` bytes of the destination in place.
Doubling double_in_place(std::span<CS_BYTE> room, std::size_t length, const char_attrib* attrib,
                         bool nul_ends) {
  const Text text{room.first(length), attrib};
  const Doubling doubling = measure_doubling(text, room.size(), nul_ends);
  if (doubling.written == doubling.taken) return doubling;
  // Moved to the end of its final room, each character is read before it is overwritten.
  CS_BYTE* moved = room.data() + (doubling.written - doubling.taken);
  std::memmove(moved, room.data(), doubling.taken);
  write_doubled({{moved, doubling.taken}, attrib}, room.data());
  return doubling;
}

// The last steps of a text destination of units of `Unit`: `needed` decides what fits.
template <class Unit>
CS_RETCODE finish(const Copied& copied, const Conversion& call) {
  constexpr CS_INT kUnit = sizeof(Unit);
  const CS_INT room = call.destfmt->maxlength - call.destfmt->maxlength % kUnit;
  const bool terminate = terminates(*call.destfmt);
  auto* dest = static_cast<CS_BYTE*>(call.dest);
  *call.destlen = copied.length;
  if (terminate && copied.length == room) {
    if (room > 0) store(dest + room - kUnit, Unit{0});
    return CS_CVT_TRUNCATED;
  }
  // A cut at a whole character may leave room before the last unit, which alone the padding
  // terminates.
  if (terminate) store(dest + copied.length, Unit{0});
  const CS_RETCODE padded =
      kUnit == 1 ? comn__padchar(copied.needed, call.destfmt, call.dest, call.destlen)
                 : comn__padunichar(copied.needed, call.destfmt, call.dest, call.destlen);
  if (padded == CS_CVT_OVERFLOW) return CS_CVT_TRUNCATED;
  return padded == CS_SUCCEED ? copied.code : padded;
}

bool is_failure(CS_RETCODE code) {
  return code != CS_SUCCEED && code != CS_CVT_SUBSTITUTED && code != CS_CVT_TRUNCATED;
}

CS_RETCODE fail(CS_RETCODE code, const Copied& copied, const Conversion& call) {
  *call.destlen = copied.length;
  return code;
}

std::span<CS_BYTE> room_of(const Conversion& call) {
  require(call.destfmt->maxlength >= 0);
  return {static_cast<CS_BYTE*>(call.dest), static_cast<std::size_t>(call.destfmt->maxlength)};
}

// A text that ended with its own NUL gets no second one.
CS_RETCODE finish_doubled(Copied copied, const Doubling& doubling, const Conversion& call) {
  copied.length = static_cast<CS_INT>(doubling.written);
  if (doubling.cut) return fail(CS_CVT_TRUNCATED, copied, call);
  constexpr CS_INT kPadding = CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  const bool padded = (call.destfmt->format & kPadding) != 0;
  const bool fits = std::max(copied.needed, copied.length) < call.destfmt->maxlength;
  if (!doubling.ended_by_nul || padded || !fits) return finish<CS_CHAR>(copied, call);
  *call.destlen = copied.length;
  return copied.code;
}

CS_RETCODE copy_doubled(Text text, const Conversion& call) {
  const std::span<CS_BYTE> room = room_of(call);
  const Doubling doubling = measure_doubling(text, room.size(), terminates(*call.destfmt));
  write_doubled({text.bytes.first(doubling.taken), text.attrib}, room.data());
  return finish_doubled({CS_SUCCEED, 0, size_of(text.bytes)}, doubling, call);
}

CS_RETCODE copy_translated(Bytes text, const Encoding& from, const Encoding& to,
                           const Conversion& call) {
  const std::span<CS_BYTE> room = room_of(call);
  Copied copied = translate_text(text, from, to, room, call.context);
  if (is_failure(copied.code)) return fail(copied.code, copied, call);
  if ((call.destfmt->format & CS_DFMT_ESCQUOTE) == 0) return finish<CS_CHAR>(copied, call);
  const Doubling doubling = double_in_place(room, static_cast<std::size_t>(copied.length),
                                            attributes_of(to), terminates(*call.destfmt));
  if (copied.code != CS_CVT_TRUNCATED) copied.needed = static_cast<CS_INT>(doubling.written);
  return finish_doubled(copied, doubling, call);
}

}  // namespace

CS_RETCODE copy_to_character(Bytes text, const Encoding& from, const Conversion& call) {
  const Encoding to = encoding_of(*call.context, *call.destfmt);
  const std::span<CS_BYTE> room = room_of(call);
  if (text.empty() || room.empty()) return finish<CS_CHAR>({CS_SUCCEED, 0, size_of(text)}, call);
  if (!same_encoding(from, to)) return copy_translated(text, from, to, call);
  const Text source{text, attributes_of(from)};
  if ((call.destfmt->format & CS_DFMT_ESCQUOTE) != 0) return copy_doubled(source, call);
  return finish<CS_CHAR>(copy_whole(source, room), call);
}

CS_RETCODE copy_to_unichar(Bytes text, const Encoding& from, const Conversion& call) {
  std::span<CS_BYTE> room = room_of(call);
  room = room.first(room.size() - room.size() % sizeof(CS_UNICHAR));
  const Copied copied = translate_text(text, from, kUtf16, room, call.context);
  if (is_failure(copied.code)) return fail(copied.code, copied, call);
  return finish<CS_UNICHAR>(copied, call);
}

CS_RETCODE copy_to_varchar(Bytes text, const Encoding& from, const Conversion& call) {
  const Encoding to = encoding_of(*call.context, *call.destfmt);
  const std::span<CS_BYTE> room(record_bytes(call.dest), CS_MAX_CHAR);
  const Copied copied = same_encoding(from, to)
                            ? copy_whole({text, attributes_of(from)}, room)
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
  return whole_characters({{bytes, static_cast<std::size_t>(srclen)}, attrib}, destlen);
}

CS_RETCODE comn__escchar(const char_attrib* attrib, const CS_DATAFMT* srcfmt, const CS_VOID* src,
                         const CS_DATAFMT* destfmt, CS_VOID* dest, CS_INT* destlen) {
  require(srcfmt->maxlength >= 0 && destfmt->maxlength >= 0);
  const Text text{{static_cast<const CS_BYTE*>(src), static_cast<std::size_t>(srcfmt->maxlength)},
                  attrib};
  const auto room = static_cast<std::size_t>(destfmt->maxlength);
  const Doubling doubling = measure_doubling(text, room, terminates(*destfmt));
  write_doubled({text.bytes.first(doubling.taken), attrib}, static_cast<CS_BYTE*>(dest));
  *destlen = static_cast<CS_INT>(doubling.written);
  return trace(doubling.cut ? CS_CVT_TRUNCATED : CS_SUCCEED);
}
