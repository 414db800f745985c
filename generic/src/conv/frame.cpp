// Placement of formatted text in character and varchar destinations.
#include "conv/frame.h"

#include <algorithm>

#include "conv/newutils.h"

namespace comnlib {
namespace {

template <class Unit>
CS_RETCODE pad(CS_INT length, const Conversion& call) {
  if constexpr (sizeof(Unit) == sizeof(CS_CHAR))
    return comn__padchar(length, call.destfmt, call.dest, call.destlen);
  else
    return comn__padunichar(length, call.destfmt, call.dest, call.destlen);
}

template <class Unit>
void write(std::string_view text, void* dest) {
  auto* at = static_cast<CS_BYTE*>(dest);
  for (const char character : text) {
    store(at, static_cast<Unit>(character));
    at += sizeof(Unit);
  }
}

// The placement rule in units of `Unit`, into which every character of the text widens.
template <class Unit>
CS_RETCODE place(std::string_view text, const Conversion& call) {
  constexpr CS_INT kUnit = sizeof(Unit);
  const CS_INT room = call.destfmt->maxlength;
  require(room >= 0);
  const bool terminate = (call.destfmt->format & CS_DFMT_NULLTERM) != 0;
  const auto length = static_cast<CS_INT>(text.size()) * kUnit;

  if (length <= room && (!terminate || kUnit <= room - length)) {
    write<Unit>(text, call.dest);
    *call.destlen = length;
    return pad<Unit>(length, call);
  }
  *call.destlen = std::min(room, length);
  if (room >= 2 * kUnit) {
    write<Unit>({"*", 2}, call.dest);
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
