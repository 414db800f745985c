// Placement of formatted text in character and varchar destinations.
#include "conv/frame.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "conv/newutils.h"

namespace comnlib {
namespace {

// Copies a text of Size to 2 * Size bytes as its first and its last Size, which may overlap.
template <std::size_t Size>
void copy_ends(std::string_view text, char* dest) {
  std::array<char, Size> head;
  std::array<char, Size> tail;
  std::memcpy(head.data(), text.data(), Size);
  std::memcpy(tail.data(), text.end() - Size, Size);
  std::memcpy(dest, head.data(), Size);
  std::memcpy(dest + text.size() - Size, tail.data(), Size);
}

// Numbers are short: a call of memcpy would take as long as their digits do.
void copy_text(std::string_view text, char* dest) {
  if (text.size() > 32) {
    std::memcpy(dest, text.data(), text.size());
  } else if (text.size() >= 16) {
    copy_ends<16>(text, dest);
  } else if (text.size() >= 8) {
    copy_ends<8>(text, dest);
  } else if (text.size() >= 4) {
    copy_ends<4>(text, dest);
  } else {
    for (const char each : text) *dest++ = each;
  }
}

constexpr bool finishes_text(CS_INT format) {
  return (format & (CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK)) != 0;
}

}  // namespace

CS_RETCODE place_text(std::string_view text, const Conversion& call) {
  const CS_INT room = call.destfmt->maxlength;
  require(room >= 0);
  const bool terminate = (call.destfmt->format & CS_DFMT_NULLTERM) != 0;
  const auto length = static_cast<CS_INT>(text.size());
  auto* dest = static_cast<CS_CHAR*>(call.dest);

  if (length <= room && !(terminate && length == room)) {
    copy_text(text, dest);
    *call.destlen = length;
    if (!finishes_text(call.destfmt->format)) return CS_SUCCEED;
    return comn__padchar(length, call.destfmt, call.dest, call.destlen);
  }
  *call.destlen = std::min(room, length);
  if (room >= 2) {
    dest[0] = '*';
    dest[1] = '\0';
    *call.destlen = 1;
    // Overflow is the answer whatever the padding reports.
    static_cast<void>(comn__padchar(1, call.destfmt, call.dest, call.destlen));
  }
  return CS_CVT_OVERFLOW;
}

CS_RETCODE place_varchar(std::string_view text, const Conversion& call) {
  const bool fits = text.size() <= CS_MAX_CHAR;
  if (!fits) text = "*";
  auto* record = static_cast<CS_CHAR*>(call.dest);
  CS_CHAR* const str = record + offsetof(CS_VARCHAR, str);
  store(record, static_cast<CS_SMALLINT>(text.size()));
  text.copy(str, text.size());
  if (text.size() < CS_MAX_CHAR) str[text.size()] = '\0';
  *call.destlen = sizeof(CS_VARCHAR);
  return fits ? CS_SUCCEED : CS_CVT_OVERFLOW;
}

}  // namespace comnlib
