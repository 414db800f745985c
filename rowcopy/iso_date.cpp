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
  IsoDate text = {'0', '0', '0', '0', '-', '0', '0', '-', '0', '0', 'T', '0',
                  '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', '0'};
  const auto put_pair = [&](std::size_t at, CS_INT number) {
    text[at] = static_cast<char>('0' + number / 10);
    text[at + 1] = static_cast<char>('0' + number % 10);
  };
  put_pair(0, rec.dateyear / 100);
  put_pair(2, rec.dateyear % 100);
  put_pair(5, rec.datemonth + 1);
  put_pair(8, rec.datedmonth);
  if (value.dttime == 0) return text;
  put_pair(11, rec.datehour);
  put_pair(14, rec.dateminute);
  put_pair(17, rec.datesecond);
  put_pair(20, rec.datemsecond / 10);
  text[22] = static_cast<char>('0' + rec.datemsecond % 10);
  return text;
}

}  // namespace rowcopy
