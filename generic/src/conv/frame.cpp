// Placement of formatted text in character and varchar destinations.
#include "conv/frame.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "conv/newutils.h"

namespace comnlib {
namespace {

// A call of memcpy takes as long as the digits of an integer: short text goes in two overlapping
// words of a size that is known here.
template <class Word>
void copy_ends(std::string_view text, CS_BYTE* dest) {
  Word head;
  Word tail;
  std::memcpy(&head, text.data(), sizeof head);
  std::memcpy(&tail, text.data() + text.size() - sizeof tail, sizeof tail);
  std::memcpy(dest, &head, sizeof head);
  std::memcpy(dest + text.size() - sizeof tail, &tail, sizeof tail);
}

// Every character widens to a `Unit`.
template <class Unit>
void write(std::string_view text, CS_BYTE* dest) {
  if (sizeof(Unit) == 1 && text.size() > 16) {
    std::memcpy(dest, text.data(), text.size());
  } else if (sizeof(Unit) == 1 && text.size() >= 8) {
    copy_ends<std::uint64_t>(text, dest);
  } else if (sizeof(Unit) == 1 && text.size() >= 4) {
    copy_ends<std::uint32_t>(text, dest);
  } else {
    for (const char each : text) {
      store(dest, static_cast<Unit>(each));
      dest += sizeof(Unit);
    }
  }
}

template <class Unit>
CS_RETCODE pad(CS_INT length, const Conversion& call) {
  constexpr CS_INT kFinishing = CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  if ((call.destfmt->format & kFinishing) == 0) return CS_SUCCEED;
  if constexpr (sizeof(Unit) == sizeof(CS_CHAR))
    return comn__padchar(length, call.destfmt, call.dest, call.destlen);
  else
    return comn__padunichar(length, call.destfmt, call.dest, call.destlen);
}

template <class Unit>
CS_RETCODE place(std::string_view text, const Conversion& call) {
  constexpr CS_INT kUnit = sizeof(Unit);
  const CS_INT room = call.destfmt->maxlength;
  require(room >= 0);
  const bool terminate = (call.destfmt->format & CS_DFMT_NULLTERM) != 0;
  const auto length = static_cast<CS_INT>(text.size()) * kUnit;
  auto* dest = static_cast<CS_BYTE*>(call.dest);

  if (length <= room && (!terminate || kUnit <= room - length)) {
    write<Unit>(text, dest);
    *call.destlen = length;
    return pad<Unit>(length, call);
  }
  *call.destlen = std::min(room, length);
  if (room >= 2 * kUnit) {
    write<Unit>({"*", 2}, dest);
    *call.destlen = kUnit;
    // Overflow is the answer whatever the padding reports.
    static_cast<void>(pad<Unit>(kUnit, call));
  }
  return CS_CVT_OVERFLOW;
}

}  // namespace

CS_RETCODE place_text(std::string_view text, const Conversion& call) {
  return place<CS_CHAR>(text, call);
}

CS_RETCODE place_unichar(std::string_view text, const Conversion& call) {
  return place<CS_UNICHAR>(text, call);
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
