// Dates as text of a locale, by way of Unicode, so that names are text of the locale's character
// set.
#pragma once

#include <string>

#include "comnlib/convert.h"
#include "comnlib/datetime.h"
#include "support/hosts.h"

namespace dates {

struct Written {
  CS_RETCODE code;
  std::u16string text;
  CS_DATETIME read;  // from the text
};

inline Written write(CS_CONTEXT* context, CsLocCache* entry, const CS_DATETIME& value) {
  CS_LOCALE locale = hosts::all(entry);
  CS_DATAFMT date{}, text{};
  date.datatype = CS_DATETIME_TYPE;
  text.datatype = CS_UNICHAR_TYPE;
  date.locale = text.locale = &locale;
  Written written{CS_SUCCEED, std::u16string(200, u'#'), {}};
  text.maxlength = 400;
  CS_INT length = 0;
  written.code =
      comn_datetimetounichar(context, &date, &value, &text, written.text.data(), &length);
  written.text.resize(static_cast<std::size_t>(length) / 2);
  text.maxlength = length;
  if (written.code != CS_SUCCEED) return written;
  EXPECT_EQ(CS_SUCCEED, comn_unichartodatetime(context, &text, written.text.data(), &date,
                                               &written.read, &length));
  EXPECT_EQ(value.dtdays, written.read.dtdays);
  return written;
}

}  // namespace dates
