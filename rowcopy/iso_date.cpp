#include "iso_date.h"

#include <cstring>

namespace rowcopy {

CS_DATETIME widen_date(CS_INT code, const char* value) {
  constexpr CS_INT kTicksPerMinute = 60 * 300;
  CS_DATETIME wide{};
  if (code == CS_DATETIME_TYPE) {
    std::memcpy(&wide, value, sizeof wide);
  } else {
    CS_DATETIME4 narrow{};
    std::memcpy(&narrow, value, sizeof narrow);
    wide = {narrow.days, narrow.minutes * kTicksPerMinute};
  }
  return wide;
}

IsoDate iso_date(const CS_DATETIME& value) {
  IsoDate text{};
  CS_INT length = 0;
  comn_datetime_text(&value, COM_DATESTYLE_ISO, text.data(), text.size(), &length);
  return text;
}

}  // namespace rowcopy
