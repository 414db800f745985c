// Placement of formatted text in character, Unicode-character and varchar destinations.
#include "conv/placement.h"

#include <algorithm>
#include <cstring>

#include "conv/newutils.h"

namespace comnlib {
namespace {

void write(std::string_view text, CS_VOID* dest) {
  copy_bytes(static_cast<CS_BYTE*>(dest), reinterpret_cast<const CS_BYTE*>(text.data()),
             text.size());
}

void write(CodeUnits text, CS_VOID* dest) {
  std::memcpy(dest, text.data(), text.size_bytes());
}

template <class Unit>
CS_RETCODE pad(CS_INT length, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen) {
  if constexpr (sizeof(Unit) == sizeof(CS_CHAR))
    return comn__padchar(length, &format, dest, destlen);
  else
    return comn__padunichar(length, &format, dest, destlen);
}

// Places a text of the destination's units, or "*" where it does not fit.
template <class View>
CS_RETCODE place_or_star(View text, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen) {
  using Unit = typename View::value_type;
  constexpr CS_INT kUnit = sizeof(Unit);
  const CS_INT room = format.maxlength;
  constexpr CS_INT kFinishing = CS_DFMT_NULLTERM | CS_DFMT_PADNULL | CS_DFMT_PADBLANK;
  const bool finished = (format.format & kFinishing) == 0;
  const bool terminate = terminates(format);
  const auto length = static_cast<CS_INT>(text.size()) * kUnit;

  if (length <= room && (!terminate || kUnit <= room - length)) {
    write(text, dest);
    *destlen = length;
    return finished ? CS_SUCCEED : pad<Unit>(length, format, dest, destlen);
  }
  *destlen = std::min(room, length);
  if (room >= 2 * kUnit) {
    static constexpr Unit kStar[] = {'*', 0};
    write(View(kStar, 2), dest);
    *destlen = kUnit;
    // The result is an overflow whatever the padding returns.
    static_cast<void>(pad<Unit>(kUnit, format, dest, destlen));
  }
  return CS_CVT_OVERFLOW;
}

template <class View>
CS_RETCODE place_or_cut(View text, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen) {
  using Unit = typename View::value_type;
  const auto units = static_cast<std::size_t>(format.maxlength) / sizeof(Unit);
  const auto length = static_cast<CS_INT>(text.size() * sizeof(Unit));
  const View kept(text.data(), std::min(text.size(), units));
  write(kept, dest);
  *destlen = static_cast<CS_INT>(kept.size() * sizeof(Unit));
  return pad<Unit>(length, format, dest, destlen);
}

}  // namespace

CS_RETCODE place_text(std::string_view text, const CS_DATAFMT& format, CS_VOID* dest,
                      CS_INT* destlen) {
  return place_or_star(text, format, dest, destlen);
}

CS_RETCODE place_text(CodeUnits text, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen) {
  return place_or_star(text, format, dest, destlen);
}

CS_RETCODE place_cut(std::string_view text, const CS_DATAFMT& format, CS_VOID* dest,
                     CS_INT* destlen) {
  return place_or_cut(text, format, dest, destlen);
}

CS_RETCODE place_cut(CodeUnits text, const CS_DATAFMT& format, CS_VOID* dest, CS_INT* destlen) {
  return place_or_cut(text, format, dest, destlen);
}

CS_RETCODE place_varchar(std::string_view text, CS_VOID* dest, CS_INT* destlen) {
  const bool fits = text.size() <= CS_MAX_CHAR;
  if (!fits) text = "*";
  std::memcpy(record_bytes(dest), text.data(), text.size());
  complete_varchar(text.size(), dest, destlen);
  return fits ? CS_SUCCEED : CS_CVT_OVERFLOW;
}

}  // namespace comnlib
