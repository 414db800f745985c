// Placement of formatted text in character, Unicode-character and varchar destinations.
#pragma once

#include <emmintrin.h>

#include <array>
#include <cstring>
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
    static_assert(kRefused == 0 || kRefused == CS_DFMT_ESCQUOTE);
    // No length is negative here, or the difference would wrap around.
    CharacterRoom room;
    room.size_ = format.maxlength;
    room.padding_ = format.format & (kPadding | kRefused);
    room.most_ = static_cast<CS_INT>(static_cast<CS_UINT>(room.size_) -
                                     kTaken[static_cast<std::size_t>(room.padding_)]);
    return room;
  }

  void refuse_all() { most_ = -1; }

  // Whether a text of this length is placed by place(), without a fault.
  bool takes(CS_INT length) const { return length <= most_; }

  // Places bytes, or a text that writes itself and is no part of the destination.
  [[gnu::always_inline]] CS_RETCODE place(const auto& text, const Conversion& call) const {
    auto* const dest = static_cast<CS_BYTE*>(call.dest);
    if (padding_ > CS_DFMT_NULLTERM) {
      const auto room = static_cast<std::size_t>(size_);
      if (room - 16 <= 16) {
        write_filled(text, dest, room, {fill<false>(), fill<true>()});
      } else {
        write(text, dest);
        fill_bytes(dest + text.size(), padding_ >= CS_DFMT_PADBLANK ? ' ' : 0, room - text.size());
        if (padding_ == (CS_DFMT_PADBLANK | CS_DFMT_NULLTERM)) dest[room - 1] = 0;
      }
      *call.destlen = size_;
      return CS_SUCCEED;
    }
    static_assert(CS_DFMT_NULLTERM == 1);
    write(text, dest);
    if (padding_ != 0) dest[text.size()] = 0;
    *call.destlen = static_cast<CS_INT>(text.size()) + padding_;
    return CS_SUCCEED;
  }

 private:
  [[gnu::always_inline]] static void write(std::span<const CS_BYTE> text, CS_BYTE* dest) {
    copy_bytes(dest, text.data(), text.size());
  }
  [[gnu::always_inline]] static void write(const auto& text, CS_BYTE* dest) { text.write(dest); }

  [[gnu::always_inline]] static void write_filled(std::span<const CS_BYTE> text, CS_BYTE* dest,
                                                  std::size_t room, RoomFill fill) {
    copy_filled(dest, room, text, fill);
  }
  [[gnu::always_inline]] static void write_filled(const auto& text, CS_BYTE* dest, std::size_t room,
                                                  RoomFill fill) {
    fill_room(dest, room, fill);
    text.write(dest);
  }

  static constexpr CS_INT kPadding = CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  // Every larger number has both paddings or a refused bit.
  static constexpr CS_INT kSimple = CS_DFMT_NULLTERM | CS_DFMT_PADBLANK;

  // What each padding takes of the room for a text. More than any room has, where no text is
  // simple.
  static constexpr auto kTaken = [] {
    std::array<CS_UINT, (kPadding | CS_DFMT_ESCQUOTE) + 1> taken;
    taken.fill(0x8000'0000);
    for (CS_UINT padding = 0; padding <= kSimple; ++padding)
      taken[padding] = padding & CS_DFMT_NULLTERM;
    return taken;
  }();

  // The blanks or zeros at the beginning and at the end of a short room, for each padding.
  using Fill = std::array<CS_BYTE, sizeof(__m128i)>;
  template <bool kTerminates>
  static constexpr auto kFills = [] {
    std::array<Fill, kSimple + 1> fills{};
    fills[CS_DFMT_PADBLANK].fill(' ');
    fills[kSimple].fill(' ');
    if (kTerminates) fills[kSimple].back() = 0;
    return fills;
  }();
  template <bool kTerminates>
  [[gnu::always_inline]] __m128i fill() const {
    __m128i bytes;
    std::memcpy(&bytes, kFills<kTerminates>[static_cast<std::size_t>(padding_)].data(),
                sizeof bytes);
    return bytes;
  }

  CS_INT size_;
  CS_INT padding_;  // the bits of the format
  CS_INT most_;     // the longest simple text; negative for none
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
