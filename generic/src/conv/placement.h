// Placement of formatted text in character, Unicode-character and varchar destinations.
#pragma once

#include <span>
#include <string_view>

#include "chars/short_bytes.h"
#include "conv/frame.h"

namespace comnlib {

using CodeUnits = std::span<const CS_UNICHAR>;

// The room of a character destination, and what becomes of the bytes that a text leaves of it.
class CharacterRoom {
 public:
  // `kRefused` are more bits of the format for which no text is simple.
  template <CS_INT kRefused = 0>
  [[gnu::always_inline]] static CharacterRoom of(const CS_DATAFMT& format) {
    constexpr CS_INT kPadding = CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
    constexpr CS_INT kSimple = CS_DFMT_NULLTERM | CS_DFMT_PADBLANK;
    static_assert(kRefused == 0 || kRefused > kPadding);
    CharacterRoom room;
    room.size_ = format.maxlength;
    room.padding_ = format.format & (kPadding | kRefused);
    // Every larger number has both paddings or a refused bit.
    room.most_ = room.padding_ > kSimple ? -1 : room.size_ - room.terminator();
    return room;
  }

  void refuse_all() { most_ = -1; }

  // Whether a text of this length is placed by place(), without a fault.
  bool takes(CS_INT length) const { return length <= most_; }

  // Places bytes, or a text that writes itself and is no part of the destination.
  [[gnu::always_inline]] CS_RETCODE place(const auto& text, const Conversion& call) const {
    auto* const dest = static_cast<CS_BYTE*>(call.dest);
    if (padding_ > CS_DFMT_NULLTERM) {
      write_padded(text, dest, padding_ >= CS_DFMT_PADBLANK ? ' ' : 0);
      if (padding_ == (CS_DFMT_PADBLANK | CS_DFMT_NULLTERM)) dest[size_ - 1] = 0;
      *call.destlen = size_;
      return CS_SUCCEED;
    }
    write(text, dest);
    if (padding_ != 0) dest[text.size()] = 0;
    *call.destlen = static_cast<CS_INT>(text.size()) + terminator();
    return CS_SUCCEED;
  }

 private:
  [[gnu::always_inline]] static void write(std::span<const CS_BYTE> text, CS_BYTE* dest) {
    copy_bytes(dest, text.data(), text.size());
  }
  [[gnu::always_inline]] static void write(const auto& text, CS_BYTE* dest) { text.write(dest); }

  [[gnu::always_inline]] void write_padded(std::span<const CS_BYTE> text, CS_BYTE* dest,
                                           CS_BYTE fill) const {
    copy_padded(dest, static_cast<std::size_t>(size_), text, fill);
  }
  [[gnu::always_inline]] void write_padded(const auto& text, CS_BYTE* dest, CS_BYTE fill) const {
    const auto room = static_cast<std::size_t>(size_);
    const bool is_filled_first = room - 16 <= 16;
    if (is_filled_first) fill_room(dest, room, fill);
    text.write(dest);
    if (!is_filled_first) fill_bytes(dest + text.size(), fill, room - text.size());
  }

  // The bytes that it takes: its bit is 1.
  CS_INT terminator() const {
    static_assert(CS_DFMT_NULLTERM == 1);
    return padding_ & CS_DFMT_NULLTERM;
  }

  CS_INT size_;
  CS_INT padding_;  // the bits of the format
  CS_INT most_;     // the longest simple text; -1 for none
};

// Places the text of a number in a destination of units of its kind, and pads it. Text that does
// not fit, with its terminator where one is asked for, becomes "*" when there is room for two
// units, and CS_CVT_OVERFLOW is returned.
CS_RETCODE place_text(std::string_view text, const CS_DATAFMT& format, CS_VOID* dest,
                      CS_INT* destlen);
CS_RETCODE place_text(CodeUnits text, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen);

// The same for money: text that does not fit is cut.
CS_RETCODE place_cut(std::string_view text, const CS_DATAFMT& format, CS_VOID* dest,
                     CS_INT* destlen);
CS_RETCODE place_cut(CodeUnits text, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen);

template <bool kCut>
CS_RETCODE place_in_general(auto text, const Conversion& call) {
  return kCut ? place_cut(text, *call.destfmt, call.dest, call.destlen)
              : place_text(text, *call.destfmt, call.dest, call.destlen);
}

// Either of them, for a text that mostly fits.
template <bool kCut>
[[gnu::always_inline]] inline CS_RETCODE place(std::string_view text, const Conversion& call,
                                               const CharacterRoom& room) {
  const std::span bytes(reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
  if (room.takes(static_cast<CS_INT>(bytes.size()))) [[likely]]
    return room.place(bytes, call);
  return place_in_general<kCut>(text, call);
}

// What a target of that kind finds once for a column.
struct CharacterSetup {
  [[gnu::always_inline]] explicit CharacterSetup(const Conversion& call)
      : room(CharacterRoom::of(*call.destfmt)) {}
  CharacterRoom room;
};

// Places the text of a number in a CS_VARCHAR, with a NUL after it where one fits in `str`; text of
// more than 256 characters becomes "*" with CS_CVT_OVERFLOW. The destination length is 258.
CS_RETCODE place_varchar(std::string_view text, CS_VOID* dest, CS_INT* destlen);

// Completes a record whose bytes are written.
inline void complete_varchar(std::size_t length, CS_VOID* dest, CS_INT* destlen) {
  store(dest, static_cast<CS_SMALLINT>(length));
  if (length < CS_MAX_CHAR) record_bytes(dest)[length] = 0;
  *destlen = sizeof(CS_VARCHAR);
}

}  // namespace comnlib
