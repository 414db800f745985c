// Placement of formatted text in character and varchar destinations.
#include "conv/frame.h"

#include <algorithm>

#include "conv/newutils.h"

namespace comnlib {

CS_RETCODE place_text(std::string_view text, const Conversion& call) {
  const CS_INT room = call.destfmt->maxlength;
  require(room >= 0);
  const bool terminate = (call.destfmt->format & CS_DFMT_NULLTERM) != 0;
  const auto length = static_cast<CS_INT>(text.size());
  auto* dest = static_cast<CS_CHAR*>(call.dest);

  if (length <= room && !(terminate && length == room)) {
    text.copy(dest, text.size());
    *call.destlen = length;
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
