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
  CS_DATEREC rec{};
  com_datecrack(&value, &rec);
  com_timecrack(&value, &rec);
  IsoDate text{};
  std::size_t end = 0;
  const auto put = [&](CS_INT number, std::size_t digits, char separator) {
    end += digits;
    for (std::size_t at = end; digits-- > 0; number /= 10)
      text[--at] = static_cast<char>('0' + number % 10);
    if (end < text.size()) text[end++] = separator;
  };
  put(rec.dateyear, 4, '-');
  put(rec.datemonth + 1, 2, '-');
  put(rec.datedmonth, 2, 'T');
  put(rec.datehour, 2, ':');
  put(rec.dateminute, 2, ':');
  put(rec.datesecond, 2, '.');
  put(rec.datemsecond, 3, '\0');
  return text;
}

}  // namespace rowcopy
