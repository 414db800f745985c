// Placement of formatted text in character, Unicode-character and varchar destinations.
#include "conv/placement.h"

#include <algorithm>
#include <cstring>

#include "conv/newutils.h"

namespace comnlib {
namespace {

void write(std::string_view text, CS_BYTE* dest) {
  copy_bytes(dest, reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
}

void write(CodeUnits text, CS_BYTE* dest) {
  std::memcpy(dest, text.data(), text.size_bytes());
}

template <class Unit>
CS_RETCODE pad(CS_INT length, const Conversion& call) {
  if constexpr (sizeof(Unit) == sizeof(CS_CHAR))
    return comn__padchar(length, call.destfmt, call.dest, call.destlen);
  else
    return comn__padunichar(length, call.destfmt, call.dest, call.destlen);
}

// Places a text of the destination's units, or "*" where it does not fit.
template <class View>
CS_RETCODE place_or_star(View text, const Conversion& call) {
  using Unit = typename View::value_type;
  constexpr CS_INT kUnit = sizeof(Unit);
  const CS_INT room = call.destfmt->maxlength;
  constexpr CS_INT kFinishing = CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  const bool finished = (call.destfmt->format & kFinishing) == 0;
  const bool terminate = terminates(*call.destfmt);
  const auto length = static_cast<CS_INT>(text.size()) * kUnit;
  auto* dest = static_cast<CS_BYTE*>(call.dest);

  if (length <= room && (!terminate || kUnit <= room - length)) {
    write(text, dest);
    *call.destlen = length;
    return finished ? CS_SUCCEED : pad<Unit>(length, call);
  }
  *call.destlen = std::min(room, length);
  if (room >= 2 * kUnit) {
    static constexpr Unit kStar[] = {'*', 0};
    write(View(kStar, 2), dest);
    *call.destlen = kUnit;
    // The result is an overflow whatever the padding returns.
    static_cast<void>(pad<Unit>(kUnit, call));
  }
  return CS_CVT_OVERFLOW;
}

template <class View>
CS_RETCODE place_or_cut(View text, const Conversion& call) {
  using Unit = typename View::value_type;
  const auto units = static_cast<std::size_t>(call.destfmt->maxlength) / sizeof(Unit);
  const auto length = static_cast<CS_INT>(text.size() * sizeof(Unit));
  const View kept(text.data(), std::min(text.size(), units));
  write(kept, static_cast<CS_BYTE*>(call.dest));
  *call.destlen = static_cast<CS_INT>(kept.size() * sizeof(Unit));
  return pad<Unit>(length, call);
}

}  // namespace

CS_RETCODE place_text(std::string_view text, const Conversion& call) {
  return place_or_star(text, call);
}

CS_RETCODE place_text(CodeUnits text, const Conversion& call) {
  return place_or_star(text, call);
}

CS_RETCODE place_cut(std::string_view text, const Conversion& call) {
  return place_or_cut(text, call);
}

CS_RETCODE place_cut(CodeUnits text, const Conversion& call) {
  return place_or_cut(text, call);
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
